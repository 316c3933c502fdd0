#pragma once

#include <netinet/in.h>

#include <cstddef>
#include <functional>
#include <string>

#include "net/ILobbyTransport.h"
#include "net/MessageFramer.h"
#include "net/SocketBase.h"

// The lobby's TCP connection over a non-blocking POSIX socket, framed by a 4-byte big-endian length.
// Nothing here waits for the network or starts a thread: the owner polls once a frame. Failures after
// construction show in the state and the bool results, with a line on the standard error stream
// carrying the decimal errno.
class TCPClient : public SocketPlatform::SocketBase, public ILobbyTransport {
public:
  // Starts connecting and returns at once. Throws std::runtime_error when the socket can't be made,
  // the host can't be resolved, the socket can't be made non-blocking, or TCP_NODELAY fails on a
  // connection that completed at once. A refused connection leaves the object Disconnected.
  TCPClient(std::string const& host, unsigned short port);
  TCPClient(TCPClient&& other) noexcept;
  TCPClient& operator=(TCPClient&& other) noexcept;
  ~TCPClient() override;

  void cleanup() override;
  bool complete_connection() override;
  // Writes one whole frame: returns only when it is handed to the kernel or the socket has failed.
  bool send_message(void const* data, std::size_t length) override;
  void process_incoming_messages(std::function<void(unsigned char const*, std::size_t)> handler,
                                 bool singleMessage) override;
  void disconnect() override;
  bool is_connected() const override { return state_ == ConnectionState::Connected; }
  ConnectionState get_connection_state() const override { return state_; }

  std::size_t bufferCapacity() const { return framer_.capacity(); }

private:
  enum class SendResult { Sent, Lost, Failed };
  SendResult sendAll(unsigned char const* data, std::size_t length);

  sockaddr_in address_{};
  ConnectionState state_ = ConnectionState::Disconnected;
  SocketPlatform::MessageFramer framer_;
};
