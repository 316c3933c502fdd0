#include "glow_horde/Order.h"

std::array<unsigned char, Order::k_encodedSize> Order::encode() const {
  auto const activity = static_cast<std::uint16_t>(activity_);
  return {
      static_cast<unsigned char>(index_in_array_ & 0xFF), static_cast<unsigned char>(index_in_array_ >> 8),
      static_cast<unsigned char>(id_ & 0xFF),             static_cast<unsigned char>(id_ >> 8),
      static_cast<unsigned char>(activity & 0xFF),        static_cast<unsigned char>(activity >> 8),
      static_cast<unsigned char>(trigger_),
  };
}

std::vector<unsigned char> Order::toBytes() const {
  auto const bytes = encode();
  return {bytes.begin(), bytes.end()};
}

std::optional<Order> Order::decode(std::span<unsigned char const> bytes) {
  if (bytes.size() != k_encodedSize) {
    return std::nullopt;
  }
  auto const u16 = [&](std::size_t at) {
    return static_cast<std::uint16_t>(bytes[at] | (static_cast<unsigned>(bytes[at + 1]) << 8));
  };
  std::uint16_t const activity = u16(4);
  unsigned char const trigger = bytes[6];
  if (!IsValidLemmingActivity(activity) || !IsValidLemmingActivityTrigger(trigger)) {
    return std::nullopt;
  }
  Order order;
  order.index_in_array_ = u16(0);
  order.id_ = u16(2);
  order.activity_ = static_cast<LemmingActivity>(activity);
  order.trigger_ = static_cast<LemmingActivityTrigger>(trigger);
  return order;
}
