#include "net/UDPDataStream.h"

#include <algorithm>
#include <cstdio>
#include <limits>
#include <string>

std::vector<std::vector<unsigned char>> SendQueue::all_with_age_up_to(unsigned char age) const {
  return entries_after_newest(0, age);
}

std::vector<std::vector<unsigned char>> SendQueue::entries_after_newest(std::size_t skip, std::size_t count) const {
  std::size_t const first = std::min(skip, entries_.size());
  std::size_t const last = std::min(first + count, entries_.size());
  return {entries_.begin() + static_cast<std::ptrdiff_t>(first), entries_.begin() + static_cast<std::ptrdiff_t>(last)};
}

void SendQueue::keep_newest(std::size_t count) {
  if (entries_.size() > count) {
    entries_.resize(count);
  }
}

std::vector<unsigned char> ReceiveQueue::pop_oldest() {
  std::vector<unsigned char> oldest = std::move(entries_.back());
  entries_.pop_back();
  return oldest;
}

UDPDataStream::UDPDataStream(int endpointCount_)
    : endpointCount(std::max(endpointCount_, 0)),
      receive_queues(static_cast<std::size_t>(endpointCount)),
      send_queues(static_cast<std::size_t>(endpointCount)),
      received_before(static_cast<std::size_t>(endpointCount), 0),
      ack_before(static_cast<std::size_t>(endpointCount), 0),
      dropped(static_cast<std::size_t>(endpointCount), false),
      packets_received(static_cast<std::size_t>(endpointCount), 0) {}

void UDPDataStream::discard_acknowledged() {
  for (std::size_t peer = 0; peer < send_queues.size(); ++peer) {
    if (!dropped[peer]) {
      send_queues[peer].keep_newest(static_cast<std::size_t>(next_tick - ack_before[peer]));
    }
  }
}

bool UDPDataStream::packet_for(int peer, GameDataPacket& packet) const {
  auto const p = static_cast<std::size_t>(peer);
  if (peer < 0 || peer >= endpointCount || dropped[p] || ack_before[p] >= next_tick) {
    return false;
  }
  std::uint64_t const unconfirmed = next_tick - ack_before[p];
  packet.received_before = received_before[p];
  if (unconfirmed <= kMaxWindow) {
    packet.newest_tick = next_tick - 1;
    packet.updates = send_queues[p].all_with_age_up_to(static_cast<unsigned char>(unconfirmed));
  } else {
    // The oldest 255 first: the peer must never be sent a packet that leaves a gap.
    packet.newest_tick = ack_before[p] + kMaxWindow - 1;
    packet.updates = send_queues[p].entries_after_newest(static_cast<std::size_t>(unconfirmed - kMaxWindow),
                                                         static_cast<std::size_t>(kMaxWindow));
  }
  return true;
}

void UDPDataStream::handle_packet(unsigned char const* data, std::size_t length) {
  if (endpointCount < 1 || length < 1 || data[0] != Datagram::kGameData) {
    return;
  }
  std::optional<GameDataPacket> const packet = GameDataPacket::from_wire(data, length);
  if (packet.has_value()) {
    receive(*packet, 0, true);
  }
}

void UDPDataStream::handle_game_packet(unsigned char const* data, std::size_t length, int player) {
  if (player < 0 || player >= endpointCount) {
    return;
  }
  ++packets_received[static_cast<std::size_t>(player)];
  std::optional<GameDataPacket> const packet = GameDataPacket::from_wire(data, length);
  if (packet.has_value() && !dropped[static_cast<std::size_t>(player)]) {
    receive(*packet, player, false);
  }
}

void UDPDataStream::receive(GameDataPacket const& packet, int peer, bool fromServer) {
  auto const p = static_cast<std::size_t>(peer);

  // Acknowledgements only move up, and never beyond what we have sent.
  if (packet.received_before > ack_before[p] && packet.received_before <= next_tick) {
    if (ack_before[p] == 0) {
      if (fromServer) {
        std::printf("Server acknowledged some data\n");
      } else {
        std::printf("Player %d acknowledged some data\n", peer);
      }
      std::fflush(stdout);
    }
    ack_before[p] = packet.received_before;
  }

  if (packet.newest_tick < received_before[p] || packet.newest_tick == std::numeric_limits<std::uint64_t>::max()) {
    return;  // nothing new
  }
  std::uint64_t const fresh = packet.newest_tick - received_before[p] + 1;
  if (fresh > packet.updates.size()) {
    return;  // doesn't reach back to what we have: a gap, discarded
  }
  if (receive_queues[p].size() + fresh > kMaxQueuedUpdates) {
    return;  // not taken now; the peer repeats it once we have caught up
  }
  if (received_before[p] == 0) {
    if (fromServer) {
      std::printf("Started receiving data from server\n");
    } else {
      std::printf("Started receiving data from player %d\n", peer);
    }
    std::fflush(stdout);
  }
  for (std::uint64_t tick = received_before[p]; tick <= packet.newest_tick; ++tick) {
    receive_queues[p].push_newest(packet.updates[static_cast<std::size_t>(packet.newest_tick - tick)]);
  }
  received_before[p] = packet.newest_tick + 1;
}

void UDPDataStream::push_update(std::vector<unsigned char> update) {
  if (update.size() > GameDataPacket::kMaxUpdateSize) {
    std::fprintf(stderr, "Update of %zu bytes is too long to send; sent as an empty update\n", update.size());
    update.clear();
  }
  if (endpointCount > 0) {
    send_queues[0].push_newest(std::move(update));
  }
  ++next_tick;
}

bool UDPDataStream::allNonDroppedHaveDataAvailable() const {
  for (std::size_t peer = 0; peer < receive_queues.size(); ++peer) {
    if (!dropped[peer] && receive_queues[peer].empty()) {
      return false;
    }
  }
  return true;
}

bool UDPDataStream::allAreDropped() const {
  return std::all_of(dropped.begin(), dropped.end(), [](bool d) { return d; });
}

void UDPDataStream::drop_player(int player) {
  if (player >= 0 && player < endpointCount) {
    dropped[static_cast<std::size_t>(player)] = true;
  }
}

void UDPDataStream::collate() {
  bool const stalled = !allNonDroppedHaveDataAvailable() && !allAreDropped();
  if (stalled) {
    int const before = stall_iterations;
    ++stall_iterations;
    if (stall_iterations == 1000 || (before >= 1000 && stall_iterations % 5000 == 0)) {
      writeStallDiagnostic();
    }
  } else {
    if (stall_iterations > 1000) {
      std::printf("=== Stall resolved after %d iterations ===\n", stall_iterations);
      std::fflush(stdout);
    }
    stall_iterations = 0;
  }

  std::vector<unsigned char> tick;
  while (allNonDroppedHaveDataAvailable() && !allAreDropped()) {
    tick.clear();
    for (std::size_t peer = 0; peer < receive_queues.size(); ++peer) {
      if (dropped[peer]) {
        tick.push_back(0);
        continue;
      }
      std::vector<unsigned char> const update = receive_queues[peer].pop_oldest();
      // What doesn't fit the collated update counts as no order, the same on every client.
      std::size_t const reserved = receive_queues.size() - peer - 1;  // a length byte for each later player
      if (tick.size() + 1 + update.size() + reserved > kMaxCollatedSize) {
        tick.push_back(0);
        continue;
      }
      tick.push_back(static_cast<unsigned char>(update.size()));
      tick.insert(tick.end(), update.begin(), update.end());
    }
    for (std::size_t peer = 0; peer < send_queues.size(); ++peer) {
      if (!dropped[peer]) {
        send_queues[peer].push_newest(tick);
      }
    }
    ++next_tick;
  }
}

void UDPDataStream::writeStallDiagnostic() const {
  std::printf("=== Game stalled (%d iterations, next_tick=%llu) ===\n", stall_iterations,
              static_cast<unsigned long long>(next_tick));
  for (std::size_t peer = 0; peer < receive_queues.size(); ++peer) {
    if (dropped[peer]) {
      std::printf("  Player %zu: DROPPED\n", peer);
      continue;
    }
    std::printf("  Player %zu: queue=%zu received_before=%llu ack_before=%llu packets_received=%llu%s\n", peer,
                receive_queues[peer].size(), static_cast<unsigned long long>(received_before[peer]),
                static_cast<unsigned long long>(ack_before[peer]),
                static_cast<unsigned long long>(packets_received[peer]),
                receive_queues[peer].empty() ? " << WAITING" : "");
  }
  std::fflush(stdout);
}
