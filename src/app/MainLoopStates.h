#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <variant>
#include <vector>

#include "accounts/Credentials.h"
#include "sim/IOrderSource.h"
#include "sim/IRunningGame.h"

class ILobbyTransport;

namespace mainloop {

// On the main menu and the other offline pages.
struct OfflineState {};

// From the first connect to a finished handshake with the game server. The handshake object joins
// these fields with the lobby connection.
struct ConnectingState {
  int phase = 0;  // 0 the transport is connecting, 1 the handshake runs
  std::shared_ptr<ILobbyTransport> transport;
  Credentials credentials;
};

// In the lobby and its network games. The lobby client, the tables and the network game join these
// fields with the lobby connection.
struct ConnectedState {
  std::shared_ptr<ILobbyTransport> transport;
  int stalledFrames = 0;
};

// What a game stepped by this client alone needs: the session, its slots, the source of its orders.
struct GameOnThisClient {
  std::unique_ptr<IRunningGame> game;
  std::vector<std::uint16_t> players;
  int localPlayer = 0;
  std::unique_ptr<IOrderSource> orderSource;
  int stalledFrames = 0;
};

// A game played alone: a tutorial level.
struct LocalGameState : GameOnThisClient {
  std::uint16_t tutorialLevel = 0;
};

// A recorded game played again, which proves at its end that it reproduced the reported result.
struct ReplayState : GameOnThisClient {
  std::uint32_t expectedEndFrame = 0;
  bool hasExpectedEnd = false;
  std::uint8_t delayFrames = 0;
  std::optional<std::vector<unsigned char>> expectedResult;  // the bytes of the agreed GameResult
};

// The index of the alternative is the state's number.
using State = std::variant<OfflineState, ConnectingState, ConnectedState, LocalGameState, ReplayState>;

}  // namespace mainloop
