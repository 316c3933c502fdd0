#include "GameRules.h"

#include <string>
#include <variant>

#include "net/GameRecordsWire.h"
#include "net/WireReader.h"

namespace GameRules {

std::vector<GameLimits> const& AllGames() {
  static std::vector<GameLimits> const games = {
      {Game::GlowHorde,
       "Glow Horde",
       {{"Cauldrons", 3}, {"Mosh pit", 4}, {"Unwrapped Ledges", 4}, {"Wrapped Ledges", 4}},
       {{"Astral Steps", 1, 1},
        {"Astral Steps", 2, 2},
        {"Astral Steps", 3, 3},
        {"Astral Steps", 4, 4},
        {"Cauldrons", 1, 1},
        {"Unwrapped Ledges", 1, 1}},
       {{"Wrapped Ledges", 2, 2}, {"Cauldrons", 3, 3}, {"Wrapped Ledges", 4, 4}},
       {{"duration_seconds", 30, 600},
        {"number_to_spawn", 1, 200},
        {"spawn_interval_deciseconds", 1, 100},
        {"bridge_orders", 0, 100},
        {"horizontal_bridge_orders", 0, 100},
        {"raise_ground_orders", 0, 100},
        {"block_orders", 0, 100},
        {"dig_down_orders", 0, 100},
        {"dig_sideways_orders", 0, 100},
        {"dig_upwards_orders", 0, 100}}},
      {Game::Aviators,
       "Aviators",
       {{"The Empty Berth", 4}},
       {},
       {{"The Empty Berth", 2, 2}, {"The Empty Berth", 4, 4}},
       {{"duration_seconds", 30, 600}, {"missile_speed", 35, 70}}},
      {Game::Vipers,
       "Vipers",
       {{"The Empty Berth", 4}},
       {},
       {{"The Empty Berth", 2, 2}, {"The Empty Berth", 4, 4}},
       {{"duration_seconds", 30, 600}, {"start_length", 300, 1200}, {"grow_by", 100, 50}, {"collision_penalty", 0, 100}}},
  };
  return games;
}

namespace {

// The number of places of a map of any kind: selectable maps from the table, the maps of the named
// settings from the largest count that a named entry gives them.
std::uint16_t PlacesOf(GameLimits const& limits, std::string const& map) {
  for (MapLimit const& candidate : limits.selectableMaps) {
    if (candidate.name == map) {
      return candidate.maxPlayers;
    }
  }
  std::uint16_t places = 0;
  for (auto const* list : {&limits.coopChallenges, &limits.rankedMatches}) {
    for (NamedLimit const& named : *list) {
      if (named.map == map && named.maxPlayers > places) {
        places = named.maxPlayers;
      }
    }
  }
  return places;
}

}  // namespace

std::optional<CheckedSpec> CheckSpec(std::vector<unsigned char> const& specBytes, std::string& error) {
  unsigned char const* cursor = specBytes.data();
  std::size_t remaining = specBytes.size();
  CheckedSpec checked;
  GameSpec& spec = checked.spec;
  std::uint16_t game = 0;
  std::uint8_t delay = 0;
  if (!WireReader(cursor, remaining).integer(game) || !FromBytes(cursor, remaining, spec.settings) ||
      !WireReader(cursor, remaining).integer(delay) || !WireReader(cursor, remaining).integer(spec.minPlayers) ||
      !WireReader(cursor, remaining).integer(spec.maxPlayers) || remaining != 0) {
    error = "The game description of the room could not be read";
    return std::nullopt;
  }
  if (game >= AllGames().size()) {
    error = "There is no such game";
    return std::nullopt;
  }
  spec.game = static_cast<Game>(game);
  spec.delayFrames = delay;
  GameLimits const& limits = AllGames()[game];
  if (delay < kMinDelayFrames || delay > kMaxDelayFrames) {
    error = "The delay must be from " + std::to_string(kMinDelayFrames) + " to " + std::to_string(kMaxDelayFrames) +
            " frames";
    return std::nullopt;
  }
  std::uint16_t lowest = 1;
  std::uint16_t highest = 0;
  if (auto const* challenge = std::get_if<CoopChallengeIndex>(&spec.settings)) {
    if (challenge->index >= limits.coopChallenges.size()) {
      error = "There is no such challenge";
      return std::nullopt;
    }
    NamedLimit const& named = limits.coopChallenges[challenge->index];
    lowest = named.minPlayers;
    highest = named.maxPlayers;
    checked.slots = PlacesOf(limits, named.map);
  } else if (auto const* ranked = std::get_if<RankedMatchIndex>(&spec.settings)) {
    if (ranked->index >= limits.rankedMatches.size()) {
      error = "There is no such ranked match";
      return std::nullopt;
    }
    NamedLimit const& named = limits.rankedMatches[ranked->index];
    lowest = named.minPlayers;
    highest = named.maxPlayers;
    checked.slots = PlacesOf(limits, named.map);
    checked.ranked = true;
  } else {
    auto const& settings = std::get<GameSettings>(spec.settings);
    auto const map = settings.strings.find("map");
    std::uint16_t places = 0;
    if (map != settings.strings.end()) {
      for (MapLimit const& candidate : limits.selectableMaps) {
        if (candidate.name == map->second) {
          places = candidate.maxPlayers;
        }
      }
    }
    if (places == 0) {
      error = "There is no such map";
      return std::nullopt;
    }
    // Exactly the game's settings: the map and its integers, each within its range.
    if (settings.strings.size() != 1 || settings.ints.size() != limits.integers.size()) {
      error = "The settings of the room are not those of the game";
      return std::nullopt;
    }
    for (IntegerLimit const& limit : limits.integers) {
      auto const value = settings.ints.find(limit.key);
      if (value == settings.ints.end()) {
        error = "The settings of the room are not those of the game";
        return std::nullopt;
      }
      if (limit.minimum <= limit.maximum && (value->second < limit.minimum || value->second > limit.maximum)) {
        error = "The setting " + limit.key + " must be from " + std::to_string(limit.minimum) + " to " +
                std::to_string(limit.maximum);
        return std::nullopt;
      }
    }
    highest = places;
    checked.slots = places;
  }
  if (spec.minPlayers < lowest || spec.minPlayers > spec.maxPlayers || spec.maxPlayers > highest) {
    error = "The player counts do not fit the map";
    return std::nullopt;
  }
  return checked;
}

}  // namespace GameRules
