#include <gtest/gtest.h>

#include <array>

#include "AppStateInterface.h"
#include "Games.h"
#include "LobbyState.h"
#include "support/FakeRunningGame.h"
#include "support/TempDirectory.h"

TEST(AppStateInterface, FlagsFollowTheModeAlone) {
  Games const games;
  AppStateInterface state;
  state.setGames(&games);
  state.lobby.allPlayersReady = true;
  state.lobby.playerCountInRoom = 3;
  state.game.ended = true;

  struct Row {
    bool offline, connected, inRoom, ready, inGame, network, local, ended, replay;
    int count;
  };
  constexpr std::array<Row, 6> kRows{{
      {true, false, false, false, false, false, false, false, false, 0},
      {false, true, false, false, false, false, false, false, false, 0},
      {false, true, true, true, false, false, false, false, false, 3},
      {false, true, false, false, true, true, false, true, false, 0},
      {false, false, false, false, true, false, true, true, false, 0},
      {false, false, false, false, true, false, false, true, true, 0},
  }};
  for (int mode = 0; mode < 6; ++mode) {
    SCOPED_TRACE(mode);
    state.setMode(mode);
    Row const& row = kRows[static_cast<std::size_t>(mode)];
    EXPECT_EQ(state.isOffline(), row.offline);
    EXPECT_EQ(state.isConnected(), row.connected);
    EXPECT_EQ(state.isInGameRoom(), row.inRoom);
    EXPECT_EQ(state.areAllPlayersReady(), row.ready);
    EXPECT_EQ(state.isInGame(), row.inGame);
    EXPECT_EQ(state.isInNetworkedGame(), row.network);
    EXPECT_EQ(state.isInLocalGame(), row.local);
    EXPECT_EQ(state.isGameEnded(), row.ended);
    EXPECT_EQ(state.isWatchingReplay(), row.replay);
    EXPECT_EQ(state.playerCountInRoom(), row.count);
  }
}

TEST(AppStateInterface, RoomsExistOnlyInTheLobbyStateAndForValidNumbers) {
  AppStateInterface state;
  state.setMode(1);
  EXPECT_FALSE(state.gameRoomExists(0));  // no lobby state at all
  LobbyState lobby;
  lobby.rooms = {std::nullopt, GameRoom{}};
  state.lobby.lobbyState = &lobby;
  EXPECT_FALSE(state.gameRoomExists(-1));
  EXPECT_FALSE(state.gameRoomExists(0));
  EXPECT_TRUE(state.gameRoomExists(1));
  EXPECT_FALSE(state.gameRoomExists(2));
}

TEST(AppStateInterface, GameQueriesGoThroughTheGameOnlyInAGame) {
  Games const games;
  FakeRunningGame game(games.refGame(Game::Vipers), 15, 100);
  AppStateInterface state;
  state.setGames(&games);
  state.game.game = &game;

  state.setMode(0);
  EXPECT_EQ(state.gameFrame(), 0u);
  EXPECT_FALSE(state.evaluateGameCondition("always"));

  state.setMode(4);
  EXPECT_EQ(state.gameFrame(), 15u);
  EXPECT_TRUE(state.evaluateGameCondition("always"));
  EXPECT_FALSE(state.evaluateGameCondition("never"));
  EXPECT_EQ(state.getGameType(), Game::Vipers);
  game.result.results = {{7}};
  GameResult result;
  state.getCurrentGameResult(result);
  EXPECT_EQ(result.results, game.result.results);
  EXPECT_EQ(result.endFrame, 15u);
}

TEST(AppStateInterface, CredentialFileIsLookedForInTheStorageDirectory) {
  TempDirectory directory;
  AppStateInterface state;
  state.offline.directory = directory.str();
  EXPECT_FALSE(state.credentialFilePresent());
  directory.write("credentials.bin", "");
  EXPECT_TRUE(state.credentialFilePresent());
}
