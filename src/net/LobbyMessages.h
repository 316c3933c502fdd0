#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "net/LobbyState.h"
#include "net/MessageType.h"
#include "net/PlayerNames.h"
#include "net/ServerInfo.h"
#include "sim/GameResult.h"
#include "sim/GameResults.h"

// The bytes of every lobby message, for both ends of the connection. A message is the payload of one
// TCP frame: the MessageType byte, then the body laid out by the record encoding (WireEncoding.h).
//
// Encode* returns the whole message, type byte first, ready to be framed.
// Decode* reads a body: the bytes after the type byte. It returns false when the body doesn't hold
// the message and never reads past size. Readers that are lenient by protocol say so.
namespace LobbyMessages {

// The protocol version of this client and the oldest server version it accepts.
inline constexpr std::uint32_t kProtocolVersion = 1003;
inline constexpr std::uint32_t kOldestRefusedServerVersion = 1002;

// The room number that means "no room".
inline constexpr unsigned short kLeaveRoom = 65535;

// VERSION: the sender's protocol version, 4 bytes.
std::vector<unsigned char> EncodeVersion(std::uint32_t version);
bool DecodeVersion(unsigned char const* body, std::size_t size, std::uint32_t& version);

// CONNECTION_RESPONSE: accepted (1 byte), then the challenge as a byte vector.
struct ConnectionResponse {
  bool accepted = false;
  std::vector<unsigned char> challenge;
};
std::vector<unsigned char> EncodeConnectionResponse(ConnectionResponse const& message);
// Fails on an empty body. A refusal needs nothing after the flag; an acceptance needs the whole
// challenge.
bool DecodeConnectionResponse(unsigned char const* body, std::size_t size, ConnectionResponse& message);

// AUTH_REQUEST: playerId as a byte vector, then the salted hash, 8 bytes.
struct AuthRequest {
  std::vector<unsigned char> playerId;
  std::uint64_t saltedHash = 0;
};
std::vector<unsigned char> EncodeAuthRequest(AuthRequest const& message);
bool DecodeAuthRequest(unsigned char const* body, std::size_t size, AuthRequest& message);

// AUTH_RESPONSE: granted (1 byte); if refused the reason as a string; if granted the ServerInfo
// (read tolerantly: missing fields keep their defaults) and the player's number in the lobby, 2 bytes.
struct AuthResponse {
  bool granted = false;
  std::string reason;
  ServerInfo serverInfo;
  unsigned short playerNumber = 0;
};
std::vector<unsigned char> EncodeAuthResponse(AuthResponse const& message);
// Fails on an empty body, a refusal without a readable reason, and a grant without the 2-byte
// number. On failure message holds what was read (serverInfo included).
bool DecodeAuthResponse(unsigned char const* body, std::size_t size, AuthResponse& message);

// LOBBY_STATE: the whole LobbyState. The client reads it over its mirror with FromBytes.
std::vector<unsigned char> EncodeLobbyState(LobbyState const& state);
bool DecodeLobbyState(unsigned char const* body, std::size_t size, LobbyState& state);

// MOVE_TO_GAME_ROOM: the room number, 2 bytes; kLeaveRoom to leave.
std::vector<unsigned char> EncodeMoveToGameRoom(unsigned short room);
bool DecodeMoveToGameRoom(unsigned char const* body, std::size_t size, unsigned short& room);

// SET_READY_STATE: 1 byte.
std::vector<unsigned char> EncodeSetReadyState(bool ready);
bool DecodeSetReadyState(unsigned char const* body, std::size_t size, bool& ready);

// MOVE_TO_SLOT: the slot, 2 bytes signed; -1 is automatic.
std::vector<unsigned char> EncodeMoveToSlot(short slot);
bool DecodeMoveToSlot(unsigned char const* body, std::size_t size, short& slot);

// CREATE_GAME: description (string), specBytes (byte vector), minPlayers, maxPlayers (2 bytes each),
// repeatedIdsAllowed (1 byte).
struct CreateGame {
  std::string description;
  std::vector<unsigned char> specBytes;
  unsigned short minPlayers = 0;
  unsigned short maxPlayers = 0;
  bool repeatedIdsAllowed = false;

  friend bool operator==(CreateGame const&, CreateGame const&) = default;
};
std::vector<unsigned char> EncodeCreateGame(CreateGame const& message);
bool DecodeCreateGame(unsigned char const* body, std::size_t size, CreateGame& message);

// GAME_START: 8 bytes. From a client the roomToken of its room, from the server the session token.
std::vector<unsigned char> EncodeGameStart(std::uint64_t token);
bool DecodeGameStart(unsigned char const* body, std::size_t size, std::uint64_t& token);

// RUNNING_GAME_STATE: the RunningGameState of the recipient's room.
std::vector<unsigned char> EncodeRunningGameState(RunningGameState const& state);
bool DecodeRunningGameState(unsigned char const* body, std::size_t size, RunningGameState& state);

// GAME_END: an 8-byte length, then the bytes of the GameResult; length 0 when there is none.
std::vector<unsigned char> EncodeGameEnd(std::optional<GameResult> const& result);
// resultBytes receives the GameResult's bytes as they stand (empty if none), for the server's list.
bool DecodeGameEnd(unsigned char const* body, std::size_t size, std::vector<unsigned char>& resultBytes);

// GAME_RESULTS: the number of the first game, 4 bytes; an 8-byte count; that many GameResults.
std::vector<unsigned char> EncodeGameResults(std::uint32_t firstGame, std::vector<GameResults> const& games);
// The client's reading: with a body too short for the two header fields, or a count above the bytes
// left, nothing changes and the result is false. Otherwise firstGame is stored, games is resized to
// the count and read over element by element, stopping (false) at the first that fails.
bool DecodeGameResults(unsigned char const* body, std::size_t size, std::uint32_t& firstGame,
                       std::vector<GameResults>& games);

// PLAYER_NAMES: an 8-byte count, then that many PlayerNameInfo.
std::vector<unsigned char> EncodePlayerNames(std::vector<PlayerNameInfo> const& names);
// Lenient, never fails: a count of 0 or above the bytes left gives an empty list; otherwise the list
// has count entries, read while the bytes suffice; entries after the first short one stay empty.
std::vector<PlayerNameInfo> DecodePlayerNames(unsigned char const* body, std::size_t size);

// CHANGE_NAME: the name as a string.
std::vector<unsigned char> EncodeChangeName(std::string const& name);
bool DecodeChangeName(unsigned char const* body, std::size_t size, std::string& name);

// SERVER_ERROR: fatal (1 byte), then the text as a string.
struct ServerError {
  bool fatal = false;
  std::string text;
};
std::vector<unsigned char> EncodeServerError(ServerError const& message);
// Fails on fewer than 9 bytes or a text longer than the bytes left.
bool DecodeServerError(unsigned char const* body, std::size_t size, ServerError& message);

// KEEP_ALIVE: no body.
std::vector<unsigned char> EncodeKeepAlive();

// REQUEST_RECORDING: the game number, 2 bytes.
std::vector<unsigned char> EncodeRequestRecording(unsigned short game);
bool DecodeRequestRecording(unsigned char const* body, std::size_t size, unsigned short& game);

// RECORDING_DATA: the game number, 2 bytes, then the recording file as a byte vector.
struct RecordingData {
  unsigned short game = 0;
  std::vector<unsigned char> bytes;
};
std::vector<unsigned char> EncodeRecordingData(RecordingData const& message);
// Fails on fewer than 10 bytes or a vector longer than the bytes left.
bool DecodeRecordingData(unsigned char const* body, std::size_t size, RecordingData& message);

}  // namespace LobbyMessages
