#pragma once

#include <vector>

#include "net/GameRecordsWire.h"
#include "sim/GameResults.h"
#include "net/LobbyState.h"

// Records with every field set to something other than its default, for round trips.
namespace samples {

inline std::vector<unsigned char> Encoded(auto const& record) {
  std::vector<unsigned char> bytes;
  ToBytes(record, bytes);
  return bytes;
}

inline RunningGameState Running() { return {7, true, {3, 0, 5}, {false, true, false}}; }

inline GameRoom Room() {
  GameSpec const spec{.game = Game::Aviators, .settings = GameSettings{{{"map", "Canyon"}}, {{"duration_seconds", 120}}},
                      .maxPlayers = 3};
  return {.description = "Come and play", .minPlayers = 2, .maxPlayers = 3, .specBytes = Encoded(spec),
          .repeatedIdsAllowed = true, .players = {3, 0, 5}, .slotChoices = {-1, 2, 0}, .assignedSlots = {1, 2, 0},
          .ready = {true, false, true}, .roomToken = 0xDEADBEEFCAFEF00Dull, .runningGame = Running(), .lastResultsIndex = 41};
}

inline LobbyState Lobby() {
  GameRoom const quiet{.maxPlayers = 2};
  return {{PlayerInLobby{{1, 2, 3, 4, 5, 6, 7, 8}, 1}, std::nullopt,
           PlayerInLobby{{9, 9, 9, 9, 9, 9, 9, 9}, PlayerInLobby::kNoRoom}},
          {quiet, Room(), std::nullopt}};
}

inline GameResults Results() {
  std::vector<unsigned char> const reported = Encoded(GameResult{3615, {{3, 100}, {1, 40}}, 0x0123456789ABCDEFull});
  return {Encoded(GameSpec{.game = Game::Vipers, .settings = RankedMatchIndex{1}}), true, 1700000000123ull,
          {{1, 1, 1, 1, 1, 1, 1, 1}, {2, 2, 2, 2, 2, 2, 2, 2}}, {"Ada", "Bo"}, {0, 2}, {reported, reported}};
}

}  // namespace samples
