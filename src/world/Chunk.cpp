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
