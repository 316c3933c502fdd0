#pragma once

#include <cstdint>
#include <vector>

// A bit-packed map of solid pixels, one bit a pixel, least significant bit first along a row. Everything
// outside the map counts as solid, and the map never wraps.
struct CollisionMap {
  std::int32_t width = 0;
  std::int32_t height = 0;
  std::int32_t stride = 0;  // 64-bit words per row: (width + 63) / 64
  std::vector<std::uint64_t> words;

  CollisionMap() = default;
  // An empty (all free) map of the given size; negative sizes count as 0.
  CollisionMap(std::int32_t width, std::int32_t height);

  bool isBlocked(std::int32_t x, std::int32_t y) const {
    if (x < 0 || y < 0 || x >= width || y >= height) {
      return true;
    }
    return ((words[static_cast<std::size_t>(y) * static_cast<std::size_t>(stride) + static_cast<std::size_t>(x >> 6)] >>
             (x & 63)) &
            1u) != 0;
  }
  // Sets or clears a pixel inside the map; pixels outside are left alone.
  void set(std::int32_t x, std::int32_t y, bool solid);

  // A map of the same size with a bit set exactly where the squared Euclidean distance to the nearest
  // set pixel of this map is at most radius². Pixels outside the map do not count as set.
  CollisionMap expandByRadius(int radius) const;
};
