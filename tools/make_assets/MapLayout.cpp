#include "MapLayout.h"

#include <algorithm>
#include <cmath>

MapLayout::MapLayout(int width, int height)
    : width_(width), height_(height), cells_(static_cast<std::size_t>(width) * height, Material::Open),
      scenery_(width, height) {}

Material MapLayout::at(int x, int y) const {
  if (x < 0 || y < 0 || x >= width_ || y >= height_) {
    return Material::Rock;
  }
  return cells_[static_cast<std::size_t>(y) * width_ + x];
}

void MapLayout::set(int x, int y, Material m) {
  if (x >= 0 && y >= 0 && x < width_ && y < height_) {
    cells_[static_cast<std::size_t>(y) * width_ + x] = m;
  }
}

void MapLayout::fillRect(int x0, int y0, int x1, int y1, Material m) {
  for (int y = std::max(0, y0); y < std::min(height_, y1); ++y) {
    for (int x = std::max(0, x0); x < std::min(width_, x1); ++x) {
      set(x, y, m);
    }
  }
}

void MapLayout::fillPolygon(std::vector<Point> const& points, Material m) {
  Box const box = BoxOf(points);  // y upward: minY is the bottom
  int const x0 = std::max(0, static_cast<int>(std::floor(box.minX)));
  int const x1 = std::min(width_ - 1, static_cast<int>(box.maxX));
  int const y0 = std::max(0, static_cast<int>(std::floor(box.minY)));
  int const y1 = std::min(height_ - 1, static_cast<int>(box.maxY));
  for (int y = y0; y <= y1; ++y) {
    for (int x = x0; x <= x1; ++x) {
      if (PolygonDistance(static_cast<float>(x) + 0.5f, static_cast<float>(y) + 0.5f, points) < 0.0f) {
        set(x, y, m);
      }
    }
  }
}

void MapLayout::fillCircle(float cx, float cy, float r, Material m) {
  for (int y = std::max(0, static_cast<int>(cy - r) - 1); y <= std::min(height_ - 1, static_cast<int>(cy + r) + 1); ++y) {
    for (int x = std::max(0, static_cast<int>(cx - r) - 1); x <= std::min(width_ - 1, static_cast<int>(cx + r) + 1); ++x) {
      if (std::hypot(static_cast<float>(x) + 0.5f - cx, static_cast<float>(y) + 0.5f - cy) < r) {
        set(x, y, m);
      }
    }
  }
}

void MapLayout::fillWhere(std::function<bool(int, int)> const& inside, Material m) {
  for (int y = 0; y < height_; ++y) {
    for (int x = 0; x < width_; ++x) {
      if (inside(x, y)) {
        set(x, y, m);
      }
    }
  }
}

std::vector<Point> MapLayout::image(std::vector<Point> const& worldPoints) const {
  std::vector<Point> result;
  result.reserve(worldPoints.size());
  for (Point const& p : worldPoints) {
    result.push_back(image(p.x, p.y));
  }
  return result;
}
