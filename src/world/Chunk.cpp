#include "world/Chunk.h"

#include <algorithm>
#include <cstring>
#include <stdexcept>
#include <string>
#include <utility>

Chunk::Chunk() : pixels_(std::make_unique<std::uint32_t[]>(kPixels)) {}

Chunk::~Chunk() { releaseTexture(); }

Chunk::Chunk(Chunk const& other) : pixels_(std::make_unique_for_overwrite<std::uint32_t[]>(kPixels)), dirty_(other.dirty_) {
  std::copy_n(other.pixels_.get(), kPixels, pixels_.get());
}

Chunk& Chunk::operator=(Chunk const& other) {
  if (this == &other) {
    return *this;
  }
  releaseTexture();
  auto copy = std::make_unique_for_overwrite<std::uint32_t[]>(kPixels);
  std::copy_n(other.pixels_.get(), kPixels, copy.get());
  pixels_ = std::move(copy);
  dirty_ = true;
  return *this;
}

Chunk::Chunk(Chunk&& other) noexcept
    : pixels_(std::move(other.pixels_)),
      texture_(std::exchange(other.texture_, nullptr)),
      dirty_(std::exchange(other.dirty_, true)),
      textureDeleter_(std::exchange(other.textureDeleter_, {})) {}

Chunk& Chunk::operator=(Chunk&& other) noexcept {
  if (this == &other) {
    return *this;
  }
  releaseTexture();
  pixels_ = std::move(other.pixels_);
  texture_ = std::exchange(other.texture_, nullptr);
  dirty_ = std::exchange(other.dirty_, true);
  textureDeleter_ = std::exchange(other.textureDeleter_, {});
  return *this;
}

void Chunk::releaseTexture() const {
  if (textureDeleter_) {
    textureDeleter_();
    textureDeleter_ = {};
  }
  texture_ = nullptr;
}

void Chunk::hash(IHasher& hasher) const { hasher.update(pixels_.get(), kPixels * sizeof(std::uint32_t)); }

SDL_Texture* Chunk::getTexture(SDL_Renderer* renderer) const {
  if (texture_ == nullptr) {
    SDL_Texture* texture =
        SDL_CreateTexture(renderer, SDL_PIXELFORMAT_ARGB8888, SDL_TEXTUREACCESS_STREAMING, kSize, kSize);
    if (texture == nullptr) {
      throw std::runtime_error(std::string("Failed to create chunked world texture - ") + SDL_GetError());
    }
    SDL_SetTextureScaleMode(texture, SDL_SCALEMODE_LINEAR);
    texture_ = texture;
    textureDeleter_ = [texture] { SDL_DestroyTexture(texture); };
    dirty_ = true;
  }
  if (dirty_) {
    void* locked = nullptr;
    int pitch = 0;
    if (SDL_LockTexture(texture_, nullptr, &locked, &pitch)) {
      auto* destination = static_cast<std::uint8_t*>(locked);
      for (int row = 0; row < kSize; ++row) {
        // The world counts rows upward, the texture downward.
        std::memcpy(destination + static_cast<std::ptrdiff_t>(row) * pitch,
                    pixels_.get() + static_cast<std::ptrdiff_t>(kSize - 1 - row) * kSize,
                    kSize * sizeof(std::uint32_t));
      }
      SDL_UnlockTexture(texture_);
      dirty_ = false;
    }
  }
  return texture_;
}
