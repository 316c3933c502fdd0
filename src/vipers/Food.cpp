#include "vipers/Food.h"

#include <cstdlib>

namespace food {

namespace {

bool Inside(Vec2<AviatorCoord> v) {
  return std::llabs(v.x) <= kHalfSize && std::llabs(v.y) <= kHalfSize;
}

// Where the segment a + s·d crosses the line u = e (u the first coordinate, w the second), the
// crossing's w times |du| must lie within ±|du|·h.
bool CrossesEdge(std::int64_t au, std::int64_t aw, std::int64_t du, std::int64_t dw) {
  if (du == 0) {
    return false;
  }
  std::int64_t const h = kHalfSize;
  std::int64_t const span = du < 0 ? -du : du;
  for (std::int64_t const e : {-h, h}) {
    bool const toward = (au <= e && du > 0) || (au > e && du < 0);
    std::int64_t const gap = e - au;
    if (!toward || (gap < 0 ? -gap : gap) > span) {
      continue;
    }
    std::int64_t t = dw * gap + du * aw;
    if (du < 0) {
      t = -t;
    }
    if (-span * h <= t && t <= span * h) {
      return true;
    }
  }
  return false;
}

}  // namespace

bool Touches(Vec2<AviatorCoord> from, Vec2<AviatorCoord> to, Vec2<WorldCoord> item) {
  Vec2<AviatorCoord> const c = Centre(item);
  Vec2<AviatorCoord> const a = from - c;
  Vec2<AviatorCoord> const b = to - c;
  Vec2<AviatorCoord> const d = b - a;
  if (Inside(a) || Inside(b)) {
    return true;
  }
  return CrossesEdge(a.x, a.y, d.x, d.y) || CrossesEdge(a.y, a.x, d.y, d.x);
}

std::uint32_t Seed(std::vector<Vec2<AviatorCoord>> const& headPositions, std::uint32_t frame) {
  std::uint32_t seed = 0;
  for (Vec2<AviatorCoord> const& p : headPositions) {
    seed ^= static_cast<std::uint32_t>(p.x) * 0x9E3779B1u ^ static_cast<std::uint32_t>(p.y) * 0x85EBCA77u;
  }
  seed ^= frame * 0x85EBCA77u;
  return seed == 0 ? 0x2545F491u : seed;
}

}  // namespace food
