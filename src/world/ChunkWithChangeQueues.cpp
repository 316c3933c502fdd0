#include "world/ChunkWithChangeQueues.h"

#include <algorithm>
#include <utility>

#include "app/QZAssert.h"

ChunkWithChangeQueues::ChunkWithChangeQueues(Chunk&& chunk, int players, int localPlayer, int delayFrames)
    : localPlayer_(localPlayer), delayFrames_(delayFrames), base_(std::move(chunk)), localBase_(base_),
      display_(base_) {
  QZ_ASSERT(players >= 1 && localPlayer >= 0 && localPlayer < players && delayFrames >= 0);
  queues_.reserve(static_cast<std::size_t>(players));
  for (int player = 0; player < players; ++player) {
    queues_.emplace_back(player == localPlayer ? 2 * delayFrames + 1 : delayFrames + 1);
  }
}

void ChunkWithChangeQueues::queueAddPixel(int player, unsigned char x, unsigned char y) {
  queueChange(player, x, y, true);
}

void ChunkWithChangeQueues::queueRemovePixel(int player, unsigned char x, unsigned char y) {
  queueChange(player, x, y, false);
}

void ChunkWithChangeQueues::queueChange(int player, unsigned char x, unsigned char y, bool add) {
  QZ_ASSERT(player >= 0 && player < static_cast<int>(queues_.size()));
  if (IsIndestructible(base_.readPixel(x, y))) {
    return;
  }
  ChangeQueue& queue = queues_[static_cast<std::size_t>(player)];
  if (add) {
    queue.queueAddPixel(x, y);
  } else {
    queue.queueRemovePixel(x, y);
  }
  refreshDisplay(x, y, 0);
}

void ChunkWithChangeQueues::refreshDisplay(unsigned char x, unsigned char y, int firstSlot) {
  std::uint32_t const shown = queues_[static_cast<std::size_t>(localPlayer_)].modifiedPixel(
      x, y, base_.readPixel(x, y), firstSlot, 2 * delayFrames_);
  // Writing an unchanged value would only force a needless texture upload.
  if (display_.readPixel(x, y) != shown) {
    display_.writePixel(x, y, shown);
  }
}

void ChunkWithChangeQueues::frameAdvance() {
  // Most chunks of a world have no change queued: nothing to apply, only the queues' frames move on.
  if (std::all_of(queues_.begin(), queues_.end(), [](ChangeQueue const& queue) { return queue.empty(); })) {
    for (ChangeQueue& queue : queues_) {
      queue.advanceQueues();
    }
    return;
  }
  int const d = delayFrames_;
  for (ChangeQueue const& queue : queues_) {
    queue.applyPendingAdds(0, [this](unsigned char x, unsigned char y) { base_.writePixel(x, y, kAddedPixel); });
  }
  for (ChangeQueue const& queue : queues_) {
    queue.applyPendingRemoves(0, [this](unsigned char x, unsigned char y) { base_.writePixel(x, y, kRemovedPixel); });
  }
  for (ChangeQueue const& queue : queues_) {
    queue.applyPendingAdds(d, [this](unsigned char x, unsigned char y) { localBase_.writePixel(x, y, kAddedPixel); });
  }
  for (ChangeQueue const& queue : queues_) {
    queue.applyPendingRemoves(d,
                              [this](unsigned char x, unsigned char y) { localBase_.writePixel(x, y, kRemovedPixel); });
  }
  // Base changed only where slot 0 had changes, and only there does the local preview lose a slot.
  auto const refresh = [this](unsigned char x, unsigned char y) { refreshDisplay(x, y, 1); };
  for (ChangeQueue const& queue : queues_) {
    queue.applyPendingAdds(0, refresh);
    queue.applyPendingRemoves(0, refresh);
  }
  for (ChangeQueue& queue : queues_) {
    queue.advanceQueues();
  }
}

bool ChunkWithChangeQueues::hasLocalChangesQueued() const {
  return queues_[static_cast<std::size_t>(localPlayer_)].hasChangesAfter(delayFrames_);
}
