#pragma once

#include <cstddef>
#include <optional>
#include <vector>

#include "sim/Game.h"
#include "sim/GameResult.h"
#include "sim/GameSettings.h"

// The best results of the co-op and single-player challenges of one game, one table per challenge,
// best first. Rebuilt on each client from the completed games that the lobby reports.
class IAppState;
class PlayerNames;

class HighScoreTables {
public:
  struct Entry {
    std::vector<long long> result;  // the first row of the game's results
    unsigned short gameNumber = 0;

    friend bool operator==(Entry const&, Entry const&) = default;
  };

  static constexpr std::size_t kMaxEntries = 20;

  // challenges empty tables; a negative count gives none.
  HighScoreTables(Game game, int challenges);

  // Enters the first row of result in the challenge's table, ordered by row (CompareResultRows) and,
  // among equal rows, the newer game first; a table keeps its best kMaxEntries. Returns false and
  // changes nothing for a challenge with no table or a result without rows.
  bool addGame(CoopChallengeIndex challenge, unsigned short gameNumber, GameResult const& result);

  Game game() const { return game_; }
  std::size_t challengeCount() const { return tables_.size(); }
  // The table of one challenge; the index must be below challengeCount().
  std::vector<Entry> const& table(std::size_t challenge) const;

  // Draws the high score tab of the lobby: the challenges on the left, the selected one's table on the
  // right. Returns the number of a game whose results the player asked to see. (Drawn by the interface,
  // defined with the lobby pages.)
  std::optional<unsigned short> render(IAppState const& app, std::vector<NamedGameSettings> const& challenges,
                                       PlayerNames const& names) const;

  // The challenge shown on the high score tab; the tab changes it while drawing and resets it when the
  // catalogue has shrunk below it.
  mutable std::size_t selectedChallenge = 0;

private:
  Game game_;
  std::vector<std::vector<Entry>> tables_;
};
