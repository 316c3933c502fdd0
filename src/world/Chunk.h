#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <utility>

#include "sim/IHasher.h"

// One 256 by 256 square of ARGB8888 pixels, row 0 at the bottom, with a slot for the texture that the
// drawing code makes to show it (present/WorldDrawing.h): refreshed only when a pixel has been written
// since, destroyed with the chunk.
class Chunk {
public:
  static constexpr int kSize = 256;
  static constexpr int kPixels = kSize * kSize;

  // All pixels zero: no ground, fully transparent.
  Chunk();
  ~Chunk();
  // A copy has its own pixels, no texture and the source's dirty flag.
  Chunk(Chunk const& other);
  // Destroys this chunk's texture, copies the pixels and marks the chunk dirty.
  Chunk& operator=(Chunk const& other);
  // Takes pixels, texture and dirty flag; the source is left with neither pixels nor texture, dirty.
  Chunk(Chunk&& other) noexcept;
  Chunk& operator=(Chunk&& other) noexcept;

  std::uint32_t readPixel(unsigned char x, unsigned char y) const { return pixels_[Index(x, y)]; }
  void writePixel(unsigned char x, unsigned char y, std::uint32_t pixel) {
    pixels_[Index(x, y)] = pixel;
    dirty_ = true;
  }
  // Feeds the whole pixel block, as it lies in memory, in one update.
  void hash(IHasher& hasher) const;
  // The drawing code's texture of these pixels, opaque here; null until it sets one. setDisplayTexture
  // hands over the texture with the function that destroys it, run when the chunk drops it.
  void* displayTexture() const { return texture_; }
  void setDisplayTexture(void* texture, std::function<void()> deleter) const {
    releaseTexture();
    texture_ = texture;
    textureDeleter_ = std::move(deleter);
    dirty_ = true;
  }
  // The texture shows the pixels as they are now.
  void markShown() const { dirty_ = false; }

  bool dirty() const { return dirty_; }
  bool hasPixels() const { return pixels_ != nullptr; }
  bool hasTexture() const { return texture_ != nullptr; }
  // Row by row from the bottom, 256 pixels a row.
  std::uint32_t const* pixels() const { return pixels_.get(); }
  std::uint32_t* mutablePixels() {
    dirty_ = true;
    return pixels_.get();
  }

  static constexpr int Index(unsigned char x, unsigned char y) { return y * kSize + x; }

private:
  void releaseTexture() const;

  std::unique_ptr<std::uint32_t[]> pixels_;
  mutable void* texture_ = nullptr;
  mutable bool dirty_ = true;
  mutable std::function<void()> textureDeleter_;
};
