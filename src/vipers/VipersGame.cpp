#include "vipers/VipersGame.h"

#include <fmt/format.h>

#include <limits>

#include "vipers/VipersSimulation.h"
#include "sim/HeadlessSession.h"
#include "world/EmptyBerthMap.h"
#include "sim/SchemaEntries.h"

VipersGame::VipersGame(Private) {
  addMap(EmptyBerthMap());
  schema.push_back(MapSchemaEntry(selectableMapNames()));
  schema.push_back(IntegerSchemaEntry("duration_seconds", "Game duration (in seconds)", 30, 600, 180));
  schema.push_back(IntegerSchemaEntry("start_length", "Start length for vipers (in world pixels)", 300, 1200, 600));
  // The bounds of this entry are inverted and its default lies outside them; the room page shows them as they are.
  schema.push_back(IntegerSchemaEntry("grow_by", "Growth on eating food (in world pixels)", 100, 50, 200));
  schema.push_back(IntegerSchemaEntry("collision_penalty",
                                      "Tail loss on bounce (up to world pixels, speed dependent)", 0, 100, 60));
  lookup.rankedMatches = EmptyBerthRankedMatches(schema);
}

std::unique_ptr<IRunningGame> VipersGame::startSession(std::shared_ptr<SDL3App>, int localPlayer,
                                                       unsigned long long framePeriod, unsigned char delayFrames,
                                                       GameSettings const& settings,
                                                       std::vector<unsigned short> const& players,
                                                       bool) const {
  return std::make_unique<HeadlessSession<VipersSimulation>>(shared_from_this(), localPlayer, framePeriod, delayFrames,
                                                             settings, mapFor(settings), players);
}

std::string VipersGame::formatResult(std::vector<long long> const& row, bool) const {
  if (row.size() < 2) {
    return "No result";
  }
  long long const length = row[0] / 256;
  if (row[1] == std::numeric_limits<long long>::max()) {
    return fmt::format("Length {} (survived)", length);
  }
  return fmt::format("Length {} (died after {:.1f} seconds)", length, static_cast<double>(row[1]) / 1000.0);
}
