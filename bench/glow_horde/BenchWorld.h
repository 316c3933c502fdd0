#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>

#include "world/ChunkedWorld.h"

inline constexpr std::uint32_t k_benchGround = 0xFE7A5030u;
inline constexpr std::uint32_t k_benchSky = 0x00000000u;

// A temporary data directory, the working directory for the life of the object, holding one map image
// drawn in code (pixel(x, y), y upward), ready to be loaded the way a session loads its map.
class BenchMapDirectory {
public:
  BenchMapDirectory(int width, int height, std::function<std::uint32_t(int x, int y)> const& pixel);
  ~BenchMapDirectory();
  BenchMapDirectory(BenchMapDirectory const&) = delete;
  BenchMapDirectory& operator=(BenchMapDirectory const&) = delete;

  MapSettings map() const;

private:
  std::filesystem::path previous_;
  std::filesystem::path root_;
};

// A real chunked world for one player, delay 15, from a terrain drawn in code.
std::unique_ptr<ChunkedWorld> BuildBenchWorld(int width, int height, std::function<std::uint32_t(int x, int y)> const& pixel);
