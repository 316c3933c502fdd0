#pragma once

#include <optional>
#include <vector>

// The status bar of an Aviators game at the top centre of the screen: every ship's health in its slot's
// colour, the local stock of missiles and the target lock, which blinks while the target is out of range.
void StatusBarUI(std::vector<unsigned short> const& slots, std::vector<int> const& healths, int maxHealth, int missiles,
                 int maxMissiles, std::optional<unsigned short> targetSlot, bool targetOutOfRange);
