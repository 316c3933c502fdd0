#include "app/WithBackgroundUpdate.h"

#include <chrono>

#include "app/FrameRateLimiter.h"

WithBackgroundUpdate::WithBackgroundUpdate(unsigned int thresholdMs) : thresholdMs_(thresholdMs) {}

WithBackgroundUpdate::~WithBackgroundUpdate() {
  stopWatchdog();
  background_ = nullptr;
}

void WithBackgroundUpdate::startWatchdog() {
  if (running_.load()) {
    return;
  }
  running_.store(true);
  thread_ = std::thread([this] { watchdogLoop(); });
}

void WithBackgroundUpdate::stopWatchdog() {
  running_.store(false);
  if (thread_.joinable()) {
    thread_.join();
  }
}

void WithBackgroundUpdate::runWithBackgroundUpdate(std::function<void()> action, std::function<void()> background) {
  if (!running_.load()) {
    startWatchdog();
  }
  {
    std::lock_guard lock(mutex_);
    background_ = std::move(background);
  }
  startTime_.store(FrameRateLimiter::SteadyNowNanoseconds());
  active_.store(true);
  action();
  active_.store(false);
  // Waits for a background round in progress to finish before the caller goes on.
  std::lock_guard lock(mutex_);
}

void WithBackgroundUpdate::watchdogLoop() {
  using std::chrono::milliseconds;
  while (running_.load()) {
    if (!active_.load()) {
      std::this_thread::sleep_for(milliseconds(10));
      continue;
    }
    std::int64_t const elapsedMs = (FrameRateLimiter::SteadyNowNanoseconds() - startTime_.load()) / 1000000;
    if (elapsedMs <= static_cast<std::int64_t>(thresholdMs_)) {
      std::this_thread::sleep_for(milliseconds(5));
      continue;
    }
    std::lock_guard lock(mutex_);
    while (active_.load()) {
      if (background_) {
        background_();
      }
    }
  }
}
