// A real Glow Horde game between two clients over the real server, with the client's own network
// classes; the recording downloaded from the server then replays to the result that both players
// reported, the way the client's replay page proves a recording.
#include <gtest/gtest.h>

#include <httplib.h>
#include <sqlite3.h>

#include <filesystem>
#include <functional>
#include <random>
#include <thread>

#include "ServerTestSupport.h"
#include "glow_horde/GlowHordeSimulation.h"
#include "glow_horde/Order.h"
#include "net/ConnectToLobbyServer.h"
#include "net/GameRecordsWire.h"
#include "net/LobbyClient.h"
#include "net/NetworkOrderSource.h"
#include "net/TCPClient.h"
#include "sim/Games.h"
#include "sim/Recording.h"
#include "sim/ReplayOrderSource.h"
#include "sim/ResultConsensus.h"
#include "sim/UpdateSimulation.h"

using namespace servertest;
using namespace std::chrono_literals;

namespace {

using Frame = std::vector<Bytes>;

bool Poll(std::function<void()> const& pump, std::function<bool()> const& done, std::chrono::milliseconds limit = 5000ms) {
  auto const deadline = std::chrono::steady_clock::now() + limit;
  while (std::chrono::steady_clock::now() < deadline) {
    pump();
    if (done()) return true;
    std::this_thread::sleep_for(1ms);
  }
  return false;
}

// Glow Horde's simulation with orders drawn from the frame number: clicks near its own units.
struct Horde {
  std::unique_ptr<GlowHordeSimulation> simulation;
  unsigned seed = 0;
  bool gameEnded() const { return simulation->gameEnded(); }
  bool gameEnded_LocalPlayer() const { return simulation->gameEnded_LocalPlayer(); }
  Bytes processUIInputsAndGetOurNextOrder() {
    std::mt19937 random(seed * 7919u + simulation->frame());
    auto const& units = simulation->localPlayerState().lemmings();
    if (seed == 0 || random() % 5 != 0 || units.empty()) return {};
    Position const near = units[random() % units.size()].position();
    UIOrder click;
    click.x = near.x + static_cast<int>(random() % 21) - 10;
    click.y = near.y + static_cast<int>(random() % 21) - 10;
    click.activity = static_cast<LemmingActivity>(random() % k_lemmingActivityCount);
    auto const order = simulation->localPlayerState().resolveUIOrder(click);
    return order ? order->toBytes() : Bytes{};
  }
  void update(Frame const& orders, Bytes ourOrder) { simulation->update(orders, ourOrder); }
  Bytes result() const {
    GameResult result;
    simulation->getGameResult(result);
    Bytes bytes;
    ToBytes(result, bytes);
    return bytes;
  }
};

struct Seat {
  std::shared_ptr<TCPClient> transport;
  std::unique_ptr<LobbyClient> lobby;
  std::vector<unsigned short> finished;
  void pump() { lobby->processMessages(finished); }
};

Seat Join(unsigned short port, Credentials const& credentials, std::string const& storage) {
  Seat seat;
  seat.transport = std::make_shared<TCPClient>("127.0.0.1", port);
  EXPECT_TRUE(Poll([&] { seat.transport->complete_connection(); }, [&] { return seat.transport->is_connected(); }));
  ConnectToLobbyServer handshake(seat.transport, credentials);
  EXPECT_TRUE(Poll([&] { handshake.connect(); },
                   [&] { return handshake.state() == ConnectToLobbyServer::State::Authenticated; }));
  seat.lobby = std::make_unique<LobbyClient>(seat.transport, handshake.localPlayerNumber(), handshake.serverInfo().infoB,
                                             storage);
  EXPECT_TRUE(Poll([&] { seat.pump(); }, [&] { return seat.lobby->localPlayer() != nullptr; }));
  return seat;
}

// Ann and Ben play one Glow Horde game of the given GameSpec through the server with the client's own network
// classes, each stepping its own session with orders of its own, to the end.
void PlayGame(ServerProcess& server, std::string const& data, std::string const& storage, IGame const& horde,
              GameSpec const& spec, std::vector<Seat>& seats, std::vector<Horde>& sessions) {
  sessions.resize(2);
  seats.push_back(Join(server.lobbyPort(), MintWithCommand(data, "Ann"), storage + "/0"));
  seats.push_back(Join(server.lobbyPort(), MintWithCommand(data, "Ben"), storage + "/1"));
  seats[0].lobby->requestCreateGame("replay", spec);
  ASSERT_TRUE(Poll([&] { seats[0].pump(); }, [&] { return seats[0].lobby->localRoom() != nullptr; }));
  seats[1].lobby->moveToGameRoom(seats[0].lobby->localPlayer()->roomIndex);
  ASSERT_TRUE(Poll([&] { seats[1].pump(); }, [&] { return seats[1].lobby->localRoom() != nullptr; }));
  for (Seat& seat : seats) seat.lobby->setReadyState(true);
  ASSERT_TRUE(Poll([&] { seats[0].pump(); }, [&] { return seats[0].lobby->localRoom()->ready == std::vector<bool>{true, true}; }));
  seats[0].lobby->requestGameStart();
  for (Seat& seat : seats) {
    ASSERT_TRUE(Poll([&] { seat.pump(); }, [&] { return seat.lobby->gameStartInfo() && seat.lobby->isUDPServerRunning(); }));
  }

  MapSettings const& map = horde.maps.at("Cauldrons");
  std::vector<unsigned short> slots;
  for (short slot : seats[0].lobby->gameStartInfo()->assignedSlots) slots.push_back(static_cast<unsigned short>(slot));
  unsigned short const udpPort = static_cast<unsigned short>(server.lobbyPort() + seats[0].lobby->gameStartInfo()->portOffset);
  std::vector<std::shared_ptr<TandemClient<UDPClient>>> clients;
  std::vector<NetworkOrderSource> sources;
  for (int c = 0; c < 2; ++c) {
    clients.push_back(std::make_shared<TandemClient<UDPClient>>("127.0.0.1", udpPort, 2, spec.delayFrames,
                                                                seats[static_cast<std::size_t>(c)].lobby->authToken()));
    sources.emplace_back(clients.back());
    sessions[static_cast<std::size_t>(c)].simulation =
        std::make_unique<GlowHordeSimulation>(c, 16666, spec.delayFrames, std::get<GameSettings>(spec.settings), map,
                                              slots);
    sessions[static_cast<std::size_t>(c)].seed = static_cast<unsigned>(c + 1);
  }
  std::vector<int> stalls(2, 0);
  testing::internal::CaptureStdout();
  auto const deadline = std::chrono::steady_clock::now() + 60s;
  while (!(sessions[0].gameEnded() && sessions[1].gameEnded()) && std::chrono::steady_clock::now() < deadline) {
    bool stepped = false;
    for (int c = 0; c < 2; ++c) {
      auto const i = static_cast<std::size_t>(c);
      stepped = UpdateSimulation(sessions[i], sources[i], stalls[c]) || stepped;
      seats[i].lobby->sendKeepAliveIfNeeded();
    }
    if (!stepped) std::this_thread::sleep_for(200us);
  }
  testing::internal::GetCapturedStdout();
  ASSERT_TRUE(sessions[0].gameEnded() && sessions[1].gameEnded());
}

// A two-player Glow Horde game on "Cauldrons" lasting seconds, with toSpawn units a player.
GameSpec CauldronsGame(IGame const& horde, int seconds, int toSpawn) {
  GameSettings settings = DefaultSettingsFromSchema(horde.schema);
  settings.strings["map"] = "Cauldrons";
  settings.ints["duration_seconds"] = seconds;
  settings.ints["number_to_spawn"] = toSpawn;
  settings.ints["spawn_interval_deciseconds"] = 3;
  return GameSpec{Game::GlowHorde, settings, 10, 2, 2};
}

// A session's result bytes, read back as the record a client reports.
GameResult ParsedResult(Bytes const& bytes) {
  GameResult parsed;
  unsigned char const* cursor = bytes.data();
  std::size_t remaining = bytes.size();
  EXPECT_TRUE(FromBytes(cursor, remaining, parsed));
  return parsed;
}

}  // namespace

TEST(ReplayThroughServer, ARecordedGameReplaysToTheReportedResult) {
  static Games const games;
  IGame const& horde = games.refGame(Game::GlowHorde);
  GameSpec const spec = CauldronsGame(horde, 30, 15);  // the shortest game a room allows

  std::string const data = FreshDirectory("replay");
  std::string const storage = FreshDirectory("replay-client");
  ServerProcess server(data);
  std::vector<Seat> seats;
  std::vector<Horde> sessions;
  ASSERT_NO_FATAL_FAILURE(PlayGame(server, data, storage, horde, spec, seats, sessions));
  MapSettings const& map = horde.maps.at("Cauldrons");
  Bytes const result = sessions[0].result();
  ASSERT_EQ(sessions[1].result(), result);

  for (Seat& seat : seats) {
    seat.lobby->notifyGameEnd(ParsedResult(result));
  }
  for (Seat& seat : seats) {
    ASSERT_TRUE(Poll([&] { seat.pump(); }, [&] { return !seat.finished.empty(); }));
  }
  unsigned short const game = seats[1].finished.back();
  seats[1].lobby->requestRecording(game);
  ASSERT_TRUE(Poll([&] { seats[1].pump(); }, [&] { return seats[1].lobby->getRecordingStatus(game).onDisk; }));
  Recording const recording(seats[1].lobby->recordingPath(game));
  int ordersRecorded = 0;
  for (int k = 0; k < static_cast<int>(recording.updates.size()); ++k) {
    for (Bytes const& order : recording.allUpdatesOnFrame(k)) ordersRecorded += order.empty() ? 0 : 1;
  }
  EXPECT_GT(ordersRecorded, 10);  // the players' orders went through the relay into the recording
  auto const agreed = AgreedResultBytes(recording.results);
  ASSERT_TRUE(agreed);
  EXPECT_EQ(*agreed, result);

  // The replay: a fresh session fed by the recording, in the first player's seat, to its end.
  GameSpec const recorded = ParseGameSpec(recording.results.specBytes);
  Horde replay;
  replay.simulation = std::make_unique<GlowHordeSimulation>(0, 16666, recorded.delayFrames,
                                                            std::get<GameSettings>(recorded.settings), map,
                                                            recording.results.playerSlots);
  ReplayOrderSource source(recording, 0, recording.players(), recorded.delayFrames);
  int stalled = 0;
  for (int step = 0; step < 100000 && !replay.gameEnded(); ++step) {
    UpdateSimulation(replay, source, stalled);
  }
  ASSERT_TRUE(replay.gameEnded());
  EXPECT_EQ(replay.result(), *agreed);
  EXPECT_EQ(replay.simulation->localBaseDigest(), sessions[0].simulation->localBaseDigest());
  std::filesystem::remove_all(storage);
}

// Two players report different results of the same game: the server re-simulates the recording with
// the games' own code, finds Ann's report true and Ben's not, logs it, and the status page's table of
// settled disputes shows the re-simulated result with Ann alone as matching it, after restarts too.
TEST(ReplayThroughServer, ADisputedResultIsSettledByTheServersOwnReplay) {
  static Games const games;
  IGame const& horde = games.refGame(Game::GlowHorde);
  GameSpec const spec = CauldronsGame(horde, 30, 10);  // the shortest game a room allows

  std::string const data = FreshDirectory("dispute");
  std::string const storage = FreshDirectory("dispute-client");
  ServerProcess server(data);
  std::vector<Seat> seats;
  std::vector<Horde> sessions;
  ASSERT_NO_FATAL_FAILURE(PlayGame(server, data, storage, horde, spec, seats, sessions));
  ASSERT_EQ(sessions[0].result(), sessions[1].result());
  GameResult const truth = ParsedResult(sessions[0].result());
  ASSERT_FALSE(truth.results.empty());
  GameResult forged = truth;
  forged.results[0][0] += 1;  // Ben claims one more unit out for the first team
  seats[0].lobby->notifyGameEnd(truth);
  seats[1].lobby->notifyGameEnd(forged);
  for (Seat& seat : seats) {
    ASSERT_TRUE(Poll([&] { seat.pump(); }, [&] { return !seat.finished.empty(); }));
  }
  // The clients' own tables never see a disputed game: it has no agreed result.
  for (Seat& seat : seats) {
    GameResults const* played = seat.lobby->playedGame(seat.finished.back());
    ASSERT_NE(played, nullptr);
    EXPECT_EQ(played->reportedResults.size(), 2u);
    EXPECT_FALSE(AgreedResultBytes(*played));
  }

  // The row the status page must show: the true result as the page writes results, and Ann.
  std::string truthText = "end frame " + std::to_string(truth.endFrame) + ":";
  for (auto const& row : truth.results) {
    truthText += " [";
    for (std::size_t i = 0; i < row.size(); ++i) truthText += (i == 0 ? "" : ", ") + std::to_string(row[i]);
    truthText += "]";
  }
  auto const expectSettlementShown = [&](ServerProcess const& running) {
    httplib::Client web("127.0.0.1", running.webPort());
    std::string page;
    ASSERT_TRUE(Poll([] {}, [&] {
      auto const response = web.Get("/status");
      page = response ? response->body : "";
      return page.find("<h2>Settled disputes</h2><table>") != std::string::npos;
    }, 20000ms)) << page;
    std::size_t const row = page.find("<tr><td>0</td><td>" + truthText + "</td><td>Ann</td><td>");
    EXPECT_NE(row, std::string::npos) << page;
    EXPECT_EQ(page.find("Ben</td><td>", row), std::string::npos);
  };
  expectSettlementShown(server);
  server.removeDataOnExit = false;
  EXPECT_EQ(server.terminate(), 0);
  EXPECT_NE(server.output().find("The reports of game 0 disagree\n"), std::string::npos) << server.output();
  EXPECT_NE(server.output().find("reports that match: 0 (Ann)\n"), std::string::npos) << server.output();

  {  // The settlement outlives the server.
    ServerProcess again(data);
    again.removeDataOnExit = false;
    expectSettlementShown(again);
    EXPECT_EQ(again.terminate(), 0);
    EXPECT_EQ(again.output().find("re-simulat"), std::string::npos) << again.output();
  }
  // A server that stopped before the settlement was saved leaves the game waiting: the next one settles it.
  sqlite3* db = nullptr;
  ASSERT_EQ(sqlite3_open((std::filesystem::path(data) / "server.sqlite3").c_str(), &db), SQLITE_OK);
  EXPECT_EQ(sqlite3_exec(db, "UPDATE disputes SET settled = 0; DELETE FROM dispute_places", nullptr, nullptr, nullptr),
            SQLITE_OK);
  sqlite3_close(db);
  ServerProcess last(data);
  expectSettlementShown(last);
  EXPECT_EQ(last.terminate(), 0);
  EXPECT_NE(last.output().find("Game 0: re-simulating its recording"), std::string::npos) << last.output();
  std::filesystem::remove_all(storage);
}
