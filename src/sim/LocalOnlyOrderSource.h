#pragma once

#include <cstddef>
#include <vector>

#include "sim/IOrderSource.h"

// The order source of a game played alone: the local player's orders come back delayFrames steps
// later, as the network would bring them, and every other player gives none. Never stalls.
class LocalOnlyOrderSource final : public IOrderSource {
public:
  LocalOnlyOrderSource(int players, int localPlayer, int delayFrames);

  bool fetchOrders(bool localGameEnded, std::vector<unsigned char> ourNextOrder,
                   std::vector<std::vector<unsigned char>>& orders, std::vector<unsigned char>& ourOrder) override;

private:
  int players_;
  int localPlayer_;
  // The orders under way, a queue of fixed length delayFrames kept as a ring: next_ is its front.
  // Each fetch takes the front and puts the new order in its place, at the back.
  std::vector<std::vector<unsigned char>> queue_;
  std::size_t next_ = 0;
};
