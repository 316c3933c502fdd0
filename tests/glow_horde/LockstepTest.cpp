// Glow Horde through the one lockstep harness: random games over the whole range of the settings, two to
// four clients each, must agree frame by frame; a relay that delivers one order late must be caught where
// it happened. TANDEM_LOCKSTEP_GAMES sets the number of games of the normal run; the soak test runs
// TANDEM_LOCKSTEP_SOAK games more (skipped when that isn't set):
//   TANDEM_LOCKSTEP_SOAK=2000 tandem_tests --gtest_filter='*Lockstep*Soak*'
#include <gtest/gtest.h>

#include <algorithm>

#include "glow_horde/GlowHordeLockstep.h"
#include "sim/Games.h"
#include "support/HeadlessApp.h"

using namespace testing_support;
using glow_horde_testing::GlowHordeLockstepAdapter;

namespace {

IGame const& GlowHorde() {
  static Games const games;
  return games.refGame(Game::GlowHorde);
}

class GlowHordeLockstep : public HeadlessAppTest {};

TEST_F(GlowHordeLockstep, RandomGamesAgreeOnEveryClient) {
  int const count = LockstepGamesFromEnvironment("TANDEM_LOCKSTEP_GAMES", 2);
  LockstepTally const tally = PlayRandomLockstepGames(GlowHorde(), GlowHordeLockstepAdapter(), 1, count, app_);
  ASSERT_EQ(tally.games, count);
  // Scoring was exercised: some unit reached an exit in some game (the first number of a row).
  long long out = 0;
  for (auto const& rows : tally.results) {
    for (auto const& row : rows) {
      out += row.empty() ? 0 : row[0];
    }
  }
  EXPECT_GT(out, 0);
  EXPECT_GT(tally.orders, 100);
}

TEST_F(GlowHordeLockstep, AnOrderDeliveredLateIsCaughtAtItsFrame) {
  int caught = 0;
  for (std::uint64_t seed = 1; seed <= 30 && caught < 1; ++seed) {
    LockstepGame game = RandomLockstepGame(GlowHorde(), seed);
    game.settings.ints["duration_seconds"] = 30;
    game.meanFramesBetweenOrders = 3;
    LockstepReport const report = CheckLockstepGame(GlowHorde(), GlowHordeLockstepAdapter(), game, app_,
                                                    RelayFault{1, 0, 25, 1});
    SCOPED_TRACE(report.text);
    ASSERT_TRUE(report.faultFrame.has_value());
    if (report.agreed) {
      continue;  // the late order was one that no client could apply
    }
    ++caught;
    // Player 0's state on client 1 parts at the step that missed the order, the one at the fault's frame
    // (the digest taken after it carries that frame + 1), or, when that order had no effect, at the next
    // step, where it took the place of player 0's next order.
    ASSERT_TRUE(report.firstDivergentFrame.has_value());
    EXPECT_TRUE(*report.firstDivergentFrame == *report.faultFrame + 1 || *report.firstDivergentFrame == *report.faultFrame + 2);
    EXPECT_EQ(report.firstDivergentPart, "player 0");
  }
  EXPECT_EQ(caught, 1);
}

TEST_F(GlowHordeLockstep, SoakManyMoreRandomGames) {
  SoakRandomLockstepGames(GlowHorde(), GlowHordeLockstepAdapter(), app_);
}

}  // namespace
