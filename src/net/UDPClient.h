#pragma once

#include <netinet/in.h>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "net/SocketBase.h"

// A non-blocking datagram socket that talks to one server address. It is never bound or connected:
// whatever reaches it counts as the server's. The owner looks at isOpen(): it turns false only on a
// failed initialisation or when the server's port turns out to be closed (ECONNRESET).
class UDPClient : public SocketPlatform::SocketBase {
public:
  UDPClient(std::string const& host, unsigned short port);
  UDPClient(UDPClient&& other) noexcept;
  UDPClient& operator=(UDPClient&& other) noexcept;

  bool initialize(std::string const& host, unsigned short port);

  // One datagram to the server; true if all bytes went out.
  bool send_packet(void const* data, std::size_t length);
  // Hands each datagram of at least one byte to handler until none is waiting.
  void process_incoming_packets(std::function<void(unsigned char const*, std::size_t)> const& handler);

private:
  sockaddr_in address_{};
  std::vector<unsigned char> receiveBuffer_;
};

// Binds the socket to the game session: sends the session request with token every 200 milliseconds,
// polling every millisecond, until a confirmation arrives; anything else received meanwhile is
// dropped. Blocks its caller. Throws std::runtime_error ("Disconnected from, or failed to connect to
// UDP server") if the socket closes, or once timeout has passed without a confirmation (zero waits for
// ever; an unconnected datagram socket may never learn that nobody listens).
void AuthenticateUDPClient(UDPClient& client, unsigned long long token,
                           std::chrono::milliseconds timeout = std::chrono::milliseconds(0));
