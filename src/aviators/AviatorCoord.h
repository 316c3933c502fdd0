#pragma once

#include <cstdint>

// Fixed-point coordinates of the ship games. An AviatorCoord counts 1/256 of a pixel; a WorldCoord counts
// whole pixels. A pixel p owns the half-open range [256·p, 256·p + 256) in each axis.
using AviatorCoord = std::int32_t;
using WorldCoord = std::int32_t;

// A pair (x, y). Sums and differences wrap at 32 bits, as the simulation's stored values do.
template <class T>
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
  Vec2& operator+=(Vec2 b) { return *this = *this + b; }
  Vec2& operator-=(Vec2 b) { return *this = *this - b; }
};

// The pixel that holds a fixed-point coordinate: floor division by 256, so -1 and -256 are pixel -1.
constexpr WorldCoord PixelOf(AviatorCoord c) {
  return c >> 8;  // arithmetic shift is floor division for signed values (C++20)
}

constexpr Vec2<WorldCoord> PixelOf(Vec2<AviatorCoord> c) { return {PixelOf(c.x), PixelOf(c.y)}; }

// The fixed-point centre of a pixel.
constexpr AviatorCoord PixelCentre(WorldCoord p) {
  return static_cast<AviatorCoord>(static_cast<std::uint32_t>(p) * 256u + 128u);
}

// The squared length of a vector, 64-bit.
constexpr std::int64_t LengthSquared(Vec2<AviatorCoord> v) {
  return std::int64_t{v.x} * v.x + std::int64_t{v.y} * v.y;
}
