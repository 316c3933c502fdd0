#include <gtest/gtest.h>

#include <random>
#include <utility>
#include <vector>

#include "world/ChangeQueue.h"
#include "support/ReferenceChunk.h"

using testing_support::ReferenceQueue;

namespace {

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
  using Pixels = std::vector<std::pair<int, int>>;
  ChangeQueue queue(3);
  queue.queueAddPixel(1, 2);
  queue.queueAddPixel(3, 4);
  queue.queueRemovePixel(9, 9);
  queue.advanceQueues();
  queue.queueAddPixel(7, 8);
  EXPECT_EQ(Collect(queue, 1, true), (Pixels{{1, 2}, {3, 4}}));
  EXPECT_EQ(Collect(queue, 1, false), (Pixels{{9, 9}}));
  EXPECT_EQ(Collect(queue, 2, true), (Pixels{{7, 8}}));
  EXPECT_EQ(queue.addEnd(1), 2u);
  EXPECT_EQ(queue.addEnd(2), 3u);
  EXPECT_TRUE(queue.hasChangesAfter(1));
  EXPECT_FALSE(queue.hasChangesAfter(2));
  queue.advanceQueues();
  queue.advanceQueues();
  EXPECT_EQ(Collect(queue, 0, true), (Pixels{{7, 8}}));
  queue.advanceQueues();
  EXPECT_EQ(queue.pendingPixelCount(), 0u);
  EXPECT_FALSE(queue.isPending(7, 8));
}

TEST(ChangeQueue, IdleFramesLeaveAllCountsZero) {
  for (int slots : {1, 2, 7}) {
    ChangeQueue queue(slots);
    queue.queueAddPixel(0, 0);
    queue.queueRemovePixel(255, 255);
    for (int frame = 0; frame < 50; ++frame) queue.advanceQueues();
    EXPECT_EQ(queue.slots(), slots);
    for (int s = 0; s < slots; ++s) {
      EXPECT_EQ(queue.addEnd(s) + queue.removeEnd(s), 0u) << "slot " << s;
    }
    EXPECT_EQ(queue.pendingPixelCount(), 0u);
    EXPECT_FALSE(queue.isPending(0, 0) || queue.isPending(255, 255));
  }
}

// The indexed answers against the slot-by-slot model for every slot range, on random workloads
// crowded into a few pixels so that every pixel is changed in many slots at once. The queue counts
// frames modulo 65536: one case starts just before the counter wraps, and must not notice.
TEST(ChangeQueue, MatchesSlotBySlotRulesForEveryRange) {
  struct Case {
    int slots, area, startFrame;
  };
  std::vector<Case> cases{{31, 2, 65536 - 40}};
  for (int slots : {1, 2, 3, 9, 31}) {
    for (int area : {2, 5, 40}) cases.push_back({slots, area, 0});
  }
  for (auto [slots, area, startFrame] : cases) {
    std::mt19937 random(static_cast<unsigned>(slots * 1000 + area + startFrame));
    ChangeQueue queue(slots);
    ReferenceQueue model(slots);
    for (int frame = 0; frame < startFrame; ++frame) queue.advanceQueues();
    auto const pixel = [&] {
      auto const x = static_cast<unsigned char>(random() % area);
      return std::pair{x, static_cast<unsigned char>(250 + random() % 3)};
    };
    for (int frame = 0; frame < 80; ++frame) {
      for (int c = static_cast<int>(random() % 7); c > 0; --c) {
        auto const [x, y] = pixel();
        bool const add = random() % 2 == 0;
        add ? queue.queueAddPixel(x, y) : queue.queueRemovePixel(x, y);
        model.queue(x, y, add);
      }
      for (int probe = 0; probe < 6; ++probe) {
        auto const [x, y] = pixel();
        for (int first = 0; first < slots; ++first) {
          for (int last = first - 1; last < slots; ++last) {
            auto const where = [&] {
              return ::testing::Message() << slots << " slots from frame " << startFrame << ", frame " << frame
                                          << ", pixel " << int{x} << "," << int{y} << ", range " << first << ".."
                                          << last;
            };
            for (bool base : {false, true}) {
              ASSERT_EQ(queue.isGround(x, y, base, first, last), model.isGround(x, y, base, first, last)) << where();
            }
            for (std::uint32_t shown : {0u, 0xFE00FF00u, 0x3300AAFFu}) {
              ASSERT_EQ(queue.modifiedPixel(x, y, shown, first, last), model.modified(x, y, shown, first, last))
                  << where();
            }
          }
        }
      }
      queue.advanceQueues();
      model.advance();
    }
  }
}
