#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "sim/GameResult.h"
#include "sim/GameSettings.h"

// A Glow Horde game played by scripted clicks, one client per player as in a networked game: each
// client runs its own simulation with its own player local, gives that player's clicks at the frames
// of the script (the player's own update numbers, as a driver's injected orders), and gets every
// other player's orders delayFrames frames later, as the server relays them.
namespace glow_horde_testing {

struct ScriptedClick {
  int player = 0;
  std::uint32_t frame = 0;
  std::string text;  // the text form of an order, e.g. "200,470 horizontal_bridge falling right"
};

struct ScriptedGame {
  std::vector<GameResult> results;  // each client's
  std::vector<int> ordersSent;      // by player: clicks that found a unit
  std::vector<int> ordersAccepted;  // by player: of those, the ones that took effect
  // outByExit[e][p]: units of player p that went out at exit e (the order of exitPositions), as
  // client 0 saw them leave.
  std::vector<std::vector<int>> outByExit;
  // By player: the update at which each of its units went out, in order.
  std::vector<std::vector<std::uint32_t>> outFrames;
};

// Plays the game with the players in slots 0, 1, ... Raises std::invalid_argument for a click that
// isn't an order or (by name) an unknown co-op challenge or ranked match.
ScriptedGame PlayScriptedGame(GameSettings const& settings, int players, std::vector<ScriptedClick> const& clicks,
                              std::uint8_t delayFrames = 15);
ScriptedGame PlayScriptedGame(std::string const& namedSettings, int players, std::vector<ScriptedClick> const& clicks,
                              std::uint8_t delayFrames = 15);

// The settings of the named co-op challenge or ranked match of the catalogue.
GameSettings NamedGlowHordeSettings(std::string const& name);
// The settings of a tutorial level (from 0), as the main loop starts it.
GameSettings TutorialSettings(int level);

}  // namespace glow_horde_testing
