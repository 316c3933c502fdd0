#include "glow_horde/ChunkedTestWorld.h"

#include "support/TestImages.h"

std::unique_ptr<ChunkedWorld> BuildChunkedWorld(ChunkedTestWorldSpec const& spec) {
  testing_support::ScopedDataDirectory directory;
  // Image rows run downward; the world's y runs upward.
  testing_support::SaveImage("terrain.png", spec.width, spec.height,
                             [&](int x, int row) { return spec.pixel(x, spec.height - 1 - row); });
  MapSettings map;
  map.imageFile = "terrain.png";
  map.wrapX = spec.wrapX;
  map.wrapY = spec.wrapY;
  return std::make_unique<ChunkedWorld>(nullptr, spec.players, spec.localPlayer, spec.delayFrames, map);
}
