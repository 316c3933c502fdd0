#pragma once

#include <cstdint>

// Stand-in for the shared fixed-point movement primitives while they are being written on another
// branch: only what the tails need. Replaced by the shared header when the branches meet.
using AviatorCoord = std::int32_t;
using WorldCoord = std::int32_t;

template <typename T>
struct Vec2 {
  T x = 0;
  T y = 0;
  friend bool operator==(Vec2 const&, Vec2 const&) = default;
  friend Vec2 operator+(Vec2 a, Vec2 b) {
    return {static_cast<T>(static_cast<std::uint32_t>(a.x) + static_cast<std::uint32_t>(b.x)),
            static_cast<T>(static_cast<std::uint32_t>(a.y) + static_cast<std::uint32_t>(b.y))};
  }
  friend Vec2 operator-(Vec2 a, Vec2 b) {
    return {static_cast<T>(static_cast<std::uint32_t>(a.x) - static_cast<std::uint32_t>(b.x)),
            static_cast<T>(static_cast<std::uint32_t>(a.y) - static_cast<std::uint32_t>(b.y))};
  }
};

inline std::uint64_t IntegerSqrt(std::uint64_t n) {
  if (n == 0) {
    return 0;
  }
  std::uint64_t x = n / 2 + 1;
  std::uint64_t y = (x + n / x) / 2;
  while (y < x) {
    x = y;
    y = (x + n / x) / 2;
  }
  return x;
}
