// Fuzz target: reading "userdata/progress.ini". Any text reads without an exception to statuses that
// are "skipped" or "completed" and attempt counts of at least 1, and what is read writes and reads
// back the same.
#include <sstream>
#include <string>

#include "FuzzChecks.h"
#include "glow_horde/TutorialProgress.h"

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
  std::istringstream file(std::string(reinterpret_cast<char const*>(data), size));
  TutorialProgress const progress = ReadTutorialProgress(file);
  for (auto const& [level, status] : progress.status) {
    FUZZ_REQUIRE(status == TutorialProgress::kSkipped || status == TutorialProgress::kCompleted);
  }
  for (auto const& [level, count] : progress.attempts) {
    FUZZ_REQUIRE(count >= 1);
  }
  std::stringstream written;
  WriteTutorialProgress(written, progress);
  FUZZ_REQUIRE(ReadTutorialProgress(written) == progress);
  return 0;
}
