#pragma once

#include <deque>
#include <memory>
#include <vector>

#include "sim/IOrderSource.h"

// Passes another source's orders through and keeps them as a recording keeps them: one collated update
// (a length byte and the order, for each player) for each step on which the players gave orders. What
// arrives on frame f was given on step f - delayFrames, so the head start's frames add nothing.
// It lets a game played on this machine alone be replayed and proved like a recorded network game.
class RecordingOrderSource final : public IOrderSource {
public:
  RecordingOrderSource(std::unique_ptr<IOrderSource> inner, int delayFrames);

  bool fetchOrders(bool localGameEnded, std::vector<unsigned char> ourNextOrder,
                   std::vector<std::vector<unsigned char>>& orders, std::vector<unsigned char>& ourOrder) override;

  // The updates kept so far, oldest first.
  std::deque<std::vector<unsigned char>> const& updates() const { return updates_; }

private:
  std::unique_ptr<IOrderSource> inner_;
  int delayFrames_;
  int frame_ = 0;
  std::deque<std::vector<unsigned char>> updates_;
};
