#include "net/ConnectToLobbyServer.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "accounts/SaltedHash.h"
#include "support/Bytes.h"
#include "support/FakeLobbyTransport.h"

using namespace testbytes;

namespace {

Credentials const kCredentials{{1, 2, 3, 4, 5, 6, 7, 8}, Bytes(16, 0x5a)};

Bytes ServerVersion(int version) {
  return Of({0, version & 0xff, (version >> 8) & 0xff, 0, 0});
}
Bytes Challenge(Bytes const& challenge) { return Concat({Of({1, 1}), Count(challenge.size()), challenge}); }

struct Handshake {
  std::shared_ptr<FakeLobbyTransport> transport = std::make_shared<FakeLobbyTransport>();
  std::unique_ptr<ConnectToLobbyServer> connection;

  Handshake() {
    testing::internal::CaptureStdout();
    connection = std::make_unique<ConnectToLobbyServer>(transport, kCredentials);
    testing::internal::GetCapturedStdout();
  }
  // Feeds the messages one by one and returns the text of the exception, if any.
  std::string feed(std::vector<Bytes> const& messages) {
    testing::internal::CaptureStdout();
    std::string error;
    try {
      for (Bytes const& message : messages) {
        connection->handleMessage(message.data(), message.size());
      }
    } catch (std::runtime_error const& failure) {
      error = failure.what();
    }
    testing::internal::GetCapturedStdout();
    return error;
  }
};

}  // namespace

TEST(ConnectToLobbyServerTest, WholeExchangeSendsVersionAndTheSaltedHash) {
  Handshake handshake;
  Bytes const challenge = Of({9, 8, 7});
  handshake.transport->incoming = {ServerVersion(1003), Challenge(challenge), Of({3, 1, 5, 0, 6, 0, 0x34, 0x12}),
                                   Of({4})};
  testing::internal::CaptureStdout();
  for (int frame = 0; frame < 5; ++frame) {
    handshake.connection->connect();
  }
  std::string const said = testing::internal::GetCapturedStdout();
  EXPECT_EQ(said, "Sent authentication request\nAuthentication successful\n");
  EXPECT_EQ(handshake.connection->state(), ConnectToLobbyServer::State::Authenticated);
  EXPECT_EQ(handshake.connection->serverInfo(), (ServerInfo{5, 6}));
  EXPECT_EQ(handshake.connection->localPlayerNumber(), 0x1234);
  EXPECT_EQ(handshake.transport->incoming.size(), 1u);  // the LOBBY_STATE waits for the lobby client

  std::uint64_t const hash = SaltedHash(challenge, kCredentials.secret);
  Bytes hashBytes;
  for (int i = 0; i < 8; ++i) {
    hashBytes.push_back(static_cast<unsigned char>(hash >> (8 * i)));
  }
  ASSERT_EQ(handshake.transport->sent.size(), 2u);
  EXPECT_EQ(handshake.transport->sent[0], Of({0, 0xeb, 0x03, 0, 0}));
  EXPECT_EQ(handshake.transport->sent[1], Concat({Of({2}), Count(8), kCredentials.playerId, hashBytes}));
}

TEST(ConnectToLobbyServerTest, EveryFailureHasItsText) {
  Bytes const granted = Of({3, 1, 5, 0, 6, 0, 1, 0});
  struct Row {
    std::vector<Bytes> messages;
    std::string error;
  };
  Row const rows[] = {
      {{ServerVersion(1003), Challenge({}), granted}, ""},  // an empty challenge is legal
      {{Bytes{}}, "Invalid message from server: too small"},
      {{ServerVersion(1002)}, "Unsupported server version"},
      {{Of({0, 0xeb, 0x03, 0})}, "Invalid version message from server"},
      {{granted}, "Unexpected server message ordering"},
      {{ServerVersion(1003), ServerVersion(1003)}, "Unexpected server message ordering"},
      {{Of({4})}, "Unexpected server message during connection"},
      {{Of({2})}, "Unexpected server message during connection"},
      {{ServerVersion(1003), Of({1})}, "Invalid connection response message from server"},
      {{ServerVersion(1003), Concat({Of({1, 1}), Count(4), Of({1, 2, 3})})},
       "Invalid connection response message from server"},
      {{ServerVersion(1003), Of({1, 0})}, "Client version not accepted by server, please update your client"},
      {{ServerVersion(1003), Challenge({1}), Of({3})}, "Invalid authorisation response message from server"},
      {{ServerVersion(1003), Challenge({1}), Of({3, 1, 5, 0, 6, 0})},
       "Invalid authorisation response message from server"},
      {{ServerVersion(1003), Challenge({1}), Of({3, 1})}, "Invalid authorisation response message from server"},
      {{ServerVersion(1003), Challenge({1}), Concat({Of({3, 0}), Count(5), Of({'b', 'a', 'n', 'n', 'e'})})},
       "Authorisation refused by server: banne"},
      {{ServerVersion(1003), Challenge({1}), Concat({Of({3, 0}), Count(5), Of({'b'})})},
       "Invalid authorisation response message from server"},
  };
  for (Row const& row : rows) {
    Handshake handshake;
    EXPECT_EQ(handshake.feed(row.messages), row.error) << row.error;
    if (row.error.starts_with("Invalid authorisation")) {
      EXPECT_EQ(handshake.connection->state(), ConnectToLobbyServer::State::AwaitAuthResponse);
    }
  }
  Handshake noNumber;
  noNumber.feed({ServerVersion(1003), Challenge({1}), Of({3, 1})});
  EXPECT_EQ(noNumber.connection->serverInfo(), (ServerInfo{11, 0}));
}

TEST(ConnectToLobbyServerTest, RefusesATransportThatCannotCarryTheVersion) {
  auto transport = std::make_shared<FakeLobbyTransport>();
  transport->state = ConnectionState::Connecting;
  try {
    ConnectToLobbyServer connection(transport, kCredentials);
    ADD_FAILURE() << "constructed";
  } catch (std::runtime_error const& error) {
    EXPECT_STREQ(error.what(), "Failed to connect to lobby server");
  }
  transport->state = ConnectionState::Connected;
  transport->refuseSends = true;
  try {
    ConnectToLobbyServer connection(transport, kCredentials);
    ADD_FAILURE() << "constructed";
  } catch (std::runtime_error const& error) {
    EXPECT_STREQ(error.what(), "Failed to send version message");
  }
}
