#include "aviators/CollisionMap.h"

#include <algorithm>

namespace {
constexpr std::int32_t INF = 0x7FFFFFFF;
}

CollisionMap::CollisionMap(std::int32_t w, std::int32_t h)
    : width(std::max(w, 0)), height(std::max(h, 0)), stride((std::max(w, 0) + 63) / 64),
      words(static_cast<std::size_t>(stride) * static_cast<std::size_t>(height), 0) {}

void CollisionMap::set(std::int32_t x, std::int32_t y, bool solid) {
  if (x < 0 || y < 0 || x >= width || y >= height) {
    return;
  }
  std::uint64_t& word = words[static_cast<std::size_t>(y) * static_cast<std::size_t>(stride) + static_cast<std::size_t>(x >> 6)];
  std::uint64_t const bit = std::uint64_t{1} << (x & 63);
  word = solid ? (word | bit) : (word & ~bit);
}

// An exact Euclidean distance transform (a pass down each column, then the lower envelope of parabolas
// along each row), thresholded at radius². All arithmetic is 32-bit, enough for 32767 pixels a side.
CollisionMap CollisionMap::expandByRadius(int radius) const {
  CollisionMap result(width, height);
  if (width == 0 || height == 0) {
    return result;
  }
  std::size_t const w = static_cast<std::size_t>(width);
  std::vector<std::int32_t> grid(w * static_cast<std::size_t>(height));
  auto cell = [&](std::int32_t x, std::int32_t y) -> std::int32_t& {
    return grid[static_cast<std::size_t>(y) * w + static_cast<std::size_t>(x)];
  };

  for (std::int32_t x = 0; x < width; ++x) {
    std::int32_t d = INF;
    for (std::int32_t y = 0; y < height; ++y) {
      if (d != INF) {
        d += 1;
      }
      if (isBlocked(x, y)) {
        cell(x, y) = 0;
        d = 0;
      } else {
        cell(x, y) = d == INF ? INF : d * d;
      }
    }
    d = INF;
    for (std::int32_t y = height - 1; y >= 0; --y) {
      if (d != INF) {
        d += 1;
      }
      if (isBlocked(x, y)) {
        d = 0;
      } else if (d != INF) {
        cell(x, y) = std::min(cell(x, y), d * d);
      }
    }
  }

  std::vector<std::int32_t> f(w);
  std::vector<std::int32_t> v(w);
  std::vector<std::int32_t> z(w + 1);
  std::int64_t const limit = std::int64_t{radius} * radius;
  for (std::int32_t y = 0; y < height; ++y) {
    for (std::int32_t x = 0; x < width; ++x) {
      f[static_cast<std::size_t>(x)] = cell(x, y);
    }
    auto F = [&](std::int32_t q) { return f[static_cast<std::size_t>(q)]; };
    std::int32_t k = 0;
    v[0] = 0;
    z[0] = 0;
    for (std::int32_t q = 1; q < width; ++q) {
      if (F(q) == INF) {
        continue;
      }
      // Pop the parabolas that the new one beats at their own start; one without a set pixel counts
      // as INF and is always beaten.
      while (k >= 0) {
        std::int32_t const vk = v[static_cast<std::size_t>(k)];
        std::int32_t const zk = z[static_cast<std::size_t>(k)];
        std::int64_t const lhs = std::int64_t{F(q)} + std::int64_t{zk - q} * (zk - q);
        std::int64_t const rhs = F(vk) == INF ? INF : std::int64_t{F(vk)} + std::int64_t{zk - vk} * (zk - vk);
        if (lhs >= rhs) {
          break;
        }
        k -= 1;
      }
      if (k < 0) {
        v[0] = q;
        z[0] = 0;
        k = 0;
      } else if (F(v[static_cast<std::size_t>(k)]) == INF) {
        v[static_cast<std::size_t>(k)] = q;
        z[static_cast<std::size_t>(k)] = 0;
      } else {
        std::int32_t const vk = v[static_cast<std::size_t>(k)];
        std::int64_t const s =
            (std::int64_t{F(q)} - F(vk) + std::int64_t{vk + q} * (q - vk)) / (2 * std::int64_t{q - vk}) + 1;
        if (s < width) {
          k += 1;
          v[static_cast<std::size_t>(k)] = q;
          z[static_cast<std::size_t>(k)] = static_cast<std::int32_t>(s);
        }
      }
    }
    for (std::int32_t x = width - 1; x >= 0; --x) {
      std::int32_t const vk = v[static_cast<std::size_t>(k)];
      std::int64_t const out = F(vk) == INF ? INF : std::int64_t{F(vk)} + std::int64_t{x - vk} * (x - vk);
      if (out != INF && out <= limit) {
        result.set(x, y, true);
      }
      if (x == z[static_cast<std::size_t>(k)]) {
        k -= 1;
      }
    }
  }
  return result;
}
