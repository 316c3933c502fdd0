#include "app/FrameRateLimiter.h"

#include <chrono>
#include <thread>

FrameRateLimiter::FrameRateLimiter() : FrameRateLimiter(SteadyNowNanoseconds, SleepMilliseconds) {}

FrameRateLimiter::FrameRateLimiter(NowFunction now, SleepFunction sleep) : now_(std::move(now)), sleep_(std::move(sleep)) {
  frameStart = now_();
}

void FrameRateLimiter::waitForNextFrame() {
  std::int64_t const present = now_();
  double const elapsed = static_cast<double>(present - frameStart) / 1e9;
  if (elapsed < frameInterval) {
    auto const milliseconds = static_cast<std::int64_t>((frameInterval - elapsed) * 1000.0);
    if (milliseconds >= 1) {
      sleep_(static_cast<std::uint32_t>(milliseconds));
    }
    frameStart = static_cast<std::int64_t>(static_cast<double>(frameStart) + frameInterval * 1e9);
  } else {
    frameStart = present;
  }
}

std::int64_t FrameRateLimiter::SteadyNowNanoseconds() {
  return std::chrono::duration_cast<std::chrono::nanoseconds>(std::chrono::steady_clock::now().time_since_epoch())
      .count();
}

void FrameRateLimiter::SleepMilliseconds(std::uint32_t milliseconds) {
  std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
}
