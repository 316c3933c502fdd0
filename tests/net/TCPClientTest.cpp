#include "net/TCPClient.h"

#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <thread>

#include "net/MessageFramer.h"
#include "support/Bytes.h"
#include "support/LoopbackSockets.h"

using namespace testbytes;
using SocketPlatform::MessageFramer;

namespace {

Bytes Frame(Bytes const& payload) { return Concat({Of({0, 0, static_cast<int>(payload.size() >> 8), static_cast<int>(payload.size() & 0xff)}), payload}); }

std::vector<Bytes> DispatchAll(MessageFramer& framer, bool singleMessage = false) {
  std::vector<Bytes> got;
  framer.dispatch([&](unsigned char const* data, std::size_t size) { got.emplace_back(data, data + size); },
                  singleMessage);
  return got;
}

// Polls the client until it has connected or two seconds have passed.
bool Connect(TCPClient& client) {
  for (int i = 0; i < 2000 && client.get_connection_state() == ConnectionState::Connecting; ++i) {
    if (client.complete_connection()) {
      return true;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  return client.is_connected();
}

// Pumps the client until want messages have come, the connection is gone, or two seconds have passed.
std::vector<Bytes> Pump(TCPClient& client, std::size_t want) {
  std::vector<Bytes> got;
  for (int i = 0; i < 2000 && got.size() < want && client.is_connected(); ++i) {
    client.process_incoming_messages(
        [&](unsigned char const* data, std::size_t size) { got.emplace_back(data, data + size); }, false);
    if (got.size() < want) {
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
  }
  return got;
}

}  // namespace

TEST(MessageFramerTest, FramesSplitAtEveryByteComeOutWholeAndOnce) {
  Bytes const first = Of({4, 1, 2, 3});
  Bytes const empty;  // a zero length is legal on the stream
  Bytes const third = Of({16});
  Bytes const stream = Concat({Frame(first), Frame(empty), Frame(third)});
  for (std::size_t split = 0; split <= stream.size(); ++split) {
    for (std::size_t second = split; second <= stream.size(); ++second) {
      MessageFramer framer;
      std::vector<Bytes> got;
      std::size_t const cuts[] = {0, split, second, stream.size()};
      for (int piece = 0; piece < 3; ++piece) {
        framer.append(stream.data() + cuts[piece], cuts[piece + 1] - cuts[piece]);
        for (Bytes& message : DispatchAll(framer)) {
          got.push_back(std::move(message));
        }
      }
      ASSERT_EQ(got, (std::vector<Bytes>{first, empty, third})) << "cuts at " << split << " and " << second;
      EXPECT_EQ(framer.size(), 0u);
    }
  }
}

TEST(MessageFramerTest, SingleMessageLeavesTheRestForLater) {
  MessageFramer framer;
  Bytes const stream = Concat({Frame(Of({1})), Frame(Of({2})), Of({0, 0, 0, 5, 9})});
  framer.append(stream.data(), stream.size());
  EXPECT_EQ(DispatchAll(framer, true), (std::vector<Bytes>{Of({1})}));
  EXPECT_EQ(DispatchAll(framer, true), (std::vector<Bytes>{Of({2})}));
  EXPECT_TRUE(DispatchAll(framer, true).empty());
  EXPECT_EQ(framer.size(), 5u);  // the half frame moved to the front
}

TEST(MessageFramerTest, BufferDoublesForALargeFrameAndRefusesAnAbsurdLength) {
  MessageFramer framer;
  Bytes const payload(200000, 7);
  Bytes const header = Of({0, 0x03, 0x0d, 0x40});  // 200,000 big-endian
  framer.append(header.data(), header.size());
  framer.append(payload.data(), payload.size());
  EXPECT_EQ(framer.capacity(), 262144u);
  ASSERT_EQ(DispatchAll(framer), std::vector<Bytes>{payload});
  EXPECT_EQ(framer.capacity(), 262144u);

  Bytes const hostile = Of({0xff, 0xff, 0xff, 0xff, 1, 2});
  framer.append(hostile.data(), hostile.size());
  int calls = 0;
  EXPECT_EQ(framer.dispatch([&](unsigned char const*, std::size_t) { ++calls; }, false),
            MessageFramer::DispatchResult::FrameTooLong);
  EXPECT_EQ(calls, 0);
  EXPECT_EQ(framer.capacity(), 262144u);
}

TEST(TCPClientTest, ExchangesFramesWithAListenerByteByByte) {
  loopback::Listener listener;
  auto client = std::make_unique<TCPClient>("127.0.0.1", listener.port());
  ASSERT_TRUE(listener.accept());
  ASSERT_TRUE(Connect(*client));

  // Out: the prefix is big-endian, the payload as given; a zero length sends nothing.
  EXPECT_FALSE(client->send_message("x", 0));
  ASSERT_TRUE(client->send_message("\x10\x01\x02", 3));
  EXPECT_EQ(listener.receive(7), Of({0, 0, 0, 3, 0x10, 1, 2}));

  // In: two frames, one byte a send; each message is handed out once, only when whole.
  Bytes const stream = Concat({Frame(Of({4, 9, 9})), Frame(Of({13}))});
  std::vector<Bytes> got;
  for (unsigned char const byte : stream) {
    listener.send({byte});
    std::this_thread::sleep_for(std::chrono::microseconds(200));
    client->process_incoming_messages(
        [&](unsigned char const* data, std::size_t size) { got.emplace_back(data, data + size); }, false);
  }
  for (Bytes& message : Pump(*client, 2 - got.size())) {
    got.push_back(std::move(message));
  }
  EXPECT_EQ(got, (std::vector<Bytes>{Of({4, 9, 9}), Of({13})}));

  // Moving hands the connection over and leaves nothing behind.
  TCPClient moved = std::move(*client);
  EXPECT_TRUE(moved.is_connected());
  EXPECT_EQ(client->get_connection_state(), ConnectionState::Disconnected);
  EXPECT_EQ(client->handle(), -1);
  moved.disconnect();
  EXPECT_FALSE(moved.is_connected());
}

TEST(TCPClientTest, PeerClosingMidFrameDropsTheConnectionAndThePartialFrame) {
  loopback::Listener listener;
  TCPClient client("127.0.0.1", listener.port());
  ASSERT_TRUE(listener.accept());
  ASSERT_TRUE(Connect(client));
  listener.send(Concat({Frame(Of({4})), Of({0, 0, 0, 9, 1, 2})}));
  listener.closePeer();
  testing::internal::CaptureStderr();
  std::vector<Bytes> const got = Pump(client, 99);
  std::string const errors = testing::internal::GetCapturedStderr();
  EXPECT_FALSE(client.is_connected());
  EXPECT_NE(errors.find("Connection closed by server"), std::string::npos) << errors;
  // The complete frame may have been dispatched before the close was seen, the partial one never.
  EXPECT_LE(got.size(), 1u);
  EXPECT_FALSE(client.send_message("\x10", 1));
}

TEST(TCPClientTest, RefusedConnectionEndsDisconnectedWithTheErrno) {
  int const closed = loopback::Bound(SOCK_STREAM);
  unsigned short const port = loopback::PortOf(closed);
  ::close(closed);  // nothing listens there now
  testing::internal::CaptureStderr();
  TCPClient client("127.0.0.1", port);
  Connect(client);
  std::string const errors = testing::internal::GetCapturedStderr();
  EXPECT_EQ(client.get_connection_state(), ConnectionState::Disconnected);
  EXPECT_NE(errors.find("Connection failed: " + std::to_string(ECONNREFUSED)), std::string::npos) << errors;
  EXPECT_FALSE(client.complete_connection());
}

TEST(TCPClientTest, AnAbsurdFrameLengthDropsTheConnection) {
  loopback::Listener listener;
  TCPClient client("127.0.0.1", listener.port());
  ASSERT_TRUE(listener.accept());
  ASSERT_TRUE(Connect(client));
  listener.send(Of({0x7f, 0xff, 0xff, 0xff, 1}));
  testing::internal::CaptureStderr();
  EXPECT_TRUE(Pump(client, 1).empty());
  testing::internal::GetCapturedStderr();
  EXPECT_FALSE(client.is_connected());
  EXPECT_LT(client.bufferCapacity(), 1u << 20);
}

TEST(TCPClientTest, UnresolvableHostThrows) {
  EXPECT_THROW(TCPClient("no.such.host.invalid", 1), std::runtime_error);
}
