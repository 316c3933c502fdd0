#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "sim/GameResult.h"

// A finished game whose reports disagreed, settled by re-simulating its recording on the server.
struct SettledDispute {
  std::uint32_t game = 0;
  std::vector<std::string> players;  // each place's name
  std::vector<bool> matches;         // one per place: its report is the re-simulated result
  std::optional<GameResult> truth;   // the re-simulated result; none if the recording failed
  std::uint64_t frames = 0;          // frames re-simulated
  std::string error;                 // why the recording couldn't be re-simulated, if it couldn't
};
