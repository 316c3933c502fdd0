// Crossing tests against tails of 1200 pixels (the longest start), 10000, and the longest a game allows:
// 1200 pixels at the start and 200 meals of 200 pixels in a ten-minute game, 41200 pixels. Each is laid
// as a meandering path of 3-pixel steps (a point every step, as a turning head makes them) packed into a
// 1024-pixel square, the size of the map. The plain loop over every segment is measured beside the
// tail's own test: every head tests every tail every frame, so a cost linear in the points makes a game
// quadratic in its length.
#include <benchmark/benchmark.h>

#include <map>
#include <random>
#include <vector>

#include "vipers/Tail.h"

namespace {

using P = Vec2<AviatorCoord>;

constexpr int kLongestTail = 1200 + 200 * 200;  // pixels

struct Meander {
  Tail tail{P{512 * 256, 512 * 256}};
  std::vector<P> queries;  // pairs (from, to): short steps somewhere on the map
};

// A meander of the given length in pixels, made once for each length.
Meander const& LongTail(int pixels = kLongestTail) {
  static std::map<int, Meander> made;
  auto found = made.find(pixels);
  if (found != made.end()) {
    return found->second;
  }
  Meander& m = made[pixels];
  {
    m.tail.setLength(pixels * 256);
    std::mt19937 random(7);
    P head{512 * 256, 512 * 256};
    int heading = 0;  // in 1/64 turns
    // A head at 768 units a frame turning by 1/64 turn a frame: directions from a small table.
    static constexpr int kCos[8] = {768, 543, 0, -543, -768, -543, 0, 543};
    static constexpr int kSin[8] = {0, 543, 768, 543, 0, -543, -768, -543};
    for (int step = 0; step < 20000; ++step) {
      heading = (heading + static_cast<int>(random() % 3) - 1 + 8) % 8;
      P next{head.x + kCos[heading], head.y + kSin[heading]};
      if (next.x < 10 * 256 || next.x > 1014 * 256 || next.y < 10 * 256 || next.y > 1014 * 256) {
        heading = (heading + 4) % 8;
        next = {head.x + kCos[heading], head.y + kSin[heading]};
      }
      head = next;
      m.tail.update(head);
    }
    for (int i = 0; i < 256; ++i) {
      P from{static_cast<int>(random() % (1024 * 256)), static_cast<int>(random() % (1024 * 256))};
      m.queries.push_back(from);
      m.queries.push_back({from.x + 700, from.y + 300});
    }
  }
  return m;
}

int Side(P p, P s, P e) {
  long long const v = (static_cast<long long>(e.y) - s.y) * (p.x - s.x) - (static_cast<long long>(p.y) - s.y) * (e.x - s.x);
  return (v > 0) - (v < 0);
}

bool PlainCrossing(std::deque<P> const& points, P from, P to) {
  for (std::size_t k = 1; k < points.size(); ++k) {
    if (Side(points[k - 1], from, to) * Side(points[k], from, to) <= 0 &&
        Side(from, points[k - 1], points[k]) * Side(to, points[k - 1], points[k]) <= 0) {
      return true;
    }
  }
  return false;
}

void BM_TailCrossing_Indexed(benchmark::State& state) {
  Meander const& m = LongTail(static_cast<int>(state.range(0)));
  std::size_t i = 0;
  int hits = 0;
  for (auto _ : state) {
    hits += m.tail.checkCollision(m.queries[i], m.queries[i + 1]);
    i = (i + 2) % m.queries.size();
  }
  state.counters["points"] = static_cast<double>(m.tail.points().size());
  state.counters["hits"] = hits;
}
BENCHMARK(BM_TailCrossing_Indexed)->Arg(1200)->Arg(10000)->Arg(kLongestTail);

void BM_TailCrossing_PlainLoop(benchmark::State& state) {
  Meander const& m = LongTail(static_cast<int>(state.range(0)));
  std::size_t i = 0;
  int hits = 0;
  for (auto _ : state) {
    hits += PlainCrossing(m.tail.points(), m.queries[i], m.queries[i + 1]);
    i = (i + 2) % m.queries.size();
  }
  state.counters["points"] = static_cast<double>(m.tail.points().size());
  state.counters["hits"] = hits;
}
BENCHMARK(BM_TailCrossing_PlainLoop)->Arg(1200)->Arg(10000)->Arg(kLongestTail);

// Growth at the head with the far end cut each step, on a tail at its longest.
void BM_TailUpdateAtFullLength(benchmark::State& state) {
  Tail tail = LongTail().tail;
  P head = tail.front();
  int turn = 0;
  for (auto _ : state) {
    turn = (turn + 1) % 4;
    head = {head.x + (turn < 2 ? 768 : -760), head.y + (turn % 2 == 0 ? 700 : -690)};
    tail.update(head);
  }
  benchmark::DoNotOptimize(tail.currentLength());
}
BENCHMARK(BM_TailUpdateAtFullLength);

}  // namespace
