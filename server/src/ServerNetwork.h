#pragma once

#include <asio.hpp>

#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "LobbyServer.h"
#include "ServerHost.h"

// The sockets of the server on one Asio event loop: the lobby's TCP listener on the base port with
// its connections, and one datagram socket a running game on base port + portOffset. Every frame
// length is checked before its bytes are read, every connection's unsent output is bounded, and all
// lobby logic runs on the loop's one thread.
class ServerNetwork final : public IServerHost {
public:
  // A frame may announce at most this much; more is a protocol violation and ends the connection.
  static constexpr std::uint32_t kMaxInboundFrame = LobbyServer::kMaxClientMessage;
  // A connection whose unsent output grows beyond this is too slow to keep.
  static constexpr std::size_t kMaxQueuedOutput = 64u * 1024u * 1024u;
  // Connections beyond this many are closed as soon as they are accepted.
  static constexpr std::size_t kMaxConnections = 4096;

  ServerNetwork(asio::io_context& io, IServerStorage& storage, std::string const& bindAddress,
                unsigned short basePort, LobbyTimeouts timeouts = {});
  ~ServerNetwork() override;

  unsigned short basePort() const { return basePort_; }
  LobbyServer& lobby() { return lobby_; }
  // Stops listening and closes every socket; the loop then runs out of work.
  void shutdown();
  // Called on the loop's thread after each tick (every few milliseconds), for observers such as the
  // website, which take what they need at their own pace.
  std::function<void(LobbyServer const&)> afterTick;

  void send(ConnectionId connection, std::vector<unsigned char> const& payload) override;
  void close(ConnectionId connection) override;
  bool openPort(unsigned short portOffset) override;
  void closePort(unsigned short portOffset) override;
  void sendDatagram(unsigned short portOffset, Endpoint const& to, std::vector<unsigned char> const& bytes) override;

private:
  struct TcpConnection {
    explicit TcpConnection(asio::io_context& io) : socket(io) {}
    asio::ip::tcp::socket socket;
    std::array<unsigned char, 4> header{};
    std::vector<unsigned char> payload;
    std::deque<std::vector<unsigned char>> outgoing;
    std::size_t queuedBytes = 0;
    bool writing = false;
    bool closing = false;  // close once the queue has gone out
  };
  struct UdpPort {
    explicit UdpPort(asio::io_context& io) : socket(io) {}
    asio::ip::udp::socket socket;
    asio::ip::udp::endpoint sender;
    std::vector<unsigned char> buffer = std::vector<unsigned char>(65536);
  };

  void accept();
  void readHeader(ConnectionId id);
  void readPayload(ConnectionId id);
  void writeNext(ConnectionId id);
  void lost(ConnectionId id);
  void receiveDatagram(unsigned short portOffset);
  void scheduleTick();
  // Runs one call into the lobby. A failure inside it (the storage, say) is logged and costs the
  // connection that caused it, never the server.
  template <class Call>
  void guarded(ConnectionId connection, Call&& call);
  std::int64_t nowMs() const;

  asio::io_context& io_;
  asio::ip::address bindAddress_;
  asio::ip::tcp::acceptor acceptor_;
  asio::steady_timer timer_;
  unsigned short basePort_ = 0;
  LobbyServer lobby_;
  std::map<ConnectionId, std::shared_ptr<TcpConnection>> connections_;
  std::map<unsigned short, std::shared_ptr<UdpPort>> ports_;
  ConnectionId nextConnection_ = 1;
  bool stopped_ = false;
};
