#include <benchmark/benchmark.h>

#include <memory>
#include <vector>

#include "BenchWorld.h"
#include "glow_horde/Lemming.h"
#include "glow_horde/LemmingWorld.h"
#include "glow_horde/PlayerState.h"

// Each benchmark iteration is one simulation frame of 200 units of one player on a real chunked
// world, including the world's end of frame. Iteration counts are fixed so that every run does the
// same work from the same start.

namespace {

constexpr int kUnits = 200;
constexpr int kFrames = 3000;

// 1024 by 256: a floor 20 pixels thick with walls at both ends, so walkers pace back and forth.
std::unique_ptr<ChunkedWorld> WalkingWorld() {
  return BuildBenchWorld(1024, 256, [](int x, int y) {
    return (y <= 20 || x < 8 || x > 1015) ? k_benchGround : k_benchSky;
  });
}

// 1024 by 2048 of solid ground up to y = 1900, deep enough for 3000 frames of digging down.
std::unique_ptr<ChunkedWorld> DiggingWorld() {
  return BuildBenchWorld(1024, 2048, [](int, int y) { return y <= 1900 ? k_benchGround : k_benchSky; });
}

// Alternately digging down and sideways; an order that has run out is given again.
LemmingActivity DigFor(int unit) {
  return unit % 2 == 0 ? LemmingActivity::DigDown : LemmingActivity::DigSideways;
}

// Items are unit updates, so the rate reads as unit updates per second.
void SetFramesCounter(benchmark::State& state) {
  state.SetItemsProcessed(state.iterations() * kUnits);
}

void BM_LemmingUpdate_Walkers(benchmark::State& state) {
  auto world = WalkingWorld();
  LemmingWorld view(*world, 0);
  std::vector<Lemming> units;
  for (int i = 0; i < kUnits; ++i) {
    units.emplace_back(static_cast<std::uint16_t>(i), Position{10 + 5 * i, 21}, i % 2 == 0);
  }
  for (auto _ : state) {
    for (Lemming& unit : units) {
      unit.update(view);
    }
    world->frameAdvance();
  }
  SetFramesCounter(state);
}
BENCHMARK(BM_LemmingUpdate_Walkers)->Iterations(kFrames)->Unit(benchmark::kMicrosecond);

// Walkers with an order waiting for the ground to end: each looks two steps ahead every frame.
void BM_LemmingUpdate_WalkersLookingAhead(benchmark::State& state) {
  auto world = WalkingWorld();
  LemmingWorld view(*world, 0);
  std::vector<Lemming> units;
  for (int i = 0; i < kUnits; ++i) {
    units.emplace_back(static_cast<std::uint16_t>(i), Position{10 + 5 * i, 21}, i % 2 == 0);
    units.back().give_order(LemmingActivity::Bridge, LemmingActivityTrigger::BeforeFalling);
  }
  for (auto _ : state) {
    for (Lemming& unit : units) {
      unit.update(view);
    }
    world->frameAdvance();
  }
  SetFramesCounter(state);
}
BENCHMARK(BM_LemmingUpdate_WalkersLookingAhead)->Iterations(kFrames)->Unit(benchmark::kMicrosecond);

void BM_LemmingUpdate_Diggers(benchmark::State& state) {
  auto world = DiggingWorld();
  LemmingWorld view(*world, 0);
  std::vector<Lemming> units;
  for (int i = 0; i < kUnits; ++i) {
    units.emplace_back(static_cast<std::uint16_t>(i), Position{12 + 5 * i, 1901}, i % 2 == 0);
  }
  for (auto _ : state) {
    for (int i = 0; i < kUnits; ++i) {
      Lemming& unit = units[static_cast<std::size_t>(i)];
      if (!unit.activity().has_value()) {
        unit.give_order(DigFor(i), LemmingActivityTrigger::Immediate);
      }
      unit.update(view);
    }
    world->frameAdvance();
  }
  SetFramesCounter(state);
}
BENCHMARK(BM_LemmingUpdate_Diggers)->Iterations(kFrames)->Unit(benchmark::kMicrosecond);

PlayerState::Setup BenchSetup() {
  PlayerState::Setup setup;
  setup.availabilities.counts = {1 << 30, 1 << 30, 1 << 30, 1 << 30, 1 << 30, 1 << 30, 1 << 30};
  setup.worldWidth = 1024;
  setup.worldHeight = 2048;
  setup.spawnInterval = 1;
  setup.framePeriod = 1;
  return setup;
}

void BM_PlayerStateUpdate_Walkers(benchmark::State& state) {
  auto world = WalkingWorld();
  PlayerState player(BenchSetup());
  for (int i = 0; i < kUnits; ++i) {
    player.createLemming(10 + 5 * i, 21, i % 2 == 0);
  }
  for (auto _ : state) {
    player.update(*world);
    world->frameAdvance();
  }
  SetFramesCounter(state);
}
BENCHMARK(BM_PlayerStateUpdate_Walkers)->Iterations(kFrames)->Unit(benchmark::kMicrosecond);

void BM_PlayerStateUpdate_Diggers(benchmark::State& state) {
  auto world = DiggingWorld();
  PlayerState player(BenchSetup());
  for (int i = 0; i < kUnits; ++i) {
    player.createLemming(12 + 5 * i, 1901, i % 2 == 0);
  }
  for (auto _ : state) {
    // Orders go through the player, as the session gives them, one per unit that has run out.
    auto const& units = player.lemmings();
    for (std::size_t i = 0; i < units.size(); ++i) {
      if (!units[i].activity().has_value()) {
        player.giveOrder(Order{static_cast<std::uint16_t>(i), units[i].id(), DigFor(units[i].id()),
                               LemmingActivityTrigger::Immediate});
      }
    }
    player.update(*world);
    world->frameAdvance();
  }
  SetFramesCounter(state);
}
BENCHMARK(BM_PlayerStateUpdate_Diggers)->Iterations(kFrames)->Unit(benchmark::kMicrosecond);

} // namespace
