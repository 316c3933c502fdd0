#include "rankings/PlayerRatings.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <limits>

namespace {

// Byte order of two ids, written out: the library's vector comparison trips a false overread warning
// of the compiler when inlined into a sort.
bool IdLess(PlayerRatings::PlayerId const& a, PlayerRatings::PlayerId const& b) {
  std::size_t const common = std::min(a.size(), b.size());
  for (std::size_t i = 0; i < common; ++i) {
    if (a[i] != b[i]) {
      return a[i] < b[i];
    }
  }
  return a.size() < b.size();
}

void Refuse(char const* line) {
  std::fprintf(stderr, "%s\n", line);
  std::fflush(stderr);
}

}  // namespace

std::size_t PlayerRatings::IdHash::operator()(PlayerId const& id) const {
  // FNV-1a over the bytes: ids are short and the table only needs a spread.
  std::size_t hash = 1469598103934665603ull;
  for (unsigned char const byte : id) {
    hash = (hash ^ byte) * 1099511628211ull;
  }
  return hash;
}

bool PlayerRatings::updateForCompletedGame(std::vector<PlayerId> const& playerIds,
                                           std::vector<unsigned short> const& playerSlots,
                                           std::vector<int> playerTeams, GameResult const& result) {
  // Everything is checked before the first entry is made, so a refused game leaves no trace.
  std::vector<PlayerId> sortedIds = playerIds;
  std::sort(sortedIds.begin(), sortedIds.end(), IdLess);
  if (std::adjacent_find(sortedIds.begin(), sortedIds.end()) != sortedIds.end()) {
    Refuse("Completed game has duplicate player ids, not updating ratings for this game.");
    return false;
  }
  std::optional<MatchStandings> standings;
  if (playerIds.size() == playerSlots.size()) {
    standings = StandingsOfMatch(playerSlots, playerTeams, result.results, rowOwner_);
  }
  if (!standings) {
    Refuse("Completed game's players, slots and results don't fit together, not updating ratings for this game.");
    return false;
  }

  std::vector<Glicko::Rating> ratings;
  ratings.reserve(playerIds.size());
  for (PlayerId const& id : playerIds) {
    auto const entry =
        ratings_.try_emplace(id, Glicko::Rating(kNewRating, kNewDeviation, kNewVolatility)).first;
    ratings.push_back(entry->second);
  }

  Glicko::UpdateMatch(ratings.data(), static_cast<int>(ratings.size()), standings->teamOfPlayer.data(),
                      standings->placeOfTeam.data(), static_cast<int>(standings->placeOfTeam.size()));

  // A player with no opponent has pending values equal to the rating, so applying leaves it as it was.
  for (std::size_t i = 0; i < playerIds.size(); ++i) {
    ratings[i].Apply();
    ratings_.at(playerIds[i]) = ratings[i];
  }
  return true;
}

std::optional<double> PlayerRatings::getRatingFor(PlayerId const& id) const {
  Glicko::Rating const* rating = findRating(id);
  if (rating == nullptr) {
    return std::nullopt;
  }
  return rating->shownRating();
}

Glicko::Rating const* PlayerRatings::findRating(PlayerId const& id) const {
  auto const found = ratings_.find(id);
  return found == ratings_.end() ? nullptr : &found->second;
}

std::vector<std::pair<PlayerRatings::PlayerId, double>> PlayerRatings::getTopPlayers(unsigned long count) const {
  std::vector<std::pair<PlayerId, double>> players;
  players.reserve(ratings_.size());
  for (auto const& [id, rating] : ratings_) {
    players.emplace_back(id, rating.shownRating());
  }
  // A rating that isn't a number (it can't come from finite arithmetic) sorts last, keeping the order total.
  auto key = [](double rating) { return std::isnan(rating) ? -std::numeric_limits<double>::infinity() : rating; };
  std::sort(players.begin(), players.end(), [&](auto const& a, auto const& b) {
    double const ka = key(a.second);
    double const kb = key(b.second);
    return ka != kb ? ka > kb : IdLess(a.first, b.first);
  });
  if (players.size() > count) {
    players.resize(count);
  }
  return players;
}
