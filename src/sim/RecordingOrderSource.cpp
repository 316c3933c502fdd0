#include "sim/RecordingOrderSource.h"

#include <algorithm>
#include <utility>

RecordingOrderSource::RecordingOrderSource(std::unique_ptr<IOrderSource> inner, int delayFrames)
    : inner_(std::move(inner)), delayFrames_(delayFrames) {}

bool RecordingOrderSource::fetchOrders(bool localGameEnded, std::vector<unsigned char> ourNextOrder,
                                       std::vector<std::vector<unsigned char>>& orders,
                                       std::vector<unsigned char>& ourOrder) {
  bool const ready = inner_->fetchOrders(localGameEnded, std::move(ourNextOrder), orders, ourOrder);
  if (!ready) {
    return false;
  }
  if (frame_ >= delayFrames_) {
    std::vector<unsigned char> update;
    for (std::vector<unsigned char> const& order : orders) {
      // A length byte holds at most 255; no order of this program comes near it.
      std::size_t const length = std::min<std::size_t>(order.size(), 255);
      update.push_back(static_cast<unsigned char>(length));
      update.insert(update.end(), order.begin(), order.begin() + static_cast<std::ptrdiff_t>(length));
    }
    updates_.push_back(std::move(update));
  }
  ++frame_;
  return true;
}
