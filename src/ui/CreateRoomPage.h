#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "app/UICmd.h"
#include "sim/Game.h"
#include "sim/GameSpec.h"
#include "ui/LobbyUIState.h"

class IAppState;
class IGame;

// A combo box over the values of the enumeration in order, showing the selected value's text (an empty
// one for a value out of range). Returns true if the value changed.
template <typename Enum>
bool EnumCombo(char const* label, Enum& value);

// The challenge and ranked match choices that the page uses for its game: one pair for the first game,
// one shared by the other two.
std::uint32_t& CoopChoice(LobbyUIState& state);
std::uint32_t& RankedChoice(LobbyUIState& state);

// The GameSpec that "Create room" sends for the page's current choices, with game as the chosen game's
// catalogue; nothing when the choice can't be made (a game without challenges or ranked matches, a
// custom settings list not yet filled). A remembered choice past the end of the game's list is brought
// back to 0, and a custom map that isn't one of the game's choices to the first of them.
std::optional<GameSpec> CreateRoomSpec(LobbyUIState& state, IGame const& game);

// The command that a click on "Create room" pushes for a GameSpec.
UICmd::CreateGame CreateRoomCommand(LobbyUIState const& state, GameSpec const& spec);

// The room creation page: game, description, delay, kind of game and its settings; "Create room" pushes
// UICmd::CreateGame, "Cancel" goes back to the multiplayer page.
void RenderCreateRoomPage(LobbyUIState& state, IAppState const& app, std::vector<UICmd>& commands);
