// Costs of the pixel world under a realistic load: four players with 200 units each, delay 15, every
// unit digging a few pixels a frame where it stands, as the sessions drive it.
#include <benchmark/benchmark.h>

#include <SDL3/SDL.h>

#include <memory>
#include <random>
#include <vector>

#include "world/ChunkedWorld.h"
#include "present/WorldDrawing.h"
#include "sim/XXHashHasher.h"
#include "glow_horde/BenchWorld.h"

namespace {

constexpr int kPlayers = 4;
constexpr int kDelay = 15;
constexpr int kUnitsPerPlayer = 200;
constexpr int kWorldWidth = 2048;
constexpr int kWorldHeight = 1024;
constexpr int kLookupsPerUnit = 30;

// One 2048 by 1024 map, wrapping across: hills of ground over sky, some rock. Written once and kept
// in a temporary data directory for the whole run.
MapSettings const& Map() {
  static BenchMapDirectory const directory(kWorldWidth, kWorldHeight, [](int x, int y) {
    int const surfaceLevel = 400 + (x * 37 % 200);
    return y > surfaceLevel ? 0x00203040u : (x * 13 + y * 7) % 97 == 0 ? 0xFF707070u : 0xFE8B5A2Bu;
  });
  static MapSettings const map = [] {
    MapSettings settings = directory.map();
    settings.wrapX = settings.cameraWrapX = true;
    return settings;
  }();
  return map;
}

struct Unit {
  int x;
  int y;
  int direction;
};

// Units of each player start in a few groups and dig their way along and down.
class DiggingLoad {
public:
  explicit DiggingLoad(unsigned seed) {
    std::mt19937 random(seed);
    for (int player = 0; player < kPlayers; ++player) {
      auto& units = units_.emplace_back();
      for (int unit = 0; unit < kUnitsPerPlayer; ++unit) {
        int const group = unit % 8;
        units.push_back(Unit{static_cast<int>(group * 256 + player * 40 + random() % 60),
                             static_cast<int>(300 + random() % 100), unit % 2 == 0 ? 1 : -1});
      }
    }
  }

  // One update of one player: a few lookups around each unit, then three pixels dug ahead of it.
  void dig(ChunkedWorld& world, int player, int frame) {
    for (Unit& unit : units_[static_cast<std::size_t>(player)]) {
      world.queueRemovePixel(player, unit.x + unit.direction, unit.y);
      world.queueRemovePixel(player, unit.x + unit.direction, unit.y + 1);
      world.queueRemovePixel(player, unit.x + unit.direction, unit.y + 2);
      if (frame % 2 == 0) {
        unit.x += unit.direction;
        world.wrap(unit.x, unit.y);
      }
      if (frame % 7 == 0) {
        unit.y -= 1;
      }
    }
  }

  int look(ChunkedWorld const& world, int player) const {
    int ground = 0;
    for (Unit const& unit : units_[static_cast<std::size_t>(player)]) {
      for (int i = 0; i < kLookupsPerUnit; ++i) {
        ground += world.isGround(player, unit.x + (i % 5) - 2, unit.y + (i / 5) - 1);
      }
    }
    return ground;
  }

  // One frame as a client runs it: every player digs, then the world advances.
  void frame(ChunkedWorld& world, int frame) {
    for (int player = 0; player < kPlayers; ++player) dig(world, player, frame);
    world.frameAdvance();
  }

private:
  std::vector<std::vector<Unit>> units_;
};

std::unique_ptr<ChunkedWorld> LoadedWorld(int frames, DiggingLoad& load) {
  auto world = std::make_unique<ChunkedWorld>(kPlayers, 0, kDelay, Map());
  for (int frame = 0; frame < frames; ++frame) load.frame(*world, frame);
  return world;
}

// A world whose every queue is full, after 4 D frames of digging, and the number of the next frame.
struct HeavyLoad {
  explicit HeavyLoad(unsigned seed) : load(seed), world(LoadedWorld(frame, load)) {}
  int frame = 4 * kDelay;
  DiggingLoad load;
  std::unique_ptr<ChunkedWorld> world;
};

void BM_IsGround_NoPendingChanges(benchmark::State& state) {
  DiggingLoad load(1);
  auto world = LoadedWorld(0, load);
  for (auto _ : state) {
    for (int player = 0; player < kPlayers; ++player) benchmark::DoNotOptimize(load.look(*world, player));
  }
  state.SetItemsProcessed(state.iterations() * kPlayers * kUnitsPerPlayer * kLookupsPerUnit);
}
BENCHMARK(BM_IsGround_NoPendingChanges)->Unit(benchmark::kMicrosecond);

void BM_IsGround_HeavyPendingChanges(benchmark::State& state) {
  DiggingLoad load(1);
  auto world = LoadedWorld(4 * kDelay, load);  // every queue full
  std::uint64_t pending = 0;
  for (int y = 0; y < world->height(); y += 256) {
    for (int x = 0; x < world->width(); x += 256) {
      for (int player = 0; player < kPlayers; ++player) {
        ChangeQueue const& queue = world->getChunk(x, y)->queue(player);
        pending += queue.removeEnd(queue.slots() - 1);
      }
    }
  }
  state.counters["pending_changes"] = static_cast<double>(pending);
  for (auto _ : state) {
    for (int player = 0; player < kPlayers; ++player) benchmark::DoNotOptimize(load.look(*world, player));
  }
  state.SetItemsProcessed(state.iterations() * kPlayers * kUnitsPerPlayer * kLookupsPerUnit);
}
BENCHMARK(BM_IsGround_HeavyPendingChanges)->Unit(benchmark::kMicrosecond);

// Only the advance is timed; the digging that fills the new slot is not.
void BM_FrameAdvance_HeavyLoad(benchmark::State& state) {
  HeavyLoad heavy(2);
  auto& [frame, load, world] = heavy;
  for (auto _ : state) {
    state.PauseTiming();
    for (int player = 0; player < kPlayers; ++player) load.dig(*world, player, frame);
    ++frame;
    state.ResumeTiming();
    world->frameAdvance();
  }
}
BENCHMARK(BM_FrameAdvance_HeavyLoad)->Unit(benchmark::kMicrosecond);

// A whole simulated frame of the world: the queueing of 2400 changes, 24000 lookups and the advance.
void BM_WholeFrame_HeavyLoad(benchmark::State& state) {
  HeavyLoad heavy(3);
  auto& [frame, load, world] = heavy;
  for (auto _ : state) {
    for (int player = 0; player < kPlayers; ++player) {
      benchmark::DoNotOptimize(load.look(*world, player));
      load.dig(*world, player, frame);
    }
    world->frameAdvance();
    ++frame;
  }
}
BENCHMARK(BM_WholeFrame_HeavyLoad)->Unit(benchmark::kMicrosecond);

// Only the queueing of one frame's changes (2400 removes) is timed; the advance is not.
void BM_QueueChanges_HeavyLoad(benchmark::State& state) {
  HeavyLoad heavy(7);
  auto& [frame, load, world] = heavy;
  for (auto _ : state) {
    for (int player = 0; player < kPlayers; ++player) load.dig(*world, player, frame);
    ++frame;
    state.PauseTiming();
    world->frameAdvance();
    state.ResumeTiming();
  }
  state.SetItemsProcessed(state.iterations() * kPlayers * kUnitsPerPlayer * 3);
}
BENCHMARK(BM_QueueChanges_HeavyLoad)->Unit(benchmark::kMicrosecond);

// The same frames without the lookups: the queueing and the advance together.
void BM_DigAndAdvance_HeavyLoad(benchmark::State& state) {
  HeavyLoad heavy(3);
  auto& [frame, load, world] = heavy;
  for (auto _ : state) {
    load.frame(*world, frame++);
  }
}
BENCHMARK(BM_DigAndAdvance_HeavyLoad)->Unit(benchmark::kMicrosecond);

void BM_FrameAdvance_Idle(benchmark::State& state) {
  DiggingLoad load(4);
  auto world = LoadedWorld(0, load);
  for (auto _ : state) world->frameAdvance();
}
BENCHMARK(BM_FrameAdvance_Idle)->Unit(benchmark::kMicrosecond);

void BM_HashLocalBase_2048x1024(benchmark::State& state) {
  DiggingLoad load(5);
  auto world = LoadedWorld(0, load);
  for (auto _ : state) {
    XXHashHasher hasher;
    world->hashLocalBase(hasher);
    benchmark::DoNotOptimize(hasher.digest());
  }
  state.SetBytesProcessed(state.iterations() * std::int64_t{kWorldWidth} * kWorldHeight * 4);
}
BENCHMARK(BM_HashLocalBase_2048x1024)->Unit(benchmark::kMicrosecond);

// A full 1280 by 720 screen of terrain on the software renderer. With `dirty` the visible chunks were
// changed since the last frame and are uploaded again.
void BM_Render_1280x720(benchmark::State& state) {
  bool const dirty = state.range(0) != 0;
  SDL_Surface* surface = SDL_CreateSurface(1280, 720, SDL_PIXELFORMAT_ARGB8888);
  SDL_Renderer* renderer = SDL_CreateSoftwareRenderer(surface);
  {
    DiggingLoad load(6);
    auto world = std::make_unique<ChunkedWorld>(kPlayers, 0, kDelay, Map());
    Camera const camera{100.0f, 150.0f, 1.0f};
    int frame = 0;
    RenderWorld(*world, renderer, camera, 1280, 720);
    for (auto _ : state) {
      if (dirty) {
        state.PauseTiming();
        load.frame(*world, frame++);
        state.ResumeTiming();
      }
      SDL_SetRenderDrawColor(renderer, 0, 0, 0, 255);
      SDL_RenderClear(renderer);
      benchmark::DoNotOptimize(RenderWorld(*world, renderer, camera, 1280, 720));
      SDL_FlushRenderer(renderer);
    }
  }
  SDL_DestroyRenderer(renderer);
  SDL_DestroySurface(surface);
}
BENCHMARK(BM_Render_1280x720)->Arg(0)->Arg(1)->ArgName("dirty")->Unit(benchmark::kMillisecond);

}  // namespace
