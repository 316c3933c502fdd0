#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <variant>
#include <vector>

#include "accounts/Credentials.h"
#include "net/ConnectToLobbyServer.h"
#include "net/GameStartInfo.h"
#include "net/ILobbyTransport.h"
#include "net/LobbyClient.h"
#include "net/TandemClient.h"
#include "net/UDPClient.h"
#include "rankings/CompletedGameFeed.h"
#include "rankings/HighScoreTables.h"
#include "rankings/PlayerRatings.h"
#include "sim/IOrderSource.h"
#include "sim/IRunningGame.h"

namespace mainloop {

// On the main menu and the other offline pages.
struct OfflineState {};

// From the first connect to a finished handshake with the game server.
struct ConnectingState {
  int phase = 0;  // 0 the transport is connecting, 1 the handshake runs
  std::shared_ptr<ILobbyTransport> transport;
  std::unique_ptr<ConnectToLobbyServer> handshake;  // null in phase 0
  Credentials credentials;
};

// In the lobby and its network games. Fields are destroyed in reverse order: the network game first,
// the lobby connection last.
struct ConnectedState {
  std::shared_ptr<ILobbyTransport> transport;
  std::unique_ptr<LobbyClient> lobby;
  HighScoreTables highScores{Game::GlowHorde, 0};  // Glow Horde's co-op challenges
  PlayerRatings glowHordeRatings{ResultRowOwner::Team};
  PlayerRatings aviatorsRatings{ResultRowOwner::Player};  // the ranked games of both ship games
  CompletedGameFeed feed;  // takes each finished game into the tables once
  std::shared_ptr<TandemClient<UDPClient>> client;  // null between games
  std::unique_ptr<IOrderSource> orderSource;       // null between games
  std::unique_ptr<IRunningGame> game;              // null between games
  GameStartInfo startInfo;
  bool gameEndNotified = false;  // the server has been told that this client is done with the game
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
