#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "sim/Game.h"
#include "sim/GameSettings.h"

// What the lobby pages remember between frames.
struct LobbyUIState {
  GameType gameType = GameType::Friendly;
  int page = 0;  // 0 the multiplayer page, 1 the room creation page, 2 the game room page
  int selectedRoom = -1;
  int hoveredRoom = -1;
  int selectedResultRow = -1;
  std::uint32_t selectedGameNumber = 0;
  bool showResultsTab = false;
  // The room creation page's selections: one pair for the first game, one shared by the other two.
  std::uint32_t coopChoiceFirstGame = 0;
  std::uint32_t rankedChoiceFirstGame = 0;
  std::uint32_t coopChoiceOtherGames = 0;
  std::uint32_t rankedChoiceOtherGames = 0;
  std::uint8_t delayFrames = 15;
  // The custom settings of each game, in the order of Games; filled by UI::show on the first frame.
  std::vector<GameSettings> customSettings;
  Game game = Game::GlowHorde;
  std::array<char, 200> description{};
  std::array<char, 100> newName{};
};
