#include "sim/SchemaEntries.h"

SchemaEntry IntegerSchemaEntry(char const* key, char const* label, int minimum, int maximum, int defaultValue) {
  SchemaEntry entry;
  entry.key = key;
  entry.label = label;
  entry.kind = SchemaEntry::Integer;
  entry.minimum = minimum;
  entry.maximum = maximum;
  entry.defaultInt = defaultValue;
  return entry;
}

NamedGameSettings NamedDefaults(GameSettingsSchema const& schema, char const* name, char const* map,
                                std::uint16_t minPlayers, std::uint16_t maxPlayers) {
  NamedGameSettings entry;
  entry.name = name;
  entry.settings = DefaultSettingsFromSchema(schema);
  entry.settings.strings["map"] = map;
  entry.minPlayers = minPlayers;
  entry.maxPlayers = maxPlayers;
  return entry;
}
