// Determinism of Glow Horde across clients: random games of the catalogue played by 1 to 4 clients
// through an in-memory relay must end with byte-equal results and equal digests all the way; a relay
// that delivers one order a frame late must be caught, with the frame where the clients parted.
//
// The number of games: 300 in an optimised build, 40 otherwise; TANDEM_LOCKSTEP_GAMES sets it. The
// soak test runs TANDEM_LOCKSTEP_SOAK games more (it is skipped when that isn't set):
//   TANDEM_LOCKSTEP_SOAK=5000 tandem_tests --gtest_filter='GlowHordeLockstepSoak.*'
#include <gtest/gtest.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <optional>
#include <set>

#include <fmt/format.h>

#include "glow_horde/LockstepHarness.h"
#include "support/HeadlessApp.h"

using namespace glow_horde_testing;

namespace {

int GamesFromEnvironment(char const* name, int otherwise) {
  char const* value = std::getenv(name);
  return value != nullptr && *value != '\0' ? std::atoi(value) : otherwise;
}

struct Tally {
  int games = 0;
  long long orders = 0;
  long long accepted = 0;
  long long unitsOut = 0;
  long long frames = 0;
  std::set<std::string> maps;
  std::set<std::size_t> playerCounts;
  std::set<int> delays;
};

// Plays the games with seeds first to first + count - 1; every one must agree.
Tally PlayRandomGames(std::uint64_t first, int count, std::shared_ptr<SDL3App> const& shell = nullptr) {
  Tally tally;
  auto const start = std::chrono::steady_clock::now();
  for (int i = 0; i < count; ++i) {
    LockstepGame const game = RandomLockstepGame(first + static_cast<std::uint64_t>(i));
    LockstepReport const report = CheckLockstepGame(game, std::nullopt, shell);
    EXPECT_TRUE(report.agreed) << report.text;
    tally.games += 1;
    tally.orders += report.ordersGiven;
    tally.accepted += report.ordersAccepted;
    tally.unitsOut += report.unitsOut;
    tally.frames += report.endFrame;
    tally.maps.insert(game.map);
    tally.playerCounts.insert(game.slots.size());
    tally.delays.insert(game.delayFrames);
    if (::testing::Test::HasFailure()) {
      break;  // the first disagreement says it all
    }
  }
  double const seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  std::printf("%d games (seeds %llu on) in %.1f s: %lld frames, %lld orders given, %lld taking effect, %lld units "
              "out, %zu maps, %zu player counts\n",
              tally.games, static_cast<unsigned long long>(first), seconds, tally.frames, tally.orders,
              tally.accepted, tally.unitsOut, tally.maps.size(), tally.playerCounts.size());
  std::fflush(stdout);
  return tally;
}

}  // namespace

TEST(GlowHordeLockstep, RandomGamesOfEveryMapEndByteEqualOnEveryClient) {
#ifdef NDEBUG
  int const count = GamesFromEnvironment("TANDEM_LOCKSTEP_GAMES", 300);
#else
  int const count = GamesFromEnvironment("TANDEM_LOCKSTEP_GAMES", 40);
#endif
  Tally const tally = PlayRandomGames(1, count);
  if (count >= 200) {
    // The games are varied enough to mean something: every map, one to four players, the whole range
    // of delays, orders that took effect and units that got out.
    EXPECT_EQ(tally.maps.size(), 8u);
    EXPECT_EQ(tally.playerCounts, (std::set<std::size_t>{1, 2, 3, 4}));
    EXPECT_TRUE(tally.delays.contains(10) && tally.delays.contains(35));
    EXPECT_GT(tally.accepted, 1000);
    EXPECT_GT(tally.unitsOut, 0);
  }
}

TEST(GlowHordeLockstep, AnOrderDeliveredOneFrameLateIsCaughtWhereItHappened) {
  int caught = 0;
  int worldsParted = 0;
  for (std::uint64_t seed = 1; seed <= 40 && caught < 5; ++seed) {
    LockstepGame const game = RandomLockstepGame(seed);
    if (game.slots.size() < 2) {
      continue;
    }
    LockstepReport const report = CheckLockstepGame(game, RelayFault{1, 0, 0, 1});
    if (!report.faultFrame.has_value()) {
      continue;  // player 0 had no order that took effect
    }
    if (caught++ == 0) {
      std::printf("What the harness reports:\n%s\n", report.text.c_str());
      std::fflush(stdout);
    }
    SCOPED_TRACE(report.text);
    EXPECT_FALSE(report.agreed);
    // The order was due at frame F on client 1, before player 0's update F - delay there (numbered
    // from 0): after that update, F - delay + 1 in all, client 1's copy of player 0 is not client 0's.
    ASSERT_TRUE(report.firstPlayerDifference[0].has_value());
    std::uint32_t const updates = *report.faultFrame - static_cast<std::uint32_t>(game.delayFrames) + 1;
    EXPECT_EQ(*report.firstPlayerDifference[0], updates);
    EXPECT_NE(report.text.find(fmt::format("player 0's state differed after {} updates, the last at frame {} on client 0 "
                                           "and at frame {} on client 1",
                                           updates, updates - 1, *report.faultFrame)),
              std::string::npos);
    if (report.firstLocalBaseDifference.has_value()) {
      // The worlds can only part after the fault, and the report names the frame.
      EXPECT_GT(*report.firstLocalBaseDifference, *report.faultFrame);
      EXPECT_NE(report.text.find(fmt::format("first differed at frame {}", *report.firstLocalBaseDifference)),
                std::string::npos);
      ++worldsParted;
    }
  }
  EXPECT_GE(caught, 5);
  EXPECT_GE(worldsParted, 1);
}

// The same through whole sessions, as the main loop steps them: what the session adds to its
// simulation (camera, controls, sounds, drawing resources) must not reach the shared state.
class GlowHordeSessionLockstep : public HeadlessAppTest {};

TEST_F(GlowHordeSessionLockstep, RandomGamesThroughWholeSessionsEndByteEqual) {
  Tally const sessions = PlayRandomGames(5000, 24, app_);
  Tally const bare = PlayRandomGames(5000, 24);
  EXPECT_GE(sessions.playerCounts.size(), 3u);
  EXPECT_GT(sessions.accepted, 50);
  // The sessions played the very games that the bare simulations play.
  EXPECT_EQ(sessions.frames, bare.frames);
  EXPECT_EQ(sessions.orders, bare.orders);
  EXPECT_EQ(sessions.accepted, bare.accepted);
}

TEST(GlowHordeLockstepSoak, ManyMoreRandomGames) {
  int const count = GamesFromEnvironment("TANDEM_LOCKSTEP_SOAK", 0);
  if (count <= 0) {
    GTEST_SKIP() << "Set TANDEM_LOCKSTEP_SOAK to the number of games.";
  }
  PlayRandomGames(1000000, count);
}
