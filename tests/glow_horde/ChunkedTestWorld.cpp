#include "glow_horde/ChunkedTestWorld.h"

#include "support/TestImages.h"

std::unique_ptr<ChunkedWorld> BuildChunkedWorld(ChunkedTestWorldLayout const& layout) {
  testing_support::ScopedDataDirectory directory;
  // Image rows run downward; the world's y runs upward.
  testing_support::SaveImage("terrain.png", layout.width, layout.height,
                             [&](int x, int row) { return layout.pixel(x, layout.height - 1 - row); });
  MapSettings map;
  map.imageFile = "terrain.png";
  map.wrapX = layout.wrapX;
  map.wrapY = layout.wrapY;
  return std::make_unique<ChunkedWorld>(nullptr, layout.players, layout.localPlayer, layout.delayFrames, map);
}
