#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <memory>

#include "world/PendingPixelTable.h"

// The pending pixel changes of one player in one chunk, held by frame in N slots: slot 0 the oldest,
// slot N-1 the frame now being made. Changes are (x, y) byte pairs; the ends are running totals, so
// the changes of slot i are those from ends[i-1] (0 for slot 0) up to ends[i].
//
// Beside the queues it keeps an index of the pixels that have changes pending: a bitmap, so that a
// pixel with nothing pending is answered with one read, and a table of the latest frames in which
// each pending pixel was changed, so that the others are answered without a scan. Both are kept up to
// date as changes are queued and as slot 0 is dropped, at a cost in proportion to those changes.
class ChangeQueue {
public:
  explicit ChangeQueue(int slots);
  ChangeQueue(ChangeQueue&&) noexcept = default;
  ChangeQueue& operator=(ChangeQueue&&) noexcept = default;
  ChangeQueue(ChangeQueue const&) = delete;
  ChangeQueue& operator=(ChangeQueue const&) = delete;

  void queueAddPixel(unsigned char x, unsigned char y);
  void queueRemovePixel(unsigned char x, unsigned char y);

  // Whether the pixel is ground after the changes of slots firstSlot to lastSlot are played over
  // `base` in slot order, adds before removes within a slot.
  bool isGround(unsigned char x, unsigned char y, bool base, int firstSlot, int lastSlot) const {
    if (firstSlot > lastSlot || !isPending(x, y)) {
      return base;
    }
    return pendingIsGround(x, y, base, firstSlot, lastSlot);
  }

  // The pixel as shown with the changes of those slots in preview colours.
  std::uint32_t modifiedPixel(unsigned char x, unsigned char y, std::uint32_t pixel, int firstSlot, int lastSlot) const;

  // Calls the function with every change of one slot, in the order queued.
  void applyPendingAdds(int slot, std::function<void(unsigned char, unsigned char)> const& apply) const;
  void applyPendingRemoves(int slot, std::function<void(unsigned char, unsigned char)> const& apply) const;

  // Drops slot 0 and opens a new, empty last slot.
  void advanceQueues();

  int slots() const { return slots_; }
  // Running totals: the number of adds or removes in slots 0 to slot.
  std::uint64_t addEnd(int slot) const { return addEnds_[static_cast<std::size_t>(slot)]; }
  std::uint64_t removeEnd(int slot) const { return removeEnds_[static_cast<std::size_t>(slot)]; }
  // Whether no slot holds a change.
  bool empty() const { return addEnds_.back() == 0 && removeEnds_.back() == 0; }
  // Whether any change lies in a slot after the given one.
  bool hasChangesAfter(int slot) const {
    return addEnds_.back() > addEnd(slot) || removeEnds_.back() > removeEnd(slot);
  }
  // Whether any slot holds a change of this pixel.
  bool isPending(unsigned char x, unsigned char y) const {
    std::uint32_t const pixel = PixelIndex(x, y);
    return (pendingBits_[pixel >> 6] >> (pixel & 63)) & 1u;
  }
  std::uint32_t pendingPixelCount() const { return pending_.size(); }

private:
  static constexpr std::uint32_t PixelIndex(unsigned char x, unsigned char y) {
    return static_cast<std::uint32_t>(y) << 8 | x;
  }
  bool pendingIsGround(unsigned char x, unsigned char y, bool base, int firstSlot, int lastSlot) const;
  // The answers by scanning the slots one by one, for slot ranges that the index doesn't cover.
  bool scanIsGround(unsigned char x, unsigned char y, bool base, int firstSlot, int lastSlot) const;
  void scanFlags(unsigned char x, unsigned char y, int firstSlot, int lastSlot, bool& added, bool& removed) const;
  void note(unsigned char x, unsigned char y, bool add);
  void retire(std::uint32_t pixel, std::uint16_t frame, bool add);
  std::uint64_t begin(std::deque<std::uint64_t> const& ends, int slot) const {
    return slot == 0 ? 0 : ends[static_cast<std::size_t>(slot - 1)];
  }

  int slots_;
  std::deque<unsigned char> removes_;
  std::deque<std::uint64_t> removeEnds_;
  std::deque<unsigned char> adds_;
  std::deque<std::uint64_t> addEnds_;

  // The frame of the newest slot, modulo 65536; slot i holds the changes of frame newestFrame_ - (N - 1 - i).
  std::uint16_t newestFrame_ = 0;
  std::unique_ptr<std::uint64_t[]> pendingBits_;
  PendingPixelTable pending_;
};
