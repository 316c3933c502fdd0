#pragma once

#include <cstddef>
#include <deque>
#include <functional>
#include <queue>
#include <utility>
#include <vector>

// An in-memory datagram transport: what is sent lands in outgoing[peer], what the owner puts into
// incoming is received. A send_hook that returns true for a datagram swallows it (a lost packet).
// Nothing else of a network is simulated: delay and reordering are the owner's to arrange.
struct TestUDPTransport {
  std::vector<std::queue<std::vector<unsigned char>>> outgoing;
  std::deque<std::pair<int, std::vector<unsigned char>>> incoming;
  std::function<bool(int, std::vector<unsigned char> const&)> send_hook;

  bool send_packet(int peer, void const* data, std::size_t length) {
    auto const* bytes = static_cast<unsigned char const*>(data);
    std::vector<unsigned char> packet(bytes, bytes + length);
    if (send_hook && send_hook(peer, packet)) {
      return true;
    }
    if (peer < 0) {
      return true;
    }
    if (outgoing.size() <= static_cast<std::size_t>(peer)) {
      outgoing.resize(static_cast<std::size_t>(peer) + 1);
    }
    outgoing[static_cast<std::size_t>(peer)].push(std::move(packet));
    return true;
  }

  template <class Handler>
  void process_incoming_packets(Handler&& handler) {
    while (!incoming.empty()) {
      std::vector<unsigned char> const packet = std::move(incoming.front().second);
      incoming.pop_front();
      handler(packet.data(), packet.size());
    }
  }
};
