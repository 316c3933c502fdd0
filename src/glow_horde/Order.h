#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "glow_horde/LemmingActivity.h"
#include "glow_horde/LemmingActivityTrigger.h"

// An order resolved to one unit of one player, the form in which every client applies it. The unit
// is named by its place in the player's list, valid until that player's next update, with its id as
// a check.
struct Order {
  std::uint16_t index_in_array_ = 0;
  std::uint16_t id_ = 0;
  LemmingActivity activity_ = LemmingActivity::Bridge;
  LemmingActivityTrigger trigger_ = LemmingActivityTrigger::Immediate;

  static constexpr std::size_t k_encodedSize = 7;

  // Bytes 0-1 index, 2-3 id, 4-5 activity, 6 trigger, each little-endian.
  std::array<unsigned char, k_encodedSize> encode() const;
  std::vector<unsigned char> toBytes() const;
  // Anything but exactly seven bytes naming a known activity and trigger is no order.
  static std::optional<Order> decode(std::span<unsigned char const> bytes);

  friend bool operator==(Order const&, Order const&) = default;
};
