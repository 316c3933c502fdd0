#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "sim/Game.h"
#include "sim/GameSettings.h"
#include "sim/IRunningGame.h"
#include "sim/MapSettings.h"

class SDL3App;

// A game type: its catalogue of maps, settings, challenges and ranked matches, and the factory of sessions.
class IGame {
public:
  virtual ~IGame() = default;

  virtual Game type() const = 0;
  virtual std::unique_ptr<IRunningGame> startSession(std::shared_ptr<SDL3App> app, int localPlayer,
                                                     unsigned long long framePeriod, unsigned char delayFrames,
                                                     GameSettings const& settings,
                                                     std::vector<unsigned short> const& players,
                                                     bool debugTools) const = 0;
  virtual std::string formatResult(std::vector<long long> const& row, bool isTeamResult) const = 0;
  // Both raise std::out_of_range for a name that is not a map of this game.
  virtual std::uint16_t maxPlayersForMap(std::string const& map) const;
  virtual std::vector<int> playerTeamsForMap(std::string const& map) const;

  GameSettingsSchema schema;
  GameSettingsLookup lookup;
  std::unordered_map<std::string, MapSettings> maps;

protected:
  // Adds a map to the table; the schema's "map" entry is built from the selectable ones.
  void addMap(MapSettings map);
  std::vector<std::string> selectableMapNames() const;
  // The map named by settings.strings["map"]; raises std::out_of_range if either is missing.
  MapSettings const& mapFor(GameSettings const& settings) const;
};
