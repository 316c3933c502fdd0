// Fuzz target: FromBytes of std::vector<bool>.
#include "net/WireEncoding.h"
#include "FuzzChecks.h"

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
  fuzz::CheckReader<std::vector<bool>>(data, size);
  return 0;
}
