#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "net/GameStartInfo.h"
#include "net/ILobbyTransport.h"
#include "net/LobbyState.h"
#include "net/MessageType.h"
#include "net/PlayerNames.h"
#include "net/ServerLogEntry.h"
#include "sim/GameResult.h"
#include "sim/GameResults.h"
#include "sim/GameSpec.h"
#include "sim/RecordingStatus.h"

// The client's end of the lobby after login: the mirror of the lobby, the list of played games, the
// player names, the server's log and the recordings on disk. Pumped once a frame by processMessages;
// requests go out through the operations below, and their answer is simply the next LOBBY_STATE.
// Failures throw std::runtime_error with a sentence for the user; malformed LOBBY_STATE,
// RUNNING_GAME_STATE, GAME_RESULTS and PLAYER_NAMES messages raise nothing and what could be read
// stands.
class LobbyClient {
public:
  using Clock = std::function<std::chrono::steady_clock::time_point()>;

  static constexpr std::size_t kServerLogSize = 50;
  static constexpr std::chrono::milliseconds kKeepAliveInterval{5000};

  // Creates storageDirectory/recordings. The creator calls scanForExistingRecordings next. clock
  // gives the steady time for the keep-alive (tests give their own).
  LobbyClient(std::shared_ptr<ILobbyTransport> transport, unsigned short localPlayerNumber, unsigned short infoB,
              std::string const& storageDirectory, Clock clock = &std::chrono::steady_clock::now);

  // Requests.
  void moveToGameRoom(unsigned short room);
  void leaveGameRoom();
  void setReadyState(bool ready);
  void moveToSlot(short slot);  // -1: automatic
  void requestCreateGame(std::string const& description, std::vector<unsigned char> const& specBytes,
                         unsigned short minPlayers, unsigned short maxPlayers, bool repeatedIdsAllowed);
  // The same for a GameSpec: player counts from the GameSpec, repeated ids allowed unless it is a ranked match.
  void requestCreateGame(std::string const& description, GameSpec const& spec);
  // Sends the roomToken of the local player's room; does nothing when the mirror has no such room.
  void requestGameStart();
  void notifyGameEnd(std::optional<GameResult> const& result);
  void changeName(std::string const& name);
  void requestRecording(unsigned short game);

  // Prefixes the type, sends, and stores the time of the last send. Throws "Failed to send <NAME>
  // message" when the transport refuses.
  void sendMessage(MessageType type, std::vector<unsigned char> const& payload);

  // Once a frame: completes a pending connection, throws "Disconnected from lobby server" when the
  // connection is gone, and handles every complete message. Numbers of games newly finished are
  // appended to finishedGames, each game once.
  void processMessages(std::vector<unsigned short>& finishedGames);
  void handleMessage(unsigned char const* data, std::size_t length, std::vector<unsigned short>& finishedGames);

  // A KEEP_ALIVE once 5 seconds have passed since the last message of any kind went out.
  void sendKeepAliveIfNeeded();

  void markAllErrorsSeen();
  void scanForExistingRecordings();

  // The mirror and what the client derives from it.
  LobbyState const& lobbyState() const { return lobby_; }
  unsigned short localPlayerNumber() const { return localPlayerNumber_; }
  unsigned short infoB() const { return infoB_; }
  // The local player's entry and room, or null until a LOBBY_STATE has brought them.
  PlayerInLobby const* localPlayer() const;
  GameRoom const* localRoom() const;

  std::optional<GameStartInfo> const& gameStartInfo() const { return gameStartInfo_; }
  unsigned long long authToken() const { return authToken_; }
  std::vector<unsigned char> const& gameSpec() const { return gameSpecBytes_; }
  bool isUDPServerRunning() const;
  std::vector<bool> getPlayerDisconnectedState() const;
  bool allOtherPlayersDisconnected() const;

  std::vector<std::uint32_t> getPlayedGames() const;
  // The element for a game number, or null if the list doesn't hold it.
  GameResults const* playedGame(std::uint32_t game) const;
  std::vector<GameResults> const& playedGamesList() const { return playedGames_; }
  std::uint32_t firstPlayedGame() const { return firstPlayedGame_; }
  RecordingStatus getRecordingStatus(unsigned int game) const;
  std::string recordingPath(unsigned short game) const;

  PlayerNames const& playerNames() const { return playerNames_; }
  std::deque<ServerLogEntry> const& serverLog() const { return serverLog_; }

private:
  void handleRunningGameState(unsigned char const* body, std::size_t size);
  void handleGameResults(unsigned char const* body, std::size_t size, std::vector<unsigned short>& finishedGames);
  void handleServerError(unsigned char const* body, std::size_t size);
  void handleRecordingData(unsigned char const* body, std::size_t size);
  RunningGameState const* localRunningGame() const;

  std::shared_ptr<ILobbyTransport> transport_;
  LobbyState lobby_;
  std::uint32_t firstPlayedGame_ = 0;
  std::vector<GameResults> playedGames_;
  std::vector<bool> handled_;
  PlayerNames playerNames_;
  unsigned short infoB_ = 0;
  unsigned short localPlayerNumber_ = 0;
  unsigned long long authToken_ = 0;
  std::optional<GameStartInfo> gameStartInfo_;
  std::vector<unsigned char> gameSpecBytes_;
  Clock clock_;
  std::chrono::steady_clock::time_point lastSend_;
  std::deque<ServerLogEntry> serverLog_;
  std::set<unsigned short> recordingsOnDisk_;
  std::set<unsigned short> downloadsUnderWay_;
  std::string storageDirectory_;
};
