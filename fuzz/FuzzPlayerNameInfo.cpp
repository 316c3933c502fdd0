// Fuzz target: FromBytes of PlayerNameInfo.
#include "net/LobbyRecordsWire.h"
#include "FuzzChecks.h"

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
  fuzz::CheckReader<PlayerNameInfo>(data, size);
  return 0;
}
