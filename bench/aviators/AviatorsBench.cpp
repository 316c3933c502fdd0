// Aviators' simulation step: one update of a four-ship game in which every ship locks and fires on
// every frame, and a whole default two-ship game, reported as a multiple of real time with its worst
// frame. Run from the directory of the executables (data/ beside them).
#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <memory>
#include <random>

#include <time.h>

#include "aviators/AviatorsSimulation.h"
#include "aviators/FixedTrig.h"
#include "sim/Games.h"

namespace {

using Orders = std::vector<std::vector<unsigned char>>;

constexpr std::uint64_t kFramePeriod = 16666;

IGame const& Aviators() {
  static Games const games;
  return games.refGame(Game::Aviators);
}

std::unique_ptr<AviatorsSimulation> NewSimulation(int players, int durationSeconds) {
  GameSettings settings = DefaultSettingsFromSchema(Aviators().schema);
  settings.ints["duration_seconds"] = durationSeconds;
  std::vector<unsigned short> slots;
  for (int i = 0; i < players; ++i) {
    slots.push_back(static_cast<unsigned short>(i));
  }
  return std::make_unique<AviatorsSimulation>(0, kFramePeriod, 15, settings,
                                              Aviators().maps.at("The Empty Berth"), slots, nullptr);
}

// Turns ship i toward the nearest other living ship, thrusts or brakes, and, when `attack`, locks and fires.
unsigned char PilotByte(AviatorsSimulation const& simulation, std::size_t i, bool attack) {
  auto const& ships = simulation.aviators();
  Aviator const& own = ships[i];
  std::optional<std::size_t> nearest;
  std::int64_t best = 0;
  for (std::size_t j = 0; j < ships.size(); ++j) {
    if (j != i && !ships[j].deathFrame.has_value()) {
      std::int64_t const d = LengthSquared(ships[j].position - own.position);
      if (!nearest || d < best) {
        nearest = j;
        best = d;
      }
    }
  }
  unsigned char byte = 0;
  if (nearest) {
    Vec2<AviatorCoord> const d = ships[*nearest].position - own.position;
    byte = std::int64_t{d.x} * FixedSine(own.rotation) - std::int64_t{d.y} * FixedCosine(own.rotation) < 0 ? 1 : 2;
  }
  byte |= LengthSquared(own.velocity) > 800 * 800 ? 8 : 4;
  return static_cast<unsigned char>(byte | (attack ? 48 : 0));
}

void AllPilots(AviatorsSimulation const& simulation, bool attack, Orders& orders) {
  orders.resize(simulation.aviators().size());
  for (std::size_t i = 0; i < orders.size(); ++i) {
    orders[i].assign(1, PilotByte(simulation, i, attack));
  }
}

// A four-ship game brought to the point where missiles fly: the ships close in, locking and firing.
std::unique_ptr<AviatorsSimulation> FourShipsFiring() {
  std::unique_ptr<AviatorsSimulation> simulation = NewSimulation(4, 600);
  Orders orders;
  for (int frame = 0; frame < 2000 && simulation->missiles().size() < 8; ++frame) {
    AllPilots(*simulation, true, orders);
    simulation->update(orders, orders[0]);
  }
  return simulation;
}

void BM_AviatorsUpdateFourShipsFiring(benchmark::State& state) {
  std::unique_ptr<AviatorsSimulation> simulation = FourShipsFiring();
  Orders orders;
  std::int64_t missiles = 0;
  std::int64_t steps = 0;
  for (auto _ : state) {
    if (simulation->gameEnded_LocalPlayer() || simulation->missiles().empty()) {
      state.PauseTiming();
      simulation = FourShipsFiring();
      state.ResumeTiming();
    }
    AllPilots(*simulation, true, orders);
    simulation->update(orders, orders[0]);
    missiles += static_cast<std::int64_t>(simulation->missiles().size());
    ++steps;
  }
  state.counters["missiles_in_flight"] = static_cast<double>(missiles) / static_cast<double>(std::max<std::int64_t>(steps, 1));
}
BENCHMARK(BM_AviatorsUpdateFourShipsFiring);

double ThreadMicroseconds() {
  timespec now{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
  return static_cast<double>(now.tv_sec) * 1e6 + static_cast<double>(now.tv_nsec) / 1e3;
}

// A whole default game of two ships (the default duration, or until a ship dies), stepped as fast as
// it goes: real_time_multiple is the game time over the time it took; worst_frame_us the slowest update
// in processor time. The pilots chase each other and attack now and then.
void BM_AviatorsWholeDefaultGame(benchmark::State& state) {
  double multiple = 0.0;
  double cpuMultiple = 0.0;
  double worst = 0.0;
  std::int64_t frames = 0;
  for (auto _ : state) {
    state.PauseTiming();
    GameSettings const settings = DefaultSettingsFromSchema(Aviators().schema);
    std::unique_ptr<AviatorsSimulation> simulation = NewSimulation(2, settings.ints.at("duration_seconds"));
    std::mt19937 random(5);
    Orders orders(2);
    state.ResumeTiming();
    auto const start = std::chrono::steady_clock::now();
    double const cpuStart = ThreadMicroseconds();
    std::uint32_t const first = simulation->frame();
    while (!simulation->gameEnded()) {
      // The worst frame in the thread's own processor time, which other processes on a busy machine
      // don't inflate.
      double const before = ThreadMicroseconds();
      AllPilots(*simulation, random() % 1000 == 0, orders);
      for (auto& order : orders) {
        if (random() % 8 != 0 && (order[0] & 12) == 4) {
          order[0] = static_cast<unsigned char>(order[0] & ~12);  // thrust only now and then
        }
      }
      simulation->update(orders, orders[0]);
      worst = std::max(worst, ThreadMicroseconds() - before);
    }
    double const seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    frames = simulation->frame() - first;
    multiple = static_cast<double>(frames) * static_cast<double>(kFramePeriod) / 1e6 / seconds;
    cpuMultiple = static_cast<double>(frames) * static_cast<double>(kFramePeriod) / (ThreadMicroseconds() - cpuStart);
  }
  state.counters["frames"] = static_cast<double>(frames);
  state.counters["real_time_multiple"] = multiple;
  state.counters["real_time_multiple_cpu"] = cpuMultiple;  // against the thread's processor time
  state.counters["worst_frame_us"] = worst;
}
BENCHMARK(BM_AviatorsWholeDefaultGame)->Unit(benchmark::kMillisecond)->Iterations(3);

}  // namespace
