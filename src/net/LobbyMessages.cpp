#include "net/LobbyMessages.h"

#include "net/GameRecordsWire.h"
#include "net/LobbyRecordsWire.h"
#include "net/WireEncoding.h"

namespace LobbyMessages {

namespace {

std::vector<unsigned char> Start(MessageType type) { return {static_cast<unsigned char>(type)}; }

template <class T>
std::vector<unsigned char> WithInteger(MessageType type, T value) {
  std::vector<unsigned char> out = Start(type);
  WireWriter(out).integer(value);
  return out;
}

// The whole body must hold one fixed-width integer (bytes after it are ignored).
template <class T>
bool ReadInteger(unsigned char const* body, std::size_t size, T& value) {
  return WireReader(body, size).integer(value);
}

}  // namespace

std::vector<unsigned char> EncodeVersion(std::uint32_t version) { return WithInteger(MessageType::VERSION, version); }

bool DecodeVersion(unsigned char const* body, std::size_t size, std::uint32_t& version) {
  return ReadInteger(body, size, version);
}

std::vector<unsigned char> EncodeConnectionResponse(ConnectionResponse const& message) {
  std::vector<unsigned char> out = Start(MessageType::CONNECTION_RESPONSE);
  WireWriter(out).boolean(message.accepted);
  ToBytes(message.challenge, out);
  return out;
}

bool DecodeConnectionResponse(unsigned char const* body, std::size_t size, ConnectionResponse& message) {
  message.challenge.clear();
  if (!WireReader(body, size).boolean(message.accepted)) {
    return false;
  }
  if (!message.accepted) {
    return true;
  }
  return FromBytes(body, size, message.challenge);
}

std::vector<unsigned char> EncodeAuthRequest(AuthRequest const& message) {
  std::vector<unsigned char> out = Start(MessageType::AUTH_REQUEST);
  ToBytes(message.playerId, out);
  WireWriter(out).integer(message.saltedHash);
  return out;
}

bool DecodeAuthRequest(unsigned char const* body, std::size_t size, AuthRequest& message) {
  return FromBytes(body, size, message.playerId) && WireReader(body, size).integer(message.saltedHash);
}

std::vector<unsigned char> EncodeAuthResponse(AuthResponse const& message) {
  std::vector<unsigned char> out = Start(MessageType::AUTH_RESPONSE);
  WireWriter(out).boolean(message.granted);
  if (message.granted) {
    message.serverInfo.to_wire(out);
    WireWriter(out).integer(message.playerNumber);
  } else {
    ToBytes(message.reason, out);
  }
  return out;
}

bool DecodeAuthResponse(unsigned char const* body, std::size_t size, AuthResponse& message) {
  if (!WireReader(body, size).boolean(message.granted)) {
    return false;
  }
  if (!message.granted) {
    return FromBytes(body, size, message.reason);
  }
  message.serverInfo = ServerInfo::from_wire(body, size);
  return WireReader(body, size).integer(message.playerNumber);
}

std::vector<unsigned char> EncodeLobbyState(LobbyState const& state) {
  std::vector<unsigned char> out = Start(MessageType::LOBBY_STATE);
  ToBytes(state, out);
  return out;
}

bool DecodeLobbyState(unsigned char const* body, std::size_t size, LobbyState& state) {
  return FromBytes(body, size, state);
}

std::vector<unsigned char> EncodeMoveToGameRoom(unsigned short room) {
  return WithInteger(MessageType::MOVE_TO_GAME_ROOM, room);
}

bool DecodeMoveToGameRoom(unsigned char const* body, std::size_t size, unsigned short& room) {
  return ReadInteger(body, size, room);
}

std::vector<unsigned char> EncodeSetReadyState(bool ready) {
  std::vector<unsigned char> out = Start(MessageType::SET_READY_STATE);
  WireWriter(out).boolean(ready);
  return out;
}

bool DecodeSetReadyState(unsigned char const* body, std::size_t size, bool& ready) {
  return WireReader(body, size).boolean(ready);
}

std::vector<unsigned char> EncodeMoveToSlot(short slot) { return WithInteger(MessageType::MOVE_TO_SLOT, slot); }

bool DecodeMoveToSlot(unsigned char const* body, std::size_t size, short& slot) {
  return ReadInteger(body, size, slot);
}

std::vector<unsigned char> EncodeCreateGame(CreateGame const& message) {
  std::vector<unsigned char> out = Start(MessageType::CREATE_GAME);
  ToBytes(message.description, out);
  ToBytes(message.specBytes, out);
  WireWriter writer(out);
  writer.integer(message.minPlayers);
  writer.integer(message.maxPlayers);
  writer.boolean(message.repeatedIdsAllowed);
  return out;
}

bool DecodeCreateGame(unsigned char const* body, std::size_t size, CreateGame& message) {
  if (!FromBytes(body, size, message.description) || !FromBytes(body, size, message.specBytes)) {
    return false;
  }
  WireReader reader(body, size);
  return reader.integer(message.minPlayers) && reader.integer(message.maxPlayers) &&
         reader.boolean(message.repeatedIdsAllowed);
}

std::vector<unsigned char> EncodeGameStart(std::uint64_t token) { return WithInteger(MessageType::GAME_START, token); }

bool DecodeGameStart(unsigned char const* body, std::size_t size, std::uint64_t& token) {
  return ReadInteger(body, size, token);
}

std::vector<unsigned char> EncodeRunningGameState(RunningGameState const& state) {
  std::vector<unsigned char> out = Start(MessageType::RUNNING_GAME_STATE);
  ToBytes(state, out);
  return out;
}

bool DecodeRunningGameState(unsigned char const* body, std::size_t size, RunningGameState& state) {
  return FromBytes(body, size, state);
}

std::vector<unsigned char> EncodeGameEnd(std::optional<GameResult> const& result) {
  std::vector<unsigned char> resultBytes;
  if (result.has_value()) {
    ToBytes(*result, resultBytes);
  }
  std::vector<unsigned char> out = Start(MessageType::GAME_END);
  ToBytes(resultBytes, out);
  return out;
}

bool DecodeGameEnd(unsigned char const* body, std::size_t size, std::vector<unsigned char>& resultBytes) {
  return FromBytes(body, size, resultBytes);
}

std::vector<unsigned char> EncodeGameResults(std::uint32_t firstGame, std::vector<GameResults> const& games) {
  std::vector<unsigned char> out = Start(MessageType::GAME_RESULTS);
  WireWriter writer(out);
  writer.integer(firstGame);
  writer.count(games.size());
  for (GameResults const& game : games) {
    ToBytes(game, out);
  }
  return out;
}

bool DecodeGameResults(unsigned char const* body, std::size_t size, std::uint32_t& firstGame,
                       std::vector<GameResults>& games) {
  WireReader reader(body, size);
  std::uint32_t first = 0;
  std::size_t count = 0;
  if (!reader.integer(first) || !reader.count(count)) {
    return false;
  }
  firstGame = first;
  games.resize(count);
  for (GameResults& game : games) {
    if (!FromBytes(body, size, game)) {
      return false;
    }
  }
  return true;
}

std::vector<unsigned char> EncodePlayerNames(std::vector<PlayerNameInfo> const& names) {
  std::vector<unsigned char> out = Start(MessageType::PLAYER_NAMES);
  WireWriter(out).count(names.size());
  for (PlayerNameInfo const& entry : names) {
    ToBytes(entry, out);
  }
  return out;
}

std::vector<PlayerNameInfo> DecodePlayerNames(unsigned char const* body, std::size_t size) {
  std::vector<PlayerNameInfo> names;
  std::size_t count = 0;
  if (!WireReader(body, size).count(count)) {
    return names;
  }
  names.resize(count);
  for (PlayerNameInfo& entry : names) {
    if (!FromBytes(body, size, entry)) {
      break;
    }
  }
  return names;
}

std::vector<unsigned char> EncodeChangeName(std::string const& name) {
  std::vector<unsigned char> out = Start(MessageType::CHANGE_NAME);
  ToBytes(name, out);
  return out;
}

bool DecodeChangeName(unsigned char const* body, std::size_t size, std::string& name) {
  return FromBytes(body, size, name);
}

std::vector<unsigned char> EncodeServerError(ServerError const& message) {
  std::vector<unsigned char> out = Start(MessageType::SERVER_ERROR);
  WireWriter(out).boolean(message.fatal);
  ToBytes(message.text, out);
  return out;
}

bool DecodeServerError(unsigned char const* body, std::size_t size, ServerError& message) {
  if (size < 9) {
    return false;
  }
  return WireReader(body, size).boolean(message.fatal) && FromBytes(body, size, message.text);
}

std::vector<unsigned char> EncodeKeepAlive() { return Start(MessageType::KEEP_ALIVE); }

std::vector<unsigned char> EncodeRequestRecording(unsigned short game) {
  return WithInteger(MessageType::REQUEST_RECORDING, game);
}

bool DecodeRequestRecording(unsigned char const* body, std::size_t size, unsigned short& game) {
  return ReadInteger(body, size, game);
}

std::vector<unsigned char> EncodeRecordingData(RecordingData const& message) {
  std::vector<unsigned char> out = Start(MessageType::RECORDING_DATA);
  WireWriter(out).integer(message.game);
  ToBytes(message.bytes, out);
  return out;
}

bool DecodeRecordingData(unsigned char const* body, std::size_t size, RecordingData& message) {
  if (size < 10) {
    return false;
  }
  return WireReader(body, size).integer(message.game) && FromBytes(body, size, message.bytes);
}

}  // namespace LobbyMessages
