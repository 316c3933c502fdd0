#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <thread>

#include "app/FrameRateLimiter.h"
#include "app/WithBackgroundUpdate.h"

using namespace std::chrono_literals;

TEST(WithBackgroundUpdate, AHangingCallKeepsTheBackgroundActionGoingAtTheFramePace) {
  WithBackgroundUpdate watchdog(10);
  FrameRateLimiter limiter;
  std::thread::id const mainThread = std::this_thread::get_id();
  std::atomic<int> rounds{0};
  std::atomic<bool> ranOnMainThread{false};
  std::atomic<bool> roundInProgress{false};

  auto background = [&] {
    roundInProgress = true;
    if (std::this_thread::get_id() == mainThread) {
      ranOnMainThread = true;
    }
    ++rounds;
    limiter.waitForNextFrame();  // paces the rounds at 60 a second, as the main loop's action does
    roundInProgress = false;
  };
  watchdog.runWithBackgroundUpdate([] { std::this_thread::sleep_for(1s); }, background);

  // The call returned only after the round in progress had ended.
  EXPECT_FALSE(roundInProgress.load());
  EXPECT_FALSE(ranOnMainThread.load());
  // About sixty rounds in one second; a tight loop would give thousands.
  EXPECT_GE(rounds.load(), 40);
  EXPECT_LE(rounds.load(), 62);

  // Nothing more runs once the call has returned.
  int const after = rounds.load();
  std::this_thread::sleep_for(50ms);
  EXPECT_EQ(rounds.load(), after);
}

TEST(WithBackgroundUpdate, QuickCallsNeverTriggerTheBackgroundAction) {
  WithBackgroundUpdate watchdog(10);
  std::atomic<int> rounds{0};
  int calls = 0;
  EXPECT_FALSE(watchdog.watchdogRunning());  // the thread starts with the first protected call
  for (int i = 0; i < 200; ++i) {
    watchdog.runWithBackgroundUpdate([&calls] { ++calls; }, [&rounds] { ++rounds; });
  }
  EXPECT_EQ(calls, 200);
  EXPECT_EQ(rounds.load(), 0);
  EXPECT_TRUE(watchdog.watchdogRunning());
  watchdog.stopWatchdog();
  EXPECT_FALSE(watchdog.watchdogRunning());
}
