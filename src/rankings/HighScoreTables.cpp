#include "rankings/HighScoreTables.h"

#include <algorithm>

#include "app/QZAssert.h"

HighScoreTables::HighScoreTables(Game game, int challenges)
    : game_(game), tables_(static_cast<std::size_t>(std::max(challenges, 0))) {}

bool HighScoreTables::addGame(CoopChallengeIndex challenge, unsigned short gameNumber, GameResult const& result) {
  if (challenge.index >= tables_.size() || result.results.empty()) {
    return false;
  }
  std::vector<Entry>& table = tables_[challenge.index];
  Entry entry{result.results.front(), gameNumber};
  // The first entry that the new one beats: a lower row, or an equal row of an older game.
  auto const position = std::find_if(table.begin(), table.end(), [&](Entry const& other) {
    int const order = CompareResultRows(entry.result, other.result);
    return order > 0 || (order == 0 && entry.gameNumber > other.gameNumber);
  });
  table.insert(position, std::move(entry));
  if (table.size() > kMaxEntries) {
    table.pop_back();
  }
  return true;
}

std::vector<HighScoreTables::Entry> const& HighScoreTables::table(std::size_t challenge) const {
  QZ_ASSERT(challenge < tables_.size());
  return tables_[challenge];
}
