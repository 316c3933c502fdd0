#include "sim/RecordingFiles.h"

#include <charconv>
#include <cstdint>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <regex>

namespace fs = std::filesystem;

namespace {

// Calls visit(path, fileName) for each regular file of the directory, symbolic links followed.
template <class Visit>
void ForEachRegularFile(std::string const& directory, Visit&& visit) {
  if (!fs::is_directory(directory)) {
    return;
  }
  for (fs::directory_entry const& entry : fs::directory_iterator(directory)) {
    std::error_code error;
    if (fs::is_regular_file(entry.path(), error)) {
      visit(entry.path(), entry.path().filename().string());
    }
  }
}

}  // namespace

std::vector<Recording> LoadRecordingsFromDirectory(std::string const& directory) {
  static std::regex const pattern(R"(recording\d+\.bin)");
  std::vector<Recording> recordings;
  ForEachRegularFile(directory, [&](fs::path const& path, std::string const& name) {
    if (!std::regex_match(name, pattern)) {
      return;
    }
    try {
      recordings.emplace_back(path.string());
    } catch (std::exception const& failure) {
      std::fprintf(stderr, "Failed to load recording from \"%s\", %s\n", path.string().c_str(), failure.what());
      std::fflush(stderr);
    }
  });
  return recordings;
}

std::set<unsigned short> RecordingNumbersInDirectory(std::string const& directory) {
  static std::regex const pattern(R"(recording(\d+)\.bin)");
  std::set<unsigned short> numbers;
  ForEachRegularFile(directory, [&](fs::path const&, std::string const& name) {
    std::smatch match;
    if (!std::regex_match(name, match, pattern)) {
      return;
    }
    std::string const digits = match[1].str();
    std::uint64_t number = 0;
    auto const [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), number);
    if (error == std::errc{} && end == digits.data() + digits.size()) {
      numbers.insert(static_cast<unsigned short>(number & 0xFFFF));
    }
  });
  return numbers;
}
