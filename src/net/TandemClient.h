#pragma once

#include <chrono>
#include <cstdio>
#include <deque>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "net/UDPClient.h"
#include "net/UDPDataStream.h"
#include "sim/SplitServerData.h"

// One game session's network end on the client. Order number t of every player belongs to tick t;
// the server gathers tick t from all players and sends the collated tick back. The client starts
// with delayFrames frames of empty orders ready, so that it can step at once, and gives one order for
// each frame it steps: frame F consumes tick F - delayFrames and sends this client's order F.
//
// Transport is UDPClient in the application and TestUDPTransport (in memory) in tests.
template <class Transport>
class TandemClient {
public:
  using Frame = std::vector<std::vector<unsigned char>>;

  // Frames taken from the stream ahead of the simulation. A server keeps far below this; a server
  // that runs ahead of it is left waiting in the stream, which then stops taking its data.
  static constexpr std::size_t kMaxFramesReady = UDPDataStream::kMaxQueuedUpdates;

  // How long the session request is repeated before the game is given up: the server confirms within
  // a round trip once its port listens, and the lobby announces the port only then.
  static constexpr std::chrono::milliseconds kAuthenticationTimeLimit{15000};

  // Opens the datagram socket to host:port and authenticates with the session token; blocks until
  // the server confirms. Throws std::runtime_error when the socket can't be opened, closes, or gets no
  // confirmation within kAuthenticationTimeLimit.
  TandemClient(std::string const& host, unsigned short port, int playerCount, int delayFrames,
               unsigned long long token)
    requires std::is_same_v<Transport, UDPClient>
      : transport_(host, port), stream_(1), playerCount_(playerCount), delayFrames_(delayFrames) {
    fillDelay();
    if (!transport_.isOpen()) {
      throw std::runtime_error("Failed to connect to server");
    }
    std::printf("Attempting authentication with session token..\n");
    std::fflush(stdout);
    AuthenticateUDPClient(transport_, token, kAuthenticationTimeLimit);
    std::printf("(Authenticated)\n");
    std::fflush(stdout);
  }

  // Takes a ready transport; no authentication.
  TandemClient(Transport transport, int playerCount, int delayFrames)
      : transport_(std::move(transport)), stream_(1), playerCount_(playerCount), delayFrames_(delayFrames) {
    fillDelay();
  }

  // Pumps the stream; orders gets the next frame's orders, or is left empty when that frame hasn't
  // arrived. A frame returned means an update is due: sendUpdate.
  void communicate(Frame& orders) {
    communicate_Internal(orders);
    if (!orders.empty()) {
      updatePending_ = true;
    }
  }

  // Queues this client's order of this frame; it goes out with the next pass.
  void sendUpdate(std::vector<unsigned char> const& update) {
    updatePending_ = false;
    stream_.push_update(update);
  }

  // The pass after the local end of the game: no more orders are given, the ones under way are
  // repeated until confirmed, and the frames still to come are counted.
  void communicate_GameEnd(Frame& orders) {
    communicate_Internal(orders);
    if (!orders.empty()) {
      ++framesAfterEnd_;
    }
  }

  // Every order under way when the local game ended has come back.
  bool gameEndedCleanly() const { return !updatePending_ && framesAfterEnd_ == delayFrames_; }

  Transport& transport() { return transport_; }
  UDPDataStream const& stream() const { return stream_; }
  std::size_t framesReady() const { return framesReady_.size(); }
  bool updatePending() const { return updatePending_; }

private:
  void fillDelay() {
    if (playerCount_ < 0 || delayFrames_ < 0) {
      throw std::runtime_error("Invalid game session: negative player count or delay");
    }
    for (int i = 0; i < delayFrames_; ++i) {
      framesReady_.emplace_back(static_cast<std::size_t>(playerCount_));
    }
  }

  void checkOpen() const {
    if constexpr (std::is_same_v<Transport, UDPClient>) {
      if (!transport_.isOpen()) {
        throw std::runtime_error("Lost connection to server");
      }
    }
  }

  void communicate_Internal(Frame& orders) {
    transport_.process_incoming_packets(
        [this](unsigned char const* data, std::size_t length) { stream_.handle_packet(data, length); });
    checkOpen();
    stream_.discard_acknowledged();
    stream_.send_updates(transport_);
    checkOpen();
    while (stream_.has_frame_update() && framesReady_.size() < kMaxFramesReady) {
      framesReady_.push_back(SplitServerData(stream_.get_next_frame_update(), playerCount_));
    }
    if (framesReady_.empty()) {
      orders.clear();
      return;
    }
    orders = std::move(framesReady_.front());
    framesReady_.pop_front();
  }

  Transport transport_;
  UDPDataStream stream_;
  int playerCount_ = 0;
  int delayFrames_ = 0;
  std::deque<Frame> framesReady_;
  bool updatePending_ = false;
  int framesAfterEnd_ = 0;
};
