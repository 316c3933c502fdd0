#pragma once

#include <condition_variable>
#include <cstdint>
#include <map>
#include <mutex>
#include <thread>
#include <vector>

#include "ServerStorage.h"

// Stores the recordings of running games on a thread of its own, so that the thread that relays every
// game's datagrams never waits for the disk (a synchronous commit takes about half a millisecond, and
// with hundreds of games a few are saved every second). A newer recording of a game replaces one that
// is still waiting. flush() returns once everything handed over is stored; the destructor stores what
// is waiting and stops.
class RecordingWriter {
public:
  explicit RecordingWriter(IServerStorage& storage);
  ~RecordingWriter();
  RecordingWriter(RecordingWriter const&) = delete;
  RecordingWriter& operator=(RecordingWriter const&) = delete;

  void save(std::uint32_t game, std::vector<unsigned char> chunks);
  void flush();

private:
  void run();

  IServerStorage& storage_;
  std::mutex mutex_;
  std::condition_variable wake_;
  std::condition_variable idle_;
  std::map<std::uint32_t, std::vector<unsigned char>> waiting_;
  bool busy_ = false;
  bool stopping_ = false;
  std::thread thread_;
};
