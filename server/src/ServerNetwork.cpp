#include "ServerNetwork.h"

#include <chrono>
#include <cstdio>

#include "SettleByReplay.h"
#include "net/MessageFramer.h"

namespace {
// The lobby's tick spreads the relays' repeats over phases of this length.
constexpr auto kTickInterval = std::chrono::milliseconds(LobbyServer::kRelayTickMs / LobbyServer::kRelayTickPhases);
}

template <class Call>
void ServerNetwork::guarded(ConnectionId connection, Call&& call) {
  try {
    call();
  } catch (std::exception const& error) {
    std::fprintf(stderr, "Internal error while serving connection %llu: %s\n",
                 static_cast<unsigned long long>(connection), error.what());
    if (connection != 0 && connections_.count(connection) != 0) {
      connections_.at(connection)->closing = true;
      asio::post(io_, [this, connection] { lost(connection); });
    }
  }
}

ServerNetwork::ServerNetwork(asio::io_context& io, IServerStorage& storage, std::string const& bindAddress,
                             unsigned short basePort, LobbyTimeouts timeouts)
    : io_(io),
      bindAddress_(asio::ip::make_address(bindAddress)),
      acceptor_(io),
      timer_(io),
      lobby_(*this, storage, timeouts, SettleByReplay) {
  asio::ip::tcp::endpoint const endpoint(bindAddress_, basePort);
  acceptor_.open(endpoint.protocol());
  acceptor_.set_option(asio::ip::tcp::acceptor::reuse_address(true));
  acceptor_.bind(endpoint);
  acceptor_.listen();
  basePort_ = acceptor_.local_endpoint().port();
  std::printf("Lobby listening on %s port %u\n", bindAddress.c_str(), static_cast<unsigned>(basePort_));
  std::fflush(stdout);
  accept();
  scheduleTick();
}

ServerNetwork::~ServerNetwork() {
  shutdown();
}

std::int64_t ServerNetwork::nowMs() const {
  return std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now().time_since_epoch())
      .count();
}

void ServerNetwork::shutdown() {
  if (stopped_) {
    return;
  }
  stopped_ = true;
  asio::error_code ignored;
  acceptor_.close(ignored);
  timer_.cancel();
  for (auto& [id, connection] : connections_) {
    connection->socket.close(ignored);
  }
  connections_.clear();
  for (auto& [offset, port] : ports_) {
    port->socket.close(ignored);
  }
  ports_.clear();
}

void ServerNetwork::scheduleTick() {
  timer_.expires_after(kTickInterval);
  timer_.async_wait([this](asio::error_code const& error) {
    if (error || stopped_) {
      return;
    }
    guarded(0, [&] {
      lobby_.tick(nowMs());
      if (afterTick) {
        afterTick(lobby_);
      }
    });
    scheduleTick();
  });
}

// ------------------------------------------------------------------------------------------------ TCP

void ServerNetwork::accept() {
  auto connection = std::make_shared<TcpConnection>(io_);
  acceptor_.async_accept(connection->socket, [this, connection](asio::error_code const& error) {
    if (stopped_) {
      return;
    }
    if (!error && connections_.size() >= kMaxConnections) {
      asio::error_code ignored;
      connection->socket.close(ignored);
    } else if (!error) {
      ConnectionId const id = nextConnection_++;
      asio::error_code ignored;
      connection->socket.set_option(asio::ip::tcp::no_delay(true), ignored);
      connections_[id] = connection;
      guarded(id, [&] { lobby_.onConnect(id, nowMs()); });
      readHeader(id);
    } else {
      std::fprintf(stderr, "Failed to accept a connection: %s\n", error.message().c_str());
    }
    accept();
  });
}

void ServerNetwork::readHeader(ConnectionId id) {
  auto const found = connections_.find(id);
  if (found == connections_.end()) {
    return;
  }
  auto connection = found->second;
  asio::async_read(connection->socket, asio::buffer(connection->header),
                   [this, id, connection](asio::error_code const& error, std::size_t) {
                     if (stopped_ || connections_.count(id) == 0 || connection->closing) {
                       return;
                     }
                     if (error) {
                       return lost(id);
                     }
                     std::uint32_t const length = SocketPlatform::ReadFrameHeader(connection->header.data());
                     if (length > kMaxInboundFrame) {
                       // A violation, found without reading a byte of the frame.
                       guarded(id, [&] { lobby_.onOversizedMessage(id); });
                       return;
                     }
                     connection->payload.resize(length);
                     readPayload(id);
                   });
}

void ServerNetwork::readPayload(ConnectionId id) {
  auto connection = connections_.at(id);
  asio::async_read(connection->socket, asio::buffer(connection->payload),
                   [this, id, connection](asio::error_code const& error, std::size_t) {
                     if (stopped_ || connections_.count(id) == 0 || connection->closing) {
                       return;
                     }
                     if (error) {
                       return lost(id);
                     }
                     std::vector<unsigned char> const payload = std::move(connection->payload);
                     guarded(id, [&] { lobby_.onMessage(id, payload.data(), payload.size(), nowMs()); });
                     if (connections_.count(id) != 0 && !connection->closing) {
                       readHeader(id);
                     }
                   });
}

void ServerNetwork::send(ConnectionId id, std::vector<unsigned char> const& payload) {
  auto const found = connections_.find(id);
  if (found == connections_.end() || found->second->closing) {
    return;
  }
  auto& connection = *found->second;
  if (connection.queuedBytes + payload.size() > kMaxQueuedOutput) {
    std::fprintf(stderr, "Connection %llu reads too slowly; closing it\n", static_cast<unsigned long long>(id));
    // Not from inside the lobby's own call: the loss is handled on the next turn of the loop.
    connection.closing = true;
    asio::post(io_, [this, id] { lost(id); });
    return;
  }
  connection.outgoing.push_back(SocketPlatform::MakeFrame(payload));
  connection.queuedBytes += connection.outgoing.back().size();
  if (!connection.writing) {
    writeNext(id);
  }
}

void ServerNetwork::writeNext(ConnectionId id) {
  auto const found = connections_.find(id);
  if (found == connections_.end()) {
    return;
  }
  auto connection = found->second;
  if (connection->outgoing.empty()) {
    connection->writing = false;
    if (connection->closing) {
      asio::error_code ignored;
      connection->socket.shutdown(asio::ip::tcp::socket::shutdown_both, ignored);
      connection->socket.close(ignored);
      connections_.erase(id);
    }
    return;
  }
  connection->writing = true;
  asio::async_write(connection->socket, asio::buffer(connection->outgoing.front()),
                    [this, id, connection](asio::error_code const& error, std::size_t written) {
                      if (stopped_ || connections_.count(id) == 0) {
                        return;
                      }
                      if (error) {
                        return lost(id);
                      }
                      connection->queuedBytes -= written;
                      connection->outgoing.pop_front();
                      writeNext(id);
                    });
}

void ServerNetwork::close(ConnectionId id) {
  auto const found = connections_.find(id);
  if (found == connections_.end()) {
    return;
  }
  found->second->closing = true;
  if (!found->second->writing) {
    writeNext(id);
  }
}

void ServerNetwork::lost(ConnectionId id) {
  auto const found = connections_.find(id);
  if (found == connections_.end()) {
    return;
  }
  asio::error_code ignored;
  found->second->socket.close(ignored);
  connections_.erase(found);
  guarded(0, [&] { lobby_.onDisconnect(id, nowMs()); });
}

// ------------------------------------------------------------------------------------------------ UDP

bool ServerNetwork::openPort(unsigned short portOffset) {
  if (static_cast<unsigned>(basePort_) + portOffset > 65535u) {
    return false;
  }
  auto port = std::make_shared<UdpPort>(io_);
  asio::error_code error;
  asio::ip::udp::endpoint const endpoint(bindAddress_, static_cast<unsigned short>(basePort_ + portOffset));
  port->socket.open(endpoint.protocol(), error);
  if (!error) {
    port->socket.bind(endpoint, error);
  }
  if (error) {
    std::fprintf(stderr, "Failed to open datagram port %u: %s\n", static_cast<unsigned>(endpoint.port()),
                 error.message().c_str());
    return false;
  }
  port->socket.non_blocking(true, error);
  ports_[portOffset] = port;
  receiveDatagram(portOffset);
  return true;
}

void ServerNetwork::closePort(unsigned short portOffset) {
  auto const found = ports_.find(portOffset);
  if (found == ports_.end()) {
    return;
  }
  asio::error_code ignored;
  found->second->socket.close(ignored);
  ports_.erase(found);
}

void ServerNetwork::receiveDatagram(unsigned short portOffset) {
  auto const found = ports_.find(portOffset);
  if (found == ports_.end()) {
    return;
  }
  auto port = found->second;
  port->socket.async_receive_from(
      asio::buffer(port->buffer), port->sender,
      [this, portOffset, port](asio::error_code const& error, std::size_t size) {
        auto const current = ports_.find(portOffset);
        if (stopped_ || current == ports_.end() || current->second != port) {
          return;
        }
        if (!error && size > 0 && port->sender.address().is_v4()) {
          Endpoint const from{port->sender.address().to_v4().to_uint(), port->sender.port()};
          guarded(0, [&] { lobby_.onDatagram(portOffset, from, port->buffer.data(), size, nowMs()); });
        }
        if (ports_.count(portOffset) != 0 && ports_.at(portOffset) == port) {
          receiveDatagram(portOffset);
        }
      });
}

void ServerNetwork::sendDatagram(unsigned short portOffset, Endpoint const& to, std::vector<unsigned char> const& bytes) {
  auto const found = ports_.find(portOffset);
  if (found == ports_.end()) {
    return;
  }
  asio::ip::udp::endpoint const endpoint(asio::ip::address_v4(to.address), to.port);
  asio::error_code error;
  found->second->socket.send_to(asio::buffer(bytes), endpoint, 0, error);
  // A datagram that can't go out now is a lost packet: the stream repeats it.
}
