#include "sim/LocalOnlyOrderSource.h"

#include <utility>

#include "app/QZAssert.h"

LocalOnlyOrderSource::LocalOnlyOrderSource(int players, int localPlayer, int delayFrames)
    : players_(players), localPlayer_(localPlayer), queue_(static_cast<std::size_t>(delayFrames)) {
  QZ_ASSERT(players > 0 && localPlayer >= 0 && localPlayer < players);
  QZ_ASSERT(delayFrames >= 0);
}

bool LocalOnlyOrderSource::fetchOrders(bool /*localGameEnded*/, std::vector<unsigned char> ourNextOrder,
                                       std::vector<std::vector<unsigned char>>& orders,
                                       std::vector<unsigned char>& ourOrder) {
  orders.clear();
  orders.resize(static_cast<std::size_t>(players_));
  std::vector<unsigned char>& arriving = orders[static_cast<std::size_t>(localPlayer_)];
  if (queue_.empty()) {
    // Without a delay an order arrives on the step that gives it.
    arriving = ourNextOrder;
  } else {
    arriving = std::move(queue_[next_]);
    queue_[next_] = ourNextOrder;
    next_ = (next_ + 1) % queue_.size();
  }
  ourOrder = std::move(ourNextOrder);
  return true;
}
