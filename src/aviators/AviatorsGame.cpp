#include "aviators/AviatorsGame.h"

#include <fmt/format.h>

#include <stdexcept>

#include "EmptyBerthMap.h"
#include "SchemaEntries.h"

AviatorsGame::AviatorsGame(Private) {
  addMap(EmptyBerthMap());
  schema.push_back(MapSchemaEntry(selectableMapNames()));
  schema.push_back(IntegerSchemaEntry("duration_seconds", "Game duration (in seconds)", 30, 600, 180));
  schema.push_back(IntegerSchemaEntry("missile_speed", "Missile thrust", 35, 70, 55));
  lookup.rankedMatches = {
      NamedDefaults(schema, "Two player", "The Empty Berth", 2, 2),
      NamedDefaults(schema, "Four player", "The Empty Berth", 4, 4),
  };
}

std::unique_ptr<IRunningGame> AviatorsGame::startSession(std::shared_ptr<SDL3App>, int, unsigned long long,
                                                         unsigned char, GameSettings const& settings,
                                                         std::vector<unsigned short> const&, bool) const {
  mapFor(settings);
  throw std::runtime_error("Aviators sessions are not available in this build of the client.");
}

std::string AviatorsGame::formatResult(std::vector<long long> const& row, bool isTeamResult) const {
  if (row.size() < 2) {
    return "No result";
  }
  if (row[0] != 0) {
    return fmt::format("{} health remaining", row[0]);
  }
  double const seconds = static_cast<double>(row[1]) / 1000.0;
  return isTeamResult ? fmt::format("All died after {:.1f} seconds", seconds)
                      : fmt::format("Died after {:.1f} seconds", seconds);
}
