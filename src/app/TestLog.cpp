#include "app/TestLog.h"

#include <sstream>

#include <fmt/format.h>

std::ofstream TestLog::file_;
bool TestLog::enabled_ = false;

void TestLog::init(std::string const& path) {
  close();
  file_.open(path, std::ios::out | std::ios::trunc);
  enabled_ = file_.is_open();
}

void TestLog::close() {
  if (file_.is_open()) {
    file_.close();
  }
  file_.clear();
  enabled_ = false;
}

void TestLog::log(std::string const& event, std::initializer_list<std::pair<std::string, Value>> fields) {
  if (!enabled_) {
    return;
  }
  std::string line = "{\"event\":\"";
  line += escapeJsonString(event);
  line += '"';
  for (auto const& [key, value] : fields) {
    line += ",\"";
    line += escapeJsonString(key);
    line += "\":";
    line += valueToJson(value);
  }
  line += "}\n";
  file_ << line;
  file_.flush();
}

std::string TestLog::escapeJsonString(std::string const& text) {
  std::string escaped;
  escaped.reserve(text.size());
  for (char const c : text) {
    switch (c) {
    case '\\':
      escaped += "\\\\";
      break;
    case '"':
      escaped += "\\\"";
      break;
    case '\n':
      escaped += "\\n";
      break;
    case '\r':
      escaped += "\\r";
      break;
    case '\t':
      escaped += "\\t";
      break;
    default:
      if (static_cast<unsigned char>(c) < 32) {
        escaped += fmt::format("\\u{:04x}", static_cast<unsigned>(static_cast<unsigned char>(c)));
      } else {
        escaped += c;
      }
    }
  }
  return escaped;
}

std::string TestLog::valueToJson(Value const& value) {
  struct Visitor {
    std::string operator()(std::string const& text) const {
      std::string quoted(1, '"');
      quoted += escapeJsonString(text);
      quoted += '"';
      return quoted;
    }
    std::string operator()(long long number) const { return std::to_string(number); }
    std::string operator()(unsigned long long number) const { return std::to_string(number); }
    std::string operator()(double number) const {
      std::ostringstream stream;
      stream.precision(17);
      stream << number;
      return stream.str();
    }
    std::string operator()(bool flag) const { return flag ? "true" : "false"; }
  };
  return std::visit(Visitor{}, value);
}
