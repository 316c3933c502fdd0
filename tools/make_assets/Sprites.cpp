#include "Sprites.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace {

constexpr float kPi = 3.14159265f;

Colour Grey(float darkness) {
  float const v = 1.0f - darkness;
  return {v, v, v, 1.0f};
}

Canvas Paper(int width, int height) { return Canvas(width, height, Colour{1, 1, 1, 1}); }

// The outline of an arched doorway: straight sides, a half circle on top.
float ArchDistance(float x, float y, float cx, float bottom, float halfWidth, float sideHeight) {
  float const springY = bottom - sideHeight;  // where the arch springs from the sides
  if (y >= springY) {
    float const side = std::fabs(x - cx) - halfWidth;
    float const base = y - bottom;
    return std::max(side, base);
  }
  return std::max(CircleDistance(x, y, cx, springY, halfWidth), y - bottom);
}

}  // namespace

Canvas MakeEntrySprite() {
  // Drawn over 80 by 100 world pixels, standing on the spawn point: an arched gate from which units drop.
  Canvas c = Paper(160, 200);
  float const cx = 80, bottom = 196;
  c.fillDistance(0, 0, 160, 200, [&](float x, float y) { return ArchDistance(x, y, cx, bottom, 70, 110); },
                 [](float, float) { return Grey(1.0f); });
  c.fillDistance(0, 0, 160, 200, [&](float x, float y) { return ArchDistance(x, y, cx, bottom + 10, 56, 110); },
                 [&](float, float y) { return Grey(0.18f + 0.3f * (y / 200.0f)); });
  // Keystone and stones of the arch, cut in white.
  for (int i = 0; i <= 8; ++i) {
    float const a = kPi + kPi * static_cast<float>(i) / 8.0f;
    float const x0 = cx + 56 * std::cos(a), y0 = 86 + 56 * std::sin(a);
    float const x1 = cx + 70 * std::cos(a), y1 = 86 + 70 * std::sin(a);
    c.line(x0, y0, x1, y1, 2.0f, Grey(0.45f));
  }
  for (float y = 100; y < 190; y += 22) {
    c.line(10, y, 24, y, 2.0f, Grey(0.45f));
    c.line(136, y, 150, y, 2.0f, Grey(0.45f));
  }
  // Chevrons pointing down through the opening.
  for (int i = 0; i < 3; ++i) {
    float const y = 96 + 30.0f * static_cast<float>(i);
    c.polyline({{60, y}, {80, y + 16}, {100, y}}, 7.0f, Grey(0.85f));
  }
  return c;
}

Canvas MakeExitSprite() {
  // Drawn over 60 by 60 world pixels centred on the exit: a glowing ring with a door in it.
  Canvas c = Paper(120, 120);
  float const cx = 60, cy = 60;
  c.fillDistance(0, 0, 120, 120, [&](float x, float y) { return CircleDistance(x, y, cx, cy, 46); },
                 [&](float x, float y) {
                   float const d = std::hypot(x - cx, y - cy) / 46.0f;
                   return Grey(0.15f + 0.45f * d * d);
                 });
  c.strokeCircle(cx, cy, 46, 8, Grey(1.0f));
  for (int i = 0; i < 12; ++i) {
    float const a = 2 * kPi * static_cast<float>(i) / 12.0f;
    c.line(cx + 52 * std::cos(a), cy + 52 * std::sin(a), cx + 58 * std::cos(a), cy + 58 * std::sin(a), 3.5f, Grey(0.9f));
  }
  c.fillDistance(0, 0, 120, 120, [&](float x, float y) { return ArchDistance(x, y, cx, 88, 15, 26); },
                 [](float, float) { return Grey(0.95f); });
  return c;
}

Canvas MakeHordelingSprite() {
  // Drawn over 5 by 10 world pixels standing on the unit's position (and stretched for missiles).
  Canvas c = Paper(10, 20);
  c.fillCircle(5.0f, 3.6f, 3.2f, Grey(1.0f));
  c.fillRoundedRect(1.6f, 6.5f, 8.4f, 14.5f, 1.8f, Grey(1.0f));
  c.line(3.2f, 13.5f, 2.0f, 19.4f, 2.4f, Grey(1.0f));
  c.line(6.8f, 13.5f, 8.0f, 19.4f, 2.4f, Grey(1.0f));
  c.fillCircle(6.4f, 3.2f, 0.9f, Grey(0.35f));  // an eye, looking right
  return c;
}

Canvas MakeSelectionBracketsSprite() {
  // Drawn over 18 by 24 world pixels around the unit that an order would go to.
  Canvas c = Paper(36, 48);
  float const w = 3.5f, m = 2.5f, arm = 9.0f;
  float const l = m, r = 36 - m, t = m, b = 48 - m;
  c.polyline({{l, t + arm}, {l, t}, {l + arm, t}}, w, Grey(1.0f));
  c.polyline({{r - arm, t}, {r, t}, {r, t + arm}}, w, Grey(1.0f));
  c.polyline({{l, b - arm}, {l, b}, {l + arm, b}}, w, Grey(1.0f));
  c.polyline({{r - arm, b}, {r, b}, {r, b - arm}}, w, Grey(1.0f));
  return c;
}

Canvas MakeCircleSprite() {
  Canvas c = Paper(128, 128);
  c.fillCircle(64, 64, 63, Grey(1.0f));
  return c;
}

Canvas MakeCircleCrossSectionSprite() {
  // The profile of the circle through its centre, repeated along the width: a capsule's body joins
  // the two end circles without a seam.
  Canvas c = Paper(8, 128);
  for (int y = 0; y < 128; ++y) {
    float const d = std::fabs(static_cast<float>(y) + 0.5f - 64.0f) - 63.0f;
    float const coverage = std::clamp(0.5f - d, 0.0f, 1.0f);
    for (int x = 0; x < 8; ++x) {
      c.blend(x, y, Grey(1.0f), coverage);
    }
  }
  return c;
}

Canvas MakeShipSprite() {
  // 63 by 63, nose pointing right (angle 0); drawn white over the player's coloured disc, so the
  // lighter canopy lets the colour show through.
  Canvas c = Paper(63, 63);
  std::vector<Point> const hull = {{60, 31.5f}, {30, 22}, {12, 6}, {6, 8}, {14, 24}, {8, 31.5f},
                                   {14, 39},    {6, 55},  {12, 57}, {30, 41}};
  c.fillPolygon(hull, Grey(1.0f));
  c.fillDistance(0, 0, 63, 63,
                 [](float x, float y) {
                   float const dx = (x - 36) / 10.0f, dy = (y - 31.5f) / 4.5f;
                   return (std::sqrt(dx * dx + dy * dy) - 1.0f) * 4.5f;
                 },
                 [](float, float) { return Grey(0.25f); });
  c.line(18, 31.5f, 26, 31.5f, 2.0f, Grey(0.55f));
  return c;
}

Canvas MakeRingSprite() {
  Canvas c = Paper(128, 128);
  c.strokeCircle(64, 64, 58, 9, Grey(1.0f));
  c.strokeCircle(64, 64, 50, 3, Grey(0.4f));
  return c;
}

Canvas MakeStarSprite() {
  // 256 by 256; food is drawn at a fifth of this, about the size of its 50-pixel square.
  Canvas c = Paper(256, 256);
  std::vector<Point> star;
  for (int i = 0; i < 10; ++i) {
    float const a = -kPi / 2 + kPi * static_cast<float>(i) / 5.0f;
    float const r = i % 2 == 0 ? 124.0f : 52.0f;
    star.push_back({128 + r * std::cos(a), 134 + r * std::sin(a)});
  }
  c.fillPolygon(star, Grey(1.0f));
  c.fillCircle(128, 134, 30, Grey(0.7f));
  return c;
}
