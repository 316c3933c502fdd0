#pragma once

#include <atomic>
#include <cstdint>
#include <vector>

#include "DisputeSettler.h"

// Settles a disputed game by re-simulating its recording file with the games' own code and comparing
// every place's report with the result the replay reached. A recording that can't be replayed is
// settled with the reason in `error`.
SettledDispute SettleByReplay(std::uint32_t game, std::vector<unsigned char> const& recordingFile,
                              std::atomic<bool> const& stop);
