#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "ui/GameResultsDisplay.h"
#include "ui/InGameUI.h"

namespace {

using Rows = std::vector<std::vector<long long>>;

TEST(GameEndSummaryTest, TheWinnerMustBeatTheSecondRowStrictly) {
  struct Case {
    Rows rows;
    std::size_t players;
    std::vector<std::size_t> order;
    int winner;  // -1 for none
    char const* title;
    bool teamRows;
  };
  Case const cases[] = {
      // Glow Horde rows: units out, then minus the total time in milliseconds; more out wins first.
      {{{1, -30000}, {2, -90000}}, 2, {1, 0}, 1, "Winner: blue!", false},
      // Equal counts: the shorter total time (the greater negative number) wins.
      {{{2, -50000}, {2, -40000}, {0, 0}}, 3, {1, 0, 2}, 1, "Winner: blue!", false},
      // Equal rows: a tie, both listed, in their own order.
      {{{3, -1000}, {3, -1000}}, 2, {0, 1}, -1, "Tied game!", false},
      // The longer row wins on a common prefix.
      {{{4}, {4, 0}}, 2, {1, 0}, 1, "Winner: blue!", false},
      // Values compare as signed numbers.
      {{{-1}, {0}, {-5}}, 3, {1, 0, 2}, 1, "Winner: blue!", false},
      // The first two tie, the third is behind: no winner.
      {{{1}, {5}, {5}}, 3, {1, 2, 0}, -1, "Tied game!", false},
      {{{1, -20000}}, 1, {0}, -1, "Single player results", false},
      {{{1, -20000}}, 3, {0}, -1, "Co-op results", true},
      // Two teams of two: rows are teams'.
      {{{0}, {7}}, 4, {1, 0}, 1, "Winner: blue!", true},
      {{{9}, {7}, {8}, {6}}, 4, {0, 2, 1, 3}, 0, "Winner: green!", false},
      {{}, 2, {}, -1, "Tied game!", true},
  };
  for (Case const& c : cases) {
    GameResult result;
    result.results = c.rows;
    GameEndSummary const summary = SummariseGameEnd(result, c.players);
    SCOPED_TRACE(testing::Message() << "rows " << testing::PrintToString(c.rows) << ", players " << c.players);
    EXPECT_EQ(summary.order, c.order);
    EXPECT_EQ(summary.winner.has_value() ? static_cast<int>(*summary.winner) : -1, c.winner);
    EXPECT_EQ(summary.title, c.title);
    EXPECT_EQ(summary.teamRows, c.teamRows);
  }
}

TEST(GameEndSummaryTest, TheResultsTableStatusComparesReportsByteForByte) {
  struct Case {
    bool finished;
    std::vector<std::vector<unsigned char>> reports;
    char const* status;
  };
  Case const cases[] = {
      {false, {{1, 2}, {}}, "Running"},
      {true, {{}, {}}, "No results"},
      {true, {}, "No results"},
      {true, {{1, 2}, {}, {1, 2}}, "Completed"},
      {true, {{1, 2}, {1, 3}}, "Desynch or disagreement"},
      {true, {{1, 2}, {1, 2, 0}}, "Desynch or disagreement"},
  };
  for (Case const& c : cases) {
    GameResults results;
    results.finished = c.finished;
    results.reportedResults = c.reports;
    EXPECT_EQ(std::string(GameResultsStatus(results)), c.status) << testing::PrintToString(c.reports);
  }
}

}  // namespace
