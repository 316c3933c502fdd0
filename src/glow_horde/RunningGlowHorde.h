#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "sim/GameSettings.h"
#include "sim/IRunningGame.h"
#include "sim/MapSettings.h"
#include "glow_horde/GlowHordeControls.h"
#include "glow_horde/GlowHordeSimulation.h"

class GlowHordeGame;
class SDL3App;

// One Glow Horde game from start to result: the shared simulation joined with this client's input,
// camera, drawing and sound. Every player gets the same number of units from a spawn point; teams
// score by bringing units to their team's exit; the game lasts a fixed time.
class RunningGlowHorde final : public IRunningGame {
public:
  // Builds the world and the players and runs the head start (see GlowHordeSimulation). Raises
  // std::out_of_range for a missing setting and the world's texts for a bad map image.
  RunningGlowHorde(std::shared_ptr<GlowHordeGame const> game, std::shared_ptr<SDL3App> app, int localPlayer,
                   unsigned long long framePeriod, unsigned char delayFrames, GameSettings const& settings,
                   MapSettings const& map, std::vector<unsigned short> const& players);

  IGame const& game() const override;
  void eventHandler(SDL_Event const& event) override;
  void nonEventDrivenUIChecks() override;
  void render() override;
  bool gameEnded_LocalPlayer() const override { return simulation_.gameEnded_LocalPlayer(); }
  bool gameEnded() const override { return simulation_.gameEnded(); }
  void getGameResult(GameResult& result) const override { simulation_.getGameResult(result); }
  std::vector<unsigned char> processUIInputsAndGetOurNextOrder() override;
  void update(std::vector<std::vector<unsigned char>> const& orders, std::vector<unsigned char> ourOrder) override;
  void endGameNow() override { simulation_.endGameNow(); }
  std::uint32_t currentFrame() const override { return simulation_.frame(); }
  // "order_applies x,y keyword [words]": whether an order in the text form would find a unit of the
  // local player now. Anything else is a programming error of the driver.
  bool evaluateCondition(std::string const& condition) const override;
  // Parses an order in the text form, which must parse, and leaves it waiting as a click would.
  void injectOrder(std::string const& order) override;

  std::optional<UIOrder> parseUIOrder(std::string const& text) const;
  Position wrappedAlways(Position position) const;
  LemmingActivityTrigger triggerInEffect() const { return controls_.triggerInEffect(); }

  GlowHordeSimulation const& simulation() const { return simulation_; }
  GlowHordeControls const& controls() const { return controls_; }
  GlowHordeControls& controls() { return controls_; }

private:
  GlowHordeControls::Pointer pointer() const;

  std::shared_ptr<GlowHordeGame const> game_;
  std::shared_ptr<SDL3App> app_;
  GlowHordeSimulation simulation_;
  GlowHordeControls controls_;
  std::vector<unsigned char> resolvedOrder_;  // the order that processUIInputsAndGetOurNextOrder gave last
  std::uint32_t lastTicks_ = 0;
};
