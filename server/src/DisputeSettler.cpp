#include "DisputeSettler.h"

#include <chrono>
#include <cstdio>
#include <utility>

namespace {

// One line for the server's log: which places' reports the re-simulation reproduced.
std::string Describe(SettledDispute const& dispute) {
  std::string const game = "Game " + std::to_string(dispute.game);
  if (!dispute.error.empty()) {
    return game + " could not be re-simulated: " + dispute.error;
  }
  std::string matching;
  for (std::size_t i = 0; i < dispute.matches.size(); ++i) {
    if (dispute.matches[i]) {
      matching += (matching.empty() ? "" : ", ") + std::to_string(i) + " (" + dispute.players[i] + ")";
    }
  }
  return game + " re-simulated in " + std::to_string(dispute.frames) + " frames; reports that match: " +
         (matching.empty() ? std::string("none") : matching);
}

}  // namespace

DisputeSettler::DisputeSettler(Settle settle) : settle_(std::move(settle)), worker_([this] { run(); }) {}

DisputeSettler::~DisputeSettler() {
  {
    // Raised under the lock, so that the worker can't miss the wake-up between its check and its wait.
    std::lock_guard lock(mutex_);
    stop_ = true;
  }
  changed_.notify_all();
  worker_.join();
}

bool DisputeSettler::submit(std::uint32_t game, std::vector<unsigned char> recordingFile) {
  {
    std::lock_guard lock(mutex_);
    if (queue_.size() >= kMaxQueued) {
      return false;
    }
    queue_.push_back({game, std::move(recordingFile)});
  }
  changed_.notify_all();
  return true;
}

std::vector<SettledDispute> DisputeSettler::settled() const {
  std::lock_guard lock(mutex_);
  return {settled_.begin(), settled_.end()};
}

bool DisputeSettler::waitIdle(int timeoutMs) const {
  std::unique_lock lock(mutex_);
  return changed_.wait_for(lock, std::chrono::milliseconds(timeoutMs), [this] { return queue_.empty() && !busy_; });
}

void DisputeSettler::run() {
  std::unique_lock lock(mutex_);
  while (true) {
    changed_.wait(lock, [this] { return stop_ || !queue_.empty(); });
    if (stop_) {
      return;
    }
    Job const job = std::move(queue_.front());
    queue_.pop_front();
    busy_ = true;
    lock.unlock();
    SettledDispute dispute = settle_(job.game, job.file, stop_);
    std::printf("%s\n", Describe(dispute).c_str());
    std::fflush(stdout);
    lock.lock();
    busy_ = false;
    if (!stop_) {
      settled_.push_back(std::move(dispute));
      while (settled_.size() > kMaxKept) {
        settled_.pop_front();
      }
    }
    changed_.notify_all();
  }
}
