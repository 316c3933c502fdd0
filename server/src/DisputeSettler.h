#pragma once

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "ServerStorage.h"
#include "SettledDispute.h"

// Re-simulates the recordings of disputed games on a worker thread of its own, one after the other,
// so that a long game never holds up the lobby. The re-simulation itself is handed in (the server's is
// SettleByReplay), so that the lobby's code builds without the games. Each settlement is saved in the
// storage, which also notes a game as waiting when it is submitted: a restart settles what the last run
// left waiting. The queue is bounded: a game submitted to a full queue is refused and waits for a later
// run. Destruction stops the worker within a frame of simulation.
class DisputeSettler {
public:
  static constexpr std::size_t kMaxQueued = 16;
  static constexpr std::size_t kMaxKept = 50;  // settled disputes kept for the status page

  // Settles one game from its recording file; returns soon once stop is raised.
  using Settle = std::function<SettledDispute(std::uint32_t game, std::vector<unsigned char> const& recordingFile,
                                              std::atomic<bool> const& stop)>;

  // Starts with the settlements the storage kept.
  DisputeSettler(Settle settle, IServerStorage& storage);
  ~DisputeSettler();
  DisputeSettler(DisputeSettler const&) = delete;
  DisputeSettler& operator=(DisputeSettler const&) = delete;

  // Notes game as waiting in the storage and queues its recording file (its bytes); false if the queue
  // is full (the game then waits for a later run).
  bool submit(std::uint32_t game, std::vector<unsigned char> recordingFile);
  // The settled disputes, oldest first.
  std::vector<SettledDispute> settled() const;
  // Waits until every submitted game is settled or timeoutMs has passed; whether all are (for tests).
  bool waitIdle(int timeoutMs) const;

private:
  struct Job {
    std::uint32_t game = 0;
    std::vector<unsigned char> file;
  };
  void run();

  Settle const settle_;
  IServerStorage& storage_;

  mutable std::mutex mutex_;
  mutable std::condition_variable changed_;
  std::deque<Job> queue_;
  bool busy_ = false;
  std::deque<SettledDispute> settled_;
  std::atomic<bool> stop_{false};
  std::thread worker_;
};
