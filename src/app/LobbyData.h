#pragma once

#include <cstdint>
#include <deque>

class LobbyClient;
struct LobbyState;
class HighScoreTables;
class PlayerRatings;
class PlayerNames;
struct ServerLogEntry;

// The lobby part of the interface's snapshot. The pointers point into the connected state that
// refreshed them; the block is only valid while connected (modes 1 to 3).
struct LobbyData {
  LobbyClient const* client = nullptr;
  LobbyState const* lobbyState = nullptr;
  HighScoreTables const* highScores = nullptr;
  PlayerRatings const* glowHordeRatings = nullptr;
  PlayerRatings const* aviatorsRatings = nullptr;
  PlayerNames const* playerNames = nullptr;
  std::deque<ServerLogEntry> const* serverLog = nullptr;
  bool allPlayersReady = false;
  int playerCountInRoom = 0;
  std::uint16_t localPlayerNumber = 0;
};
