#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

// The client's mirror of the server's lobby, replaced as a whole by each LOBBY_STATE message.
// A player is known by a 2-byte number, valid for one connection, that indexes LobbyState::players,
// and by a stable 8-byte playerId.

struct PlayerInLobby {
  static constexpr unsigned short kNoRoom = 65535;

  std::vector<unsigned char> playerId;
  unsigned short roomIndex = kNoRoom;

  friend bool operator==(PlayerInLobby const&, PlayerInLobby const&) = default;
};

// A game of a room while it runs.
struct RunningGameState {
  unsigned short portOffset = 0;  // the game's datagram port relative to the server's base port
  bool udpServerRunning = false;
  std::vector<unsigned short> players;  // player numbers of the running game
  std::vector<bool> disconnected;       // parallel to players

  friend bool operator==(RunningGameState const&, RunningGameState const&) = default;
};

struct GameRoom {
  std::string description;
  unsigned short minPlayers = 0;  // as sent when the room was created; the client doesn't read it
  unsigned short maxPlayers = 0;  // the number of places
  std::vector<unsigned char> specBytes;  // an encoded GameSpec, passed back untouched
  bool repeatedIdsAllowed = false;
  std::vector<unsigned short> players;  // in order of arrival; the first is the host
  std::vector<short> slotChoices;       // parallel to players: 0 to 3, or -1 for automatic
  std::vector<short> assignedSlots;     // parallel to players: the slot each player has
  std::vector<bool> ready;              // parallel to players
  unsigned long long roomToken = 0;     // opaque, echoed in GAME_START
  std::optional<RunningGameState> runningGame;
  std::optional<unsigned short> lastResultsIndex;  // the number of this room's last played game

  friend bool operator==(GameRoom const&, GameRoom const&) = default;
};

struct LobbyState {
  // Player and room numbers have 2 bytes, so neither vector can hold more entries than this. The
  // reader refuses a longer vector before allocating it.
  static constexpr std::size_t kMaxEntries = 65536;

  std::vector<std::optional<PlayerInLobby>> players;  // by player number; absent = number not in use
  std::vector<std::optional<GameRoom>> rooms;         // by room number; absent = number not in use

  // The elements by index, unchecked: the caller makes sure that the number is valid.
  std::optional<PlayerInLobby> const& player(unsigned short number) const { return players[number]; }
  std::optional<GameRoom> const& game(unsigned short number) const { return rooms[number]; }
  std::optional<GameRoom>& game(unsigned short number) { return rooms[number]; }

  // Whether the player takes part in the running game of its room. index is set to 0 first, then to
  // the player's position in the running game's players if it is there; a player marked disconnected
  // gets its position but counts as not in the game. A player number or room that the mirror doesn't
  // hold counts as not in a game.
  bool playerIsInRunningGame(unsigned short playerNumber, unsigned short& index) const;

  friend bool operator==(LobbyState const&, LobbyState const&) = default;
};

// A player can join a room that has a free place and no running game.
bool CanAddToGame(GameRoom const& room);
