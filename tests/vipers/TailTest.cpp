#include "vipers/Tail.h"

#include <gtest/gtest.h>

#include <deque>
#include <random>
#include <vector>

namespace {

using P = Vec2<AviatorCoord>;

std::vector<P> Points(Tail const& tail) { return {tail.points().begin(), tail.points().end()}; }

Tail TailThrough(std::vector<P> const& path, int length) {
  Tail tail(path.front());
  tail.setLength(length);
  for (std::size_t i = 1; i < path.size(); ++i) {
    tail.update(path[i]);
  }
  return tail;
}

// The rules written out plainly over a vector, every segment tested: what the indexed tail must
// agree with point for point and answer for answer.
struct PlainTail {
  std::vector<P> points;  // front first
  long long length = 0;
  long long current = 0;

  static long long Root(long long dx, long long dy) {
    unsigned long long n = static_cast<unsigned long long>(dx * dx + dy * dy);
    unsigned long long r = 0;
    while ((r + 1) * (r + 1) <= n) {
      ++r;
    }
    return static_cast<long long>(r);
  }
  static int Sign(long long v) { return (v > 0) - (v < 0); }
  static long long Side(P p, P s, P e) {
    return (static_cast<long long>(e.y) - s.y) * (p.x - s.x) - (static_cast<long long>(p.y) - s.y) * (e.x - s.x);
  }

  void update(P head) {
    if (head == points.front()) return;
    long long dx = head.x - points.front().x, dy = head.y - points.front().y;
    current += Root(dx, dy);
    if (points.size() >= 2) {
      long long ux = points[0].x - points[1].x, uy = points[0].y - points[1].y;
      if (dx * uy == dy * ux && dx * ux + dy * uy > 0) points.erase(points.begin());
    }
    points.insert(points.begin(), head);
    trim();
  }
  void trim() {
    while (points.size() >= 2 && current > length) {
      long long excess = current - length;
      P& last = points.back();
      P prev = points[points.size() - 2];
      long long seg = Root(prev.x - last.x, prev.y - last.y);
      if (excess >= seg) {
        points.pop_back();
        current -= seg;
        continue;
      }
      last.x += static_cast<int>((static_cast<long long>(prev.x) - last.x) * excess / seg);
      last.y += static_cast<int>((static_cast<long long>(prev.y) - last.y) * excess / seg);
      current = length;
      if (last == prev) points.pop_back();
      break;
    }
  }
  bool collides(P from, P to, std::size_t firstK) const {
    if (from == to) return false;
    for (std::size_t k = firstK; k < points.size(); ++k) {
      P a = points[k - 1], b = points[k];
      if (Sign(Side(a, from, to)) * Sign(Side(b, from, to)) <= 0 &&
          Sign(Side(from, a, b)) * Sign(Side(to, a, b)) <= 0)
        return true;
    }
    return false;
  }
};

TEST(Tail, GrowsAtTheHeadAndMergesStraightRuns) {
  Tail tail({0, 0});
  tail.setLength(100000);
  tail.update({0, 0});
  EXPECT_EQ(Points(tail), (std::vector<P>{{0, 0}}));
  EXPECT_EQ(tail.currentLength(), 0);

  tail.update({300, 400});  // 500 long
  tail.update({600, 800});  // straight on: the middle point goes
  EXPECT_EQ(Points(tail), (std::vector<P>{{600, 800}, {0, 0}}));
  EXPECT_EQ(tail.currentLength(), 1000);
  tail.update({600, 800});  // standing still changes nothing
  EXPECT_EQ(tail.currentLength(), 1000);

  tail.update({300, 400});  // straight back: parallel but opposite, so the corner stays
  EXPECT_EQ(Points(tail), (std::vector<P>{{300, 400}, {600, 800}, {0, 0}}));
  EXPECT_EQ(tail.currentLength(), 1500);
}

TEST(Tail, TrimsAcrossSeveralSegmentsToTheExactLength) {
  // Worked by hand: 3000 + 4000 + 3000 = 10000, then 5000 more; the cut takes the first segment (3000)
  // and 2000 of the second, whose far end moves from (3000, 0) to (3000, 2000).
  Tail tail = TailThrough({{0, 0}, {3000, 0}, {3000, 4000}, {0, 4000}}, 10000);
  EXPECT_EQ(tail.currentLength(), 10000);
  EXPECT_EQ(tail.points().size(), 4u);
  tail.update({0, 9000});
  EXPECT_EQ(Points(tail), (std::vector<P>{{0, 9000}, {0, 4000}, {3000, 4000}, {3000, 2000}}));
  EXPECT_EQ(tail.currentLength(), 10000);

  // Shorter: 2000 and 3000 go whole, then 1500 of the 5000 run.
  tail.setLength(3500);
  EXPECT_EQ(Points(tail), (std::vector<P>{{0, 9000}, {0, 5500}}));
  EXPECT_EQ(tail.currentLength(), 3500);

  // Longer: nothing is added at the far end.
  tail.setLength(50000);
  EXPECT_EQ(Points(tail), (std::vector<P>{{0, 9000}, {0, 5500}}));
  EXPECT_EQ(tail.currentLength(), 3500);
}

TEST(Tail, CutsDiagonalsWithRoundedDownLengthsAndTruncation) {
  // (0,0)-(1000,1000) measures isqrt(2000000) = 1414; cutting 100 moves the end by 1000·100/1414 = 70.
  Tail tail = TailThrough({{0, 0}, {1000, 1000}, {1000, 2000}}, 100000);
  EXPECT_EQ(tail.currentLength(), 2414);
  tail.setLength(2314);
  EXPECT_EQ(Points(tail), (std::vector<P>{{1000, 2000}, {1000, 1000}, {70, 70}}));
  EXPECT_EQ(tail.currentLength(), 2314);
  // The running sum drifts from the polyline: (70,70)-(1000,1000) measures 1315 but counts as 1314,
  // so cutting down to 1000 moves the end 930·1314/1315 = 929 along, to (999, 999).
  tail.setLength(1000);
  EXPECT_EQ(Points(tail), (std::vector<P>{{1000, 2000}, {1000, 1000}, {999, 999}}));
  EXPECT_EQ(tail.currentLength(), 1000);

  // A cut that ends exactly on a point removes the segment and no more.
  Tail square = TailThrough({{0, 0}, {3000, 0}, {3000, 4000}}, 100000);
  square.setLength(4000);
  EXPECT_EQ(Points(square), (std::vector<P>{{3000, 4000}, {3000, 0}}));
  EXPECT_EQ(square.currentLength(), 4000);
  // The last point is never removed, however short the target.
  square.setLength(0);
  EXPECT_EQ(Points(square), (std::vector<P>{{3000, 4000}}));
  EXPECT_EQ(square.currentLength(), 0);
}

TEST(Tail, CrossingTestsCountTouchingAndCollinearSegments) {
  Tail const tail = TailThrough({{0, 0}, {1000, 0}}, 100000);
  struct Case {
    P from, to;
    bool hit;
  } const cases[] = {
      {{500, -500}, {500, 500}, true},      // a clean crossing
      {{500, 0}, {500, 500}, true},         // starting on the segment
      {{1000, 0}, {1500, 500}, true},       // touching its end point
      {{-500, 500}, {0, 0}, true},          // ending on its other end point
      {{2000, 0}, {3000, 0}, true},         // on the same line, far away: still counts
      {{200, 0}, {800, 0}, true},           // on the same line, overlapping
      {{2000, 1}, {3000, 1}, false},        // parallel, one unit off
      {{500, 1}, {500, 500}, false},        // stops one unit short
      {{1001, -1}, {1500, -500}, false},    // beside the end
      {{500, 500}, {500, 500}, false},      // no movement
      {{500, 0}, {500, 0}, false},          // no movement, even on top of the tail
  };
  for (Case const& c : cases) {
    EXPECT_EQ(tail.checkCollision(c.from, c.to), c.hit)
        << "(" << c.from.x << "," << c.from.y << ")->(" << c.to.x << "," << c.to.y << ")";
  }
  Tail const dot({0, 0});
  EXPECT_FALSE(dot.checkCollision({-10, 0}, {10, 0}));
  EXPECT_FALSE(dot.checkSelfCollision({10, 0}));
}

TEST(Tail, SelfCollisionSkipsTheFirstSegmentButNotAReversal) {
  Tail const tail = TailThrough({{0, 0}, {1000, 0}, {1000, 1000}, {0, 1000}}, 100000);
  EXPECT_FALSE(tail.checkSelfCollision({-100, 1000}));  // straight on along the first segment's line
  EXPECT_TRUE(tail.checkSelfCollision({500, 1000}));    // straight back into the first segment
  EXPECT_FALSE(tail.checkSelfCollision({0, 1500}));     // a turn away
  EXPECT_TRUE(tail.checkSelfCollision({0, -500}));      // down across the oldest segment
  EXPECT_FALSE(tail.checkSelfCollision({0, 1000}));     // no movement
  Tail const two = TailThrough({{0, 0}, {1000, 0}}, 100000);
  EXPECT_TRUE(two.checkSelfCollision({200, 0}));
  EXPECT_FALSE(two.checkSelfCollision({1000, 300}));
}

// Random walks of turning, straight runs, reversals, growth and cuts: the indexed tail must hold the
// same points and lengths as the plain one and give the same answers, also for queries along the
// lines of its own segments, where the collinear rule matters.
TEST(Tail, AgreesWithThePlainRulesOnRandomWalks) {
  for (unsigned seed = 1; seed <= 12; ++seed) {
    std::mt19937 random(seed);
    P head{static_cast<int>(random() % 40000), static_cast<int>(random() % 40000)};
    Tail tail(head);
    PlainTail plain{{head}};
    int length = 20000 + static_cast<int>(random() % 300000);
    tail.setLength(length);
    plain.length = length;
    P velocity{600, 0};
    for (int step = 0; step < 3000; ++step) {
      switch (random() % 10) {
        case 0: velocity = {-velocity.y, velocity.x}; break;
        case 1: velocity = {velocity.x + static_cast<int>(random() % 301) - 150, velocity.y}; break;
        case 2: velocity = {velocity.x, velocity.y + static_cast<int>(random() % 301) - 150}; break;
        case 3: velocity = {-velocity.x, -velocity.y}; break;
        default: break;
      }
      head = head + velocity;
      tail.update(head);
      plain.update(head);
      if (random() % 50 == 0) {
        length = std::max(0, length + static_cast<int>(random() % 20001) - 12000);
        tail.setLength(length);
        plain.length = length;
        if (plain.current > length) plain.trim();
      }
      ASSERT_EQ(Points(tail), plain.points) << "seed " << seed << " step " << step;
      ASSERT_EQ(tail.currentLength(), plain.current);

      P const from = plain.points.front();
      P to = from + P{static_cast<int>(random() % 2001) - 1000, static_cast<int>(random() % 2001) - 1000};
      if (random() % 4 == 0 && plain.points.size() > 2) {
        // Along the line of some segment, beyond its end.
        std::size_t k = 1 + random() % (plain.points.size() - 1);
        P a = plain.points[k - 1], b = plain.points[k];
        P q = b + (b - a);
        ASSERT_EQ(tail.checkCollision(q, q + (b - a)), plain.collides(q, q + (b - a), 1));
      }
      ASSERT_EQ(tail.checkCollision(from, to), plain.collides(from, to, 1));
      bool selfPlain = plain.collides(from, to, 2);
      if (!selfPlain && plain.points.size() >= 2) {
        long long ux = from.x - plain.points[1].x, uy = from.y - plain.points[1].y;
        long long dx = to.x - from.x, dy = to.y - from.y;
        selfPlain = dx * uy == dy * ux && dx * ux + dy * uy < 0;
      }
      ASSERT_EQ(tail.checkSelfCollision(to), selfPlain) << "seed " << seed << " step " << step;
    }
  }
}

}  // namespace
