#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "sim/IGame.h"
#include "sim/IRunningGame.h"

// A session that records what the main loop asks of it. Its frame counter starts at delayFrames and
// rises by one for each update; it ends like a real session, endFrame + delayFrames. Its local player
// gives the order {n} on its n-th order, counted from 1.
class FakeRunningGame final : public IRunningGame {
public:
  // What one update was given.
  struct Step {
    std::vector<std::vector<unsigned char>> orders;
    std::vector<unsigned char> ourOrder;
    friend bool operator==(Step const&, Step const&) = default;
    friend void PrintTo(Step const& step, std::ostream* out) {
      *out << ::testing::PrintToString(step.orders) << " with our order " << ::testing::PrintToString(step.ourOrder);
    }
  };

  FakeRunningGame(IGame const& game, std::uint32_t delayFrames, std::uint32_t endFrame)
      : game_(game), delayFrames_(delayFrames), endFrame_(endFrame), frame_(delayFrames) {}

  IGame const& game() const override { return game_; }
  void eventHandler(SDL_Event const&) override { ++events; }
  void nonEventDrivenUIChecks() override { ++uiChecks; }
  void render() override { ++renders; }
  bool gameEnded_LocalPlayer() const override { return frame_ >= endFrame_; }
  bool gameEnded() const override { return frame_ >= endFrame_ + delayFrames_; }
  void getGameResult(GameResult& out) const override {
    out = result;
    out.endFrame = frame_;
  }
  std::vector<unsigned char> processUIInputsAndGetOurNextOrder() override {
    return {static_cast<unsigned char>(++ordersGiven)};
  }
  void update(std::vector<std::vector<unsigned char>> const& orders, std::vector<unsigned char> ourOrder) override {
    steps.push_back({orders, std::move(ourOrder)});
    ++frame_;
  }
  void endGameNow() override {
    ++endGameNowCalls;
    if (endFrame_ > frame_) {
      endFrame_ = frame_;
    }
  }
  std::uint32_t currentFrame() const override { return frame_; }
  bool evaluateCondition(std::string const& condition) const override { return condition == trueCondition; }
  void injectOrder(std::string const& order) override { injected.push_back(order); }

  // The rows and checksum of the result; endFrame is the current frame.
  GameResult result;
  std::string trueCondition = "always";
  int events = 0;
  int uiChecks = 0;
  int renders = 0;
  int endGameNowCalls = 0;
  int ordersGiven = 0;
  std::vector<Step> steps;
  std::vector<std::string> injected;

private:
  IGame const& game_;
  std::uint32_t delayFrames_;
  std::uint32_t endFrame_;
  std::uint32_t frame_;
};
