#pragma once

#include <vector>

#include "sim/IOrderSource.h"

class Recording;

// The order source of a replay: it puts the replaying client in the seat of localPlayer and gives,
// step by step, exactly the orders and own order that this player's client had. Past the end of the
// recording the steps have no orders. Never stalls.
class ReplayOrderSource final : public IOrderSource {
public:
  // The recording is not owned and must outlive the source.
  ReplayOrderSource(Recording const& recording, int localPlayer, int players, int delayFrames);

  bool fetchOrders(bool localGameEnded, std::vector<unsigned char> ourNextOrder,
                   std::vector<std::vector<unsigned char>>& orders, std::vector<unsigned char>& ourOrder) override;

private:
  Recording const* recording_;
  int localPlayer_;
  int players_;
  int delayFrames_;
  int frame_ = 0;
};
