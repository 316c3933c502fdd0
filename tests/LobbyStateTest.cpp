#include <gtest/gtest.h>

#include "LobbyState.h"
#include "PlayerNames.h"

namespace {

// Player 0 in room 0 (running game with players 2, 0 and player 2 disconnected), player 1 in no
// room, player 2 in room 0, player 3 in room 1 (no running game), player 4 absent.
LobbyState Mirror() {
  LobbyState lobby;
  lobby.players = {PlayerInLobby{{0}, 0}, PlayerInLobby{{1}, PlayerInLobby::kNoRoom}, PlayerInLobby{{2}, 0},
                   PlayerInLobby{{3}, 1}, std::nullopt};
  GameRoom running;
  running.maxPlayers = 4;
  running.players = {0, 2};
  running.runningGame = RunningGameState{5, true, {2, 0}, {true, false}};
  GameRoom waiting;
  waiting.maxPlayers = 2;
  waiting.players = {3};
  lobby.rooms = {running, waiting};
  return lobby;
}

}  // namespace

TEST(LobbyState, PlayerIsInRunningGameGivesThePositionInTheRunningGame) {
  LobbyState const lobby = Mirror();
  unsigned short index = 99;
  EXPECT_TRUE(lobby.playerIsInRunningGame(0, index));
  EXPECT_EQ(index, 1);
}

TEST(LobbyState, DisconnectedPlayerGetsItsPositionButIsNotInTheGame) {
  unsigned short index = 99;
  EXPECT_FALSE(Mirror().playerIsInRunningGame(2, index));
  EXPECT_EQ(index, 0) << "player 2 stands at position 0 of the running game";

  LobbyState lobby = Mirror();
  lobby.rooms[0]->runningGame->players = {0, 2};
  lobby.rooms[0]->runningGame->disconnected = {false, true};
  EXPECT_FALSE(lobby.playerIsInRunningGame(2, index));
  EXPECT_EQ(index, 1);
}

TEST(LobbyState, PlayerOutsideAnyRunningGameIsNotInOneAndIndexIsZero) {
  LobbyState lobby = Mirror();
  unsigned short index = 99;
  EXPECT_FALSE(lobby.playerIsInRunningGame(3, index)) << "room without a running game";
  EXPECT_EQ(index, 0);
  index = 99;
  EXPECT_FALSE(lobby.playerIsInRunningGame(1, index)) << "no room";
  EXPECT_EQ(index, 0);
  index = 99;
  EXPECT_FALSE(lobby.playerIsInRunningGame(4, index)) << "absent player";
  EXPECT_EQ(index, 0);
  EXPECT_FALSE(lobby.playerIsInRunningGame(200, index)) << "number beyond the mirror";

  // In the room, but not among the running game's players (joined after the start).
  lobby.rooms[0]->runningGame->players = {2};
  index = 99;
  EXPECT_FALSE(lobby.playerIsInRunningGame(0, index));
  EXPECT_EQ(index, 0);

  // A room number that the mirror doesn't hold.
  lobby.players[3]->roomIndex = 7;
  EXPECT_FALSE(lobby.playerIsInRunningGame(3, index));
}

TEST(LobbyState, CanAddToGameNeedsAFreePlaceAndNoRunningGame) {
  LobbyState const lobby = Mirror();
  EXPECT_TRUE(CanAddToGame(*lobby.game(1)));
  GameRoom full = *lobby.game(1);
  full.players.push_back(8);
  EXPECT_FALSE(CanAddToGame(full));
  EXPECT_FALSE(CanAddToGame(*lobby.game(0))) << "running room with places free";
  EXPECT_EQ(lobby.player(3)->roomIndex, 1);
}

TEST(PlayerNames, UnknownIdAndUpdates) {
  PlayerNames names;
  EXPECT_EQ(names.playerName({1, 2, 3}), "NO_PLAYER_FOUND");

  names.updateFromNetwork({{{1}, "Ada"}, {{2}, "Bo"}, {{}, "Nobody"}});
  EXPECT_EQ(names.playerName({1}), "Ada");
  EXPECT_EQ(names.playerName({}), "Nobody");

  names.updateFromNetwork({{{2}, "Bea"}});
  EXPECT_EQ(names.playerName({2}), "Bea");
  EXPECT_EQ(names.playerName({1}), "Ada") << "only the name of the id given is replaced";
  EXPECT_EQ(names.size(), 3u);
  EXPECT_EQ(names.playerName({1, 0}), "NO_PLAYER_FOUND") << "ids compare as whole byte strings";
}
