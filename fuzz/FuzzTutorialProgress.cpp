// Fuzz target: reading "userdata/progress.ini". Any file reads without an exception to statuses that are
// "skipped" or "completed" and attempt counts of at least 1, and what is read saves and reads back the
// same. The reader takes a storage directory, so each input is written to a scratch one.
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "FuzzChecks.h"
#include "glow_horde/TutorialProgress.h"

namespace {

std::filesystem::path ScratchDirectory(char const* name) {
  std::filesystem::path const directory =
      std::filesystem::temp_directory_path() / ("fuzz-progress-" + std::to_string(getpid())) / name;
  std::filesystem::create_directories(directory / "userdata");
  return directory;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
  static std::filesystem::path const input = ScratchDirectory("input");
  static std::filesystem::path const output = ScratchDirectory("output");
  {
    std::ofstream file(TutorialProgressPath(input.string()), std::ios::binary | std::ios::trunc);
    file.write(reinterpret_cast<char const*>(data), static_cast<std::streamsize>(size));
  }
  TutorialProgress const progress = LoadTutorialProgress(input.string());
  for (auto const& [level, status] : progress.status) {
    FUZZ_REQUIRE(status == TutorialProgress::kSkipped || status == TutorialProgress::kCompleted);
  }
  for (auto const& [level, count] : progress.attempts) {
    FUZZ_REQUIRE(count >= 1);
  }
  SaveTutorialProgress(output.string(), progress);
  FUZZ_REQUIRE(LoadTutorialProgress(output.string()) == progress);
  return 0;
}
