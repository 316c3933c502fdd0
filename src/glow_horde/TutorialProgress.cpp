#include "glow_horde/TutorialProgress.h"

#include <charconv>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string_view>
#include <system_error>

namespace {

enum class Section { None, Tutorial, Attempts };

bool IsBlank(char c) { return c == ' ' || c == '\t'; }

std::string_view TrimLeft(std::string_view text) {
  while (!text.empty() && IsBlank(text.front())) {
    text.remove_prefix(1);
  }
  return text;
}

std::string_view TrimRight(std::string_view text) {
  while (!text.empty() && IsBlank(text.back())) {
    text.remove_suffix(1);
  }
  return text;
}

// The whole text as a decimal integer, or nothing.
std::optional<int> ParseInt(std::string_view text) {
  int value = 0;
  auto const [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc() || end != text.data() + text.size() || text.empty()) {
    return std::nullopt;
  }
  return value;
}

}  // namespace

int TutorialProgress::statusOf(int level) const {
  auto found = status.find(level);
  return found == status.end() ? kToDo : found->second;
}

int TutorialProgress::attemptsOf(int level) const {
  auto found = attempts.find(level);
  return found == attempts.end() ? 0 : found->second;
}

std::string TutorialProgressPath(std::string const& storageDirectory) {
  return (std::filesystem::path(storageDirectory) / "userdata" / "progress.ini").string();
}

TutorialProgress ReadTutorialProgress(std::istream& file) {
  TutorialProgress progress;
  Section section = Section::None;
  std::string line;
  while (std::getline(file, line)) {
    std::string_view text = TrimLeft(line);
    if (!text.empty() && text.back() == '\r') {
      text.remove_suffix(1);  // a file edited on another system
    }
    if (text.empty()) {
      continue;
    }
    if (text.front() == '[') {
      section = text == "[tutorial]" ? Section::Tutorial : text == "[attempts]" ? Section::Attempts : Section::None;
      continue;
    }
    if (section == Section::None) {
      continue;
    }
    std::size_t const equals = text.find('=');
    if (equals == std::string_view::npos) {
      continue;
    }
    std::optional<int> const level = ParseInt(TrimRight(text.substr(0, equals)));
    if (!level) {
      continue;
    }
    // Trailing blanks after the value are forgiven as well.
    std::string_view const value = TrimRight(TrimLeft(text.substr(equals + 1)));
    if (section == Section::Tutorial) {
      if (value == "skipped") {
        progress.status[*level] = TutorialProgress::kSkipped;
      } else if (value == "completed") {
        progress.status[*level] = TutorialProgress::kCompleted;
      }
    } else {
      std::optional<int> const count = ParseInt(value);
      if (count && *count >= 1) {
        progress.attempts[*level] = *count;
      }
    }
  }
  return progress;
}

TutorialProgress LoadTutorialProgress(std::string const& storageDirectory) {
  std::ifstream file(TutorialProgressPath(storageDirectory));
  if (!file.is_open()) {
    return TutorialProgress{};
  }
  return ReadTutorialProgress(file);
}

void WriteTutorialProgress(std::ostream& file, TutorialProgress const& progress) {
  file << "[tutorial]\n";
  for (auto const& [level, status] : progress.status) {
    if (status == TutorialProgress::kSkipped) {
      file << level << "=skipped\n";
    } else if (status == TutorialProgress::kCompleted) {
      file << level << "=completed\n";
    }
  }
  file << "\n[attempts]\n";
  for (auto const& [level, count] : progress.attempts) {
    if (count >= 1) {
      file << level << '=' << count << '\n';
    }
  }
}

void SaveTutorialProgress(std::string const& storageDirectory, TutorialProgress const& progress) {
  std::error_code error;
  std::filesystem::create_directories(std::filesystem::path(storageDirectory) / "userdata", error);
  std::ofstream file(TutorialProgressPath(storageDirectory), std::ios::trunc);
  if (!file.is_open()) {
    return;
  }
  WriteTutorialProgress(file, progress);
}
