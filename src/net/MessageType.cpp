#include "net/MessageType.h"

char const* MessageTypeToString(MessageType type) {
  switch (type) {
    case MessageType::VERSION: return "VERSION";
    case MessageType::CONNECTION_RESPONSE: return "CONNECTION_RESPONSE";
    case MessageType::AUTH_REQUEST: return "AUTH_REQUEST";
    case MessageType::AUTH_RESPONSE: return "AUTH_RESPONSE";
    case MessageType::LOBBY_STATE: return "LOBBY_STATE";
    case MessageType::MOVE_TO_GAME_ROOM: return "MOVE_TO_GAME_ROOM";
    case MessageType::SET_READY_STATE: return "SET_READY_STATE";
    case MessageType::MOVE_TO_SLOT: return "MOVE_TO_SLOT";
    case MessageType::CREATE_GAME: return "CREATE_GAME";
    case MessageType::GAME_START: return "GAME_START";
    case MessageType::RUNNING_GAME_STATE: return "RUNNING_GAME_STATE";
    case MessageType::GAME_END: return "GAME_END";
    case MessageType::PLAYER_NAMES: return "PLAYER_NAMES";
    case MessageType::CHANGE_NAME: return "CHANGE_NAME";
    case MessageType::SERVER_ERROR: return "SERVER_ERROR";
    case MessageType::KEEP_ALIVE: return "KEEP_ALIVE";
    case MessageType::REQUEST_RECORDING: return "REQUEST_RECORDING";
    case MessageType::RECORDING_DATA: return "RECORDING_DATA";
    case MessageType::GAME_RESULTS: break;
  }
  return "UNKNOWN";
}
