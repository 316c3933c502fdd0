#pragma once

#include <cstdint>
#include <string>
#include <vector>

class IRunningGame;

// The game part of the interface's snapshot; valid while a game runs (modes 3 to 5).
struct GameData {
  bool ended = false;
  bool localPlayerDisconnected = false;
  int localPlayer = -1;
  std::vector<std::string> playerNames;
  std::vector<bool> disconnected;
  std::vector<std::uint16_t> players;
  IRunningGame* game = nullptr;  // not owned
  std::int32_t stalledFrames = 0;
};
