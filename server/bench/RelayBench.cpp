// The relay's cost per collated step: four players each send the datagram of their next order (with
// the acknowledgement of what they got), the relay collates and answers each of them.
#include <benchmark/benchmark.h>

#include "GameRelay.h"
#include "net/GameDataPacket.h"

static void BM_RelayStepFourPlayers(benchmark::State& state) {
  int const players = 4;
  std::vector<std::uint64_t> tokens = {11, 22, 33, 44};
  GameRelay relay(tokens, 0);
  GameRelay::Output out;
  for (int p = 0; p < players; ++p) {
    auto const request = Datagram::EncodeSessionRequest(tokens[static_cast<std::size_t>(p)]);
    relay.handleDatagram({1, static_cast<std::uint16_t>(p)}, request.data(), request.size(), 0, out);
  }
  std::uint64_t tick = 0;
  std::vector<unsigned char> bytes;
  for (auto _ : state) {
    out.datagrams.clear();
    for (int p = 0; p < players; ++p) {
      GameDataPacket packet{tick, tick, {std::vector<unsigned char>(6, static_cast<unsigned char>(p))}};
      bytes.clear();
      packet.to_wire(bytes);
      relay.handleDatagram({1, static_cast<std::uint16_t>(p)}, bytes.data(), bytes.size(), 0, out);
    }
    benchmark::DoNotOptimize(out.datagrams.data());
    ++tick;
  }
  state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations()));
}
BENCHMARK(BM_RelayStepFourPlayers);
