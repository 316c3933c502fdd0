// Fuzz target: ServerInfo::from_wire, which consumes 0, 2 or 4 bytes and never fails.
#include <algorithm>

#include "FuzzChecks.h"
#include "net/ServerInfo.h"

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
  unsigned char const* cursor = data;
  std::size_t remaining = size;
  ServerInfo const info = ServerInfo::from_wire(cursor, remaining);
  std::size_t const consumed = static_cast<std::size_t>(cursor - data);
  FUZZ_REQUIRE(consumed + remaining == size);
  FUZZ_REQUIRE(consumed == (size >= 4 ? 4 : size >= 2 ? 2 : 0));
  if (consumed == 4) {
    std::vector<unsigned char> bytes;
    info.to_wire(bytes);
    FUZZ_REQUIRE(bytes.size() == 4 && std::equal(bytes.begin(), bytes.end(), data));
  }
  return 0;
}
