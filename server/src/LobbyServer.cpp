#include "LobbyServer.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <set>
#include <sstream>
#include <utility>

#include "GameRules.h"
#include "SecureRandom.h"
#include "accounts/SaltedHash.h"
#include "net/GameRecordsWire.h"
#include "net/LobbyMessages.h"
#include "net/MessageType.h"
#include "net/WireReader.h"
#include "net/WireWriter.h"
#include "sim/Recording.h"

namespace lm = LobbyMessages;

namespace {

constexpr std::size_t kChallengeSize = 32;
constexpr std::size_t kMaxPlayerIdSize = 32;
constexpr std::size_t kSaveRecordingEvery = 600;  // relayed steps between saves of a running game's recording

void Log(std::string const& line) {
  std::printf("%s\n", line.c_str());
  std::fflush(stdout);
}

std::string Hex(std::vector<unsigned char> const& bytes) {
  static char const digits[] = "0123456789abcdef";
  std::string text;
  for (unsigned char byte : bytes) {
    text += digits[byte >> 4];
    text += digits[byte & 15];
  }
  return text;
}

std::uint64_t NowUnixMs() {
  return static_cast<std::uint64_t>(
      std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::system_clock::now().time_since_epoch()).count());
}

// A name or description may hold any text but control characters.
bool HasControlCharacters(std::string const& text) {
  return std::any_of(text.begin(), text.end(), [](char c) {
    auto const byte = static_cast<unsigned char>(c);
    return byte < 0x20 || byte == 0x7f;
  });
}

// The relayed updates as stored: the chunk section of a recording file.
std::vector<unsigned char> EncodeChunks(std::vector<std::vector<unsigned char>> const& updates) {
  std::vector<unsigned char> bytes;
  WireWriter writer(bytes);
  writer.integer(static_cast<std::uint64_t>(updates.size()));
  for (auto const& update : updates) {
    writer.integer(static_cast<std::uint64_t>(update.size()));
    writer.bytes(update.data(), update.size());
  }
  return bytes;
}

// Newest first, as Recording's constructor takes them. Stops at the first chunk that is cut short.
std::deque<std::vector<unsigned char>> DecodeChunksNewestFirst(std::vector<unsigned char> const& bytes) {
  std::deque<std::vector<unsigned char>> updates;
  unsigned char const* cursor = bytes.data();
  std::size_t remaining = bytes.size();
  WireReader reader(cursor, remaining);
  std::uint64_t count = 0;
  if (!reader.integer(count)) {
    return updates;
  }
  for (std::uint64_t i = 0; i < count; ++i) {
    std::uint64_t size = 0;
    if (!reader.integer(size) || size > reader.remaining()) {
      break;
    }
    std::vector<unsigned char> update(static_cast<std::size_t>(size));
    reader.bytes(update.data(), update.size());
    updates.push_front(std::move(update));
  }
  return updates;
}

// Two reports or more that differ: the players' clients computed different games.
bool Disputed(GameResults const& results) {
  std::vector<unsigned char> const* first = nullptr;
  for (auto const& report : results.reportedResults) {
    if (report.empty()) {
      continue;
    }
    if (first != nullptr && report != *first) {
      return true;
    }
    first = &report;
  }
  return false;
}

}  // namespace

LobbyServer::LobbyServer(IServerHost& host, IServerStorage& storage, LobbyTimeouts timeouts,
                         DisputeSettler::Settle settle)
    : host_(host), storage_(storage), timeouts_(timeouts), settler_(std::make_unique<DisputeSettler>(std::move(settle), storage)) {
  nextGame_ = storage_.gameCount();
  std::uint32_t const first = nextGame_ > kResultsSent ? nextGame_ - kResultsSent : 0;
  for (auto& [number, results] : storage_.loadGames(first, kResultsSent)) {
    if (!results.finished) {
      // The server stopped while this game ran: it is over, with whatever was reported.
      results.finished = true;
      storage_.saveGame(number, results);
    }
    for (auto const& id : results.playerIds) {
      nameOf(id);
    }
    recent_.emplace_back(number, std::move(results));
  }
  // Disputes that the last run left waiting are settled now, as many as the settler's queue takes.
  for (std::uint32_t const game : storage_.waitingDisputes()) {
    if (!settleDispute(game)) {
      break;
    }
  }
}

LobbyServer::~LobbyServer() {
  // Running games end with the server: their recordings and results are kept as they stand.
  for (auto& [room, running] : running_) {
    saveRecording(running);
  }
}

std::string LobbyServer::nameOf(std::vector<unsigned char> const& playerId) {
  auto const found = names_.find(idKey(playerId));
  if (found != names_.end()) {
    return found->second;
  }
  std::string name = storage_.nameFor(playerId).value_or("Player");
  names_.emplace(idKey(playerId), name);
  return name;
}

// ------------------------------------------------------------------------------------------------ connections

void LobbyServer::onConnect(ConnectionId connection, std::int64_t nowMs) {
  Connection& c = connections_[connection];
  c.connectedMs = nowMs;
  c.lastHeardMs = nowMs;
  Log("Connection " + std::to_string(connection) + " opened");
}

void LobbyServer::onMessage(ConnectionId id, unsigned char const* data, std::size_t size, std::int64_t nowMs) {
  auto const found = connections_.find(id);
  if (found == connections_.end()) {
    return;
  }
  Connection& connection = found->second;
  connection.lastHeardMs = nowMs;
  if (size == 0 || size > kMaxClientMessage) {
    violation(id, size == 0 ? "Empty message" : "Message too long");
    return;
  }
  if (connection.stage == Stage::Lobby) {
    handleLobbyMessage(id, connection, data, size, nowMs);
  } else {
    handleHandshake(id, connection, data, size);
  }
}

void LobbyServer::onOversizedMessage(ConnectionId id) {
  violation(id, "Message too long");
}

void LobbyServer::handleHandshake(ConnectionId id, Connection& connection, unsigned char const* data, std::size_t size) {
  auto const type = static_cast<MessageType>(data[0]);
  if (connection.stage == Stage::AwaitVersion) {
    std::uint32_t version = 0;
    if (type != MessageType::VERSION || size != 5 || !lm::DecodeVersion(data + 1, size - 1, version)) {
      violation(id, "Expected the client's version");
      return;
    }
    host_.send(id, lm::EncodeVersion(kProtocolVersion));
    if (version != kProtocolVersion) {
      Log("Connection " + std::to_string(id) + " refused: client version " + std::to_string(version));
      host_.send(id, lm::EncodeConnectionResponse({false, {}}));
      dropConnection(id, connection.lastHeardMs, "client version not accepted");
      return;
    }
    connection.challenge = SecureRandomBytes(kChallengeSize);
    host_.send(id, lm::EncodeConnectionResponse({true, connection.challenge}));
    connection.stage = Stage::AwaitAuth;
    return;
  }
  lm::AuthRequest request;
  if (type != MessageType::AUTH_REQUEST || !lm::DecodeAuthRequest(data + 1, size - 1, request) ||
      request.playerId.size() > kMaxPlayerIdSize || size != 1 + 8 + request.playerId.size() + 8) {
    violation(id, "Expected an authentication request");
    return;
  }
  auto const secret = storage_.secretFor(request.playerId);
  if (!secret || SaltedHash(connection.challenge, *secret) != request.saltedHash) {
    Log("Connection " + std::to_string(id) + " refused: unknown player or wrong hash for id " + Hex(request.playerId));
    host_.send(id, lm::EncodeAuthResponse({false, "Unknown player or wrong credentials", {}, 0}));
    dropConnection(id, connection.lastHeardMs, "authentication refused");
    return;
  }
  std::size_t number = 0;
  while (number < lobby_.players.size() && lobby_.players[number]) {
    ++number;
  }
  if (number >= kMaxPlayers) {
    host_.send(id, lm::EncodeAuthResponse({false, "The server is full", {}, 0}));
    dropConnection(id, connection.lastHeardMs, "server full");
    return;
  }
  if (number == lobby_.players.size()) {
    lobby_.players.emplace_back();
    connectionOf_.emplace_back();
  }
  auto const player = static_cast<unsigned short>(number);
  lobby_.players[player] = PlayerInLobby{request.playerId, PlayerInLobby::kNoRoom};
  connectionOf_[player] = id;
  connection.stage = Stage::Lobby;
  connection.player = player;
  connection.challenge.clear();
  std::string const name = nameOf(request.playerId);
  Log("Player " + std::to_string(player) + " (" + name + ", id " + Hex(request.playerId) + ") logged in");
  host_.send(id, lm::EncodeAuthResponse({true, {}, ServerInfo{}, player}));
  broadcastLobbyState();
  broadcastPlayerNames(player, request.playerId);
  host_.send(id, gameResultsMessage());
}

void LobbyServer::onDisconnect(ConnectionId id, std::int64_t) {
  auto const found = connections_.find(id);
  if (found == connections_.end()) {
    return;
  }
  Connection const connection = found->second;
  connections_.erase(found);
  Log("Connection " + std::to_string(id) + " closed");
  if (connection.stage != Stage::Lobby) {
    return;
  }
  unsigned short const player = connection.player;
  connectionOf_[player].reset();
  unsigned short const room = lobby_.players[player]->roomIndex;
  auto const running = running_.find(room);
  if (running != running_.end()) {
    // Kept in the room until its game ends, so that the running game's places stay as they were.
    auto const& players = lobby_.rooms[room]->runningGame->players;
    auto const place = std::find(players.begin(), players.end(), player);
    if (place != players.end()) {
      auto const index = static_cast<std::size_t>(place - players.begin());
      if (!running->second.ended[index]) {
        markGone(running->second, index);
      }
    }
    finishIfDone(room);
  } else {
    removeFromRoom(player);
    lobby_.players[player].reset();
  }
  while (!lobby_.players.empty() && !lobby_.players.back() && !connectionOf_.back()) {
    lobby_.players.pop_back();
    connectionOf_.pop_back();
  }
  broadcastLobbyState();
}

void LobbyServer::dropConnection(ConnectionId id, std::int64_t nowMs, char const* why) {
  if (connections_.count(id) == 0) {
    return;
  }
  Log("Closing connection " + std::to_string(id) + ": " + why);
  host_.close(id);
  onDisconnect(id, nowMs);
}

void LobbyServer::violation(ConnectionId id, std::string const& text) {
  auto const found = connections_.find(id);
  if (found == connections_.end()) {
    return;
  }
  Log("Protocol violation on connection " + std::to_string(id) + ": " + text);
  if (found->second.stage == Stage::Lobby) {
    host_.send(id, lm::EncodeServerError({true, text}));
  }
  dropConnection(id, found->second.lastHeardMs, "protocol violation");
}

void LobbyServer::refuse(unsigned short player, std::string const& text) {
  Log("Refused a request of player " + std::to_string(player) + ": " + text);
  sendTo(player, lm::EncodeServerError({false, text}));
}

void LobbyServer::tick(std::int64_t nowMs) {
  if (nowMs >= nextTimeoutCheckMs_) {
    nextTimeoutCheckMs_ = nowMs + kRelayTickMs;
    std::vector<std::pair<ConnectionId, char const*>> expired;
    for (auto const& [id, connection] : connections_) {
      if (connection.stage != Stage::Lobby && nowMs - connection.connectedMs > timeouts_.loginMs) {
        expired.emplace_back(id, "login timed out");
      } else if (connection.stage == Stage::Lobby && nowMs - connection.lastHeardMs > timeouts_.keepAliveMs) {
        expired.emplace_back(id, "nothing heard for too long");
      }
    }
    for (auto const& [id, why] : expired) {
      dropConnection(id, nowMs, why);
    }
  }
  std::vector<unsigned short> due;
  for (auto const& [room, running] : running_) {
    if (running.nextRelayTickMs <= nowMs) {
      due.push_back(room);
    }
  }
  for (unsigned short room : due) {
    auto const found = running_.find(room);
    if (found == running_.end()) {
      continue;
    }
    RunningGame& running = found->second;
    // The next one a period on, or a period from now for a server that fell behind.
    running.nextRelayTickMs = std::max(running.nextRelayTickMs + kRelayTickMs, nowMs + 1);
    GameRelay::Output out;
    running.relay->tick(nowMs, out);
    applyRelayOutput(running, out);
  }
}

// ------------------------------------------------------------------------------------------------ lobby messages

void LobbyServer::handleLobbyMessage(ConnectionId id, Connection& connection, unsigned char const* data,
                                     std::size_t size, std::int64_t nowMs) {
  unsigned char const* body = data + 1;
  std::size_t const bodySize = size - 1;
  unsigned short const player = connection.player;
  auto const type = static_cast<MessageType>(data[0]);
  auto malformed = [&] { violation(id, std::string("Malformed ") + MessageTypeToString(type) + " message"); };
  switch (type) {
    case MessageType::MOVE_TO_GAME_ROOM: {
      unsigned short room = 0;
      if (bodySize != 2 || !lm::DecodeMoveToGameRoom(body, bodySize, room)) {
        return malformed();
      }
      return moveToRoom(player, room);
    }
    case MessageType::SET_READY_STATE: {
      bool ready = false;
      if (bodySize != 1 || !lm::DecodeSetReadyState(body, bodySize, ready)) {
        return malformed();
      }
      return setReady(player, ready);
    }
    case MessageType::MOVE_TO_SLOT: {
      short slot = 0;
      if (bodySize != 2 || !lm::DecodeMoveToSlot(body, bodySize, slot)) {
        return malformed();
      }
      return moveToSlot(player, slot);
    }
    case MessageType::CREATE_GAME: {
      lm::CreateGame message;
      if (!lm::DecodeCreateGame(body, bodySize, message) || lm::EncodeCreateGame(message).size() != size) {
        return malformed();
      }
      return createGame(player, body, bodySize);
    }
    case MessageType::GAME_START: {
      std::uint64_t token = 0;
      if (bodySize != 8 || !lm::DecodeGameStart(body, bodySize, token)) {
        return malformed();
      }
      return startGame(player, token, nowMs);
    }
    case MessageType::GAME_END: {
      std::vector<unsigned char> result;
      if (!lm::DecodeGameEnd(body, bodySize, result) || bodySize != 8 + result.size()) {
        return malformed();
      }
      return gameEnd(player, std::move(result));
    }
    case MessageType::CHANGE_NAME: {
      std::string name;
      if (!lm::DecodeChangeName(body, bodySize, name) || bodySize != 8 + name.size()) {
        return malformed();
      }
      return changeName(player, std::move(name));
    }
    case MessageType::KEEP_ALIVE:
      if (bodySize != 0) {
        return malformed();
      }
      return;
    case MessageType::REQUEST_RECORDING: {
      unsigned short game = 0;
      if (bodySize != 2 || !lm::DecodeRequestRecording(body, bodySize, game)) {
        return malformed();
      }
      return requestRecording(player, game);
    }
    default:
      violation(id, "Unexpected message type " + std::to_string(data[0]));
  }
}

bool LobbyServer::removeFromRoom(unsigned short player) {
  unsigned short const r = lobby_.players[player]->roomIndex;
  if (r == PlayerInLobby::kNoRoom) {
    return false;
  }
  GameRoom& room = *lobby_.rooms[r];
  auto const place = std::find(room.players.begin(), room.players.end(), player);
  if (place != room.players.end()) {
    auto const index = place - room.players.begin();
    room.players.erase(place);
    room.slotChoices.erase(room.slotChoices.begin() + index);
    room.assignedSlots.erase(room.assignedSlots.begin() + index);
    room.ready.erase(room.ready.begin() + index);
  }
  lobby_.players[player]->roomIndex = PlayerInLobby::kNoRoom;
  if (room.players.empty() && !room.runningGame) {
    lobby_.rooms[r].reset();
    roomInfo_.erase(r);
    while (!lobby_.rooms.empty() && !lobby_.rooms.back()) {
      lobby_.rooms.pop_back();
    }
  } else {
    assignSlots(room);
  }
  return true;
}

void LobbyServer::assignSlots(GameRoom& room) {
  std::set<short> taken;
  for (short choice : room.slotChoices) {
    if (choice >= 0) {
      taken.insert(choice);
    }
  }
  short next = 0;
  for (std::size_t i = 0; i < room.players.size(); ++i) {
    if (room.slotChoices[i] >= 0) {
      room.assignedSlots[i] = room.slotChoices[i];
      continue;
    }
    while (taken.count(next) != 0) {
      ++next;
    }
    room.assignedSlots[i] = next;
    taken.insert(next);
  }
}

void LobbyServer::moveToRoom(unsigned short player, unsigned short room) {
  std::size_t place = 0;
  if (activeGameOf(player, place) != nullptr) {
    return refuse(player, "You can't change rooms during a game");
  }
  unsigned short const current = lobby_.players[player]->roomIndex;
  if (current != PlayerInLobby::kNoRoom && running_.count(current) != 0) {
    return refuse(player, "Wait for the game in your room to end");
  }
  if (room == current) {
    return;
  }
  if (room == PlayerInLobby::kNoRoom) {
    removeFromRoom(player);
    return broadcastLobbyState();
  }
  if (room >= lobby_.rooms.size() || !lobby_.rooms[room]) {
    return refuse(player, "That room does not exist");
  }
  GameRoom const& target = *lobby_.rooms[room];
  if (!CanAddToGame(target)) {
    return refuse(player, "That room is full or its game is running");
  }
  if (!target.repeatedIdsAllowed) {
    for (unsigned short other : target.players) {
      if (lobby_.players[other] && lobby_.players[other]->playerId == lobby_.players[player]->playerId) {
        return refuse(player, "That room takes each player only once");
      }
    }
  }
  removeFromRoom(player);
  GameRoom& joined = *lobby_.rooms[room];
  joined.players.push_back(player);
  joined.slotChoices.push_back(-1);
  joined.assignedSlots.push_back(-1);
  joined.ready.push_back(false);
  assignSlots(joined);
  lobby_.players[player]->roomIndex = room;
  broadcastLobbyState();
}

void LobbyServer::setReady(unsigned short player, bool ready) {
  unsigned short const r = lobby_.players[player]->roomIndex;
  if (r == PlayerInLobby::kNoRoom) {
    return refuse(player, "You are not in a room");
  }
  GameRoom& room = *lobby_.rooms[r];
  if (room.runningGame) {
    return refuse(player, "The game of this room is running");
  }
  auto const place = std::find(room.players.begin(), room.players.end(), player) - room.players.begin();
  room.ready[static_cast<std::size_t>(place)] = ready;
  broadcastLobbyState();
}

void LobbyServer::moveToSlot(unsigned short player, short slot) {
  unsigned short const r = lobby_.players[player]->roomIndex;
  if (r == PlayerInLobby::kNoRoom) {
    return refuse(player, "You are not in a room");
  }
  GameRoom& room = *lobby_.rooms[r];
  if (room.runningGame) {
    return refuse(player, "The game of this room is running");
  }
  if (slot < -1 || slot >= static_cast<short>(roomInfo_[r].slots)) {
    return refuse(player, "There is no such slot");
  }
  auto const place = static_cast<std::size_t>(std::find(room.players.begin(), room.players.end(), player) -
                                              room.players.begin());
  for (std::size_t i = 0; i < room.players.size(); ++i) {
    if (i != place && slot >= 0 && room.slotChoices[i] == slot) {
      return refuse(player, "That slot is taken");
    }
  }
  room.slotChoices[place] = slot;
  assignSlots(room);
  broadcastLobbyState();
}

void LobbyServer::createGame(unsigned short player, unsigned char const* body, std::size_t size) {
  lm::CreateGame message;
  lm::DecodeCreateGame(body, size, message);
  if (message.description.size() > kMaxDescriptionLength || HasControlCharacters(message.description)) {
    return refuse(player, "Room descriptions are at most " + std::to_string(kMaxDescriptionLength) +
                              " characters, without control characters");
  }
  if (message.specBytes.size() > kMaxSpecLength) {
    return refuse(player, "The game description of the room is too long");
  }
  std::string error;
  auto const checked = GameRules::CheckSpec(message.specBytes, error);
  if (!checked) {
    return refuse(player, error);
  }
  if (message.minPlayers != checked->spec.minPlayers || message.maxPlayers != checked->spec.maxPlayers) {
    return refuse(player, "The room's player counts differ from its game's");
  }
  if (checked->ranked && message.repeatedIdsAllowed) {
    return refuse(player, "Ranked rooms take each player only once");
  }
  std::size_t place = 0;
  if (activeGameOf(player, place) != nullptr) {
    return refuse(player, "You can't create a room during a game");
  }
  unsigned short const current = lobby_.players[player]->roomIndex;
  if (current != PlayerInLobby::kNoRoom && running_.count(current) != 0) {
    return refuse(player, "Wait for the game in your room to end");
  }
  removeFromRoom(player);
  std::size_t r = 0;
  while (r < lobby_.rooms.size() && lobby_.rooms[r]) {
    ++r;
  }
  if (r >= kMaxRooms) {
    broadcastLobbyState();
    return refuse(player, "The server has too many rooms");
  }
  if (r == lobby_.rooms.size()) {
    lobby_.rooms.emplace_back();
  }
  GameRoom room;
  room.description = message.description;
  room.minPlayers = message.minPlayers;
  room.maxPlayers = message.maxPlayers;
  room.specBytes = message.specBytes;
  room.repeatedIdsAllowed = message.repeatedIdsAllowed;
  room.players = {player};
  room.slotChoices = {-1};
  room.assignedSlots = {0};
  room.ready = {false};
  room.roomToken = SecureRandomToken();
  lobby_.rooms[r] = std::move(room);
  roomInfo_[static_cast<unsigned short>(r)] = Room{checked->slots, checked->ranked, checked->spec.delayFrames};
  lobby_.players[player]->roomIndex = static_cast<unsigned short>(r);
  Log("Player " + std::to_string(player) + " created room " + std::to_string(r));
  broadcastLobbyState();
}

void LobbyServer::startGame(unsigned short player, std::uint64_t token, std::int64_t nowMs) {
  unsigned short const r = lobby_.players[player]->roomIndex;
  if (r == PlayerInLobby::kNoRoom) {
    return refuse(player, "You are not in a room");
  }
  GameRoom& room = *lobby_.rooms[r];
  if (room.players.front() != player) {
    return refuse(player, "Only the host can start the game");
  }
  if (token != room.roomToken) {
    return refuse(player, "That room is not the one you are in");
  }
  if (room.runningGame) {
    return refuse(player, "The game of this room is running");
  }
  if (!std::all_of(room.ready.begin(), room.ready.end(), [](bool ready) { return ready; })) {
    return refuse(player, "Not every player is ready");
  }
  if (room.players.size() < room.minPlayers) {
    return refuse(player, "Not enough players to start");
  }
  std::set<unsigned short> used;
  for (auto const& [other, running] : running_) {
    used.insert(running.portOffset);
  }
  unsigned short offset = 0;
  for (unsigned short candidate = kFirstPortOffset; candidate < kFirstPortOffset + kMaxRunningGames; ++candidate) {
    if (used.count(candidate) == 0 && host_.openPort(candidate)) {
      offset = candidate;
      break;
    }
  }
  if (offset == 0) {
    return refuse(player, "The server can't start another game now");
  }
  std::size_t const count = room.players.size();
  std::vector<std::uint64_t> tokens(count);
  GameResults results;
  results.specBytes = room.specBytes;
  results.timestampMs = NowUnixMs();
  for (std::size_t i = 0; i < count; ++i) {
    tokens[i] = SecureRandomToken();
    auto const& id = lobby_.players[room.players[i]]->playerId;
    results.playerIds.push_back(id);
    results.playerNames.push_back(nameOf(id));
    results.playerSlots.push_back(static_cast<unsigned short>(room.assignedSlots[i]));
  }
  results.reportedResults.resize(count);
  std::uint32_t const game = nextGame_++;
  updateGame(game, results);

  RunningGame running;
  running.game = game;
  running.room = r;
  running.portOffset = offset;
  running.ended.assign(count, false);
  running.relay = std::make_unique<GameRelay>(tokens, nowMs);
  running.nextRelayTickMs = nowMs + kRelayTickMs + static_cast<std::int64_t>(game % kRelayTickPhases) * (kRelayTickMs / kRelayTickPhases);
  running_[r] = std::move(running);
  roomOfPort_[offset] = r;
  room.runningGame = RunningGameState{offset, true, room.players, std::vector<bool>(count, false)};
  room.lastResultsIndex = static_cast<unsigned short>(game & 0xffff);
  std::fill(room.ready.begin(), room.ready.end(), false);
  Log("Game " + std::to_string(game) + " started in room " + std::to_string(r) + " with " + std::to_string(count) +
      " players on port offset " + std::to_string(offset));
  for (std::size_t i = 0; i < count; ++i) {
    sendTo(room.players[i], lm::EncodeGameStart(tokens[i]));
  }
  sendRunningGameState(r);
  broadcastLobbyState();
  broadcastGameResults(true);
}

void LobbyServer::gameEnd(unsigned short player, std::vector<unsigned char> resultBytes) {
  unsigned short const r = lobby_.players[player]->roomIndex;
  auto const found = running_.find(r);
  std::size_t index = 0;
  bool participant = false;
  if (found != running_.end()) {
    auto const& players = lobby_.rooms[r]->runningGame->players;
    auto const place = std::find(players.begin(), players.end(), player);
    index = static_cast<std::size_t>(place - players.begin());
    participant = place != players.end() && !found->second.ended[index];
  }
  if (participant) {
    RunningGame& running = found->second;
    if (!resultBytes.empty()) {
      GameResult result;
      unsigned char const* cursor = resultBytes.data();
      std::size_t remaining = resultBytes.size();
      if (FromBytes(cursor, remaining, result)) {
        auto results = storage_.loadGame(running.game);
        if (results && index < results->reportedResults.size()) {
          results->reportedResults[index] = resultBytes;
          updateGame(running.game, *results);
        }
      } else {
        refuse(player, "Your game's result could not be read");
      }
    }
    running.ended[index] = true;
    Log("Player " + std::to_string(player) + " ended game " + std::to_string(running.game) +
        (resultBytes.empty() ? " without a result" : " with a result"));
    if (!lobby_.rooms[r]->runningGame->disconnected[index]) {
      markGone(running, index);
    }
    finishIfDone(r);
  }
  // The client waits for this LOBBY_STATE to leave its game, whatever it had to say.
  broadcastLobbyState();
  broadcastGameResults();
}

void LobbyServer::changeName(unsigned short player, std::string name) {
  if (name.empty() || name.size() > kMaxNameLength || HasControlCharacters(name)) {
    return refuse(player, "Names are 1 to " + std::to_string(kMaxNameLength) +
                              " characters long, without control characters");
  }
  auto const& id = lobby_.players[player]->playerId;
  names_[idKey(id)] = name;
  storage_.setName(id, name);
  Log("Player " + std::to_string(player) + " is now called " + name);
  broadcastPlayerNames(player, id);
}

void LobbyServer::requestRecording(unsigned short player, unsigned short game) {
  if (nextGame_ == 0) {
    return refuse(player, "There is no recording of game " + std::to_string(game));
  }
  // Game numbers travel as their low 16 bits: the latest game with those bits is meant.
  std::uint32_t const last = nextGame_ - 1;
  std::uint32_t number = (last & ~0xffffu) | game;
  if (number > last) {
    if (number < 0x10000u) {
      return refuse(player, "There is no recording of game " + std::to_string(game));
    }
    number -= 0x10000u;
  }
  for (auto const& [room, running] : running_) {
    if (running.game == number) {
      return refuse(player, "Game " + std::to_string(game) + " is still running");
    }
  }
  auto file = recordingFile(number);
  if (!file) {
    return refuse(player, "There is no recording of game " + std::to_string(game));
  }
  Log("Sending the recording of game " + std::to_string(number) + " to player " + std::to_string(player));
  sendTo(player, lm::EncodeRecordingData({game, std::move(*file)}));
}

// ------------------------------------------------------------------------------------------------ running games

LobbyServer::RunningGame* LobbyServer::activeGameOf(unsigned short player, std::size_t& place) {
  if (player >= lobby_.players.size() || !lobby_.players[player]) {
    return nullptr;
  }
  auto const found = running_.find(lobby_.players[player]->roomIndex);
  if (found == running_.end()) {
    return nullptr;
  }
  RunningGameState const& state = *lobby_.rooms[found->first]->runningGame;
  auto const at = std::find(state.players.begin(), state.players.end(), player);
  if (at == state.players.end()) {
    return nullptr;
  }
  place = static_cast<std::size_t>(at - state.players.begin());
  if (found->second.ended[place] || state.disconnected[place]) {
    return nullptr;
  }
  return &found->second;
}

void LobbyServer::markGone(RunningGame& running, std::size_t place) {
  GameRelay::Output out;
  running.relay->dropPlayer(static_cast<int>(place), out);
  for (auto const& [to, bytes] : out.datagrams) {
    host_.sendDatagram(running.portOffset, to, bytes);
  }
  RunningGameState& state = *lobby_.rooms[running.room]->runningGame;
  if (!state.disconnected[place]) {
    state.disconnected[place] = true;
    Log("Player " + std::to_string(state.players[place]) + " dropped from game " + std::to_string(running.game));
    sendRunningGameState(running.room);
  }
}

void LobbyServer::finishIfDone(unsigned short r) {
  auto const found = running_.find(r);
  if (found == running_.end()) {
    return;
  }
  RunningGame& running = found->second;
  GameRoom& room = *lobby_.rooms[r];
  RunningGameState const& state = *room.runningGame;
  for (std::size_t i = 0; i < state.players.size(); ++i) {
    if (!running.ended[i] && !state.disconnected[i]) {
      return;
    }
  }
  saveRecording(running);
  if (auto results = storage_.loadGame(running.game)) {
    results->finished = true;
    updateGame(running.game, *results);
    if (Disputed(*results)) {
      Log("The reports of game " + std::to_string(running.game) + " disagree");
      settleDispute(running.game);
    }
  }
  Log("Game " + std::to_string(running.game) + " finished");
  host_.closePort(running.portOffset);
  roomOfPort_.erase(running.portOffset);
  running_.erase(found);
  room.runningGame.reset();
  // Players whose connection went during the game leave the room and the lobby now.
  std::vector<unsigned short> const members = room.players;
  for (unsigned short member : members) {
    if (!connectionOf_[member]) {
      removeFromRoom(member);
      lobby_.players[member].reset();
    }
  }
  while (!lobby_.players.empty() && !lobby_.players.back() && !connectionOf_.back()) {
    lobby_.players.pop_back();
    connectionOf_.pop_back();
  }
  broadcastLobbyState();
  broadcastGameResults();
}

void LobbyServer::onDatagram(unsigned short portOffset, Endpoint const& from, unsigned char const* data,
                             std::size_t size, std::int64_t nowMs) {
  auto const room = roomOfPort_.find(portOffset);
  if (room == roomOfPort_.end()) {
    return;
  }
  auto const found = running_.find(room->second);
  if (found == running_.end()) {
    return;
  }
  GameRelay::Output out;
  found->second.relay->handleDatagram(from, data, size, nowMs, out);
  applyRelayOutput(found->second, out);
}

void LobbyServer::applyRelayOutput(RunningGame& running, GameRelay::Output& out) {
  for (auto const& [to, bytes] : out.datagrams) {
    host_.sendDatagram(running.portOffset, to, bytes);
  }
  if (running.relay->relayedUpdates().size() >= running.savedUpdates + kSaveRecordingEvery) {
    saveRecording(running);
  }
  if (out.dropped.empty()) {
    return;
  }
  RunningGameState& state = *lobby_.rooms[running.room]->runningGame;
  for (int place : out.dropped) {
    auto const index = static_cast<std::size_t>(place);
    if (index < state.disconnected.size() && !state.disconnected[index]) {
      state.disconnected[index] = true;
      Log("Player " + std::to_string(state.players[index]) + " dropped from game " + std::to_string(running.game) +
          ": no datagrams");
    }
  }
  unsigned short const room = running.room;
  sendRunningGameState(room);
  // A dropped player that is still connected gets the lobby again: its game is over here.
  broadcastLobbyState();
  finishIfDone(room);
}

void LobbyServer::saveRecording(RunningGame& running) {
  running.savedUpdates = running.relay->relayedUpdates().size();
  recordings_.save(running.game, EncodeChunks(running.relay->relayedUpdates()));
}

void LobbyServer::updateGame(std::uint32_t game, GameResults const& results) {
  storage_.saveGame(game, results);
  for (auto& [number, kept] : recent_) {
    if (number == game) {
      kept = results;
      return;
    }
  }
  recent_.emplace_back(game, results);
  while (recent_.size() > kResultsSent) {
    recent_.pop_front();
  }
}

bool LobbyServer::settleDispute(std::uint32_t game) {
  // A game without its recording is submitted all the same: the settler records why it can't be replayed.
  bool const queued = settler_->submit(game, recordingFile(game).value_or(std::vector<unsigned char>{}));
  Log("Game " + std::to_string(game) + (queued ? ": re-simulating its recording to settle its reports"
                                               : ": too many disputes queued, it waits for the next run"));
  return queued;
}

std::optional<std::vector<unsigned char>> LobbyServer::recordingFile(std::uint32_t game) {
  recordings_.flush();
  auto const chunks = storage_.recordingChunks(game);
  auto const results = storage_.loadGame(game);
  if (!chunks || !results) {
    return std::nullopt;
  }
  std::ostringstream out;
  Recording(DecodeChunksNewestFirst(*chunks), *results).save(out);
  std::string const bytes = out.str();
  return std::vector<unsigned char>(bytes.begin(), bytes.end());
}

// ------------------------------------------------------------------------------------------------ sending

void LobbyServer::sendTo(unsigned short player, std::vector<unsigned char> const& payload) {
  if (player < connectionOf_.size() && connectionOf_[player]) {
    host_.send(*connectionOf_[player], payload);
  }
}

void LobbyServer::broadcastLobbyState() {
  std::vector<unsigned char> const message = lm::EncodeLobbyState(lobby_);
  for (std::size_t player = 0; player < connectionOf_.size(); ++player) {
    std::size_t place = 0;
    // Never to a player in a running game before its GAME_END: the message ends the game there.
    if (connectionOf_[player] && activeGameOf(static_cast<unsigned short>(player), place) == nullptr) {
      host_.send(*connectionOf_[player], message);
    }
  }
}

void LobbyServer::sendRunningGameState(unsigned short r) {
  GameRoom const& room = *lobby_.rooms[r];
  std::vector<unsigned char> const message = lm::EncodeRunningGameState(*room.runningGame);
  for (unsigned short player : room.runningGame->players) {
    std::size_t place = 0;
    if (activeGameOf(player, place) != nullptr) {
      sendTo(player, message);
    }
  }
}

std::vector<unsigned char> LobbyServer::gameResultsMessage() {
  std::vector<GameResults> games;
  for (auto const& [number, results] : recent_) {
    games.push_back(results);
  }
  return lm::EncodeGameResults(recent_.empty() ? nextGame_ : recent_.front().first, games);
}

void LobbyServer::broadcastGameResults(bool lobbyOnly) {
  std::vector<unsigned char> const message = gameResultsMessage();
  for (std::size_t player = 0; player < connectionOf_.size(); ++player) {
    std::size_t place = 0;
    if (connectionOf_[player] &&
        (!lobbyOnly || activeGameOf(static_cast<unsigned short>(player), place) == nullptr)) {
      host_.send(*connectionOf_[player], message);
    }
  }
}

std::vector<unsigned char> LobbyServer::playerNamesMessage() {
  std::vector<PlayerNameInfo> names;
  for (auto const& [id, name] : names_) {
    names.push_back({std::vector<unsigned char>(id.begin(), id.end()), name});
  }
  return lm::EncodePlayerNames(names);
}

void LobbyServer::broadcastPlayerNames(unsigned short newcomer, std::vector<unsigned char> const& playerId) {
  // The whole list to everybody on every login would cost the square of the players.
  sendTo(newcomer, playerNamesMessage());
  std::vector<unsigned char> const entry = lm::EncodePlayerNames({{playerId, nameOf(playerId)}});
  for (std::size_t player = 0; player < connectionOf_.size(); ++player) {
    if (connectionOf_[player] && player != newcomer) {
      host_.send(*connectionOf_[player], entry);
    }
  }
}

LobbyServer::Snapshot LobbyServer::snapshot() const {
  Snapshot snapshot;
  snapshot.lobby = lobby_;
  snapshot.names = names_;
  snapshot.disputes = settler_->settled();
  snapshot.firstGame = recent_.empty() ? nextGame_ : recent_.front().first;
  for (auto const& [number, results] : recent_) {
    snapshot.recentGames.push_back(results);
  }
  snapshot.connections = connections_.size();
  return snapshot;
}
