#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "GameResult.h"
#include "GameSettings.h"
#include "MapSettings.h"

// Plays a Glow Horde game for one player the way the main loop does, through the local order source
// and UpdateSimulation, with no window: each order in the text form ("800,600 dig_down") is clicked
// just before the step of its frame, as a driver's InjectGameOrder would.
namespace glow_horde_testing {

struct TimedOrder {
  std::uint32_t frame = 0;
  std::string text;
};

struct PlayedGame {
  GameResult result;
  int ordersSent = 0;                      // clicks that found a unit
  int ordersAccepted = 0;                  // of those, the ones that took effect
  std::vector<std::uint32_t> arrivalFrames; // the frame of each step in which units of team 0 went out
};

PlayedGame PlayLocalGame(GameSettings const& settings, MapSettings const& map, std::vector<TimedOrder> const& orders,
                         std::uint8_t delayFrames = 15);

// The settings and map of a tutorial level, as the main loop starts it.
GameSettings TutorialSettings(int level);
MapSettings TutorialMap(int level);

}  // namespace glow_horde_testing
