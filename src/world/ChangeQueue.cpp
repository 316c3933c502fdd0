#include "world/ChangeQueue.h"

#include "app/QZAssert.h"

namespace {

constexpr std::uint32_t kPreviewAdded = 0x88FFFFFFu;
constexpr std::uint32_t kPreviewAddedAndRemoved = 0x66FFFFFFu;
constexpr std::uint32_t kPreviewRemovedAlpha = 0x88000000u;

// The answer to "what happened to this pixel in a range of slots", as the slot-by-slot rules leave it.
struct SlotRangeOutcome {
  bool touched = false;  // some slot in range changed the pixel
  bool removed = false;  // the last such slot removed it (a remove beats an add within a slot)
  bool added = false;    // some slot in range added it
};

// Ages count slots back from the newest: age 0 is slot N-1. The table holds the two most recent frames
// of each pixel, so it answers every range whose youngest age is 0 or 1.
std::uint32_t Age(std::uint16_t newestFrame, std::uint16_t frame) {
  return static_cast<std::uint16_t>(newestFrame - frame);
}

SlotRangeOutcome OutcomeFromTable(PendingPixel const& entry, std::uint16_t newestFrame, std::uint32_t youngest,
                                  std::uint32_t oldest) {
  SlotRangeOutcome outcome;
  std::uint32_t const latestAge = Age(newestFrame, entry.latestFrame);
  if (latestAge >= youngest) {
    if (latestAge <= oldest) {
      outcome.touched = true;
      outcome.removed = entry.latestRemoves;
    }
  } else if (entry.hasPrevious && Age(newestFrame, entry.previousFrame) <= oldest) {
    outcome.touched = true;
    outcome.removed = entry.previousRemoves;
  }
  if (entry.hasLatestAdd) {
    std::uint32_t const addAge = Age(newestFrame, entry.latestAddFrame);
    if (addAge >= youngest) {
      outcome.added = addAge <= oldest;
    } else if (entry.hasPreviousAdd) {
      outcome.added = Age(newestFrame, entry.previousAddFrame) <= oldest;
    }
  }
  return outcome;
}

}  // namespace

ChangeQueue::ChangeQueue(int slots)
    : slots_(slots),
      removeEnds_(static_cast<std::size_t>(slots), 0),
      addEnds_(static_cast<std::size_t>(slots), 0),
      pendingBits_(std::make_unique<std::uint64_t[]>(65536 / 64)) {
  // Frames are told apart modulo 65536.
  QZ_ASSERT(slots >= 1 && slots <= 32768);
}

void ChangeQueue::queueAddPixel(unsigned char x, unsigned char y) {
  adds_.push_back(x);
  adds_.push_back(y);
  ++addEnds_.back();
  note(x, y, true);
}

void ChangeQueue::queueRemovePixel(unsigned char x, unsigned char y) {
  removes_.push_back(x);
  removes_.push_back(y);
  ++removeEnds_.back();
  note(x, y, false);
}

void ChangeQueue::note(unsigned char x, unsigned char y, bool add) {
  std::uint32_t const pixel = PixelIndex(x, y);
  pendingBits_[pixel >> 6] |= std::uint64_t{1} << (pixel & 63);
  bool created = false;
  PendingPixel& entry = pending_.findOrInsert(pixel, &created);
  if (created) {
    entry.latestFrame = newestFrame_;
  } else if (entry.latestFrame != newestFrame_) {
    entry.previousFrame = entry.latestFrame;
    entry.previousRemoves = entry.latestRemoves;
    entry.hasPrevious = true;
    entry.latestFrame = newestFrame_;
    entry.latestRemoves = false;
  }
  if (add) {
    if (!entry.hasLatestAdd || entry.latestAddFrame != newestFrame_) {
      entry.previousAddFrame = entry.latestAddFrame;
      entry.hasPreviousAdd = entry.hasLatestAdd;
      entry.latestAddFrame = newestFrame_;
      entry.hasLatestAdd = true;
    }
  } else {
    entry.latestRemoves = true;
  }
}

bool ChangeQueue::pendingIsGround(unsigned char x, unsigned char y, bool base, int firstSlot, int lastSlot) const {
  std::uint32_t const youngest = static_cast<std::uint32_t>(slots_ - 1 - lastSlot);
  if (youngest > 1) {
    return scanIsGround(x, y, base, firstSlot, lastSlot);
  }
  PendingPixel const* entry = pending_.find(PixelIndex(x, y));
  if (entry == nullptr) {
    return base;
  }
  SlotRangeOutcome const outcome =
      OutcomeFromTable(*entry, newestFrame_, youngest, static_cast<std::uint32_t>(slots_ - 1 - firstSlot));
  return outcome.touched ? !outcome.removed : base;
}

std::uint32_t ChangeQueue::modifiedPixel(unsigned char x, unsigned char y, std::uint32_t pixel, int firstSlot,
                                         int lastSlot) const {
  if (firstSlot > lastSlot || !isPending(x, y)) {
    return pixel;
  }
  bool added = false;
  bool removed = false;
  std::uint32_t const youngest = static_cast<std::uint32_t>(slots_ - 1 - lastSlot);
  if (youngest > 1) {
    scanFlags(x, y, firstSlot, lastSlot, added, removed);
  } else if (PendingPixel const* entry = pending_.find(PixelIndex(x, y)); entry != nullptr) {
    SlotRangeOutcome const outcome =
        OutcomeFromTable(*entry, newestFrame_, youngest, static_cast<std::uint32_t>(slots_ - 1 - firstSlot));
    added = outcome.added;
    removed = outcome.touched && outcome.removed;
  }
  if (added) {
    return removed ? kPreviewAddedAndRemoved : kPreviewAdded;
  }
  if (removed && pixel != 0) {
    return (pixel & 0xFFFFFFu) | kPreviewRemovedAlpha;
  }
  return pixel;
}

bool ChangeQueue::scanIsGround(unsigned char x, unsigned char y, bool base, int firstSlot, int lastSlot) const {
  bool result = base;
  for (int slot = firstSlot; slot <= lastSlot; ++slot) {
    for (std::uint64_t i = begin(addEnds_, slot); i < addEnds_[static_cast<std::size_t>(slot)]; ++i) {
      if (adds_[2 * i] == x && adds_[2 * i + 1] == y) {
        result = true;
      }
    }
    for (std::uint64_t i = begin(removeEnds_, slot); i < removeEnds_[static_cast<std::size_t>(slot)]; ++i) {
      if (removes_[2 * i] == x && removes_[2 * i + 1] == y) {
        result = false;
      }
    }
  }
  return result;
}

void ChangeQueue::scanFlags(unsigned char x, unsigned char y, int firstSlot, int lastSlot, bool& added,
                            bool& removed) const {
  for (int slot = firstSlot; slot <= lastSlot; ++slot) {
    for (std::uint64_t i = begin(addEnds_, slot); i < addEnds_[static_cast<std::size_t>(slot)]; ++i) {
      if (adds_[2 * i] == x && adds_[2 * i + 1] == y) {
        added = true;
        removed = false;
      }
    }
    for (std::uint64_t i = begin(removeEnds_, slot); i < removeEnds_[static_cast<std::size_t>(slot)]; ++i) {
      if (removes_[2 * i] == x && removes_[2 * i + 1] == y) {
        removed = true;
      }
    }
  }
}

void ChangeQueue::applyPendingAdds(int slot, std::function<void(unsigned char, unsigned char)> const& apply) const {
  for (std::uint64_t i = begin(addEnds_, slot); i < addEnds_[static_cast<std::size_t>(slot)]; ++i) {
    apply(adds_[2 * i], adds_[2 * i + 1]);
  }
}

void ChangeQueue::applyPendingRemoves(int slot,
                                      std::function<void(unsigned char, unsigned char)> const& apply) const {
  for (std::uint64_t i = begin(removeEnds_, slot); i < removeEnds_[static_cast<std::size_t>(slot)]; ++i) {
    apply(removes_[2 * i], removes_[2 * i + 1]);
  }
}

void ChangeQueue::retire(std::uint32_t pixel, std::uint16_t frame, bool add) {
  PendingPixel* entry = pending_.find(pixel);
  if (entry == nullptr) {
    return;  // an earlier change of this pixel in the same slot already cleared it
  }
  if (entry->latestFrame == frame) {
    // Its newest change is leaving, so every change of the pixel is.
    pending_.erase(pixel);
    pendingBits_[pixel >> 6] &= ~(std::uint64_t{1} << (pixel & 63));
    return;
  }
  if (entry->hasPrevious && entry->previousFrame == frame) {
    entry->hasPrevious = false;
  }
  if (add) {
    if (entry->hasPreviousAdd && entry->previousAddFrame == frame) {
      entry->hasPreviousAdd = false;
    } else if (entry->hasLatestAdd && entry->latestAddFrame == frame) {
      entry->hasLatestAdd = false;
    }
  }
}

void ChangeQueue::advanceQueues() {
  if (empty()) {
    // Nothing retires and every running total stays 0: only the frames move on.
    ++newestFrame_;
    return;
  }
  std::uint64_t const a = addEnds_.front();
  std::uint64_t const r = removeEnds_.front();
  auto const leavingFrame = static_cast<std::uint16_t>(newestFrame_ - (slots_ - 1));
  for (std::uint64_t i = 0; i < a; ++i) {
    retire(PixelIndex(adds_[2 * i], adds_[2 * i + 1]), leavingFrame, true);
  }
  for (std::uint64_t i = 0; i < r; ++i) {
    retire(PixelIndex(removes_[2 * i], removes_[2 * i + 1]), leavingFrame, false);
  }

  adds_.erase(adds_.begin(), adds_.begin() + static_cast<std::ptrdiff_t>(2 * a));
  removes_.erase(removes_.begin(), removes_.begin() + static_cast<std::ptrdiff_t>(2 * r));
  addEnds_.pop_front();
  removeEnds_.pop_front();
  for (std::uint64_t& end : addEnds_) {
    end -= a;
  }
  for (std::uint64_t& end : removeEnds_) {
    end -= r;
  }
  // With a single slot the queue is empty now and the new slot starts from zero.
  addEnds_.push_back(addEnds_.empty() ? 0 : addEnds_.back());
  removeEnds_.push_back(removeEnds_.empty() ? 0 : removeEnds_.back());
  ++newestFrame_;
}
