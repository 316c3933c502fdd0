#pragma once

#include <compare>
#include <cstddef>
#include <cstdint>
#include <vector>

// A datagram peer: IPv4 address and port, both in host order.
struct Endpoint {
  std::uint32_t address = 0;
  std::uint16_t port = 0;
  friend auto operator<=>(Endpoint const&, Endpoint const&) = default;
};

using ConnectionId = std::uint64_t;

// What the lobby logic asks of the network around it. The logic itself does no input or output, so
// that tests and fuzzers can drive it with bytes alone.
class IServerHost {
public:
  virtual ~IServerHost() = default;
  // Queues one lobby message (type byte first) on a connection; the host frames it.
  virtual void send(ConnectionId connection, std::vector<unsigned char> const& payload) = 0;
  // Closes a connection once what was queued on it has gone out. No further call names it.
  virtual void close(ConnectionId connection) = 0;
  // Opens the datagram port of a game, base port + portOffset; false if it can't be bound.
  virtual bool openPort(unsigned short portOffset) = 0;
  virtual void closePort(unsigned short portOffset) = 0;
  virtual void sendDatagram(unsigned short portOffset, Endpoint const& to, std::vector<unsigned char> const& bytes) = 0;
};
