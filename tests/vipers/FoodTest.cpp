#include "vipers/Food.h"

#include <gtest/gtest.h>

#include <random>

namespace {

using P = Vec2<AviatorCoord>;

TEST(Food, TouchesTheClosedSquareRoundTheItem) {
  Vec2<WorldCoord> const item{100, 100};
  P const c = food::Centre(item);
  ASSERT_EQ(c, (P{25728, 25728}));
  struct Case {
    P a, b;  // relative to the centre
    bool touches;
  } const cases[] = {
      {{-10000, 0}, {10000, 0}, true},          // straight through
      {{10000, 0}, {-10000, 0}, true},          // the other way
      {{-10000, 6400}, {10000, 6400}, true},    // along the top edge
      {{-10000, 6401}, {10000, 6401}, false},   // one unit above it
      {{10000, -6401}, {-10000, -6401}, false}, // one unit below it, leftward
      {{-10000, 0}, {-6401, 0}, false},         // stops one unit short
      {{-10000, 0}, {-6400, 0}, true},          // stops on the edge
      {{-10000, 2800}, {-2800, 10000}, true},   // grazes the top left corner exactly
      {{-10000, 3000}, {-3000, 10000}, false},  // passes that corner outside
      {{-10000, 0}, {0, 10000}, true},          // cuts the left edge at 3600
      {{0, 20000}, {0, -20000}, true},          // straight down through it
      {{6401, 20000}, {6401, -20000}, false},   // down beside it
      {{100, 100}, {100, 100}, true},           // standing inside
  };
  for (Case const& k : cases) {
    EXPECT_EQ(food::Touches(c + k.a, c + k.b, item), k.touches)
        << "(" << k.a.x << "," << k.a.y << ")->(" << k.b.x << "," << k.b.y << ")";
  }
}

// An independent exact formulation: a segment meets a closed box when their bounding boxes overlap
// and the box's corners do not all lie strictly on one side of the segment's line.
bool SeparatingAxes(P a, P b, long long h) {
  if (std::max(a.x, b.x) < -h || std::min(a.x, b.x) > h || std::max(a.y, b.y) < -h || std::min(a.y, b.y) > h) {
    return false;
  }
  int positive = 0, negative = 0;
  for (long long x : {-h, h}) {
    for (long long y : {-h, h}) {
      long long const side = (static_cast<long long>(b.x) - a.x) * (y - a.y) - (static_cast<long long>(b.y) - a.y) * (x - a.x);
      positive += side > 0;
      negative += side < 0;
    }
  }
  return positive < 4 && negative < 4;
}

TEST(Food, AgreesWithSeparatingAxesOnRandomSegments) {
  std::mt19937 random(3);
  Vec2<WorldCoord> const item{40, 70};
  P const c = food::Centre(item);
  int touching = 0;
  for (int i = 0; i < 200000; ++i) {
    // Small spans near the square make edge and corner cases common.
    int const span = i % 2 == 0 ? 9000 : 14000;
    P a{static_cast<int>(random() % (2 * span + 1)) - span, static_cast<int>(random() % (2 * span + 1)) - span};
    P b = i % 3 == 0 ? P{a.x, static_cast<int>(random() % 30001) - 15000}
                     : P{static_cast<int>(random() % (2 * span + 1)) - span, static_cast<int>(random() % (2 * span + 1)) - span};
    bool const expected = SeparatingAxes(a, b, food::kHalfSize);
    ASSERT_EQ(food::Touches(c + a, c + b, item), expected) << a.x << "," << a.y << " -> " << b.x << "," << b.y;
    touching += expected;
  }
  EXPECT_GT(touching, 20000);
  EXPECT_LT(touching, 180000);
}

struct FakeMap {
  int width = 1024;
  int height = 1024;
  int blockedFromX = 1 << 30;
  bool isBlocked(int x, int y) const { return x < 0 || y < 0 || x >= width || y >= height || x >= blockedFromX; }
};

TEST(Food, PlacementFollowsTheSeededGeneratorPastBlockedPixels) {
  // Worked out separately: seed 0x90683201, then xorshift pairs (949, 639), (942, 364), (248, 913).
  std::uint32_t const seed = food::Seed({{102528, 102528}, {160000, -5}}, 180);
  EXPECT_EQ(seed, 0x90683201u);
  EXPECT_EQ(food::RandomFreePixel(FakeMap{}, seed), (Vec2<WorldCoord>{949, 639}));
  EXPECT_EQ(food::RandomFreePixel(FakeMap{.blockedFromX = 900}, seed), (Vec2<WorldCoord>{248, 913}));
  // A map without a free pixel gives up instead of searching for ever.
  EXPECT_EQ(food::RandomFreePixel(FakeMap{.blockedFromX = 0}, seed), std::nullopt);
  EXPECT_EQ(food::RandomFreePixel(FakeMap{.width = 0}, seed), std::nullopt);
  // Positions that cancel out would give seed 0, which xorshift never leaves.
  EXPECT_NE(food::Seed({{1, 1}, {1, 1}}, 0), 0u);
  EXPECT_TRUE(food::RandomFreePixel(FakeMap{}, food::Seed({}, 0)).has_value());
}

}  // namespace
