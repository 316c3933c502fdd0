#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "sim/IHasher.h"
#include "glow_horde/LemmingActivity.h"

// How many more orders of each activity a player may give, in activity value order.
struct ActivityAvailabilities {
  std::array<std::int32_t, k_lemmingActivityCount> counts{};

  std::int32_t& operator[](LemmingActivity activity) { return counts[static_cast<std::size_t>(activity)]; }
  std::int32_t operator[](LemmingActivity activity) const { return counts[static_cast<std::size_t>(activity)]; }

  // The seven counts, four bytes each, in activity order.
  void hash(IHasher& hasher) const;
  void serialiseHashedData(std::vector<unsigned char>& out) const;
};
