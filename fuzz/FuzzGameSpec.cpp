// Fuzz target: the tolerant GameSpec reader. Every input gives a GameSpec, and a GameSpec writes back to
// bytes that read to the same GameSpec.
#include "FuzzChecks.h"
#include "net/GameRecordsWire.h"

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
  GameSpec const spec = ParseGameSpec(data, size);
  std::vector<unsigned char> bytes;
  ToBytes(spec, bytes);
  FUZZ_REQUIRE(ParseGameSpec(bytes) == spec);
  return 0;
}
