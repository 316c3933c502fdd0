#pragma once

#include <cstdint>
#include <optional>

#include "aviators/MovingBody.h"
#include "sim/IHasher.h"

// A ship: a moving body with health, a stock of missiles, a target lock and a death.
struct Aviator : MovingBody {
  std::int32_t health = max_health;
  std::int32_t missiles = max_missiles;
  std::int32_t missileTimer = 0;  // frames to the next added missile
  std::int32_t effectTimer = 0;   // counts down to 0; nothing sets it, but it is part of the state
  std::optional<std::uint16_t> target;
  std::int32_t lockLostFrames = 0;  // frames in a row that the target has been out of range
  std::optional<std::int32_t> deathFrame;

  // Tunable values, the same for every session; only the debug window edits them.
  static inline std::int32_t max_health = 500;
  static inline std::int32_t max_missiles = 40;
  static inline std::int32_t missiles_add_interval = 120;

  static Aviator At(Vec2<AviatorCoord> position, std::uint16_t rotation);

  // Feeds the shared state of the ship, field by field, little-endian.
  void hash(IHasher& hasher) const;
};
