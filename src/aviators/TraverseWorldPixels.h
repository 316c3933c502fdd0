#pragma once

#include <cstdint>

#include "aviators/AviatorCoord.h"

// Walks every pixel that the segment from start to end touches, in order, with integer arithmetic only,
// so that the walk from end to start visits the same pixels in reverse order. The visitor takes a
// Vec2<WorldCoord> and returns whether to go on.
//
// Crossing times along the segment are kept multiplied by |dx|·|dy|, so that no division is needed. A
// pixel corner belongs to the pixel whose x and y both start at it: when the segment passes exactly
// through a corner with equal signs, the walk steps diagonally; with mixed signs it visits the corner's
// owner, the pixel between.
template <class Visitor>
void TraverseWorldPixels(Vec2<AviatorCoord> start, Vec2<AviatorCoord> end, Visitor&& visitor) {
  constexpr std::int64_t never = 0x1FFFFFFFFFFFFFFF;
  Vec2<WorldCoord> c = PixelOf(start);
  Vec2<WorldCoord> const e = PixelOf(end);
  if (!visitor(c) || c == e) {
    return;
  }
  std::int64_t const dx = std::int64_t{end.x} - start.x;
  std::int64_t const dy = std::int64_t{end.y} - start.y;
  int const sx = (dx > 0) - (dx < 0);
  int const sy = (dy > 0) - (dy < 0);
  std::int64_t const wx = dy != 0 ? (dy < 0 ? -dy : dy) : 1;
  std::int64_t const wy = dx != 0 ? (dx < 0 ? -dx : dx) : 1;
  std::int64_t tx = never;
  std::int64_t stepx = never;
  std::int64_t ty = never;
  std::int64_t stepy = never;
  if (sx != 0) {
    std::int64_t const bx = dx > 0 ? 256 * (std::int64_t{c.x} + 1) : 256 * std::int64_t{c.x};
    std::int64_t const gap = bx - start.x;
    tx = (gap < 0 ? -gap : gap) * wx;
    stepx = 256 * wx;
  }
  if (sy != 0) {
    std::int64_t const by = dy > 0 ? 256 * (std::int64_t{c.y} + 1) : 256 * std::int64_t{c.y};
    std::int64_t const gap = by - start.y;
    ty = (gap < 0 ? -gap : gap) * wy;
    stepy = 256 * wy;
  }
  auto stepX = [&] {
    c.x += sx;
    tx += stepx;
  };
  auto stepY = [&] {
    c.y += sy;
    ty += stepy;
  };
  for (;;) {
    if (tx < ty) {
      stepX();
    } else if (ty < tx) {
      stepY();
    } else if (sx == sy) {
      stepX();
      stepY();
    } else if (dx > 0) {  // and dy < 0: the corner's owner is the pixel to the right
      stepX();
      if (!visitor(c) || c == e) {
        return;
      }
      stepY();
    } else {  // dx < 0 and dy > 0: the corner's owner is the pixel above
      stepY();
      if (!visitor(c) || c == e) {
        return;
      }
      stepX();
    }
    if (!visitor(c) || c == e) {
      return;
    }
  }
}
