#include "world/MapImages.h"

#include <SDL3_image/SDL_image.h>

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <stdexcept>
#include <string>

#include <fmt/format.h>

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

SDL_Surface* NewMapSurface(int width, int height) {
  return SDL_CreateSurface(width, height, SDL_PIXELFORMAT_ARGB8888);
}

// Calls place(x, y, pixel) for every pixel of the source.
template <typename Place>
void ForEachPixel(SDL_Surface* source, Place&& place) {
  SurfaceLock lock(source);
  for (int y = 0; y < source->h; ++y) {
    std::uint32_t const* row = Row(source, y);
    for (int x = 0; x < source->w; ++x) {
      place(x, y, row[x]);
    }
  }
}

SDL_Surface* Tile(SDL_Surface* source, int repeatX, int repeatY) {
  SDL_Surface* result = NewMapSurface(source->w * repeatX, source->h * repeatY);
  SurfaceLock lock(result);
  ForEachPixel(source, [&](int x, int y, std::uint32_t pixel) {
    for (int ty = 0; ty < repeatY; ++ty) {
      for (int tx = 0; tx < repeatX; ++tx) {
        Row(result, ty * source->h + y)[tx * source->w + x] = pixel;
      }
    }
  });
  return result;
}

SDL_Surface* MirrorX(SDL_Surface* source) {
  int const w = source->w;
  SDL_Surface* result = NewMapSurface(2 * w, source->h);
  SurfaceLock lock(result);
  ForEachPixel(source, [&](int x, int y, std::uint32_t pixel) {
    Row(result, y)[x] = pixel;
    Row(result, y)[2 * w - 1 - x] = pixel;
  });
  return result;
}

// The source becomes the bottom half, its mirror image the top.
SDL_Surface* MirrorY(SDL_Surface* source) {
  int const h = source->h;
  SDL_Surface* result = NewMapSurface(source->w, 2 * h);
  SurfaceLock lock(result);
  ForEachPixel(source, [&](int x, int y, std::uint32_t pixel) {
    Row(result, h + y)[x] = pixel;
    Row(result, h - 1 - y)[x] = pixel;
  });
  return result;
}

// Four copies turning about the centre; the source is the bottom left quarter.
SDL_Surface* RotateFourWays(SDL_Surface* source) {
  int const w = source->w;
  SDL_Surface* result = NewMapSurface(2 * w, 2 * w);
  SurfaceLock lock(result);
  ForEachPixel(source, [&](int c, int r, std::uint32_t pixel) {
    Row(result, w + r)[c] = pixel;
    Row(result, c)[w - 1 - r] = pixel;
    Row(result, w - 1 - r)[2 * w - 1 - c] = pixel;
    Row(result, 2 * w - 1 - c)[w + r] = pixel;
  });
  return result;
}

// Replaces `current` by step(current), destroying the intermediate surface but never the caller's source.
template <typename Step>
void Apply(SDL_Surface*& current, SDL_Surface* source, Step&& step) {
  SDL_Surface* next = step(current);
  if (current != source) {
    SDL_DestroySurface(current);
  }
  current = next;
}

}  // namespace

void CalculateImageChecksum(SDL_Surface* surface, IHasher* hasher) {
  {
    SurfaceLock lock(surface);
    int const bytesPerPixel = SDL_BYTESPERPIXEL(surface->format);
    unsigned long const rowBytes = static_cast<unsigned long>(surface->w) * static_cast<unsigned long>(bytesPerPixel);
    for (int y = 0; y < surface->h; ++y) {
      hasher->update(static_cast<std::uint8_t const*>(surface->pixels) + static_cast<std::ptrdiff_t>(y) * surface->pitch,
                     rowBytes);
    }
  }
  std::int32_t const width = surface->w;
  std::int32_t const height = surface->h;
  hasher->update(&width, sizeof width);
  hasher->update(&height, sizeof height);
}

SDL_Surface* ApplyMapTransformations(SDL_Surface* source, MapSettings const& map) {
  SDL_Surface* current = source;
  if (map.repeatX >= 2 || map.repeatY > 1) {
    Apply(current, source, [&](SDL_Surface* s) { return Tile(s, map.repeatX, map.repeatY); });
  }
  if (map.mirrorX) {
    Apply(current, source, MirrorX);
  }
  if (map.mirrorY) {
    Apply(current, source, MirrorY);
  }
  if (map.rotateFourWays) {
    if (current->w != current->h) {
      std::string const message = fmt::format(
          "A map image rotated four ways must be square before the rotation, but it is {} by {} pixels.", current->w,
          current->h);
      if (current != source) {
        SDL_DestroySurface(current);
      }
      throw std::runtime_error(message);
    }
    Apply(current, source, RotateFourWays);
  }
  if (current == source) {
    current = Tile(source, 1, 1);
  }
  return current;
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
