#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "app/UICmd.h"
#include "ui/LobbyUIState.h"

class IAppState;
struct GameRoom;
struct LobbyState;
struct PlayerInLobby;
struct GameSpec;

// The room of the local player in the lobby's mirror: its number, or 65535 when it is in none or the
// mirror doesn't know the player.
unsigned short LocalRoomIndex(LobbyState const* lobby, unsigned short localPlayer);

// Turns the page by the local player's room: 2 while in a room, and from 2 back to 0 once out of it.
// Returns the page's title.
char const* UpdateLobbyPage(LobbyUIState& state, unsigned short roomIndex);

// What the game room page offers the local player.
struct GameRoomControls {
  bool inRoom = false;       // the local player is one of the room's players
  bool isHost = false;       // it is the room's first player: it alone has "START GAME"
  bool allReady = false;     // every player of the room is ready: "START GAME" is enabled
  bool localReady = false;   // without it the page asks to click in
  std::int16_t slotChoice = -1;  // the local player's slot choice, -1 automatic
};
GameRoomControls GameRoomControlsFor(GameRoom const& room, unsigned short localPlayer);

// The command of a click on a slot button (0 to 3, or -1 for "Auto"): none when it is the choice already.
std::optional<UICmd::MoveToSlot> SlotClick(std::int16_t currentChoice, std::int16_t clicked);

// The kind of a room: "Co-op challenge", "Ranked match" or "Friendly game".
char const* RoomKindText(GameSpec const& spec);

// The status of a room's player in the room list: "In game", "Ready" or "In lobby".
char const* RoomPlayerStatus(LobbyState const& lobby, GameRoom const& room, std::size_t place);

// The lobby: the multiplayer page with its tabs, the room creation page, or the game room page.
void LobbyUI(LobbyUIState& state, IAppState const& app, std::vector<UICmd>& commands);

void RenderServerOverview(LobbyUIState& state, IAppState const& app, std::vector<UICmd>& commands);
void RenderGameRoomDetails(LobbyUIState& state, IAppState const& app, int room, std::vector<UICmd>& commands);
void RenderGameLobby(IAppState const& app, LobbyUIState& state, std::vector<UICmd>& commands);
void DrawPlayerCard(IAppState const& app, LobbyUIState& state, unsigned short playerNumber, PlayerInLobby const& player,
                    bool isHost, bool isLocal, float width, int slot, bool slotChosen, bool ready, bool inGame,
                    std::vector<UICmd>& commands);
void RenderNameChangeUI(IAppState const& app, LobbyUIState& state, std::vector<UICmd>& commands);
