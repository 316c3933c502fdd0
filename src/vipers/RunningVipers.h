#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "present/Camera.h"
#include "sim/GameSettings.h"
#include "sim/IRunningGame.h"
#include "sim/MapSettings.h"
#include "vipers/VipersSimulation.h"

class VipersGame;
class SDL3App;

// One Vipers game from start to result: the shared simulation joined with this client's keys, camera,
// drawing and sound. The keys steer the predicted head at once; the order they make reaches the shared
// head delayFrames frames later.
class RunningVipers final : public IRunningGame {
public:
  RunningVipers(std::shared_ptr<VipersGame const> game, std::shared_ptr<SDL3App> app, int localPlayer,
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
  bool evaluateCondition(std::string const&) const override { return false; }
  // This game has no textual orders; a driver must not send one.
  void injectOrder(std::string const& order) override;

  VipersSimulation const& simulation() const { return simulation_; }
  Camera const& camera() const { return camera_; }

  // The controls byte of the keys held: A turns left, else D right; W thrusts, else S brakes.
  static std::uint8_t ControlsFromKeys(bool a, bool d, bool w, bool s);

private:
  void playHit(std::int32_t impact);

  std::shared_ptr<VipersGame const> game_;
  std::shared_ptr<SDL3App> app_;
  VipersSimulation simulation_;
  Camera camera_;
  bool cameraWrapX_;
  bool cameraWrapY_;
  bool debugTools_;
  bool networkShadows_ = false;
  std::uint64_t lastTicks_ = 0;
  std::uint8_t uiControls_ = 0;
  bool uiFire_ = false;
};
