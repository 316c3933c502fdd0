// Fuzz target: FromBytes of GameSpecSettings.
#include "net/GameRecordsWire.h"
#include "FuzzChecks.h"

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
  fuzz::CheckReader<GameSpecSettings>(data, size);
  return 0;
}
