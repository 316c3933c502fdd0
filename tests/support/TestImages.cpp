#include "support/TestImages.h"

#include <SDL3_image/SDL_image.h>

#include <atomic>
#include <stdexcept>

#include <unistd.h>

namespace testing_support {

ScopedDataDirectory::ScopedDataDirectory() : previous_(std::filesystem::current_path()) {
  static std::atomic<int> counter{0};
  root_ = std::filesystem::temp_directory_path() /
          ("tandem_world_test_" + std::to_string(::getpid()) + "_" + std::to_string(counter++));
  std::filesystem::remove_all(root_);
  std::filesystem::create_directories(root_ / "data");
  std::filesystem::current_path(root_);
}

ScopedDataDirectory::~ScopedDataDirectory() {
  std::error_code ignored;
  std::filesystem::current_path(previous_, ignored);
  std::filesystem::remove_all(root_, ignored);
}

SDL_Surface* MakeSurface(int width, int height, std::function<std::uint32_t(int x, int y)> const& pixel) {
  SDL_Surface* surface = SDL_CreateSurface(width, height, SDL_PIXELFORMAT_ARGB8888);
  if (surface == nullptr) {
    throw std::runtime_error(std::string("Test surface not created: ") + SDL_GetError());
  }
  for (int y = 0; y < height; ++y) {
    auto* row = reinterpret_cast<std::uint32_t*>(static_cast<std::uint8_t*>(surface->pixels) + y * surface->pitch);
    for (int x = 0; x < width; ++x) {
      row[x] = pixel(x, y);
    }
  }
  return surface;
}

std::uint32_t SurfacePixel(SDL_Surface* surface, int x, int y) {
  return reinterpret_cast<std::uint32_t const*>(static_cast<std::uint8_t const*>(surface->pixels) +
                                                y * surface->pitch)[x];
}

void SaveImage(std::string const& name, int width, int height, std::function<std::uint32_t(int x, int y)> const& pixel) {
  SDL_Surface* surface = MakeSurface(width, height, pixel);
  std::string const path = "data/" + name;
  bool const saved = IMG_SavePNG(surface, path.c_str());
  SDL_DestroySurface(surface);
  if (!saved) {
    throw std::runtime_error("Test image not saved: " + path + " - " + SDL_GetError());
  }
}

SoftwareTarget::SoftwareTarget(int width, int height, std::uint32_t clear)
    : surface_(SDL_CreateSurface(width, height, SDL_PIXELFORMAT_ARGB8888)), renderer_(nullptr) {
  if (surface_ == nullptr) {
    throw std::runtime_error(std::string("Test target surface not created: ") + SDL_GetError());
  }
  renderer_ = SDL_CreateSoftwareRenderer(surface_);
  if (renderer_ == nullptr) {
    throw std::runtime_error(std::string("Software renderer not created: ") + SDL_GetError());
  }
  this->clear(clear);
}

SoftwareTarget::~SoftwareTarget() {
  SDL_DestroyRenderer(renderer_);
  SDL_DestroySurface(surface_);
}

void SoftwareTarget::clear(std::uint32_t argb) {
  SDL_SetRenderDrawColor(renderer_, static_cast<Uint8>(argb >> 16), static_cast<Uint8>(argb >> 8),
                         static_cast<Uint8>(argb), static_cast<Uint8>(argb >> 24));
  SDL_RenderClear(renderer_);
  flush();
}

void SoftwareTarget::flush() { SDL_FlushRenderer(renderer_); }

std::uint32_t SoftwareTarget::pixel(int x, int y) const { return SurfacePixel(surface_, x, y); }

}  // namespace testing_support
