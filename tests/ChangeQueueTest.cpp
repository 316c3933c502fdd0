#include <gtest/gtest.h>

#include <random>
#include <utility>
#include <vector>

#include "ChangeQueue.h"

namespace {

// Slot-by-slot model of one queue, straight from the rules: adds, then removes, slot after slot.
struct ModelQueue {
  struct Slot {
    std::vector<std::pair<int, int>> adds, removes;
  };
  std::vector<Slot> slots;
  explicit ModelQueue(int n) : slots(static_cast<std::size_t>(n)) {}

  void add(int x, int y) { slots.back().adds.emplace_back(x, y); }
  void remove(int x, int y) { slots.back().removes.emplace_back(x, y); }
  void advance() {
    slots.erase(slots.begin());
    slots.emplace_back();
  }
  bool isGround(int x, int y, bool ground, int first, int last) const {
    for (int s = first; s <= last; ++s) {
      for (auto const& c : slots[static_cast<std::size_t>(s)].adds) ground = ground || c == std::pair{x, y};
      for (auto const& c : slots[static_cast<std::size_t>(s)].removes) ground = ground && c != std::pair{x, y};
    }
    return ground;
  }
  std::uint32_t modified(int x, int y, std::uint32_t pixel, int first, int last) const {
    bool added = false, removed = false;
    for (int s = first; s <= last; ++s) {
      for (auto const& c : slots[static_cast<std::size_t>(s)].adds) {
        if (c == std::pair{x, y}) added = true, removed = false;
      }
      for (auto const& c : slots[static_cast<std::size_t>(s)].removes) {
        if (c == std::pair{x, y}) removed = true;
      }
    }
    if (added) return removed ? 0x66FFFFFFu : 0x88FFFFFFu;
    if (removed && pixel != 0) return (pixel & 0xFFFFFFu) | 0x88000000u;
    return pixel;
  }
};

std::vector<std::pair<int, int>> Collect(ChangeQueue const& queue, int slot, bool adds) {
  std::vector<std::pair<int, int>> out;
  auto const record = [&](unsigned char x, unsigned char y) { out.emplace_back(x, y); };
  if (adds) {
    queue.applyPendingAdds(slot, record);
  } else {
    queue.applyPendingRemoves(slot, record);
  }
  return out;
}

}  // namespace

TEST(ChangeQueue, WithinASlotRemoveBeatsAddAndAcrossSlotsTheLaterWins) {
  ChangeQueue queue(3);
  queue.queueAddPixel(5, 6);
  queue.queueRemovePixel(5, 6);
  queue.advanceQueues();
  queue.queueAddPixel(5, 6);
  // Slot 1: add and remove; slot 2: add.
  EXPECT_FALSE(queue.isGround(5, 6, true, 1, 1));
  EXPECT_TRUE(queue.isGround(5, 6, false, 1, 2));
  EXPECT_TRUE(queue.isGround(5, 6, false, 2, 2));
  EXPECT_TRUE(queue.isGround(5, 6, true, 0, 0));    // slot 0 is empty
  EXPECT_FALSE(queue.isGround(5, 6, false, 2, 1));  // an empty range leaves the base
  EXPECT_TRUE(queue.isGround(5, 6, true, 2, 1));
  EXPECT_FALSE(queue.isGround(5, 7, false, 0, 2));  // another pixel isn't touched
}

TEST(ChangeQueue, PreviewColoursFollowTheFlags) {
  ChangeQueue queue(4);
  queue.queueAddPixel(1, 1);
  queue.queueRemovePixel(2, 2);
  queue.queueRemovePixel(3, 3);
  queue.advanceQueues();
  queue.queueRemovePixel(1, 1);  // added earlier, removed later: both flags
  EXPECT_EQ(queue.modifiedPixel(1, 1, 0xFE123456u, 0, 3), 0x66FFFFFFu);
  EXPECT_EQ(queue.modifiedPixel(1, 1, 0xFE123456u, 0, 2), 0x88FFFFFFu);  // only the add is in range
  EXPECT_EQ(queue.modifiedPixel(2, 2, 0xFE123456u, 0, 3), 0x88123456u);
  EXPECT_EQ(queue.modifiedPixel(3, 3, 0x00000000u, 0, 3), 0x00000000u);  // removing nothing shows nothing
  EXPECT_EQ(queue.modifiedPixel(4, 4, 0xFE123456u, 0, 3), 0xFE123456u);
  EXPECT_EQ(queue.modifiedPixel(2, 2, 0xFE123456u, 3, 2), 0xFE123456u);
}

TEST(ChangeQueue, SlotsAreVisitedInOrderQueuedAndDroppedFromTheFront) {
  ChangeQueue queue(3);
  queue.queueAddPixel(1, 2);
  queue.queueAddPixel(3, 4);
  queue.queueRemovePixel(9, 9);
  queue.advanceQueues();
  queue.queueAddPixel(7, 8);
  EXPECT_EQ(Collect(queue, 1, true), (std::vector<std::pair<int, int>>{{1, 2}, {3, 4}}));
  EXPECT_EQ(Collect(queue, 1, false), (std::vector<std::pair<int, int>>{{9, 9}}));
  EXPECT_EQ(Collect(queue, 2, true), (std::vector<std::pair<int, int>>{{7, 8}}));
  EXPECT_EQ(queue.addEnd(1), 2u);
  EXPECT_EQ(queue.addEnd(2), 3u);
  EXPECT_TRUE(queue.hasChangesAfter(1));
  EXPECT_FALSE(queue.hasChangesAfter(2));
  queue.advanceQueues();
  queue.advanceQueues();
  EXPECT_EQ(Collect(queue, 0, true), (std::vector<std::pair<int, int>>{{7, 8}}));
  queue.advanceQueues();
  EXPECT_EQ(queue.pendingPixelCount(), 0u);
  EXPECT_FALSE(queue.isPending(7, 8));
}

TEST(ChangeQueue, IdleFramesLeaveAllCountsZero) {
  for (int slots : {1, 2, 7}) {
    ChangeQueue queue(slots);
    queue.queueAddPixel(0, 0);
    queue.queueRemovePixel(255, 255);
    for (int frame = 0; frame < 50; ++frame) {
      queue.advanceQueues();
    }
    EXPECT_EQ(queue.slots(), slots);
    for (int s = 0; s < slots; ++s) {
      EXPECT_EQ(queue.addEnd(s), 0u);
      EXPECT_EQ(queue.removeEnd(s), 0u);
    }
    EXPECT_EQ(queue.pendingPixelCount(), 0u);
    EXPECT_FALSE(queue.isPending(0, 0));
    EXPECT_FALSE(queue.isPending(255, 255));
  }
}

// The indexed answers against the slot-by-slot model for every slot range, on random workloads
// crowded into a few pixels so that every pixel is changed in many slots at once.
TEST(ChangeQueue, MatchesSlotBySlotRulesForEveryRange) {
  for (int slots : {1, 2, 3, 9, 31}) {
    for (int area : {2, 5, 40}) {
      std::mt19937 random(static_cast<unsigned>(slots * 1000 + area));
      ChangeQueue queue(slots);
      ModelQueue model(slots);
      for (int frame = 0; frame < 80; ++frame) {
        int const changes = static_cast<int>(random() % 7);
        for (int c = 0; c < changes; ++c) {
          int const x = static_cast<int>(random() % area);
          int const y = 250 + static_cast<int>(random() % 3);
          if (random() % 2 == 0) {
            queue.queueAddPixel(static_cast<unsigned char>(x), static_cast<unsigned char>(y));
            model.add(x, y);
          } else {
            queue.queueRemovePixel(static_cast<unsigned char>(x), static_cast<unsigned char>(y));
            model.remove(x, y);
          }
        }
        for (int probe = 0; probe < 6; ++probe) {
          int const x = static_cast<int>(random() % area);
          int const y = 250 + static_cast<int>(random() % 3);
          {
            for (int first = 0; first < slots; ++first) {
              for (int last = first - 1; last < slots; ++last) {
                auto const ux = static_cast<unsigned char>(x);
                auto const uy = static_cast<unsigned char>(y);
                for (bool base : {false, true}) {
                  ASSERT_EQ(queue.isGround(ux, uy, base, first, last), model.isGround(x, y, base, first, last))
                      << "slots " << slots << " frame " << frame << " pixel " << x << "," << y << " range " << first
                      << ".." << last;
                }
                for (std::uint32_t pixel : {0u, 0xFE00FF00u, 0x3300AAFFu}) {
                  ASSERT_EQ(queue.modifiedPixel(ux, uy, pixel, first, last), model.modified(x, y, pixel, first, last))
                      << "slots " << slots << " frame " << frame << " pixel " << x << "," << y << " range " << first
                      << ".." << last;
                }
              }
            }
          }
        }
        queue.advanceQueues();
        model.advance();
      }
    }
  }
}

// The queue counts frames modulo 65536; answers across the wrap must not change.
TEST(ChangeQueue, AnswersStayRightWhenTheFrameCounterWraps) {
  constexpr int kSlots = 31;
  ChangeQueue queue(kSlots);
  ModelQueue model(kSlots);
  for (int frame = 0; frame < 65536 - 40; ++frame) {
    queue.advanceQueues();
  }
  std::mt19937 random(5);
  for (int frame = 0; frame < 120; ++frame) {
    for (int c = 0; c < 4; ++c) {
      int const x = static_cast<int>(random() % 3);
      if (random() % 2 == 0) {
        queue.queueAddPixel(static_cast<unsigned char>(x), 0);
        model.add(x, 0);
      } else {
        queue.queueRemovePixel(static_cast<unsigned char>(x), 0);
        model.remove(x, 0);
      }
    }
    for (int x = 0; x < 3; ++x) {
      for (auto [first, last] : {std::pair{0, kSlots - 2}, std::pair{15, kSlots - 2}, std::pair{0, kSlots - 1},
                                 std::pair{1, kSlots - 1}}) {
        ASSERT_EQ(queue.isGround(static_cast<unsigned char>(x), 0, false, first, last),
                  model.isGround(x, 0, false, first, last))
            << "frame " << frame;
        ASSERT_EQ(queue.modifiedPixel(static_cast<unsigned char>(x), 0, 0xFE000001u, first, last),
                  model.modified(x, 0, 0xFE000001u, first, last))
            << "frame " << frame;
      }
    }
    queue.advanceQueues();
    model.advance();
  }
}
