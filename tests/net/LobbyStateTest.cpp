#include <gtest/gtest.h>

#include "net/LobbyState.h"
#include "net/PlayerNames.h"

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

TEST(LobbyState, PlayerIsInRunningGameOnlyWhenConnectedAndGivesThePositionOrZero) {
  struct Case {
    char const* what;
    void (*change)(LobbyState&);
    unsigned short player;
    bool inGame;
    unsigned short index;  // always set, to 0 unless the player is in the running game
  };
  Case const cases[] = {
      {"in the running game", [](LobbyState&) {}, 0, true, 1},
      {"disconnected, at position 0", [](LobbyState&) {}, 2, false, 0},
      {"disconnected, at position 1",
       [](LobbyState& lobby) { *lobby.rooms[0]->runningGame = RunningGameState{5, true, {0, 2}, {false, true}}; }, 2,
       false, 1},
      {"room without a running game", [](LobbyState&) {}, 3, false, 0},
      {"no room", [](LobbyState&) {}, 1, false, 0},
      {"absent player", [](LobbyState&) {}, 4, false, 0},
      {"number beyond the mirror", [](LobbyState&) {}, 200, false, 0},
      {"in the room but joined after the start", [](LobbyState& lobby) { lobby.rooms[0]->runningGame->players = {2}; },
       0, false, 0},
      {"a room number that the mirror doesn't hold", [](LobbyState& lobby) { lobby.players[3]->roomIndex = 7; }, 3,
       false, 0},
  };
  for (Case const& c : cases) {
    LobbyState lobby = Mirror();
    c.change(lobby);
    unsigned short index = 99;
    EXPECT_EQ(lobby.playerIsInRunningGame(c.player, index), c.inGame) << c.what;
    EXPECT_EQ(index, c.index) << c.what;
  }
}

TEST(LobbyState, CanAddToGameNeedsAFreePlaceAndNoRunningGame) {
  LobbyState const lobby = Mirror();
  EXPECT_TRUE(CanAddToGame(*lobby.game(1)));
  GameRoom full = *lobby.game(1);
  full.players.push_back(8);
  EXPECT_FALSE(CanAddToGame(full));
  EXPECT_FALSE(CanAddToGame(*lobby.game(0))) << "running room with places free";
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
