#pragma once

#include <fstream>
#include <initializer_list>
#include <string>
#include <utility>
#include <variant>

// A JSON lines event log for a driver of the program. Off unless a driver opens it; each line is written
// and flushed at once, so that a crash loses nothing logged before it. Main thread only.
class TestLog {
public:
  using Value = std::variant<std::string, long long, unsigned long long, double, bool>;

  TestLog() = delete;

  // Opens the file for writing, truncating it; the log is enabled only if that succeeded.
  static void init(std::string const& path);
  static void close();
  static bool isEnabled() { return enabled_; }
  // One line: {"event":"<event>", then each field in the order given}.
  static void log(std::string const& event, std::initializer_list<std::pair<std::string, Value>> fields);

  static std::string escapeJsonString(std::string const& text);
  static std::string valueToJson(Value const& value);

private:
  static std::ofstream file_;
  static bool enabled_;
};
