#pragma once

#include <cstddef>
#include <deque>
#include <functional>
#include <vector>

#include "net/ILobbyTransport.h"

// A lobby transport in memory: messages that the test queues in `incoming` are handed out as the TCP
// client would hand them out (all, or one with singleMessage); what is sent is kept in `sent`.
class FakeLobbyTransport : public ILobbyTransport {
public:
  using Bytes = std::vector<unsigned char>;

  bool complete_connection() override {
    ++completeCalls;
    if (state == ConnectionState::Connecting && connectsOnPoll) {
      state = ConnectionState::Connected;
    }
    return state == ConnectionState::Connected;
  }
  bool send_message(void const* data, std::size_t length) override {
    if (refuseSends || state != ConnectionState::Connected || length == 0) {
      return false;
    }
    auto const* bytes = static_cast<unsigned char const*>(data);
    sent.emplace_back(bytes, bytes + length);
    return true;
  }
  void process_incoming_messages(std::function<void(unsigned char const*, std::size_t)> handler,
                                 bool singleMessage) override {
    ++processCalls;
    while (state == ConnectionState::Connected && !incoming.empty()) {
      Bytes const message = std::move(incoming.front());
      incoming.pop_front();
      handler(message.data(), message.size());
      if (singleMessage) {
        break;
      }
    }
  }
  void disconnect() override { state = ConnectionState::Disconnected; }
  bool is_connected() const override { return state == ConnectionState::Connected; }
  ConnectionState get_connection_state() const override { return state; }

  ConnectionState state = ConnectionState::Connected;
  bool connectsOnPoll = true;
  bool refuseSends = false;
  int completeCalls = 0;
  int processCalls = 0;
  std::deque<Bytes> incoming;
  std::vector<Bytes> sent;
};
