#include "Scenery.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "Random.h"
#include "TerrainPainter.h"

void SkyGradient(MapLayout& map, float x0, float y0, float x1, float y1, Colour bottom, Colour top) {
  Canvas& c = map.scenery();
  Point const a = map.image(x0, y1), b = map.image(x1, y0);
  c.fillDistance(a.x, a.y, b.x, b.y,
                 [&](float x, float y) {
                   return std::max(std::max(a.x - x, x - b.x), std::max(a.y - y, y - b.y));
                 },
                 [&](float, float y) {
                   float const t = std::clamp((b.y - y) / std::max(1.0f, b.y - a.y), 0.0f, 1.0f);
                   // Few steps keep the file small.
                   return Mix(bottom, top, std::floor(t * 8.0f) / 8.0f);
                 });
}

void Stars(MapLayout& map, std::uint64_t seed, int count, float x0, float y0, float x1, float y1) {
  FixedRandom random(seed);
  for (int i = 0; i < count; ++i) {
    float const x = static_cast<float>(random.range(x0, x1));
    float const y = static_cast<float>(random.range(y0, y1));
    float const r = static_cast<float>(random.range(0.6, 1.6));
    float const a = static_cast<float>(random.range(0.4, 0.95));
    Point const p = map.image(x, y);
    map.scenery().fillCircle(p.x, p.y, r, Rgb(255, 248, 225, a));
  }
}

void Hills(MapLayout& map, std::uint64_t seed, float x0, float x1, float bottom, float baseY, float amplitude,
           Colour colour) {
  std::vector<Point> outline;
  for (float x = x0; x <= x1; x += 4) {
    float const h = ValueNoise(x, 0, 90, seed) * 0.7f + ValueNoise(x, 0, 30, seed + 1) * 0.3f;
    outline.push_back(map.image(x, baseY + amplitude * h));
  }
  outline.push_back(map.image(x1, bottom));
  outline.push_back(map.image(x0, bottom));
  map.scenery().fillPolygon(outline, colour);
}

void GrassTufts(MapLayout& map, std::uint64_t seed, Colour colour, float density) {
  for (int x = 0; x < map.width(); ++x) {
    for (int y = 0; y + 1 < map.height(); ++y) {
      if (map.at(x, y) != Material::Ground || map.at(x, y + 1) != Material::Open) {
        continue;
      }
      double const r = HashUnit(x, y, seed);
      if (r > density) {
        continue;
      }
      float const height = 2.0f + static_cast<float>(HashUnit(x, y, seed + 1)) * 4.0f;
      float const lean = (static_cast<float>(HashUnit(x, y, seed + 2)) - 0.5f) * 3.0f;
      Point const base = map.image(static_cast<float>(x) + 0.5f, static_cast<float>(y) + 1.0f);
      Point const tip = map.image(static_cast<float>(x) + 0.5f + lean, static_cast<float>(y) + 1.0f + height);
      map.scenery().line(base.x, base.y, tip.x, tip.y, 1.0f, colour);
    }
  }
}

void Foliage(MapLayout& map, std::uint64_t seed, float cx, float cy, float rx, float ry, Colour light, Colour dark) {
  FixedRandom random(seed);
  int const leaves = static_cast<int>(rx * ry / 6.0f);
  for (int i = 0; i < leaves; ++i) {
    float const a = static_cast<float>(random.range(0, 6.2831853));
    float const d = static_cast<float>(std::sqrt(random.unit()));
    float const x = cx + rx * d * std::cos(a);
    float const y = cy + ry * d * std::sin(a);
    float const shade = std::clamp(0.5f + (y - cy) / (2 * ry), 0.0f, 1.0f);
    Colour c = Mix(dark, light, std::floor(shade * 4.0f) / 4.0f);
    c.a = 0.99f;
    Point const p = map.image(x, y);
    map.scenery().fillCircle(p.x, p.y, static_cast<float>(random.range(2.0, 4.0)), c);
  }
}

void Crystal(MapLayout& map, float x, float y, float height, float lean, Colour colour) {
  float const w = height * 0.28f;
  std::vector<Point> const shape = {{x - w, y}, {x - w * 0.8f + lean * 0.6f, y + height * 0.7f},
                                    {x + lean, y + height}, {x + w * 0.8f + lean * 0.6f, y + height * 0.7f}, {x + w, y}};
  map.scenery().fillPolygon(map.image(shape), colour);
  Colour highlight = Mix(colour, Colour{1, 1, 1, colour.a}, 0.45f);
  Point const a = map.image(x - w * 0.3f, y + height * 0.1f);
  Point const b = map.image(x + lean * 0.8f - w * 0.1f, y + height * 0.85f);
  map.scenery().line(a.x, a.y, b.x, b.y, std::max(1.0f, w * 0.25f), highlight);
}

void Drips(MapLayout& map, std::uint64_t seed, Colour colour, float x0, float y0, float x1, float y1) {
  for (int x = static_cast<int>(x0); x < static_cast<int>(x1); ++x) {
    for (int y = static_cast<int>(y0); y < static_cast<int>(y1); ++y) {
      if (map.at(x, y) == Material::Open || map.at(x, y - 1) != Material::Open) {
        continue;
      }
      if (HashUnit(x, y, seed) > 0.05) {
        continue;
      }
      float const length = 4.0f + static_cast<float>(HashUnit(x, y, seed + 1)) * 14.0f;
      std::vector<Point> const drip = {{static_cast<float>(x) - 2.0f, static_cast<float>(y)},
                                       {static_cast<float>(x) + 0.5f, static_cast<float>(y) - length},
                                       {static_cast<float>(x) + 3.0f, static_cast<float>(y)}};
      map.scenery().fillPolygon(map.image(drip), colour);
    }
  }
}

void Nebula(MapLayout& map, std::uint64_t seed, float cx, float cy, float r, Colour colour) {
  Point const centre = map.image(cx, cy);
  map.scenery().fillDistance(centre.x - r, centre.y - r, centre.x + r, centre.y + r,
                             [&](float x, float y) { return CircleDistance(x, y, centre.x, centre.y, r); },
                             [&](float x, float y) {
                               float const d = std::hypot(x - centre.x, y - centre.y) / r;
                               float const n = ValueNoise(x, y, 40, seed);
                               Colour c = colour;
                               c.a = colour.a * std::floor(std::clamp((1 - d) * (0.4f + n), 0.0f, 1.0f) * 6.0f) / 6.0f;
                               return c;
                             });
}
