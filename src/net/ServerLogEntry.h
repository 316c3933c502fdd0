#pragma once

#include <chrono>
#include <string>

// A non-fatal message from the server, as the lobby's log shows it.
struct ServerLogEntry {
  std::string text;
  std::chrono::system_clock::time_point time;  // when it arrived
  bool seen = false;
};
