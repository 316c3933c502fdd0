#pragma once

#include <cstdint>

// Digests of the map images in data/, as a world computes them when it loads a map: XXH3 of the
// image's rows converted to ARGB8888, then its width and height. Written by tools/make_assets;
// a test checks that the committed images still match.
namespace MapDigests {
inline constexpr std::uint64_t world = 0x40009BE4A827BD83ull;
inline constexpr std::uint64_t world2 = 0x42B3205E3BE7601Full;
inline constexpr std::uint64_t coop = 0x2CE25111ADC15855ull;
inline constexpr std::uint64_t tutorialDigDown = 0x72C4E0679D5F8E87ull;
inline constexpr std::uint64_t tutorialDigSideways = 0x25B30F0A655592F8ull;
inline constexpr std::uint64_t tutorialBridge = 0x0061B23CD7A34F3Cull;
inline constexpr std::uint64_t tutorialPit = 0x4A1801ED3BFE8EB0ull;
inline constexpr std::uint64_t aviators = 0x97597477123413ABull;
}  // namespace MapDigests
