// The client's network classes end to end over real sockets on 127.0.0.1: the login and the lobby
// over TCP against a listener that plays the server, and a game session over datagrams against a
// relay built from the update stream.

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <memory>
#include <thread>

#include "accounts/SaltedHash.h"
#include "net/ConnectToLobbyServer.h"
#include "net/LobbyClient.h"
#include "net/LobbyMessages.h"
#include "net/MessageFramer.h"
#include "net/NetworkOrderSource.h"
#include "net/TCPClient.h"
#include "net/UDPDataStream.h"
#include "sim/UpdateSimulation.h"
#include "support/Bytes.h"
#include "support/LoopbackSockets.h"
#include "support/TempDirectory.h"

using namespace testbytes;

namespace {

// Reads one whole frame from the listener's peer; empty if none came in time. The client sends one
// frame at a time here, so nothing after it is lost.
Bytes ReadFrame(loopback::Listener const& listener) {
  Bytes bytes = listener.receive(4);
  if (bytes.size() < 4) {
    return {};
  }
  std::size_t const end = 4 + SocketPlatform::ReadFrameHeader(bytes.data());
  while (bytes.size() < end) {
    Bytes const more = listener.receive(end - bytes.size());
    if (more.empty()) {
      return {};
    }
    bytes.insert(bytes.end(), more.begin(), more.end());
  }
  return Bytes(bytes.begin() + 4, bytes.begin() + static_cast<std::ptrdiff_t>(end));
}

template <class Done>
void PollUntil(Done&& done, std::function<void()> const& poll) {
  for (int i = 0; i < 2000 && !done(); ++i) {
    poll();
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
}

}  // namespace

TEST(LoopbackSessionTest, LoginAndLobbyOverTCP) {
  Credentials const credentials{{1, 2, 3, 4, 5, 6, 7, 8}, Bytes(16, 0x33)};
  loopback::Listener server;
  auto client = std::make_shared<TCPClient>("127.0.0.1", server.port());
  ASSERT_TRUE(server.accept());
  PollUntil([&] { return client->get_connection_state() != ConnectionState::Connecting; },
            [&] { client->complete_connection(); });
  ASSERT_TRUE(client->is_connected());

  ConnectToLobbyServer login(client, credentials);
  EXPECT_EQ(ReadFrame(server), Of({0, 0xeb, 0x03, 0, 0}));

  Bytes const challenge = Of({0x51, 0x52, 0x53, 0x54});
  server.send(SocketPlatform::MakeFrame(LobbyMessages::EncodeVersion(1003)));
  server.send(SocketPlatform::MakeFrame(Concat({Of({1, 1}), Count(4), challenge})));
  PollUntil([&] { return login.state() == ConnectToLobbyServer::State::AwaitAuthResponse; }, [&] { login.connect(); });
  Bytes const request = ReadFrame(server);
  ASSERT_EQ(request.size(), 25u);
  std::uint64_t hash = 0;
  for (int i = 0; i < 8; ++i) {
    hash |= std::uint64_t{request[17 + static_cast<std::size_t>(i)]} << (8 * i);
  }
  EXPECT_EQ(hash, SaltedHash(challenge, credentials.secret));

  // The grant and the first LOBBY_STATE in one segment: the login takes only its own message.
  LobbyState state;
  state.players = {std::nullopt, PlayerInLobby{credentials.playerId, PlayerInLobby::kNoRoom}};
  server.send(Concat({SocketPlatform::MakeFrame(Of({3, 1, 12, 0, 3, 0, 1, 0})),
                      SocketPlatform::MakeFrame(LobbyMessages::EncodeLobbyState(state))}));
  PollUntil([&] { return login.state() == ConnectToLobbyServer::State::Authenticated; }, [&] { login.connect(); });
  ASSERT_EQ(login.state(), ConnectToLobbyServer::State::Authenticated);

  TempDirectory storage;
  LobbyClient lobby(client, login.localPlayerNumber(), login.serverInfo().infoB, storage.str());
  std::vector<unsigned short> finished;
  PollUntil([&] { return lobby.localPlayer() != nullptr; }, [&] { lobby.processMessages(finished); });
  ASSERT_NE(lobby.localPlayer(), nullptr);
  EXPECT_EQ(lobby.localPlayer()->playerId, credentials.playerId);

  lobby.setReadyState(true);
  EXPECT_EQ(ReadFrame(server), Of({6, 1}));

  server.closePeer();
  testing::internal::CaptureStderr();
  std::string error;
  PollUntil([&] { return !error.empty(); },
            [&] {
              try {
                lobby.processMessages(finished);
              } catch (std::runtime_error const& failure) {
                error = failure.what();
              }
            });
  testing::internal::GetCapturedStderr();
  EXPECT_EQ(error, "Disconnected from lobby server");
}

namespace {

// A relay for one player on a datagram socket, run on its own thread: it confirms the session request
// with the right token and relays the player's orders as collated ticks.
class DatagramRelay {
public:
  explicit DatagramRelay(std::uint64_t token) : socket_(loopback::Bound(SOCK_DGRAM)), token_(token) {
    thread_ = std::thread([this] { run(); });
  }
  ~DatagramRelay() {
    stop_ = true;
    thread_.join();
    ::close(socket_);
  }
  unsigned short port() const { return loopback::PortOf(socket_); }
  int confirmations() const { return confirmations_; }

  bool send_packet(int, void const* data, std::size_t length) {
    ::sendto(socket_, data, length, 0, reinterpret_cast<sockaddr const*>(&client_), sizeof(client_));
    return true;
  }

private:
  void run() {
    auto const until = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    unsigned char buffer[Datagram::kMaxPayload];
    while (!stop_ && std::chrono::steady_clock::now() < until) {
      if (loopback::Readable(socket_, 1)) {
        socklen_t size = sizeof(client_);
        ssize_t const got =
            ::recvfrom(socket_, buffer, sizeof(buffer), 0, reinterpret_cast<sockaddr*>(&client_), &size);
        std::uint64_t token = 0;
        if (got > 0 && Datagram::DecodeSessionRequest(buffer, static_cast<std::size_t>(got), token) &&
            token == token_) {
          auto const confirm = Datagram::EncodeSessionConfirmation();
          send_packet(0, confirm.data(), confirm.size());
          ++confirmations_;
        } else if (got > 0 && buffer[0] == Datagram::kGameData && confirmations_ > 0) {
          stream_.handle_game_packet(buffer, static_cast<std::size_t>(got), 0);
        }
      }
      stream_.collate();
      stream_.discard_acknowledged();
      if (confirmations_ > 0) {
        stream_.send_updates(*this);
      }
    }
  }

  int socket_;
  std::uint64_t token_;
  UDPDataStream stream_{1};
  sockaddr_in client_{};
  std::atomic<int> confirmations_{0};
  std::atomic<bool> stop_{false};
  std::thread thread_;
};

struct OneOrderEachStep {
  int delay = 0;
  int endStep = 0;
  int steps = 0;
  std::vector<std::vector<Bytes>> seen;
  bool gameEnded() const { return steps >= endStep + delay; }
  bool gameEnded_LocalPlayer() const { return steps >= endStep; }
  Bytes processUIInputsAndGetOurNextOrder() { return {static_cast<unsigned char>(steps), 0x77}; }
  void update(std::vector<Bytes> const& orders, Bytes) {
    seen.push_back(orders);
    ++steps;
  }
};

}  // namespace

TEST(LoopbackSessionTest, GameSessionOverDatagrams) {
  DatagramRelay relay(0x0123456789abcdefull);
  testing::internal::CaptureStdout();
  auto client = std::make_shared<TandemClient<UDPClient>>("127.0.0.1", relay.port(), 1, 3, 0x0123456789abcdefull);
  NetworkOrderSource source(client);
  OneOrderEachStep session{3, 40};
  int stalls = 0;
  PollUntil([&] { return session.gameEnded(); }, [&] { UpdateSimulation(session, source, stalls); });
  std::string const said = testing::internal::GetCapturedStdout();
  EXPECT_NE(said.find("Attempting authentication with session token..\n(Authenticated)\n"), std::string::npos);
  EXPECT_GE(relay.confirmations(), 1);

  ASSERT_TRUE(session.gameEnded());
  for (int step = 0; step < 3; ++step) {
    EXPECT_EQ(session.seen[step], std::vector<Bytes>(1));
  }
  for (int tick = 0; tick < 40; ++tick) {
    EXPECT_EQ(session.seen[3 + tick], std::vector<Bytes>{Of({tick, 0x77})}) << tick;
  }
  EXPECT_TRUE(client->gameEndedCleanly());
}
