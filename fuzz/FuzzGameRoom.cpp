// Fuzz target: FromBytes of GameRoom.
#include "net/LobbyRecordsWire.h"
#include "FuzzChecks.h"

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
  fuzz::CheckReader<GameRoom>(data, size);
  return 0;
}
