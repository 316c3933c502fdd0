#pragma once

#include <cstdint>
#include <functional>
#include <vector>

#include "Canvas.h"

// What a map pixel is for units: open, ground (can be removed) or rock (indestructible).
enum class Material : std::uint8_t { Open = 0, Ground = 1, Rock = 2 };

// A map being designed, in world coordinates: x to the right, y upward, (0, 0) the bottom left pixel.
// It holds the terrain and, separately, the scenery: shapes for the eye only, drawn where the terrain
// is open.
class MapLayout {
public:
  MapLayout(int width, int height);

  int width() const { return width_; }
  int height() const { return height_; }
  Material at(int x, int y) const;  // outside: Rock, as the world treats it
  void set(int x, int y, Material m);

  // Fills x in [x0, x1) and y in [y0, y1).
  void fillRect(int x0, int y0, int x1, int y1, Material m);
  // Fills the pixels whose centres lie inside the polygon (world points).
  void fillPolygon(std::vector<Point> const& points, Material m);
  void fillCircle(float cx, float cy, float r, Material m);
  // Fills every pixel for which the predicate holds.
  void fillWhere(std::function<bool(int, int)> const& inside, Material m);

  // Scenery, drawn with world coordinates (y up) on a canvas of the image's orientation.
  Canvas& scenery() { return scenery_; }
  Canvas const& scenery() const { return scenery_; }
  Point image(float x, float y) const { return {x, static_cast<float>(height_) - y}; }
  std::vector<Point> image(std::vector<Point> const& worldPoints) const;

private:
  int width_;
  int height_;
  std::vector<Material> cells_;
  Canvas scenery_;
};
