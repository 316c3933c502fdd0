#pragma once

#include <cstdint>
#include <vector>

#include "world/ChangeQueue.h"
#include "world/Chunk.h"
#include "sim/IHasher.h"

// One chunk of the world in its three copies, with every player's queue of delayed changes.
//
// On a client at frame F: base holds all changes of updates up to F - 2D, localBase those up to F - D
// (the same on every client, and what is hashed), display is base with the local player's pending
// changes drawn over it in preview colours. The local queue has 2D + 1 slots, every other D + 1,
// because this client runs its own player's updates D frames ahead of everyone else's.
class ChunkWithChangeQueues {
public:
  ChunkWithChangeQueues(Chunk&& chunk, int players, int localPlayer, int delayFrames);

  // Whether a unit of the given player sees ground here. A change is never seen in the frame that
  // queued it: the newest slot is left out.
  bool isGround(int player, unsigned char x, unsigned char y) const {
    int const d = delayFrames_;
    if (player != localPlayer_) {
      return queues_[static_cast<std::size_t>(player)].isGround(x, y, IsGroundPixel(base_.readPixel(x, y)), 0, d - 1);
    }
    return queues_[static_cast<std::size_t>(player)].isGround(x, y, IsGroundPixel(localBase_.readPixel(x, y)), d,
                                                              2 * d - 1);
  }
  // Nothing is queued on an indestructible pixel (alpha 255).
  void queueAddPixel(int player, unsigned char x, unsigned char y);
  void queueRemovePixel(int player, unsigned char x, unsigned char y);
  // Once a frame, after all units: applies slot 0 to base and slot D to localBase (all adds of all
  // players before all removes), refreshes the display where base changed, then advances every queue.
  void frameAdvance();
  // Whether the local player has changes that localBase doesn't show yet.
  bool hasLocalChangesQueued() const;
  void hashLocalBase(IHasher& hasher) const { localBase_.hash(hasher); }

  Chunk const& base() const { return base_; }
  Chunk const& localBase() const { return localBase_; }
  Chunk const& display() const { return display_; }
  ChangeQueue const& queue(int player) const { return queues_[static_cast<std::size_t>(player)]; }
  int localPlayer() const { return localPlayer_; }
  int delayFrames() const { return delayFrames_; }

  static constexpr std::uint32_t kAddedPixel = 0xFEFFFFFFu;
  static constexpr std::uint32_t kRemovedPixel = 0x00000000u;
  // Alpha 254 or 255.
  static constexpr bool IsGroundPixel(std::uint32_t pixel) { return (pixel >> 25) > 126; }
  static constexpr bool IsIndestructible(std::uint32_t pixel) { return (pixel >> 24) == 255; }

private:
  void queueChange(int player, unsigned char x, unsigned char y, bool add);
  void refreshDisplay(unsigned char x, unsigned char y, int firstSlot);

  int localPlayer_;
  int delayFrames_;
  Chunk base_;
  Chunk localBase_;
  Chunk display_;
  std::vector<ChangeQueue> queues_;
};
