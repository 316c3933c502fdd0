// Fuzz target: FromBytes of LobbyState.
#include "net/LobbyRecordsWire.h"
#include "FuzzChecks.h"

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
  fuzz::CheckReader<LobbyState>(data, size);
  return 0;
}
