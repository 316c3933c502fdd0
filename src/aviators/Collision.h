#pragma once

#include <cstdint>

#include "aviators/AviatorCoord.h"
#include "aviators/IntegerSqrt.h"
#include "aviators/TraverseWorldPixels.h"

// Collision of a point body with a map of blocked pixels: the walk to the first blocked pixel, the
// normal of the surface there and the bounce off it. The map type needs isBlocked(x, y); CollisionMap is
// the one used.

struct CollisionResult {
  bool hit = false;
  Vec2<AviatorCoord> position;
  Vec2<AviatorCoord> normal;
};

// The surface normal at a blocked pixel, from its eight neighbours, not scaled to unit length. A pixel
// whose neighbours give no direction gets (0, -256).
template <class Map>
Vec2<AviatorCoord> ComputeCollisionNormal(Map const& map, WorldCoord x, WorldCoord y) {
  auto b = [&](WorldCoord px, WorldCoord py) -> std::int32_t { return map.isBlocked(px, py) ? 1 : 0; };
  std::int32_t const L = b(x - 1, y), R = b(x + 1, y), U = b(x, y - 1), D = b(x, y + 1);
  std::int32_t const UL = b(x - 1, y - 1), UR = b(x + 1, y - 1), DL = b(x - 1, y + 1), DR = b(x + 1, y + 1);
  std::int32_t const nx = 2 * L - 2 * R + UL + DL - UR - DR;
  std::int32_t const ny = 2 * U - 2 * D + UL + UR - DL - DR;
  if (nx == 0 && ny == 0) {
    return {0, -256};
  }
  return {256 * nx, 256 * ny};
}

// Walks from start to end; at the first blocked pixel reports the centre of the last free pixel (start
// itself when there was none) and the normal there.
template <class Map>
CollisionResult CheckLineCollision(Map const& map, Vec2<AviatorCoord> start, Vec2<AviatorCoord> end) {
  CollisionResult result;
  Vec2<AviatorCoord> lastFree = start;
  TraverseWorldPixels(start, end, [&](Vec2<WorldCoord> p) {
    if (map.isBlocked(p.x, p.y)) {
      result.hit = true;
      result.position = lastFree;
      result.normal = ComputeCollisionNormal(map, p.x, p.y);
      return false;
    }
    lastFree = {PixelCentre(p.x), PixelCentre(p.y)};
    return true;
  });
  return result;
}

// Whether the second pixel of the walk from start to end is blocked; false when both lie in one pixel.
template <class Map>
bool CheckCollisionOnePixelAlong(Map const& map, Vec2<AviatorCoord> start, Vec2<AviatorCoord> end) {
  bool first = true;
  bool blocked = false;
  TraverseWorldPixels(start, end, [&](Vec2<WorldCoord> p) {
    if (first) {
      first = false;
      return true;
    }
    blocked = map.isBlocked(p.x, p.y);
    return false;
  });
  return blocked;
}

// Reflects a velocity that moves into the surface; bounce is in 1/256 of the speed kept along the
// normal. Returns false, changing nothing, when the body is not moving into the surface.
inline bool TryApplyBounce(Vec2<AviatorCoord>& velocity, Vec2<AviatorCoord> normal, int bounce) {
  std::int64_t const dot = std::int64_t{normal.x} * velocity.x + std::int64_t{normal.y} * velocity.y;
  std::int64_t const nn = std::int64_t{normal.x} * normal.x + std::int64_t{normal.y} * normal.y;
  if (dot >= 0 || nn == 0) {
    return false;
  }
  std::int64_t const k = dot * (bounce + 256) / nn;
  if (k == 0) {
    return false;
  }
  velocity.x = static_cast<AviatorCoord>(velocity.x - k * normal.x / 256);
  velocity.y = static_cast<AviatorCoord>(velocity.y - k * normal.y / 256);
  return true;
}

// Moves a point by its velocity through the map. On a hit the point stops at the centre of the last
// free pixel and takes the first velocity of three (reflection, straight out along the normal, straight
// back) whose next pixel is free, or stops dead and is stuck. Returns whether it hit; a point that
// starts in a blocked pixel is left exactly as it is.
template <class Map>
bool CollisionUpdate(Map const& map, Vec2<AviatorCoord>& position, Vec2<AviatorCoord>& velocity, int bounce,
                     bool* stuck) {
  if (stuck != nullptr) {
    *stuck = false;
  }
  if (map.isBlocked(PixelOf(position.x), PixelOf(position.y))) {
    return true;
  }
  Vec2<AviatorCoord> const target = position + velocity;
  CollisionResult const collision = CheckLineCollision(map, position, target);
  if (!collision.hit) {
    position = target;
    return false;
  }
  position = collision.position;
  Vec2<AviatorCoord> const normal = collision.normal;

  Vec2<AviatorCoord> reflected = velocity;
  if (TryApplyBounce(reflected, normal, bounce) && !CheckCollisionOnePixelAlong(map, position, position + reflected)) {
    velocity = reflected;
    return true;
  }

  std::int64_t const n = static_cast<std::int64_t>(IntegerSqrt(static_cast<std::uint64_t>(LengthSquared(normal))));
  std::int64_t const v = static_cast<std::int64_t>(IntegerSqrt(static_cast<std::uint64_t>(LengthSquared(velocity))));
  std::int32_t const k = static_cast<std::int32_t>(static_cast<std::uint32_t>(v) * static_cast<std::uint32_t>(bounce));
  if (n != 0) {
    Vec2<AviatorCoord> const out{static_cast<AviatorCoord>(std::int64_t{normal.x} * k / (n * 256)),
                                 static_cast<AviatorCoord>(std::int64_t{normal.y} * k / (n * 256))};
    if (!CheckCollisionOnePixelAlong(map, position, position + out)) {
      velocity = out;
      return true;
    }
  }

  Vec2<AviatorCoord> const back{
      static_cast<AviatorCoord>(-(static_cast<std::int32_t>(static_cast<std::uint32_t>(velocity.x) *
                                                            static_cast<std::uint32_t>(bounce)) /
                                  256)),
      static_cast<AviatorCoord>(-(static_cast<std::int32_t>(static_cast<std::uint32_t>(velocity.y) *
                                                            static_cast<std::uint32_t>(bounce)) /
                                  256))};
  if (!CheckCollisionOnePixelAlong(map, position, position + back)) {
    velocity = back;
    return true;
  }
  velocity = {0, 0};
  if (stuck != nullptr) {
    *stuck = true;
  }
  return true;
}
