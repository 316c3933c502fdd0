// Fuzz target: SplitServerData over an update of any length; the first byte gives the number of
// players. The sanitizer catches any read past the update's end.
#include "FuzzChecks.h"
#include "sim/SplitServerData.h"

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
  if (size == 0) {
    return 0;
  }
  int const players = data[0] % 32;
  // A copy of exactly the update's bytes, so that an over-read leaves the heap block.
  std::vector<unsigned char> const update(data + 1, data + size);
  std::vector<std::vector<unsigned char>> const orders = SplitServerData(update, players);
  FUZZ_REQUIRE(orders.size() == static_cast<std::size_t>(players));
  std::size_t taken = 0;
  for (std::vector<unsigned char> const& order : orders) {
    taken += order.size();
  }
  FUZZ_REQUIRE(taken <= update.size());
  return 0;
}
