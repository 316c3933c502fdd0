#pragma once

#include <cstddef>
#include <optional>
#include <vector>

#include "sim/GameResults.h"
#include "net/LobbyState.h"
#include "net/PlayerNames.h"
#include "net/WireEncoding.h"

// The bytes of the lobby records (conventions in WireEncoding.h). The client only reads most of
// them; the writers serve whatever stands in the server's place, and the tests.

// PlayerInLobby: playerId (byte vector), roomIndex (2 bytes).
void ToBytes(PlayerInLobby const& value, std::vector<unsigned char>& out);
bool FromBytes(unsigned char const*& cursor, std::size_t& remaining, PlayerInLobby& value);
void ToBytes(std::optional<PlayerInLobby> const& value, std::vector<unsigned char>& out);
bool FromBytes(unsigned char const*& cursor, std::size_t& remaining, std::optional<PlayerInLobby>& value);

// RunningGameState: portOffset (2), udpServerRunning (bool), players (2-byte numbers), disconnected.
void ToBytes(RunningGameState const& value, std::vector<unsigned char>& out);
bool FromBytes(unsigned char const*& cursor, std::size_t& remaining, RunningGameState& value);
void ToBytes(std::optional<RunningGameState> const& value, std::vector<unsigned char>& out);
bool FromBytes(unsigned char const*& cursor, std::size_t& remaining, std::optional<RunningGameState>& value);

// GameRoom: description, minPlayers, maxPlayers, specBytes, repeatedIdsAllowed, players, slotChoices,
// assignedSlots, ready, roomToken (8), runningGame (optional), lastResultsIndex (optional 2 bytes).
void ToBytes(GameRoom const& value, std::vector<unsigned char>& out);
bool FromBytes(unsigned char const*& cursor, std::size_t& remaining, GameRoom& value);
void ToBytes(std::optional<GameRoom> const& value, std::vector<unsigned char>& out);
bool FromBytes(unsigned char const*& cursor, std::size_t& remaining, std::optional<GameRoom>& value);

// LobbyState: players (vector of optional PlayerInLobby), rooms (vector of optional GameRoom).
void ToBytes(LobbyState const& value, std::vector<unsigned char>& out);
bool FromBytes(unsigned char const*& cursor, std::size_t& remaining, LobbyState& value);

// GameResults: specBytes, finished, timestampMs (8), playerIds, playerNames, playerSlots,
// reportedResults.
void ToBytes(GameResults const& value, std::vector<unsigned char>& out);
bool FromBytes(unsigned char const*& cursor, std::size_t& remaining, GameResults& value);

// PlayerNameInfo: playerId (byte vector), name (string).
void ToBytes(PlayerNameInfo const& value, std::vector<unsigned char>& out);
bool FromBytes(unsigned char const*& cursor, std::size_t& remaining, PlayerNameInfo& value);
