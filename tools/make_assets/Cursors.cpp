#include "Cursors.h"

#include <cmath>
#include <vector>

namespace {

constexpr int kCursorSize = 32;
constexpr int kIconSize = 20;

Colour const kInk = Rgb(18, 16, 34);

// A filled polygon with a dark outline of the given width around it.
void OutlinedPolygon(Canvas& c, std::vector<Point> const& points, float outline, Colour fill) {
  Box const box = BoxOf(points);
  c.fillDistance(box.minX - outline, box.minY - outline, box.maxX + outline, box.maxY + outline,
                 [&](float x, float y) { return PolygonDistance(x, y, points) - outline; },
                 [&](float, float) { return kInk; });
  c.fillPolygon(points, fill);
}

// A polyline drawn as a coloured stroke over a wider dark one.
void OutlinedStroke(Canvas& c, std::vector<Point> const& points, float width, float outline, Colour colour) {
  c.polyline(points, width + 2 * outline, kInk);
  c.polyline(points, width, colour);
}

// A horizontal arrow (shaft and head) centred on (cx, cy), pointing right when dir is +1.
void DirectionArrow(Canvas& c, float cx, float cy, float dir, Colour colour) {
  float const half = 6.5f;
  std::vector<Point> shape = {{-half, -1.6f}, {1.0f, -1.6f}, {1.0f, -4.6f}, {half, 0.0f},
                              {1.0f, 4.6f},   {1.0f, 1.6f},  {-half, 1.6f}};
  for (Point& p : shape) {
    p = {cx + dir * p.x, cy + p.y};
  }
  OutlinedPolygon(c, shape, 1.3f, colour);
}

}  // namespace

Canvas MakeCursor(CursorDirection direction) {
  Canvas cursor(kCursorSize, kCursorSize);
  std::vector<Point> const arrow = {{1.5f, 1.5f},   {1.5f, 22.5f}, {6.8f, 17.6f}, {10.6f, 26.0f},
                                    {14.2f, 24.4f}, {10.5f, 16.2f}, {17.4f, 16.2f}};
  OutlinedPolygon(cursor, arrow, 1.4f, Rgb(255, 255, 255));
  // A warm gradient inside, lighter at the tip.
  cursor.fillDistance(0, 0, kCursorSize, kCursorSize,
                      [&](float x, float y) { return PolygonDistance(x, y, arrow) + 1.6f; },
                      [](float x, float y) {
                        float const t = std::fmin(1.0f, (x + y) / 34.0f);
                        return Mix(Rgb(255, 250, 214), Rgb(255, 170, 60), t);
                      });
  if (direction != CursorDirection::None) {
    float const dir = direction == CursorDirection::Right ? 1.0f : -1.0f;
    DirectionArrow(cursor, 24.0f, 7.0f, dir, Rgb(90, 220, 255));
  }
  return cursor;
}

Canvas MakeImmediateIcon() {
  Canvas icon(kIconSize, kIconSize);
  std::vector<Point> const bolt = {{11.5f, 1.5f}, {4.0f, 11.0f}, {9.0f, 11.0f}, {7.0f, 18.5f},
                                   {16.0f, 8.0f}, {10.8f, 8.0f}, {13.5f, 1.5f}};
  OutlinedPolygon(icon, bolt, 1.3f, Rgb(255, 222, 60));
  return icon;
}

Canvas MakeBlockedIcon() {
  Canvas icon(kIconSize, kIconSize);
  // A wall of two brick columns on the right...
  icon.fillRoundedRect(12.5f, 1.5f, 18.5f, 18.5f, 1.0f, kInk);
  for (int row = 0; row < 4; ++row) {
    float const top = 2.6f + 4.0f * static_cast<float>(row);
    float const split = row % 2 == 0 ? 15.5f : 16.5f;
    icon.fillRoundedRect(13.6f, top, split - 0.3f, top + 3.3f, 0.6f, Rgb(214, 96, 62));
    icon.fillRoundedRect(split + 0.3f, top, 17.4f, top + 3.3f, 0.6f, Rgb(186, 74, 48));
  }
  // ...and an arrow running into it.
  OutlinedPolygon(icon, {{1.5f, 8.3f}, {6.5f, 8.3f}, {6.5f, 5.0f}, {11.2f, 10.0f}, {6.5f, 15.0f}, {6.5f, 11.7f}, {1.5f, 11.7f}},
                  1.2f, Rgb(255, 255, 255));
  return icon;
}

Canvas MakeFallingIcon() {
  Canvas icon(kIconSize, kIconSize);
  // A ledge at the top left...
  icon.fillRoundedRect(0.8f, 5.0f, 9.5f, 9.5f, 1.0f, kInk);
  icon.fillRoundedRect(1.8f, 6.0f, 8.5f, 8.5f, 0.6f, Rgb(150, 112, 70));
  // ...and an arrow stepping off its edge and down.
  OutlinedStroke(icon, {{3.5f, 3.2f}, {11.5f, 3.2f}, {13.2f, 4.4f}, {13.8f, 6.5f}, {13.8f, 12.5f}}, 2.4f, 1.1f,
                 Rgb(110, 200, 255));
  OutlinedPolygon(icon, {{9.4f, 11.5f}, {18.2f, 11.5f}, {13.8f, 18.6f}}, 1.1f, Rgb(110, 200, 255));
  return icon;
}

Canvas MakeTurnedIcon() {
  Canvas icon(kIconSize, kIconSize);
  // A U-turn: out to the right along the top, round, and back to the left with the head.
  std::vector<Point> path;
  path.push_back({3.0f, 5.5f});
  path.push_back({11.0f, 5.5f});
  for (int i = 0; i <= 12; ++i) {
    float const a = -1.5707963f + 3.1415926f * static_cast<float>(i) / 12.0f;
    path.push_back({11.0f + 4.5f * std::cos(a), 10.0f + 4.5f * std::sin(a)});
  }
  path.push_back({8.5f, 14.5f});
  OutlinedStroke(icon, path, 2.6f, 1.1f, Rgb(120, 240, 120));
  OutlinedPolygon(icon, {{9.5f, 9.8f}, {9.5f, 19.2f}, {2.0f, 14.5f}}, 1.1f, Rgb(120, 240, 120));
  return icon;
}
