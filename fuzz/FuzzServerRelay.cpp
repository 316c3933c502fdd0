// The relay's datagram handler under fuzzed datagrams from the players' bound addresses and from a
// stranger, with time passing and players dropped. Whatever it sends must be a confirmation or a game
// data packet that reads back whole, and every relayed update must hold exactly one chunk a player
// within 255 bytes.
#include <cstddef>
#include <cstdint>

#include "FuzzChecks.h"
#include "GameRelay.h"
#include "net/GameDataPacket.h"

namespace {

void CheckOutput(GameRelay::Output const& out) {
  for (auto const& [to, bytes] : out.datagrams) {
    FUZZ_REQUIRE(!bytes.empty());
    if (bytes[0] == Datagram::kSessionConfirmation) {
      FUZZ_REQUIRE(bytes.size() == 1);
      continue;
    }
    FUZZ_REQUIRE(bytes[0] == Datagram::kGameData);
    unsigned char const* cursor = bytes.data();
    std::size_t remaining = bytes.size();
    auto const packet = GameDataPacket::from_wire(cursor, remaining);
    FUZZ_REQUIRE(packet.has_value() && remaining == 0);
    FUZZ_REQUIRE(!packet->updates.empty() && packet->updates.size() <= GameDataPacket::kMaxUpdates);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
  if (size == 0) return 0;
  int const players = 1 + data[0] % 4;
  std::vector<std::uint64_t> tokens;
  for (int i = 0; i < players; ++i) tokens.push_back(1000 + static_cast<std::uint64_t>(i));
  GameRelay relay(tokens, 0);
  GameRelay::Output out;
  for (int i = 0; i < players; ++i) {
    auto const request = Datagram::EncodeSessionRequest(tokens[static_cast<std::size_t>(i)]);
    relay.handleDatagram({1, static_cast<std::uint16_t>(i)}, request.data(), request.size(), 0, out);
  }
  FUZZ_REQUIRE(out.datagrams.size() == static_cast<std::size_t>(players));
  std::int64_t now = 0;
  std::size_t datagrams = 0;
  std::size_t at = 1;
  while (at < size) {
    unsigned const op = data[at++];
    out = {};
    if ((op & 3) == 3) {
      if ((op & 4) != 0) {
        relay.dropPlayer(static_cast<int>((op >> 3) % static_cast<unsigned>(players)), out);
      } else {
        now += static_cast<std::int64_t>(op) * 200;
        relay.tick(now, out);
      }
    } else {
      std::size_t length = at < size ? data[at++] : 0;
      if ((op & 3) == 2) length *= 4;
      length = std::min(length, size - at);
      // Peer players is a stranger: an address no session request has bound.
      Endpoint const from{1, static_cast<std::uint16_t>((op >> 2) % static_cast<unsigned>(players + 1))};
      relay.handleDatagram(from, data + at, length, now, out);
      at += length;
      ++datagrams;
    }
    CheckOutput(out);
  }
  for (auto const& update : relay.relayedUpdates()) {
    FUZZ_REQUIRE(update.size() <= 255);
    std::size_t position = 0;
    for (int i = 0; i < players; ++i) {
      FUZZ_REQUIRE(position < update.size());
      position += 1 + update[position];
    }
    FUZZ_REQUIRE(position == update.size());
  }
  // Each relayed step needs one update of every live player, and a datagram carries at most 255.
  FUZZ_REQUIRE(relay.relayedUpdates().size() <= datagrams * 255);
  return 0;
}
