#include "vipers/RenderTail.h"

#include "present/Renderer.h"

namespace {
using Point = Vec2<AviatorCoord>;
}  // namespace

void RenderTail(std::deque<Point> const& points, float radius, Renderer const& renderer) {
  if (points.size() == 1) {
    renderer.renderCircle(static_cast<float>(points[0].x) / 256.0f, static_cast<float>(points[0].y) / 256.0f,
                          radius);
    return;
  }
  for (std::size_t i = 1; i < points.size(); ++i) {
    renderer.renderSweptCircle(static_cast<float>(points[i - 1].x) / 256.0f,
                               static_cast<float>(points[i - 1].y) / 256.0f, static_cast<float>(points[i].x) / 256.0f,
                               static_cast<float>(points[i].y) / 256.0f, radius);
  }
}
