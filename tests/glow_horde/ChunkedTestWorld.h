#pragma once

#include <cstdint>
#include <functional>
#include <memory>

#include "ChunkedWorld.h"

// Terrain pixels for test worlds.
inline constexpr std::uint32_t k_testGround = 0xFE7A5030u;
inline constexpr std::uint32_t k_testRock = 0xFF505050u;
inline constexpr std::uint32_t k_testSky = 0x00000000u;

struct ChunkedTestWorldLayout {
  int width = 256;
  int height = 256;
  int players = 1;
  int localPlayer = 0;
  int delayFrames = 1;
  bool wrapX = false;
  bool wrapY = false;
  // The pixel at world (x, y), y upward.
  std::function<std::uint32_t(int x, int y)> pixel;
};

// Builds a real chunked world from an image drawn by the test: the image is written to a temporary
// data directory, loaded the way a session loads a map, and the directory is removed again.
std::unique_ptr<ChunkedWorld> BuildChunkedWorld(ChunkedTestWorldLayout const& layout);
