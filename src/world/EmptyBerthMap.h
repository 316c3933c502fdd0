#pragma once

#include <vector>

#include "sim/GameSettings.h"
#include "sim/MapSettings.h"

// The one map shared by the two ship games.
MapSettings EmptyBerthMap();
// Their ranked matches on it: two and four players, the schema's defaults.
std::vector<NamedGameSettings> EmptyBerthRankedMatches(GameSettingsSchema const& schema);
