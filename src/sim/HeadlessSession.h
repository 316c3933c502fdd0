#pragma once

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "sim/GameSettings.h"
#include "sim/IGame.h"
#include "sim/IRunningGame.h"
#include "sim/MapSettings.h"

// A session of a game without window, input, drawing or sound: the game's own simulation, stepped by
// the same calls as the client's session, for programs that replay recordings (the verifier, the
// server). Its own orders always come from a recording, never from a player here, so a Glow Horde order
// of the local seat that names no unit is ignored exactly as the recorded game ignored it.
//
// Simulation is a game's simulation class: constructed from (localPlayer, framePeriod, delayFrames,
// settings, map, players, extra...) and stepped by update.
template <class Simulation>
class HeadlessSession final : public IRunningGame {
public:
  template <class... Extra>
  HeadlessSession(std::shared_ptr<IGame const> game, int localPlayer, unsigned long long framePeriod,
                  unsigned char delayFrames, GameSettings const& settings, MapSettings const& map,
                  std::vector<unsigned short> const& players, Extra&&... extra)
      : game_(std::move(game)),
        simulation_(localPlayer, framePeriod, delayFrames, settings, map, players,
                    std::forward<Extra>(extra)...) {}

  IGame const& game() const override { return *game_; }
  void eventHandler(SDL_Event const&) override {}
  void nonEventDrivenUIChecks() override {}
  void render() override {}
  bool gameEnded_LocalPlayer() const override { return simulation_.gameEnded_LocalPlayer(); }
  bool gameEnded() const override { return simulation_.gameEnded(); }
  void getGameResult(GameResult& result) const override { simulation_.getGameResult(result); }
  std::vector<unsigned char> processUIInputsAndGetOurNextOrder() override { return {}; }
  void update(std::vector<std::vector<unsigned char>> const& orders, std::vector<unsigned char> ourOrder) override {
    if constexpr (requires { Simulation::OurOrderOrigin::Recorded; }) {
      simulation_.update(orders, ourOrder, Simulation::OurOrderOrigin::Recorded);
    } else {
      simulation_.update(orders, ourOrder);
    }
  }
  void endGameNow() override { simulation_.endGameNow(); }
  std::uint32_t currentFrame() const override { return simulation_.frame(); }
  // Nothing is asked of or told to a session that nobody watches.
  bool evaluateCondition(std::string const&) const override { return false; }
  void injectOrder(std::string const&) override {}

private:
  std::shared_ptr<IGame const> game_;
  Simulation simulation_;
};
