// Vipers through the one lockstep harness: random games over the whole range of the settings, two to
// four clients each, with malformed orders among the others, must agree frame by frame on the heads,
// the tails, the food and the world; a relay that delivers one order late must be caught where it
// happened. TANDEM_LOCKSTEP_GAMES sets the number of games of the normal run; the soak test runs
// TANDEM_LOCKSTEP_SOAK games more (skipped when that isn't set).
#include <gtest/gtest.h>

#include <algorithm>
#include <limits>

#include "sim/Games.h"
#include "support/HeadlessApp.h"
#include "vipers/VipersLockstep.h"

using namespace testing_support;
using vipers_testing::VipersLockstepAdapter;

namespace {

IGame const& Vipers() {
  static Games const games;
  return games.refGame(Game::Vipers);
}

class VipersLockstep : public HeadlessAppTest {};

TEST_F(VipersLockstep, RandomGamesAgreeOnEveryClient) {
  // Every setting from the whole range but the duration, held to at most a minute to keep the run short
  // (the soak test plays them at full length).
  int const count = LockstepGamesFromEnvironment("TANDEM_LOCKSTEP_GAMES", 4);
  int changed = 0;
  long long orders = 0;
  for (int g = 0; g < count; ++g) {
    LockstepGame game = RandomLockstepGame(Vipers(), static_cast<std::uint64_t>(g + 1));
    int& duration = game.settings.ints["duration_seconds"];
    duration = std::min(duration, 60);
    LockstepReport const report = CheckLockstepGame(Vipers(), VipersLockstepAdapter(), game, app_);
    ASSERT_TRUE(report.agreed) << report.text;
    orders += report.ordersGiven;
    // The game was played: some head ended with another tail length than it started with, or died.
    for (auto const& row : report.results) {
      changed += row.size() == 2 && (row[0] != game.settings.ints.at("start_length") * 256 ||
                                     row[1] != std::numeric_limits<long long>::max());
    }
  }
  EXPECT_GT(orders, 100);
  EXPECT_GT(changed, 0);
}

TEST_F(VipersLockstep, AnOrderDeliveredLateIsCaughtAtItsFrame) {
  int caught = 0;
  for (std::uint64_t seed = 1; seed <= 30 && caught < 1; ++seed) {
    LockstepGame game = RandomLockstepGame(Vipers(), seed);
    game.settings.ints["duration_seconds"] = 30;
    game.meanFramesBetweenOrders = 3;
    LockstepReport const report =
        CheckLockstepGame(Vipers(), VipersLockstepAdapter(), game, app_, RelayFault{1, 0, 3, 1});
    SCOPED_TRACE(report.text);
    ASSERT_TRUE(report.faultFrame.has_value());
    if (report.agreed) {
      continue;  // the late order changed nothing: its head was dead, or it held the keys it had
    }
    ++caught;
    ASSERT_TRUE(report.firstDivergentFrame.has_value());
    EXPECT_TRUE(*report.firstDivergentFrame == *report.faultFrame + 1 ||
                *report.firstDivergentFrame == *report.faultFrame + 2);
    EXPECT_EQ(report.firstDivergentPart, "heads");
  }
  EXPECT_EQ(caught, 1);
}

TEST_F(VipersLockstep, SoakManyMoreRandomGames) {
  SoakRandomLockstepGames(Vipers(), VipersLockstepAdapter(), app_);
}

}  // namespace
