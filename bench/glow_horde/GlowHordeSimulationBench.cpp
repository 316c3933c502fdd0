// One client's simulation of a four-player Glow Horde game on "Wrapped Ledges": the cost of a frame
// (GlowHordeSimulation::update, every player's units, the exits and the world's end of frame) with
// 200 units a player in three regimes, and a whole default game against the time it stands for.
//
// Each frame benchmark reports the mean frame (the iteration time) and the worst frame it met
// ("worst_frame_us"). Setting a regime up (spawning the units, handing out the orders that make it)
// is not measured.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <memory>
#include <random>
#include <vector>

#include "app/ChangeToExecutableDirectory.h"
#include "sim/Games.h"
#include "glow_horde/GlowHordeSimulation.h"
#include "glow_horde/Order.h"

namespace {

using Orders = std::vector<std::vector<unsigned char>>;
using Clock = std::chrono::steady_clock;

constexpr int k_players = 4;
constexpr int k_delay = 15;

Games const& TheGames() {
  static Games const games = [] {
    ChangeToExecutableDirectory();  // the maps are under data/ beside the executable
    return Games();
  }();
  return games;
}

GameSettings Settings(int units, int spawnDeciseconds, int seconds, int ordersEach) {
  IGame const& glowHorde = TheGames().refGame(Game::GlowHorde);
  GameSettings settings = DefaultSettingsFromSchema(glowHorde.schema);
  settings.strings["map"] = "Wrapped Ledges";
  settings.ints["number_to_spawn"] = units;
  settings.ints["spawn_interval_deciseconds"] = spawnDeciseconds;
  settings.ints["duration_seconds"] = seconds;
  if (ordersEach >= 0) {
    for (char const* key : {"bridge_orders", "horizontal_bridge_orders", "raise_ground_orders", "block_orders",
                            "dig_down_orders", "dig_sideways_orders", "dig_upwards_orders"}) {
      settings.ints[key] = ordersEach;
    }
  }
  return settings;
}

std::unique_ptr<GlowHordeSimulation> MakeGame(GameSettings const& settings) {
  MapSettings const& map = TheGames().refGame(Game::GlowHorde).maps.at("Wrapped Ledges");
  return std::make_unique<GlowHordeSimulation>(0, 16666, static_cast<std::uint8_t>(k_delay), settings, map,
                                               std::vector<unsigned short>{0, 1, 2, 3});
}

// Orders for this frame: for each player that `chooser` picks a unit of, that unit by its current
// place. They are given before each player's update, where the list is the one looked at here.
template <typename Chooser>
void OrdersFor(GlowHordeSimulation const& game, Chooser&& chooser, Orders& orders, std::vector<unsigned char>& ours) {
  for (int p = 0; p < k_players; ++p) {
    std::vector<unsigned char>& slot = p == 0 ? ours : orders[static_cast<std::size_t>(p)];
    slot.clear();
    if (std::optional<Order> order = chooser(game.players()[static_cast<std::size_t>(p)])) {
      auto const bytes = order->encode();
      slot.assign(bytes.begin(), bytes.end());
    }
  }
}

// A game of 200 units a player, a unit every 0.1 s, run until every unit is out and on its way.
std::unique_ptr<GlowHordeSimulation> CrowdedGame(int ordersEach) {
  auto game = MakeGame(Settings(200, 1, 600, ordersEach));
  Orders orders(k_players);
  while (game->players().back().toSpawn() > 0) {
    game->update(orders, {});
  }
  for (int i = 0; i < 200; ++i) {
    game->update(orders, {});
  }
  return game;
}

// Steps the game once per iteration with the orders that `chooser` gives, noting the worst frame.
template <typename Chooser>
void RunFrames(benchmark::State& state, GlowHordeSimulation& game, Chooser&& chooser) {
  Orders orders(k_players);
  std::vector<unsigned char> ours;
  double worst = 0.0;
  for (auto _ : state) {
    OrdersFor(game, chooser, orders, ours);
    Clock::time_point const start = Clock::now();
    game.update(orders, ours);
    worst = std::max(worst, std::chrono::duration<double, std::micro>(Clock::now() - start).count());
  }
  state.counters["worst_frame_us"] = worst;
  std::size_t units = 0;
  std::size_t busy = 0;
  for (PlayerState const& player : game.players()) {
    units += player.lemmings().size();
    busy += static_cast<std::size_t>(std::count_if(player.lemmings().begin(), player.lemmings().end(),
                                                   [](Lemming const& unit) { return unit.activity().has_value(); }));
  }
  state.counters["units"] = static_cast<double>(units);
  state.counters["with_activity"] = static_cast<double>(busy);
}

std::optional<Order> NoOrder(PlayerState const&) { return std::nullopt; }

// 800 plain walkers going their way down the ledges.
void BM_GlowHordeFrame_Walking(benchmark::State& state) {
  auto game = CrowdedGame(0);
  RunFrames(state, *game, NoOrder);
}
BENCHMARK(BM_GlowHordeFrame_Walking)->Iterations(2000)->Unit(benchmark::kMicrosecond);

// Every player keeps ordering its standing units round the long digging and bridging activities (220
// to 330 frames each), one order a frame, the most there can be, until most units are digging or
// building at any time (about 470 of the 800; the others are falling from ledge to ledge).
void BM_GlowHordeFrame_DiggingAndBridging(benchmark::State& state) {
  auto game = CrowdedGame(1000000);
  static constexpr LemmingActivity k_busy[] = {LemmingActivity::Bridge, LemmingActivity::DigSideways,
                                              LemmingActivity::HorizontalBridge, LemmingActivity::DigUpwards};
  int turn = 0;
  auto chooser = [&turn](PlayerState const& player) -> std::optional<Order> {
    auto const& units = player.lemmings();
    if (units.empty()) {
      return std::nullopt;
    }
    // The first unit in the list that stands with nothing to do (the busy ones are sorted first), or
    // failing that one further along each frame.
    std::size_t place = 0;
    while (place < units.size() && (units[place].activity().has_value() || units[place].inAir())) {
      ++place;
    }
    if (place == units.size()) {
      place = static_cast<std::size_t>(turn) % units.size();
    }
    ++turn;
    return Order{static_cast<std::uint16_t>(place), units[place].id(), k_busy[turn % 4], LemmingActivityTrigger::Immediate};
  };
  Orders orders(k_players);
  std::vector<unsigned char> ours;
  for (int i = 0; i < 800; ++i) {  // until the activities have spread over the crowd
    OrdersFor(*game, chooser, orders, ours);
    game->update(orders, ours);
  }
  RunFrames(state, *game, chooser);
}
BENCHMARK(BM_GlowHordeFrame_DiggingAndBridging)->Iterations(2000)->Unit(benchmark::kMicrosecond);

// The dearest frames found: every unit of every player blocking, each rebuilding its column of up to
// nine pixels each frame, in crowds at the four spawn ledges, while the last orders of the round
// arrive; blocked units make every other unit's look-ahead and climb read pending pixels.
void BM_GlowHordeFrame_Worst(benchmark::State& state) {
  auto game = CrowdedGame(1000000);
  auto chooser = [](PlayerState const& player) -> std::optional<Order> {
    auto const& units = player.lemmings();
    for (std::size_t place = 0; place < units.size(); ++place) {
      if (!units[place].activity().has_value() && !units[place].inAir()) {
        LemmingActivityTrigger const trigger =
            units[place].id() % 2 == 0 ? LemmingActivityTrigger::Immediate : LemmingActivityTrigger::BeforeFalling;
        return Order{static_cast<std::uint16_t>(place), units[place].id(), LemmingActivity::Block, trigger};
      }
    }
    return std::nullopt;
  };
  RunFrames(state, *game, chooser);
}
BENCHMARK(BM_GlowHordeFrame_Worst)->Iterations(2000)->Unit(benchmark::kMicrosecond);


// A default game for four (50 units a player, one every 3.3 s, 180 s), each player giving an order
// every two seconds or so to a unit near a random one of its own, all of it from construction to
// result on one client. The counter "times_real_time" is game time over the time it took.
void BM_GlowHordeWholeDefaultGame(benchmark::State& state) {
  IGame const& glowHorde = TheGames().refGame(Game::GlowHorde);
  GameSettings settings = DefaultSettingsFromSchema(glowHorde.schema);
  settings.strings["map"] = "Wrapped Ledges";
  std::mt19937 random(7);
  auto chooser = [&random](PlayerState const& player) -> std::optional<Order> {
    if (player.lemmings().empty() || random() % 120 != 0) {
      return std::nullopt;
    }
    Position const near = player.lemmings()[random() % player.lemmings().size()].position();
    UIOrder click{near.x + static_cast<int>(random() % 61) - 30, near.y + static_cast<int>(random() % 61) - 30,
                  static_cast<LemmingActivity>(random() % 7), static_cast<LemmingActivityTrigger>(random() % 4),
                  DirectionFilter::Any};
    return player.resolveUIOrder(click);
  };
  double seconds = 0.0;
  long long frames = 0;
  for (auto _ : state) {
    Clock::time_point const start = Clock::now();
    auto game = MakeGame(settings);
    Orders orders(k_players);
    std::vector<unsigned char> ours;
    while (!game->gameEnded()) {
      OrdersFor(*game, chooser, orders, ours);
      game->update(orders, ours);
    }
    GameResult result;
    game->getGameResult(result);
    benchmark::DoNotOptimize(result);
    seconds += std::chrono::duration<double>(Clock::now() - start).count();
    frames += game->frame();
  }
  double const games = static_cast<double>(state.iterations());
  state.counters["times_real_time"] = 180.0 * games / seconds;
  state.counters["frames"] = static_cast<double>(frames) / games;
}
BENCHMARK(BM_GlowHordeWholeDefaultGame)->Iterations(5)->Unit(benchmark::kMillisecond);

}  // namespace
