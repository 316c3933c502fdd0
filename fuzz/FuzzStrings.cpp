// Fuzz target: FromBytes of a string and of a byte vector, chosen by the first byte.
#include <string>

#include "FuzzChecks.h"
#include "net/WireEncoding.h"

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
  if (size == 0) {
    return 0;
  }
  if (data[0] % 2 == 0) {
    fuzz::CheckReader<std::string>(data + 1, size - 1);
  } else {
    fuzz::CheckReader<std::vector<unsigned char>>(data + 1, size - 1);
  }
  return 0;
}
