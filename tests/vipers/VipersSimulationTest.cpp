#include "vipers/VipersSimulation.h"

#include <gtest/gtest.h>

#include <limits>
#include <memory>
#include <random>

#include "sim/Games.h"
#include "support/TestImages.h"
#include "vipers/Food.h"

namespace {

using Orders = std::vector<std::vector<unsigned char>>;
using P = Vec2<AviatorCoord>;
constexpr std::uint64_t k_framePeriod = 16666;
constexpr std::int64_t k_survived = std::numeric_limits<std::int64_t>::max();

Games const& TheGames() {
  static Games const games;
  return games;
}

GameSettings Settings(std::initializer_list<std::pair<char const*, int>> changes = {}) {
  GameSettings settings = DefaultSettingsFromSchema(TheGames().refGame(Game::Vipers).schema);
  for (auto const& [key, value] : changes) {
    settings.ints[key] = value;
  }
  return settings;
}

// A 512-pixel square of open space inside a 4-pixel wall; slots start 100 pixels in from each corner
// and fly upward.
class Arena : public ::testing::Test {
protected:
  Arena() {
    testing_support::SaveImage("arena.png", 512, 512, [](int x, int y) {
      bool const wall = x < 4 || y < 4 || x >= 508 || y >= 508;
      return wall ? 0xFF806040u : 0x00000000u;
    });
    map.name = "Arena";
    map.imageFile = "arena.png";
    map.maxPlayers = 4;
    map.starts = {{100, 100}, {-100, -100}, {-100, 100}, {100, -100}};
    map.playerTeams = {0, 1, 2, 3};
  }

  std::unique_ptr<VipersSimulation> make(std::vector<unsigned short> const& slots, int local = 0, int delay = 15,
                                         GameSettings const& settings = Settings()) {
    return std::make_unique<VipersSimulation>(local, k_framePeriod, static_cast<std::uint8_t>(delay), settings,
                                              map, slots);
  }

  // Puts head i at pixel (x, y) with a velocity, its tail a single point there.
  static void Place(VipersSimulation& simulation, std::size_t i, int x, int y, P velocity) {
    ViperHead& head = simulation.mutableHeads()[i];
    head.body.position = {x * 256, y * 256};
    head.body.velocity = velocity;
    std::int32_t const length = simulation.tails()[i].length();
    simulation.mutableTails()[i] = Tail(head.body.position);
    simulation.mutableTails()[i].setLength(length);
  }

  testing_support::ScopedDataDirectory directory;
  MapSettings map;
};

TEST_F(Arena, HeadsStartAtPixelCentresAndThePredictionStartsAheadOfThem) {
  auto simulation = make({0, 1}, 1, 15);
  ASSERT_EQ(simulation->heads().size(), 2u);
  // 512 - 1 - 100 = 411 for the negative start.
  EXPECT_EQ(simulation->heads()[0].body.position, (P{100 * 256 + 128, 100 * 256 + 128}));
  EXPECT_EQ(simulation->heads()[1].body.position, (P{411 * 256 + 128, 411 * 256 + 128}));
  EXPECT_EQ(simulation->heads()[1].body.velocity, (P{0, 1024}));
  EXPECT_EQ(simulation->tails()[0].length(), 600 * 256);
  EXPECT_EQ(simulation->tails()[0].points().size(), 1u);
  EXPECT_EQ(simulation->frame(), 15u);
  EXPECT_EQ(simulation->endFrame(), 180u * 1000000u / 16666u);
  // The shared heads stood still; the prediction flew 15 frames at 4 pixels a frame.
  EXPECT_EQ(simulation->shadow().body.position, (P{411 * 256 + 128, 411 * 256 + 128 + 15 * 1024}));
}

TEST(VipersSimulation, StartRotationsGoByPlayerIndexOnTheCatalogueMap) {
  MapSettings const catalogue = TheGames().refGame(Game::Vipers).maps.at("The Empty Berth");
  VipersSimulation simulation(0, k_framePeriod, 15, Settings(), catalogue, {3, 0});
  EXPECT_EQ(simulation.heads()[0].body.rotation, 0x2000);
  EXPECT_EQ(simulation.heads()[1].body.rotation, 0xA000);
  EXPECT_EQ(simulation.heads()[0].body.velocity, DirectionVector(0x2000, 1024));
}

TEST_F(Arena, AStraightFlightNeverStallsAndKeepsTwoTailPoints) {
  auto simulation = make({0}, 0, 15);
  Place(*simulation, 0, 256, 100, {768, 0});
  for (int i = 0; i < 40; ++i) {
    simulation->update({{}}, {});
  }
  EXPECT_EQ(simulation->heads()[0].body.position, (P{256 * 256 + 40 * 768, 100 * 256}));
  EXPECT_EQ(simulation->tails()[0].points().size(), 2u);
  EXPECT_EQ(simulation->tails()[0].currentLength(), 40 * 768);
  EXPECT_TRUE(simulation->heads()[0].alive());
}

TEST_F(Arena, ABounceCostsTailBySpeedButNeverBelowAHundredPixels) {
  struct Case {
    int speed;
    int startLength;  // pixels
    int expected;     // 1/256 pixel
  } const cases[] = {
      {3072, 600, 600 * 256 - 60 * 256},      // full impact: all of the penalty
      {5000, 600, 600 * 256 - 60 * 256},      // faster costs no more
      {1536, 600, 600 * 256 - 30 * 256},      // half the full speed: half the penalty
      {1000, 600, 600 * 256 - 15360 * 1000 / 3072},
      {3072, 100, 100 * 256},                 // already at the shortest
      {3072, 130, 100 * 256},                 // cut to the shortest, not below
  };
  for (Case const& c : cases) {
    auto simulation = make({0}, 0, 15, Settings({{"start_length", c.startLength}}));
    Place(*simulation, 0, 256, 20, {0, -c.speed});
    int frames = 0;
    while (simulation->heads()[0].body.recoveryFrames == 0 && frames < 10) {
      simulation->update({{}}, {});
      ++frames;
    }
    ASSERT_LT(frames, 10) << "no bounce at speed " << c.speed;
    EXPECT_EQ(simulation->tails()[0].length(), c.expected) << "speed " << c.speed << ", start " << c.startLength;
    // Two frames standing still, then at least the minimum speed again.
    simulation->update({{}}, {});
    simulation->update({{}}, {});
    simulation->update({{}}, {});
    EXPECT_GE(LengthSquared(simulation->heads()[0].body.velocity), 768 * 768);
  }
}

TEST_F(Arena, ThrustAddsAHundredAFrameWithoutLimit) {
  auto simulation = make({0}, 0, 1);
  Place(*simulation, 0, 256, 20, {0, 768});
  simulation->update({{4}}, {4});  // thrust: acts on the shared head at once, as its delayed order
  EXPECT_EQ(simulation->heads()[0].body.velocity, (P{0, 868}));
  for (int i = 0; i < 20; ++i) {
    simulation->update({{}}, {});
  }
  EXPECT_EQ(simulation->heads()[0].body.velocity, (P{0, 868 + 20 * 100}));
}

TEST_F(Arena, FoodEatenByTwoHeadsAtOnceGoesToTheFirstInPlayerOrder) {
  auto simulation = make({0, 1}, 0, 15);
  Place(*simulation, 0, 200, 200, {768, 0});
  Place(*simulation, 1, 200, 240, {768, 0});
  simulation->mutableFood() = {{203, 220}, {400, 400}};
  simulation->update({{}, {}}, {});
  EXPECT_EQ(simulation->tails()[0].length(), (600 + 200) * 256);
  EXPECT_EQ(simulation->tails()[1].length(), 600 * 256);
  EXPECT_EQ(simulation->food(), (std::vector<Vec2<WorldCoord>>{{400, 400}}));
  // One head eats every item that its step touches.
  simulation->mutableFood() = {{210, 190}, {300, 300}, {210, 210}};
  simulation->update({{}, {}}, {});
  EXPECT_EQ(simulation->tails()[0].length(), (600 + 600) * 256);
  EXPECT_EQ(simulation->food(), (std::vector<Vec2<WorldCoord>>{{300, 300}}));
}

TEST_F(Arena, FoodComesEvery180FramesOnFreePixelsUpToFifteen) {
  auto simulation = make({0, 1}, 0, 15);
  while (simulation->frame() < 180) {
    simulation->update({{}, {}}, {});
  }
  EXPECT_TRUE(simulation->food().empty());
  simulation->update({{}, {}}, {});  // frame 180
  ASSERT_EQ(simulation->food().size(), 1u);
  Vec2<WorldCoord> const item = simulation->food()[0];
  EXPECT_FALSE(simulation->bodyMap().isBlocked(item.x, item.y));
  EXPECT_GE(item.x, 14);
  EXPECT_LE(item.x, 497);

  simulation->mutableFood().assign(15, Vec2<WorldCoord>{1, 1});
  while (simulation->frame() <= 360) {
    simulation->update({{}, {}}, {});
  }
  EXPECT_EQ(simulation->food().size(), 15u);
}

TEST_F(Arena, CrossingALivingTailKillsButADeadHeadsTailDoesNot) {
  for (bool const ownerAlive : {true, false}) {
    auto simulation = make({0, 1}, 0, 15);
    Place(*simulation, 0, 100, 200, {768, 0});
    Place(*simulation, 1, 130, 150, {0, 768});
    // Head 1 draws a wall across head 0's way, then flies on.
    simulation->mutableTails()[1].update({130 * 256, 250 * 256});
    simulation->mutableHeads()[1].body.position = {130 * 256, 250 * 256};
    if (!ownerAlive) {
      simulation->mutableHeads()[1].deathFrame = 3;
    }
    for (int i = 0; i < 15; ++i) {
      simulation->update({{}, {}}, {});
    }
    // From x = 100 at 3 pixels a frame, the step from 127 to 130 touches the wall: frame 15 + 9.
    if (ownerAlive) {
      EXPECT_EQ(simulation->heads()[0].deathFrame, std::optional<std::int32_t>(24));
      EXPECT_EQ(simulation->heads()[0].body.position.x, 130 * 256);  // a dead head moves no more
    } else {
      EXPECT_TRUE(simulation->heads()[0].alive());
      EXPECT_EQ(simulation->heads()[0].body.position.x, (100 + 45) * 256);
    }
  }
}

TEST_F(Arena, AHeadThatLoopsCrossesItsOwnTailUnlessTheTailIsShorterThanALoop) {
  for (int const startLength : {600, 100}) {
    auto simulation = make({0}, 0, 15, Settings({{"start_length", startLength}}));
    Place(*simulation, 0, 300, 256, {768, 0});
    simulation->update({{5}}, {5});  // turn left and thrust: loops of about 90 pixels that drift left
    int bounces = 0;
    while (simulation->heads()[0].alive() && simulation->frame() < 15 + 128) {
      simulation->update({{}}, {});
      bounces += simulation->heads()[0].body.recoveryFrames == 2;
    }
    EXPECT_EQ(bounces, 0);
    if (startLength == 600) {
      // The second loop, 64 frames on, runs across the first.
      ASSERT_FALSE(simulation->heads()[0].alive());
      EXPECT_GE(*simulation->heads()[0].deathFrame, 15 + 64);
    } else {
      EXPECT_TRUE(simulation->heads()[0].alive());
    }
  }
}

TEST_F(Arena, TheGameRunsToTheClockWithEveryHeadDeadAndReportsTimesOfDeath) {
  auto simulation = make({0, 1}, 1, 15, Settings({{"duration_seconds", 30}}));
  simulation->mutableHeads()[0].deathFrame = 600;
  simulation->mutableHeads()[1].deathFrame = 20;
  int steps = 0;
  while (!simulation->gameEnded()) {
    simulation->update({{}, {}}, {});
    ++steps;
  }
  std::uint32_t const endFrame = 30u * 1000000u / 16666u;
  EXPECT_EQ(steps, static_cast<int>(endFrame));
  GameResult result;
  simulation->getGameResult(result);
  EXPECT_EQ(result.endFrame, endFrame + 15);
  EXPECT_EQ(result.results, (std::vector<std::vector<long long>>{{600 * 256, 9999}, {600 * 256, 333}}));

  auto alive = make({0}, 0, 15);
  alive->getGameResult(result);
  EXPECT_EQ(result.results, (std::vector<std::vector<long long>>{{600 * 256, k_survived}}));
  // Ending now stops the prediction at once and the shared state delayFrames later.
  alive->endGameNow();
  alive->endGameNow();
  EXPECT_TRUE(alive->gameEnded_LocalPlayer());
  EXPECT_FALSE(alive->gameEnded());
  P const shadow = alive->shadow().body.position;
  for (int i = 0; i < 15; ++i) {
    alive->update({{}}, {5});
  }
  EXPECT_TRUE(alive->gameEnded());
  EXPECT_EQ(alive->shadow().body.position, shadow);
}

// The prediction is the shared head run delayFrames steps early on the same orders: bounces included,
// the local head's shared position at step s + delay is where the prediction stood after step s.
TEST_F(Arena, ThePredictionIsTheSharedHeadDelayFramesAhead) {
  for (int const delay : {1, 15, 35}) {
    auto simulation = make({0}, 0, delay, Settings({{"start_length", 300}}));
    std::mt19937 random(static_cast<unsigned>(delay));
    std::vector<std::vector<unsigned char>> given;
    std::vector<P> predicted;
    int bounces = 0;
    for (int step = 0; step < 900 && simulation->heads()[0].alive(); ++step) {
      std::vector<unsigned char> order;
      if (random() % 10 == 0) {
        order = {static_cast<unsigned char>(random() % 16)};
      }
      given.push_back(order);
      Orders orders(1);
      if (step >= delay) {
        orders[0] = given[static_cast<std::size_t>(step - delay)];
      }
      simulation->update(orders, order);
      predicted.push_back(simulation->shadow().body.position);
      bounces += simulation->heads()[0].body.recoveryFrames == 2;
      if (step >= delay && simulation->heads()[0].alive()) {
        ASSERT_EQ(simulation->heads()[0].body.position, predicted[static_cast<std::size_t>(step - delay)])
            << "delay " << delay << ", step " << step;
      }
    }
    EXPECT_GT(predicted.size(), 300u);
    EXPECT_GT(bounces, 0) << "the walls were never reached";
  }
}

TEST_F(Arena, TheChecksumCoversTheHeadsButNotThePrediction) {
  auto a = make({0, 1}, 0, 15);
  auto b = make({0, 1}, 1, 15);
  GameResult ra, rb;
  a->update({{}, {}}, {1});
  b->update({{}, {}}, {2});
  a->getGameResult(ra);
  b->getGameResult(rb);
  EXPECT_EQ(ra, rb);
  a->mutableHeads()[1].body.controls = 3;
  a->getGameResult(ra);
  EXPECT_NE(ra.endStateChecksum, rb.endStateChecksum);
}

TEST_F(Arena, SettingsOutOfAnyRangeNeitherCrashNorOverflow) {
  for (int value : {std::numeric_limits<int>::max(), std::numeric_limits<int>::min(), -1, 0}) {
    auto simulation = make({0, 1}, 0, 3,
                           Settings({{"start_length", value}, {"grow_by", value}, {"collision_penalty", value},
                                     {"duration_seconds", 2}}));
    simulation->mutableFood() = {{100, 105}};
    for (int i = 0; i < 400; ++i) {
      simulation->update({{static_cast<unsigned char>(i * 37)}, {0xFF, 1, 2}}, {static_cast<unsigned char>(i)});
    }
    GameResult result;
    simulation->getGameResult(result);
    EXPECT_EQ(result.results.size(), 2u);
  }
  GameSettings missing = Settings();
  missing.ints.erase("grow_by");
  EXPECT_THROW(make({0}, 0, 15, missing), std::out_of_range);
}

}  // namespace

// On the game's map opposite slots start on one diagonal and fly along it toward each other, so their
// first steps lie on one line, and segments on one line count as crossing even where they do not
// overlap: both heads of each opposite pair die at the first frame. Neighbouring slots fly on.
TEST(VipersSimulation, OppositeSlotsStartOnOneLineAndTheCollinearRuleTakesBothAtOnce) {
  IGame const& game = TheGames().refGame(Game::Vipers);
  GameSettings const settings = DefaultSettingsFromSchema(game.schema);
  MapSettings const& map = game.maps.at("The Empty Berth");
  VipersSimulation four(0, k_framePeriod, 15, settings, map, {0, 1, 2, 3});
  VipersSimulation neighbours(0, k_framePeriod, 15, settings, map, {0, 2});
  for (int f = 0; f < 25; ++f) {  // 100 pixels, short of the middle where their ways cross
    four.update(Orders(4), {});
    neighbours.update(Orders(2), {});
  }
  for (std::size_t i = 0; i < 4; ++i) {
    EXPECT_EQ(four.heads()[i].deathFrame, std::optional<std::int32_t>(15)) << i;
  }
  for (std::size_t i = 0; i < 2; ++i) {
    EXPECT_TRUE(neighbours.heads()[i].alive()) << i;
    EXPECT_EQ(neighbours.tails()[i].points().size(), 2u);  // straight on: two points
  }
}
