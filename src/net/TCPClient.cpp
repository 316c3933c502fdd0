#include "net/TCPClient.h"

#include <fcntl.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/select.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <stdexcept>
#include <utility>

namespace {

bool SetNoDelay(int socket) {
  int const on = 1;
  return ::setsockopt(socket, IPPROTO_TCP, TCP_NODELAY, &on, sizeof(on)) == 0;
}

// Past this much buffered data the receive loop leaves the rest in the kernel until the buffer has
// been dispatched: a peer can't make us buffer more than one longest frame and a read's worth.
constexpr std::size_t kMaxBuffered = SocketPlatform::kMaxFrameLength + SocketPlatform::kFrameHeaderSize + 65536;

}  // namespace

TCPClient::TCPClient(std::string const& host, unsigned short port) {
  socket_ = ::socket(AF_INET, SOCK_STREAM, IPPROTO_TCP);
  if (socket_ == -1) {
    throw std::runtime_error("Failed to create socket : " + std::to_string(errno));
  }
  open_ = true;
  address_.sin_family = AF_INET;
  address_.sin_port = htons(port);
  if (!SocketPlatform::ResolveIPv4(host.c_str(), SOCK_STREAM, &address_)) {
    throw std::runtime_error("Invalid server address: " + host);
  }
  int const flags = ::fcntl(socket_, F_GETFL, 0);
  if (flags == -1 || ::fcntl(socket_, F_SETFL, flags | O_NONBLOCK) == -1) {
    throw std::runtime_error("Failed to set non-blocking mode: " + std::to_string(errno));
  }
  if (::connect(socket_, reinterpret_cast<sockaddr const*>(&address_), sizeof(address_)) == 0) {
    state_ = ConnectionState::Connected;
    if (!SetNoDelay(socket_)) {
      throw std::runtime_error("Failed to set TCP_NODELAY: " + std::to_string(errno));
    }
    return;
  }
  if (errno == EINPROGRESS || errno == EAGAIN) {
    state_ = ConnectionState::Connecting;
    return;
  }
  std::fprintf(stderr, "Connection failed: %d\n", errno);
  cleanup();
}

TCPClient::TCPClient(TCPClient&& other) noexcept
    : address_(other.address_), state_(other.state_), framer_(std::move(other.framer_)) {
  takeSocket(other);
  other.state_ = ConnectionState::Disconnected;
  other.framer_.release();
}

TCPClient& TCPClient::operator=(TCPClient&& other) noexcept {
  if (this != &other) {
    cleanup();
    takeSocket(other);
    address_ = other.address_;
    state_ = other.state_;
    framer_ = std::move(other.framer_);
    other.state_ = ConnectionState::Disconnected;
    other.framer_.release();
  }
  return *this;
}

TCPClient::~TCPClient() { TCPClient::cleanup(); }

void TCPClient::cleanup() {
  SocketBase::cleanup();
  state_ = ConnectionState::Disconnected;
  framer_.reset();
}

bool TCPClient::complete_connection() {
  if (state_ != ConnectionState::Connecting) {
    return state_ == ConnectionState::Connected;
  }
  fd_set writeSet;
  fd_set errorSet;
  FD_ZERO(&writeSet);
  FD_ZERO(&errorSet);
  FD_SET(socket_, &writeSet);
  FD_SET(socket_, &errorSet);
  timeval noWait{};
  int const ready = ::select(socket_ + 1, nullptr, &writeSet, &errorSet, &noWait);
  if (ready == 0) {
    return false;
  }
  if (ready < 0) {
    std::fprintf(stderr, "Select error: %d\n", errno);
    cleanup();
    return false;
  }
  int error = 0;
  socklen_t size = sizeof(error);
  if (::getsockopt(socket_, SOL_SOCKET, SO_ERROR, &error, &size) != 0) {
    error = errno;
  }
  if (FD_ISSET(socket_, &errorSet) || error != 0) {
    std::fprintf(stderr, "Connection failed: %d\n", error);
    cleanup();
    return false;
  }
  if (!FD_ISSET(socket_, &writeSet)) {
    return false;
  }
  state_ = ConnectionState::Connected;
  if (!SetNoDelay(socket_)) {
    std::fprintf(stderr, "Warning: Failed to set TCP_NODELAY: %d\n", errno);
  }
  return true;
}

TCPClient::SendResult TCPClient::sendAll(unsigned char const* data, std::size_t length) {
  while (length > 0) {
    ssize_t const sent = ::send(socket_, data, length, MSG_NOSIGNAL);
    if (sent >= 0) {
      data += sent;
      length -= static_cast<std::size_t>(sent);
      continue;
    }
    if (errno == EAGAIN || errno == EWOULDBLOCK || errno == EINTR) {
      // The kernel's buffer is full: wait until it takes more, briefly, rather than spinning.
      pollfd waitFor{socket_, POLLOUT, 0};
      ::poll(&waitFor, 1, 10);
      continue;
    }
    if (errno == ECONNABORTED || errno == ECONNRESET || errno == EPIPE) {
      std::fprintf(stderr, "Connection lost\n");
      cleanup();
      return SendResult::Lost;
    }
    std::fprintf(stderr, "Failed to send message: %d\n", errno);
    return SendResult::Failed;
  }
  return SendResult::Sent;
}

bool TCPClient::send_message(void const* data, std::size_t length) {
  if (length == 0 || data == nullptr || state_ != ConnectionState::Connected) {
    return false;
  }
  if (length > SocketPlatform::kMaxFrameLength) {
    std::fprintf(stderr, "Failed to send message: %zu bytes is longer than a frame may be\n", length);
    return false;
  }
  unsigned char header[SocketPlatform::kFrameHeaderSize];
  SocketPlatform::WriteFrameHeader(static_cast<std::uint32_t>(length), header);
  if (sendAll(header, sizeof(header)) != SendResult::Sent) {
    return false;
  }
  return sendAll(static_cast<unsigned char const*>(data), length) == SendResult::Sent;
}

void TCPClient::process_incoming_messages(std::function<void(unsigned char const*, std::size_t)> handler,
                                          bool singleMessage) {
  if (state_ != ConnectionState::Connected || !handler) {
    return;
  }
  while (framer_.size() < kMaxBuffered) {
    framer_.ensure_capacity(4096);
    ssize_t const received = ::recv(socket_, framer_.write_area(), framer_.write_space(), 0);
    if (received > 0) {
      framer_.advance(static_cast<std::size_t>(received));
      continue;
    }
    if (received == 0) {
      std::fprintf(stderr, "Connection closed by server\n");
      cleanup();
      return;
    }
    if (errno == EINTR) {
      continue;
    }
    if (errno == EAGAIN || errno == EWOULDBLOCK) {
      break;
    }
    if (errno == ECONNABORTED || errno == ECONNRESET) {
      std::fprintf(stderr, "Connection lost\n");
      cleanup();
      return;
    }
    std::fprintf(stderr, "Error receiving data: %d\n", errno);
    break;
  }
  if (framer_.dispatch(handler, singleMessage) == SocketPlatform::MessageFramer::DispatchResult::FrameTooLong) {
    std::fprintf(stderr, "Connection dropped: the server announced a frame longer than %u bytes\n",
                 SocketPlatform::kMaxFrameLength);
    cleanup();
  }
}

void TCPClient::disconnect() {
  if (state_ == ConnectionState::Connected) {
    ::shutdown(socket_, SHUT_RDWR);
  }
  cleanup();
}
