// One frame of the simulation loop around a session that does next to nothing, so that what is
// measured is the stepping itself: taking the order, the order source and the call of update.
#include <benchmark/benchmark.h>

#include "sim/IGame.h"
#include "sim/IRunningGame.h"
#include "sim/LocalOnlyOrderSource.h"
#include "sim/UpdateSimulation.h"

namespace {

class NullGame final : public IGame {
public:
  Game type() const override { return Game::Vipers; }
  std::unique_ptr<IRunningGame> startSession(std::shared_ptr<SDL3App>, int, unsigned long long, unsigned char,
                                             GameSettings const&, std::vector<unsigned short> const&,
                                             bool) const override {
    return nullptr;
  }
  std::string formatResult(std::vector<long long> const&, bool) const override { return {}; }
};

// A session of two players that never ends. With giveOrders, the local player gives a 1-byte order on
// every frame, as a held key in Aviators or Vipers does.
class TrivialSession final : public IRunningGame {
public:
  explicit TrivialSession(bool giveOrders) : giveOrders_(giveOrders) {}

  IGame const& game() const override { return game_; }
  void eventHandler(SDL_Event const&) override {}
  void nonEventDrivenUIChecks() override {}
  void render() override {}
  bool gameEnded_LocalPlayer() const override { return false; }
  bool gameEnded() const override { return false; }
  void getGameResult(GameResult& result) const override { result.endFrame = frame_; }
  std::vector<unsigned char> processUIInputsAndGetOurNextOrder() override {
    if (!giveOrders_) {
      return {};
    }
    return {static_cast<unsigned char>(frame_ & 3)};
  }
  void update(std::vector<std::vector<unsigned char>> const& orders, std::vector<unsigned char> ourOrder) override {
    for (std::vector<unsigned char> const& order : orders) {
      sum_ += order.empty() ? 0 : order[0];
    }
    sum_ += ourOrder.empty() ? 0 : ourOrder[0];
    ++frame_;
  }
  void endGameNow() override {}
  std::uint32_t currentFrame() const override { return frame_; }
  bool evaluateCondition(std::string const&) const override { return false; }
  void injectOrder(std::string const&) override {}

  std::uint64_t sum() const { return sum_; }

private:
  NullGame game_;
  bool giveOrders_;
  std::uint32_t frame_ = 15;
  std::uint64_t sum_ = 0;
};

void BM_UpdateSimulationLocal(benchmark::State& state) {
  TrivialSession session(state.range(0) != 0);
  LocalOnlyOrderSource source(2, 0, 15);
  int stalled = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(UpdateSimulation<IRunningGame>(session, source, stalled));
  }
  benchmark::DoNotOptimize(session.sum());
}
BENCHMARK(BM_UpdateSimulationLocal)->Arg(0)->Arg(1)->ArgName("orders");

}  // namespace
