#include "present/WorldDrawing.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <stdexcept>
#include <string>
#include <utility>

namespace {

int FloorMod(int value, int period) {
  int const m = value % period;
  return m < 0 ? m + period : m;
}

}  // namespace

SDL_Texture* ChunkTexture(Chunk const& chunk, SDL_Renderer* renderer) {
  constexpr int kSize = Chunk::kSize;
  auto* texture = static_cast<SDL_Texture*>(chunk.displayTexture());
  if (texture == nullptr) {
    texture = SDL_CreateTexture(renderer, SDL_PIXELFORMAT_ARGB8888, SDL_TEXTUREACCESS_STREAMING, kSize, kSize);
    if (texture == nullptr) {
      throw std::runtime_error(std::string("Failed to create chunked world texture - ") + SDL_GetError());
    }
    SDL_SetTextureScaleMode(texture, SDL_SCALEMODE_LINEAR);
    chunk.setDisplayTexture(texture, [texture] { SDL_DestroyTexture(texture); });
  }
  if (chunk.dirty()) {
    void* locked = nullptr;
    int pitch = 0;
    if (SDL_LockTexture(texture, nullptr, &locked, &pitch)) {
      auto* destination = static_cast<std::uint8_t*>(locked);
      for (int row = 0; row < kSize; ++row) {
        // The world counts rows upward, the texture downward.
        std::memcpy(destination + static_cast<std::ptrdiff_t>(row) * pitch,
                    chunk.pixels() + static_cast<std::ptrdiff_t>(kSize - 1 - row) * kSize,
                    kSize * sizeof(std::uint32_t));
      }
      SDL_UnlockTexture(texture);
      chunk.markShown();
    }
  }
  return texture;
}

int RenderWorld(ChunkedWorld const& world, SDL_Renderer* renderer, Camera const& camera, int screenWidth,
                int screenHeight) {
  int const chunksWide = world.chunksWide();
  int const chunksHigh = world.chunksHigh();
  if (chunksWide == 0 || chunksHigh == 0) {
    return 0;
  }
  auto const span = [](float start, float length) {
    return std::pair{static_cast<int>(std::floor(start / 256.0f)),
                     static_cast<int>(std::ceil((start + length) / 256.0f))};
  };
  auto [firstColumn, lastColumn] = span(camera.x, static_cast<float>(screenWidth) / camera.zoom);
  auto [firstRow, lastRow] = span(camera.y, static_cast<float>(screenHeight) / camera.zoom);
  if (!world.cameraWrapX()) {
    firstColumn = std::max(firstColumn, 0);
    lastColumn = std::min(lastColumn, chunksWide - 1);
  }
  if (!world.cameraWrapY()) {
    firstRow = std::max(firstRow, 0);
    lastRow = std::min(lastRow, chunksHigh - 1);
  }
  if (firstColumn > lastColumn || firstRow > lastRow) {
    return 0;
  }
  float const size = camera.zoom * 256.0f;
  float const bottom = static_cast<float>(screenHeight - 1);
  int drawn = 0;
  for (int row = firstRow; row <= lastRow; ++row) {
    for (int column = firstColumn; column <= lastColumn; ++column) {
      ChunkWithChangeQueues const& chunk =
          *world.getChunk(FloorMod(column, chunksWide) * 256, FloorMod(row, chunksHigh) * 256);
      SDL_FRect const destination{
          (static_cast<float>(column * 256) - camera.x) * camera.zoom,
          bottom - camera.zoom * (static_cast<float>(row * 256) - camera.y) - size,
          size,
          size,
      };
      SDL_RenderTexture(renderer, ChunkTexture(chunk.display(), renderer), nullptr, &destination);
      ++drawn;
    }
  }
  return drawn;
}
