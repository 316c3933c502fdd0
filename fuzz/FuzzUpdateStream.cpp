// Fuzz target: the update stream on both sides, and the tandem client, fed datagrams cut from the
// input (a length byte, then the datagram; a datagram's first byte after its length picks the relay's
// player). Whatever arrives, acknowledgements never pass what was sent, queues stay bounded, frames
// keep their player count, and what the stream sends reads back as a packet.
#include "FuzzChecks.h"
#include "net/TandemClient.h"
#include "net/TestUDPTransport.h"
#include "net/UDPDataStream.h"

namespace {

void CheckSent(TestUDPTransport& transport) {
  for (auto& queue : transport.outgoing) {
    while (!queue.empty()) {
      std::vector<unsigned char> const bytes = std::move(queue.front());
      queue.pop();
      unsigned char const* cursor = bytes.data();
      std::size_t remaining = bytes.size();
      FUZZ_REQUIRE(GameDataPacket::from_wire(cursor, remaining).has_value());
      FUZZ_REQUIRE(remaining == 0);
    }
  }
}

void CheckStream(UDPDataStream const& stream) {
  for (int peer = 0; peer < stream.endpointCount; ++peer) {
    FUZZ_REQUIRE(stream.ack_before[static_cast<std::size_t>(peer)] <= stream.next_tick);
    FUZZ_REQUIRE(stream.receive_queues[static_cast<std::size_t>(peer)].size() <= UDPDataStream::kMaxQueuedUpdates);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
  std::FILE* const quiet = std::freopen("/dev/null", "w", stdout);
  (void)quiet;
  UDPDataStream relay(3);
  TandemClient<TestUDPTransport> client(TestUDPTransport{}, 3, 2);
  TestUDPTransport relayOut;
  std::vector<std::vector<unsigned char>> orders;

  std::size_t at = 0;
  int step = 0;
  while (at < size) {
    std::size_t const length = std::min<std::size_t>(data[at], size - at - 1);
    unsigned char const* datagram = data + at + 1;
    at += 1 + length;

    client.transport().incoming.emplace_back(0, std::vector<unsigned char>(datagram, datagram + length));
    client.communicate(orders);
    FUZZ_REQUIRE(orders.empty() || orders.size() == 3);
    FUZZ_REQUIRE(client.framesReady() <= TandemClient<TestUDPTransport>::kMaxFramesReady);
    if (!orders.empty()) {
      client.sendUpdate({static_cast<unsigned char>(step)});
    }
    CheckSent(client.transport());

    if (length > 0) {
      relay.handle_game_packet(datagram, length, datagram[0] % 4 == 3 ? 2 : datagram[0] % 3);
    }
    if (++step % 17 == 0) {
      relay.drop_player(step % 3);
    }
    relay.collate();
    relay.discard_acknowledged();
    relay.send_updates(relayOut);
    CheckSent(relayOut);
    CheckStream(relay);
    CheckStream(client.stream());
  }
  return 0;
}
