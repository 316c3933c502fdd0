#include "aviators/AviatorsGame.h"

#include <fmt/format.h>

#include "aviators/AviatorsSimulation.h"
#include "sim/HeadlessSession.h"
#include "world/EmptyBerthMap.h"
#include "sim/SchemaEntries.h"

AviatorsGame::AviatorsGame(Private) {
  addMap(EmptyBerthMap());
  schema.push_back(MapSchemaEntry(selectableMapNames()));
  schema.push_back(IntegerSchemaEntry("duration_seconds", "Game duration (in seconds)", 30, 600, 180));
  schema.push_back(IntegerSchemaEntry("missile_speed", "Missile thrust", 35, 70, 55));
  lookup.rankedMatches = EmptyBerthRankedMatches(schema);
}

std::unique_ptr<IRunningGame> AviatorsGame::startSession(std::shared_ptr<SDL3App>, int localPlayer,
                                                         unsigned long long framePeriod, unsigned char delayFrames,
                                                         GameSettings const& settings,
                                                         std::vector<unsigned short> const& players,
                                                         bool) const {
  return std::make_unique<HeadlessSession<AviatorsSimulation>>(shared_from_this(), localPlayer, framePeriod,
                                                               delayFrames, settings, mapFor(settings), players,
                                                               std::function<CollisionMap(CollisionMap const&)>{});
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
