#include <gtest/gtest.h>

#include <string>

#include "accounts/CredentialsFile.h"
#include "app/AppStateInterface.h"
#include "sim/Games.h"
#include "net/LobbyState.h"
#include "support/FakeRunningGame.h"
#include "support/TempDirectory.h"

TEST(AppStateInterface, FlagsFollowTheModeAlone) {
  Games const games;
  AppStateInterface state;
  state.setGames(&games);
  state.lobby.allPlayersReady = true;
  state.lobby.playerCountInRoom = 3;
  state.game.ended = true;

  // For each mode: offline, connected, in a room, all ready, in a game, networked, local, ended,
  // replay, and the room's player count.
  char const* const kExpected[] = {"100000000 0", "010000000 0", "011100000 3",
                                   "010011010 0", "000010110 0", "000010011 0"};
  for (int mode = 0; mode < 6; ++mode) {
    state.setMode(mode);
    std::string flags;
    for (bool const flag : {state.isOffline(), state.isConnected(), state.isInGameRoom(), state.areAllPlayersReady(),
                            state.isInGame(), state.isInNetworkedGame(), state.isInLocalGame(), state.isGameEnded(),
                            state.isWatchingReplay()}) {
      flags += flag ? '1' : '0';
    }
    EXPECT_EQ(flags + " " + std::to_string(state.playerCountInRoom()), kExpected[mode]) << "mode " << mode;
  }
}

TEST(AppStateInterface, RoomsExistOnlyInTheLobbyStateAndForValidNumbers) {
  AppStateInterface state;
  state.setMode(1);
  EXPECT_FALSE(state.gameRoomExists(0));  // no lobby state at all
  LobbyState lobby;
  lobby.rooms = {std::nullopt, GameRoom{}};
  state.lobby.lobbyState = &lobby;
  for (int room : {-1, 0, 1, 2}) {
    EXPECT_EQ(state.gameRoomExists(room), room == 1) << room;
  }
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
  EXPECT_THROW(state.loadCredentials(), std::runtime_error);  // an empty file is a short read
  Credentials const saved{std::vector<unsigned char>(8, 7), std::vector<unsigned char>(16, 9)};
  SaveCredentials(saved, directory.file("credentials.bin"));
  EXPECT_EQ(state.loadCredentials(), saved);
}
