// The client's own network classes against the real server: login, a room, a start, a relayed game
// of synthetic orders, the end with results, and the recording downloaded the way the client stores it.
#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <thread>

#include "ServerTestSupport.h"
#include "net/ConnectToLobbyServer.h"
#include "net/GameRecordsWire.h"
#include "net/LobbyClient.h"
#include "net/TCPClient.h"
#include "net/TandemClient.h"
#include "sim/Recording.h"
#include "sim/ResultConsensus.h"
#include "sim/SplitServerData.h"

using namespace servertest;
using namespace std::chrono_literals;

namespace {

// Polls until the condition holds; false after the limit.
bool PollUntil(std::function<void()> const& pump, std::function<bool()> const& condition,
               std::chrono::milliseconds limit = 5000ms) {
  auto const deadline = std::chrono::steady_clock::now() + limit;
  while (std::chrono::steady_clock::now() < deadline) {
    pump();
    if (condition()) return true;
    std::this_thread::sleep_for(1ms);
  }
  return false;
}

struct Player {
  std::shared_ptr<TCPClient> transport;
  std::unique_ptr<LobbyClient> lobby;
  std::vector<unsigned short> finished;
  void pump() { lobby->processMessages(finished); }
};

Player Connect(unsigned short port, Credentials const& credentials, std::string const& storage) {
  Player player;
  player.transport = std::make_shared<TCPClient>("127.0.0.1", port);
  EXPECT_TRUE(PollUntil([&] { player.transport->complete_connection(); }, [&] { return player.transport->is_connected(); }));
  ConnectToLobbyServer handshake(player.transport, credentials);
  EXPECT_TRUE(PollUntil([&] { handshake.connect(); },
                        [&] { return handshake.state() == ConnectToLobbyServer::State::Authenticated; }));
  player.lobby = std::make_unique<LobbyClient>(player.transport, handshake.localPlayerNumber(),
                                               handshake.serverInfo().infoB, storage);
  EXPECT_TRUE(PollUntil([&] { player.pump(); }, [&] { return player.lobby->localPlayer() != nullptr; }));
  return player;
}

}  // namespace

TEST(ClientInterop, TheClientLibraryPlaysAGameThroughTheServer) {
  std::string const data = FreshDirectory("interop");
  std::string const storage = FreshDirectory("interop-client");
  Credentials const alice = MintWithCommand(data, "Alice");
  Credentials const bob = MintWithCommand(data, "Bob");
  ServerProcess server(data);
  Player a = Connect(server.lobbyPort(), alice, storage + "/a");
  Player b = Connect(server.lobbyPort(), bob, storage + "/b");

  GameSpec const spec{Game::GlowHorde, RankedMatchIndex{0}, 15, 2, 2};
  a.lobby->requestCreateGame("interop", spec);
  ASSERT_TRUE(PollUntil([&] { a.pump(); }, [&] { return a.lobby->localRoom() != nullptr; }));
  unsigned short const room = a.lobby->localPlayer()->roomIndex;
  b.lobby->moveToGameRoom(room);
  ASSERT_TRUE(PollUntil([&] { b.pump(); }, [&] { return b.lobby->localRoom() != nullptr; }));
  a.lobby->setReadyState(true);
  b.lobby->setReadyState(true);
  ASSERT_TRUE(PollUntil([&] { a.pump(); }, [&] {
    auto const* r = a.lobby->localRoom();
    return r != nullptr && r->ready == std::vector<bool>{true, true};
  }));
  a.lobby->requestGameStart();
  for (Player* p : {&a, &b}) {
    ASSERT_TRUE(PollUntil([&] { p->pump(); }, [&] { return p->lobby->gameStartInfo() && p->lobby->isUDPServerRunning(); }));
  }
  auto const info = *a.lobby->gameStartInfo();
  EXPECT_EQ(info.localPlayer, 0);
  EXPECT_EQ(b.lobby->gameStartInfo()->localPlayer, 1);
  unsigned short const udpPort = static_cast<unsigned short>(server.lobbyPort() + info.portOffset);
  int const delay = 15;
  int const players = static_cast<int>(info.assignedSlots.size());
  ASSERT_EQ(players, 2);
  TandemClient<UDPClient> clientA("127.0.0.1", udpPort, players, delay, a.lobby->authToken());
  TandemClient<UDPClient> clientB("127.0.0.1", udpPort, players, delay, b.lobby->authToken());

  // Each client gives one order a frame for 90 frames, then runs out its last delay frames.
  int const orders = 90;
  std::vector<std::vector<std::vector<unsigned char>>> framesA;
  std::vector<std::vector<std::vector<unsigned char>>> framesB;
  auto step = [&](TandemClient<UDPClient>& client, auto& frames, unsigned char who) {
    std::vector<std::vector<unsigned char>> frame;
    int const f = static_cast<int>(frames.size());
    bool const ended = f >= orders;
    bool const got = PollUntil([&] { ended ? client.communicate_GameEnd(frame) : client.communicate(frame); },
                               [&] { return !frame.empty(); });
    if (got) {
      frames.push_back(frame);
      if (!ended) client.sendUpdate({who, static_cast<unsigned char>(f), static_cast<unsigned char>(f * 7)});
    }
    return got;
  };
  for (int f = 0; f < orders + delay; ++f) {
    ASSERT_TRUE(step(clientA, framesA, 'A')) << f;
    ASSERT_TRUE(step(clientB, framesB, 'B')) << f;
    a.lobby->sendKeepAliveIfNeeded();
    b.lobby->sendKeepAliveIfNeeded();
  }
  EXPECT_TRUE(clientA.gameEndedCleanly());
  EXPECT_TRUE(clientB.gameEndedCleanly());
  EXPECT_EQ(framesA, framesB);
  for (int f = 0; f < orders + delay; ++f) {
    std::vector<std::vector<unsigned char>> expected(2);
    if (f >= delay) {
      int const t = f - delay;
      expected[0] = {'A', static_cast<unsigned char>(t), static_cast<unsigned char>(t * 7)};
      expected[1] = {'B', static_cast<unsigned char>(t), static_cast<unsigned char>(t * 7)};
    }
    ASSERT_EQ(framesA[static_cast<std::size_t>(f)], expected) << f;
  }

  GameResult const result{static_cast<std::uint32_t>(orders + delay), {{3, 1}, {2, 9}}, 0x1234567890ull};
  a.lobby->notifyGameEnd(result);
  b.lobby->notifyGameEnd(result);
  for (Player* p : {&a, &b}) {
    ASSERT_TRUE(PollUntil([&] { p->pump(); }, [&] { return !p->lobby->gameStartInfo() && !p->finished.empty(); }));
  }
  unsigned short const game = a.finished.back();
  GameResults const* played = a.lobby->playedGame(game);
  ASSERT_NE(played, nullptr);
  std::vector<unsigned char> resultBytes;
  ToBytes(result, resultBytes);
  EXPECT_EQ(AgreedResultBytes(*played), resultBytes);

  a.lobby->requestRecording(game);
  ASSERT_TRUE(PollUntil([&] { a.pump(); }, [&] { return a.lobby->getRecordingStatus(game).onDisk; }));
  Recording const recording(a.lobby->recordingPath(game));
  ASSERT_EQ(recording.updates.size(), static_cast<std::size_t>(orders));
  for (int k = 0; k < orders; ++k) {
    EXPECT_EQ(recording.allUpdatesOnFrame(k), framesA[static_cast<std::size_t>(k + delay)]) << k;
  }
  EXPECT_EQ(recording.results.reportedResults, (std::vector<std::vector<unsigned char>>{resultBytes, resultBytes}));
  std::filesystem::remove_all(storage);
}
