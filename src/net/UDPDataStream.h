#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <vector>

#include "net/GameDataPacket.h"

// Updates waiting for the peer's acknowledgement. New updates enter at the front, so the front is the
// newest and the back the oldest unacknowledged one.
class SendQueue {
public:
  void push_newest(std::vector<unsigned char> update) { entries_.push_front(std::move(update)); }

  // A copy of the age newest entries, newest first; empty for 0. The queue must hold age entries.
  std::vector<std::vector<unsigned char>> all_with_age_up_to(unsigned char age) const;
  // A copy of the count entries that follow the skip newest ones, newest first.
  std::vector<std::vector<unsigned char>> entries_after_newest(std::size_t skip, std::size_t count) const;

  // Keeps the count newest entries, dropping from the back.
  void keep_newest(std::size_t count);

  std::size_t size() const { return entries_.size(); }

private:
  std::deque<std::vector<unsigned char>> entries_;
};

// Updates received in order and not yet taken. New updates enter at the front; the oldest leaves
// from the back.
class ReceiveQueue {
public:
  void push_newest(std::vector<unsigned char> update) { entries_.push_front(std::move(update)); }
  // Removes and returns the oldest entry. The queue must not be empty.
  std::vector<unsigned char> pop_oldest();

  bool empty() const { return entries_.empty(); }
  std::size_t size() const { return entries_.size(); }

private:
  std::deque<std::vector<unsigned char>> entries_;
};

// A reliable, ordered stream of small updates, one for each simulation tick, over lossy datagrams.
// The same class serves a client, whose one peer is the server, and the relay, which has one peer
// for each player. Each side numbers the updates it sends from 0. There is no timer and no separate
// acknowledgement: every packet carries all the updates that the peer hasn't confirmed, and the
// peer's received_before in its next packet confirms them. Loss is repaired by the next packet;
// duplicates and older packets carry nothing new; a newer packet carries everything in between.
//
// The relay's side is collate, handle_game_packet, drop_player, allNonDroppedHaveDataAvailable and
// allAreDropped; a client uses handle_packet, push_update and get_next_frame_update.
//
// Bytes from the network are not trusted: an acknowledgement of ticks never sent is ignored, a
// packet that doesn't reach back to what was already received is discarded, and a peer can't make a
// receive queue grow beyond kMaxQueuedUpdates (the excess isn't taken and will be repeated).
class UDPDataStream {
public:
  // At most this many unconfirmed updates go into one packet (its count field has 8 bits). A longer
  // backlog goes out oldest first, 255 at a time, so the peer never sees a gap.
  static constexpr std::uint64_t kMaxWindow = GameDataPacket::kMaxUpdates;
  static constexpr std::size_t kMaxQueuedUpdates = 4096;
  // A collated update must itself fit one update of a packet.
  static constexpr std::size_t kMaxCollatedSize = GameDataPacket::kMaxUpdateSize;

  explicit UDPDataStream(int endpointCount);

  // Shrinks each live peer's send queue to the updates that it hasn't confirmed.
  void discard_acknowledged();

  // Sends each live peer that hasn't confirmed everything a packet with all it hasn't confirmed.
  // Transport is either single-destination (send_packet(data, length)), as a client's socket, or
  // addressed by peer index (send_packet(peer, data, length)), as the in-memory test transport and
  // the relay's.
  template <class Transport>
  void send_updates(Transport& transport) const;

  // The packet that send_updates would send to peer, if any.
  bool packet_for(int peer, GameDataPacket& packet) const;

  // The client's receive path (peer 0): ignores a datagram that isn't game data.
  void handle_packet(unsigned char const* data, std::size_t length);
  // The relay's receive path for a player's datagram, whose type the caller has checked.
  void handle_game_packet(unsigned char const* data, std::size_t length, int player);

  // The client's next collated tick: the oldest of peer 0's receive queue, which must not be empty.
  std::vector<unsigned char> get_next_frame_update() { return receive_queues[0].pop_oldest(); }
  bool has_frame_update() const { return !receive_queues[0].empty(); }

  // The client's own next update: enters at the front of peer 0's send queue with the next tick.
  void push_update(std::vector<unsigned char> update);

  // The relay's pass: stall bookkeeping and diagnostic, then as many collated ticks as every live
  // player has data for, each sent to every live player.
  void collate();

  // A player who has gone: no way back. Its place in collated ticks is an empty chunk.
  void drop_player(int player);

  bool allNonDroppedHaveDataAvailable() const;
  bool allAreDropped() const;

  int endpointCount = 0;
  std::vector<ReceiveQueue> receive_queues;
  std::vector<SendQueue> send_queues;
  std::vector<std::uint64_t> received_before;
  std::vector<std::uint64_t> ack_before;
  std::vector<bool> dropped;
  std::uint64_t next_tick = 0;
  int stall_iterations = 0;
  std::vector<std::uint64_t> packets_received;

private:
  void receive(GameDataPacket const& packet, int peer, bool fromServer);
  void writeStallDiagnostic() const;
};

template <class Transport>
void UDPDataStream::send_updates(Transport& transport) const {
  std::vector<unsigned char> bytes;
  GameDataPacket packet;
  for (int peer = 0; peer < endpointCount; ++peer) {
    if (!packet_for(peer, packet)) {
      continue;
    }
    bytes.clear();
    packet.to_wire(bytes);
    if constexpr (requires { transport.send_packet(peer, bytes.data(), bytes.size()); }) {
      transport.send_packet(peer, bytes.data(), bytes.size());
    } else {
      transport.send_packet(bytes.data(), bytes.size());
    }
  }
}
