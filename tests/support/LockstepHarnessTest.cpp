// The harness itself: a tiny counting game whose session can be built with one field left
// uninitialised. The harness must agree on the correct game and catch the faulty one, naming the part,
// because each client's allocations are filled with a byte of its own.
#include <gtest/gtest.h>

#include <cstring>
#include <memory>

#include "sim/XXHashHasher.h"
#include "support/LockstepHarness.h"

using namespace testing_support;

namespace {

class CountingGame;

// Each player's counter adds the byte of every order it gets; with `uninitialised` the session's seed
// is read from fresh memory that the constructor never writes.
class CountingSession final : public IRunningGame {
public:
  CountingSession(IGame const& game, std::size_t players, std::uint32_t delay, bool uninitialised)
      : game_(game), delay_(delay), frame_(delay), counters_(players, 0) {
    state_ = std::unique_ptr<State>(new State);  // default-initialised: `seed` holds whatever was there
    if (!uninitialised) {
      state_->seed = 7;
    }
  }
  IGame const& game() const override { return game_; }
  void eventHandler(SDL_Event const&) override {}
  void nonEventDrivenUIChecks() override {}
  void render() override {}
  bool gameEnded_LocalPlayer() const override { return frame_ >= 200; }
  bool gameEnded() const override { return frame_ >= 200 + delay_; }
  void getGameResult(GameResult& result) const override {
    result.endFrame = frame_;
    result.results.clear();
    for (std::int64_t counter : counters_) {
      result.results.push_back({counter});
    }
  }
  std::vector<unsigned char> processUIInputsAndGetOurNextOrder() override { return {}; }
  void update(std::vector<std::vector<unsigned char>> const& orders, std::vector<unsigned char>) override {
    for (std::size_t p = 0; p < orders.size() && p < counters_.size(); ++p) {
      counters_[p] += orders[p].empty() ? 0 : orders[p][0];
    }
    if (frame_ == 100) {
      counters_[0] += state_->seed;  // the seed enters the state only here
    }
    ++frame_;
  }
  void endGameNow() override {}
  std::uint32_t currentFrame() const override { return frame_; }
  bool evaluateCondition(std::string const&) const override { return false; }
  void injectOrder(std::string const&) override {}

  std::vector<std::int64_t> const& counters() const { return counters_; }

private:
  struct State {
    std::int32_t seed;
  };
  IGame const& game_;
  std::uint32_t delay_;
  std::uint32_t frame_;
  std::vector<std::int64_t> counters_;
  std::unique_ptr<State> state_;
};

class CountingGame final : public IGame {
public:
  explicit CountingGame(bool uninitialised) : uninitialised_(uninitialised) {}
  Game type() const override { return Game::GlowHorde; }
  std::unique_ptr<IRunningGame> startSession(std::shared_ptr<SDL3App>, int, unsigned long long, unsigned char delay,
                                             GameSettings const&, std::vector<unsigned short> const& players,
                                             bool) const override {
    return std::make_unique<CountingSession>(*this, players.size(), delay, uninitialised_);
  }
  std::string formatResult(std::vector<long long> const&, bool) const override { return {}; }

private:
  bool uninitialised_;
};

LockstepAdapter CountingAdapter() {
  LockstepAdapter adapter;
  adapter.randomOrder = [](IRunningGame const&, std::mt19937_64& random) {
    return Bytes{static_cast<unsigned char>(random() % 256)};
  };
  adapter.digests = [](IRunningGame const& session, DigestSink& sink) {
    auto const& counters = dynamic_cast<CountingSession const&>(session).counters();
    XXHashHasher hasher;
    hasher.update(counters.data(), counters.size() * sizeof(std::int64_t));
    sink.add("counters", session.currentFrame(), hasher.digest());
  };
  return adapter;
}

LockstepGame ThreeClients() {
  LockstepGame game;
  game.seed = 3;
  game.slots = {0, 1, 2};
  game.delayFrames = 12;
  game.maxLatencyRounds = 2;
  game.meanFramesBetweenOrders = 4;
  return game;
}

TEST(LockstepHarness, CatchesAFieldLeftUninitialisedAndNamesFrameAndPart) {
  CountingGame const sound(false);
  LockstepReport const good = CheckLockstepGame(sound, CountingAdapter(), ThreeClients(), nullptr);
  EXPECT_TRUE(good.agreed) << good.text;
  EXPECT_GT(good.ordersGiven, 50);

  CountingGame const faulty(true);
  LockstepReport const bad = CheckLockstepGame(faulty, CountingAdapter(), ThreeClients(), nullptr);
  EXPECT_FALSE(bad.agreed);
  ASSERT_TRUE(bad.firstDivergentFrame.has_value()) << bad.text;
  EXPECT_EQ(*bad.firstDivergentFrame, 101u) << bad.text;  // the state after the step at frame 100
  EXPECT_EQ(bad.firstDivergentPart, "counters");
  EXPECT_NE(bad.text.find("first divergence: frame 101, part \"counters\""), std::string::npos) << bad.text;
  EXPECT_NE(bad.text.find("the results differ"), std::string::npos) << bad.text;
}

TEST(LockstepHarness, ALateOrderIsCaughtAtTheStepThatMissedIt) {
  CountingGame const game(false);
  LockstepReport const report = CheckLockstepGame(game, CountingAdapter(), ThreeClients(), nullptr, RelayFault{2, 1, 3, 2});
  ASSERT_TRUE(report.faultFrame.has_value());
  EXPECT_FALSE(report.agreed);
  EXPECT_EQ(report.firstDivergentFrame, *report.faultFrame + 1) << report.text;
}

}  // namespace
