#include "sim/ResultConsensus.h"

std::optional<std::vector<unsigned char>> AgreedResultBytes(GameResults const& results) {
  std::vector<unsigned char> const* agreed = nullptr;
  for (auto const& report : results.reportedResults) {
    if (report.empty()) {
      continue;
    }
    if (agreed == nullptr) {
      agreed = &report;
    } else if (report != *agreed) {
      return std::nullopt;
    }
  }
  if (agreed == nullptr) {
    return std::nullopt;
  }
  return *agreed;
}
