#pragma once

#include <cstddef>
#include <optional>
#include <vector>

// How the rows of a game's result rank its players: each player's team and each team's place, the
// input of Glicko::UpdateMatch.

// Who a result row belongs to. Glow Horde writes one row per team in play, in the order of the teams'
// exits; the ship games write one row per player in player order. Inferred reads a result with fewer
// rows than players as rows by team, and otherwise row i as player i's.
enum class ResultRowOwner { Inferred, Team, Player };

// The place of each row: rows sorted greatest first (CompareResultRows), the first at place 0, each
// next row at the place of the one before if equal to it, one more if not.
std::vector<int> PlacesOfRows(std::vector<std::vector<long long>> const& rows);

struct MatchStandings {
  std::vector<int> teamOfPlayer;  // by player, team numbers 0 .. placeOfTeam.size() - 1
  std::vector<int> placeOfTeam;   // 0 the best; equal results share a place
};

// Teams are numbered in ascending order of the map's team numbers of the slots in play, which is the
// order of the exits. With rows by team, team k owns row k. With rows by player, a team takes the
// best place of its players. Nothing if the input doesn't fit together: a slot without a team, rows
// too few for the teams or players in play, or no rows at all.
std::optional<MatchStandings> StandingsOfMatch(std::vector<unsigned short> const& playerSlots,
                                               std::vector<int> const& playerTeams,
                                               std::vector<std::vector<long long>> const& rows,
                                               ResultRowOwner owner);
