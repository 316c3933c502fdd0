#include "net/LobbyState.h"

bool LobbyState::playerIsInRunningGame(unsigned short playerNumber, unsigned short& index) const {
  index = 0;
  if (playerNumber >= players.size() || !players[playerNumber].has_value()) {
    return false;
  }
  unsigned short const roomIndex = players[playerNumber]->roomIndex;
  if (roomIndex == PlayerInLobby::kNoRoom || roomIndex >= rooms.size() || !rooms[roomIndex].has_value()) {
    return false;
  }
  std::optional<RunningGameState> const& running = rooms[roomIndex]->runningGame;
  if (!running.has_value()) {
    return false;
  }
  for (std::size_t i = 0; i < running->players.size(); ++i) {
    if (running->players[i] == playerNumber) {
      index = static_cast<unsigned short>(i);
      bool const disconnected = i < running->disconnected.size() && running->disconnected[i];
      return !disconnected;
    }
  }
  return false;
}

bool CanAddToGame(GameRoom const& room) {
  return room.players.size() != room.maxPlayers && !room.runningGame.has_value();
}
