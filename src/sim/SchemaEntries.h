#pragma once

#include "sim/GameSettings.h"

// An integer entry of a settings schema.
SchemaEntry IntegerSchemaEntry(char const* key, char const* label, int minimum, int maximum, int defaultValue);

// A ranked match or challenge: the schema's defaults with "map" set, for exactly `players` players.
NamedGameSettings NamedDefaults(GameSettingsSchema const& schema, char const* name, char const* map,
                                std::uint16_t minPlayers, std::uint16_t maxPlayers);
