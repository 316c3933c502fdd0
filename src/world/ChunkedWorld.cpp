#include "world/ChunkedWorld.h"

#include <SDL3_image/SDL_image.h>

#include <cmath>
#include <cstdlib>
#include <cstring>
#include <stdexcept>
#include <string>

#include "world/MapImages.h"
#include "sim/XXHashHasher.h"

namespace {

// Owns a surface for the length of a scope.
struct SurfaceOwner {
  SDL_Surface* surface;
  explicit SurfaceOwner(SDL_Surface* s) : surface(s) {}
  ~SurfaceOwner() { SDL_DestroySurface(surface); }
  SurfaceOwner(SurfaceOwner const&) = delete;
  SurfaceOwner& operator=(SurfaceOwner const&) = delete;
};

int FloorMod(int value, int period) {
  int const m = value % period;
  return m < 0 ? m + period : m;
}

}  // namespace

ChunkedWorld::ChunkedWorld(SDL_Renderer* renderer, int players, int localPlayer, int delayFrames,
                           MapSettings const& map)
    : renderer_(renderer),
      wrapX_(map.wrapX),
      wrapY_(map.wrapY),
      cameraWrapX_(map.cameraWrapX),
      cameraWrapY_(map.cameraWrapY) {
  std::string const path = "data/" + map.imageFile;
  SDL_Surface* loaded = IMG_Load(path.c_str());
  if (loaded == nullptr) {
    throw std::runtime_error("Failed to load image '" + map.imageFile + "': " + SDL_GetError());
  }
  SDL_Surface* converted = SDL_ConvertSurface(loaded, SDL_PIXELFORMAT_ARGB8888);
  SDL_DestroySurface(loaded);
  if (converted == nullptr) {
    throw std::runtime_error(std::string("Failed to convert surface: ") + SDL_GetError());
  }
  SurfaceOwner stored(converted);

  XXHashHasher hasher;
  CalculateImageChecksum(converted, &hasher);
  if (map.imageChecksum != 0 && map.imageChecksum != hasher.digest()) {
    throw std::runtime_error("Image checksum does not match, for '" + map.imageFile + "'");
  }

  SurfaceOwner transformed(ApplyMapTransformations(converted, map));
  SDL_Surface* surface = transformed.surface;
  chunksWide_ = (surface->w + 255) / 256;
  chunksHigh_ = (surface->h + 255) / 256;

  std::vector<std::vector<Chunk>> grid(static_cast<std::size_t>(chunksHigh_));
  for (auto& row : grid) {
    row.resize(static_cast<std::size_t>(chunksWide_));
  }
  bool const locked = SDL_MUSTLOCK(surface);
  if (locked) {
    SDL_LockSurface(surface);
  }
  for (int surfaceRow = 0; surfaceRow < surface->h; ++surfaceRow) {
    int const worldRow = surface->h - 1 - surfaceRow;
    auto const* source = reinterpret_cast<std::uint32_t const*>(static_cast<std::uint8_t const*>(surface->pixels) +
                                                                 static_cast<std::ptrdiff_t>(surfaceRow) * surface->pitch);
    auto& chunkRow = grid[static_cast<std::size_t>(worldRow / 256)];
    for (int column = 0; column < chunksWide_; ++column) {
      int const count = std::min(256, surface->w - column * 256);
      std::memcpy(chunkRow[static_cast<std::size_t>(column)].mutablePixels() + (worldRow % 256) * 256,
                  source + column * 256, static_cast<std::size_t>(count) * sizeof(std::uint32_t));
    }
  }
  if (locked) {
    SDL_UnlockSurface(surface);
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

int ChunkedWorld::render(Camera const& camera, int screenWidth, int screenHeight) {
  if (chunksWide_ == 0 || chunksHigh_ == 0) {
    return 0;
  }
  auto const span = [](float start, float length) {
    return std::pair{static_cast<int>(std::floor(start / 256.0f)),
                     static_cast<int>(std::ceil((start + length) / 256.0f))};
  };
  auto [firstColumn, lastColumn] = span(camera.x, static_cast<float>(screenWidth) / camera.zoom);
  auto [firstRow, lastRow] = span(camera.y, static_cast<float>(screenHeight) / camera.zoom);
  if (!cameraWrapX_) {
    firstColumn = std::max(firstColumn, 0);
    lastColumn = std::min(lastColumn, chunksWide_ - 1);
  }
  if (!cameraWrapY_) {
    firstRow = std::max(firstRow, 0);
    lastRow = std::min(lastRow, chunksHigh_ - 1);
  }
  if (firstColumn > lastColumn || firstRow > lastRow) {
    return 0;
  }
  float const size = camera.zoom * 256.0f;
  float const bottom = static_cast<float>(screenHeight - 1);
  int drawn = 0;
  for (int row = firstRow; row <= lastRow; ++row) {
    auto const& chunkRow = chunks_[static_cast<std::size_t>(FloorMod(row, chunksHigh_))];
    for (int column = firstColumn; column <= lastColumn; ++column) {
      ChunkWithChangeQueues const& chunk = *chunkRow[static_cast<std::size_t>(FloorMod(column, chunksWide_))];
      SDL_FRect const destination{
          (static_cast<float>(column * 256) - camera.x) * camera.zoom,
          bottom - camera.zoom * (static_cast<float>(row * 256) - camera.y) - size,
          size,
          size,
      };
      SDL_RenderTexture(renderer_, chunk.display().getTexture(renderer_), nullptr, &destination);
      ++drawn;
    }
  }
  return drawn;
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
