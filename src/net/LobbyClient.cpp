#include "net/LobbyClient.h"

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <system_error>
#include <utility>
#include <variant>

#include "net/GameRecordsWire.h"
#include "net/LobbyMessages.h"
#include "net/WireWriter.h"
#include "sim/RecordingFiles.h"

namespace {

void Say(std::string const& line) {
  std::printf("%s\n", line.c_str());
  std::fflush(stdout);
}

}  // namespace

LobbyClient::LobbyClient(std::shared_ptr<ILobbyTransport> transport, unsigned short localPlayerNumber,
                         unsigned short infoB, std::string const& storageDirectory, Clock clock)
    : transport_(std::move(transport)),
      infoB_(infoB),
      localPlayerNumber_(localPlayerNumber),
      clock_(std::move(clock)),
      storageDirectory_(storageDirectory) {
  lastSend_ = clock_();
  std::error_code error;
  std::filesystem::create_directories(storageDirectory_ + "/recordings", error);
  if (error) {
    throw std::runtime_error("LobbyClient constructor: failed to create directory: " + error.message());
  }
}

// ---------------------------------------------------------------------------------------------------
// Requests

void LobbyClient::sendMessage(MessageType type, std::vector<unsigned char> const& payload) {
  std::vector<unsigned char> message;
  message.reserve(payload.size() + 1);
  message.push_back(static_cast<unsigned char>(type));
  message.insert(message.end(), payload.begin(), payload.end());
  if (!transport_->send_message(message.data(), message.size())) {
    throw std::runtime_error(std::string("Failed to send ") + MessageTypeToString(type) + " message");
  }
  lastSend_ = clock_();
  if (type != MessageType::KEEP_ALIVE) {
    Say(std::string("Sent ") + MessageTypeToString(type) + " message");
  }
}

namespace {

// The encoders give whole messages; sendMessage wants the body.
std::vector<unsigned char> Body(std::vector<unsigned char> message) {
  message.erase(message.begin());
  return message;
}

}  // namespace

void LobbyClient::moveToGameRoom(unsigned short room) {
  sendMessage(MessageType::MOVE_TO_GAME_ROOM, Body(LobbyMessages::EncodeMoveToGameRoom(room)));
}

void LobbyClient::leaveGameRoom() { moveToGameRoom(LobbyMessages::kLeaveRoom); }

void LobbyClient::setReadyState(bool ready) {
  sendMessage(MessageType::SET_READY_STATE, Body(LobbyMessages::EncodeSetReadyState(ready)));
}

void LobbyClient::moveToSlot(short slot) {
  sendMessage(MessageType::MOVE_TO_SLOT, Body(LobbyMessages::EncodeMoveToSlot(slot)));
}

void LobbyClient::requestCreateGame(std::string const& description, std::vector<unsigned char> const& specBytes,
                                    unsigned short minPlayers, unsigned short maxPlayers, bool repeatedIdsAllowed) {
  LobbyMessages::CreateGame request{description, specBytes, minPlayers, maxPlayers, repeatedIdsAllowed};
  sendMessage(MessageType::CREATE_GAME, Body(LobbyMessages::EncodeCreateGame(request)));
}

void LobbyClient::requestCreateGame(std::string const& description, GameSpec const& spec) {
  std::vector<unsigned char> specBytes;
  ToBytes(spec, specBytes);
  bool const ranked = std::holds_alternative<RankedMatchIndex>(spec.settings);
  requestCreateGame(description, specBytes, spec.minPlayers, spec.maxPlayers, !ranked);
}

void LobbyClient::requestGameStart() {
  GameRoom const* room = localRoom();
  if (room == nullptr) {
    std::fprintf(stderr, "Game start not requested: the local player is in no room\n");
    return;
  }
  sendMessage(MessageType::GAME_START, Body(LobbyMessages::EncodeGameStart(room->roomToken)));
}

void LobbyClient::notifyGameEnd(std::optional<GameResult> const& result) {
  sendMessage(MessageType::GAME_END, Body(LobbyMessages::EncodeGameEnd(result)));
}

void LobbyClient::changeName(std::string const& name) {
  sendMessage(MessageType::CHANGE_NAME, Body(LobbyMessages::EncodeChangeName(name)));
}

void LobbyClient::requestRecording(unsigned short game) {
  downloadsUnderWay_.insert(game);
  sendMessage(MessageType::REQUEST_RECORDING, Body(LobbyMessages::EncodeRequestRecording(game)));
}

void LobbyClient::sendKeepAliveIfNeeded() {
  if (clock_() - lastSend_ >= kKeepAliveInterval) {
    sendMessage(MessageType::KEEP_ALIVE, {});
  }
}

// ---------------------------------------------------------------------------------------------------
// Messages from the server

void LobbyClient::processMessages(std::vector<unsigned short>& finishedGames) {
  if (transport_->get_connection_state() == ConnectionState::Connecting) {
    transport_->complete_connection();
    return;
  }
  if (!transport_->is_connected()) {
    throw std::runtime_error("Disconnected from lobby server");
  }
  transport_->process_incoming_messages(
      [this, &finishedGames](unsigned char const* data, std::size_t length) {
        handleMessage(data, length, finishedGames);
      },
      false);
}

void LobbyClient::handleMessage(unsigned char const* data, std::size_t length,
                                std::vector<unsigned short>& finishedGames) {
  if (length == 0) {
    throw std::runtime_error("Invalid message from server: too small");
  }
  unsigned char const* body = data + 1;
  std::size_t const size = length - 1;
  switch (static_cast<MessageType>(data[0])) {
    case MessageType::LOBBY_STATE:
      LobbyMessages::DecodeLobbyState(body, size, lobby_);
      gameStartInfo_.reset();
      return;
    case MessageType::GAME_START: {
      std::uint64_t token = 0;
      if (!LobbyMessages::DecodeGameStart(body, size, token)) {
        throw std::runtime_error("Invalid game start message");
      }
      authToken_ = token;
      Say("Game started! Auth token: " + std::to_string(authToken_));
      return;
    }
    case MessageType::RUNNING_GAME_STATE:
      handleRunningGameState(body, size);
      return;
    case MessageType::GAME_RESULTS:
      handleGameResults(body, size, finishedGames);
      return;
    case MessageType::PLAYER_NAMES:
      playerNames_.updateFromNetwork(LobbyMessages::DecodePlayerNames(body, size));
      return;
    case MessageType::SERVER_ERROR:
      handleServerError(body, size);
      return;
    case MessageType::RECORDING_DATA:
      handleRecordingData(body, size);
      return;
    default:
      throw std::runtime_error("Unknown message type from server: " + std::to_string(data[0]));
  }
}

void LobbyClient::handleRunningGameState(unsigned char const* body, std::size_t size) {
  RunningGameState state;
  LobbyMessages::DecodeRunningGameState(body, size, state);
  PlayerInLobby const* player = localPlayer();
  if (player == nullptr || player->roomIndex >= lobby_.rooms.size() || !lobby_.rooms[player->roomIndex]) {
    return;  // the server sends this only to players in a room; anything else is ignored
  }
  GameRoom& room = *lobby_.rooms[player->roomIndex];
  room.runningGame = std::move(state);
  GameStartInfo info;
  unsigned short index = 0;
  lobby_.playerIsInRunningGame(localPlayerNumber_, index);
  info.portOffset = room.runningGame->portOffset;
  info.players = room.players;
  info.assignedSlots = room.assignedSlots;
  info.localPlayer = index;
  gameStartInfo_ = std::move(info);
  gameSpecBytes_ = room.specBytes;
}

void LobbyClient::handleGameResults(unsigned char const* body, std::size_t size,
                                    std::vector<unsigned short>& finishedGames) {
  LobbyMessages::DecodeGameResults(body, size, firstPlayedGame_, playedGames_);
  handled_.resize(playedGames_.size(), false);
  for (std::size_t index = 0; index < playedGames_.size(); ++index) {
    if (!handled_[index] && playedGames_[index].finished) {
      handled_[index] = true;
      finishedGames.push_back(static_cast<unsigned short>(firstPlayedGame_ + index));
    }
  }
}

void LobbyClient::handleServerError(unsigned char const* body, std::size_t size) {
  LobbyMessages::ServerError error;
  if (!LobbyMessages::DecodeServerError(body, size, error)) {
    throw std::runtime_error("Failed to parse SERVER_ERROR message");
  }
  if (error.fatal) {
    throw std::runtime_error("Error received from server: " + error.text);
  }
  serverLog_.push_back(ServerLogEntry{std::move(error.text), std::chrono::system_clock::now(), false});
  while (serverLog_.size() > kServerLogSize) {
    serverLog_.pop_front();
  }
}

void LobbyClient::handleRecordingData(unsigned char const* body, std::size_t size) {
  LobbyMessages::RecordingData recording;
  if (!LobbyMessages::DecodeRecordingData(body, size, recording)) {
    throw std::runtime_error("Failed to parse RECORDING_DATA message");
  }
  std::string const path = recordingPath(recording.game);
  std::ofstream file(path, std::ios::binary | std::ios::trunc);
  if (!file) {
    throw std::runtime_error("Failed to create recording file: " + path);
  }
  file.write(reinterpret_cast<char const*>(recording.bytes.data()), static_cast<std::streamsize>(recording.bytes.size()));
  file.close();
  if (!file) {
    throw std::runtime_error("Failed to write recording file: " + path);
  }
  recordingsOnDisk_.insert(recording.game);
  downloadsUnderWay_.erase(recording.game);
  Say("Saved recording " + std::to_string(recording.game) + " (" + std::to_string(recording.bytes.size()) +
      " bytes) to " + path);
}

// ---------------------------------------------------------------------------------------------------
// Queries

void LobbyClient::markAllErrorsSeen() {
  for (ServerLogEntry& entry : serverLog_) {
    entry.seen = true;
  }
}

void LobbyClient::scanForExistingRecordings() {
  recordingsOnDisk_ = RecordingNumbersInDirectory(storageDirectory_ + "/recordings");
}

std::string LobbyClient::recordingPath(unsigned short game) const {
  return storageDirectory_ + "/recordings/recording" + std::to_string(game) + ".bin";
}

PlayerInLobby const* LobbyClient::localPlayer() const {
  if (localPlayerNumber_ >= lobby_.players.size() || !lobby_.players[localPlayerNumber_]) {
    return nullptr;
  }
  return &*lobby_.players[localPlayerNumber_];
}

GameRoom const* LobbyClient::localRoom() const {
  PlayerInLobby const* player = localPlayer();
  if (player == nullptr || player->roomIndex >= lobby_.rooms.size() || !lobby_.rooms[player->roomIndex]) {
    return nullptr;
  }
  return &*lobby_.rooms[player->roomIndex];
}

RunningGameState const* LobbyClient::localRunningGame() const {
  GameRoom const* room = localRoom();
  if (room == nullptr || !room->runningGame) {
    return nullptr;
  }
  return &*room->runningGame;
}

bool LobbyClient::isUDPServerRunning() const {
  RunningGameState const* game = localRunningGame();
  return game != nullptr && game->udpServerRunning;
}

std::vector<bool> LobbyClient::getPlayerDisconnectedState() const {
  RunningGameState const* game = localRunningGame();
  return game != nullptr ? game->disconnected : std::vector<bool>{};
}

bool LobbyClient::allOtherPlayersDisconnected() const {
  RunningGameState const* game = localRunningGame();
  if (game == nullptr) {
    return true;
  }
  for (std::size_t i = 0; i < game->players.size(); ++i) {
    if (game->players[i] == localPlayerNumber_) {
      continue;
    }
    if (i >= game->disconnected.size() || !game->disconnected[i]) {
      return false;
    }
  }
  return true;
}

std::vector<std::uint32_t> LobbyClient::getPlayedGames() const {
  std::vector<std::uint32_t> games(playedGames_.size());
  for (std::size_t i = 0; i < games.size(); ++i) {
    games[i] = firstPlayedGame_ + static_cast<std::uint32_t>(i);
  }
  return games;
}

GameResults const* LobbyClient::playedGame(std::uint32_t game) const {
  if (game < firstPlayedGame_ || game - firstPlayedGame_ >= playedGames_.size()) {
    return nullptr;
  }
  return &playedGames_[game - firstPlayedGame_];
}

RecordingStatus LobbyClient::getRecordingStatus(unsigned int game) const {
  auto const number = static_cast<unsigned short>(game % 65536);
  return {recordingsOnDisk_.contains(number), downloadsUnderWay_.contains(number)};
}
