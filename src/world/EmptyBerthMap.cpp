#include "world/EmptyBerthMap.h"

#include "world/MapDigests.h"
#include "sim/SchemaEntries.h"

MapSettings EmptyBerthMap() {
  MapSettings map;
  map.name = "The Empty Berth";
  map.imageFile = "aviators.png";
  map.imageChecksum = MapDigests::aviators;
  map.maxPlayers = 4;
  map.mirrorX = true;
  map.mirrorY = true;
  map.selectable = true;
  map.starts = {{400, 400}, {-400, -400}, {-400, 400}, {400, -400}};
  map.startRotations = {0x2000, 0xA000, 0x6000, 0xE000};
  map.playerTeams = {0, 1, 2, 3};
  map.exits = {{700, 70}, {700, 70}, {700, 70}, {700, 70}};
  map.startFacesRight = {true, true, true};
  return map;
}

std::vector<NamedGameSettings> EmptyBerthRankedMatches(GameSettingsSchema const& schema) {
  return {NamedDefaults(schema, "Two player", "The Empty Berth", 2, 2),
          NamedDefaults(schema, "Four player", "The Empty Berth", 4, 4)};
}
