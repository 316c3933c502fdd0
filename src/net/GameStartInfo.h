#pragma once

#include <vector>

// What the client needs to join the running game of its room; built by the client, not sent.
struct GameStartInfo {
  unsigned short portOffset = 0;
  std::vector<unsigned short> players;  // the room's players
  std::vector<short> assignedSlots;     // the room's slots; its size is the number of players
  unsigned short localPlayer = 0;       // this client's index in the running game's players

  friend bool operator==(GameStartInfo const&, GameStartInfo const&) = default;
};
