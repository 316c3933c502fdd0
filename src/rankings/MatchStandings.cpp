#include "rankings/MatchStandings.h"

#include <algorithm>
#include <numeric>

#include "sim/GameResult.h"

std::vector<int> PlacesOfRows(std::vector<std::vector<long long>> const& rows) {
  std::vector<std::size_t> order(rows.size());
  std::iota(order.begin(), order.end(), std::size_t{0});
  std::stable_sort(order.begin(), order.end(),
                   [&](std::size_t a, std::size_t b) { return CompareResultRows(rows[a], rows[b]) > 0; });
  std::vector<int> places(rows.size(), 0);
  for (std::size_t i = 1; i < order.size(); ++i) {
    int const previous = places[order[i - 1]];
    places[order[i]] = CompareResultRows(rows[order[i]], rows[order[i - 1]]) == 0 ? previous : previous + 1;
  }
  return places;
}

std::optional<MatchStandings> StandingsOfMatch(std::vector<unsigned short> const& playerSlots,
                                               std::vector<int> const& playerTeams,
                                               std::vector<std::vector<long long>> const& rows,
                                               ResultRowOwner owner) {
  if (rows.empty()) {
    return std::nullopt;
  }
  std::size_t const players = playerSlots.size();

  // The map's team of each player, then the teams in play numbered in ascending order.
  std::vector<int> mapTeams;
  mapTeams.reserve(players);
  for (unsigned short const slot : playerSlots) {
    if (slot >= playerTeams.size()) {
      return std::nullopt;
    }
    mapTeams.push_back(playerTeams[slot]);
  }
  std::vector<int> teamsInPlay = mapTeams;
  std::sort(teamsInPlay.begin(), teamsInPlay.end());
  teamsInPlay.erase(std::unique(teamsInPlay.begin(), teamsInPlay.end()), teamsInPlay.end());

  MatchStandings standings;
  standings.teamOfPlayer.reserve(players);
  for (int const mapTeam : mapTeams) {
    auto const found = std::lower_bound(teamsInPlay.begin(), teamsInPlay.end(), mapTeam);
    standings.teamOfPlayer.push_back(static_cast<int>(found - teamsInPlay.begin()));
  }

  if (owner == ResultRowOwner::Inferred) {
    owner = rows.size() < players ? ResultRowOwner::Team : ResultRowOwner::Player;
  }
  std::vector<int> const rowPlaces = PlacesOfRows(rows);
  if (owner == ResultRowOwner::Team) {
    if (teamsInPlay.size() > rows.size()) {
      return std::nullopt;
    }
    standings.placeOfTeam.assign(rowPlaces.begin(), rowPlaces.begin() + static_cast<std::ptrdiff_t>(teamsInPlay.size()));
  } else {
    if (players > rows.size()) {
      return std::nullopt;
    }
    // A team stands where its best player stands.
    standings.placeOfTeam.assign(teamsInPlay.size(), static_cast<int>(rows.size()));
    for (std::size_t i = 0; i < players; ++i) {
      int& place = standings.placeOfTeam[static_cast<std::size_t>(standings.teamOfPlayer[i])];
      place = std::min(place, rowPlaces[i]);
    }
  }
  return standings;
}
