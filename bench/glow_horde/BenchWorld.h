#pragma once

#include <cstdint>
#include <functional>
#include <memory>

#include "ChunkedWorld.h"

inline constexpr std::uint32_t k_benchGround = 0xFE7A5030u;
inline constexpr std::uint32_t k_benchSky = 0x00000000u;

// A real chunked world for one player from a terrain drawn in code (pixel(x, y), y upward): the image
// goes through a temporary data directory and is loaded the way a session loads its map.
std::unique_ptr<ChunkedWorld> BuildBenchWorld(int width, int height, std::function<std::uint32_t(int x, int y)> const& pixel);
