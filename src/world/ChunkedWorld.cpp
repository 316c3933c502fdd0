#include "world/ChunkedWorld.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <stdexcept>
#include <string>

#include "world/MapImages.h"
#include "sim/XXHashHasher.h"

ChunkedWorld::ChunkedWorld(int players, int localPlayer, int delayFrames, MapSettings const& map)
    : wrapX_(map.wrapX), wrapY_(map.wrapY), cameraWrapX_(map.cameraWrapX), cameraWrapY_(map.cameraWrapY) {
  MapImage loaded;
  try {
    loaded = LoadMapImage("data/" + map.imageFile);
  } catch (std::exception const& error) {
    throw std::runtime_error("Failed to load image '" + map.imageFile + "': " + error.what());
  }

  XXHashHasher hasher;
  CalculateImageChecksum(loaded, &hasher);
  if (map.imageChecksum != 0 && map.imageChecksum != hasher.digest()) {
    throw std::runtime_error("Image checksum does not match, for '" + map.imageFile + "'");
  }

  MapImage const image = ApplyMapTransformations(loaded, map);
  chunksWide_ = (image.width + 255) / 256;
  chunksHigh_ = (image.height + 255) / 256;

  std::vector<std::vector<Chunk>> grid(static_cast<std::size_t>(chunksHigh_));
  for (auto& row : grid) {
    row.resize(static_cast<std::size_t>(chunksWide_));
  }
  for (int imageRow = 0; imageRow < image.height; ++imageRow) {
    int const worldRow = image.height - 1 - imageRow;
    std::uint32_t const* source = image.row(imageRow);
    auto& chunkRow = grid[static_cast<std::size_t>(worldRow / 256)];
    for (int column = 0; column < chunksWide_; ++column) {
      int const count = std::min(256, image.width - column * 256);
      std::memcpy(chunkRow[static_cast<std::size_t>(column)].mutablePixels() + (worldRow % 256) * 256,
                  source + column * 256, static_cast<std::size_t>(count) * sizeof(std::uint32_t));
    }
  }

  chunks_.resize(static_cast<std::size_t>(chunksHigh_));
  for (int row = 0; row < chunksHigh_; ++row) {
    auto& chunkRow = chunks_[static_cast<std::size_t>(row)];
    chunkRow.reserve(static_cast<std::size_t>(chunksWide_));
    for (int column = 0; column < chunksWide_; ++column) {
      chunkRow.push_back(std::make_unique<ChunkWithChangeQueues>(
          std::move(grid[static_cast<std::size_t>(row)][static_cast<std::size_t>(column)]), players, localPlayer,
          delayFrames));
      grid_.push_back(chunkRow.back().get());
    }
  }
}

ChunkedWorld::~ChunkedWorld() = default;

void ChunkedWorld::wrap(int& x, int& y) const { wrapOnce(x, y); }

std::int64_t ChunkedWorld::wrappedDistSquared(Position a, Position b) const {
  std::int64_t dx = std::llabs(static_cast<std::int64_t>(a.x) - b.x);
  if (wrapX_) {
    dx = std::min(dx, width() - dx);
  }
  std::int64_t dy = std::llabs(static_cast<std::int64_t>(a.y) - b.y);
  if (wrapY_) {
    dy = std::min(dy, height() - dy);
  }
  return dx * dx + dy * dy;
}

void ChunkedWorld::queueAddPixel(int player, int x, int y) {
  wrapOnce(x, y);
  if (ChunkWithChangeQueues* chunk = getChunk(x, y); chunk != nullptr) {
    chunk->queueAddPixel(player, static_cast<unsigned char>(x & 255), static_cast<unsigned char>(y & 255));
  }
}

void ChunkedWorld::queueRemovePixel(int player, int x, int y) {
  wrapOnce(x, y);
  if (ChunkWithChangeQueues* chunk = getChunk(x, y); chunk != nullptr) {
    chunk->queueRemovePixel(player, static_cast<unsigned char>(x & 255), static_cast<unsigned char>(y & 255));
  }
}

void ChunkedWorld::frameAdvance() {
  for (auto& row : chunks_) {
    for (auto& chunk : row) {
      chunk->frameAdvance();
    }
  }
}

bool ChunkedWorld::hasLocalChangesQueued() const {
  for (auto const& row : chunks_) {
    for (auto const& chunk : row) {
      if (chunk->hasLocalChangesQueued()) {
        return true;
      }
    }
  }
  return false;
}

void ChunkedWorld::hashLocalBase(IHasher& hasher) const {
  for (auto const& row : chunks_) {
    for (auto const& chunk : row) {
      chunk->hashLocalBase(hasher);
    }
  }
}
