// Fuzz target: FromBytes of GameResult.
#include "net/GameRecordsWire.h"
#include "FuzzChecks.h"

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
  fuzz::CheckReader<GameResult>(data, size);
  return 0;
}
