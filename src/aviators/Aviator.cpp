#include "aviators/Aviator.h"

Aviator Aviator::At(Vec2<AviatorCoord> position, std::uint16_t rotation) {
  Aviator aviator;
  aviator.position = position;
  aviator.rotation = rotation;
  return aviator;
}

void Aviator::hash(IHasher& hasher) const {
  auto feed = [&](auto const& value) { hasher.update(&value, sizeof value); };
  feed(position.x);
  feed(position.y);
  feed(velocity.x);
  feed(velocity.y);
  feed(rotation);
  feed(recoveryFrames);
  feed(controls);
  feed(health);
  feed(missiles);
  feed(missileTimer);
  feed(effectTimer);
  std::uint8_t const hasTarget = target.has_value() ? 1 : 0;
  feed(hasTarget);
  if (target.has_value()) {
    feed(*target);
  }
  feed(lockLostFrames);
  std::uint8_t const hasDeath = deathFrame.has_value() ? 1 : 0;
  feed(hasDeath);
  if (deathFrame.has_value()) {
    feed(*deathFrame);
  }
}
