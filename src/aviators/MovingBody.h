#pragma once

#include <cstdint>
#include <optional>

#include "aviators/AviatorCoord.h"
#include "aviators/Collision.h"
#include "aviators/FixedTrig.h"
#include "aviators/IntegerSqrt.h"

// What one movement step did: whether the body hit something, and its speed after thrust.
struct CollisionInfo {
  bool collided = false;
  std::int32_t speed = 0;
};

// A body that turns, thrusts and bounces, moved as a point through a collision map.
struct MovingBody {
  Vec2<AviatorCoord> position;
  Vec2<AviatorCoord> velocity;
  std::uint16_t rotation = 0;
  std::int32_t recoveryFrames = 0;  // frames left in which the body does not move after a hit
  std::uint8_t controls = 0;        // bits 0-1 turn (1 +1024, 2 -1024), bits 2-3 thrust (1 thrust, 2 brake)

  static constexpr int k_bounce = 200;
  static constexpr int k_recovery_frames = 2;
  static constexpr std::int32_t k_thrust = 100;

  // One frame: turn, then (unless recovering) thrust or brake, move and bounce. With a minimum speed a
  // slower body is raised to it after the move.
  template <class Map>
  CollisionInfo updateMovement(Map const& map, std::optional<int> minimumSpeed) {
    std::uint8_t const turn = controls & 3u;
    if (turn == 1) {
      rotation = static_cast<std::uint16_t>(rotation + 1024u);
    } else if (turn == 2) {
      rotation = static_cast<std::uint16_t>(rotation + 64512u);
    }
    if (recoveryFrames != 0) {
      recoveryFrames -= 1;
      return {false, 0};
    }
    std::uint8_t const thrust = (controls >> 2) & 3u;
    if (thrust == 2) {
      velocity.x = static_cast<AviatorCoord>(std::int64_t{velocity.x} * 15 / 16);
      velocity.y = static_cast<AviatorCoord>(std::int64_t{velocity.y} * 15 / 16);
    } else if (thrust == 1) {
      velocity += DirectionVector(rotation, k_thrust);
    }
    CollisionInfo info;
    info.speed = static_cast<std::int32_t>(IntegerSqrt(static_cast<std::uint64_t>(LengthSquared(velocity))));
    info.collided = CollisionUpdate(map, position, velocity, k_bounce, nullptr);
    if (info.collided) {
      recoveryFrames = k_recovery_frames;
    }
    if (minimumSpeed.has_value()) {
      std::int64_t const m = *minimumSpeed;
      std::int64_t const s = static_cast<std::int64_t>(IntegerSqrt(static_cast<std::uint64_t>(LengthSquared(velocity))));
      if (s < m && s != 0) {
        velocity.x = static_cast<AviatorCoord>(std::int64_t{velocity.x} * m / s);
        velocity.y = static_cast<AviatorCoord>(std::int64_t{velocity.y} * m / s);
      }
    }
    return info;
  }
};
