#pragma once

#include <cstdint>

#include "aviators/AviatorCoord.h"

// A homing missile. For its first 30 steps (the launch phase) it flies straight; then it turns toward
// its target's position a few frames ahead and thrusts.
struct Missile {
  Vec2<AviatorCoord> position;
  Vec2<AviatorCoord> velocity;
  std::uint16_t rotation = 0;
  std::int16_t owner = 0;
  std::int16_t target = -1;
  std::uint32_t firedFrame = 0;
  std::uint32_t age = 0;
  Vec2<AviatorCoord> renderPosition;
  std::uint16_t renderRotation = 0;

  static constexpr std::uint32_t k_launch_steps = 30;

  // Tunable values, the same for every session; only the debug window edits them.
  static inline std::uint16_t turn_rate = 1540;
  static inline bool direct_acceleration_on_overshoot = true;
  static inline std::int32_t lead_frames = 3;
  static inline std::int32_t drag_threshold = 1000;
  static inline std::int32_t drag_numerator = 7;
  static inline std::int32_t drag_denominator = 9;
  static inline std::int32_t hit_radius = 768;

  // One homing step: turn toward the aim by turn_rate, accelerate by thrust (straight at the aim when
  // the turn stepped over the line to it), drag when fast, move.
  void updateWithHomingTowards(Vec2<AviatorCoord> aim, std::int32_t thrust);
};

// The spread of a salvo, derived from the frame and the firing slot alone: each component from -128 to
// 127 in 1/256 pixel per frame.
Vec2<AviatorCoord> MissileVelocityVariation(std::int32_t frame, std::uint16_t slot);
