#pragma once

#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "DisputeSettler.h"
#include "GameRelay.h"
#include "RecordingWriter.h"
#include "ServerHost.h"
#include "ServerStorage.h"
#include "net/LobbyState.h"

// How long the lobby waits for a connection.
struct LobbyTimeouts {
  // A connection must have logged in this long after it opened.
  std::int64_t loginMs = 10000;
  // The client sends something at least every 5 seconds; three missed intervals end the connection.
  std::int64_t keepAliveMs = 15000;
};

// The lobby of the server: the login of each connection, the players and rooms, the start and end of
// games with their relays, names, results and recordings. It speaks in whole messages (type byte and
// body) and reaches the world only through IServerHost, so everything here runs on one thread and
// every byte it is given has been checked before it touches the lobby.
class LobbyServer {
public:
  static constexpr std::uint32_t kProtocolVersion = 1003;
  // The longest message a client may send; anything longer is a protocol violation.
  static constexpr std::size_t kMaxClientMessage = 64 * 1024;
  static constexpr std::size_t kMaxNameLength = 32;
  static constexpr std::size_t kMaxDescriptionLength = 100;
  static constexpr std::size_t kMaxSpecLength = 4096;
  static constexpr std::uint32_t kResultsSent = 50;  // played games in a GAME_RESULTS message
  static constexpr unsigned short kMaxRooms = 1000;
  static constexpr unsigned short kMaxPlayers = 4000;
  // Port offsets of game relays: 2 and up (the website listens on base port + 1).
  static constexpr unsigned short kFirstPortOffset = 2;
  static constexpr unsigned short kMaxRunningGames = 1000;

  // settle re-simulates the recording of a game whose reports disagree (the server's is SettleByReplay).
  LobbyServer(IServerHost& host, IServerStorage& storage, LobbyTimeouts timeouts, DisputeSettler::Settle settle);
  ~LobbyServer();

  void onConnect(ConnectionId connection, std::int64_t nowMs);
  // One whole message from a connection (the frame's payload).
  void onMessage(ConnectionId connection, unsigned char const* data, std::size_t size, std::int64_t nowMs);
  // A frame that announced more than kMaxClientMessage bytes: a violation, its bytes never read.
  void onOversizedMessage(ConnectionId connection);
  // The connection has gone (closed by the peer, failed, or closed by us).
  void onDisconnect(ConnectionId connection, std::int64_t nowMs);
  void onDatagram(unsigned short portOffset, Endpoint const& from, unsigned char const* data, std::size_t size,
                  std::int64_t nowMs);
  // Time-outs, relay repeats; called every few milliseconds (kRelayTickMs / kRelayTickPhases at least
  // as often, for the repeats to be spread as below).
  void tick(std::int64_t nowMs);
  // Each running game's relay repeats what its players lack and looks for silent players this often.
  // The games are spread over kRelayTickPhases phases of that period by their number, so that a server
  // with many games sends its repeats a few games at a time instead of all in one burst, which would
  // hold up the steps of every game behind it.
  static constexpr std::int64_t kRelayTickMs = 100;
  static constexpr std::int64_t kRelayTickPhases = 20;

  // A plain copy of what the status page shows.
  struct Snapshot {
    LobbyState lobby;
    std::map<std::string, std::string> names;  // by playerId, its bytes as a string
    std::uint32_t firstGame = 0;
    std::vector<GameResults> recentGames;
    std::size_t connections = 0;
    std::vector<SettledDispute> disputes;  // oldest first
  };
  Snapshot snapshot() const;

  // The bytes of a recording file of a played game, built from its relayed updates and its current
  // results; empty if the server has none.
  std::optional<std::vector<unsigned char>> recordingFile(std::uint32_t game);

  // Finished games whose reports disagree are re-simulated here, off the lobby's thread.
  DisputeSettler const& disputes() const { return *settler_; }

private:
  enum class Stage { AwaitVersion, AwaitAuth, Lobby };
  struct Connection {
    Stage stage = Stage::AwaitVersion;
    std::vector<unsigned char> challenge;
    std::int64_t connectedMs = 0;
    std::int64_t lastHeardMs = 0;
    unsigned short player = 0;  // valid in the Lobby stage
  };
  struct Room {
    unsigned short slots = 0;  // places of the map, the slots a player may choose
    bool ranked = false;
    std::uint8_t delayFrames = 15;
  };
  struct RunningGame {
    std::uint32_t game = 0;
    unsigned short room = 0;
    unsigned short portOffset = 0;
    std::vector<bool> ended;  // sent GAME_END
    std::unique_ptr<GameRelay> relay;
    std::size_t savedUpdates = 0;
    std::int64_t nextRelayTickMs = 0;
  };

  void handleHandshake(ConnectionId id, Connection& connection, unsigned char const* data, std::size_t size);
  void handleLobbyMessage(ConnectionId id, Connection& connection, unsigned char const* data, std::size_t size,
                          std::int64_t nowMs);
  void moveToRoom(unsigned short player, unsigned short room);
  void setReady(unsigned short player, bool ready);
  void moveToSlot(unsigned short player, short slot);
  void createGame(unsigned short player, unsigned char const* body, std::size_t size);
  void startGame(unsigned short player, std::uint64_t token, std::int64_t nowMs);
  void gameEnd(unsigned short player, std::vector<unsigned char> resultBytes);
  void changeName(unsigned short player, std::string name);
  void requestRecording(unsigned short player, unsigned short game);

  // A refused request: a SERVER_ERROR that the client keeps in its log.
  void refuse(unsigned short player, std::string const& text);
  // A protocol violation: a fatal SERVER_ERROR, then the connection is closed.
  void violation(ConnectionId id, std::string const& text);
  void dropConnection(ConnectionId id, std::int64_t nowMs, char const* why);

  bool removeFromRoom(unsigned short player);
  void assignSlots(GameRoom& room);
  // The running game of a player that hasn't ended it there: its game and place, if any.
  RunningGame* activeGameOf(unsigned short player, std::size_t& place);
  void markGone(RunningGame& running, std::size_t place);
  void finishIfDone(unsigned short room);
  // Queues game's recording for the settler; false when its queue is full.
  bool settleDispute(std::uint32_t game);
  void applyRelayOutput(RunningGame& running, GameRelay::Output& out);
  void saveRecording(RunningGame& running);
  void updateGame(std::uint32_t game, GameResults const& results);

  void sendTo(unsigned short player, std::vector<unsigned char> const& payload);
  void broadcastLobbyState();
  // To every connection; with lobbyOnly, not to players in a running game (a start changes nothing
  // that they keep: they get the list again when any game finishes).
  void broadcastGameResults(bool lobbyOnly = false);
  // The whole list to one player; to the others only the entry of playerId, which they merge.
  void broadcastPlayerNames(unsigned short newcomer, std::vector<unsigned char> const& playerId);
  void sendRunningGameState(unsigned short room);
  std::vector<unsigned char> playerNamesMessage();
  std::vector<unsigned char> gameResultsMessage();
  std::string nameOf(std::vector<unsigned char> const& playerId);

public:
  static std::string idKey(std::vector<unsigned char> const& playerId) {
    return std::string(playerId.begin(), playerId.end());
  }

private:

  IServerHost& host_;
  IServerStorage& storage_;
  LobbyTimeouts timeouts_;
  std::map<ConnectionId, Connection> connections_;
  LobbyState lobby_;
  std::vector<std::optional<ConnectionId>> connectionOf_;  // by player number; absent for a gone player
  std::map<unsigned short, Room> roomInfo_;
  std::map<unsigned short, RunningGame> running_;  // by room
  std::map<unsigned short, unsigned short> roomOfPort_;  // running games' rooms by port offset
  std::map<std::string, std::string> names_;  // by playerId, its bytes as a string
  std::uint32_t nextGame_ = 0;
  std::int64_t nextTimeoutCheckMs_ = 0;
  std::deque<std::pair<std::uint32_t, GameResults>> recent_;
  // Stores recordings off the lobby's thread; destroyed after the settler, before the storage's users go.
  RecordingWriter recordings_{storage_};
  // Last, so that its worker stops first.
  std::unique_ptr<DisputeSettler> settler_;
};
