#include <gtest/gtest.h>

#include <deque>
#include <memory>

#include "app/IUICommandSource.h"
#include "app/MainLoopContext.h"
#include "net/GameRecordsWire.h"
#include "net/LobbyMessages.h"
#include "sim/LocalOnlyOrderSource.h"
#include "support/FakeLobbyTransport.h"
#include "support/FakeRunningGame.h"
#include "support/HeadlessApp.h"
#include "support/TempDirectory.h"

namespace {

using Bytes = std::vector<unsigned char>;

class Commands final : public IUICommandSource {
public:
  void fillCommands(IAppState const&, std::vector<UICmd>& commands) override {
    if (!frames.empty()) {
      commands = std::move(frames.front());
      frames.pop_front();
    }
  }
  void observeState(IAppState const&) override {}
  std::deque<std::vector<UICmd>> frames;
};

// Player 1 (this client) and player 0 in room 0 of a Vipers ranked match; the game runs if given.
LobbyState TwoInARoom(std::optional<RunningGameState> running = {}) {
  LobbyState state;
  state.players = {PlayerInLobby{{0xa}, 0}, PlayerInLobby{{0xb}, 0}};
  GameRoom room;
  room.players = {0, 1};
  room.assignedSlots = {0, 1};
  room.slotChoices = {-1, -1};
  room.ready = {true, false};
  room.maxPlayers = 2;
  room.runningGame = std::move(running);
  state.rooms = {room};
  return state;
}

class ConnectedStateTest : public HeadlessAppTest {
protected:
  ConnectedStateTest() {
    context = MainLoopContext::Create(app_, "127.0.0.1", 6567, directory.str(), "", &commands, true);
    mainloop::ConnectedState connected;
    connected.transport = transport;
    connected.lobby = std::make_unique<LobbyClient>(transport, 1, 0, directory.str());
    context->state = std::move(connected);
  }

  mainloop::ConnectedState& connected() { return std::get<mainloop::ConnectedState>(context->state); }

  void frame(std::vector<Bytes> const& messages = {}, std::vector<UICmd> frameCommands = {}) {
    for (Bytes const& message : messages) {
      transport->incoming.push_back(message);
    }
    commands.frames.push_back(std::move(frameCommands));
    testing::internal::CaptureStdout();
    context->runOneFrame(false);
    output = testing::internal::GetCapturedStdout();
  }

  // A running game in this state as the start would make it, without a datagram connection.
  FakeRunningGame& enterGame() {
    RunningGameState const running{2, false, {0, 1}, {false, false}};
    frame({LobbyMessages::EncodeLobbyState(TwoInARoom(running)), LobbyMessages::EncodeRunningGameState(running)});
    EXPECT_TRUE(connected().lobby->gameStartInfo().has_value());
    EXPECT_EQ(context->appState.mode(), 2) << "no game before the datagram port is up";
    auto game = std::make_unique<FakeRunningGame>(context->shared.games.refGame(Game::Vipers), 15, 1000);
    FakeRunningGame& fake = *game;
    connected().game = std::move(game);
    connected().orderSource = std::make_unique<LocalOnlyOrderSource>(2, 1, 15);
    connected().startInfo = *connected().lobby->gameStartInfo();
    return fake;
  }

  TempDirectory directory;
  Commands commands;
  std::shared_ptr<FakeLobbyTransport> transport = std::make_shared<FakeLobbyTransport>();
  std::unique_ptr<MainLoopContext> context;
  std::string output;
};

Bytes ResultBytes(std::vector<std::vector<long long>> rows) {
  GameResult result;
  result.results = std::move(rows);
  Bytes bytes;
  ToBytes(result, bytes);
  return bytes;
}

}  // namespace

TEST_F(ConnectedStateTest, TheSnapshotFollowsTheRoomAndTheLobbyCommandsGoOut) {
  frame({LobbyMessages::EncodeLobbyState(TwoInARoom())});
  EXPECT_EQ(context->appState.mode(), 2);
  EXPECT_EQ(context->appState.playerCountInRoom(), 2);
  EXPECT_FALSE(context->appState.areAllPlayersReady());
  EXPECT_TRUE(context->appState.gameRoomExists(0));
  EXPECT_FALSE(context->appState.gameRoomExists(1));

  LobbyState ready = TwoInARoom();
  ready.rooms[0]->ready = {true, true};
  frame({LobbyMessages::EncodeLobbyState(ready)}, {UICmd::SetReadyState{true}, UICmd::MoveToSlot{-1}});
  EXPECT_TRUE(context->appState.areAllPlayersReady());
  ASSERT_GE(transport->sent.size(), 2u);
  EXPECT_EQ(transport->sent[transport->sent.size() - 2], LobbyMessages::EncodeSetReadyState(true));
  EXPECT_EQ(transport->sent.back(), LobbyMessages::EncodeMoveToSlot(-1));

  LobbyState alone = TwoInARoom();
  alone.players[1]->roomIndex = PlayerInLobby::kNoRoom;
  alone.rooms[0]->players = {0};
  frame({LobbyMessages::EncodeLobbyState(alone)});
  EXPECT_EQ(context->appState.mode(), 1);
  EXPECT_EQ(context->appState.playerCountInRoom(), 0);
}

// Leaving reports a result only when the game is over or nobody else is left; a second leave sends
// nothing, and the game stays until the server's next lobby state ends it.
TEST_F(ConnectedStateTest, LeavingAGameReportsOnceWithAResultOnlyWhenItCounts) {
  struct Case {
    bool ended;
    bool othersGone;
    bool withResult;
  };
  for (Case const c : {Case{false, false, false}, Case{true, false, true}, Case{false, true, true}}) {
    SCOPED_TRACE(testing::Message() << "ended " << c.ended << ", others gone " << c.othersGone);
    FakeRunningGame& game = enterGame();
    game.result.results = {{3, 4}, {5, 6}};
    if (c.ended) {
      game.endGameNow();
      while (!game.gameEnded()) {
        frame();
      }
    }
    if (c.othersGone) {
      frame({LobbyMessages::EncodeRunningGameState({2, false, {0, 1}, {true, false}})});
    }
    std::optional<GameResult> expected;
    if (c.withResult) {
      expected.emplace();
      game.getGameResult(*expected);  // taken before the frame's step
    }
    frame({}, {UICmd::AbandonGame{}});
    EXPECT_EQ(context->appState.mode(), 3);
    ASSERT_FALSE(transport->sent.empty());
    EXPECT_EQ(transport->sent.back(), LobbyMessages::EncodeGameEnd(expected));
    std::size_t const sent = transport->sent.size();
    frame({}, {UICmd::AbandonGame{}, UICmd::DisconnectFromServer{}});
    EXPECT_EQ(transport->sent.size(), sent) << "a second leave sends nothing";
    EXPECT_TRUE(connected().gameEndNotified);
    EXPECT_EQ(context->stateIndex(), 2u) << "Disconnect has no effect during a game";

    frame({LobbyMessages::EncodeLobbyState(TwoInARoom())});
    EXPECT_EQ(connected().game, nullptr);
    EXPECT_FALSE(connected().gameEndNotified);
    EXPECT_EQ(context->appState.mode(), 2);
  }
}

TEST_F(ConnectedStateTest, OnlyAgreedRankedResultsReachTheRatings) {
  GameSpec spec;
  spec.game = Game::Vipers;
  spec.settings = RankedMatchIndex{0};
  spec.minPlayers = spec.maxPlayers = 2;
  GameResults game;
  ToBytes(spec, game.specBytes);
  game.finished = true;
  game.playerIds = {{1, 1, 1, 1, 1, 1, 1, 1}, {2, 2, 2, 2, 2, 2, 2, 2}};
  game.playerNames = {"a", "b"};
  game.playerSlots = {0, 1};
  game.reportedResults = {ResultBytes({{9, 1}, {8, 1}}), ResultBytes({{8, 1}, {9, 1}})};
  GameResults agreed = game;
  agreed.reportedResults = {ResultBytes({{9, 1}, {8, 1}}), {}};

  frame({LobbyMessages::EncodeGameResults(0, {game})});
  EXPECT_EQ(connected().aviatorsRatings.size(), 0u) << "disagreeing reports never reach the table";
  frame({LobbyMessages::EncodeGameResults(0, {game, agreed})});
  ASSERT_EQ(connected().aviatorsRatings.size(), 2u);
  EXPECT_GT(*connected().aviatorsRatings.getRatingFor(game.playerIds[0]), 1500.0);
  EXPECT_LT(*connected().aviatorsRatings.getRatingFor(game.playerIds[1]), 1500.0);
  EXPECT_EQ(connected().glowHordeRatings.size(), 0u);
  EXPECT_EQ(context->appState.getPlayedGames(), (std::vector<unsigned int>{0, 1}));
}

TEST_F(ConnectedStateTest, DisconnectReturnsOfflineAndALostServerIsFatal) {
  frame({LobbyMessages::EncodeLobbyState(TwoInARoom())}, {UICmd::DisconnectFromServer{}});
  EXPECT_EQ(output.find("Client shutdown complete\n") != std::string::npos, true) << output;
  EXPECT_EQ(context->stateIndex(), 0u);
  frame();
  EXPECT_EQ(context->appState.lobbyData().client, nullptr);

  mainloop::ConnectedState again;
  again.transport = transport;
  again.lobby = std::make_unique<LobbyClient>(transport, 1, 0, directory.str());
  context->state = std::move(again);
  transport->state = ConnectionState::Disconnected;
  try {
    frame();
    ADD_FAILURE() << "a lost lobby connection must end the run";
  } catch (std::runtime_error const& error) {
    testing::internal::GetCapturedStdout();
    EXPECT_STREQ(error.what(), "Disconnected from lobby server");
  }
}
