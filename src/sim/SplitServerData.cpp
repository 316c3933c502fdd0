#include "sim/SplitServerData.h"

#include <algorithm>
#include <cstddef>

std::vector<std::vector<unsigned char>> SplitServerData(std::vector<unsigned char> const& update, int playerCount) {
  std::vector<std::vector<unsigned char>> orders(static_cast<std::size_t>(std::max(playerCount, 0)));
  std::size_t position = 0;
  for (std::vector<unsigned char>& order : orders) {
    if (position >= update.size()) {
      break;
    }
    std::size_t const length = update[position++];
    std::size_t const available = std::min(length, update.size() - position);
    auto const first = update.begin() + static_cast<std::ptrdiff_t>(position);
    order.assign(first, first + static_cast<std::ptrdiff_t>(available));
    position += available;
  }
  return orders;
}
