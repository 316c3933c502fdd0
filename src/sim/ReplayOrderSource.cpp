#include "sim/ReplayOrderSource.h"

#include "sim/Recording.h"

ReplayOrderSource::ReplayOrderSource(Recording const& recording, int localPlayer, int players, int delayFrames)
    : recording_(&recording), localPlayer_(localPlayer), players_(players), delayFrames_(delayFrames) {}

bool ReplayOrderSource::fetchOrders(bool localGameEnded, std::vector<unsigned char> /*ourNextOrder*/,
                                    std::vector<std::vector<unsigned char>>& orders,
                                    std::vector<unsigned char>& ourOrder) {
  if (frame_ < delayFrames_) {
    orders.assign(static_cast<std::size_t>(players_), {});
  } else {
    orders = recording_->allUpdatesOnFrame(frame_ - delayFrames_);
  }
  ourOrder.clear();
  if (!localGameEnded) {
    ourOrder = recording_->playerUpdateOnFrame(frame_, localPlayer_);
  }
  ++frame_;
  return true;
}
