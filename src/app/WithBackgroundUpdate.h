#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <mutex>
#include <thread>

// Keeps a background action going while the calling thread is held inside a protected call for longer
// than a threshold. A watchdog thread, started at the first protected call, carries the action out in a
// loop until the call returns; the caller then waits for the round in progress, so that the two threads
// never run the action at the same time.
class WithBackgroundUpdate {
public:
  explicit WithBackgroundUpdate(unsigned int thresholdMs);
  ~WithBackgroundUpdate();
  WithBackgroundUpdate(WithBackgroundUpdate const&) = delete;
  WithBackgroundUpdate& operator=(WithBackgroundUpdate const&) = delete;

  void runWithBackgroundUpdate(std::function<void()> action, std::function<void()> background);
  void startWatchdog();
  void stopWatchdog();

  bool watchdogRunning() const { return running_.load(); }

private:
  void watchdogLoop();

  std::atomic<bool> active_{false};
  std::atomic<bool> running_{false};
  std::thread thread_;
  std::mutex mutex_;
  std::function<void()> background_;
  std::uint32_t thresholdMs_;
  std::atomic<std::int64_t> startTime_{0};
};
