#include "BenchWorld.h"

#include <SDL3_image/SDL_image.h>

#include <atomic>
#include <stdexcept>
#include <string>

#include <unistd.h>

BenchMapDirectory::BenchMapDirectory(int width, int height, std::function<std::uint32_t(int x, int y)> const& pixel)
    : previous_(std::filesystem::current_path()) {
  static std::atomic<int> counter{0};
  root_ = std::filesystem::temp_directory_path() /
          ("tandem_bench_world_" + std::to_string(::getpid()) + "_" + std::to_string(counter++));
  std::filesystem::create_directories(root_ / "data");
  std::filesystem::current_path(root_);

  SDL_Surface* surface = SDL_CreateSurface(width, height, SDL_PIXELFORMAT_ARGB8888);
  if (surface == nullptr) {
    throw std::runtime_error(std::string("Benchmark surface not created: ") + SDL_GetError());
  }
  for (int row = 0; row < height; ++row) {
    auto* line = reinterpret_cast<std::uint32_t*>(static_cast<std::uint8_t*>(surface->pixels) + row * surface->pitch);
    for (int x = 0; x < width; ++x) {
      line[x] = pixel(x, height - 1 - row);
    }
  }
  bool const saved = IMG_SavePNG(surface, "data/terrain.png");
  SDL_DestroySurface(surface);
  if (!saved) {
    throw std::runtime_error(std::string("Benchmark image not saved: ") + SDL_GetError());
  }
}

BenchMapDirectory::~BenchMapDirectory() {
  std::error_code ignored;
  std::filesystem::current_path(previous_, ignored);
  std::filesystem::remove_all(root_, ignored);
}

MapSettings BenchMapDirectory::map() const {
  MapSettings map;
  map.imageFile = "terrain.png";
  return map;
}

std::unique_ptr<ChunkedWorld> BuildBenchWorld(int width, int height, std::function<std::uint32_t(int x, int y)> const& pixel) {
  BenchMapDirectory const directory(width, height, pixel);
  return std::make_unique<ChunkedWorld>(1, 0, 15, directory.map());
}
