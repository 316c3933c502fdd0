#pragma once

#include <string>
#include <vector>

// One element of the server's list of played games, and the results held in a recording.
struct GameResults {
  std::vector<unsigned char> specBytes;  // an encoded GameSpec
  bool finished = false;                 // false while the game runs
  unsigned long long timestampMs = 0;    // milliseconds since the Unix epoch; 0 if unknown
  std::vector<std::vector<unsigned char>> playerIds;  // one for each place
  std::vector<std::string> playerNames;               // each place's name at the time of play
  std::vector<unsigned short> playerSlots;            // each place's slot
  // For each place, the bytes of the GameResult that its client reported; empty if none yet.
  // All non-empty reports being equal byte for byte is how agreement is told.
  std::vector<std::vector<unsigned char>> reportedResults;

  friend bool operator==(GameResults const&, GameResults const&) = default;
};
