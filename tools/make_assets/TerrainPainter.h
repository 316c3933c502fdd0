#pragma once

#include <cstdint>

#include "Canvas.h"
#include "MapLayout.h"

// The colours of a map's terrain.
struct TerrainTheme {
  Colour groundLight;
  Colour groundDark;
  Colour crust;  // the top pixels of ground that lie open to the sky
  Colour rockLight;
  Colour rockDark;
  Colour vein;
  std::uint64_t seed = 1;
};

// Smooth value noise from 0 to 1 with features of about `cell` pixels.
float ValueNoise(float x, float y, float cell, std::uint64_t seed);

// The map image: ground textured with alpha 254, rock veined with alpha 255, and where the terrain is
// open the scenery with its alpha held below 254, so that it never counts as ground.
Canvas PaintMap(MapLayout const& layout, TerrainTheme const& theme);
