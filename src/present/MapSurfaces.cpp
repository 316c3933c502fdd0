#include "present/MapSurfaces.h"

#include <SDL3_image/SDL_image.h>

#include <cstdio>
#include <cstring>

namespace {

// Locks a surface for the length of a scope if it needs locking.
class SurfaceLock {
public:
  explicit SurfaceLock(SDL_Surface* surface) : surface_(surface), locked_(SDL_MUSTLOCK(surface)) {
    if (locked_) {
      SDL_LockSurface(surface_);
    }
  }
  ~SurfaceLock() {
    if (locked_) {
      SDL_UnlockSurface(surface_);
    }
  }
  SurfaceLock(SurfaceLock const&) = delete;
  SurfaceLock& operator=(SurfaceLock const&) = delete;

private:
  SDL_Surface* surface_;
  bool locked_;
};

std::uint32_t* Row(SDL_Surface* surface, int y) {
  return reinterpret_cast<std::uint32_t*>(static_cast<std::uint8_t*>(surface->pixels) +
                                          static_cast<std::ptrdiff_t>(y) * surface->pitch);
}

}  // namespace

MapImage ImageOfSurface(SDL_Surface* surface) {
  SDL_Surface* converted = surface->format == SDL_PIXELFORMAT_ARGB8888 ? surface
                                                                       : SDL_ConvertSurface(surface, SDL_PIXELFORMAT_ARGB8888);
  MapImage image;
  if (converted == nullptr) {
    return image;
  }
  image = MapImage(converted->w, converted->h);
  {
    SurfaceLock lock(converted);
    for (int y = 0; y < converted->h; ++y) {
      std::memcpy(image.row(y), Row(converted, y), static_cast<std::size_t>(converted->w) * sizeof(std::uint32_t));
    }
  }
  if (converted != surface) {
    SDL_DestroySurface(converted);
  }
  return image;
}

SDL_Surface* SurfaceOfImage(MapImage const& image) {
  SDL_Surface* surface = SDL_CreateSurface(image.width, image.height, SDL_PIXELFORMAT_ARGB8888);
  if (surface == nullptr) {
    return nullptr;
  }
  SurfaceLock lock(surface);
  for (int y = 0; y < image.height; ++y) {
    std::memcpy(Row(surface, y), image.row(y), static_cast<std::size_t>(image.width) * sizeof(std::uint32_t));
  }
  return surface;
}

void CalculateImageChecksum(SDL_Surface* surface, IHasher* hasher) { CalculateImageChecksum(ImageOfSurface(surface), hasher); }

SDL_Surface* ApplyMapTransformations(SDL_Surface* source, MapSettings const& map) {
  return SurfaceOfImage(ApplyMapTransformations(ImageOfSurface(source), map));
}

SDL_Texture* LoadGreyscaleAsAlpha(char const* path, SDL_Renderer* renderer) {
  SDL_Surface* loaded = IMG_Load(path);
  if (loaded == nullptr) {
    std::fprintf(stderr, "Failed to load image: %s\n", SDL_GetError());
    return nullptr;
  }
  SDL_Surface* surface = SDL_ConvertSurface(loaded, SDL_PIXELFORMAT_RGBA8888);
  SDL_DestroySurface(loaded);
  if (surface == nullptr) {
    std::fprintf(stderr, "Failed to convert surface format\n");
    return nullptr;
  }
  {
    SurfaceLock lock(surface);
    for (int y = 0; y < surface->h; ++y) {
      std::uint32_t* row = Row(surface, y);
      for (int x = 0; x < surface->w; ++x) {
        std::uint32_t const pixel = row[x];
        std::uint32_t const red = pixel >> 24;
        std::uint32_t const green = (pixel >> 16) & 0xFF;
        std::uint32_t const blue = (pixel >> 8) & 0xFF;
        std::uint32_t const grey = ((red + green + blue) * 21846) >> 16;
        row[x] = 0xFFFFFF00u | (255 - grey);
      }
    }
  }
  SDL_Texture* texture = SDL_CreateTextureFromSurface(renderer, surface);
  SDL_DestroySurface(surface);
  if (texture == nullptr) {
    std::fprintf(stderr, "Failed to create texture: %s\n", SDL_GetError());
    return nullptr;
  }
  SDL_SetTextureBlendMode(texture, SDL_BLENDMODE_BLEND);
  return texture;
}
