#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

#include "app/FrameRateLimiter.h"

namespace {

// A clock that only moves when told to; sleeping moves it by the time slept plus an optional oversleep.
struct ManualClock {
  std::int64_t now = 0;
  std::int64_t oversleepNs = 0;
  std::vector<std::uint32_t> sleeps;

  FrameRateLimiter limiter() {
    return FrameRateLimiter([this] { return now; },
                            [this](std::uint32_t ms) {
                              sleeps.push_back(ms);
                              now += static_cast<std::int64_t>(ms) * 1000000 + oversleepNs;
                            });
  }
};

constexpr std::int64_t kMs = 1000000;

}  // namespace

TEST(FrameRateLimiter, SleepsTheWholeMillisecondsLeftAndStartsAtTheIdealTime) {
  ManualClock clock;
  FrameRateLimiter limiter = clock.limiter();
  EXPECT_EQ(limiter.frameStart, 0);

  clock.now = 5 * kMs;  // 11.67 ms of the frame are left
  limiter.waitForNextFrame();
  EXPECT_EQ(clock.sleeps, (std::vector<std::uint32_t>{11}));
  EXPECT_EQ(limiter.frameStart, 16666666);  // one interval after the last start, not the time of waking

  // Woken at 16 ms, before the new frame's start: the whole next frame and a bit are waited for.
  limiter.waitForNextFrame();
  EXPECT_EQ(clock.sleeps.back(), 17u);
  EXPECT_EQ(limiter.frameStart, 33333332);
}

TEST(FrameRateLimiter, OversleepingDoesNotMakeThePaceDrift) {
  ManualClock clock;
  clock.oversleepNs = 3 * kMs;  // every sleep wakes 3 ms late
  FrameRateLimiter limiter = clock.limiter();
  for (int frame = 0; frame < 60; ++frame) {
    clock.now += 2 * kMs;  // the frame's own work
    limiter.waitForNextFrame();
  }
  // Sixty starts, each one interval (16666666.67 ns, truncated to whole ns) after the one before:
  // one second less 40 ns of truncation, however late each sleep woke.
  EXPECT_EQ(limiter.frameStart, 60 * 16666666);
  // Each later frame finds 3 ms lost to the late wake and 2 ms of work: about 11.67 ms left, so the
  // sleeps shorten to make up for the oversleep instead of the schedule slipping.
  ASSERT_EQ(clock.sleeps.size(), 60u);
  EXPECT_EQ(clock.sleeps.front(), 14u);  // 16.67 - 2
  for (std::size_t i = 1; i < clock.sleeps.size(); ++i) {
    EXPECT_TRUE(clock.sleeps[i] == 11u || clock.sleeps[i] == 12u) << "sleep " << i << ": " << clock.sleeps[i];
  }
}

TEST(FrameRateLimiter, UnderAMillisecondLeftIsNotSleptAndAnOverrunFrameStartsTheNextNow) {
  ManualClock clock;
  FrameRateLimiter limiter = clock.limiter();
  clock.now = 16200000;  // 0.47 ms left: not waited for, but the start still advances
  limiter.waitForNextFrame();
  EXPECT_TRUE(clock.sleeps.empty());
  EXPECT_EQ(limiter.frameStart, 16666666);

  clock.now = limiter.frameStart + 15666000;  // 1.0007 ms left: one whole millisecond
  limiter.waitForNextFrame();
  EXPECT_EQ(clock.sleeps, (std::vector<std::uint32_t>{1}));
  EXPECT_EQ(limiter.frameStart, 33333332);

  // Nearly three intervals late, then just over one: each next frame starts now, without catching up.
  clock.now = 80 * kMs;
  limiter.waitForNextFrame();
  EXPECT_EQ(limiter.frameStart, 80 * kMs);
  clock.now += 17 * kMs;
  limiter.waitForNextFrame();
  EXPECT_EQ(limiter.frameStart, 97 * kMs);
  EXPECT_EQ(clock.sleeps.size(), 1u) << "no sleep after an overrun";
}
