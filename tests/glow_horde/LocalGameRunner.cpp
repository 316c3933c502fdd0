#include "glow_horde/LocalGameRunner.h"

#include <memory>
#include <stdexcept>

#include "Games.h"
#include "LocalOnlyOrderSource.h"
#include "TutorialLevelSettings.h"
#include "UpdateSimulation.h"
#include "glow_horde/GlowHordeSimulation.h"
#include "glow_horde/UIOrderText.h"

namespace glow_horde_testing {

namespace {

std::vector<LemmingActivityTrigger> const k_defaultTriggers = {
    LemmingActivityTrigger::Immediate,   LemmingActivityTrigger::BeforeFalling, LemmingActivityTrigger::Immediate,
    LemmingActivityTrigger::Immediate,   LemmingActivityTrigger::Immediate,     LemmingActivityTrigger::WhenBlocked,
    LemmingActivityTrigger::WhenBlocked};

// The four operations of a session that UpdateSimulation uses, over the bare simulation.
struct Session {
  GlowHordeSimulation& simulation;
  std::vector<TimedOrder> const& orders;
  PlayedGame& played;
  std::size_t next = 0;

  bool gameEnded() const { return simulation.gameEnded(); }
  bool gameEnded_LocalPlayer() const { return simulation.gameEnded_LocalPlayer(); }
  std::vector<unsigned char> processUIInputsAndGetOurNextOrder() {
    std::vector<unsigned char> bytes;
    while (next < orders.size() && orders[next].frame <= simulation.frame()) {
      std::optional<UIOrder> const click = ParseUIOrderText(orders[next].text, k_defaultTriggers);
      if (!click.has_value()) {
        throw std::invalid_argument("Not an order: " + orders[next].text);
      }
      // A later click of the same frame replaces an earlier one, as in the session.
      if (std::optional<Order> order = simulation.localPlayerState().resolveUIOrder(*click)) {
        bytes = order->toBytes();
      } else {
        bytes.clear();
      }
      ++next;
    }
    played.ordersSent += bytes.empty() ? 0 : 1;
    return bytes;
  }
  void update(std::vector<std::vector<unsigned char>> const& frameOrders, std::vector<unsigned char> ourOrder) {
    int const before = simulation.exitedCounts().empty() ? 0 : simulation.exitedCounts()[0];
    std::uint32_t const frame = simulation.frame();
    GlowHordeSimulation::StepEvents const events = simulation.update(frameOrders, ourOrder);
    played.ordersAccepted += events.localOrderAccepted ? 1 : 0;
    int const after = simulation.exitedCounts().empty() ? 0 : simulation.exitedCounts()[0];
    for (int i = before; i < after; ++i) {
      played.arrivalFrames.push_back(frame);
    }
  }
};

}  // namespace

PlayedGame PlayLocalGame(GameSettings const& settings, MapSettings const& map, std::vector<TimedOrder> const& orders,
                         std::uint8_t delayFrames) {
  PlayedGame played;
  GlowHordeSimulation simulation(nullptr, 0, 16666, delayFrames, settings, map, {0});
  LocalOnlyOrderSource source(1, 0, delayFrames);
  Session session{simulation, orders, played};
  int stalled = 0;
  while (UpdateSimulation(session, source, stalled)) {
  }
  simulation.getGameResult(played.result);
  return played;
}

GameSettings TutorialSettings(int level) {
  Games const games;
  return TutorialLevelSettings(games.refGame(Game::GlowHorde).schema, level);
}

MapSettings TutorialMap(int level) {
  Games const games;
  IGame const& glowHorde = games.refGame(Game::GlowHorde);
  return glowHorde.maps.at(TutorialSettings(level).strings.at("map"));
}

}  // namespace glow_horde_testing
