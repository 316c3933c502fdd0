// The four tutorial levels played through the real simulation with the orders that their summaries
// and help texts describe. The expected arrival frames were worked out independently, by the asset
// tool's own model of the unit rules when the maps were designed, and are listed in
// tools/make_assets/README.md.
#include <gtest/gtest.h>

#include "glow_horde/ScriptedGame.h"

using namespace glow_horde_testing;

namespace {

struct Level {
  std::vector<ScriptedClick> solution;
  std::vector<std::uint32_t> arrivals;
};

std::vector<Level> const k_levels = {
    {{{0, 300, "800,600 dig_down"}}, {1057}},
    {{{0, 250, "800,700 dig_sideways blocked right"}}, {1109, 1405}},
    {{{0, 240, "560,560 bridge falling right"},
      {0, 500, "540,560 bridge falling right"},
      {0, 1020, "270,560 bridge falling right"},
      {0, 1140, "150,560 bridge falling right"}},
     {2355, 3725, 3984, 4804}},
    {{{0, 200, "700,300 bridge turned left"}, {0, 480, "720,312 bridge turned right"}, {0, 780, "714,341 bridge turned left"}},
     {1164, 1165, 1168, 1234, 1292, 1297, 1304, 1307, 1377, 1404}},
};

ScriptedGame Play(int level, std::vector<ScriptedClick> const& clicks) {
  return PlayScriptedGame(TutorialSettings(level), 1, clicks);
}

class TutorialLevel : public ::testing::TestWithParam<int> {};

}  // namespace

TEST_P(TutorialLevel, IntendedSolutionBringsUnitsOutAtTheFramesWorkedOutForTheMap) {
  Level const& level = k_levels[static_cast<std::size_t>(GetParam())];
  ScriptedGame const played = Play(GetParam(), level.solution);
  int const orders = static_cast<int>(level.solution.size());
  EXPECT_EQ(played.ordersSent[0], orders);
  EXPECT_EQ(played.ordersAccepted[0], orders);
  EXPECT_EQ(played.outFrames[0], level.arrivals);
  // One row, for the one team: units out and minus their arrival times (16 ms a frame) in total.
  long long totalMilliseconds = 0;
  for (std::uint32_t frame : level.arrivals) {
    totalMilliseconds += 16LL * frame;
  }
  GameResult const& result = played.results[0];
  EXPECT_EQ(result.results, (std::vector<std::vector<long long>>{{static_cast<long long>(level.arrivals.size()), -totalMilliseconds}}));
  // The game runs its full time: the session's end frame plus the delay.
  std::int32_t const seconds = TutorialSettings(GetParam()).ints.at("duration_seconds");
  EXPECT_EQ(result.endFrame, static_cast<std::uint32_t>(seconds * 1000000LL / 16666 + 15));

  EXPECT_EQ(Play(GetParam(), {}).results[0].results, (std::vector<std::vector<long long>>{{0, 0}})) << "no orders";
}

INSTANTIATE_TEST_SUITE_P(AllLevels, TutorialLevel, ::testing::Range(0, 4),
                         [](::testing::TestParamInfo<int> const& info) { return "Level" + std::to_string(info.param + 1); });

TEST(TutorialLevelMistakes, OrdersThatTheLessonWarnsAboutSaveNobody) {
  // Level 2: dig sideways given to the unit facing left is spent on the rock wall behind it.
  ScriptedGame const wrongWay = Play(1, {{0, 250, "800,700 dig_sideways blocked left"}});
  EXPECT_EQ(wrongWay.ordersAccepted[0], 1);
  EXPECT_EQ(wrongWay.results[0].results[0][0], 0);

  // Level 1: an immediate dig down while the unit is still falling finds no unit to take it.
  ScriptedGame const tooEarly = Play(0, {{0, 140, "784,650 dig_down immediate"}});
  EXPECT_EQ(tooEarly.ordersSent[0], 0);
  EXPECT_EQ(tooEarly.results[0].results[0][0], 0);

  // Level 3: a single bridge is not enough to cross the gap.
  ScriptedGame const oneBridge = Play(2, {{0, 240, "560,560 bridge falling right"}});
  EXPECT_EQ(oneBridge.ordersAccepted[0], 1);
  EXPECT_EQ(oneBridge.results[0].results[0][0], 0);
}
