#include <gtest/gtest.h>

#include "sim/SplitServerData.h"
#include "support/Bytes.h"

using namespace testbytes;

TEST(SplitServerData, OneLengthByteAndTheBytesForEachPlayer) {
  EXPECT_EQ(SplitServerData(Of({0x02, 0x41, 0x42, 0x00, 0x01, 0x43}), 3), (std::vector<Bytes>{{'A', 'B'}, {}, {'C'}}));
  EXPECT_EQ(SplitServerData(Of({0x01, 0x41, 0x01, 0x42, 0x99, 0x98}), 2), (std::vector<Bytes>{{'A'}, {'B'}}))
      << "bytes after the last chunk are ignored";
  EXPECT_EQ(SplitServerData(Of({0, 0}), 2), (std::vector<Bytes>{{}, {}}));
}

TEST(SplitServerData, ShortUpdatesAreNeverReadPastTheirEnd) {
  // The heap copies end exactly where the update ends, so that the sanitizer build sees an over-read.
  EXPECT_EQ(SplitServerData(Bytes{}, 3), (std::vector<Bytes>{{}, {}, {}}));
  EXPECT_EQ(SplitServerData(Of({0x01, 0x41}), 3), (std::vector<Bytes>{{'A'}, {}, {}}));
  EXPECT_EQ(SplitServerData(Of({0x05, 0x41, 0x42}), 2), (std::vector<Bytes>{{'A', 'B'}, {}})) << "cut chunk";
  EXPECT_EQ(SplitServerData(Of({0x01, 0x41, 0xFF}), 2), (std::vector<Bytes>{{'A'}, {}})) << "length byte only";
  EXPECT_EQ(SplitServerData(Of({0x01, 0x41}), 0), std::vector<Bytes>{});
  EXPECT_EQ(SplitServerData(Of({0x01, 0x41}), -2), std::vector<Bytes>{});
}
