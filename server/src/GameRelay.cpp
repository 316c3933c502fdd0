#include "GameRelay.h"

#include <algorithm>

GameRelay::GameRelay(std::vector<std::uint64_t> tokens, std::int64_t nowMs)
    : tokens_(std::move(tokens)), seats_(tokens_.size()), stream_(static_cast<int>(tokens_.size())) {
  for (Seat& seat : seats_) {
    seat.lastHeardMs = nowMs;
  }
}

void GameRelay::handleDatagram(Endpoint const& from, unsigned char const* data, std::size_t length,
                               std::int64_t nowMs, Output& out) {
  if (length == 0) {
    return;
  }
  std::uint64_t token = 0;
  if (Datagram::DecodeSessionRequest(data, length, token)) {
    for (std::size_t player = 0; player < tokens_.size(); ++player) {
      if (tokens_[player] == token && !stream_.dropped[player]) {
        // The token is the player's secret for this game: whoever shows it is that player, also
        // from a new address after a change of network.
        seats_[player].endpoint = from;
        seats_[player].lastHeardMs = nowMs;
        auto const confirmation = Datagram::EncodeSessionConfirmation();
        out.datagrams.emplace_back(from, std::vector<unsigned char>(confirmation.begin(), confirmation.end()));
        return;
      }
    }
    return;
  }
  if (data[0] != Datagram::kGameData) {
    return;
  }
  for (std::size_t player = 0; player < seats_.size(); ++player) {
    if (seats_[player].endpoint == from && !stream_.dropped[player]) {
      seats_[player].lastHeardMs = nowMs;
      stream_.handle_game_packet(data, length, static_cast<int>(player));
      collateAndSend(out, static_cast<int>(player));
      return;
    }
  }
}

void GameRelay::collateAndSend(Output& out, int sender) {
  std::uint64_t const before = stream_.next_tick;
  stream_.collate();
  std::uint64_t const built = stream_.next_tick - before;
  if (built > 0 && relayed_.size() < kMaxRecordedSteps) {
    // Every live player's send queue has the new ticks at its front, newest first.
    for (int player = 0; player < stream_.endpointCount; ++player) {
      if (!stream_.dropped[player]) {
        auto const fresh = stream_.send_queues[player].entries_after_newest(0, static_cast<std::size_t>(built));
        relayed_.insert(relayed_.end(), fresh.rbegin(), fresh.rend());
        if (relayed_.size() > kMaxRecordedSteps) {
          relayed_.resize(kMaxRecordedSteps);
        }
        break;
      }
    }
  }
  // New steps go to everybody. Without one, only the sender hears back, and only if it lacks steps:
  // its packet has just told what it holds, so a lost step is repeated within a frame, while the other
  // players' repeats wait for their own packets (or the tick) instead of going out four times a frame.
  sendPending(out, built > 0 ? -1 : sender);
}

void GameRelay::sendPending(Output& out, int onlyPeer) {
  stream_.discard_acknowledged();
  if (onlyPeer >= 0) {
    GameDataPacket packet;
    auto const& endpoint = seats_[static_cast<std::size_t>(onlyPeer)].endpoint;
    if (endpoint && stream_.packet_for(onlyPeer, packet)) {
      std::vector<unsigned char> bytes;
      packet.to_wire(bytes);
      out.datagrams.emplace_back(*endpoint, std::move(bytes));
    }
    return;
  }
  struct Transport {
    GameRelay& relay;
    Output& out;
    bool send_packet(int peer, unsigned char const* data, std::size_t length) {
      auto const& endpoint = relay.seats_[static_cast<std::size_t>(peer)].endpoint;
      if (endpoint) {
        out.datagrams.emplace_back(*endpoint, std::vector<unsigned char>(data, data + length));
      }
      return true;
    }
  } transport{*this, out};
  stream_.send_updates(transport);
}

void GameRelay::tick(std::int64_t nowMs, Output& out) {
  for (std::size_t player = 0; player < seats_.size(); ++player) {
    // A player the game waits for, silent for too long, has gone. A player that is silent because
    // everything it sent is confirmed isn't holding anyone up and stays.
    if (!stream_.dropped[player] && stream_.receive_queues[player].empty() &&
        nowMs - seats_[player].lastHeardMs > kSilenceLimitMs) {
      stream_.drop_player(static_cast<int>(player));
      out.dropped.push_back(static_cast<int>(player));
    }
  }
  if (!out.dropped.empty()) {
    collateAndSend(out);
  } else {
    sendPending(out);
  }
}

void GameRelay::dropPlayer(int player, Output& out) {
  if (player >= 0 && player < stream_.endpointCount && !stream_.dropped[player]) {
    stream_.drop_player(player);
    collateAndSend(out);
  }
}

bool GameRelay::isDropped(int player) const {
  return player < 0 || player >= stream_.endpointCount || stream_.dropped[player];
}
