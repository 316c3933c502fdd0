#include "sim/GameSettings.h"

#include <algorithm>

GameSettings const& GameSettingsLookup::settingsFrom(GameSpecSettings const& settings) const {
  struct Visitor {
    GameSettingsLookup const& lookup;
    GameSettings const& operator()(CoopChallengeIndex const& c) const { return lookup.coopChallenges[c.index].settings; }
    GameSettings const& operator()(RankedMatchIndex const& r) const { return lookup.rankedMatches[r.index].settings; }
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
