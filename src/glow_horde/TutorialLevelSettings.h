#pragma once

#include "sim/GameSettings.h"

// The number of tutorial levels, numbered from 0.
inline constexpr int kTutorialLevels = 4;

// The Glow Horde settings of a tutorial level, from the defaults of Glow Horde's schema: one minute,
// a spawn every two seconds, no orders but those that the level teaches, and the level's own map.
// Raises std::runtime_error for a level that doesn't exist.
GameSettings TutorialLevelSettings(GameSettingsSchema const& glowHordeSchema, int level);
