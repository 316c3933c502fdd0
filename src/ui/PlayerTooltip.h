#pragma once

#include <cstddef>
#include <string>
#include <vector>

class PlayerNames;
class PlayerRatings;

// The first bytes of a player id in upper-case hexadecimal, two digits a byte; fewer if the id is shorter.
std::string GetShortId(std::vector<unsigned char> const& id, std::size_t bytes);

// The text of a player's tooltip: the short id, the ratings that the two tables know (cut to integers),
// and, if names are given and the player's current name differs from shownName, " now:" and that name.
std::string PlayerTooltipText(std::string const& shownName, PlayerNames const* names, PlayerRatings const* first,
                              PlayerRatings const* second, std::vector<unsigned char> const& id);

// Shows that text as the tooltip of the last item. The lobby's form leaves the name out.
void PlayerTooltip(std::string const& shownName, PlayerNames const* names, PlayerRatings const* first,
                   PlayerRatings const* second, std::vector<unsigned char> const& id);
void PlayerTooltip(PlayerRatings const* first, PlayerRatings const* second, std::vector<unsigned char> const& id);
