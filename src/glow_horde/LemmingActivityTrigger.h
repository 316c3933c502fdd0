#pragma once

#include <cstdint>

// When an ordered activity begins. Anything but Immediate leaves the activity pending until the
// unit's own look-ahead or turn says that the moment has come.
enum class LemmingActivityTrigger : std::uint8_t {
  Immediate = 0,     // at once
  WhenBlocked = 1,   // in the frame in which the unit would turn around
  BeforeFalling = 2, // two steps before the unit would leave the ground
  AfterTurning = 3,  // right after the unit has turned around
};

inline constexpr int k_lemmingActivityTriggerCount = 4;

constexpr bool IsValidLemmingActivityTrigger(std::uint8_t value) {
  return value < k_lemmingActivityTriggerCount;
}

// The label shown on screen, e.g. "when blocked".
char const* LemmingActivityTriggerLabel(LemmingActivityTrigger trigger);
