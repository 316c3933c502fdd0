#pragma once

#include <cstdint>

// A small fixed-seed generator (SplitMix64), so that every run of the tool draws the same numbers.
class FixedRandom {
public:
  explicit FixedRandom(std::uint64_t seed) : state_(seed) {}

  std::uint64_t next() {
    state_ += 0x9E3779B97F4A7C15ull;
    std::uint64_t z = state_;
    z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ull;
    z = (z ^ (z >> 27)) * 0x94D049BB133111EBull;
    return z ^ (z >> 31);
  }

  // Uniform in [0, 1).
  double unit() { return static_cast<double>(next() >> 11) * (1.0 / 9007199254740992.0); }

  // Uniform in [lo, hi).
  double range(double lo, double hi) { return lo + (hi - lo) * unit(); }

  // Uniform integer in [lo, hi] (inclusive).
  int between(int lo, int hi) {
    return lo + static_cast<int>(next() % static_cast<std::uint64_t>(hi - lo + 1));
  }

private:
  std::uint64_t state_;
};

// A stateless hash of integer coordinates to [0, 1), for textures that must not depend on drawing order.
inline double HashUnit(std::int64_t x, std::int64_t y, std::uint64_t seed) {
  std::uint64_t z = static_cast<std::uint64_t>(x) * 0x9E3779B97F4A7C15ull ^
                    static_cast<std::uint64_t>(y) * 0xC2B2AE3D27D4EB4Full ^ seed * 0x165667B19E3779F9ull;
  z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ull;
  z = (z ^ (z >> 27)) * 0x94D049BB133111EBull;
  z ^= z >> 31;
  return static_cast<double>(z >> 11) * (1.0 / 9007199254740992.0);
}
