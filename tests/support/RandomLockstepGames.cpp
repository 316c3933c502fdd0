#include "support/LockstepHarness.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>

// The runs of many random games for the tests, which report a disagreement as a test failure.
namespace testing_support {

LockstepTally PlayRandomLockstepGames(IGame const& game, LockstepAdapter const& adapter, std::uint64_t first,
                                      int count, std::shared_ptr<SDL3App> const& app, int maxSeconds) {
  LockstepTally tally;
  auto const start = std::chrono::steady_clock::now();
  auto lastProgress = start;
  for (int i = 0; i < count; ++i) {
    LockstepGame settings = RandomLockstepGame(game, first + static_cast<std::uint64_t>(i));
    if (auto duration = settings.settings.ints.find("duration_seconds");
        maxSeconds > 0 && duration != settings.settings.ints.end()) {
      duration->second = std::min(duration->second, maxSeconds);
    }
    LockstepReport const report = CheckLockstepGame(game, adapter, settings, app);
    EXPECT_TRUE(report.agreed) << report.text;
    tally.games += 1;
    tally.frames += report.endFrame;
    tally.orders += report.ordersGiven;
    tally.stalls += report.stalls;
    tally.results.push_back(report.results);
    tally.maps.push_back(settings.settings.strings.at("map"));
    tally.playerCounts.push_back(settings.slots.size());
    tally.delays.push_back(settings.delayFrames);
    tally.settings.push_back(settings.settings);
    if (::testing::Test::HasFailure()) {
      break;
    }
    // A long run says now and then how far it got, so that one cut short still tells.
    auto const now = std::chrono::steady_clock::now();
    if (now - lastProgress > std::chrono::seconds(60)) {
      lastProgress = now;
      std::printf("%d of %d games (seeds %llu on) agreed after %.0f s\n", tally.games, count,
                  static_cast<unsigned long long>(first), std::chrono::duration<double>(now - start).count());
      std::fflush(stdout);
    }
  }
  double const seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  std::printf("%d games (seeds %llu on) in %.1f s: %lld frames, %lld orders given, %lld stalled rounds\n", tally.games,
              static_cast<unsigned long long>(first), seconds, tally.frames, tally.orders, tally.stalls);
  std::fflush(stdout);
  return tally;
}

int LockstepGamesFromEnvironment(char const* name, int otherwise) {
  char const* value = std::getenv(name);
  return value != nullptr && *value != '\0' ? std::atoi(value) : otherwise;
}

void SoakRandomLockstepGames(IGame const& game, LockstepAdapter const& adapter, std::shared_ptr<SDL3App> const& app) {
  int const count = LockstepGamesFromEnvironment("TANDEM_LOCKSTEP_SOAK", 0);
  if (count <= 0) {
    GTEST_SKIP() << "Set TANDEM_LOCKSTEP_SOAK to the number of games.";
  }
  int const first = LockstepGamesFromEnvironment("TANDEM_LOCKSTEP_SOAK_FIRST", 1000000);
  int const maxSeconds = LockstepGamesFromEnvironment("TANDEM_LOCKSTEP_SOAK_SECONDS", 0);
  LockstepTally const tally =
      PlayRandomLockstepGames(game, adapter, static_cast<std::uint64_t>(std::max(first, 1)), count, app, maxSeconds);
  EXPECT_EQ(tally.games, count);
}

}  // namespace testing_support
