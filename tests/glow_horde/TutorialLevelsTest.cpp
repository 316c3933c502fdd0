// The four tutorial levels played through the real simulation with the orders that their summaries
// and help texts describe. What the levels promise is asserted, not frames copied from a model: the
// intended solution brings units out, and only after its first order (no orders bring none out); the
// result row counts those units and their arrival times; a second play gives the very same arrivals.
#include <gtest/gtest.h>

#include <algorithm>

#include "glow_horde/ScriptedGame.h"

using namespace glow_horde_testing;

namespace {

struct Level {
  std::vector<ScriptedClick> solution;
  std::size_t leastOut;  // units that the level's help text says the solution saves
};

std::vector<Level> const k_levels = {
    {{{0, 300, "800,600 dig_down"}}, 1},
    {{{0, 250, "800,700 dig_sideways blocked right"}}, 1},
    {{{0, 240, "560,560 bridge falling right"},
      {0, 500, "540,560 bridge falling right"},
      {0, 1020, "270,560 bridge falling right"},
      {0, 1140, "150,560 bridge falling right"}},
     1},
    {{{0, 200, "700,300 bridge turned left"}, {0, 480, "720,312 bridge turned right"}, {0, 780, "714,341 bridge turned left"}},
     1},
};

ScriptedGame Play(int level, std::vector<ScriptedClick> const& clicks) {
  return PlayScriptedGame(TutorialSettings(level), 1, clicks);
}

class TutorialLevel : public ::testing::TestWithParam<int> {};

}  // namespace

TEST_P(TutorialLevel, IntendedSolutionBringsUnitsOutAfterItsFirstOrder) {
  Level const& level = k_levels[static_cast<std::size_t>(GetParam())];
  ScriptedGame const played = Play(GetParam(), level.solution);
  int const orders = static_cast<int>(level.solution.size());
  EXPECT_EQ(played.ordersSent[0], orders);
  EXPECT_EQ(played.ordersAccepted[0], orders);
  std::vector<std::uint32_t> const& arrivals = played.outFrames[0];
  EXPECT_GE(arrivals.size(), level.leastOut);
  EXPECT_TRUE(std::is_sorted(arrivals.begin(), arrivals.end()));
  for (std::uint32_t frame : arrivals) {
    EXPECT_GT(frame, level.solution.front().frame) << "a unit got out before any order";
  }
  EXPECT_EQ(Play(GetParam(), level.solution).outFrames[0], arrivals) << "a second play";
  // One row, for the one team: units out and minus their arrival times (16 ms a frame) in total.
  long long totalMilliseconds = 0;
  for (std::uint32_t frame : arrivals) {
    totalMilliseconds += 16LL * frame;
  }
  GameResult const& result = played.results[0];
  EXPECT_EQ(result.results, (std::vector<std::vector<long long>>{{static_cast<long long>(arrivals.size()), -totalMilliseconds}}));
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
