#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include "net/WireEncoding.h"
#include "support/Bytes.h"

using namespace testbytes;

TEST(WireEncoding, StringIsItsCountThenItsBytes) {
  EXPECT_EQ(Encode(std::string("abc")), Of({0x03, 0, 0, 0, 0, 0, 0, 0, 0x61, 0x62, 0x63}));
  EXPECT_EQ(Encode(std::string()), Count(0));
  EXPECT_EQ(Encode(Bytes{}), Count(0));
  EXPECT_EQ(Encode(std::vector<bool>{}), Count(0));

  std::string text = "old contents";
  ReadOutcome const outcome = Decode(Concat({Count(3), Of({'x', 'y', 'z', 0x99})}), text);
  EXPECT_TRUE(outcome.ok);
  EXPECT_EQ(text, "xyz");
  EXPECT_EQ(outcome.consumed, 11u);
  EXPECT_EQ(outcome.remaining, 1u);
}

TEST(WireEncoding, IntegersAreLittleEndianAndSignedValuesKeepTheirSign) {
  EXPECT_EQ(Encode(std::vector<unsigned short>{0x1234, 0xFFFF}), Concat({Count(2), Of({0x34, 0x12, 0xFF, 0xFF})}));
  EXPECT_EQ(Encode(std::vector<short>{-1, -2}), Concat({Count(2), Of({0xFF, 0xFF, 0xFE, 0xFF})}));
  EXPECT_EQ(Encode(std::vector<std::vector<long long>>{{-2}}),
            Concat({Count(1), Count(1), Of({0xFE, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF})}));

  std::vector<short> shorts;
  ASSERT_TRUE(Decode(Concat({Count(2), Of({0x00, 0x80, 0xFF, 0x7F})}), shorts).ok);
  EXPECT_EQ(shorts, (std::vector<short>{-32768, 32767}));
}

TEST(WireEncoding, VectorOfBoolIsOneWholeByteEachAndAnyNonZeroIsTrue) {
  EXPECT_EQ(Encode(std::vector<bool>{true, false, true}), Concat({Count(3), Of({1, 0, 1})}));

  std::vector<bool> flags;
  ASSERT_TRUE(Decode(Concat({Count(3), Of({0x01, 0x07, 0x00})}), flags).ok);
  EXPECT_EQ(flags, (std::vector<bool>{true, true, false}));
}

TEST(WireEncoding, CountAboveTheBytesLeftFailsBeforeTheTargetChangesSize) {
  std::vector<bool> flags{true, false};
  ReadOutcome const outcome = Decode(Concat({Count(5), Of({1, 1, 1, 1})}), flags);
  EXPECT_FALSE(outcome.ok);
  EXPECT_EQ(flags, (std::vector<bool>{true, false}));
  EXPECT_EQ(outcome.consumed, 8u) << "the count itself is consumed";

  std::string text = "kept";
  std::vector<std::string> strings{"a"};
  EXPECT_FALSE(Decode(Concat({Count(5), Of({'a', 'b', 'c', 'd'})}), text).ok);
  EXPECT_FALSE(Decode(Concat({Count(5), Of({0, 0, 0, 0})}), strings).ok);
  EXPECT_EQ(text, "kept");
  EXPECT_EQ(strings, std::vector<std::string>{"a"});

  // Three 2-byte numbers promised, four bytes given: the count is compared with the bytes, not with
  // count times the width, so it passes; the vector is resized to 3 and the third element fails its
  // own width check.
  std::vector<unsigned short> numbers{9, 9, 9, 9, 9};
  ReadOutcome const perElement = Decode(Concat({Count(3), Of({0x01, 0x00, 0x02, 0x00})}), numbers);
  EXPECT_FALSE(perElement.ok);
  EXPECT_EQ(numbers, (std::vector<unsigned short>{1, 2, 9})) << "resized to 3; the unread third keeps its old value";
  EXPECT_EQ(perElement.consumed, 12u);
  EXPECT_EQ(perElement.remaining, 0u);
}

TEST(WireEncoding, HugeCountsNeverAllocate) {
  Bytes const hugeCount = Concat({Count(0xFFFFFFFFFFFFFFF0ull), Of({1, 2, 3})});
  auto expectRefused = [&](auto target) {
    EXPECT_FALSE(Decode(hugeCount, target).ok);
    EXPECT_EQ(target.capacity(), decltype(target){}.capacity());
  };
  expectRefused(std::string());
  expectRefused(Bytes{});
  expectRefused(std::vector<bool>{});
  expectRefused(std::vector<std::string>{});
  expectRefused(std::vector<std::vector<long long>>{});

  // The same inside a nested vector: the outer count passes, the inner one doesn't.
  std::vector<std::vector<long long>> rows;
  EXPECT_FALSE(Decode(Concat({Count(1), Count(1ull << 40), Of({0})}), rows).ok);
  ASSERT_EQ(rows.size(), 1u);
  EXPECT_EQ(rows[0].capacity(), 0u);
}

TEST(WireEncoding, OptionalFlagZeroIsAbsentAnythingElsePresentAndTruncationFails) {
  EXPECT_EQ(Encode(std::optional<unsigned short>{}), Of({0}));
  EXPECT_EQ(Encode(std::optional<unsigned short>{0x0102}), Of({1, 0x02, 0x01}));

  std::optional<unsigned short> number;
  ASSERT_TRUE(Decode(Of({2, 0x34, 0x12}), number).ok);
  EXPECT_EQ(number, 0x1234);

  ReadOutcome const outcome = Decode(Of({0, 0x34, 0x12}), number);
  EXPECT_TRUE(outcome.ok);
  EXPECT_FALSE(number.has_value()) << "an absent optional clears the old value";
  EXPECT_EQ(outcome.consumed, 1u);

  EXPECT_FALSE(Decode(Bytes{}, number).ok);
  EXPECT_FALSE(Decode(Of({1, 0x05}), number).ok);
  std::string text;
  EXPECT_FALSE(Decode(Of({3, 0, 0, 0, 0, 0, 0}), text).ok) << "a count cut short";
}

TEST(WireEncoding, ContainersRoundTripOverStaleContents) {
  EXPECT_TRUE(RoundTrips(std::vector<std::string>{"", "one", std::string("\0zero\xff", 6)}, {"stale", "stale", "stale", "stale"}));
  EXPECT_TRUE(RoundTrips(std::vector<Bytes>{{}, {0}, {1, 2, 3}}));
  EXPECT_TRUE(RoundTrips(std::vector<std::vector<long long>>{{}, {1, -1, INT64_MIN, INT64_MAX}, {42}}, {{7, 7}}));
  EXPECT_TRUE(RoundTrips(std::vector<unsigned short>{0, 1, 65535}));
  EXPECT_TRUE(RoundTrips(std::vector<short>{-1, 0, 3, -32768}));
}
