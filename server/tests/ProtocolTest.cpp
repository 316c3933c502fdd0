// The real server, spoken to over 127.0.0.1 with bytes built by hand from the message tables.
#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>
#include <thread>

#include "ServerTestSupport.h"
#include "net/LobbyMessages.h"
#include "sim/Recording.h"

using namespace servertest;
using namespace std::chrono_literals;

namespace {

Bytes CauldronsSpec(unsigned minPlayers, unsigned maxPlayers, unsigned delay = 15, char const* map = "Cauldrons") {
  return CustomGlowHordeSpec(map, minPlayers, maxPlayers, delay);
}

// Ranked Aviators match index 0 (two players), by hand.
Bytes RankedSpec() {
  Bytes spec;
  U16(spec, 1);
  U8(spec, 1);
  U32(spec, 0);
  U8(spec, 20);
  U16(spec, 2);
  U16(spec, 2);
  return spec;
}

Bytes CreateGame(std::string const& description, Bytes const& spec, unsigned minPlayers, unsigned maxPlayers,
                 bool repeatedIdsAllowed) {
  Bytes message = {8};
  Str(message, description);
  Vec(message, spec);
  U16(message, minPlayers);
  U16(message, maxPlayers);
  U8(message, repeatedIdsAllowed ? 1 : 0);
  return message;
}

Bytes MoveToRoom(unsigned room) {
  Bytes message = {5};
  U16(message, room);
  return message;
}

Bytes GameStart(std::uint64_t token) {
  Bytes message = {9};
  U64(message, token);
  return message;
}

// A GameResult by hand: endFrame 100, one row {5, 7}, checksum 0xABC.
Bytes HandResult() {
  Bytes result;
  U32(result, 100);
  U64(result, 1);
  U64(result, 2);
  U64(result, 5);
  U64(result, 7);
  U64(result, 0xABC);
  return result;
}

LobbyState ReadLobby(Bytes const& frame) {
  LobbyState state;
  EXPECT_EQ(frame.at(0), 4);
  EXPECT_TRUE(LobbyMessages::DecodeLobbyState(frame.data() + 1, frame.size() - 1, state));
  return state;
}

// The latest LOBBY_STATE among what arrives within the limit.
std::optional<LobbyState> LatestLobby(RawClient& client, std::chrono::milliseconds limit = 400ms) {
  std::optional<LobbyState> latest;
  for (Bytes const& frame : client.drain(limit)) {
    if (frame.at(0) == 4) latest = ReadLobby(frame);
  }
  return latest;
}

// A SERVER_ERROR among what arrives: its fatal byte, or nothing.
std::optional<int> ServerErrorFatal(RawClient& client) {
  auto const error = client.waitFor(15, 1500ms);
  if (!error) return std::nullopt;
  return (*error).at(1);
}

class Protocol : public ::testing::Test {
protected:
  static void SetUpTestSuite() {
    directory_ = new std::string(FreshDirectory("protocol"));
    alice_ = new Credentials(MintWithCommand(*directory_, "Alice"));
    bob_ = new Credentials(MintWithCommand(*directory_, "Bob"));
    carol_ = new Credentials(MintWithCommand(*directory_, "Carol"));
    server_ = new ServerProcess(*directory_);
  }
  static void TearDownTestSuite() {
    delete server_;
    delete alice_;
    delete bob_;
    delete carol_;
    delete directory_;
  }
  static unsigned short port() { return server_->lobbyPort(); }

  static std::string* directory_;
  static Credentials* alice_;
  static Credentials* bob_;
  static Credentials* carol_;
  static ServerProcess* server_;
};
std::string* Protocol::directory_ = nullptr;
Credentials* Protocol::alice_ = nullptr;
Credentials* Protocol::bob_ = nullptr;
Credentials* Protocol::carol_ = nullptr;
ServerProcess* Protocol::server_ = nullptr;

}  // namespace

TEST_F(Protocol, LoginExchangeIsByteExactAndTheLobbyFollows) {
  RawClient client(port());
  client.sendFrame({0, 0xEB, 0x03, 0x00, 0x00});
  EXPECT_EQ(client.readFrame(), (Bytes{0, 0xEB, 0x03, 0x00, 0x00}));
  auto const response = client.readFrame();
  ASSERT_TRUE(response);
  ASSERT_EQ(response->size(), 10u + 32u);
  EXPECT_EQ((*response)[0], 1);
  EXPECT_NE((*response)[1], 0);
  EXPECT_EQ(ReadU64(*response, 2), 32u);

  // Every connection gets a challenge of its own.
  RawClient other(port());
  other.sendFrame({0, 0xEB, 0x03, 0x00, 0x00});
  other.readFrame();
  auto const otherResponse = other.readFrame();
  ASSERT_TRUE(otherResponse);
  EXPECT_NE(Bytes(response->begin() + 10, response->end()), Bytes(otherResponse->begin() + 10, otherResponse->end()));

  RawClient alice(port());
  auto const number = alice.login(*alice_);
  ASSERT_TRUE(number);
  auto const lobby = alice.readFrame();
  ASSERT_TRUE(lobby);
  LobbyState const state = ReadLobby(*lobby);
  ASSERT_LT(*number, state.players.size());
  ASSERT_TRUE(state.players[*number]);
  EXPECT_EQ(state.players[*number]->playerId, alice_->playerId);
  EXPECT_EQ(state.players[*number]->roomIndex, 65535);
  auto const names = alice.waitFor(13);
  ASSERT_TRUE(names);
  bool found = false;
  for (auto const& entry : LobbyMessages::DecodePlayerNames(names->data() + 1, names->size() - 1)) {
    found = found || (entry.playerId == alice_->playerId && entry.name == "Alice");
  }
  EXPECT_TRUE(found);
  EXPECT_TRUE(alice.waitFor(12));
}

TEST_F(Protocol, LoginRefusalsSayNoAndClose) {
  {
    Credentials wrong = *alice_;
    wrong.secret[0] ^= 1;
    RawClient client(port());
    EXPECT_FALSE(client.login(wrong));
    EXPECT_TRUE(client.closedWithin(2s));
  }
  {
    Credentials unknown = *alice_;
    unknown.playerId[7] ^= 0x55;
    RawClient client(port());
    client.sendFrame({0, 0xEB, 0x03, 0x00, 0x00});
    client.readFrame();
    auto const challenge = client.readFrame();
    ASSERT_TRUE(challenge);
    Bytes request = {2};
    Vec(request, unknown.playerId);
    U64(request, 12345);
    client.sendFrame(request);
    auto const refusal = client.readFrame();
    ASSERT_TRUE(refusal);
    ASSERT_GE(refusal->size(), 10u);
    EXPECT_EQ((*refusal)[0], 3);
    EXPECT_EQ((*refusal)[1], 0);
    EXPECT_EQ(ReadU64(*refusal, 2), refusal->size() - 10);
    EXPECT_TRUE(client.closedWithin(2s));
  }
  {
    RawClient client(port());
    client.sendFrame({0, 0xEA, 0x03, 0x00, 0x00});  // version 1002
    EXPECT_EQ(client.readFrame(), (Bytes{0, 0xEB, 0x03, 0x00, 0x00}));
    auto const refusal = client.readFrame();
    ASSERT_TRUE(refusal);
    EXPECT_EQ((*refusal)[0], 1);
    EXPECT_EQ((*refusal)[1], 0);
    EXPECT_TRUE(client.closedWithin(2s));
  }
  {
    RawClient client(port());
    client.sendFrame({2, 0, 0});  // an authentication request before the version
    EXPECT_TRUE(client.closedWithin(2s));
  }
}

TEST_F(Protocol, ViolationsAreFatalAndRefusalsAreNot) {
  struct Case {
    char const* what;
    Bytes frame;
  };
  std::vector<Case> const violations = {
      {"a server's message type", {12}},
      {"a handshake message", {0, 0xEB, 0x03, 0, 0}},
      {"type above the table", {200}},
      {"move with a byte too many", {5, 0, 0, 0}},
      {"ready without its byte", {6}},
      {"keep-alive with a body", {16, 1}},
      {"name longer than its bytes", {14, 9, 0, 0, 0, 0, 0, 0, 0, 'a'}},
  };
  for (Case const& c : violations) {
    RawClient client(port());
    ASSERT_TRUE(client.login(*carol_)) << c.what;
    client.drain(100ms);
    client.sendFrame(c.frame);
    EXPECT_EQ(ServerErrorFatal(client), 1) << c.what;
    EXPECT_TRUE(client.closedWithin(2s)) << c.what;
  }
  {
    RawClient client(port());
    ASSERT_TRUE(client.login(*carol_));
    client.sendRaw({0x00, 0x10, 0x00, 0x00});  // announces 1 MiB
    EXPECT_TRUE(client.closedWithin(2s));
  }
  RawClient client(port());
  ASSERT_TRUE(client.login(*carol_));
  client.drain(100ms);
  client.sendFrame({6, 1});  // ready while in no room
  EXPECT_EQ(ServerErrorFatal(client), 0);
  client.sendFrame(MoveToRoom(999));
  EXPECT_EQ(ServerErrorFatal(client), 0);
  Bytes rename = {14};
  Str(rename, "Carol");
  client.sendFrame(rename);
  EXPECT_TRUE(client.waitFor(13));  // still connected and served
}

TEST_F(Protocol, RoomsKeepHostFirstAndSlotsReadyInStep) {
  RawClient alice(port());
  RawClient bob(port());
  auto const a = alice.login(*alice_);
  auto const b = bob.login(*bob_);
  ASSERT_TRUE(a && b);
  alice.drain(100ms);
  alice.sendFrame(CreateGame("Room A", CauldronsSpec(1, 3), 1, 3, true));
  auto state = LatestLobby(alice);
  ASSERT_TRUE(state);
  unsigned short const r = state->players[*a]->roomIndex;
  ASSERT_LT(r, state->rooms.size());
  GameRoom room = *state->rooms[r];
  EXPECT_EQ(room.description, "Room A");
  EXPECT_EQ(room.maxPlayers, 3);
  EXPECT_EQ(room.specBytes, CauldronsSpec(1, 3));
  EXPECT_EQ(room.players, (std::vector<unsigned short>{*a}));
  EXPECT_EQ(room.slotChoices, (std::vector<short>{-1}));
  EXPECT_EQ(room.assignedSlots, (std::vector<short>{0}));
  EXPECT_NE(room.roomToken, 0u);

  bob.drain(100ms);
  bob.sendFrame(MoveToRoom(r));
  state = LatestLobby(bob);
  ASSERT_TRUE(state);
  room = *state->rooms[r];
  EXPECT_EQ(room.players, (std::vector<unsigned short>{*a, *b}));
  EXPECT_EQ(room.assignedSlots, (std::vector<short>{0, 1}));

  bob.sendFrame({7, 0, 0});  // Bob chooses slot 0, Alice is moved off it
  state = LatestLobby(bob);
  room = *state->rooms[r];
  EXPECT_EQ(room.slotChoices, (std::vector<short>{-1, 0}));
  EXPECT_EQ(room.assignedSlots, (std::vector<short>{1, 0}));
  alice.drain(200ms);
  alice.sendFrame({7, 0, 0});  // taken by Bob's choice
  EXPECT_EQ(ServerErrorFatal(alice), 0);
  alice.sendFrame({7, 3, 0});  // Cauldrons has slots 0 to 2
  EXPECT_EQ(ServerErrorFatal(alice), 0);

  bob.sendFrame({6, 1});
  state = LatestLobby(bob);
  EXPECT_EQ(state->rooms[r]->ready, (std::vector<bool>{false, true}));

  alice.sendFrame(MoveToRoom(65535));  // the host leaves: Bob is host now
  state = LatestLobby(bob);
  EXPECT_EQ(state->rooms[r]->players, (std::vector<unsigned short>{*b}));
  bob.sendFrame(MoveToRoom(65535));
  state = LatestLobby(bob);
  EXPECT_TRUE(r >= state->rooms.size() || !state->rooms[r]);
}

TEST_F(Protocol, CreateGameRefusesWhatDoesNotCheckOut) {
  Bytes unknownGame = CauldronsSpec(1, 3);
  unknownGame[0] = 7;
  Bytes trailing = CauldronsSpec(1, 3);
  trailing.push_back(0);
  // The last integer, the spawn interval, stands just before delay, min and max (5 bytes): 0 is out of range.
  Bytes noInterval = CauldronsSpec(1, 3);
  std::fill(noInterval.end() - 9, noInterval.end() - 5, 0);
  struct Case {
    char const* what;
    Bytes message;
  };
  std::vector<Case> const cases = {
      {"delay 9", CreateGame("x", CauldronsSpec(1, 3, 9), 1, 3, true)},
      {"delay 36", CreateGame("x", CauldronsSpec(1, 3, 36), 1, 3, true)},
      {"unknown game", CreateGame("x", unknownGame, 1, 3, true)},
      {"unknown map", CreateGame("x", CauldronsSpec(1, 3, 15, "Nowhere"), 1, 3, true)},
      {"more players than the map", CreateGame("x", CauldronsSpec(1, 4), 1, 4, true)},
      {"counts differ from the GameSpec", CreateGame("x", CauldronsSpec(1, 3), 1, 2, true)},
      {"GameSpec with a trailing byte", CreateGame("x", trailing, 1, 3, true)},
      {"a setting out of its range", CreateGame("x", noInterval, 1, 3, true)},
      {"ranked with repeated ids", CreateGame("x", RankedSpec(), 2, 2, true)},
      {"control character in the description", CreateGame("a\nb", CauldronsSpec(1, 3), 1, 3, true)},
  };
  RawClient client(port());
  auto const number = client.login(*carol_);
  ASSERT_TRUE(number);
  client.drain(100ms);
  for (Case const& c : cases) {
    client.sendFrame(c.message);
    EXPECT_EQ(ServerErrorFatal(client), 0) << c.what;
  }
  client.sendFrame(CreateGame("fine", RankedSpec(), 2, 2, false));
  auto const state = LatestLobby(client);
  ASSERT_TRUE(state);
  EXPECT_NE(state->players[*number]->roomIndex, 65535);
}

TEST_F(Protocol, RankedRoomsTakeEachIdOnce) {
  RawClient first(port());
  RawClient second(port());
  auto const one = first.login(*carol_);
  auto const two = second.login(*carol_);
  ASSERT_TRUE(one && two);
  EXPECT_NE(*one, *two);
  first.drain(100ms);
  first.sendFrame(CreateGame("ranked", RankedSpec(), 2, 2, false));
  auto const ranked = LatestLobby(first);
  unsigned short const r = ranked->players[*one]->roomIndex;
  second.drain(100ms);
  second.sendFrame(MoveToRoom(r));
  EXPECT_EQ(ServerErrorFatal(second), 0);

  first.sendFrame(CreateGame("friendly", CauldronsSpec(1, 3), 1, 3, true));
  auto const friendly = LatestLobby(first);
  unsigned short const f = friendly->players[*one]->roomIndex;
  second.drain(100ms);
  second.sendFrame(MoveToRoom(f));
  auto const joined = LatestLobby(second);
  ASSERT_TRUE(joined);
  EXPECT_EQ(joined->rooms[f]->players, (std::vector<unsigned short>{*one, *two}));
}

namespace {

// Two players in a started game of a room, with their session tokens and the port offset.
struct StartedGame {
  unsigned short room = 0;
  std::uint64_t tokenA = 0;
  std::uint64_t tokenB = 0;
  RunningGameState state;
};

StartedGame StartTwoPlayerGame(RawClient& alice, unsigned short a, RawClient& bob, RawClient* observer) {
  StartedGame game;
  alice.drain(100ms);
  alice.sendFrame(CreateGame("Duel", CauldronsSpec(2, 3), 2, 3, true));
  auto state = LatestLobby(alice);
  game.room = state->players[a]->roomIndex;
  std::uint64_t const roomToken = state->rooms[game.room]->roomToken;
  alice.sendFrame(GameStart(roomToken));  // one player only
  EXPECT_EQ(ServerErrorFatal(alice), 0);
  bob.drain(100ms);
  bob.sendFrame(MoveToRoom(game.room));
  bob.drain(200ms);
  bob.sendFrame(GameStart(roomToken));  // not the host
  EXPECT_EQ(ServerErrorFatal(bob), 0);
  alice.drain(200ms);
  alice.sendFrame(GameStart(roomToken));  // nobody ready
  EXPECT_EQ(ServerErrorFatal(alice), 0);
  alice.sendFrame({6, 1});
  bob.sendFrame({6, 1});
  alice.drain(300ms);
  bob.drain(300ms);
  if (observer != nullptr) observer->drain(300ms);
  alice.sendFrame(GameStart(roomToken ^ 1));  // a stale token
  EXPECT_EQ(ServerErrorFatal(alice), 0);
  alice.sendFrame(GameStart(roomToken));
  for (auto [client, token] : {std::pair{&alice, &game.tokenA}, std::pair{&bob, &game.tokenB}}) {
    auto const start = client->readFrame();
    EXPECT_TRUE(start && start->size() == 9 && (*start)[0] == 9);
    if (start && start->size() == 9) *token = ReadU64(*start, 1);
    auto const running = client->readFrame();
    EXPECT_TRUE(running && (*running)[0] == 10);
    if (running) {
      EXPECT_TRUE(LobbyMessages::DecodeRunningGameState(running->data() + 1, running->size() - 1, game.state));
    }
  }
  return game;
}

Bytes DataPacket(std::uint64_t newestTick, std::uint64_t receivedBefore, std::vector<Bytes> const& updates) {
  Bytes packet = {3};
  U64(packet, newestTick);
  U64(packet, receivedBefore);
  U8(packet, static_cast<unsigned>(updates.size()));
  for (Bytes const& update : updates) {
    U8(packet, static_cast<unsigned>(update.size()));
    packet.insert(packet.end(), update.begin(), update.end());
  }
  return packet;
}

Bytes SessionRequest(std::uint64_t token) {
  Bytes request = {1};
  U64(request, token);
  return request;
}

}  // namespace

TEST_F(Protocol, StartRelayEndResultsAndRecording) {
  RawClient alice(port());
  RawClient bob(port());
  RawClient carol(port());
  auto const a = alice.login(*alice_);
  auto const b = bob.login(*bob_);
  ASSERT_TRUE(a && b && carol.login(*carol_));
  StartedGame const game = StartTwoPlayerGame(alice, *a, bob, &carol);
  ASSERT_NE(game.tokenA, 0u);
  ASSERT_NE(game.tokenA, game.tokenB);
  EXPECT_TRUE(game.state.udpServerRunning);
  EXPECT_EQ(game.state.players, (std::vector<unsigned short>{*a, *b}));
  EXPECT_EQ(game.state.disconnected, (std::vector<bool>{false, false}));
  // The observer sees the room playing; the players get no LOBBY_STATE while they play.
  auto const seen = LatestLobby(carol);
  ASSERT_TRUE(seen);
  EXPECT_TRUE(seen->rooms[game.room]->runningGame);
  unsigned short const udpPort = static_cast<unsigned short>(port() + game.state.portOffset);

  RawDatagram udpA;
  RawDatagram udpB;
  RawDatagram stranger;
  stranger.sendTo(udpPort, SessionRequest(game.tokenA ^ 0xFF));
  EXPECT_FALSE(stranger.receive(300ms));
  udpA.sendTo(udpPort, SessionRequest(game.tokenA));
  EXPECT_EQ(udpA.receive(), (Bytes{2}));
  udpA.sendTo(udpPort, SessionRequest(game.tokenA));  // a repeat is confirmed again
  EXPECT_EQ(udpA.receive(), (Bytes{2}));
  udpB.sendTo(udpPort, SessionRequest(game.tokenB));
  EXPECT_EQ(udpB.receive(), (Bytes{2}));
  stranger.sendTo(udpPort, DataPacket(0, 0, {{'z'}}));  // from an address without a session: dropped

  udpA.sendTo(udpPort, DataPacket(0, 0, {{'a', '1'}}));
  EXPECT_FALSE(udpA.receive(200ms));  // nothing to collate before Bob's tick 0
  udpB.sendTo(udpPort, DataPacket(0, 0, {{'b'}}));
  Bytes const tick0 = {2, 'a', '1', 1, 'b'};
  EXPECT_EQ(udpA.receive(), DataPacket(0, 1, {tick0}));
  EXPECT_EQ(udpB.receive(), DataPacket(0, 1, {tick0}));
  EXPECT_FALSE(stranger.receive(200ms));

  for (Bytes const& frame : alice.drain(200ms)) EXPECT_NE(frame.at(0), 4) << "LOBBY_STATE during the game";
  Bytes gameEnd = {11};
  Vec(gameEnd, HandResult());
  alice.sendFrame(gameEnd);
  EXPECT_TRUE(alice.waitFor(4));  // the lobby again, after GAME_END
  auto const dropped = bob.waitFor(10);
  ASSERT_TRUE(dropped);
  RunningGameState afterAlice;
  LobbyMessages::DecodeRunningGameState(dropped->data() + 1, dropped->size() - 1, afterAlice);
  EXPECT_EQ(afterAlice.disconnected, (std::vector<bool>{true, false}));
  bob.sendFrame(gameEnd);
  EXPECT_TRUE(bob.waitFor(4));

  std::optional<Bytes> results;
  for (Bytes const& frame : alice.drain(400ms)) {
    if (frame.at(0) == 12) results = frame;
  }
  ASSERT_TRUE(results);
  std::uint32_t first = 0;
  std::vector<GameResults> games;
  ASSERT_TRUE(LobbyMessages::DecodeGameResults(results->data() + 1, results->size() - 1, first, games));
  ASSERT_FALSE(games.empty());
  GameResults const& played = games.back();
  EXPECT_TRUE(played.finished);
  EXPECT_EQ(played.playerIds, (std::vector<Bytes>{alice_->playerId, bob_->playerId}));
  EXPECT_EQ(played.playerNames.at(0), "Alice");
  EXPECT_EQ(played.reportedResults, (std::vector<Bytes>{HandResult(), HandResult()}));
  unsigned const number = first + static_cast<unsigned>(games.size()) - 1;

  Bytes request = {17};
  U16(request, number);
  alice.sendFrame(request);
  auto const data = alice.waitFor(18);
  ASSERT_TRUE(data);
  LobbyMessages::RecordingData recording;
  ASSERT_TRUE(LobbyMessages::DecodeRecordingData(data->data() + 1, data->size() - 1, recording));
  EXPECT_EQ(recording.game, number);
  std::istringstream file(std::string(recording.bytes.begin(), recording.bytes.end()));
  Recording const loaded(file);
  EXPECT_EQ(loaded.updates, (std::deque<Bytes>{tick0}));
  EXPECT_EQ(loaded.results, played);
}

TEST_F(Protocol, LostConnectionDropsThePlayerFromTheRelay) {
  RawClient alice(port());
  auto bob = std::make_unique<RawClient>(port());
  auto const a = alice.login(*alice_);
  auto const b = bob->login(*bob_);
  ASSERT_TRUE(a && b);
  StartedGame const game = StartTwoPlayerGame(alice, *a, *bob, nullptr);
  unsigned short const udpPort = static_cast<unsigned short>(port() + game.state.portOffset);
  RawDatagram udpA;
  udpA.sendTo(udpPort, SessionRequest(game.tokenA));
  ASSERT_EQ(udpA.receive(), (Bytes{2}));
  udpA.sendTo(udpPort, DataPacket(0, 0, {{'a'}}));
  bob.reset();  // Bob's client goes away
  auto const running = alice.waitFor(10);
  ASSERT_TRUE(running);
  RunningGameState state;
  LobbyMessages::DecodeRunningGameState(running->data() + 1, running->size() - 1, state);
  EXPECT_EQ(state.disconnected, (std::vector<bool>{false, true}));
  // Alice's waiting tick goes out with an empty chunk for Bob.
  EXPECT_EQ(udpA.receive(), DataPacket(0, 1, {{1, 'a', 0}}));
  Bytes gameEnd = {11};
  U64(gameEnd, 0);
  alice.sendFrame(gameEnd);
  auto const lobby = alice.waitFor(4);
  ASSERT_TRUE(lobby);
  LobbyState const after = ReadLobby(*lobby);
  EXPECT_FALSE(after.rooms.at(game.room)->runningGame);
  EXPECT_EQ(after.rooms.at(game.room)->players, (std::vector<unsigned short>{*a}));
}

TEST(ServerProcessTest, SilentConnectionsTimeOut) {
  std::string const directory = FreshDirectory("timeouts");
  Credentials const credentials = MintWithCommand(directory, "Dana");
  ServerProcess server(directory, {"--login-timeout-ms", "300", "--keep-alive-timeout-ms", "600"});
  RawClient silent(server.lobbyPort());
  RawClient quiet(server.lobbyPort());
  RawClient chatty(server.lobbyPort());
  ASSERT_TRUE(quiet.login(credentials));
  ASSERT_TRUE(chatty.login(credentials));
  auto const start = std::chrono::steady_clock::now();
  while (std::chrono::steady_clock::now() - start < 1500ms) {
    chatty.sendFrame({16});
    chatty.drain(200ms);
  }
  EXPECT_TRUE(silent.closedWithin(500ms));
  EXPECT_TRUE(quiet.closedWithin(500ms));
  EXPECT_FALSE(chatty.closedWithin(300ms));
}

TEST(ServerProcessTest, AccountsNamesResultsAndRecordingsSurviveARestart) {
  std::string const directory = FreshDirectory("restart");
  Credentials const credentials = MintWithCommand(directory, "Erin");
  Bytes solo = CauldronsSpec(1, 1);
  unsigned game = 0;
  {
    ServerProcess server(directory);
    server.removeDataOnExit = false;
    RawClient client(server.lobbyPort());
    auto const number = client.login(credentials);
    ASSERT_TRUE(number);
    Bytes rename = {14};
    Str(rename, "Erin the Second");
    client.sendFrame(rename);
    client.sendFrame(CreateGame("solo", solo, 1, 1, true));
    auto const state = LatestLobby(client);
    ASSERT_TRUE(state);
    auto const& room = *state->rooms[state->players[*number]->roomIndex];
    client.sendFrame({6, 1});
    client.drain(200ms);
    client.sendFrame(GameStart(room.roomToken));
    auto const start = client.waitFor(9);
    auto const running = client.waitFor(10);
    ASSERT_TRUE(start && running);
    RunningGameState runningState;
    LobbyMessages::DecodeRunningGameState(running->data() + 1, running->size() - 1, runningState);
    RawDatagram udp;
    unsigned short const udpPort = static_cast<unsigned short>(server.lobbyPort() + runningState.portOffset);
    udp.sendTo(udpPort, SessionRequest(ReadU64(*start, 1)));
    ASSERT_EQ(udp.receive(), (Bytes{2}));
    udp.sendTo(udpPort, DataPacket(1, 0, {{'y'}, {'x'}}));
    EXPECT_EQ(udp.receive(), DataPacket(1, 2, {{1, 'y'}, {1, 'x'}}));
    Bytes gameEnd = {11};
    Vec(gameEnd, HandResult());
    client.sendFrame(gameEnd);
    ASSERT_TRUE(client.waitFor(4));
    game = 0;  // the first game of this data directory
    EXPECT_EQ(server.terminate(), 0);
    EXPECT_NE(server.output().find("Server stopped"), std::string::npos);
  }
  ServerProcess server(directory);
  RawClient client(server.lobbyPort());
  ASSERT_TRUE(client.login(credentials));
  bool renamed = false;
  std::optional<Bytes> results;
  for (Bytes const& frame : client.drain(500ms)) {
    if (frame.at(0) == 13) {
      for (auto const& entry : LobbyMessages::DecodePlayerNames(frame.data() + 1, frame.size() - 1)) {
        renamed = renamed || (entry.playerId == credentials.playerId && entry.name == "Erin the Second");
      }
    }
    if (frame.at(0) == 12) results = frame;
  }
  EXPECT_TRUE(renamed);
  ASSERT_TRUE(results);
  std::uint32_t first = 0;
  std::vector<GameResults> games;
  ASSERT_TRUE(LobbyMessages::DecodeGameResults(results->data() + 1, results->size() - 1, first, games));
  ASSERT_EQ(games.size(), 1u);
  EXPECT_TRUE(games[0].finished);
  EXPECT_EQ(games[0].reportedResults, (std::vector<Bytes>{HandResult()}));
  Bytes request = {17};
  U16(request, game);
  client.sendFrame(request);
  auto const data = client.waitFor(18);
  ASSERT_TRUE(data);
  LobbyMessages::RecordingData recording;
  ASSERT_TRUE(LobbyMessages::DecodeRecordingData(data->data() + 1, data->size() - 1, recording));
  std::istringstream file(std::string(recording.bytes.begin(), recording.bytes.end()));
  Recording const loaded(file);
  EXPECT_EQ(loaded.updates, (std::deque<Bytes>{{1, 'x'}, {1, 'y'}}));
  EXPECT_EQ(loaded.results.reportedResults, (std::vector<Bytes>{HandResult()}));
}
