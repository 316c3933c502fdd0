#pragma once

#include <functional>
#include <string>
#include <vector>

struct SDL_Surface;

// A colour with straight (not premultiplied) alpha, every channel from 0 to 1.
struct Colour {
  float r = 0, g = 0, b = 0, a = 1;
};

Colour Rgb(int r, int g, int b, float a = 1.0f);
Colour Mix(Colour const& x, Colour const& y, float t);

struct Point {
  float x = 0, y = 0;
};

// The smallest box that holds every point of a list.
struct Box {
  float minX, minY, maxX, maxY;
};
Box BoxOf(std::vector<Point> const& points);

// A floating-point RGBA picture in image coordinates (row 0 at the top, pixel centres at +0.5),
// with anti-aliased shapes drawn by signed distance and composited "over" what is there.
class Canvas {
public:
  Canvas(int width, int height, Colour fill = {0, 0, 0, 0});

  int width() const { return width_; }
  int height() const { return height_; }
  Colour& at(int x, int y) { return pixels_[static_cast<std::size_t>(y) * width_ + x]; }
  Colour const& at(int x, int y) const { return pixels_[static_cast<std::size_t>(y) * width_ + x]; }

  // Composites colour c with extra coverage (0..1) over pixel (x, y); ignores pixels outside.
  void blend(int x, int y, Colour c, float coverage);

  // Fills the area where distance(x, y) < 0 within the box, anti-aliased over one pixel, with a colour
  // that may vary by position.
  void fillDistance(float left, float top, float right, float bottom, std::function<float(float, float)> const& distance,
                    std::function<Colour(float, float)> const& paint);

  void fillCircle(float cx, float cy, float r, Colour c);
  void strokeCircle(float cx, float cy, float r, float width, Colour c);
  void line(float x0, float y0, float x1, float y1, float width, Colour c);
  void polyline(std::vector<Point> const& points, float width, Colour c);
  void fillPolygon(std::vector<Point> const& points, Colour c);
  void fillPolygon(std::vector<Point> const& points, std::function<Colour(float, float)> const& paint);
  void fillRoundedRect(float left, float top, float right, float bottom, float radius, Colour c);

  // Composites another canvas over this one with its top left corner at (x, y).
  void draw(Canvas const& other, int x, int y);

  // An 8-bit ARGB8888 surface of the picture (owned by the caller), and the same saved as a PNG file.
  SDL_Surface* toSurface() const;
  void savePng(std::string const& path) const;

private:
  int width_;
  int height_;
  std::vector<Colour> pixels_;
};

// Signed distances (negative inside) of the basic shapes.
float CircleDistance(float x, float y, float cx, float cy, float r);
float SegmentDistance(float x, float y, float x0, float y0, float x1, float y1);
float PolygonDistance(float x, float y, std::vector<Point> const& points);

// Quantises a channel to a byte, rounding to nearest.
unsigned char ToByte(float v);
