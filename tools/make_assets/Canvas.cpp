#include "Canvas.h"

#include <SDL3/SDL.h>
#include <SDL3_image/SDL_image.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <stdexcept>

Colour Rgb(int r, int g, int b, float a) {
  return {static_cast<float>(r) / 255.0f, static_cast<float>(g) / 255.0f, static_cast<float>(b) / 255.0f, a};
}

Colour Mix(Colour const& x, Colour const& y, float t) {
  return {x.r + (y.r - x.r) * t, x.g + (y.g - x.g) * t, x.b + (y.b - x.b) * t, x.a + (y.a - x.a) * t};
}

unsigned char ToByte(float v) {
  float const clamped = std::clamp(v, 0.0f, 1.0f);
  return static_cast<unsigned char>(std::lround(clamped * 255.0f));
}

Canvas::Canvas(int width, int height, Colour fill)
    : width_(width), height_(height), pixels_(static_cast<std::size_t>(width) * height, fill) {}

void Canvas::blend(int x, int y, Colour c, float coverage) {
  if (x < 0 || y < 0 || x >= width_ || y >= height_) {
    return;
  }
  float const sa = std::clamp(c.a * coverage, 0.0f, 1.0f);
  if (sa <= 0.0f) {
    return;
  }
  Colour& d = at(x, y);
  float const outA = sa + d.a * (1.0f - sa);
  if (outA <= 0.0f) {
    d = {0, 0, 0, 0};
    return;
  }
  auto channel = [&](float s, float dst) { return (s * sa + dst * d.a * (1.0f - sa)) / outA; };
  d = {channel(c.r, d.r), channel(c.g, d.g), channel(c.b, d.b), outA};
}

void Canvas::fillDistance(float left, float top, float right, float bottom,
                          std::function<float(float, float)> const& distance,
                          std::function<Colour(float, float)> const& paint) {
  int const x0 = std::max(0, static_cast<int>(std::floor(left)) - 1);
  int const y0 = std::max(0, static_cast<int>(std::floor(top)) - 1);
  int const x1 = std::min(width_ - 1, static_cast<int>(std::ceil(right)) + 1);
  int const y1 = std::min(height_ - 1, static_cast<int>(std::ceil(bottom)) + 1);
  for (int y = y0; y <= y1; ++y) {
    for (int x = x0; x <= x1; ++x) {
      float const px = static_cast<float>(x) + 0.5f;
      float const py = static_cast<float>(y) + 0.5f;
      float const coverage = std::clamp(0.5f - distance(px, py), 0.0f, 1.0f);
      if (coverage > 0.0f) {
        blend(x, y, paint(px, py), coverage);
      }
    }
  }
}

Box BoxOf(std::vector<Point> const& points) {
  Box box{1e9f, 1e9f, -1e9f, -1e9f};
  for (Point const& p : points) {
    box.minX = std::min(box.minX, p.x);
    box.maxX = std::max(box.maxX, p.x);
    box.minY = std::min(box.minY, p.y);
    box.maxY = std::max(box.maxY, p.y);
  }
  return box;
}

float CircleDistance(float x, float y, float cx, float cy, float r) { return std::hypot(x - cx, y - cy) - r; }

float SegmentDistance(float x, float y, float x0, float y0, float x1, float y1) {
  float const dx = x1 - x0;
  float const dy = y1 - y0;
  float const lengthSquared = dx * dx + dy * dy;
  float t = lengthSquared > 0.0f ? ((x - x0) * dx + (y - y0) * dy) / lengthSquared : 0.0f;
  t = std::clamp(t, 0.0f, 1.0f);
  return std::hypot(x - (x0 + t * dx), y - (y0 + t * dy));
}

float PolygonDistance(float x, float y, std::vector<Point> const& points) {
  float best = 1e30f;
  bool inside = false;
  std::size_t const n = points.size();
  for (std::size_t i = 0, j = n - 1; i < n; j = i++) {
    Point const& a = points[i];
    Point const& b = points[j];
    best = std::min(best, SegmentDistance(x, y, a.x, a.y, b.x, b.y));
    if ((a.y > y) != (b.y > y) && x < (b.x - a.x) * (y - a.y) / (b.y - a.y) + a.x) {
      inside = !inside;
    }
  }
  return inside ? -best : best;
}

void Canvas::fillCircle(float cx, float cy, float r, Colour c) {
  fillDistance(cx - r, cy - r, cx + r, cy + r, [=](float x, float y) { return CircleDistance(x, y, cx, cy, r); },
               [=](float, float) { return c; });
}

void Canvas::strokeCircle(float cx, float cy, float r, float width, Colour c) {
  float const outer = r + width / 2;
  fillDistance(cx - outer, cy - outer, cx + outer, cy + outer,
               [=](float x, float y) { return std::fabs(CircleDistance(x, y, cx, cy, r)) - width / 2; },
               [=](float, float) { return c; });
}

void Canvas::line(float x0, float y0, float x1, float y1, float width, Colour c) {
  float const h = width / 2;
  fillDistance(std::min(x0, x1) - h, std::min(y0, y1) - h, std::max(x0, x1) + h, std::max(y0, y1) + h,
               [=](float x, float y) { return SegmentDistance(x, y, x0, y0, x1, y1) - h; },
               [=](float, float) { return c; });
}

void Canvas::polyline(std::vector<Point> const& points, float width, Colour c) {
  if (points.size() < 2) {
    return;
  }
  Box const box = BoxOf(points);
  float const h = width / 2;
  fillDistance(box.minX - h, box.minY - h, box.maxX + h, box.maxY + h,
               [&](float x, float y) {
                 float best = 1e30f;
                 for (std::size_t i = 1; i < points.size(); ++i) {
                   best = std::min(best, SegmentDistance(x, y, points[i - 1].x, points[i - 1].y, points[i].x, points[i].y));
                 }
                 return best - h;
               },
               [=](float, float) { return c; });
}

void Canvas::fillPolygon(std::vector<Point> const& points, Colour c) {
  fillPolygon(points, [=](float, float) { return c; });
}

void Canvas::fillPolygon(std::vector<Point> const& points, std::function<Colour(float, float)> const& paint) {
  Box const box = BoxOf(points);
  fillDistance(box.minX, box.minY, box.maxX, box.maxY, [&](float x, float y) { return PolygonDistance(x, y, points); },
               paint);
}

void Canvas::fillRoundedRect(float left, float top, float right, float bottom, float radius, Colour c) {
  float const cx = (left + right) / 2;
  float const cy = (top + bottom) / 2;
  float const hx = (right - left) / 2 - radius;
  float const hy = (bottom - top) / 2 - radius;
  fillDistance(left, top, right, bottom,
               [=](float x, float y) {
                 float const qx = std::fabs(x - cx) - hx;
                 float const qy = std::fabs(y - cy) - hy;
                 float const outside = std::hypot(std::max(qx, 0.0f), std::max(qy, 0.0f));
                 return outside + std::min(std::max(qx, qy), 0.0f) - radius;
               },
               [=](float, float) { return c; });
}

void Canvas::draw(Canvas const& other, int x, int y) {
  for (int sy = 0; sy < other.height(); ++sy) {
    for (int sx = 0; sx < other.width(); ++sx) {
      blend(x + sx, y + sy, other.at(sx, sy), 1.0f);
    }
  }
}

SDL_Surface* Canvas::toSurface() const {
  SDL_Surface* surface = SDL_CreateSurface(width_, height_, SDL_PIXELFORMAT_ARGB8888);
  if (surface == nullptr) {
    throw std::runtime_error(std::string("Failed to create a surface: ") + SDL_GetError());
  }
  for (int y = 0; y < height_; ++y) {
    auto* row = reinterpret_cast<std::uint32_t*>(static_cast<std::uint8_t*>(surface->pixels) +
                                                 static_cast<std::ptrdiff_t>(y) * surface->pitch);
    for (int x = 0; x < width_; ++x) {
      Colour const& c = at(x, y);
      std::uint32_t const a = ToByte(c.a);
      // Fully transparent pixels carry no colour, which keeps the files small.
      row[x] = a == 0 ? 0u
                      : (a << 24) | (std::uint32_t{ToByte(c.r)} << 16) | (std::uint32_t{ToByte(c.g)} << 8) | ToByte(c.b);
    }
  }
  return surface;
}

void Canvas::savePng(std::string const& path) const {
  SDL_Surface* surface = toSurface();
  bool const saved = IMG_SavePNG(surface, path.c_str());
  SDL_DestroySurface(surface);
  if (!saved) {
    throw std::runtime_error("Failed to save '" + path + "': " + SDL_GetError());
  }
}
