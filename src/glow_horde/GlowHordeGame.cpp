#include "glow_horde/GlowHordeGame.h"

#include <fmt/format.h>

#include "world/MapDigests.h"
#include "sim/SchemaEntries.h"
#include "glow_horde/GlowHordeSimulation.h"
#include "sim/HeadlessSession.h"

namespace {

MapSettings LedgesMap(char const* name, bool wrapped) {
  MapSettings map;
  map.name = name;
  map.imageFile = "world.png";
  map.imageChecksum = MapDigests::world;
  map.maxPlayers = 4;
  map.mirrorX = true;
  map.wrapX = map.wrapY = map.cameraWrapX = map.cameraWrapY = wrapped;
  map.selectable = true;
  map.starts = {{440, 991}, {-441, 991}, {817, 991}, {-818, 991}};
  map.startFacesRight = {false, true, true, false};
  map.exits = {{-401, 159}, {400, 159}};
  map.playerTeams = {0, 1, 0, 1};
  return map;
}

MapSettings TutorialMap(char const* name, char const* imageFile, std::uint64_t checksum, Position start, Position exit) {
  MapSettings map;
  map.name = name;
  map.imageFile = imageFile;
  map.imageChecksum = checksum;
  map.maxPlayers = 1;
  map.selectable = false;
  map.starts = {start};
  map.startFacesRight = {true};
  map.exits = {exit};
  map.playerTeams = {0};
  return map;
}

}  // namespace

GlowHordeGame::GlowHordeGame(Private) {
  addMap(LedgesMap("Wrapped Ledges", true));
  addMap(LedgesMap("Unwrapped Ledges", false));
  {
    MapSettings map;
    map.name = "Cauldrons";
    map.imageFile = "world2.png";
    map.imageChecksum = MapDigests::world2;
    map.maxPlayers = 3;
    map.repeatX = 3;
    map.wrapX = map.wrapY = map.cameraWrapX = true;
    map.selectable = true;
    map.starts = {{166, 514}, {678, 514}, {1190, 514}};
    map.startFacesRight = {false, false, false};
    map.exits = {{853, 208}, {1365, 208}, {341, 208}};
    map.playerTeams = {0, 1, 2};
    addMap(std::move(map));
  }
  {
    MapSettings map;
    map.name = "Mosh pit";
    map.imageFile = "tutorial_pit.png";
    map.imageChecksum = MapDigests::tutorialPit;
    map.maxPlayers = 4;
    map.selectable = true;
    map.starts = {{728, 400}, {-728, 400}, {698, 450}, {-698, 450}};
    map.startFacesRight = {false, true, false, true};
    map.exits = {{-350, 380}, {350, 380}};
    map.playerTeams = {0, 1, 0, 1};
    addMap(std::move(map));
  }
  {
    MapSettings map;
    map.name = "Astral Steps";
    map.imageFile = "coop.png";
    map.imageChecksum = MapDigests::coop;
    map.maxPlayers = 4;
    map.selectable = false;
    map.starts = {{70, 188}, {130, 188}, {100, 208}, {160, 208}};
    map.startFacesRight = {true, true, true, true};
    map.exits = {{200, 638}};
    map.playerTeams = {0, 0, 0, 0};
    addMap(std::move(map));
  }
  addMap(TutorialMap("Tutorial 1: dig down", "tutorial_dig_down.png", MapDigests::tutorialDigDown, {784, -321}, {700, 275}));
  addMap(TutorialMap("Tutorial 2: dig sideways", "tutorial_dig_sideways.png", MapDigests::tutorialDigSideways, {780, 800},
                     {780, 400}));
  {
    MapSettings map = TutorialMap("Tutorial 3: bridge", "tutorial_bridge.png", MapDigests::tutorialBridge, {500, 650},
                                  {1090, 500});
    map.wrapY = true;
    addMap(std::move(map));
  }

  schema.push_back(MapSchemaEntry(selectableMapNames()));
  schema.push_back(IntegerSchemaEntry("duration_seconds", "Game duration (in seconds)", 30, 600, 180));
  schema.push_back(IntegerSchemaEntry("number_to_spawn", "Number to spawn, per player", 1, 200, 50));
  schema.push_back(IntegerSchemaEntry("spawn_interval_deciseconds", "Spawn interval (in tenths of a second)", 1, 100, 33));
  schema.push_back(IntegerSchemaEntry("bridge_orders", "Number of bridge orders available", 0, 100, 13));
  schema.push_back(IntegerSchemaEntry("horizontal_bridge_orders", "Number of horizontal bridge orders available", 0, 100, 13));
  schema.push_back(IntegerSchemaEntry("raise_ground_orders", "Number of raise ground orders available", 0, 100, 2));
  schema.push_back(IntegerSchemaEntry("block_orders", "Number of block orders available", 0, 100, 3));
  schema.push_back(IntegerSchemaEntry("dig_down_orders", "Number of dig down orders available", 0, 100, 5));
  schema.push_back(IntegerSchemaEntry("dig_sideways_orders", "Number of dig sideways orders available", 0, 100, 2));
  schema.push_back(IntegerSchemaEntry("dig_upwards_orders", "Number of dig upwards orders available", 0, 100, 2));

  auto named = [this](char const* name, char const* map, std::uint16_t players,
                      std::initializer_list<std::pair<char const*, int>> changes) {
    NamedGameSettings entry = NamedDefaults(schema, name, map, players, players);
    for (auto const& [key, value] : changes) {
      entry.settings.ints[key] = value;
    }
    return entry;
  };
  lookup.coopChallenges = {
      named("Single Player, Astral Steps", "Astral Steps", 1, {{"bridge_orders", 15}, {"dig_upwards_orders", 3}}),
      named("Two player, Astral Steps", "Astral Steps", 2, {{"bridge_orders", 8}, {"dig_upwards_orders", 2}}),
      named("Three player, Astral Steps", "Astral Steps", 3, {{"bridge_orders", 6}, {"dig_upwards_orders", 1}}),
      named("Four player, Astral Steps", "Astral Steps", 4, {{"bridge_orders", 5}, {"dig_upwards_orders", 1}}),
      named("Single player, Cauldrons", "Cauldrons", 1, {}),
      named("Single player, Ledges", "Unwrapped Ledges", 1, {}),
  };
  lookup.rankedMatches = {
      named("Two player, Wrapped Ledges", "Wrapped Ledges", 2, {}),
      named("Three player, Cauldrons", "Cauldrons", 3, {}),
      named("Four player game, Wrapped Ledges", "Wrapped Ledges", 4, {}),
  };
}

std::unique_ptr<IRunningGame> GlowHordeGame::startSession(std::shared_ptr<SDL3App>, int localPlayer,
                                                          unsigned long long framePeriod, unsigned char delayFrames,
                                                          GameSettings const& settings,
                                                          std::vector<unsigned short> const& players, bool) const {
  return std::make_unique<HeadlessSession<GlowHordeSimulation>>(shared_from_this(), localPlayer, framePeriod,
                                                                delayFrames, settings, mapFor(settings), players);
}

std::string GlowHordeGame::formatResult(std::vector<long long> const& row, bool) const {
  if (row.empty() || row[0] == 0) {
    return "No hordelings exited";
  }
  if (row.size() < 2) {
    // A row from a recording or the server that lacks its time.
    return fmt::format("{} exited", row[0]);
  }
  double const averageSeconds = static_cast<double>(-row[1]) / 1000.0 / static_cast<double>(row[0]);
  return fmt::format("{} exited in average {:.1f} seconds", row[0], averageSeconds);
}
