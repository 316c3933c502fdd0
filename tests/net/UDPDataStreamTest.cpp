#include "net/UDPDataStream.h"

#include <gtest/gtest.h>

#include <string>

#include "net/TestUDPTransport.h"
#include "support/Bytes.h"

using namespace testbytes;

namespace {

// A game data datagram written out by hand: type, newest tick, received_before, count, updates.
Bytes Packet(unsigned long long newest, unsigned long long receivedBefore, std::vector<Bytes> const& updates) {
  Bytes bytes = Of({3});
  for (unsigned long long value : {newest, receivedBefore}) {
    for (int i = 0; i < 8; ++i) {
      bytes.push_back(static_cast<unsigned char>(value >> (8 * i)));
    }
  }
  bytes.push_back(static_cast<unsigned char>(updates.size()));
  for (Bytes const& update : updates) {
    bytes.push_back(static_cast<unsigned char>(update.size()));
    bytes.insert(bytes.end(), update.begin(), update.end());
  }
  return bytes;
}

void Give(UDPDataStream& stream, Bytes const& packet) { stream.handle_packet(packet.data(), packet.size()); }
void Give(UDPDataStream& relay, Bytes const& packet, int player) {
  relay.handle_game_packet(packet.data(), packet.size(), player);
}

std::vector<Bytes> Drain(UDPDataStream& stream) {
  std::vector<Bytes> got;
  while (stream.has_frame_update()) {
    got.push_back(stream.get_next_frame_update());
  }
  return got;
}

}  // namespace

TEST(UDPDataStreamTest, SendsEveryUnconfirmedUpdateNewestFirstAndGoesQuietWhenConfirmed) {
  UDPDataStream stream(1);
  for (int i = 0; i < 3; ++i) {
    stream.push_update(Of({10 + i}));
  }
  TestUDPTransport transport;
  stream.send_updates(transport);
  ASSERT_EQ(transport.outgoing.at(0).size(), 1u);
  EXPECT_EQ(transport.outgoing[0].front(), Packet(2, 0, {Of({12}), Of({11}), Of({10})}));

  testing::internal::CaptureStdout();
  Give(stream, Packet(0, 2, {Of({1})}));  // confirms ticks 0 and 1
  EXPECT_EQ(testing::internal::GetCapturedStdout(),
            "Server acknowledged some data\nStarted receiving data from server\n");
  stream.discard_acknowledged();
  EXPECT_EQ(stream.send_queues[0].size(), 1u);
  transport.outgoing[0] = {};
  stream.send_updates(transport);
  EXPECT_EQ(transport.outgoing[0].front(), Packet(2, 1, {Of({12})}));

  Give(stream, Packet(0, 3, {}));
  stream.discard_acknowledged();
  EXPECT_EQ(stream.send_queues[0].size(), 0u);
  transport.outgoing[0] = {};
  stream.send_updates(transport);
  EXPECT_TRUE(transport.outgoing[0].empty());
}

TEST(UDPDataStreamTest, ReceivesOnlyWhatIsNewInOrder) {
  UDPDataStream stream(1);
  testing::internal::CaptureStdout();
  Give(stream, Packet(4, 0, {Of({4}), Of({3}), Of({2}), Of({1}), Of({0})}));
  testing::internal::GetCapturedStdout();
  EXPECT_EQ(stream.received_before[0], 5u);
  EXPECT_EQ(Drain(stream).size(), 5u);

  struct Row {
    char const* what;
    Bytes packet;
    std::vector<Bytes> delivered;
    unsigned long long receivedBefore;
  };
  Row const rows[] = {
      {"older packet", Packet(4, 0, {Of({4})}), {}, 5},
      {"gap: doesn't reach back to tick 5", Packet(7, 0, {Of({7}), Of({6})}), {}, 5},
      {"ticks 5, 6, 7 in order", Packet(7, 0, {Of({7}), Of({6}), Of({5}), Of({4})}), {Of({5}), Of({6}), Of({7})}, 8},
      {"duplicate", Packet(7, 0, {Of({7}), Of({6}), Of({5})}), {}, 8},
      {"not game data", Bytes{2, 0}, {}, 8},
      {"truncated", Packet(9, 0, {Of({9}), Of({8})}), {}, 8},
  };
  for (Row const& row : rows) {
    std::size_t const size = std::string(row.what) == "truncated" ? row.packet.size() - 1 : row.packet.size();
    stream.handle_packet(row.packet.data(), size);
    EXPECT_EQ(Drain(stream), row.delivered) << row.what;
    EXPECT_EQ(stream.received_before[0], row.receivedBefore) << row.what;
  }
}

TEST(UDPDataStreamTest, AcknowledgementsOnlyRiseAndNeverPastWhatWasSent) {
  UDPDataStream stream(1);
  for (int i = 0; i < 4; ++i) {
    stream.push_update(Of({i}));
  }
  testing::internal::CaptureStdout();
  Give(stream, Packet(0, 3, {Of({0})}));
  Give(stream, Packet(0, 1, {Of({0})}));  // an old packet
  EXPECT_EQ(stream.ack_before[0], 3u);
  Give(stream, Packet(0, 99, {Of({0})}));  // confirms ticks never sent
  EXPECT_EQ(stream.ack_before[0], 3u);
  testing::internal::GetCapturedStdout();
}

TEST(UDPDataStreamTest, ABacklogBeyondTheWindowGoesOutOldestFirst) {
  UDPDataStream stream(1);
  for (int i = 0; i < 300; ++i) {
    stream.push_update(Of({i & 0xff}));
  }
  GameDataPacket packet;
  ASSERT_TRUE(stream.packet_for(0, packet));
  EXPECT_EQ(packet.newest_tick, 254u);
  ASSERT_EQ(packet.updates.size(), 255u);
  EXPECT_EQ(packet.updates.front(), Of({254}));
  EXPECT_EQ(packet.updates.back(), Of({0}));
}

TEST(UDPDataStreamTest, CollateJoinsPlayersAndCountsStalls) {
  UDPDataStream relay(2);
  testing::internal::CaptureStdout();
  Give(relay, Packet(1, 0, {Of({0xb1}), Of({0xb0})}), 0);
  relay.collate();
  EXPECT_EQ(relay.next_tick, 0u);
  EXPECT_EQ(relay.stall_iterations, 1);

  Give(relay, Packet(0, 0, {Of({})}), 1);
  relay.collate();
  EXPECT_EQ(relay.next_tick, 1u);
  EXPECT_EQ(relay.stall_iterations, 0);
  EXPECT_EQ(relay.send_queues[1].all_with_age_up_to(1), std::vector<Bytes>{Of({1, 0xb0, 0})});

  // The waiting player drops: its place is a zero-length chunk.
  relay.drop_player(1);
  relay.collate();
  EXPECT_EQ(relay.next_tick, 2u);
  EXPECT_EQ(relay.send_queues[0].all_with_age_up_to(2), (std::vector<Bytes>{Of({1, 0xb1, 0}), Of({1, 0xb0, 0})}));
  EXPECT_EQ(relay.packets_received, (std::vector<std::uint64_t>{1, 1}));

  relay.drop_player(0);
  relay.collate();
  EXPECT_EQ(relay.stall_iterations, 0);  // all dropped: no stall
  EXPECT_TRUE(relay.allAreDropped());
  EXPECT_EQ(testing::internal::GetCapturedStdout(),
            "Started receiving data from player 0\nStarted receiving data from player 1\n");
}

TEST(UDPDataStreamTest, StallDiagnosticAtTheThousandthAndEveryFiveThousandth) {
  UDPDataStream waiting(2);
  waiting.drop_player(0);
  testing::internal::CaptureStdout();
  for (int call = 1; call <= 10001; ++call) {
    waiting.collate();
  }
  std::string const text = testing::internal::GetCapturedStdout();
  std::vector<std::string> reported;
  for (std::size_t at = text.find("=== Game stalled ("); at != std::string::npos;
       at = text.find("=== Game stalled (", at + 1)) {
    reported.push_back(text.substr(at + 18, text.find(' ', at + 18) - at - 18));
  }
  EXPECT_EQ(reported, (std::vector<std::string>{"1000", "5000", "10000"}));

  testing::internal::CaptureStdout();
  UDPDataStream once(2);
  for (int call = 0; call < 1000; ++call) {
    once.collate();
  }
  EXPECT_EQ(testing::internal::GetCapturedStdout(),
            "=== Game stalled (1000 iterations, next_tick=0) ===\n"
            "  Player 0: queue=0 received_before=0 ack_before=0 packets_received=0 << WAITING\n"
            "  Player 1: queue=0 received_before=0 ack_before=0 packets_received=0 << WAITING\n");
  testing::internal::CaptureStdout();
  once.collate();
  once.drop_player(0);
  once.drop_player(1);
  once.collate();
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "=== Stall resolved after 1001 iterations ===\n");
}

TEST(UDPDataStreamTest, CollatedTickStaysWithinOneUpdate) {
  UDPDataStream relay(2);
  testing::internal::CaptureStdout();
  Give(relay, Packet(0, 0, {Bytes(200, 1)}), 0);
  Give(relay, Packet(0, 0, {Bytes(100, 2)}), 1);
  testing::internal::GetCapturedStdout();
  relay.collate();
  Bytes const tick = relay.send_queues[0].all_with_age_up_to(1).at(0);
  EXPECT_EQ(tick.size(), 202u);  // player 1's order didn't fit and counts as none
  EXPECT_EQ(tick.back(), 0);
}
