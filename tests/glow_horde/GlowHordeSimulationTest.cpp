#include <gtest/gtest.h>

#include <memory>
#include <vector>

#include "net/GameRecordsWire.h"
#include "sim/Games.h"
#include "glow_horde/GlowHordeSimulation.h"
#include "support/TestImages.h"

namespace {

using Orders = std::vector<std::vector<unsigned char>>;
using Bytes = std::vector<unsigned char>;
constexpr std::uint64_t k_framePeriod = 16666;

Games const& TheGames() {
  static Games const games;
  return games;
}

MapSettings CatalogueMap(std::string const& name) { return TheGames().refGame(Game::GlowHorde).maps.at(name); }

// The schema's defaults on the map, with some values changed.
GameSettings Settings(std::string const& map, std::initializer_list<std::pair<char const*, int>> changes = {}) {
  GameSettings settings = DefaultSettingsFromSchema(TheGames().refGame(Game::GlowHorde).schema);
  settings.strings["map"] = map;
  for (auto const& [key, value] : changes) {
    settings.ints[key] = value;
  }
  return settings;
}

std::unique_ptr<GlowHordeSimulation> Make(std::string const& map, std::vector<unsigned short> const& slots, int local,
                                          int delay, GameSettings const& settings) {
  return std::make_unique<GlowHordeSimulation>(local, k_framePeriod, static_cast<std::uint8_t>(delay),
                                               settings, CatalogueMap(map), slots);
}

Orders NoOrders(std::size_t players) { return Orders(players); }

Bytes ResultBytes(GlowHordeSimulation const& simulation) {
  GameResult result;
  simulation.getGameResult(result);
  Bytes bytes;
  ToBytes(result, bytes);
  return bytes;
}

// The first order a click at the unit of the given list place would give: that unit, by index and id.
Bytes OrderFor(PlayerState const& player, std::size_t place, LemmingActivity activity,
               LemmingActivityTrigger trigger = LemmingActivityTrigger::Immediate) {
  Lemming const& unit = player.lemmings().at(place);
  return Order{static_cast<std::uint16_t>(place), unit.id(), activity, trigger}.toBytes();
}

}  // namespace

TEST(GlowHordeSimulation, TheHeadStartRunsOnlyTheLocalPlayersClock) {
  auto simulation = Make("Wrapped Ledges", {0, 1}, 1, 15, Settings("Wrapped Ledges", {{"spawn_interval_deciseconds", 20}}));
  EXPECT_EQ(simulation->frame(), 15u);
  EXPECT_EQ(simulation->endFrame(), 180u * 1000000u / 16666u);  // the schema's 180 s
  EXPECT_EQ(&simulation->localPlayerState(), &simulation->players()[1]);
  EXPECT_EQ(simulation->players()[1].spawnClock(), 15 * 16666);
  EXPECT_EQ(simulation->players()[0].spawnClock(), 0);
  EXPECT_TRUE(simulation->players()[1].lemmings().empty());

  // A unit every 2 s: the 121st update of a player makes its first. The local player's is its update
  // 120 at frame 120; the other player's the same update, at frame 135.
  while (simulation->frame() < 120) {
    simulation->update(NoOrders(2), {});
  }
  EXPECT_TRUE(simulation->players()[1].lemmings().empty());
  simulation->update(NoOrders(2), {});
  EXPECT_EQ(simulation->players()[1].lemmings().size(), 1u);
  EXPECT_TRUE(simulation->players()[0].lemmings().empty());
  while (simulation->frame() < 136) {
    EXPECT_TRUE(simulation->players()[0].lemmings().empty()) << simulation->frame();
    simulation->update(NoOrders(2), {});
  }
  EXPECT_EQ(simulation->players()[0].lemmings().size(), 1u);
}

TEST(GlowHordeSimulation, OnlyTheExitsOfTeamsInPlayExistNumberedInMapOrder) {
  // Ledges: slots 1 and 3 are both on team 1, whose exit is the map's second; it becomes team 0.
  auto ledges = Make("Wrapped Ledges", {3, 1}, 0, 10, Settings("Wrapped Ledges"));
  EXPECT_EQ(ledges->exitPositions(), (std::vector<Position>{{400, 159}}));
  EXPECT_EQ(ledges->teams(), (std::vector<int>{-1, 0, -1, 0}));
  EXPECT_EQ(ledges->exitedCounts(), (std::vector<int>{0}));
  GameResult result;
  ledges->getGameResult(result);
  EXPECT_EQ(result.results, (std::vector<std::vector<long long>>{{0, 0}}));

  // Cauldrons with slots 2 and 0: the exits of teams 0 and 2 stay, in map order, as teams 0 and 1.
  auto cauldrons = Make("Cauldrons", {2, 0}, 1, 10, Settings("Cauldrons"));
  EXPECT_EQ(cauldrons->exitPositions(), (std::vector<Position>{{853, 208}, {341, 208}}));
  EXPECT_EQ(cauldrons->teams(), (std::vector<int>{0, -1, 1}));

  // A negative coordinate counts from the far edge, whatever the wrap flags.
  auto unwrapped = Make("Unwrapped Ledges", {0, 1}, 0, 10, Settings("Unwrapped Ledges"));
  EXPECT_EQ(unwrapped->exitPositions(), (std::vector<Position>{{2048 - 401, 159}, {400, 159}}));
  EXPECT_EQ(unwrapped->players()[1].spawn(), (Position{2048 - 441, 991}));
  EXPECT_EQ(GlowHordeSimulation::WrappedAlways({-1, -1}, 100, 50), (Position{99, 49}));
  EXPECT_EQ(GlowHordeSimulation::WrappedAlways({0, 7}, 100, 50), (Position{0, 7}));
}

TEST(GlowHordeSimulation, EndingNowBringsTheEndForwardAndTheTailStillRuns) {
  auto simulation = Make("Cauldrons", {0, 1}, 0, 12, Settings("Cauldrons", {{"duration_seconds", 30}}));
  EXPECT_EQ(simulation->endFrame(), 30u * 1000000u / 16666u);
  while (simulation->frame() < 100) {
    simulation->update(NoOrders(2), {});
  }
  simulation->endGameNow();
  EXPECT_EQ(simulation->endFrame(), 100u);
  EXPECT_TRUE(simulation->gameEnded_LocalPlayer());
  EXPECT_FALSE(simulation->gameEnded());

  // In the tail the local player stands still while the other player's updates catch up.
  std::uint64_t const localBefore = simulation->playerDigest(0);
  std::uint64_t const otherBefore = simulation->playerDigest(1);
  for (int i = 0; i < 11; ++i) {
    simulation->update(NoOrders(2), {});
    simulation->endGameNow();  // later calls never move the end
  }
  EXPECT_EQ(simulation->endFrame(), 100u);
  EXPECT_FALSE(simulation->gameEnded());
  simulation->update(NoOrders(2), {});
  EXPECT_TRUE(simulation->gameEnded());
  EXPECT_EQ(simulation->frame(), 112u);
  EXPECT_EQ(simulation->playerDigest(0), localBefore);
  EXPECT_NE(simulation->playerDigest(1), otherBefore);
  GameResult result;
  simulation->getGameResult(result);
  EXPECT_EQ(result.endFrame, 112u);
}

TEST(GlowHordeSimulation, AnEmptyOrderListStepsTheLocalPlayerAlone) {
  auto simulation = Make("Cauldrons", {0, 1}, 0, 10, Settings("Cauldrons", {{"spawn_interval_deciseconds", 1}}));
  std::uint64_t const other = simulation->playerDigest(1);
  std::uint64_t const local = simulation->playerDigest(0);
  std::uint64_t const world = simulation->localBaseDigest();
  GameResult before;
  simulation->getGameResult(before);
  simulation->update({}, {});
  EXPECT_EQ(simulation->playerDigest(1), other);
  EXPECT_NE(simulation->playerDigest(0), local);
  EXPECT_EQ(simulation->frame(), 11u);
  // The result's checksum covers the players' states, not only the world.
  GameResult after;
  simulation->getGameResult(after);
  EXPECT_EQ(simulation->localBaseDigest(), world);
  EXPECT_NE(after.endStateChecksum, before.endStateChecksum);
}

TEST(GlowHordeSimulation, OrdersAreHeardOnlyWhenTheLocalPlayersOwnTakeEffect) {
  auto simulation = Make("Cauldrons", {0, 1}, 0, 10,
                         Settings("Cauldrons", {{"spawn_interval_deciseconds", 1}, {"block_orders", 0}, {"dig_down_orders", 2}}));
  while (simulation->localPlayerState().lemmings().empty() || simulation->players()[1].lemmings().empty()) {
    simulation->update(NoOrders(2), {});
  }
  PlayerState const& local = simulation->localPlayerState();
  // An order that takes effect is heard; one for an activity with none left reaches the player state
  // and is refused there, with no sound and no change of the counts.
  EXPECT_TRUE(simulation->update(NoOrders(2), OrderFor(local, 0, LemmingActivity::DigDown)).localOrderAccepted);
  EXPECT_EQ(local.availabilities()[LemmingActivity::DigDown], 1);
  EXPECT_FALSE(simulation->update(NoOrders(2), OrderFor(local, 0, LemmingActivity::Block)).localOrderAccepted);
  EXPECT_EQ(local.availabilities()[LemmingActivity::Block], 0);
  // Bytes that are no order at all change nothing.
  EXPECT_FALSE(simulation->update(NoOrders(2), Bytes{1, 2, 3}).localOrderAccepted);
  EXPECT_FALSE(simulation->update(NoOrders(2), Bytes{0, 0, 0, 0, 9, 0, 0}).localOrderAccepted);
  EXPECT_EQ(local.availabilities()[LemmingActivity::DigDown], 1);

  // Another player's order takes effect silently; the local player's entry in orders is ignored.
  PlayerState const& other = simulation->players()[1];
  Orders orders{OrderFor(local, 0, LemmingActivity::DigDown), OrderFor(other, 0, LemmingActivity::DigDown)};
  EXPECT_FALSE(simulation->update(orders, {}).localOrderAccepted);
  EXPECT_EQ(other.availabilities()[LemmingActivity::DigDown], 1);
  EXPECT_EQ(local.availabilities()[LemmingActivity::DigDown], 1);
}

TEST(GlowHordeSimulationDeathTest, AnOrderNamingAUnitThatIsNotThereMeansTheClientsHaveParted) {
  auto simulation = Make("Cauldrons", {0}, 0, 10, Settings("Cauldrons", {{"spawn_interval_deciseconds", 1}}));
  while (simulation->localPlayerState().lemmings().empty()) {
    simulation->update(NoOrders(1), {});
  }
  Bytes const wrongId = Order{0, 77, LemmingActivity::Block, LemmingActivityTrigger::Immediate}.toBytes();
  EXPECT_DEATH(simulation->update(NoOrders(1), wrongId), "lem.id\\(\\) == order.id_");
  Bytes const pastTheEnd = Order{40, 0, LemmingActivity::Block, LemmingActivityTrigger::Immediate}.toBytes();
  EXPECT_DEATH(simulation->update(NoOrders(1), pastTheEnd), "order.index_in_array_ < lemmings_.size\\(\\)");
}

// Two clients of one game, each with its own local player, fed each other's orders delayFrames late.
class TwoClients : public ::testing::Test {
protected:
  static constexpr int k_delay = 15;

  void make(std::string const& map, GameSettings const& settings) {
    a = Make(map, {0, 1}, 0, k_delay, settings);
    b = Make(map, {0, 1}, 1, k_delay, settings);
  }
  // One frame on both; orderA and orderB are the two players' orders of this frame.
  void step(Bytes const& orderA = {}, Bytes const& orderB = {}) {
    ticks.push_back({orderA, orderB});
    std::size_t const k = ticks.size() - 1;
    Orders const arriving = k >= static_cast<std::size_t>(k_delay) ? ticks[k - k_delay] : NoOrders(2);
    a->update(arriving, a->gameEnded_LocalPlayer() ? Bytes{} : orderA);
    b->update(arriving, b->gameEnded_LocalPlayer() ? Bytes{} : orderB);
  }

  std::unique_ptr<GlowHordeSimulation> a;
  std::unique_ptr<GlowHordeSimulation> b;
  std::vector<Orders> ticks;
};

TEST_F(TwoClients, AUnitArrivingAtTheLastUpdateCountsOnTheClientWhereItIsAnotherPlayers) {
  GameSettings const settings = Settings("Wrapped Ledges");
  // Find the update at which player 0's first unit reaches its exit.
  make("Wrapped Ledges", settings);
  while (a->exitedCounts()[0] == 0) {
    ASSERT_FALSE(a->gameEnded_LocalPlayer());
    step();
  }
  std::uint32_t const arrival = a->frame() - 1;  // the local player's update number is the frame

  // Play again and end the game right after that update: on client b it comes in the tail.
  make("Wrapped Ledges", settings);
  ticks.clear();
  while (a->frame() <= arrival) {
    step();
  }
  a->endGameNow();
  b->endGameNow();
  EXPECT_EQ(a->exitedCounts()[0], 1);
  EXPECT_EQ(b->exitedCounts()[0], 0);
  while (!a->gameEnded() || !b->gameEnded()) {
    step();
  }
  EXPECT_EQ(b->exitedCounts()[0], 1);
  EXPECT_EQ(b->exitTimes()[0], 16LL * arrival);
  EXPECT_EQ(ResultBytes(*a), ResultBytes(*b));
}

TEST(GlowHordeSimulation, AnExitTakesUnitsAcrossTheSeamOfAWrappingWorld) {
  // A flat floor (y 0 to 19) across a 512 by 256 world, the exit 5 pixels right of the left edge and
  // the spawn 60 pixels left of the right edge, the unit facing right.
  testing_support::ScopedDataDirectory directory;
  testing_support::SaveImage("seam.png", 512, 256, [](int, int row) { return 255 - row < 20 ? 0xFE7A5030u : 0u; });
  MapSettings map{.name = "Seam", .imageFile = "seam.png", .starts = {{452, 40}}, .startFacesRight = {true},
                  .exits = {{5, 20}}, .playerTeams = {0}};
  GameSettings const settings =
      Settings("Seam", {{"number_to_spawn", 1}, {"spawn_interval_deciseconds", 1}, {"duration_seconds", 2}});

  // The unit appears after update 6 (7 x 16,666 us > 0.1 s), falls 20 pixels in updates 7 to 26,
  // walks from x 453 at update 27, and is 30 pixels from the exit across the seam at x 487: update 61.
  for (bool wrap : {true, false}) {
    SCOPED_TRACE(wrap ? "wrapping" : "not wrapping");
    map.wrapX = map.cameraWrapX = wrap;
    GlowHordeSimulation simulation(0, k_framePeriod, 10, settings, map, {0});
    std::uint32_t arrival = 0;
    while (!simulation.gameEnded() && arrival == 0) {
      std::uint32_t const frame = simulation.frame();
      if (simulation.update(NoOrders(1), {}).exitArrivals > 0) {
        arrival = frame;
      }
    }
    // Without wrap the unit meets the solid edge of the world and turns back.
    EXPECT_EQ(arrival, wrap ? 61u : 0u);
    EXPECT_EQ(simulation.exitTimes()[0], wrap ? 16 * 61 : 0);
    EXPECT_EQ(simulation.exitedCounts()[0], wrap ? 1 : 0);
  }
}
