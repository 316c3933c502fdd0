#pragma once

#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstddef>
#include <vector>

// Plain blocking sockets on 127.0.0.1 for the tests of the clients: a TCP listener that accepts one
// peer, and a datagram socket that stands for the server. Every wait is bounded.
namespace loopback {

inline sockaddr_in Address(unsigned short port) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(port);
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  return address;
}

inline unsigned short PortOf(int socket) {
  sockaddr_in address{};
  socklen_t size = sizeof(address);
  ::getsockname(socket, reinterpret_cast<sockaddr*>(&address), &size);
  return ntohs(address.sin_port);
}

// A socket of the type bound to an ephemeral port of 127.0.0.1.
inline int Bound(int type) {
  int const socket = ::socket(AF_INET, type, 0);
  sockaddr_in const address = Address(0);
  ::bind(socket, reinterpret_cast<sockaddr const*>(&address), sizeof(address));
  return socket;
}

// Whether the socket becomes readable within the time.
inline bool Readable(int socket, int milliseconds) {
  pollfd wait{socket, POLLIN, 0};
  return ::poll(&wait, 1, milliseconds) == 1;
}

struct Listener {
  int socket = Bound(SOCK_STREAM);
  int peer = -1;

  Listener() { ::listen(socket, 4); }
  ~Listener() {
    if (peer != -1) {
      ::close(peer);
    }
    ::close(socket);
  }
  unsigned short port() const { return PortOf(socket); }

  bool accept(int milliseconds = 2000) {
    if (!Readable(socket, milliseconds)) {
      return false;
    }
    peer = ::accept(socket, nullptr, nullptr);
    int const on = 1;
    ::setsockopt(peer, IPPROTO_TCP, TCP_NODELAY, &on, sizeof(on));
    return peer != -1;
  }
  void send(std::vector<unsigned char> const& bytes) const { ::send(peer, bytes.data(), bytes.size(), MSG_NOSIGNAL); }
  void closePeer() {
    ::close(peer);
    peer = -1;
  }
  // Reads until count bytes have come or the time is up.
  std::vector<unsigned char> receive(std::size_t count, int milliseconds = 2000) const {
    std::vector<unsigned char> bytes;
    unsigned char buffer[4096];
    while (bytes.size() < count && Readable(peer, milliseconds)) {
      ssize_t const got = ::recv(peer, buffer, sizeof(buffer), 0);
      if (got <= 0) {
        break;
      }
      bytes.insert(bytes.end(), buffer, buffer + got);
    }
    return bytes;
  }
};

}  // namespace loopback
