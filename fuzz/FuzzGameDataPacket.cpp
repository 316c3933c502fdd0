// Fuzz target: the datagram readers. A game data packet that reads must write back to the bytes it
// was read from (its type byte aside); a refused one consumes nothing. The session datagrams are
// read from the same input.
#include "FuzzChecks.h"
#include "net/GameDataPacket.h"

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
  std::uint64_t token = 0;
  if (Datagram::DecodeSessionRequest(data, size, token)) {
    auto const request = Datagram::EncodeSessionRequest(token);
    FUZZ_REQUIRE(size == request.size() && std::equal(request.begin(), request.end(), data));
  }
  Datagram::IsSessionConfirmation(data, size);

  unsigned char const* cursor = data;
  std::size_t remaining = size;
  std::optional<GameDataPacket> const packet = GameDataPacket::from_wire(cursor, remaining);
  FUZZ_REQUIRE(static_cast<std::size_t>(cursor - data) + remaining == size);
  if (!packet.has_value()) {
    FUZZ_REQUIRE(cursor == data);
    return 0;
  }
  std::vector<unsigned char> bytes;
  packet->to_wire(bytes);
  std::size_t const consumed = size - remaining;
  FUZZ_REQUIRE(bytes.size() == consumed);
  FUZZ_REQUIRE(std::equal(bytes.begin() + 1, bytes.end(), data + 1));
  return 0;
}
