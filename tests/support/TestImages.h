#pragma once

#include <SDL3/SDL.h>

#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>

namespace testing_support {

// A fresh temporary directory with an empty "data" folder inside, made the working directory for the
// life of the object, so that code that loads "data/" + name reads the images a test wrote.
class ScopedDataDirectory {
public:
  ScopedDataDirectory();
  ~ScopedDataDirectory();
  ScopedDataDirectory(ScopedDataDirectory const&) = delete;
  ScopedDataDirectory& operator=(ScopedDataDirectory const&) = delete;

private:
  std::filesystem::path previous_;
  std::filesystem::path root_;
};

// An ARGB8888 surface whose pixel at (x, y), row 0 at the top, is pixel(x, y).
SDL_Surface* MakeSurface(int width, int height, std::function<std::uint32_t(int x, int y)> const& pixel);
std::uint32_t SurfacePixel(SDL_Surface* surface, int x, int y);
// Makes an ARGB8888 image from pixel(x, y) and saves it as "data/" + name in the working directory.
void SaveImage(std::string const& name, int width, int height, std::function<std::uint32_t(int x, int y)> const& pixel);

// A software renderer drawing into an ARGB8888 surface: draw, then flush() and read the pixels.
class SoftwareTarget {
public:
  SoftwareTarget(int width, int height, std::uint32_t clear = 0xFF000000u);
  ~SoftwareTarget();
  SoftwareTarget(SoftwareTarget const&) = delete;
  SoftwareTarget& operator=(SoftwareTarget const&) = delete;

  SDL_Renderer* renderer() const { return renderer_; }
  SDL_Surface* surface() const { return surface_; }
  void clear(std::uint32_t argb);
  void flush();
  // Row 0 at the top of the screen.
  std::uint32_t pixel(int x, int y) const;
  int width() const { return surface_->w; }
  int height() const { return surface_->h; }

private:
  SDL_Surface* surface_;
  SDL_Renderer* renderer_;
};

}  // namespace testing_support
