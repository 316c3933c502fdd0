// Fuzz target: FromBytes of the counted vectors and of an optional 2-byte number, chosen by the
// first byte.
#include <optional>
#include <string>

#include "FuzzChecks.h"
#include "net/WireEncoding.h"

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
  if (size == 0) {
    return 0;
  }
  std::uint8_t const* rest = data + 1;
  std::size_t const restSize = size - 1;
  switch (data[0] % 6) {
    case 0: fuzz::CheckReader<std::vector<unsigned short>>(rest, restSize); break;
    case 1: fuzz::CheckReader<std::vector<short>>(rest, restSize); break;
    case 2: fuzz::CheckReader<std::vector<std::string>>(rest, restSize); break;
    case 3: fuzz::CheckReader<std::vector<std::vector<unsigned char>>>(rest, restSize); break;
    case 4: fuzz::CheckReader<std::vector<std::vector<long long>>>(rest, restSize); break;
    default: fuzz::CheckReader<std::optional<unsigned short>>(rest, restSize); break;
  }
  return 0;
}
