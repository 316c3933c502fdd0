#include "net/SocketBase.h"

#include <arpa/inet.h>
#include <netdb.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstring>

namespace SocketPlatform {

SocketBase::~SocketBase() {
  if (socket_ != -1) {
    ::close(socket_);
  }
}

void SocketBase::cleanup() {
  if (socket_ != -1) {
    ::close(socket_);
    socket_ = -1;
  }
  open_ = false;
}

void SocketBase::takeSocket(SocketBase& other) noexcept {
  socket_ = other.socket_;
  open_ = other.open_;
  other.socket_ = -1;
  other.open_ = false;
}

bool ResolveIPv4(char const* host, int socketType, void* sockaddrIn) {
  auto* address = static_cast<sockaddr_in*>(sockaddrIn);
  if (::inet_pton(AF_INET, host, &address->sin_addr) == 1) {
    return true;
  }
  addrinfo hints{};
  hints.ai_family = AF_INET;
  hints.ai_socktype = socketType;
  addrinfo* results = nullptr;
  if (::getaddrinfo(host, nullptr, &hints, &results) != 0 || results == nullptr) {
    return false;
  }
  bool found = false;
  if (results->ai_addr != nullptr && results->ai_addrlen >= sizeof(sockaddr_in)) {
    address->sin_addr = reinterpret_cast<sockaddr_in const*>(results->ai_addr)->sin_addr;
    found = true;
  }
  ::freeaddrinfo(results);
  return found;
}

}  // namespace SocketPlatform
