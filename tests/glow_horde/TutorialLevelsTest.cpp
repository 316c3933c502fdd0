// The four tutorial levels played through the real simulation with the orders that their summaries
// and help texts describe. The expected arrival frames were worked out independently, by the asset
// tool's own model of the unit rules when the maps were designed, and are listed in
// tools/make_assets/README.md.
#include <gtest/gtest.h>

#include "glow_horde/LocalGameRunner.h"

using namespace glow_horde_testing;

namespace {

struct Level {
  int level;
  std::vector<TimedOrder> solution;
  std::vector<std::uint32_t> arrivals;
};

std::vector<Level> const& Levels() {
  static std::vector<Level> const levels = {
      {0, {{300, "800,600 dig_down"}}, {1057}},
      {1, {{250, "800,700 dig_sideways blocked right"}}, {1109, 1405}},
      {2,
       {{240, "560,560 bridge falling right"},
        {500, "540,560 bridge falling right"},
        {1020, "270,560 bridge falling right"},
        {1140, "150,560 bridge falling right"}},
       {2355, 3725, 3984, 4804}},
      {3,
       {{200, "700,300 bridge turned left"}, {480, "720,312 bridge turned right"}, {780, "714,341 bridge turned left"}},
       {1164, 1165, 1168, 1234, 1292, 1297, 1304, 1307, 1377, 1404}},
  };
  return levels;
}

class TutorialLevel : public ::testing::TestWithParam<int> {};

}  // namespace

TEST_P(TutorialLevel, IntendedSolutionBringsUnitsOutAtTheFramesWorkedOutForTheMap) {
  Level const& level = Levels()[static_cast<std::size_t>(GetParam())];
  PlayedGame const played = PlayLocalGame(TutorialSettings(level.level), TutorialMap(level.level), level.solution);

  EXPECT_EQ(played.ordersSent, static_cast<int>(level.solution.size()));
  EXPECT_EQ(played.ordersAccepted, static_cast<int>(level.solution.size()));
  EXPECT_EQ(played.arrivalFrames, level.arrivals);
  // One row, for the one team: units out and minus their arrival times (16 ms a frame) in total.
  long long totalMilliseconds = 0;
  for (std::uint32_t frame : level.arrivals) {
    totalMilliseconds += 16LL * frame;
  }
  ASSERT_EQ(played.result.results.size(), 1u);
  EXPECT_EQ(played.result.results[0], (std::vector<long long>{static_cast<long long>(level.arrivals.size()), -totalMilliseconds}));
  // The game runs its full time: the session's end frame plus the delay.
  std::int32_t const seconds = TutorialSettings(level.level).ints.at("duration_seconds");
  EXPECT_EQ(played.result.endFrame, static_cast<std::uint32_t>(seconds * 1000000LL / 16666 + 15));
}

TEST_P(TutorialLevel, NoUnitGetsOutWithoutOrders) {
  int const level = GetParam();
  PlayedGame const played = PlayLocalGame(TutorialSettings(level), TutorialMap(level), {});
  ASSERT_EQ(played.result.results.size(), 1u);
  EXPECT_EQ(played.result.results[0], (std::vector<long long>{0, 0}));
}

INSTANTIATE_TEST_SUITE_P(AllLevels, TutorialLevel, ::testing::Range(0, 4),
                         [](::testing::TestParamInfo<int> const& info) { return "Level" + std::to_string(info.param + 1); });

TEST(TutorialLevelMistakes, OrdersThatTheLessonWarnsAboutSaveNobody) {
  // Level 2: dig sideways given to the unit facing left is spent on the rock wall behind it.
  PlayedGame wrongWay = PlayLocalGame(TutorialSettings(1), TutorialMap(1), {{250, "800,700 dig_sideways blocked left"}});
  EXPECT_EQ(wrongWay.ordersAccepted, 1);
  EXPECT_EQ(wrongWay.result.results[0][0], 0);

  // Level 1: an immediate dig down while the unit is still falling finds no unit to take it.
  PlayedGame tooEarly = PlayLocalGame(TutorialSettings(0), TutorialMap(0), {{140, "784,650 dig_down immediate"}});
  EXPECT_EQ(tooEarly.ordersSent, 0);
  EXPECT_EQ(tooEarly.result.results[0][0], 0);

  // Level 3: a single bridge is not enough to cross the gap.
  PlayedGame oneBridge = PlayLocalGame(TutorialSettings(2), TutorialMap(2), {{240, "560,560 bridge falling right"}});
  EXPECT_EQ(oneBridge.ordersAccepted, 1);
  EXPECT_EQ(oneBridge.result.results[0][0], 0);
}
