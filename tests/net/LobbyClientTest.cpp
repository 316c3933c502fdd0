#include "net/LobbyClient.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <string>

#include "net/LobbyMessages.h"
#include "support/Bytes.h"
#include "support/FakeLobbyTransport.h"
#include "support/TempDirectory.h"

using namespace testbytes;
using namespace std::chrono_literals;

namespace {

// A lobby client on a fake transport and a clock that the test moves by hand.
struct Lobby {
  TempDirectory storage;
  std::shared_ptr<FakeLobbyTransport> transport = std::make_shared<FakeLobbyTransport>();
  std::chrono::steady_clock::time_point now{};
  LobbyClient client{transport, 1, 0, storage.str(), [this] { return now; }};
  std::vector<unsigned short> finished;

  // Delivers the messages through processMessages; returns the text of the exception, if any.
  std::string receive(std::vector<Bytes> const& messages) {
    for (Bytes const& message : messages) {
      transport->incoming.push_back(message);
    }
    testing::internal::CaptureStdout();
    std::string error;
    try {
      client.processMessages(finished);
    } catch (std::runtime_error const& failure) {
      error = failure.what();
    }
    testing::internal::GetCapturedStdout();
    return error;
  }
  std::string said(auto&& action) {
    testing::internal::CaptureStdout();
    action();
    return testing::internal::GetCapturedStdout();
  }
};

// Player 1 is in room 0 with player 0; the room's game is running when running is given.
LobbyState TwoInARoom(std::optional<RunningGameState> running = {}) {
  LobbyState state;
  state.players = {PlayerInLobby{{0xa}, 0}, PlayerInLobby{{0xb}, 0}};
  GameRoom room;
  room.players = {0, 1};
  room.assignedSlots = {2, 0};
  room.specBytes = {1, 0, 0, 5, 0, 0, 0};
  room.roomToken = 0x0102030405060708ull;
  room.runningGame = std::move(running);
  state.rooms = {room};
  return state;
}

GameResults Played(bool finished) {
  GameResults game;
  game.finished = finished;
  return game;
}

}  // namespace

TEST(LobbyClientTest, KeepAliveAfterFiveSecondsOfSilence) {
  Lobby lobby;
  lobby.now += 4900ms;
  lobby.client.sendKeepAliveIfNeeded();
  EXPECT_TRUE(lobby.transport->sent.empty());
  lobby.said([&] { lobby.client.setReadyState(true); });  // at 4.9 s: puts the keep-alive off
  lobby.now += 4900ms;
  lobby.client.sendKeepAliveIfNeeded();
  EXPECT_EQ(lobby.transport->sent.size(), 1u);
  lobby.now += 100ms;
  EXPECT_EQ(lobby.said([&] { lobby.client.sendKeepAliveIfNeeded(); }), "");  // KEEP_ALIVE is sent silently
  EXPECT_EQ(lobby.transport->sent, (std::vector<Bytes>{Of({6, 1}), Of({16})}));
}

TEST(LobbyClientTest, RequestsGoOutWithTheirTypeAndAreAnnounced) {
  Lobby lobby;
  lobby.receive({LobbyMessages::EncodeLobbyState(TwoInARoom())});
  GameSpec ranked;
  ranked.settings = RankedMatchIndex{1};
  ranked.minPlayers = 2;
  ranked.maxPlayers = 2;
  std::string const said = lobby.said([&] {
    lobby.client.moveToGameRoom(3);
    lobby.client.leaveGameRoom();
    lobby.client.moveToSlot(-1);
    lobby.client.requestGameStart();
    lobby.client.requestCreateGame("r", ranked);
    lobby.client.notifyGameEnd(std::nullopt);
    lobby.client.changeName("N");
    lobby.client.requestRecording(7);
  });
  EXPECT_EQ(said,
            "Sent MOVE_TO_GAME_ROOM message\nSent MOVE_TO_GAME_ROOM message\nSent MOVE_TO_SLOT message\n"
            "Sent GAME_START message\nSent CREATE_GAME message\nSent GAME_END message\nSent CHANGE_NAME message\n"
            "Sent REQUEST_RECORDING message\n");
  auto const& sent = lobby.transport->sent;
  ASSERT_EQ(sent.size(), 8u);
  EXPECT_EQ(sent[0], Of({5, 3, 0}));
  EXPECT_EQ(sent[1], Of({5, 0xff, 0xff}));
  EXPECT_EQ(sent[2], Of({7, 0xff, 0xff}));
  EXPECT_EQ(sent[3], Of({9, 8, 7, 6, 5, 4, 3, 2, 1}));
  EXPECT_EQ(Bytes(sent[4].end() - 5, sent[4].end()), Of({2, 0, 2, 0, 0}));  // ranked: no repeated ids
  EXPECT_EQ(sent[5], Concat({Of({11}), Count(0)}));
  EXPECT_EQ(sent[7], Of({17, 7, 0}));
  EXPECT_TRUE(lobby.client.getRecordingStatus(7 + 65536).downloadInProgress);

  lobby.transport->refuseSends = true;
  try {
    lobby.client.setReadyState(false);
    ADD_FAILURE() << "sent";
  } catch (std::runtime_error const& error) {
    EXPECT_STREQ(error.what(), "Failed to send SET_READY_STATE message");
  }
}

TEST(LobbyClientTest, GameLifecycleFromStartToTheNextLobbyState) {
  Lobby lobby;
  EXPECT_EQ(lobby.client.localRoom(), nullptr);  // nothing until the first LOBBY_STATE
  EXPECT_EQ(lobby.receive({LobbyMessages::EncodeLobbyState(TwoInARoom())}), "");
  EXPECT_EQ(lobby.receive({LobbyMessages::EncodeGameStart(77)}), "");
  EXPECT_EQ(lobby.client.authToken(), 77u);
  EXPECT_FALSE(lobby.client.isUDPServerRunning());

  EXPECT_EQ(lobby.receive({LobbyMessages::EncodeRunningGameState({4, true, {0, 1}, {false, false}})}), "");
  ASSERT_TRUE(lobby.client.gameStartInfo().has_value());
  EXPECT_EQ(*lobby.client.gameStartInfo(), (GameStartInfo{4, {0, 1}, {2, 0}, 1}));
  EXPECT_EQ(lobby.client.gameSpec(), (Bytes{1, 0, 0, 5, 0, 0, 0}));
  EXPECT_TRUE(lobby.client.isUDPServerRunning());
  EXPECT_FALSE(lobby.client.allOtherPlayersDisconnected());

  lobby.receive({LobbyMessages::EncodeRunningGameState({4, true, {0, 1}, {true, false}})});
  EXPECT_EQ(lobby.client.getPlayerDisconnectedState(), (std::vector<bool>{true, false}));
  EXPECT_TRUE(lobby.client.allOtherPlayersDisconnected());

  lobby.receive({LobbyMessages::EncodeLobbyState(TwoInARoom())});
  EXPECT_FALSE(lobby.client.gameStartInfo().has_value());

  EXPECT_EQ(lobby.receive({Of({9, 1, 2, 3})}), "Invalid game start message");
}

TEST(LobbyClientTest, FinishedGamesAreReportedOnce) {
  Lobby lobby;
  lobby.receive({LobbyMessages::EncodeGameResults(70, {Played(true), Played(false), Played(true)})});
  EXPECT_EQ(lobby.finished, (std::vector<unsigned short>{70, 72}));
  lobby.receive({LobbyMessages::EncodeGameResults(70, {Played(true), Played(false), Played(true)})});
  EXPECT_EQ(lobby.finished.size(), 2u);
  lobby.receive({LobbyMessages::EncodeGameResults(70, {Played(true), Played(true), Played(true), Played(true)})});
  EXPECT_EQ(lobby.finished, (std::vector<unsigned short>{70, 72, 71, 73}));
  EXPECT_EQ(lobby.client.getPlayedGames(), (std::vector<std::uint32_t>{70, 71, 72, 73}));
  EXPECT_EQ(lobby.client.playedGame(69), nullptr);
  EXPECT_NE(lobby.client.playedGame(73), nullptr);
}

TEST(LobbyClientTest, ServerErrorsAreLoggedUpToFiftyOrEndTheRun) {
  Lobby lobby;
  for (int i = 0; i < 51; ++i) {
    ASSERT_EQ(lobby.receive({LobbyMessages::EncodeServerError({false, std::to_string(i)})}), "");
  }
  ASSERT_EQ(lobby.client.serverLog().size(), 50u);
  EXPECT_EQ(lobby.client.serverLog().front().text, "1");
  EXPECT_FALSE(lobby.client.serverLog().back().seen);
  lobby.client.markAllErrorsSeen();
  EXPECT_TRUE(lobby.client.serverLog().back().seen);
  EXPECT_TRUE(lobby.transport->is_connected());

  EXPECT_EQ(lobby.receive({LobbyMessages::EncodeServerError({true, "go away"})}), "Error received from server: go away");
  EXPECT_EQ(lobby.receive({Concat({Of({15, 0}), Count(9), Of({1})})}), "Failed to parse SERVER_ERROR message");
  EXPECT_EQ(lobby.receive({Of({1})}), "Unknown message type from server: 1");
  EXPECT_EQ(lobby.receive({Bytes{}}), "Invalid message from server: too small");
}

TEST(LobbyClientTest, RecordingsAreSavedAndFoundByTheScan) {
  Lobby lobby;
  lobby.said([&] { lobby.client.requestRecording(12); });
  std::string const said = lobby.said([&] {
    lobby.transport->incoming.push_back(LobbyMessages::EncodeRecordingData({12, {1, 2, 3}}));
    lobby.client.processMessages(lobby.finished);
  });
  std::string const path = lobby.storage.str() + "/recordings/recording12.bin";
  EXPECT_EQ(said, "Saved recording 12 (3 bytes) to " + path + "\n");
  EXPECT_EQ(lobby.storage.read("recordings/recording12.bin"), std::string("\x01\x02\x03"));
  EXPECT_TRUE(lobby.client.getRecordingStatus(12).onDisk);
  EXPECT_FALSE(lobby.client.getRecordingStatus(12).downloadInProgress);
  EXPECT_EQ(lobby.receive({Of({18, 1, 0, 5})}), "Failed to parse RECORDING_DATA message");

  lobby.storage.write("recordings/recording5.bin.tmp", "x");
  lobby.storage.write("recordings/xrecording6.bin", "x");
  lobby.storage.write("recordings/recording99999999999999999999999.bin", "x");
  std::filesystem::create_directories(lobby.storage.path() / "recordings/recording8.bin");
  lobby.storage.write("recordings/recording65537.bin", "x");
  lobby.client.scanForExistingRecordings();
  for (unsigned game : {5u, 6u, 8u}) {
    EXPECT_FALSE(lobby.client.getRecordingStatus(game).onDisk) << game;
  }
  EXPECT_TRUE(lobby.client.getRecordingStatus(12).onDisk);
  EXPECT_TRUE(lobby.client.getRecordingStatus(1).onDisk);  // 65537 keeps its low 16 bits
}

TEST(LobbyClientTest, ProcessMessagesCompletesAConnectionAndNoticesItsLoss) {
  Lobby lobby;
  lobby.transport->state = ConnectionState::Connecting;
  lobby.transport->incoming.push_back(LobbyMessages::EncodeLobbyState(TwoInARoom()));
  EXPECT_EQ(lobby.receive({}), "");
  EXPECT_EQ(lobby.transport->completeCalls, 1);
  EXPECT_EQ(lobby.transport->processCalls, 0);
  EXPECT_EQ(lobby.receive({}), "");
  EXPECT_NE(lobby.client.localRoom(), nullptr);
  lobby.transport->disconnect();
  EXPECT_EQ(lobby.receive({}), "Disconnected from lobby server");
}
