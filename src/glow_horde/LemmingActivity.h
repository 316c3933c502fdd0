#pragma once

#include <cstdint>

// What a unit can be ordered to do. The numeric values go over the wire and index the counts of
// orders that a player has left, so they must never change.
enum class LemmingActivity : std::uint16_t {
  Bridge = 0,
  HorizontalBridge = 1,
  RaiseGround = 2,
  Block = 3,
  DigDown = 4,
  DigSideways = 5,
  DigUpwards = 6,
};

inline constexpr int k_lemmingActivityCount = 7;

// Whether a raw value names one of the activities.
constexpr bool IsValidLemmingActivity(std::uint16_t value) {
  return value < k_lemmingActivityCount;
}

// The label shown on screen, e.g. "Horizontal bridge".
char const* LemmingActivityLabel(LemmingActivity activity);
