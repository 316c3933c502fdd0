#pragma once

#include <cstdint>
#include <utility>
#include <vector>

namespace testing_support {

// A deliberately plain model of a chunk with its three copies and per-player change queues: every slot
// is a list of its changes and every question is answered by walking the slots one by one. The real
// chunk, with its index, must give exactly the same answers.
class ReferenceChunk {
public:
  using Pixels = std::vector<std::uint32_t>;

  ReferenceChunk(Pixels const& initial, int players, int localPlayer, int delay)
      : local_(localPlayer), delay_(delay), base_(initial), localBase_(initial), display_(initial) {
    for (int p = 0; p < players; ++p) {
      queues_.emplace_back(static_cast<std::size_t>(p == localPlayer ? 2 * delay + 1 : delay + 1));
    }
  }

  static bool Ground(std::uint32_t pixel) { return (pixel >> 24) >= 254; }

  bool isGround(int player, int x, int y) const {
    if (player == local_) {
      return play(player, x, y, Ground(localBase_[Index(x, y)]), delay_, 2 * delay_ - 1);
    }
    return play(player, x, y, Ground(base_[Index(x, y)]), 0, delay_ - 1);
  }

  void queue(int player, int x, int y, bool add) {
    if ((base_[Index(x, y)] >> 24) == 255) {
      return;
    }
    Slot& newest = queues_[static_cast<std::size_t>(player)].back();
    (add ? newest.adds : newest.removes).emplace_back(x, y);
    display_[Index(x, y)] = preview(x, y, base_[Index(x, y)], 0);
  }

  void frameAdvance() {
    for (auto& q : queues_) {
      for (auto [x, y] : q.front().adds) base_[Index(x, y)] = 0xFEFFFFFFu;
    }
    for (auto& q : queues_) {
      for (auto [x, y] : q.front().removes) base_[Index(x, y)] = 0;
    }
    for (auto& q : queues_) {
      for (auto [x, y] : q[static_cast<std::size_t>(delay_)].adds) localBase_[Index(x, y)] = 0xFEFFFFFFu;
    }
    for (auto& q : queues_) {
      for (auto [x, y] : q[static_cast<std::size_t>(delay_)].removes) localBase_[Index(x, y)] = 0;
    }
    for (auto& q : queues_) {
      for (auto [x, y] : q.front().adds) display_[Index(x, y)] = preview(x, y, base_[Index(x, y)], 1);
      for (auto [x, y] : q.front().removes) display_[Index(x, y)] = preview(x, y, base_[Index(x, y)], 1);
    }
    for (auto& q : queues_) {
      q.erase(q.begin());
      q.emplace_back();
    }
  }

  Pixels const& base() const { return base_; }
  Pixels const& localBase() const { return localBase_; }
  Pixels const& display() const { return display_; }

  static int Index(int x, int y) { return y * 256 + x; }

private:
  struct Slot {
    std::vector<std::pair<int, int>> adds;
    std::vector<std::pair<int, int>> removes;
  };

  bool play(int player, int x, int y, bool ground, int first, int last) const {
    auto const& q = queues_[static_cast<std::size_t>(player)];
    for (int s = first; s <= last; ++s) {
      for (auto const& change : q[static_cast<std::size_t>(s)].adds) {
        if (change == std::pair{x, y}) ground = true;
      }
      for (auto const& change : q[static_cast<std::size_t>(s)].removes) {
        if (change == std::pair{x, y}) ground = false;
      }
    }
    return ground;
  }

  std::uint32_t preview(int x, int y, std::uint32_t pixel, int first) const {
    auto const& q = queues_[static_cast<std::size_t>(local_)];
    bool added = false;
    bool removed = false;
    for (int s = first; s <= 2 * delay_; ++s) {
      for (auto const& change : q[static_cast<std::size_t>(s)].adds) {
        if (change == std::pair{x, y}) {
          added = true;
          removed = false;
        }
      }
      for (auto const& change : q[static_cast<std::size_t>(s)].removes) {
        if (change == std::pair{x, y}) removed = true;
      }
    }
    if (added && !removed) return 0x88FFFFFFu;
    if (added && removed) return 0x66FFFFFFu;
    if (removed && pixel != 0) return (pixel & 0xFFFFFFu) | 0x88000000u;
    return pixel;
  }

  int local_;
  int delay_;
  Pixels base_;
  Pixels localBase_;
  Pixels display_;
  std::vector<std::vector<Slot>> queues_;
};

}  // namespace testing_support
