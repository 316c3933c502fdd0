#pragma once

#include <cstdint>
#include <string>
#include <unordered_map>
#include <variant>
#include <vector>

// The custom settings of a game. strings always holds "map" in a playable settings object.
struct GameSettings {
  std::unordered_map<std::string, std::string> strings;
  std::unordered_map<std::string, std::int32_t> ints;

  friend bool operator==(GameSettings const&, GameSettings const&) = default;
};

// One setting that a player can choose.
struct SchemaEntry {
  enum Kind : std::int32_t { Choice = 0, Integer = 1 };

  std::string key;
  std::string label;
  std::int32_t kind = Choice;
  std::int32_t minimum = 0;
  std::int32_t maximum = 0;
  std::int32_t defaultInt = 0;
  std::vector<std::string> choices;
  std::string defaultChoice;
};

using GameSettingsSchema = std::vector<SchemaEntry>;

// A fixed, named set of settings with the room's player limits.
struct NamedGameSettings {
  std::string name;
  GameSettings settings;
  std::uint16_t minPlayers = 1;
  std::uint16_t maxPlayers = 1;
};

struct CoopChallengeIndex {
  std::uint32_t index = 0;
  friend bool operator==(CoopChallengeIndex const&, CoopChallengeIndex const&) = default;
};

struct RankedMatchIndex {
  std::uint32_t index = 0;
  friend bool operator==(RankedMatchIndex const&, RankedMatchIndex const&) = default;
};

// What a room plays: a challenge, a ranked match, or custom settings (in this alternative order).
using GameSpecSettings = std::variant<CoopChallengeIndex, RankedMatchIndex, GameSettings>;

struct GameSettingsLookup {
  std::vector<NamedGameSettings> coopChallenges;
  std::vector<NamedGameSettings> rankedMatches;

  // The settings that a GameSpec's settings variant stands for. Indices are trusted.
  GameSettings const& settingsFrom(GameSpecSettings const& settings) const;
};

// Every entry of the schema at its default value.
GameSettings DefaultSettingsFromSchema(GameSettingsSchema const& schema);

// The schema entry "map", built from the names of the selectable maps.
SchemaEntry MapSchemaEntry(std::vector<std::string> selectableMapNames);
