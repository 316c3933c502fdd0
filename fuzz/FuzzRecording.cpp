// Fuzz target: loading a recording from the bytes of a file. Malformed input may only raise
// std::runtime_error with a loading error; a recording that loads saves and loads to an equal one.
#include <sstream>
#include <stdexcept>
#include <string>

#include "FuzzChecks.h"
#include "sim/Recording.h"

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
  std::istringstream file(std::string(reinterpret_cast<char const*>(data), size));
  try {
    Recording const recording(file);
    std::stringstream saved;
    recording.save(saved);
    Recording const again(saved);
    FUZZ_REQUIRE(again == recording);
    for (int frame = 0; frame <= static_cast<int>(recording.updates.size()) && frame < 64; ++frame) {
      FUZZ_REQUIRE(static_cast<int>(recording.allUpdatesOnFrame(frame).size()) == recording.players());
    }
  } catch (std::runtime_error const& error) {
    FUZZ_REQUIRE(std::string(error.what()).rfind("Failed to load recording, ", 0) == 0);
  }
  return 0;
}
