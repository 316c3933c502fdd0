#pragma once

#include "GameRecordsWire.h"
#include "GameResults.h"
#include "LobbyState.h"

// Records with every field set to something other than its default, for round trips.
namespace samples {

inline RunningGameState Running() {
  RunningGameState running;
  running.portOffset = 7;
  running.udpServerRunning = true;
  running.players = {3, 0, 5};
  running.disconnected = {false, true, false};
  return running;
}

inline GameRoom Room() {
  GameSpec spec;
  spec.game = Game::Aviators;
  spec.settings = GameSettings{{{"map", "Canyon"}}, {{"duration_seconds", 120}}};
  spec.maxPlayers = 3;
  GameRoom room;
  room.description = "Come and play";
  room.minPlayers = 2;
  room.maxPlayers = 3;
  ToBytes(spec, room.specBytes);
  room.repeatedIdsAllowed = true;
  room.players = {3, 0, 5};
  room.slotChoices = {-1, 2, 0};
  room.assignedSlots = {1, 2, 0};
  room.ready = {true, false, true};
  room.roomToken = 0xDEADBEEFCAFEF00Dull;
  room.runningGame = Running();
  room.lastResultsIndex = 41;
  return room;
}

inline LobbyState Lobby() {
  LobbyState lobby;
  lobby.players = {PlayerInLobby{{1, 2, 3, 4, 5, 6, 7, 8}, 1}, std::nullopt,
                   PlayerInLobby{{9, 9, 9, 9, 9, 9, 9, 9}, PlayerInLobby::kNoRoom}};
  GameRoom quiet;
  quiet.description = "";
  quiet.maxPlayers = 2;
  lobby.rooms = {quiet, Room(), std::nullopt};
  return lobby;
}

inline GameResults Results() {
  GameSpec spec;
  spec.game = Game::Vipers;
  spec.settings = RankedMatchIndex{1};
  GameResult result;
  result.endFrame = 3615;
  result.results = {{3, 100}, {1, 40}};
  result.endStateChecksum = 0x0123456789ABCDEFull;
  GameResults results;
  ToBytes(spec, results.specBytes);
  results.finished = true;
  results.timestampMs = 1700000000123ull;
  results.playerIds = {{1, 1, 1, 1, 1, 1, 1, 1}, {2, 2, 2, 2, 2, 2, 2, 2}};
  results.playerNames = {"Ada", "Bo"};
  results.playerSlots = {0, 2};
  results.reportedResults = {{}, {}};
  ToBytes(result, results.reportedResults[0]);
  results.reportedResults[1] = results.reportedResults[0];
  return results;
}

}  // namespace samples
