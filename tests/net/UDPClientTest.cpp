#include "net/UDPClient.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <thread>

#include "net/GameDataPacket.h"
#include "support/Bytes.h"
#include "support/LoopbackSockets.h"

using namespace testbytes;

TEST(GameDataPacketTest, LayoutByHand) {
  GameDataPacket packet{0x0102030405060708ull, 0x1112131415161718ull, {{0xaa, 0xbb}, {}, Bytes(255, 0xcc)}};
  Bytes bytes;
  packet.to_wire(bytes);
  Bytes const expected = Concat({Of({3, 8, 7, 6, 5, 4, 3, 2, 1, 0x18, 0x17, 0x16, 0x15, 0x14, 0x13, 0x12, 0x11, 3}),
                                 Of({2, 0xaa, 0xbb}), Of({0}), Of({255}), Bytes(255, 0xcc)});
  EXPECT_EQ(bytes, expected);

  unsigned char const* cursor = expected.data();
  std::size_t remaining = expected.size();
  EXPECT_EQ(GameDataPacket::from_wire(cursor, remaining), packet);
  EXPECT_EQ(remaining, 0u);

  Bytes empty;
  GameDataPacket{}.to_wire(empty);
  EXPECT_EQ(empty.size(), 18u);

  // Cut anywhere, the packet is refused whole and nothing is consumed.
  for (std::size_t size = 0; size < expected.size(); ++size) {
    cursor = expected.data();
    remaining = size;
    EXPECT_FALSE(GameDataPacket::from_wire(cursor, remaining).has_value()) << size;
    EXPECT_EQ(cursor, expected.data());
  }
}

TEST(GameDataPacketTest, SessionDatagrams) {
  auto const encoded = Datagram::EncodeSessionRequest(0x0102030405060708ull);
  EXPECT_EQ(Bytes(encoded.begin(), encoded.end()), Of({1, 8, 7, 6, 5, 4, 3, 2, 1}));
  std::uint64_t token = 0;
  Bytes const request = Of({1, 8, 7, 6, 5, 4, 3, 2, 1});
  EXPECT_TRUE(Datagram::DecodeSessionRequest(request.data(), request.size(), token));
  EXPECT_EQ(token, 0x0102030405060708ull);
  EXPECT_FALSE(Datagram::DecodeSessionRequest(request.data(), 8, token));
  EXPECT_TRUE(Datagram::IsSessionConfirmation(Of({2, 9, 9}).data(), 3));
  EXPECT_FALSE(Datagram::IsSessionConfirmation(Of({3}).data(), 1));
  EXPECT_FALSE(Datagram::IsSessionConfirmation(nullptr, 0));
}

// A server that answers only the third session request, after a game data datagram that the client
// must drop; the confirmation carries extra bytes.
TEST(UDPClientTest, AuthenticationRepeatsTheRequestUntilConfirmed) {
  int const server = loopback::Bound(SOCK_DGRAM);
  std::vector<Bytes> requests;
  std::vector<std::chrono::steady_clock::time_point> times;
  std::thread answer([&] {
    while (requests.size() < 3 && loopback::Readable(server, 3000)) {
      unsigned char buffer[64];
      sockaddr_in from{};
      socklen_t size = sizeof(from);
      ssize_t const got = ::recvfrom(server, buffer, sizeof(buffer), 0, reinterpret_cast<sockaddr*>(&from), &size);
      requests.emplace_back(buffer, buffer + std::max<ssize_t>(got, 0));
      times.push_back(std::chrono::steady_clock::now());
      if (requests.size() == 3) {
        unsigned char const data[] = {3, 0, 0};
        unsigned char const confirm[] = {2, 42};
        ::sendto(server, data, sizeof(data), 0, reinterpret_cast<sockaddr*>(&from), size);
        ::sendto(server, confirm, sizeof(confirm), 0, reinterpret_cast<sockaddr*>(&from), size);
      }
    }
  });
  UDPClient client("127.0.0.1", loopback::PortOf(server));
  ASSERT_TRUE(client.isOpen());
  AuthenticateUDPClient(client, 0x00000000deadbeefull, std::chrono::milliseconds(3000));
  answer.join();
  ::close(server);

  ASSERT_EQ(requests.size(), 3u);
  for (Bytes const& request : requests) {
    EXPECT_EQ(request, Of({1, 0xef, 0xbe, 0xad, 0xde, 0, 0, 0, 0}));
  }
  for (std::size_t i = 1; i < times.size(); ++i) {
    EXPECT_GE(times[i] - times[i - 1], std::chrono::milliseconds(190));
  }
}

TEST(UDPClientTest, SendsAndReceivesDatagramsAndSkipsEmptyOnes) {
  int const server = loopback::Bound(SOCK_DGRAM);
  UDPClient client("127.0.0.1", loopback::PortOf(server));
  EXPECT_FALSE(client.send_packet("x", 0));
  ASSERT_TRUE(client.send_packet("\x03\x01", 2));
  ASSERT_TRUE(loopback::Readable(server, 2000));
  sockaddr_in from{};
  socklen_t size = sizeof(from);
  unsigned char buffer[8];
  EXPECT_EQ(::recvfrom(server, buffer, sizeof(buffer), 0, reinterpret_cast<sockaddr*>(&from), &size), 2);
  ::sendto(server, buffer, 0, 0, reinterpret_cast<sockaddr*>(&from), size);
  ::sendto(server, buffer, 2, 0, reinterpret_cast<sockaddr*>(&from), size);
  std::vector<Bytes> got;
  for (int i = 0; i < 2000 && got.empty(); ++i) {
    client.process_incoming_packets([&](unsigned char const* data, std::size_t length) { got.emplace_back(data, data + length); });
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  EXPECT_EQ(got, std::vector<Bytes>{Of({3, 1})});
  ::close(server);
}

TEST(UDPClientTest, AuthenticationGivesUpAfterItsTimeLimit) {
  int const silent = loopback::Bound(SOCK_DGRAM);
  UDPClient client("127.0.0.1", loopback::PortOf(silent));
  try {
    AuthenticateUDPClient(client, 5, std::chrono::milliseconds(450));
    ADD_FAILURE() << "authenticated";
  } catch (std::runtime_error const& error) {
    EXPECT_STREQ(error.what(), "Disconnected from, or failed to connect to UDP server");
  }
  int requests = 0;
  unsigned char buffer[16];
  while (loopback::Readable(silent, 0) && ::recv(silent, buffer, sizeof(buffer), 0) == 9) {
    ++requests;
  }
  // At 0, 200 and 400 milliseconds; a machine under load may sleep past the last one.
  EXPECT_GE(requests, 2);
  EXPECT_LE(requests, 3);
  ::close(silent);
}
