#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "sim/GameSpec.h"

// What the server knows of the games, to check the rooms that players create: each game's maps that a
// room may choose, with their number of places, the player limits of its challenges and ranked matches,
// and the range of each integer setting of a custom room. The lobby checks rooms without loading the
// games and their maps; a test holds this table equal to the client's catalogues and schemas.
namespace GameRules {

struct MapLimit {
  std::string name;
  std::uint16_t maxPlayers = 0;
};

struct NamedLimit {
  std::string map;
  std::uint16_t minPlayers = 0;
  std::uint16_t maxPlayers = 0;
};

// An integer setting of a custom room. A minimum above the maximum bounds nothing (the setting is
// then taken as it comes, as the client's schema takes it).
struct IntegerLimit {
  std::string key;
  std::int32_t minimum = 0;
  std::int32_t maximum = 0;
};

struct GameLimits {
  Game game = Game::GlowHorde;
  std::string name;
  std::vector<MapLimit> selectableMaps;
  std::vector<NamedLimit> coopChallenges;
  std::vector<NamedLimit> rankedMatches;
  std::vector<IntegerLimit> integers;
};

inline constexpr int kMinDelayFrames = 10;
inline constexpr int kMaxDelayFrames = 35;

std::vector<GameLimits> const& AllGames();

// A room's GameSpec, checked. slots is the number of places of the map: the slots a player may choose.
struct CheckedSpec {
  GameSpec spec;
  std::uint16_t slots = 0;
  bool ranked = false;
};

// Parses and checks a room's GameSpec: the bytes must hold the whole record and nothing more, the game
// and its map or challenge or ranked match must exist, delayFrames must lie from 10 to 35, the player
// counts within the map's places, and a custom room's settings must be the game's, each in its range. On failure error holds the sentence for the player.
std::optional<CheckedSpec> CheckSpec(std::vector<unsigned char> const& specBytes, std::string& error);

}  // namespace GameRules
