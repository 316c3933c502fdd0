#include "sim/GameResult.h"

#include <algorithm>

int CompareResultRows(std::vector<long long> const& a, std::vector<long long> const& b) {
  std::size_t const common = std::min(a.size(), b.size());
  for (std::size_t i = 0; i < common; ++i) {
    if (a[i] != b[i]) {
      return a[i] < b[i] ? -1 : 1;
    }
  }
  if (a.size() == b.size()) {
    return 0;
  }
  return a.size() < b.size() ? -1 : 1;
}
