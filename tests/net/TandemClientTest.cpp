#include "net/TandemClient.h"

#include <gtest/gtest.h>

#include <memory>

#include "net/NetworkOrderSource.h"
#include "net/TestUDPTransport.h"
#include "sim/UpdateSimulation.h"
#include "support/Bytes.h"

using namespace testbytes;

namespace {

using Client = TandemClient<TestUDPTransport>;
using Frame = Client::Frame;

// A server's game data datagram, by hand.
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

// A session stand-in with the four operations that UpdateSimulation uses: it gives the order {n} on
// its n-th order and ends its own orders after endStep steps.
struct CountingSession {
  int delay = 0;
  int endStep = 1000;
  int steps = 0;
  int ordersTaken = 0;
  std::vector<Frame> seen;
  bool gameEnded() const { return steps >= endStep + delay; }
  bool gameEnded_LocalPlayer() const { return steps >= endStep; }
  std::vector<unsigned char> processUIInputsAndGetOurNextOrder() { return {static_cast<unsigned char>(++ordersTaken)}; }
  void update(Frame const& orders, std::vector<unsigned char>) {
    seen.push_back(orders);
    ++steps;
  }
};

}  // namespace

TEST(TandemClientTest, StartsWithDelayFramesOfEmptyOrdersThenWaits) {
  Client client(TestUDPTransport{}, 3, 15);
  Frame orders;
  for (int frame = 0; frame < 15; ++frame) {
    client.communicate(orders);
    ASSERT_EQ(orders, Frame(3)) << frame;
    EXPECT_TRUE(client.updatePending());
    client.sendUpdate({});
    EXPECT_FALSE(client.updatePending());
  }
  client.communicate(orders);
  EXPECT_TRUE(orders.empty());
  EXPECT_FALSE(client.updatePending());
}

TEST(TandemClientTest, SwallowedPacketsAreRepeatedAndFramesArriveInOrder) {
  Client client(TestUDPTransport{}, 2, 0);
  int swallowed = 0;
  client.transport().send_hook = [&](int, Bytes const&) { return swallowed++ < 2; };
  Frame orders;
  for (int tick = 0; tick < 3; ++tick) {
    client.sendUpdate(Of({0x40 + tick}));
    client.communicate(orders);
  }
  ASSERT_EQ(client.transport().outgoing.at(0).size(), 1u);  // the third pass, with all three orders
  EXPECT_EQ(client.transport().outgoing[0].front(), Packet(2, 0, {Of({0x42}), Of({0x41}), Of({0x40})}));

  // The server's ticks come back, the later packet first: nothing is lost, nothing doubled.
  client.transport().incoming.emplace_back(0, Packet(1, 3, {Of({2, 'A', 'B', 0}), Of({1, 'C', 1, 'D'})}));
  client.transport().incoming.emplace_back(0, Packet(0, 3, {Of({1, 'C', 1, 'D'})}));
  testing::internal::CaptureStdout();
  client.communicate(orders);
  testing::internal::GetCapturedStdout();
  EXPECT_EQ(orders, (Frame{Of({'C'}), Of({'D'})}));
  client.communicate(orders);
  EXPECT_EQ(orders, (Frame{Of({'A', 'B'}), Bytes{}}));
  client.communicate(orders);
  EXPECT_TRUE(orders.empty());
}

TEST(TandemClientTest, GameEndsCleanlyAfterDelayFramesMore) {
  for (int received : {2, 3}) {
    Client client(TestUDPTransport{}, 1, 3);
    Frame orders;
    for (int frame = 0; frame < 3; ++frame) {  // the local game ends after three frames
      client.communicate(orders);
      client.sendUpdate(Of({frame}));
    }
    std::vector<Bytes> ticks;
    for (int i = 0; i < received; ++i) {
      ticks.insert(ticks.begin(), Of({1, i}));
    }
    client.transport().incoming.emplace_back(0, Packet(static_cast<unsigned long long>(received - 1), 3, ticks));
    testing::internal::CaptureStdout();
    for (int frame = 0; frame < 6; ++frame) {
      client.communicate_GameEnd(orders);
    }
    testing::internal::GetCapturedStdout();
    EXPECT_EQ(client.gameEndedCleanly(), received == 3) << received;
  }
}

// No data ever arrives: delayFrames steps, then a stall on every call, with no order sent on any of
// them; data that then arrives resets the stall count on the first step.
TEST(NetworkOrderSourceTest, StallsWhenNothingArrivesAndRecovers) {
  auto client = std::make_shared<Client>(TestUDPTransport{}, 2, 4);
  BasicNetworkOrderSource<Client> source(client);
  CountingSession session{4};
  int stalls = 0;
  for (int call = 0; call < 10; ++call) {
    EXPECT_EQ(UpdateSimulation(session, source, stalls), call < 4) << call;
  }
  EXPECT_EQ(stalls, 6);
  EXPECT_EQ(session.steps, 4);
  EXPECT_EQ(session.ordersTaken, 10);          // the orders of stalled frames are lost
  EXPECT_EQ(client->stream().next_tick, 4u);  // one update for each frame stepped
  EXPECT_EQ(client->transport().outgoing.at(0).back(),
            Packet(3, 0, {Of({4}), Of({3}), Of({2}), Of({1})}));

  client->transport().incoming.emplace_back(0, Packet(0, 1, {Of({1, 1, 1, 9})}));
  testing::internal::CaptureStdout();
  EXPECT_TRUE(UpdateSimulation(session, source, stalls));
  testing::internal::GetCapturedStdout();
  EXPECT_EQ(stalls, 0);
  EXPECT_EQ(session.seen.back(), (Frame{Of({1}), Of({9})}));
}

TEST(NetworkOrderSourceTest, SendsNothingAfterTheLocalEnd) {
  auto client = std::make_shared<Client>(TestUDPTransport{}, 1, 2);
  BasicNetworkOrderSource<Client> source(client);
  CountingSession session{2, 1};
  int stalls = 0;
  EXPECT_TRUE(UpdateSimulation(session, source, stalls));
  EXPECT_TRUE(UpdateSimulation(session, source, stalls));  // local end: no order taken, none sent
  EXPECT_EQ(session.ordersTaken, 1);
  EXPECT_EQ(client->stream().next_tick, 1u);
  EXPECT_FALSE(UpdateSimulation(session, source, stalls));
  client->transport().incoming.emplace_back(0, Packet(0, 1, {Of({1, 1})}));
  testing::internal::CaptureStdout();
  EXPECT_TRUE(UpdateSimulation(session, source, stalls));
  testing::internal::GetCapturedStdout();
  EXPECT_TRUE(session.gameEnded());
  EXPECT_TRUE(client->gameEndedCleanly());
}
