#include <gtest/gtest.h>

#include <map>
#include <random>

#include "world/PendingPixelTable.h"

// Random inserts and erasures against std::map, with keys crowded so that probe runs wrap and
// backward-shift deletion has to move entries across the end of the table.
TEST(PendingPixelTable, AgreesWithAnOrderedMapUnderChurn) {
  for (std::uint32_t keySpace : {16u, 300u, 65536u}) {
    std::mt19937 random(keySpace);
    PendingPixelTable table;
    std::map<std::uint32_t, std::uint32_t> expected;
    for (int step = 0; step < 40000; ++step) {
      std::uint32_t const key = random() % keySpace;
      if (random() % 3 != 0) {
        bool created = false;
        PendingPixel& entry = table.findOrInsert(key, &created);
        ASSERT_EQ(created, !expected.contains(key));
        if (created) {
          EXPECT_EQ(entry.latestFrame, 0u);
          EXPECT_FALSE(entry.hasPrevious);
        }
        entry.latestFrame = static_cast<std::uint32_t>(step);
        expected[key] = static_cast<std::uint32_t>(step);
      } else {
        table.erase(key);
        expected.erase(key);
      }
      ASSERT_EQ(table.size(), expected.size());
      if (step % 97 == 0) {
        for (std::uint32_t k = 0; k < std::min(keySpace, 2000u); ++k) {
          PendingPixel const* found = std::as_const(table).find(k);
          auto it = expected.find(k);
          ASSERT_EQ(found != nullptr, it != expected.end()) << "key " << k;
          if (found != nullptr) {
            ASSERT_EQ(found->latestFrame, it->second);
          }
        }
      }
    }
    EXPECT_LE(table.size() * 2, table.capacity());
  }
}
