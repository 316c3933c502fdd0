#include "net/ConnectToLobbyServer.h"

#include <cstdio>
#include <stdexcept>
#include <utility>
#include <vector>

#include "accounts/SaltedHash.h"
#include "net/LobbyMessages.h"
#include "net/MessageType.h"

namespace {

void Say(char const* line) {
  std::printf("%s\n", line);
  std::fflush(stdout);
}

}  // namespace

ConnectToLobbyServer::ConnectToLobbyServer(std::shared_ptr<ILobbyTransport> transport, Credentials const& credentials)
    : credentials_(credentials), transport_(std::move(transport)) {
  if (!transport_ || !transport_->is_connected()) {
    throw std::runtime_error("Failed to connect to lobby server");
  }
  std::vector<unsigned char> const version = LobbyMessages::EncodeVersion(LobbyMessages::kProtocolVersion);
  if (!transport_->send_message(version.data(), version.size())) {
    throw std::runtime_error("Failed to send version message");
  }
  Say("Sent client version ");
}

void ConnectToLobbyServer::connect() {
  if (state_ == State::Authenticated) {
    return;
  }
  transport_->process_incoming_messages(
      [this](unsigned char const* data, std::size_t length) { handleMessage(data, length); }, true);
}

void ConnectToLobbyServer::handleMessage(unsigned char const* data, std::size_t length) {
  if (length == 0) {
    throw std::runtime_error("Invalid message from server: too small");
  }
  unsigned char const* body = data + 1;
  std::size_t const size = length - 1;
  switch (static_cast<MessageType>(data[0])) {
    case MessageType::VERSION:
      if (state_ != State::AwaitVersion) {
        break;
      }
      handleVersion(body, size);
      return;
    case MessageType::CONNECTION_RESPONSE:
      if (state_ != State::AwaitConnectionResponse) {
        break;
      }
      handleConnectionResponse(body, size);
      return;
    case MessageType::AUTH_RESPONSE:
      if (state_ != State::AwaitAuthResponse) {
        break;
      }
      handleAuthResponse(body, size);
      return;
    default:
      throw std::runtime_error("Unexpected server message during connection");
  }
  throw std::runtime_error("Unexpected server message ordering");
}

void ConnectToLobbyServer::handleVersion(unsigned char const* body, std::size_t size) {
  std::uint32_t version = 0;
  if (!LobbyMessages::DecodeVersion(body, size, version)) {
    throw std::runtime_error("Invalid version message from server");
  }
  if (version <= LobbyMessages::kOldestRefusedServerVersion) {
    throw std::runtime_error("Unsupported server version");
  }
  state_ = State::AwaitConnectionResponse;
}

void ConnectToLobbyServer::handleConnectionResponse(unsigned char const* body, std::size_t size) {
  LobbyMessages::ConnectionResponse response;
  if (size == 0) {
    throw std::runtime_error("Invalid connection response message from server");
  }
  bool const parsed = LobbyMessages::DecodeConnectionResponse(body, size, response);
  if (!response.accepted) {
    throw std::runtime_error("Client version not accepted by server, please update your client");
  }
  if (!parsed) {
    throw std::runtime_error("Invalid connection response message from server");
  }
  LobbyMessages::AuthRequest request;
  request.playerId = credentials_.playerId;
  request.saltedHash = SaltedHash(response.challenge, credentials_.secret);
  std::vector<unsigned char> const message = LobbyMessages::EncodeAuthRequest(request);
  if (!transport_->send_message(message.data(), message.size())) {
    throw std::runtime_error("Failed to send authentication request message");
  }
  Say("Sent authentication request");
  state_ = State::AwaitAuthResponse;
}

void ConnectToLobbyServer::handleAuthResponse(unsigned char const* body, std::size_t size) {
  LobbyMessages::AuthResponse response;
  bool const parsed = LobbyMessages::DecodeAuthResponse(body, size, response);
  if (size > 0 && response.granted) {
    serverInfo_ = response.serverInfo;
  }
  if (!parsed) {
    throw std::runtime_error("Invalid authorisation response message from server");
  }
  if (!response.granted) {
    throw std::runtime_error("Authorisation refused by server: " + response.reason);
  }
  localPlayerNumber_ = response.playerNumber;
  Say("Authentication successful");
  state_ = State::Authenticated;
}
