#include "aviators/Missile.h"

#include "aviators/FixedTrig.h"
#include "aviators/IntegerSqrt.h"
#include "sim/XXHashHasher.h"

namespace {

int Side(Vec2<AviatorCoord> d, std::uint16_t angle) {
  std::int64_t const cross = std::int64_t{d.x} * FixedSine(angle) - std::int64_t{d.y} * FixedCosine(angle);
  return (cross > 0) - (cross < 0);
}

}  // namespace

void Missile::updateWithHomingTowards(Vec2<AviatorCoord> aim, std::int32_t thrust) {
  Vec2<AviatorCoord> const d = aim - position;
  int const before = Side(d, rotation);
  rotation = before < 0 ? static_cast<std::uint16_t>(rotation + turn_rate) : static_cast<std::uint16_t>(rotation - turn_rate);
  int const after = Side(d, rotation);

  Vec2<AviatorCoord> acceleration;
  if (direct_acceleration_on_overshoot && after != before) {
    auto const length = static_cast<std::int64_t>(IntegerSqrt(static_cast<std::uint64_t>(LengthSquared(d))));
    if (length != 0) {
      acceleration = {static_cast<AviatorCoord>(std::int64_t{d.x} * thrust / length),
                      static_cast<AviatorCoord>(std::int64_t{d.y} * thrust / length)};
    }
  } else {
    acceleration = DirectionVector(rotation, thrust);
  }
  if (LengthSquared(velocity) > std::int64_t{drag_threshold} * drag_threshold && drag_denominator != 0) {
    velocity.x = static_cast<AviatorCoord>(std::int64_t{velocity.x} * drag_numerator / drag_denominator);
    velocity.y = static_cast<AviatorCoord>(std::int64_t{velocity.y} * drag_numerator / drag_denominator);
  }
  velocity += acceleration;
  position += velocity;
  age += 1;
}

Vec2<AviatorCoord> MissileVelocityVariation(std::int32_t frame, std::uint16_t slot) {
  std::uint64_t const key = std::uint64_t{slot} | (std::uint64_t{static_cast<std::uint32_t>(frame)} << 16);
  unsigned char bytes[8];
  for (int i = 0; i < 8; ++i) {
    bytes[i] = static_cast<unsigned char>(key >> (8 * i));
  }
  XXHashHasher hasher;
  hasher.update(bytes, sizeof bytes);
  std::uint64_t const digest = hasher.digest();
  return {static_cast<std::int8_t>(digest & 0xFF), static_cast<std::int8_t>((digest >> 8) & 0xFF)};
}
