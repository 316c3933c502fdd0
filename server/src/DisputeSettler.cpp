#include "DisputeSettler.h"

#include <chrono>
#include <cstdio>
#include <exception>
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

DisputeSettler::DisputeSettler(Settle settle, IServerStorage& storage)
    : settle_(std::move(settle)), storage_(storage) {
  for (SettledDispute& dispute : storage_.settledDisputes(kMaxKept)) {
    settled_.push_back(std::move(dispute));
  }
  worker_ = std::thread([this] { run(); });
}

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
  storage_.noteDispute(game);
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
    // A settlement cut short by the stop is none: the game stays waiting for the next run.
    bool const complete = !stop_;
    if (complete) {
      std::printf("%s\n", Describe(dispute).c_str());
      std::fflush(stdout);
      try {
        storage_.saveDispute(dispute);
      } catch (std::exception const& error) {
        std::fprintf(stderr, "Failed to save the settlement of game %u: %s\n", dispute.game, error.what());
      }
    }
    lock.lock();
    busy_ = false;
    if (complete) {
      settled_.push_back(std::move(dispute));
      while (settled_.size() > kMaxKept) {
        settled_.pop_front();
      }
    }
    changed_.notify_all();
  }
}
