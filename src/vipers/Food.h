#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "aviators/AviatorCoord.h"
#include "aviators/IntegerSqrt.h"

// Food of the Vipers game: where a new item goes, and whether a head's step reaches one. Both exact in
// integers, so that every client feeds the same head at the same frame.
namespace food {

// Half the side of the square round an item's centre that a head must touch to eat it: 25 pixels.
inline constexpr std::int32_t kHalfSize = 6400;

// The centre of an item's pixel in 1/256 pixel.
inline Vec2<AviatorCoord> Centre(Vec2<WorldCoord> item) { return {item.x * 256 + 128, item.y * 256 + 128}; }

// Whether the segment from `from` to `to` touches the closed square of half-size kHalfSize round the
// item's centre.
bool Touches(Vec2<AviatorCoord> from, Vec2<AviatorCoord> to, Vec2<WorldCoord> item);

// The seed of the generator that places an item: mixed from every head's position and the frame.
// A seed of 0 would stay 0 under xorshift and pin the search to one pixel, so it is replaced by a
// fixed odd constant.
std::uint32_t Seed(std::vector<Vec2<AviatorCoord>> const& headPositions, std::uint32_t frame);

inline std::uint32_t XorShift(std::uint32_t s) {
  s ^= s << 13;
  s ^= s >> 17;
  s ^= s << 5;
  return s;
}

// Most pixels a search tries before giving up on a map that has (nearly) no free pixel left.
inline constexpr int kMaxTries = 1 << 20;

// The first free pixel of the map that the generator hits from this seed: x and y from successive
// numbers, until a pixel that isBlocked says is free. Nothing when the map is empty or the search
// runs out of tries.
template <typename Map>
std::optional<Vec2<WorldCoord>> RandomFreePixel(Map const& map, std::uint32_t seed) {
  if (map.width <= 0 || map.height <= 0) {
    return std::nullopt;
  }
  for (int tries = 0; tries < kMaxTries; ++tries) {
    seed = XorShift(seed);
    auto const x = static_cast<WorldCoord>(seed % static_cast<std::uint32_t>(map.width));
    seed = XorShift(seed);
    auto const y = static_cast<WorldCoord>(seed % static_cast<std::uint32_t>(map.height));
    if (!map.isBlocked(x, y)) {
      return Vec2<WorldCoord>{x, y};
    }
  }
  return std::nullopt;
}

}  // namespace food
