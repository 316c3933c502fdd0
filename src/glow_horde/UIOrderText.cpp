#include "glow_horde/UIOrderText.h"

#include <array>
#include <sstream>

namespace {

constexpr std::array<char const*, k_lemmingActivityCount> k_keywords = {
    "bridge", "horizontal_bridge", "raise_ground", "block", "dig_down", "dig_sideways", "dig_upwards"};

} // namespace

char const* LemmingActivityKeyword(LemmingActivity activity) {
  return k_keywords[static_cast<std::size_t>(activity)];
}

std::optional<UIOrder> ParseUIOrderText(std::string const& text,
                                        std::vector<LemmingActivityTrigger> const& defaultTriggers) {
  std::istringstream in(text);
  UIOrder order;
  char comma = 0;
  std::string keyword;
  if (!(in >> order.x >> comma >> order.y >> keyword) || comma != ',') {
    return std::nullopt;
  }
  std::size_t activity = 0;
  while (activity < k_keywords.size() && keyword != k_keywords[activity]) {
    ++activity;
  }
  if (activity == k_keywords.size()) {
    return std::nullopt;
  }
  order.activity = static_cast<LemmingActivity>(activity);
  order.trigger = activity < defaultTriggers.size() ? defaultTriggers[activity] : LemmingActivityTrigger::Immediate;
  order.filter = DirectionFilter::Any;

  std::string word;
  while (in >> word) {
    if (word == "immediate") {
      order.trigger = LemmingActivityTrigger::Immediate;
    } else if (word == "blocked") {
      order.trigger = LemmingActivityTrigger::WhenBlocked;
    } else if (word == "falling") {
      order.trigger = LemmingActivityTrigger::BeforeFalling;
    } else if (word == "turned") {
      order.trigger = LemmingActivityTrigger::AfterTurning;
    } else if (word == "left") {
      order.filter = DirectionFilter::FacingLeft;
    } else if (word == "right") {
      order.filter = DirectionFilter::FacingRight;
    }
  }
  return order;
}
