#pragma once

#include <cstdint>
#include <functional>

// Holds the main loop to a fixed number of frames a second. The clock and the sleep are replaceable
// so that the pacing arithmetic can be checked against a clock that a test moves by hand.
class FrameRateLimiter {
public:
  // Nanoseconds of a monotonic clock.
  using NowFunction = std::function<std::int64_t()>;
  using SleepFunction = std::function<void(std::uint32_t milliseconds)>;

  // On the steady clock; the current frame starts now.
  FrameRateLimiter();
  FrameRateLimiter(NowFunction now, SleepFunction sleep);

  // Sleeps for the whole milliseconds left of the current frame, then starts the next one at the ideal
  // time, one interval after the last start, so that oversleeping doesn't make the pace drift. A frame
  // that overran starts the next one now: lost time is not made up. Less than a millisecond left is not
  // waited for.
  void waitForNextFrame();

  std::int64_t now() const { return now_(); }

  static std::int64_t SteadyNowNanoseconds();
  static void SleepMilliseconds(std::uint32_t milliseconds);

  std::int64_t frameStart = 0;
  int framesPerSecond = 60;
  double frameInterval = 1.0 / 60.0;

private:
  NowFunction now_;
  SleepFunction sleep_;
};
