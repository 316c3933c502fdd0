#pragma once

#include <cstddef>
#include <memory>

#include "accounts/Credentials.h"
#include "net/ILobbyTransport.h"
#include "net/ServerInfo.h"

// The login exchange on a connected lobby transport, as a state machine polled once a frame: both
// sides name their versions, the server sends a challenge, the client answers with its playerId and
// the salted hash of its secret (never the secret itself), and the server grants a session with its
// ServerInfo and the player's number. Every failure throws std::runtime_error with a sentence for the
// user.
class ConnectToLobbyServer {
public:
  enum class State { AwaitVersion = 0, AwaitConnectionResponse = 1, AwaitAuthResponse = 2, Authenticated = 3 };

  // Sends this client's VERSION. The transport must be connected already.
  ConnectToLobbyServer(std::shared_ptr<ILobbyTransport> transport, Credentials const& credentials);

  // Handles at most one message a call, so whatever follows AUTH_RESPONSE stays in the transport for
  // the lobby client. Does nothing once authenticated.
  void connect();

  void handleMessage(unsigned char const* data, std::size_t length);

  State state() const { return state_; }
  ServerInfo serverInfo() const { return serverInfo_; }
  unsigned short localPlayerNumber() const { return localPlayerNumber_; }

private:
  void handleVersion(unsigned char const* body, std::size_t size);
  void handleConnectionResponse(unsigned char const* body, std::size_t size);
  void handleAuthResponse(unsigned char const* body, std::size_t size);

  Credentials credentials_;
  std::shared_ptr<ILobbyTransport> transport_;
  State state_ = State::AwaitVersion;
  ServerInfo serverInfo_;
  unsigned short localPlayerNumber_ = 0;
};
