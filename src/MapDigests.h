#pragma once

#include <cstdint>

// Digests of the map images in data/, as a world computes them when it loads a map: XXH3 of the
// image's rows converted to ARGB8888, then its width and height. Written by tools/make_assets;
// a test checks that the committed images still match.
namespace MapDigests {
inline constexpr std::uint64_t world = 0;
inline constexpr std::uint64_t world2 = 0;
inline constexpr std::uint64_t coop = 0;
inline constexpr std::uint64_t tutorialDigDown = 0;
inline constexpr std::uint64_t tutorialDigSideways = 0;
inline constexpr std::uint64_t tutorialBridge = 0;
inline constexpr std::uint64_t tutorialPit = 0;
inline constexpr std::uint64_t aviators = 0;
}  // namespace MapDigests
