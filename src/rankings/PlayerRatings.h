#pragma once

#include <cstddef>
#include <optional>
#include <unordered_map>
#include <utility>
#include <vector>

#include "rankings/Glicko.h"
#include "rankings/MatchStandings.h"
#include "sim/GameResult.h"

// One ranking: the current rating of every player who has played a ranked game of it. Each client
// builds it from the stream of completed games, so the same games in the same order give the same
// table everywhere. A player enters at a first ranked game and is never removed; nothing decays.
class PlayerRatings {
public:
  using PlayerId = std::vector<unsigned char>;

  // A new player's rating.
  static constexpr double kNewRating = 1500.0;
  static constexpr double kNewDeviation = 350.0;
  static constexpr double kNewVolatility = 0.06;

  // rowOwner says how the results of this ranking's games are laid out (Glow Horde: Team; the ship
  // games: Player). Inferred guesses from the row count, which is right unless players chose slots out
  // of player order in a game where every player is a team.
  explicit PlayerRatings(ResultRowOwner rowOwner = ResultRowOwner::Inferred) : rowOwner_(rowOwner) {}

  // Rates one completed game. playerIds and playerSlots are the game's places, playerTeams the team of
  // each slot of its map. Every player is rated from the table as it stood before the game. A game
  // whose players, slots and rows don't fit together leaves the table as it was, with a line on the
  // standard error stream; so does a game in which one id fills two places. Returns whether it rated.
  bool updateForCompletedGame(std::vector<PlayerId> const& playerIds, std::vector<unsigned short> const& playerSlots,
                              std::vector<int> playerTeams, GameResult const& result);

  // The shown rating, nothing for a player not in the table.
  std::optional<double> getRatingFor(PlayerId const& id) const;
  // The full rating, or null.
  Glicko::Rating const* findRating(PlayerId const& id) const;

  // The best count players with their shown ratings, highest first; equal ratings by ascending id, so
  // that every client lists them alike.
  std::vector<std::pair<PlayerId, double>> getTopPlayers(unsigned long count) const;

  std::size_t size() const { return ratings_.size(); }

private:
  struct IdHash {
    std::size_t operator()(PlayerId const& id) const;
  };

  ResultRowOwner rowOwner_;
  std::unordered_map<PlayerId, Glicko::Rating, IdHash> ratings_;
};
