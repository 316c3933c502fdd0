#include "RecordingWriter.h"

#include <cstdio>
#include <exception>

RecordingWriter::RecordingWriter(IServerStorage& storage) : storage_(storage), thread_([this] { run(); }) {}

RecordingWriter::~RecordingWriter() {
  {
    std::lock_guard lock(mutex_);
    stopping_ = true;
  }
  wake_.notify_one();
  thread_.join();
}

void RecordingWriter::save(std::uint32_t game, std::vector<unsigned char> chunks) {
  {
    std::lock_guard lock(mutex_);
    waiting_[game] = std::move(chunks);
  }
  wake_.notify_one();
}

void RecordingWriter::flush() {
  std::unique_lock lock(mutex_);
  idle_.wait(lock, [this] { return waiting_.empty() && !busy_; });
}

void RecordingWriter::run() {
  std::unique_lock lock(mutex_);
  for (;;) {
    wake_.wait(lock, [this] { return stopping_ || !waiting_.empty(); });
    if (waiting_.empty()) {
      return;  // stopping, with nothing left to store
    }
    auto job = waiting_.extract(waiting_.begin());
    busy_ = true;
    lock.unlock();
    try {
      storage_.saveRecordingChunks(job.key(), job.mapped());
    } catch (std::exception const& error) {
      // The next save of the game (every few seconds, and at its end) tries again.
      std::fprintf(stderr, "Failed to save the recording of game %u: %s\n", job.key(), error.what());
    }
    lock.lock();
    busy_ = false;
    if (waiting_.empty()) {
      idle_.notify_all();
    }
  }
}
