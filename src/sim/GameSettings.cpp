#include "sim/GameSettings.h"

#include <stdexcept>

#include <algorithm>

GameSettings const& GameSettingsLookup::settingsFrom(GameSpecSettings const& settings) const {
  // An index comes from a room's GameSpec or a recording file, so one beyond the catalogue is refused
  // rather than read past the end.
  struct Visitor {
    GameSettingsLookup const& lookup;
    static GameSettings const& at(std::vector<NamedGameSettings> const& list, std::size_t index) {
      if (index >= list.size()) {
        throw std::out_of_range("The game has no challenge or ranked match of that number.");
      }
      return list[index].settings;
    }
    GameSettings const& operator()(CoopChallengeIndex const& c) const { return at(lookup.coopChallenges, c.index); }
    GameSettings const& operator()(RankedMatchIndex const& r) const { return at(lookup.rankedMatches, r.index); }
    GameSettings const& operator()(GameSettings const& s) const { return s; }
  };
  return std::visit(Visitor{*this}, settings);
}

GameSettings DefaultSettingsFromSchema(GameSettingsSchema const& schema) {
  GameSettings result;
  for (SchemaEntry const& entry : schema) {
    if (entry.kind == SchemaEntry::Integer) {
      result.ints[entry.key] = entry.defaultInt;
    } else {
      result.strings[entry.key] = entry.defaultChoice;
    }
  }
  return result;
}

SchemaEntry MapSchemaEntry(std::vector<std::string> selectableMapNames) {
  std::sort(selectableMapNames.begin(), selectableMapNames.end());
  SchemaEntry entry;
  entry.key = "map";
  entry.label = "Map";
  entry.kind = SchemaEntry::Choice;
  if (!selectableMapNames.empty()) {
    entry.defaultChoice = selectableMapNames.front();
  }
  entry.choices = std::move(selectableMapNames);
  return entry;
}
