#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>

#include "aviators/FixedTrig.h"
#include "aviators/IntegerSqrt.h"

namespace {

// Every entry of the stored table from its rule, round(sin(i·π/256)·0x7FFFFFFF), computed here with long
// double (64-bit mantissa: error below 1e-9 on these values). Each value must also lie clearly away from
// a rounding boundary, so that this precision decides the rounding.
TEST(FixedTrig, SineTableFollowsFromItsRule) {
  long double const pi = 3.141592653589793238462643383279502884L;
  ASSERT_EQ(k_sine_table.size(), 129u);
  for (int i = 0; i <= 128; ++i) {
    long double const exact = std::sin(static_cast<long double>(i) * pi / 256.0L) * 2147483647.0L;
    long double const fraction = exact - std::floor(exact);
    EXPECT_GT(std::fabs(fraction - 0.5L), 1e-6L) << "entry " << i << " too close to a rounding boundary";
    EXPECT_EQ(k_sine_table[static_cast<std::size_t>(i)], static_cast<std::int32_t>(std::llround(exact)))
        << "entry " << i;
  }
  EXPECT_EQ(k_sine_table[0], 0);
  EXPECT_EQ(k_sine_table[128], 0x7FFFFFFF);
}

TEST(FixedTrig, QuadrantsSymmetryAndDroppedLowBits) {
  struct Case {
    std::uint16_t angle;
    std::int32_t sine;
    std::int32_t cosine;
  };
  Case const cases[] = {
      {0x0000, 0, 0x7FFFFFFF},       {0x4000, 0x7FFFFFFF, 0},  {0x8000, 0, -0x7FFFFFFF},
      {0xC000, -0x7FFFFFFF, 0},      {0x2000, 1518500249, 1518500249},
      {0xA000, -1518500249, -1518500249},
  };
  for (Case const& c : cases) {
    EXPECT_EQ(FixedSine(c.angle), c.sine) << std::hex << c.angle;
    EXPECT_EQ(FixedCosine(c.angle), c.cosine) << std::hex << c.angle;
  }
  for (unsigned a = 0; a < 65536; ++a) {
    auto const angle = static_cast<std::uint16_t>(a);
    // The low seven bits are dropped from the index; in the quadrants that mirror (bit 14 set) the index
    // is taken from 16384 - r, so there the blocks of one value end at multiples of 128 instead.
    if ((a & 0x4000) == 0) {
      ASSERT_EQ(FixedSine(angle), FixedSine(static_cast<std::uint16_t>(a & ~0x7Fu))) << a;
    } else if ((a & 0x3FFF) != 0) {
      ASSERT_EQ(FixedSine(angle), FixedSine(static_cast<std::uint16_t>(((a - 1) & ~0x7Fu) + 1))) << a;
    }
    // sin(-a) = -sin(a) and sin(π - a) = sin(a), except where dropping the low bits breaks the mirror.
    if ((a & 0x7F) == 0) {
      ASSERT_EQ(FixedSine(static_cast<std::uint16_t>(65536 - a)), -FixedSine(angle)) << a;
      ASSERT_EQ(FixedSine(static_cast<std::uint16_t>(0x8000 - a)), FixedSine(angle)) << a;
    }
  }
}

TEST(FixedTrig, DirectionVectorTruncatesTowardZero) {
  struct Case {
    std::uint16_t angle;
    std::int32_t length;
    Vec2<AviatorCoord> expected;
  };
  Case const cases[] = {
      {0x0000, 100, {100, 0}},
      {0x2000, 100, {70, 70}},     // 100·sin 45° = 70.7, truncated
      {0xA000, 100, {-70, -70}},   // truncation toward zero, not floor
      {0x4000, 102400, {0, 102400}},
      {0x8000, 7, {-7, 0}},
      {0x6000, 2147483647, {-1518500249, 1518500249}},
  };
  for (Case const& c : cases) {
    EXPECT_EQ(DirectionVector(c.angle, c.length), c.expected) << std::hex << c.angle << " " << std::dec << c.length;
  }
}

TEST(IntegerSqrt, FloorOfTheRootAtTheEdgesOf32And64Bits) {
  struct Case {
    std::uint64_t n;
    std::uint64_t root;
  };
  Case const cases[] = {
      {0, 0},
      {1, 1},
      {2, 1},
      {3, 1},
      {4, 2},
      {99, 9},
      {100, 10},
      {0xFFFFFFFFull, 65535},
      {0x100000000ull, 65536},
      {0x3FFFFFFFFFFFFFFFull, 0x7FFFFFFFull},
      {0x4000000000000000ull, 0x80000000ull},
      {0xFFFFFFFE00000001ull, 0xFFFFFFFFull},      // (2^32 - 1)²
      {0xFFFFFFFE00000000ull, 0xFFFFFFFEull},      // one below it
      {0xFFFFFFFFFFFFFFFFull, 0xFFFFFFFFull},
  };
  for (Case const& c : cases) {
    EXPECT_EQ(IntegerSqrt(c.n), c.root) << c.n;
  }
  // Around every perfect square of a spread of roots, up to the largest: r² - 1, r², r² + 2r.
  for (std::uint64_t r = 1; r < 0xFFFFFFFFull; r = r * 3 + 1) {
    std::uint64_t const square = r * r;
    EXPECT_EQ(IntegerSqrt(square), r);
    EXPECT_EQ(IntegerSqrt(square - 1), r - 1);
    EXPECT_EQ(IntegerSqrt(square + 2 * r), r);
  }
}

}  // namespace
