// The Vipers step on the game's own map: one update of a four-head game whose tails are all as long as
// a game allows, and a whole default four-player game headless, as a multiple of real time with its
// worst frame.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <memory>
#include <random>

#include <time.h>

#include "app/ChangeToExecutableDirectory.h"
#include "sim/Games.h"
#include "vipers/VipersSimulation.h"

namespace {

using P = Vec2<AviatorCoord>;
using Clock = std::chrono::steady_clock;

// Microseconds of processor time this thread has used: unlike the wall clock it doesn't count the time
// another process held the processor, which on a busy machine dwarfs a frame.
double ThreadMicroseconds() {
  timespec now{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
  return static_cast<double>(now.tv_sec) * 1e6 + static_cast<double>(now.tv_nsec) / 1e3;
}
constexpr std::uint64_t k_framePeriod = 16666;
// 1200 pixels at the start and 200 meals of 200 pixels: what ten minutes of food can give.
constexpr int k_longestTail = (1200 + 200 * 200) * 256;

Games const& TheGames() {
  static Games const games = [] {
    ChangeToExecutableDirectory();  // the map image is under data/ beside the executable
    return Games();
  }();
  return games;
}

std::unique_ptr<VipersSimulation> MakeGame(std::vector<unsigned short> const& slots, std::uint8_t delay) {
  IGame const& game = TheGames().refGame(Game::Vipers);
  GameSettings settings = DefaultSettingsFromSchema(game.schema);
  return std::make_unique<VipersSimulation>(0, k_framePeriod, delay, settings,
                                            game.maps.at(settings.strings.at("map")), slots);
}

// A tail as a turning head lays it: a point every 3 pixels, wandering over the whole map.
Tail MeanderingTail(std::mt19937& random, P start, int width, int height) {
  static constexpr int kCos[8] = {768, 543, 0, -543, -768, -543, 0, 543};
  static constexpr int kSin[8] = {0, 543, 768, 543, 0, -543, -768, -543};
  Tail tail(start);
  tail.setLength(k_longestTail);
  P head = start;
  int heading = static_cast<int>(random() % 8);
  while (tail.currentLength() < k_longestTail) {
    heading = (heading + static_cast<int>(random() % 3) + 7) % 8;
    P next{head.x + kCos[heading], head.y + kSin[heading]};
    if (next.x < 20 * 256 || next.x > (width - 20) * 256 || next.y < 20 * 256 || next.y > (height - 20) * 256) {
      heading = (heading + 4) % 8;
      next = {head.x + kCos[heading], head.y + kSin[heading]};
    }
    head = next;
    tail.update(head);
  }
  return tail;
}

void BM_VipersUpdate_FourHeadsLongestTails(benchmark::State& state) {
  auto simulation = MakeGame({0, 1, 2, 3}, 15);
  std::mt19937 random(11);
  int const width = simulation->world().width();
  int const height = simulation->world().height();
  for (std::size_t i = 0; i < 4; ++i) {
    P const start = simulation->heads()[i].body.position;
    simulation->mutableTails()[i] = MeanderingTail(random, start, width, height);
    simulation->mutableHeads()[i].body.position = simulation->tails()[i].front();
  }
  std::size_t points = 0;
  for (Tail const& tail : simulation->tails()) {
    points += tail.points().size();
  }
  std::vector<std::vector<unsigned char>> orders(4);
  double worst = 0.0;
  double worstCpu = 0.0;
  for (auto _ : state) {
    // Every head stays alive, so every crossing test runs in every frame.
    state.PauseTiming();
    for (ViperHead& head : simulation->mutableHeads()) {
      head.deathFrame.reset();
    }
    for (std::size_t i = 0; i < 4; ++i) {
      orders[i] = {static_cast<unsigned char>(random() % 16)};
    }
    state.ResumeTiming();
    auto const start = Clock::now();
    double const startCpu = ThreadMicroseconds();
    simulation->update(orders, {});
    worstCpu = std::max(worstCpu, ThreadMicroseconds() - startCpu);
    worst = std::max(worst, std::chrono::duration<double, std::micro>(Clock::now() - start).count());
  }
  state.counters["tail_points"] = static_cast<double>(points);
  state.counters["worst_wall_us"] = worst;
  state.counters["worst_cpu_us"] = worstCpu;
}
BENCHMARK(BM_VipersUpdate_FourHeadsLongestTails);

// A whole default game at a delay of 15, each player changing its keys now and then, with the orders
// routed as a local game routes them: each player's order reaches the shared state 15 frames after it
// was given. Four players in all slots (opposite corners face each other along one diagonal, so those
// heads meet on one line at once and die), and two in neighbouring corners, who play on.
void BM_VipersWholeDefaultGame(benchmark::State& state, std::vector<unsigned short> const& slots) {
  std::size_t const players = slots.size();
  double worst = 0.0;
  double worstCpu = 0.0;
  double simulated = 0.0;
  double spent = 0.0;
  double spentCpu = 0.0;
  double aliveFrames = 0.0;
  for (auto _ : state) {
    state.PauseTiming();
    auto simulation = MakeGame(slots, 15);
    std::mt19937 random(5);
    std::vector<std::vector<std::vector<unsigned char>>> given(players);
    std::vector<std::vector<unsigned char>> orders(players);
    state.ResumeTiming();
    auto const gameStart = Clock::now();
    double const gameStartCpu = ThreadMicroseconds();
    int step = 0;
    while (!simulation->gameEnded()) {
      for (std::size_t i = 0; i < players; ++i) {
        std::vector<unsigned char> order;
        if (!simulation->gameEnded_LocalPlayer() && random() % 20 == 0) {
          order = {static_cast<unsigned char>(random() % 16)};
        }
        given[i].push_back(order);
        orders[i] = step >= 15 ? given[i][static_cast<std::size_t>(step - 15)] : std::vector<unsigned char>{};
      }
      auto const start = Clock::now();
      double const startCpu = ThreadMicroseconds();
      simulation->update(orders, given[0].back());
      worstCpu = std::max(worstCpu, ThreadMicroseconds() - startCpu);
      worst = std::max(worst, std::chrono::duration<double, std::micro>(Clock::now() - start).count());
      ++step;
    }
    spent += std::chrono::duration<double>(Clock::now() - gameStart).count();
    spentCpu += (ThreadMicroseconds() - gameStartCpu) / 1e6;
    simulated += static_cast<double>(step) * static_cast<double>(k_framePeriod) / 1e6;
    for (ViperHead const& head : simulation->heads()) {
      aliveFrames += static_cast<double>(head.deathFrame.value_or(static_cast<std::int32_t>(simulation->frame())) - 15);
    }
  }
  state.counters["x_real_time_wall"] = simulated / spent;
  state.counters["x_real_time_cpu"] = simulated / spentCpu;
  state.counters["worst_frame_wall_us"] = worst;
  state.counters["worst_frame_cpu_us"] = worstCpu;
  state.counters["head_frames_alive"] = aliveFrames / static_cast<double>(state.iterations());
}
BENCHMARK_CAPTURE(BM_VipersWholeDefaultGame, four_players, std::vector<unsigned short>{0, 1, 2, 3})
    ->Unit(benchmark::kMillisecond)
    ->Iterations(3);
BENCHMARK_CAPTURE(BM_VipersWholeDefaultGame, two_neighbours, std::vector<unsigned short>{0, 2})
    ->Unit(benchmark::kMillisecond)
    ->Iterations(3);

}  // namespace
