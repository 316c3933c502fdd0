#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "sim/GameSpec.h"

// What the server knows of the games, to check the rooms that players create: each game's maps that a
// room may choose, with their number of places, and the player limits of its challenges and ranked
// matches. The server links no game code; a test holds this table equal to the client's catalogues.
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

struct GameLimits {
  Game game = Game::GlowHorde;
  std::string name;
  std::vector<MapLimit> selectableMaps;
  std::vector<NamedLimit> coopChallenges;
  std::vector<NamedLimit> rankedMatches;
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
// and its map or challenge or ranked match must exist, delayFrames must lie from 10 to 35 and the
// player counts within the map's places. On failure error holds the sentence for the player.
std::optional<CheckedSpec> CheckSpec(std::vector<unsigned char> const& specBytes, std::string& error);

}  // namespace GameRules
