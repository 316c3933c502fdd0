#pragma once

// The POSIX socket calls of the network layer, IPv4 only.
namespace SocketPlatform {

// The root of the TCP and datagram clients: one socket handle and whether it is open.
class SocketBase {
public:
  SocketBase() = default;
  SocketBase(SocketBase const&) = delete;
  SocketBase& operator=(SocketBase const&) = delete;
  virtual ~SocketBase();

  // Closes the handle if there is one and clears the open flag.
  virtual void cleanup();

  bool isOpen() const { return open_; }
  int handle() const { return socket_; }

protected:
  // Takes over other's handle and flag, leaving it with none.
  void takeSocket(SocketBase& other) noexcept;

  int socket_ = -1;
  bool open_ = false;
};

// Fills an IPv4 address from a dotted literal or, failing that, a name lookup of the given socket
// type. Returns false when neither gives an address.
bool ResolveIPv4(char const* host, int socketType, void* sockaddrIn);

}  // namespace SocketPlatform
