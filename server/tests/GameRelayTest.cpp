#include <gtest/gtest.h>

#include "GameRelay.h"
#include "ServerTestSupport.h"

using servertest::Bytes;

namespace {

Bytes Request(std::uint64_t token) {
  auto const bytes = Datagram::EncodeSessionRequest(token);
  return Bytes(bytes.begin(), bytes.end());
}

Bytes Packet(std::uint64_t newest, std::uint64_t receivedBefore, std::vector<Bytes> const& updates) {
  GameDataPacket packet{newest, receivedBefore, updates};
  Bytes bytes;
  packet.to_wire(bytes);
  return bytes;
}

std::vector<Bytes> SentTo(GameRelay::Output const& out, Endpoint const& to) {
  std::vector<Bytes> sent;
  for (auto const& [endpoint, bytes] : out.datagrams) {
    if (endpoint == to) sent.push_back(bytes);
  }
  return sent;
}

}  // namespace

// The relay's time rules: a player that the game waits for and that has been silent for the limit is
// dropped, and the others' waiting ticks go out with its chunk empty; a silent player whose updates
// are all in isn't dropped. A token shown from a new address moves the player there.
TEST(GameRelay, SilenceDropsOnlyAWaitedForPlayerAndTokensRebind) {
  Endpoint const a{1, 10};
  Endpoint const b{1, 20};
  Endpoint const bMoved{2, 20};
  GameRelay relay({111, 222}, 0);
  GameRelay::Output out;
  for (auto [from, token] : {std::pair{a, 111ull}, std::pair{b, 222ull}, std::pair{bMoved, 222ull}}) {
    Bytes const request = Request(token);
    relay.handleDatagram(from, request.data(), request.size(), 0, out);
  }
  EXPECT_EQ(SentTo(out, bMoved), (std::vector<Bytes>{{2}}));

  out = {};
  Bytes const fromB = Packet(0, 0, {{'b'}});
  relay.handleDatagram(b, fromB.data(), fromB.size(), 1000, out);  // the old address no longer counts
  Bytes const fromA = Packet(1, 0, {{'y'}, {'x'}});
  relay.handleDatagram(a, fromA.data(), fromA.size(), 1000, out);
  EXPECT_TRUE(out.datagrams.empty());
  relay.handleDatagram(bMoved, fromB.data(), fromB.size(), 1000, out);
  EXPECT_EQ(SentTo(out, bMoved), (std::vector<Bytes>{Packet(0, 1, {{1, 'x', 1, 'b'}})}));

  // B is now waited for (A has tick 1 queued); A is silent but has nothing outstanding.
  out = {};
  relay.tick(1000 + GameRelay::kSilenceLimitMs, out);
  EXPECT_TRUE(out.dropped.empty());
  EXPECT_EQ(SentTo(out, bMoved), (std::vector<Bytes>{Packet(0, 1, {{1, 'x', 1, 'b'}})}));  // a repeat
  out = {};
  relay.tick(1001 + GameRelay::kSilenceLimitMs, out);
  EXPECT_EQ(out.dropped, (std::vector<int>{1}));
  EXPECT_TRUE(relay.isDropped(1));
  EXPECT_FALSE(relay.isDropped(0));
  auto const toA = SentTo(out, a);
  ASSERT_FALSE(toA.empty());
  EXPECT_EQ(toA.back(), Packet(1, 2, {{1, 'y', 0}, {1, 'x', 1, 'b'}}));
  EXPECT_EQ(relay.relayedUpdates(), (std::vector<Bytes>{{1, 'x', 1, 'b'}, {1, 'y', 0}}));
  EXPECT_TRUE(SentTo(out, bMoved).empty());  // nothing more for a dropped player
}
