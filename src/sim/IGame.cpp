#include "sim/IGame.h"

#include "sim/KeyLookup.h"

std::uint16_t IGame::maxPlayersForMap(std::string const& map) const {
  return ValueAt(maps, map).maxPlayers;
}

std::vector<int> IGame::playerTeamsForMap(std::string const& map) const {
  return ValueAt(maps, map).playerTeams;
}

void IGame::addMap(MapSettings map) {
  std::string name = map.name;
  maps.emplace(std::move(name), std::move(map));
}

std::vector<std::string> IGame::selectableMapNames() const {
  std::vector<std::string> names;
  for (auto const& [name, map] : maps) {
    if (map.selectable) {
      names.push_back(name);
    }
  }
  return names;
}

MapSettings const& IGame::mapFor(GameSettings const& settings) const {
  return ValueAt(maps, ValueAt(settings.strings, std::string("map")));
}
