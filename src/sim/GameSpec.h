#pragma once

#include <cstdint>

#include "sim/Game.h"
#include "sim/GameSettings.h"

// What a room plays. The defaults are those of a record too short to hold the field.
struct GameSpec {
  Game game = Game::GlowHorde;
  GameSpecSettings settings = CoopChallengeIndex{0};
  std::uint8_t delayFrames = 15;
  std::uint16_t minPlayers = 1;
  std::uint16_t maxPlayers = 1;

  friend bool operator==(GameSpec const&, GameSpec const&) = default;
};
