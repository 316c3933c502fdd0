#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "sim/GameResult.h"

union SDL_Event;
class IGame;

// One game session in progress. Everything that clients must agree on changes only inside update.
class IRunningGame {
public:
  virtual ~IRunningGame() = default;

  virtual IGame const& game() const = 0;
  virtual void eventHandler(SDL_Event const& event) = 0;
  virtual void nonEventDrivenUIChecks() = 0;
  virtual void render() = 0;
  virtual bool gameEnded_LocalPlayer() const = 0;
  virtual bool gameEnded() const = 0;
  virtual void getGameResult(GameResult& result) const = 0;
  virtual std::vector<unsigned char> processUIInputsAndGetOurNextOrder() = 0;
  virtual void update(std::vector<std::vector<unsigned char>> const& orders, std::vector<unsigned char> ourOrder) = 0;
  virtual void endGameNow() = 0;
  virtual std::uint32_t currentFrame() const = 0;
  virtual bool evaluateCondition(std::string const& condition) const = 0;
  virtual void injectOrder(std::string const& order) = 0;
};
