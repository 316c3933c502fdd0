#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "app/UICmd.h"
#include "sim/GameResult.h"

class IRunningGame;

// What the end overlay shows of a result: the rows, greatest first, and the winner if there is one.
struct GameEndSummary {
  std::vector<std::size_t> order;   // row numbers, the greatest row first; equal rows keep their order
  std::optional<std::size_t> winner;  // the first row, if there are two or more and it beats the second
  std::string title;
  bool teamRows = false;  // fewer rows than players: each row is a team's
};

// The winner rule: a winner only with at least two rows and the first strictly greater than the second.
// Without one the title says "Single player results" for one player, "Co-op results" for one row, else
// "Tied game!".
GameEndSummary SummariseGameEnd(GameResult const& result, std::size_t playerCount);

// The overlays of a running game: the corner panel, the waiting notice, the end overlay. The network
// form; slots, disconnected are in player order.
void ShowInGameUI(IRunningGame const& game, std::vector<unsigned short> const& slots, unsigned short localPlayer,
                  std::vector<bool> const& disconnected, int stalledFrames, std::optional<GameResult> const& result,
                  std::vector<UICmd>& commands);
// The form for local games and replays: nobody disconnected, no stall.
void ShowInGameUI(IRunningGame const& game, std::vector<unsigned short> const& slots, unsigned short localPlayer,
                  std::optional<GameResult> const& result, std::vector<UICmd>& commands);

// The panel in the bottom right corner: who dropped out, and the way to leave.
void ShowInGameGeneralUI(std::vector<unsigned short> const& slotDisconnected, bool gameOver, bool alone,
                         std::size_t playerCount, std::vector<UICmd>& commands);
void GameEndUI(IRunningGame const& game, std::vector<unsigned short> const& slots, GameResult const& result,
               std::vector<UICmd>& commands);
void ShowWaitingForPlayersOverlay();
