#pragma once

#include <cstdint>
#include <utility>
#include <vector>

namespace testing_support {

// A deliberately plain model of one player's change queue: every slot is a list of its adds and a list
// of its removes, and every question is answered by walking the slots one by one, adds before removes.
class ReferenceQueue {
public:
  using Changes = std::vector<std::pair<int, int>>;

  explicit ReferenceQueue(int slots) : slots_(static_cast<std::size_t>(slots)) {}

  void queue(int x, int y, bool add) { (add ? slots_.back().adds : slots_.back().removes).emplace_back(x, y); }
  void advance() {
    slots_.erase(slots_.begin());
    slots_.emplace_back();
  }
  Changes const& changes(int slot, bool adds) const {
    Slot const& s = slots_[static_cast<std::size_t>(slot)];
    return adds ? s.adds : s.removes;
  }

  bool isGround(int x, int y, bool ground, int first, int last) const {
    for (int s = first; s <= last; ++s) {
      for (auto const& c : changes(s, true)) ground = ground || c == std::pair{x, y};
      for (auto const& c : changes(s, false)) ground = ground && c != std::pair{x, y};
    }
    return ground;
  }

  // The preview of the pixel: added (and not removed after), added and removed, or removed.
  std::uint32_t modified(int x, int y, std::uint32_t pixel, int first, int last) const {
    bool added = false, removed = false;
    for (int s = first; s <= last; ++s) {
      for (auto const& c : changes(s, true)) {
        if (c == std::pair{x, y}) added = true, removed = false;
      }
      for (auto const& c : changes(s, false)) {
        if (c == std::pair{x, y}) removed = true;
      }
    }
    if (added) return removed ? 0x66FFFFFFu : 0x88FFFFFFu;
    if (removed && pixel != 0) return (pixel & 0xFFFFFFu) | 0x88000000u;
    return pixel;
  }

private:
  struct Slot {
    Changes adds, removes;
  };
  std::vector<Slot> slots_;
};

// The same plainness for a chunk with its three copies and per-player queues. The real chunk, with its
// index, must give exactly the same answers.
class ReferenceChunk {
public:
  using Pixels = std::vector<std::uint32_t>;

  ReferenceChunk(Pixels const& initial, int players, int localPlayer, int delay)
      : local_(localPlayer), delay_(delay), base_(initial), localBase_(initial), display_(initial) {
    for (int p = 0; p < players; ++p) {
      queues_.emplace_back(p == localPlayer ? 2 * delay + 1 : delay + 1);
    }
  }

  static bool Ground(std::uint32_t pixel) { return (pixel >> 24) >= 254; }
  static int Index(int x, int y) { return y * 256 + x; }

  bool isGround(int player, int x, int y) const {
    ReferenceQueue const& q = queues_[static_cast<std::size_t>(player)];
    if (player == local_) {
      return q.isGround(x, y, Ground(localBase_[Index(x, y)]), delay_, 2 * delay_ - 1);
    }
    return q.isGround(x, y, Ground(base_[Index(x, y)]), 0, delay_ - 1);
  }

  void queue(int player, int x, int y, bool add) {
    if ((base_[Index(x, y)] >> 24) == 255) {
      return;
    }
    queues_[static_cast<std::size_t>(player)].queue(x, y, add);
    display_[Index(x, y)] = preview(x, y, 0);
  }

  // Every player's adds of a slot before all their removes: base takes the oldest slot, localBase the
  // slot D frames old; display shows what base became, with the local player's later changes over it.
  void frameAdvance() {
    auto const commit = [&](Pixels& pixels, int slot) {
      for (auto const& q : queues_) {
        for (auto [x, y] : q.changes(slot, true)) pixels[Index(x, y)] = 0xFEFFFFFFu;
      }
      for (auto const& q : queues_) {
        for (auto [x, y] : q.changes(slot, false)) pixels[Index(x, y)] = 0;
      }
    };
    commit(base_, 0);
    commit(localBase_, delay_);
    for (auto const& q : queues_) {
      for (bool add : {true, false}) {
        for (auto [x, y] : q.changes(0, add)) display_[Index(x, y)] = preview(x, y, 1);
      }
    }
    for (auto& q : queues_) q.advance();
  }

  Pixels const& base() const { return base_; }
  Pixels const& localBase() const { return localBase_; }
  Pixels const& display() const { return display_; }

private:
  std::uint32_t preview(int x, int y, int first) const {
    return queues_[static_cast<std::size_t>(local_)].modified(x, y, base_[Index(x, y)], first, 2 * delay_);
  }

  int local_;
  int delay_;
  Pixels base_;
  Pixels localBase_;
  Pixels display_;
  std::vector<ReferenceQueue> queues_;
};

}  // namespace testing_support
