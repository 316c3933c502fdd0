#pragma once

#include <optional>
#include <vector>

#include "sim/GameResults.h"

// The result that the players of a game agreed on: the reports that aren't empty, if there is at least
// one and all of them are equal byte for byte. A disagreement gives nothing.
std::optional<std::vector<unsigned char>> AgreedResultBytes(GameResults const& results);
