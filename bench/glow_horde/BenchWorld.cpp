#include "BenchWorld.h"

#include <SDL3_image/SDL_image.h>

#include <filesystem>
#include <stdexcept>
#include <string>

#include <unistd.h>

std::unique_ptr<ChunkedWorld> BuildBenchWorld(int width, int height, std::function<std::uint32_t(int x, int y)> const& pixel) {
  namespace fs = std::filesystem;
  fs::path const previous = fs::current_path();
  fs::path const root = fs::temp_directory_path() / ("tandem_bench_world_" + std::to_string(::getpid()));
  fs::create_directories(root / "data");
  fs::current_path(root);

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

  MapSettings map;
  map.imageFile = "terrain.png";
  auto world = std::make_unique<ChunkedWorld>(nullptr, 1, 0, 15, map);
  fs::current_path(previous);
  fs::remove_all(root);
  return world;
}
