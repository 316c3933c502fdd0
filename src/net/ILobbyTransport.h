#pragma once

#include <cstddef>
#include <functional>

enum class ConnectionState { Disconnected = 0, Connecting = 1, Connected = 2 };

// The lobby's view of its connection: whole messages out, whole messages in, polled once a frame.
class ILobbyTransport {
public:
  virtual ~ILobbyTransport() = default;

  // Polled while Connecting; true once Connected.
  virtual bool complete_connection() = 0;
  // Sends one whole message; false if it can't.
  virtual bool send_message(void const* data, std::size_t length) = 0;
  // Hands each complete message received to handler, or at most one with singleMessage.
  virtual void process_incoming_messages(std::function<void(unsigned char const*, std::size_t)> handler,
                                         bool singleMessage) = 0;
  virtual void disconnect() = 0;
  virtual bool is_connected() const = 0;
  virtual ConnectionState get_connection_state() const = 0;
};
