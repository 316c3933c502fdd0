#pragma once

#include <vector>

#include "sim/Game.h"
#include "sim/GameResults.h"
#include "sim/GameSpec.h"

class Games;
class IAppState;
class IGame;
class PlayerNames;
class PlayerRatings;

// The game of that number in the registry, or null for a number that a record from elsewhere made up.
IGame const* FindGame(Games const& games, Game game);

// The list of played games: date, type, status and players, one selectable row each. A click on a row
// sets selectedRow.
void ShowGameResultsTable(std::vector<GameResults> const& games, int& selectedRow);
// The same over the lobby's played games, given by their numbers.
void ShowGameResultsTable(IAppState const& state, std::vector<unsigned int> const& numbers, int& selectedRow);

// The players of one game and what they reported: the agreed result, or the disagreement. Names and the
// two rating tables (Glow Horde's, the other games') feed the players' tooltips; each may be null.
void ShowGameResults(IAppState const& state, Game game, PlayerNames const* names, PlayerRatings const* first,
                     PlayerRatings const* second, GameResults const& results);

// The settings of a game: its kind, map, player counts, delay, duration, the orders of Glow Horde and
// the teams of the map. Settings that the game doesn't know are shown as unknown, never looked up blindly.
void ShowGameSettings(IGame const& game, GameSpec const& spec);

// The status text of a played game in the table: "Running", "No results", "Desynch or disagreement" or
// "Completed".
char const* GameResultsStatus(GameResults const& results);
