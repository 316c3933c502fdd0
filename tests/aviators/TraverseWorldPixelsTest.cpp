#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <random>
#include <vector>

#include "aviators/TraverseWorldPixels.h"

namespace {

__extension__ typedef __int128 Wide;

using Pixels = std::vector<Vec2<WorldCoord>>;

Pixels Walk(Vec2<AviatorCoord> start, Vec2<AviatorCoord> end) {
  Pixels visited;
  TraverseWorldPixels(start, end, [&](Vec2<WorldCoord> p) {
    visited.push_back(p);
    return visited.size() < 100000;
  });
  return visited;
}

// An exact rational model of the walk, built differently: the segment's parameter t runs from 0 to 1;
// every crossing of a pixel border is a fraction num/den; between two neighbouring crossings the point at
// the middle lies inside one pixel, found by flooring the exact rational coordinates. Where the segment
// passes exactly through a corner with signs that differ, the corner's owner (the pixel starting at it)
// lies between.
struct Fraction {
  Wide num;
  Wide den;  // > 0
};
bool Less(Fraction a, Fraction b) { return a.num * b.den < b.num * a.den; }
bool Equal(Fraction a, Fraction b) { return a.num * b.den == b.num * a.den; }

Wide FloorDiv(Wide a, Wide b) {
  Wide q = a / b;
  if ((a % b != 0) && ((a < 0) != (b < 0))) {
    --q;
  }
  return q;
}

Pixels Reference(Vec2<AviatorCoord> start, Vec2<AviatorCoord> end) {
  Wide const dx = Wide{end.x} - start.x;
  Wide const dy = Wide{end.y} - start.y;
  struct Crossing {
    Fraction t;
    bool x;
    Wide border;
  };
  std::vector<Crossing> crossings;
  auto collect = [&](Wide from, Wide delta, bool isX) {
    if (delta == 0) {
      return;
    }
    Wide lo = std::min(from, from + delta);
    Wide hi = std::max(from, from + delta);
    for (Wide b = FloorDiv(lo, 256) * 256; b <= hi; b += 256) {
      if (b < lo) {
        continue;
      }
      Fraction t = delta > 0 ? Fraction{b - from, delta} : Fraction{from - b, -delta};
      crossings.push_back({t, isX, b});
    }
  };
  collect(start.x, dx, true);
  collect(start.y, dy, false);
  std::sort(crossings.begin(), crossings.end(), [](Crossing const& a, Crossing const& b) { return Less(a.t, b.t); });

  std::vector<Fraction> times{{0, 1}};
  for (Crossing const& c : crossings) {
    if (!Equal(c.t, times.back())) {
      times.push_back(c.t);
    }
  }
  if (!Equal(times.back(), {1, 1})) {
    times.push_back({1, 1});
  }

  auto pixelAt = [&](Fraction t) {  // floor of start + (end - start)·t, in pixels
    Wide const x = FloorDiv(Wide{start.x} * t.den + dx * t.num, t.den);
    Wide const y = FloorDiv(Wide{start.y} * t.den + dy * t.num, t.den);
    return Vec2<WorldCoord>{static_cast<WorldCoord>(FloorDiv(x, 256)), static_cast<WorldCoord>(FloorDiv(y, 256))};
  };
  Pixels out{PixelOf(start)};
  auto add = [&](Vec2<WorldCoord> p) {
    if (!(out.back() == p)) {
      out.push_back(p);
    }
  };
  for (std::size_t i = 1; i < times.size(); ++i) {
    Fraction const a = times[i - 1];
    Fraction const b = times[i];
    // A corner crossed at time a with signs that differ: its owner comes before the next interval.
    if (i > 1 && (dx > 0) != (dy > 0) && dx != 0 && dy != 0) {
      bool crossX = false;
      bool crossY = false;
      Wide cornerX = 0;
      Wide cornerY = 0;
      for (Crossing const& c : crossings) {
        if (Equal(c.t, a)) {
          (c.x ? crossX : crossY) = true;
          (c.x ? cornerX : cornerY) = c.border;
        }
      }
      if (crossX && crossY) {
        add({static_cast<WorldCoord>(cornerX / 256), static_cast<WorldCoord>(cornerY / 256)});
      }
    }
    add(pixelAt({a.num * b.den + b.num * a.den, 2 * a.den * b.den}));
  }
  // A corner reached exactly at the end is the end pixel itself.
  add(PixelOf(end));
  return out;
}

TEST(TraverseWorldPixels, HandWorkedSegments) {
  struct Case {
    Vec2<AviatorCoord> start;
    Vec2<AviatorCoord> end;
    Pixels expected;
  };
  Case const cases[] = {
      {{10, 10}, {200, 250}, {{0, 0}}},
      {{0, 0}, {512, 512}, {{0, 0}, {1, 1}, {2, 2}}},
      {{128, 384}, {384, 128}, {{0, 1}, {1, 1}, {1, 0}}},
      {{384, 128}, {128, 384}, {{1, 0}, {1, 1}, {0, 1}}},
      {{-1, 0}, {-256, 0}, {{-1, 0}}},
      {{-257, 5}, {300, 5}, {{-2, 0}, {-1, 0}, {0, 0}, {1, 0}}},
      {{128, 128}, {128, -300}, {{0, 0}, {0, -1}, {0, -2}}},
  };
  for (Case const& c : cases) {
    EXPECT_EQ(Walk(c.start, c.end), c.expected);
    EXPECT_EQ(Reference(c.start, c.end), c.expected);
  }
}

// Random segments in every octant, many passing through exact corners, against the rational model;
// the reverse walk visits the same pixels backwards.
TEST(TraverseWorldPixels, AgreesWithExactRationalWalkInEveryOctant) {
  std::mt19937 random(12345);
  auto coordinate = [&](int spread) {
    std::int32_t const pixel = static_cast<std::int32_t>(random() % static_cast<unsigned>(2 * spread + 1)) - spread;
    switch (random() % 3) {
      case 0: return pixel * 256;        // on a border
      case 1: return pixel * 256 + 128;  // a centre
      default: return pixel * 256 + static_cast<std::int32_t>(random() % 256);
    }
  };
  int octants[8] = {};
  for (int i = 0; i < 20000; ++i) {
    int const spread = i % 2 == 0 ? 4 : 40;
    Vec2<AviatorCoord> const start{coordinate(spread), coordinate(spread)};
    Vec2<AviatorCoord> end{coordinate(spread), coordinate(spread)};
    if (i % 5 == 0) {  // exact diagonals through corners, both kinds of sign
      std::int32_t const d = coordinate(spread);
      end = {start.x + d, start.y + (i % 10 == 0 ? d : -d)};
    }
    std::int64_t const dx = std::int64_t{end.x} - start.x;
    std::int64_t const dy = std::int64_t{end.y} - start.y;
    octants[(dx < 0 ? 4 : 0) + (dy < 0 ? 2 : 0) + ((dx < 0 ? -dx : dx) < (dy < 0 ? -dy : dy) ? 1 : 0)] += 1;
    Pixels const forward = Walk(start, end);
    ASSERT_EQ(forward, Reference(start, end)) << start.x << "," << start.y << " -> " << end.x << "," << end.y;
    Pixels backward = Walk(end, start);
    std::reverse(backward.begin(), backward.end());
    ASSERT_EQ(forward, backward) << start.x << "," << start.y << " -> " << end.x << "," << end.y;
  }
  for (int count : octants) {
    EXPECT_GT(count, 500);
  }
}

TEST(TraverseWorldPixels, VisitorStopsTheWalk) {
  int visits = 0;
  TraverseWorldPixels({0, 0}, {256 * 10, 0}, [&](Vec2<WorldCoord>) { return ++visits < 3; });
  EXPECT_EQ(visits, 3);
}

}  // namespace
