#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "world/ChunkWithChangeQueues.h"
#include "sim/IHasher.h"
#include "sim/MapSettings.h"
#include "world/Position.h"

// The pixel world of a session: a grid of 256x256 chunks built from a map image, addressed in world
// pixels with y upward. Units read it through isGround and change it only through the delayed queues.
class ChunkedWorld {
public:
  // Loads "data/" + map.imageFile, checks its digest, applies the map's transformations and builds
  // the chunks. Raises std::runtime_error with the texts of a failed load, conversion or checksum.
  ChunkedWorld(int players, int localPlayer, int delayFrames, MapSettings const& map);
  ~ChunkedWorld();
  ChunkedWorld(ChunkedWorld const&) = delete;
  ChunkedWorld& operator=(ChunkedWorld const&) = delete;

  // Brings a coordinate into range on the wrapping axes, by one period at most.
  void wrap(int& x, int& y) const;
  int width() const { return chunksWide_ * 256; }
  int height() const { return chunksHigh_ * 256; }
  std::int64_t wrappedDistSquared(Position a, Position b) const;

  // The chunk holding the pixel, or null outside the world; wrapping is not applied.
  ChunkWithChangeQueues* getChunk(int x, int y);
  ChunkWithChangeQueues const* getChunk(int x, int y) const;

  // Whether the pixel is ground as the given player's units see it; outside the world is ground.
  bool isGround(int player, int x, int y) const {
    wrapOnce(x, y);
    ChunkWithChangeQueues const* chunk = getChunk(x, y);
    if (chunk == nullptr) {
      return true;
    }
    return chunk->isGround(player, static_cast<unsigned char>(x & 255), static_cast<unsigned char>(y & 255));
  }
  // Changes outside the world are dropped.
  void queueAddPixel(int player, int x, int y);
  void queueRemovePixel(int player, int x, int y);
  // Once a frame, after all units have run: every chunk, row by row from row 0, by rising x.
  void frameAdvance();

  bool hasLocalChangesQueued() const;
  // localBase of every chunk, in the order of frameAdvance.
  void hashLocalBase(IHasher& hasher) const;

  bool wrapX() const { return wrapX_; }
  bool wrapY() const { return wrapY_; }
  bool cameraWrapX() const { return cameraWrapX_; }
  bool cameraWrapY() const { return cameraWrapY_; }
  int chunksWide() const { return chunksWide_; }
  int chunksHigh() const { return chunksHigh_; }

private:
  void wrapOnce(int& x, int& y) const {
    if (wrapX_) {
      int const w = width();
      if (x < 0) {
        x += w;
      }
      if (x >= w) {
        x -= w;
      }
    }
    if (wrapY_) {
      int const h = height();
      if (y < 0) {
        y += h;
      }
      if (y >= h) {
        y -= h;
      }
    }
  }

  std::vector<std::vector<std::unique_ptr<ChunkWithChangeQueues>>> chunks_;
  // The same chunks row by row in one array, for lookups with a single indirection.
  std::vector<ChunkWithChangeQueues*> grid_;
  int chunksWide_ = 0;
  int chunksHigh_ = 0;
  bool wrapX_ = false;
  bool wrapY_ = false;
  bool cameraWrapX_ = false;
  bool cameraWrapY_ = false;
};

inline ChunkWithChangeQueues* ChunkedWorld::getChunk(int x, int y) {
  if (x < 0 || y < 0 || x >= width() || y >= height()) {
    return nullptr;
  }
  return grid_[static_cast<std::size_t>((y >> 8) * chunksWide_ + (x >> 8))];
}

inline ChunkWithChangeQueues const* ChunkedWorld::getChunk(int x, int y) const {
  return const_cast<ChunkedWorld*>(this)->getChunk(x, y);
}
