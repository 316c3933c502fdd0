#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include "WireEncoding.h"
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
  EXPECT_FALSE(Decode(Concat({Count(5), Of({'a', 'b', 'c', 'd'})}), text).ok);
  EXPECT_EQ(text, "kept");

  std::vector<std::string> strings{"a"};
  EXPECT_FALSE(Decode(Concat({Count(5), Of({0, 0, 0, 0})}), strings).ok);
  EXPECT_EQ(strings, std::vector<std::string>{"a"});
}

TEST(WireEncoding, CountIsComparedWithBytesNotWithCountTimesElementSize) {
  // Three 2-byte numbers promised, four bytes given: the count passes, the vector is resized to 3 and
  // the third element fails its own width check.
  std::vector<unsigned short> numbers{9, 9, 9, 9, 9};
  ReadOutcome const outcome = Decode(Concat({Count(3), Of({0x01, 0x00, 0x02, 0x00})}), numbers);
  EXPECT_FALSE(outcome.ok);
  EXPECT_EQ(numbers, (std::vector<unsigned short>{1, 2, 9})) << "resized to 3; the unread third keeps its old value";
  EXPECT_EQ(outcome.consumed, 12u);
  EXPECT_EQ(outcome.remaining, 0u);
}

TEST(WireEncoding, HugeCountsNeverAllocate) {
  Bytes const hugeCount = Concat({Count(0xFFFFFFFFFFFFFFF0ull), Of({1, 2, 3})});
  std::string text;
  Bytes bytes;
  std::vector<bool> flags;
  std::vector<std::string> strings;
  std::vector<std::vector<long long>> rows;
  EXPECT_FALSE(Decode(hugeCount, text).ok);
  EXPECT_FALSE(Decode(hugeCount, bytes).ok);
  EXPECT_FALSE(Decode(hugeCount, flags).ok);
  EXPECT_FALSE(Decode(hugeCount, strings).ok);
  EXPECT_FALSE(Decode(hugeCount, rows).ok);
  EXPECT_EQ(text.capacity(), std::string().capacity());
  EXPECT_EQ(bytes.capacity(), 0u);
  EXPECT_EQ(strings.capacity(), 0u);
  EXPECT_EQ(rows.capacity(), 0u);

  // The same inside a nested vector: the outer count passes, the inner one doesn't.
  EXPECT_FALSE(Decode(Concat({Count(1), Count(1ull << 40), Of({0})}), rows).ok);
  ASSERT_EQ(rows.size(), 1u);
  EXPECT_EQ(rows[0].capacity(), 0u);
}

TEST(WireEncoding, TruncatedCountOrFieldFails) {
  std::string text;
  EXPECT_FALSE(Decode(Of({3, 0, 0, 0, 0, 0, 0}), text).ok);
  std::optional<unsigned short> number;
  EXPECT_FALSE(Decode(Bytes{}, number).ok);
  EXPECT_FALSE(Decode(Of({1, 0x05}), number).ok);
}

TEST(WireEncoding, OptionalFlagZeroIsAbsentAnythingElsePresent) {
  EXPECT_EQ(Encode(std::optional<unsigned short>{}), Of({0}));
  EXPECT_EQ(Encode(std::optional<unsigned short>{0x0102}), Of({1, 0x02, 0x01}));

  std::optional<unsigned short> number;
  ASSERT_TRUE(Decode(Of({2, 0x34, 0x12}), number).ok);
  EXPECT_EQ(number, 0x1234);

  ReadOutcome const outcome = Decode(Of({0, 0x34, 0x12}), number);
  EXPECT_TRUE(outcome.ok);
  EXPECT_FALSE(number.has_value()) << "an absent optional clears the old value";
  EXPECT_EQ(outcome.consumed, 1u);
}

TEST(WireEncoding, ContainersRoundTrip) {
  std::vector<std::string> const strings{"", "one", std::string("\0zero\xff", 6)};
  std::vector<Bytes> const byteVectors{{}, {0}, {1, 2, 3}};
  std::vector<std::vector<long long>> const rows{{}, {1, -1, INT64_MIN, INT64_MAX}, {42}};
  std::vector<unsigned short> const numbers{0, 1, 65535};
  std::vector<short> const slots{-1, 0, 3, -32768};

  std::vector<std::string> stringsRead{"stale", "stale", "stale", "stale"};
  std::vector<Bytes> byteVectorsRead;
  std::vector<std::vector<long long>> rowsRead{{7, 7}};
  std::vector<unsigned short> numbersRead;
  std::vector<short> slotsRead;
  for (auto [ok, consumed, remaining] : {Decode(Encode(strings), stringsRead), Decode(Encode(byteVectors), byteVectorsRead),
                                         Decode(Encode(rows), rowsRead), Decode(Encode(numbers), numbersRead),
                                         Decode(Encode(slots), slotsRead)}) {
    EXPECT_TRUE(ok);
    EXPECT_EQ(remaining, 0u);
    EXPECT_GT(consumed, 0u);
  }
  EXPECT_EQ(stringsRead, strings);
  EXPECT_EQ(byteVectorsRead, byteVectors);
  EXPECT_EQ(rowsRead, rows);
  EXPECT_EQ(numbersRead, numbers);
  EXPECT_EQ(slotsRead, slots);
}
