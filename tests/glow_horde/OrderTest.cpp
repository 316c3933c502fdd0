#include <gtest/gtest.h>

#include <cstdint>
#include <random>
#include <vector>

#include "glow_horde/ActivityAvailabilities.h"
#include "glow_horde/Order.h"

TEST(OrderBytes, EncodingIsSevenLittleEndianBytesInFieldOrder) {
  Order const order{0x0102, 0xA0B0, LemmingActivity::DigUpwards, LemmingActivityTrigger::AfterTurning};
  std::vector<unsigned char> const expected = {0x02, 0x01, 0xB0, 0xA0, 0x06, 0x00, 0x03};
  EXPECT_EQ(order.toBytes(), expected);
  EXPECT_EQ(Order::decode(expected), order);
}

TEST(OrderBytes, AnythingButSevenBytesOfKnownValuesIsNoOrder) {
  using Bytes = std::vector<unsigned char>;
  Bytes const good = {0x05, 0x00, 0x07, 0x00, 0x04, 0x00, 0x02};
  EXPECT_EQ(Order::decode(good), (Order{5, 7, LemmingActivity::DigDown, LemmingActivityTrigger::BeforeFalling}));

  std::vector<Bytes> bad = {
      {0x05, 0x00, 0x07, 0x00, 0x04, 0x00, 0x02, 0x00}, // eight bytes
      {0x05, 0x00, 0x07, 0x00, 0x07, 0x00, 0x02},       // activity 7
      {0x05, 0x00, 0x07, 0x00, 0x00, 0x01, 0x02},       // activity 256
      {0x05, 0x00, 0x07, 0x00, 0x04, 0x00, 0x04},       // trigger 4
  };
  for (std::size_t size = 0; size < 7; ++size) {
    bad.emplace_back(good.begin(), good.begin() + static_cast<std::ptrdiff_t>(size));
  }
  for (Bytes const& bytes : bad) {
    EXPECT_FALSE(Order::decode(bytes).has_value()) << ::testing::PrintToString(bytes);
  }
}

TEST(OrderBytes, RandomBytesDecodeSafelyAndValidOnesRoundTrip) {
  std::mt19937 random(1234);
  std::uniform_int_distribution<int> byte(0, 255);
  std::uniform_int_distribution<int> length(0, 12);
  int decoded = 0;
  for (int i = 0; i < 20000; ++i) {
    std::vector<unsigned char> bytes(static_cast<std::size_t>(length(random)));
    for (auto& b : bytes) {
      b = static_cast<unsigned char>(byte(random));
    }
    if (i % 2 == 0 && bytes.size() == 7) { // keep plenty of decodable ones
      bytes[4] %= 7;
      bytes[5] = 0;
      bytes[6] %= 4;
    }
    auto const order = Order::decode(bytes);
    bool const valid = bytes.size() == 7 && bytes[5] == 0 && bytes[4] < 7 && bytes[6] < 4;
    ASSERT_EQ(order.has_value(), valid);
    if (order) {
      ++decoded;
      EXPECT_EQ(order->toBytes(), bytes);
    }
  }
  EXPECT_GT(decoded, 100);
}

TEST(ActivityAvailabilities, HashedDataIsSevenFourByteCountsInActivityOrder) {
  ActivityAvailabilities availabilities;
  availabilities[LemmingActivity::Bridge] = 13;
  availabilities[LemmingActivity::DigUpwards] = -2;
  availabilities[LemmingActivity::Block] = 0x01020304;
  std::vector<unsigned char> out;
  availabilities.serialiseHashedData(out);
  std::vector<unsigned char> const expected = {
      13, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 4, 3, 2, 1, 0, 0, 0, 0, 0, 0, 0, 0, 0xFE, 0xFF, 0xFF, 0xFF,
  };
  EXPECT_EQ(out, expected);
}
