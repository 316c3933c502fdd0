#include <gtest/gtest.h>

#include <deque>

#include "sim/Games.h"
#include "sim/LocalOnlyOrderSource.h"
#include "sim/Recording.h"
#include "sim/ReplayOrderSource.h"
#include "sim/UpdateSimulation.h"
#include "support/Bytes.h"
#include "support/FakeRunningGame.h"

using namespace testbytes;

namespace {

using Step = FakeRunningGame::Step;

FakeRunningGame Session(unsigned delayFrames, unsigned endFrame) {
  static Games const games;  // any game will do: the fake plays none
  return FakeRunningGame(games.refGame(Game::GlowHorde), delayFrames, endFrame);
}

// Stands where the network source will: frames arrive when the test pushes them, a new source holds
// delayFrames frames of no orders, and an order goes out only on a frame that can be stepped and
// only before the local end of the game.
class ScriptedNetworkSource final : public IOrderSource {
public:
  ScriptedNetworkSource(int players, int delayFrames) {
    for (int i = 0; i < delayFrames; ++i) arrive(std::vector<Bytes>(static_cast<std::size_t>(players)));
  }
  void arrive(std::vector<Bytes> frame) { frames_.push_back(std::move(frame)); }

  bool fetchOrders(bool localGameEnded, Bytes ourNextOrder, std::vector<Bytes>& orders, Bytes& ourOrder) override {
    ++fetches;
    endedFlags.push_back(localGameEnded);
    if (frames_.empty()) return false;
    orders = std::move(frames_.front());
    frames_.pop_front();
    ourOrder = std::move(ourNextOrder);
    if (!localGameEnded) sent.push_back(ourOrder);
    return true;
  }

  int fetches = 0;
  std::vector<bool> endedFlags;
  std::vector<Bytes> sent;

private:
  std::deque<std::vector<Bytes>> frames_;
};

}  // namespace

TEST(LocalOnlyOrderSource, OwnOrdersReturnAfterTheDelayAndOthersGiveNone) {
  for (int const delay : {15, 0}) {
    SCOPED_TRACE(delay);
    FakeRunningGame session = Session(delay, delay + 40);
    LocalOnlyOrderSource source(3, 1, delay);
    int stalled = 5;
    while (UpdateSimulation(session, source, stalled)) {
      EXPECT_EQ(stalled, 0);
    }
    EXPECT_EQ(stalled, 0) << "a local game never stalls, and the end of the game leaves the count alone";
    ASSERT_EQ(session.steps.size(), 40u + delay) << "a full game takes endFrame updates";
    EXPECT_EQ(session.ordersGiven, 40) << "endFrame - delayFrames orders";
    EXPECT_EQ(session.currentFrame(), 40u + 2 * delay);

    for (int k = 0; k < 40 + delay; ++k) {
      Bytes const given = k < 40 ? Of({k + 1}) : Bytes{};
      Bytes const arriving = k >= delay && k - delay < 40 ? Of({k - delay + 1}) : Bytes{};
      EXPECT_EQ(session.steps[static_cast<std::size_t>(k)], (Step{{{}, arriving, {}}, given})) << "step " << k;
    }
  }
}

TEST(UpdateSimulation, StallsCountUpLoseTheirOrdersAndNeverCatchUp) {
  FakeRunningGame session = Session(3, 1000);
  ScriptedNetworkSource source(2, 3);
  int stalled = 0;
  for (int i = 0; i < 3; ++i) ASSERT_TRUE(UpdateSimulation(session, source, stalled));

  for (int i = 1; i <= 4; ++i) {
    EXPECT_FALSE(UpdateSimulation(session, source, stalled));
    EXPECT_EQ(stalled, i);
  }
  EXPECT_EQ(session.currentFrame(), 6u) << "a stalled frame doesn't step";
  EXPECT_EQ(session.ordersGiven, 7) << "the session was asked for an order on every frame";
  EXPECT_EQ(source.sent, (std::vector<Bytes>{Of({1}), Of({2}), Of({3})})) << "orders of stalled frames are lost";

  // Two frames arrive at once: one step per call all the same, and the count is back to 0.
  source.arrive({Of({1}), Of({9})});
  source.arrive({Of({2}), {}});
  EXPECT_TRUE(UpdateSimulation(session, source, stalled));
  EXPECT_EQ(stalled, 0);
  EXPECT_EQ(session.currentFrame(), 7u);
  EXPECT_EQ(session.steps.back(), (Step{{Of({1}), Of({9})}, Of({8})}));
  EXPECT_TRUE(UpdateSimulation(session, source, stalled));
  EXPECT_FALSE(UpdateSimulation(session, source, stalled));
  EXPECT_EQ(stalled, 1) << "a new stall counts from 1 again";
  EXPECT_EQ(source.sent.back(), Of({9}));
}

TEST(UpdateSimulation, AfterTheLocalEndNoOrderIsTakenButFramesStillStepUntilTheEnd) {
  FakeRunningGame session = Session(2, 4);  // two steps with orders, then two more
  ScriptedNetworkSource source(1, 2);
  for (int i = 0; i < 10; ++i) source.arrive({{}});
  int stalled = 0;
  while (UpdateSimulation(session, source, stalled)) {
  }
  EXPECT_EQ(session.steps.size(), 4u);
  EXPECT_EQ(session.ordersGiven, 2);
  EXPECT_EQ(source.endedFlags, (std::vector<bool>{false, false, true, true}));
  EXPECT_EQ(source.sent.size(), 2u);
  EXPECT_TRUE(session.steps[2].ourOrder.empty());

  // Once the game has ended the source isn't asked and the count stays as it was.
  stalled = 7;
  EXPECT_FALSE(UpdateSimulation(session, source, stalled));
  EXPECT_EQ(stalled, 7);
  EXPECT_EQ(source.fetches, 4);
}

TEST(ReplayOrderSource, GivesTheRecordedSeatsOrdersThenNothingPastTheEnd) {
  GameResults results;
  results.playerSlots = {2, 0};
  // Steps 0..3 as relayed: player 0 orders 'a'+k, player 1 orders on odd steps only.
  Recording const recording({Of({1, 'd', 1, 'D'}), Of({1, 'c', 0}), Of({1, 'b', 1, 'B'}), Of({1, 'a', 0})}, results);
  int constexpr kDelay = 2;
  ReplayOrderSource source(recording, 0, 2, kDelay);
  FakeRunningGame session = Session(kDelay, kDelay + 6);
  int stalled = 0;
  while (UpdateSimulation(session, source, stalled)) {
  }
  ASSERT_EQ(session.steps.size(), 8u);
  std::vector<Step> const expected = {
      {{{}, {}}, Of({'a'})},           {{{}, {}}, Of({'b'})},
      {{Of({'a'}), {}}, Of({'c'})},    {{Of({'b'}), Of({'B'})}, Of({'d'})},
      {{Of({'c'}), {}}, {}},           {{Of({'d'}), Of({'D'})}, {}},
      {{{}, {}}, {}},                  {{{}, {}}, {}},
  };
  EXPECT_EQ(session.steps, expected) << "the local orders of the session are not used; past the end come none";
}

TEST(ReplayOrderSource, ReplayOfALocalGameReproducesItsCallsExactly) {
  int constexpr kDelay = 4;
  FakeRunningGame played = Session(kDelay, kDelay + 12);
  LocalOnlyOrderSource local(1, 0, kDelay);
  int stalled = 0;
  std::deque<Bytes> relayedNewestFirst;
  while (UpdateSimulation(played, local, stalled)) {
    Bytes const& order = played.steps.back().ourOrder;
    if (!played.gameEnded_LocalPlayer() || !order.empty()) {
      relayedNewestFirst.push_front(Concat({Of({static_cast<int>(order.size())}), order}));
    }
  }
  GameResults results;
  results.playerSlots = {0};
  Recording const recording(relayedNewestFirst, results);
  EXPECT_EQ(recording.updates.size(), 12u);

  FakeRunningGame replayed = Session(kDelay, kDelay + 12);
  ReplayOrderSource replay(recording, 0, 1, kDelay);
  while (UpdateSimulation(replayed, replay, stalled)) {
  }
  EXPECT_EQ(replayed.steps, played.steps);
}
