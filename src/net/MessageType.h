#pragma once

#include <cstdint>

// The first byte of every lobby message. 0 to 3 belong to the login exchange, the rest to the lobby
// session that follows it.
enum class MessageType : std::uint8_t {
  VERSION = 0,              // both ways
  CONNECTION_RESPONSE = 1,  // server: accepted flag and the challenge
  AUTH_REQUEST = 2,         // client: playerId and salted hash
  AUTH_RESPONSE = 3,        // server: granted or refused
  LOBBY_STATE = 4,          // server
  MOVE_TO_GAME_ROOM = 5,    // client
  SET_READY_STATE = 6,      // client
  MOVE_TO_SLOT = 7,         // client
  CREATE_GAME = 8,          // client
  GAME_START = 9,           // client asks with the room token; server answers with the session token
  RUNNING_GAME_STATE = 10,  // server
  GAME_END = 11,            // client
  GAME_RESULTS = 12,        // server
  PLAYER_NAMES = 13,        // server
  CHANGE_NAME = 14,         // client
  SERVER_ERROR = 15,        // server
  KEEP_ALIVE = 16,          // client
  REQUEST_RECORDING = 17,   // client
  RECORDING_DATA = 18,      // server
};

// The name of a message type for log lines. GAME_RESULTS has no text of its own and, like any value
// above 18, gives "UNKNOWN".
char const* MessageTypeToString(MessageType type);
