#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "aviators/AviatorsSimulation.h"
#include "present/Camera.h"
#include "sim/GameSettings.h"
#include "sim/IRunningGame.h"
#include "sim/MapSettings.h"

class AviatorsGame;
class SDL3App;

// One Aviators game from start to result: the simulation joined with this client's keyboard, camera,
// drawing, sound and overlays. The camera follows the predicted ship.
class RunningAviators final : public IRunningGame {
public:
  // Raises std::out_of_range without "duration_seconds" or "missile_speed", and the world's texts for a
  // bad map image.
  RunningAviators(std::shared_ptr<AviatorsGame const> game, std::shared_ptr<SDL3App> app, int localPlayer,
                  unsigned long long framePeriod, unsigned char delayFrames, GameSettings const& settings,
                  MapSettings const& map, std::vector<unsigned short> const& players, bool debugTools);

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
  bool evaluateCondition(std::string const& condition) const override;
  // This game has no tutorial: nothing may inject an order.
  void injectOrder(std::string const& order) override;

  AviatorsSimulation const& simulation() const { return simulation_; }
  Camera const& camera() const { return camera_; }
  // The interface's pending input, as the keys and the fire and lock keys leave it.
  std::uint8_t uiControls() const { return uiControls_; }

private:
  void renderAviator(Aviator const& ship, unsigned short slot, bool sharedLocal, float dying) const;
  void renderDeathExplosion(Aviator const& ship, unsigned short slot, float dying) const;
  void renderMissiles() const;
  void debugWindow();

  std::shared_ptr<AviatorsGame const> game_;
  std::shared_ptr<SDL3App> app_;
  AviatorsSimulation simulation_;
  Camera camera_;
  std::uint64_t lastTicks_ = 0;
  std::uint8_t uiControls_ = 0;
  bool uiFire_ = false;
  bool uiLock_ = false;
  bool autoFire_ = false;
  int autoFireInterval_ = 120;
  bool debugTools_ = false;
  bool networkShadows_ = false;
};
