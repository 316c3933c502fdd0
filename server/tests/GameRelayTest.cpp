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

// A packet that completes no step is answered to its sender alone, and only with what that sender
// lacks; the packet that completes a step sends it to everybody. So a game of n players costs n
// datagrams a step, and a lost step is still repeated at the next packet of the player who lost it.
TEST(GameRelay, OnlyANewStepGoesToEverybody) {
  std::vector<Endpoint> const at = {{1, 1}, {1, 2}, {1, 3}};
  GameRelay relay({11, 22, 33}, 0);
  GameRelay::Output out;
  for (std::size_t p = 0; p < at.size(); ++p) {
    Bytes const request = Request(11 * (p + 1));
    relay.handleDatagram(at[p], request.data(), request.size(), 0, out);
  }
  auto send = [&](std::size_t p, Bytes const& packet) {
    out = {};
    relay.handleDatagram(at[p], packet.data(), packet.size(), 0, out);
  };
  Bytes const step0 = {1, 'a', 1, 'b', 1, 'c'};
  Bytes const step1 = {1, 'd', 1, 'e', 1, 'f'};

  send(0, Packet(0, 0, {{'a'}}));
  EXPECT_TRUE(out.datagrams.empty());
  send(1, Packet(0, 0, {{'b'}}));
  EXPECT_TRUE(out.datagrams.empty());
  send(2, Packet(0, 0, {{'c'}}));
  ASSERT_EQ(out.datagrams.size(), 3u);
  for (std::size_t p = 0; p < at.size(); ++p) {
    EXPECT_EQ(SentTo(out, at[p]), (std::vector<Bytes>{Packet(0, 1, {step0})})) << p;
  }

  send(0, Packet(1, 1, {{'d'}}));  // has step 0: nothing to say to it
  EXPECT_TRUE(out.datagrams.empty());
  send(1, Packet(1, 0, {{'e'}, {'b'}}));  // lost step 0 (and our acknowledgement): step 0 again, to it alone
  EXPECT_EQ(out.datagrams.size(), 1u);
  EXPECT_EQ(SentTo(out, at[1]), (std::vector<Bytes>{Packet(0, 2, {step0})}));
  send(2, Packet(1, 1, {{'f'}}));
  ASSERT_EQ(out.datagrams.size(), 3u);
  EXPECT_EQ(SentTo(out, at[0]), (std::vector<Bytes>{Packet(1, 2, {step1})}));
  EXPECT_EQ(SentTo(out, at[1]), (std::vector<Bytes>{Packet(1, 2, {step1, step0})}));
  EXPECT_EQ(SentTo(out, at[2]), (std::vector<Bytes>{Packet(1, 2, {step1})}));
  EXPECT_EQ(relay.relayedUpdates(), (std::vector<Bytes>{step0, step1}));
}
