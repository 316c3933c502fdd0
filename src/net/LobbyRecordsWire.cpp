#include "net/LobbyRecordsWire.h"

void ToBytes(PlayerInLobby const& value, std::vector<unsigned char>& out) {
  ToBytes(value.playerId, out);
  WireWriter(out).integer(value.roomIndex);
}

bool FromBytes(unsigned char const*& cursor, std::size_t& remaining, PlayerInLobby& value) {
  return FromBytes(cursor, remaining, value.playerId) && WireReader(cursor, remaining).integer(value.roomIndex);
}

void ToBytes(std::optional<PlayerInLobby> const& value, std::vector<unsigned char>& out) {
  ToBytesOptional(value, out, [&](PlayerInLobby const& player) { ToBytes(player, out); });
}

bool FromBytes(unsigned char const*& cursor, std::size_t& remaining, std::optional<PlayerInLobby>& value) {
  return FromBytesOptional(cursor, remaining, value,
                           [&](PlayerInLobby& player) { return FromBytes(cursor, remaining, player); });
}

void ToBytes(RunningGameState const& value, std::vector<unsigned char>& out) {
  WireWriter writer(out);
  writer.integer(value.portOffset);
  writer.boolean(value.udpServerRunning);
  ToBytes(value.players, out);
  ToBytes(value.disconnected, out);
}

bool FromBytes(unsigned char const*& cursor, std::size_t& remaining, RunningGameState& value) {
  WireReader reader(cursor, remaining);
  return reader.integer(value.portOffset) && reader.boolean(value.udpServerRunning) &&
         FromBytes(cursor, remaining, value.players) && FromBytes(cursor, remaining, value.disconnected);
}

void ToBytes(std::optional<RunningGameState> const& value, std::vector<unsigned char>& out) {
  ToBytesOptional(value, out, [&](RunningGameState const& running) { ToBytes(running, out); });
}

bool FromBytes(unsigned char const*& cursor, std::size_t& remaining, std::optional<RunningGameState>& value) {
  return FromBytesOptional(cursor, remaining, value,
                           [&](RunningGameState& running) { return FromBytes(cursor, remaining, running); });
}

void ToBytes(GameRoom const& value, std::vector<unsigned char>& out) {
  WireWriter writer(out);
  ToBytes(value.description, out);
  writer.integer(value.minPlayers);
  writer.integer(value.maxPlayers);
  ToBytes(value.specBytes, out);
  writer.boolean(value.repeatedIdsAllowed);
  ToBytes(value.players, out);
  ToBytes(value.slotChoices, out);
  ToBytes(value.assignedSlots, out);
  ToBytes(value.ready, out);
  writer.integer(value.roomToken);
  ToBytes(value.runningGame, out);
  ToBytes(value.lastResultsIndex, out);
}

bool FromBytes(unsigned char const*& cursor, std::size_t& remaining, GameRoom& value) {
  WireReader reader(cursor, remaining);
  return FromBytes(cursor, remaining, value.description) && reader.integer(value.minPlayers) &&
         reader.integer(value.maxPlayers) && FromBytes(cursor, remaining, value.specBytes) &&
         reader.boolean(value.repeatedIdsAllowed) && FromBytes(cursor, remaining, value.players) &&
         FromBytes(cursor, remaining, value.slotChoices) && FromBytes(cursor, remaining, value.assignedSlots) &&
         FromBytes(cursor, remaining, value.ready) && reader.integer(value.roomToken) &&
         FromBytes(cursor, remaining, value.runningGame) && FromBytes(cursor, remaining, value.lastResultsIndex);
}

void ToBytes(std::optional<GameRoom> const& value, std::vector<unsigned char>& out) {
  ToBytesOptional(value, out, [&](GameRoom const& room) { ToBytes(room, out); });
}

bool FromBytes(unsigned char const*& cursor, std::size_t& remaining, std::optional<GameRoom>& value) {
  return FromBytesOptional(cursor, remaining, value,
                           [&](GameRoom& room) { return FromBytes(cursor, remaining, room); });
}

void ToBytes(LobbyState const& value, std::vector<unsigned char>& out) {
  ToBytesCounted(value.players, out, [&](std::optional<PlayerInLobby> const& player) { ToBytes(player, out); });
  ToBytesCounted(value.rooms, out, [&](std::optional<GameRoom> const& room) { ToBytes(room, out); });
}

bool FromBytes(unsigned char const*& cursor, std::size_t& remaining, LobbyState& value) {
  return FromBytesCounted(
             cursor, remaining, value.players,
             [&](std::optional<PlayerInLobby>& player) { return FromBytes(cursor, remaining, player); },
             LobbyState::kMaxEntries) &&
         FromBytesCounted(
             cursor, remaining, value.rooms,
             [&](std::optional<GameRoom>& room) { return FromBytes(cursor, remaining, room); }, LobbyState::kMaxEntries);
}

void ToBytes(GameResults const& value, std::vector<unsigned char>& out) {
  WireWriter writer(out);
  ToBytes(value.specBytes, out);
  writer.boolean(value.finished);
  writer.integer(value.timestampMs);
  ToBytes(value.playerIds, out);
  ToBytes(value.playerNames, out);
  ToBytes(value.playerSlots, out);
  ToBytes(value.reportedResults, out);
}

bool FromBytes(unsigned char const*& cursor, std::size_t& remaining, GameResults& value) {
  WireReader reader(cursor, remaining);
  return FromBytes(cursor, remaining, value.specBytes) && reader.boolean(value.finished) &&
         reader.integer(value.timestampMs) && FromBytes(cursor, remaining, value.playerIds) &&
         FromBytes(cursor, remaining, value.playerNames) && FromBytes(cursor, remaining, value.playerSlots) &&
         FromBytes(cursor, remaining, value.reportedResults);
}

void ToBytes(PlayerNameInfo const& value, std::vector<unsigned char>& out) {
  ToBytes(value.playerId, out);
  ToBytes(value.name, out);
}

bool FromBytes(unsigned char const*& cursor, std::size_t& remaining, PlayerNameInfo& value) {
  return FromBytes(cursor, remaining, value.playerId) && FromBytes(cursor, remaining, value.name);
}
