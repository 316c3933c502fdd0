// Aviators through the one lockstep harness: random games over the whole range of the settings, two to
// four clients each, must agree frame by frame, with damage, deaths and missiles really happening; an
// order delivered late must be caught at its frame. TANDEM_LOCKSTEP_GAMES sets the number of games of
// the normal run; the soak test runs TANDEM_LOCKSTEP_SOAK games more (skipped when that isn't set).
#include <gtest/gtest.h>

#include "aviators/AviatorsLockstep.h"
#include "sim/Games.h"
#include "support/HeadlessApp.h"

using namespace testing_support;
using aviators_testing::AviatorsLockstepAdapter;

namespace {

IGame const& Aviators() {
  static Games const games;
  return games.refGame(Game::Aviators);
}

class AviatorsLockstep : public HeadlessAppTest {};

TEST_F(AviatorsLockstep, RandomGamesAgreeOnEveryClient) {
  int const count = LockstepGamesFromEnvironment("TANDEM_LOCKSTEP_GAMES", 8);
  LockstepTally const tally = PlayRandomLockstepGames(Aviators(), AviatorsLockstepAdapter(), 1, count, app_);
  ASSERT_EQ(tally.games, count);
  int damaged = 0;
  int dead = 0;
  for (auto const& rows : tally.results) {
    for (auto const& row : rows) {
      damaged += row.at(0) < 500 ? 1 : 0;
      dead += row.at(0) == 0 ? 1 : 0;
    }
  }
  EXPECT_GT(damaged, 0);
  EXPECT_GT(dead, 0);
  EXPECT_GT(tally.orders, 100 * count);
}

TEST_F(AviatorsLockstep, AnOrderDeliveredLateIsCaughtAtItsFrame) {
  for (std::uint64_t seed = 1; seed <= 3; ++seed) {
    LockstepGame game = RandomLockstepGame(Aviators(), seed);
    game.settings.ints["duration_seconds"] = 30;
    LockstepReport const report =
        CheckLockstepGame(Aviators(), AviatorsLockstepAdapter(), game, app_, RelayFault{1, 0, 5, 1});
    SCOPED_TRACE(report.text);
    ASSERT_TRUE(report.faultFrame.has_value());
    EXPECT_FALSE(report.agreed);
    // Ship 0 on client 1 takes the order one step late: its state parts after the step at the fault's
    // frame, or one later when the order's controls were those already in force and it only replaced the
    // next order.
    ASSERT_TRUE(report.firstDivergentFrame.has_value());
    EXPECT_TRUE(*report.firstDivergentFrame == *report.faultFrame + 1 ||
                *report.firstDivergentFrame == *report.faultFrame + 2);
    EXPECT_EQ(report.firstDivergentPart, "ship 0");
  }
}

TEST_F(AviatorsLockstep, SoakManyMoreRandomGames) {
  SoakRandomLockstepGames(Aviators(), AviatorsLockstepAdapter(), app_);
}

}  // namespace
