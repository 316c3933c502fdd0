#include "TerrainPainter.h"

#include <algorithm>
#include <cmath>

#include "Random.h"

float ValueNoise(float x, float y, float cell, std::uint64_t seed) {
  float const fx = x / cell, fy = y / cell;
  auto const ix = static_cast<std::int64_t>(std::floor(fx));
  auto const iy = static_cast<std::int64_t>(std::floor(fy));
  float const tx = fx - static_cast<float>(ix), ty = fy - static_cast<float>(iy);
  float const sx = tx * tx * (3 - 2 * tx), sy = ty * ty * (3 - 2 * ty);
  auto h = [&](std::int64_t a, std::int64_t b) { return static_cast<float>(HashUnit(a, b, seed)); };
  float const top = h(ix, iy) + (h(ix + 1, iy) - h(ix, iy)) * sx;
  float const bottom = h(ix, iy + 1) + (h(ix + 1, iy + 1) - h(ix, iy + 1)) * sx;
  return top + (bottom - top) * sy;
}

namespace {

// Steps a value from 0 to 1 into a few levels, which keeps the texture calm and the files small.
float Levels(float v, int levels) {
  return std::floor(std::clamp(v, 0.0f, 0.999f) * static_cast<float>(levels)) / static_cast<float>(levels - 1);
}

Colour GroundColour(TerrainTheme const& theme, int x, int y, int depth) {
  float const fx = static_cast<float>(x), fy = static_cast<float>(y);
  float const n = 0.65f * ValueNoise(fx, fy, 23.0f, theme.seed) + 0.35f * ValueNoise(fx, fy, 7.0f, theme.seed + 1);
  // Gently tilted strata give the ground a grain.
  float const strata = ValueNoise(fx * 0.15f, fy + 6.0f * ValueNoise(fx, fy, 40.0f, theme.seed + 2), 5.0f, theme.seed + 3);
  Colour c = Mix(theme.groundDark, theme.groundLight, Levels(0.75f * n + 0.25f * strata, 5));
  // Pebbles: a few small lighter spots.
  if (ValueNoise(fx, fy, 3.0f, theme.seed + 4) > 0.86f) {
    c = Mix(c, theme.groundLight, 0.6f);
  }
  if (depth <= 2) {
    c = theme.crust;
  } else if (depth <= 4) {
    c = Mix(theme.crust, c, 0.55f);
  }
  return c;
}

Colour RockColour(TerrainTheme const& theme, int x, int y, int depth) {
  float const fx = static_cast<float>(x), fy = static_cast<float>(y);
  float const n = ValueNoise(fx, fy, 17.0f, theme.seed + 10);
  Colour c = Mix(theme.rockDark, theme.rockLight, Levels(n, 4) * 0.7f);
  // Veins: thin lines where a smooth field crosses its middle value.
  float const v = ValueNoise(fx, fy, 36.0f, theme.seed + 11) + 0.3f * ValueNoise(fx, fy, 9.0f, theme.seed + 12);
  if (std::fabs(v - 0.65f) < 0.018f) {
    c = theme.vein;
  }
  if (depth <= 1) {
    c = Mix(c, theme.rockLight, 0.6f);
  }
  return c;
}

}  // namespace

Canvas PaintMap(MapLayout const& layout, TerrainTheme const& theme) {
  int const w = layout.width(), h = layout.height();
  Canvas image(w, h);
  float const maxSceneryAlpha = 253.0f / 255.0f;
  for (int x = 0; x < w; ++x) {
    int depth = 0;  // solid pixels counted down from the last open one above, in this column
    for (int y = h - 1; y >= 0; --y) {
      Material const m = layout.at(x, y);
      int const row = h - 1 - y;
      if (m == Material::Open) {
        depth = 0;
        Colour s = layout.scenery().at(x, row);
        s.a = std::min(s.a, maxSceneryAlpha);
        image.at(x, row) = s;
        continue;
      }
      depth = y == h - 1 ? 99 : depth + 1;
      Colour c = m == Material::Ground ? GroundColour(theme, x, y, depth) : RockColour(theme, x, y, depth);
      c.a = m == Material::Ground ? 254.0f / 255.0f : 1.0f;
      image.at(x, row) = c;
    }
  }
  return image;
}
