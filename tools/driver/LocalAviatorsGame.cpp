#include "LocalAviatorsGame.h"

#include <fmt/format.h>

#include <algorithm>
#include <deque>
#include <iostream>
#include <random>
#include <stdexcept>

#include "app/MainLoopContext.h"
#include "aviators/FixedTrig.h"
#include "aviators/RunningAviators.h"
#include "sim/GameSettings.h"
#include "sim/Games.h"
#include "sim/IOrderSource.h"
#include "sim/LocalOnlyOrderSource.h"

namespace {

constexpr unsigned long long kFramePeriod = 16666;
constexpr unsigned char kDelayFrames = 15;
using Bytes = std::vector<unsigned char>;
using Orders = std::vector<Bytes>;

// The server between the two clients: each tick that both gave goes to both.
struct DuelRelay {
  std::deque<Bytes> sent[2];
  std::deque<Orders> ready[2];

  DuelRelay() {
    for (auto& queue : ready) {
      queue.assign(kDelayFrames, Orders(2));
    }
  }
  void join() {
    while (!sent[0].empty() && !sent[1].empty()) {
      Orders const tick{sent[0].front(), sent[1].front()};
      sent[0].pop_front();
      sent[1].pop_front();
      ready[0].push_back(tick);
      ready[1].push_back(tick);
    }
  }
};

// A pilot that turns toward the other ship, thrusts (brakes when fast), locks and fires now and then.
Bytes PilotOrder(AviatorsSimulation const& simulation, std::mt19937_64& random) {
  if (random() % 6 != 0) {
    return {};
  }
  Aviator const& own = simulation.shadow();
  Aviator const& other = simulation.aviators()[static_cast<std::size_t>(1 - simulation.localPlayer())];
  Vec2<AviatorCoord> const d = other.position - own.position;
  std::int64_t const side = std::int64_t{d.x} * FixedSine(own.rotation) - std::int64_t{d.y} * FixedCosine(own.rotation);
  unsigned char byte = side < 0 ? 1 : 2;
  byte |= LengthSquared(own.velocity) > 900 * 900 || random() % 4 == 0 ? 8 : 4;
  byte |= random() % 3 == 0 ? 32 : 0;
  byte |= random() % 2 == 0 ? 16 : 0;
  return {byte};
}

class DuelOrderSource final : public IOrderSource {
public:
  explicit DuelOrderSource(std::shared_ptr<DuelRelay> relay) : relay_(std::move(relay)) {}
  bool fetchOrders(bool localGameEnded, Bytes ourNextOrder, Orders& orders, Bytes& ourOrder) override {
    if (relay_->ready[0].empty()) {
      return false;
    }
    orders = std::move(relay_->ready[0].front());
    relay_->ready[0].pop_front();
    ourOrder = ourNextOrder;
    if (!localGameEnded) {
      relay_->sent[0].push_back(std::move(ourNextOrder));
    }
    return true;
  }

private:
  std::shared_ptr<DuelRelay> relay_;
};

// Client 0 as the main loop sees it, with client 1 stepped beside it on every update. Both pilots are
// scripted: the keyboard is not read for orders.
class DuelSession final : public IRunningGame {
public:
  DuelSession(std::unique_ptr<IRunningGame> ours, std::unique_ptr<IRunningGame> theirs, std::shared_ptr<DuelRelay> relay,
              std::uint64_t seed)
      : ours_(std::move(ours)), theirs_(std::move(theirs)), relay_(std::move(relay)), random0_(seed * 2 + 1),
        random1_(seed * 2 + 2) {}

  IGame const& game() const override { return ours_->game(); }
  void eventHandler(SDL_Event const& event) override { ours_->eventHandler(event); }
  void nonEventDrivenUIChecks() override { ours_->nonEventDrivenUIChecks(); }
  void render() override { ours_->render(); }
  bool gameEnded_LocalPlayer() const override { return ours_->gameEnded_LocalPlayer(); }
  bool gameEnded() const override { return ours_->gameEnded(); }
  void getGameResult(GameResult& result) const override { ours_->getGameResult(result); }
  Bytes processUIInputsAndGetOurNextOrder() override { return PilotOrder(simulationOf(*ours_), random0_); }
  void update(Orders const& orders, Bytes ourOrder) override {
    ours_->update(orders, std::move(ourOrder));
    stepTheirs();
    if (ours_->gameEnded()) {
      compareResults();
    }
  }
  void endGameNow() override {
    ours_->endGameNow();
    theirs_->endGameNow();
  }
  std::uint32_t currentFrame() const override { return ours_->currentFrame(); }
  bool evaluateCondition(std::string const& condition) const override { return ours_->evaluateCondition(condition); }
  void injectOrder(std::string const& order) override { ours_->injectOrder(order); }

private:
  static AviatorsSimulation const& simulationOf(IRunningGame const& session) {
    return dynamic_cast<RunningAviators const&>(session).simulation();
  }

  void stepTheirs() {
    if (theirs_->gameEnded() || relay_->ready[1].empty()) {
      relay_->join();
      return;
    }
    bool const ended = theirs_->gameEnded_LocalPlayer();
    Bytes order = ended ? Bytes{} : PilotOrder(simulationOf(*theirs_), random1_);
    Orders const orders = std::move(relay_->ready[1].front());
    relay_->ready[1].pop_front();
    if (!ended) {
      relay_->sent[1].push_back(order);
    }
    theirs_->update(orders, std::move(order));
    relay_->join();
  }

  void compareResults() const {
    GameResult a;
    GameResult b;
    ours_->getGameResult(a);
    theirs_->getGameResult(b);
    std::cout << fmt::format("Duel ended at frame {}: client 0 ({}, {}) ({}, {}) checksum {:016x}; client 1 checksum {:016x}",
                             a.endFrame, a.results.at(0).at(0), a.results.at(0).at(1), a.results.at(1).at(0),
                             a.results.at(1).at(1), a.endStateChecksum, b.endStateChecksum)
              << std::endl;
    if (!(a == b)) {
      throw std::runtime_error("The two clients of the duel ended with different results.");
    }
  }

  std::unique_ptr<IRunningGame> ours_;
  std::unique_ptr<IRunningGame> theirs_;
  std::shared_ptr<DuelRelay> relay_;
  std::mt19937_64 random0_;
  std::mt19937_64 random1_;
};

}  // namespace

mainloop::LocalGameState MakeLocalAviatorsGame(MainLoopContext& context, ScriptStep const& step) {
  IGame const& aviators = context.shared.games.refGame(Game::Aviators);
  GameSettings settings = DefaultSettingsFromSchema(aviators.schema);
  settings.ints["duration_seconds"] = static_cast<std::int32_t>(std::clamp<long long>(step.number, 30, 600));
  mainloop::LocalGameState local;
  if (!step.duel) {
    local.players = {0};
    local.game = aviators.startSession(context.app, 0, kFramePeriod, kDelayFrames, settings, local.players, false);
    local.orderSource = std::make_unique<LocalOnlyOrderSource>(1, 0, kDelayFrames);
    return local;
  }
  local.players = {0, 1};
  auto relay = std::make_shared<DuelRelay>();
  local.game = std::make_unique<DuelSession>(
      aviators.startSession(context.app, 0, kFramePeriod, kDelayFrames, settings, local.players, false),
      aviators.startSession(context.app, 1, kFramePeriod, kDelayFrames, settings, local.players, false), relay,
      static_cast<std::uint64_t>(step.seed));
  local.orderSource = std::make_unique<DuelOrderSource>(relay);
  return local;
}
