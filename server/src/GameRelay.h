#pragma once

#include <cstdint>
#include <optional>
#include <utility>
#include <vector>

#include "ServerHost.h"
#include "net/UDPDataStream.h"

// The datagram side of one running game: binds each player's address to its session token, relays
// the players' updates through the stream (one peer a player) and keeps every collated update for the
// recording. It does no input or output: the caller hands it datagrams and sends what it returns.
class GameRelay {
public:
  // A player whose datagrams stop for this long, while the game waits for that player, is dropped.
  static constexpr std::int64_t kSilenceLimitMs = 30000;
  // The recording keeps at most this many steps (an hour at 60 a second); a game that runs longer is
  // still relayed, but its recording ends there.
  static constexpr std::size_t kMaxRecordedSteps = 60 * 60 * 60;

  struct Output {
    std::vector<std::pair<Endpoint, std::vector<unsigned char>>> datagrams;
    std::vector<int> dropped;  // players dropped by this call, for the lobby to announce
  };

  GameRelay(std::vector<std::uint64_t> tokens, std::int64_t nowMs);

  // One datagram from an address. Session requests with a player's token bind that address to the
  // player and are confirmed; game data from a bound address is relayed. Anything else is dropped.
  void handleDatagram(Endpoint const& from, unsigned char const* data, std::size_t length, std::int64_t nowMs,
                      Output& out);
  // Repeats unconfirmed updates and drops silent players; called a few times a second.
  void tick(std::int64_t nowMs, Output& out);
  // The player's lobby connection has gone or the player has left the game. The others may have been
  // waiting for it: what can now be collated goes out.
  void dropPlayer(int player, Output& out);
  bool isDropped(int player) const;
  int playerCount() const { return static_cast<int>(tokens_.size()); }

  // The collated updates so far, oldest first: the steps of the recording.
  std::vector<std::vector<unsigned char>> const& relayedUpdates() const { return relayed_; }

private:
  struct Seat {
    std::optional<Endpoint> endpoint;
    std::int64_t lastHeardMs = 0;
  };
  // Collates what it can and sends: to every live player, or with sender >= 0 and nothing new
  // collated, to that player alone.
  void collateAndSend(Output& out, int sender = -1);
  void sendPending(Output& out, int onlyPeer = -1);

  std::vector<std::uint64_t> tokens_;
  std::vector<Seat> seats_;
  UDPDataStream stream_;
  std::vector<std::vector<unsigned char>> relayed_;
};
