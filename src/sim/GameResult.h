#pragma once

#include <cstdint>
#include <vector>

// The outcome of a session as one client saw it. Two results agree only if all three fields are equal.
struct GameResult {
  std::uint32_t endFrame = 0;
  std::vector<std::vector<long long>> results;
  std::uint64_t endStateChecksum = 0;

  friend bool operator==(GameResult const&, GameResult const&) = default;
};

// Orders result rows: greater is better, the first value counts first, values compare as signed
// 64-bit numbers and the longer row wins on a common prefix. Returns <0, 0 or >0 like strcmp.
int CompareResultRows(std::vector<long long> const& a, std::vector<long long> const& b);
