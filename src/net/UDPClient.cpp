#include "net/UDPClient.h"

#include <fcntl.h>
#include <sys/socket.h>

#include <cerrno>
#include <cstdio>
#include <stdexcept>
#include <thread>

#include "net/GameDataPacket.h"

UDPClient::UDPClient(std::string const& host, unsigned short port) { initialize(host, port); }

UDPClient::UDPClient(UDPClient&& other) noexcept : address_(other.address_), receiveBuffer_(std::move(other.receiveBuffer_)) {
  takeSocket(other);
}

UDPClient& UDPClient::operator=(UDPClient&& other) noexcept {
  if (this != &other) {
    cleanup();
    takeSocket(other);
    address_ = other.address_;
    receiveBuffer_ = std::move(other.receiveBuffer_);
  }
  return *this;
}

bool UDPClient::initialize(std::string const& host, unsigned short port) {
  cleanup();
  socket_ = ::socket(AF_INET, SOCK_DGRAM, IPPROTO_UDP);
  if (socket_ == -1) {
    std::fprintf(stderr, "Failed to create socket: %d\n", errno);
    return false;
  }
  open_ = true;
  int const flags = ::fcntl(socket_, F_GETFL, 0);
  if (flags == -1 || ::fcntl(socket_, F_SETFL, flags | O_NONBLOCK) == -1) {
    std::fprintf(stderr, "Failed to set non-blocking mode: %d\n", errno);
    cleanup();
    return false;
  }
  address_ = {};
  address_.sin_family = AF_INET;
  address_.sin_port = htons(port);
  if (!SocketPlatform::ResolveIPv4(host.c_str(), SOCK_DGRAM, &address_)) {
    std::fprintf(stderr, "Invalid server address: %s\n", host.c_str());
    cleanup();
    return false;
  }
  return true;
}

bool UDPClient::send_packet(void const* data, std::size_t length) {
  if (length == 0 || data == nullptr || !open_) {
    return false;
  }
  ssize_t const sent =
      ::sendto(socket_, data, length, 0, reinterpret_cast<sockaddr const*>(&address_), sizeof(address_));
  if (sent < 0) {
    std::fprintf(stderr, "Failed to send packet: %d\n", errno);
    return false;
  }
  return static_cast<std::size_t>(sent) == length;
}

void UDPClient::process_incoming_packets(std::function<void(unsigned char const*, std::size_t)> const& handler) {
  if (!open_ || !handler) {
    return;
  }
  if (receiveBuffer_.size() != Datagram::kMaxPayload) {
    receiveBuffer_.assign(Datagram::kMaxPayload, 0);
  }
  while (open_) {
    ssize_t const received = ::recvfrom(socket_, receiveBuffer_.data(), receiveBuffer_.size(), 0, nullptr, nullptr);
    if (received > 0) {
      handler(receiveBuffer_.data(), static_cast<std::size_t>(received));
      continue;
    }
    if (received == 0) {
      continue;  // an empty datagram: nothing to hand on
    }
    if (errno == EINTR) {
      continue;
    }
    if (errno == EAGAIN || errno == EWOULDBLOCK) {
      return;
    }
    if (errno == ECONNRESET || errno == ECONNREFUSED) {
      std::fprintf(stderr, "Error, connection reset by peer error (WSAECONNRESET/ECONNRESET)\n");
      cleanup();
      return;
    }
    std::fprintf(stderr, "Error receiving data: %d\n", errno);
    return;
  }
}

void AuthenticateUDPClient(UDPClient& client, unsigned long long token, std::chrono::milliseconds timeout) {
  using Clock = std::chrono::steady_clock;
  auto const request = Datagram::EncodeSessionRequest(token);
  auto const start = Clock::now();
  bool confirmed = false;
  auto const ConfirmHandler = [&confirmed](unsigned char const* data, std::size_t length) {
    if (Datagram::IsSessionConfirmation(data, length)) {
      confirmed = true;
    }
  };
  for (;;) {
    client.send_packet(request.data(), request.size());
    auto const sentAt = Clock::now();
    for (;;) {
      client.process_incoming_packets(ConfirmHandler);
      if (confirmed) {
        return;
      }
      if (!client.isOpen()) {
        throw std::runtime_error("Disconnected from, or failed to connect to UDP server");
      }
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
      if (timeout.count() > 0 && Clock::now() - start >= timeout) {
        throw std::runtime_error("Disconnected from, or failed to connect to UDP server");
      }
      if (Clock::now() - sentAt >= std::chrono::milliseconds(200)) {
        break;
      }
    }
  }
}
