#include <gtest/gtest.h>

#include <vector>

#include "rankings/HighScoreTables.h"

namespace {

GameResult ResultWith(std::vector<std::vector<long long>> rows) { return GameResult{100, std::move(rows), 7}; }

std::vector<unsigned short> GameNumbers(std::vector<HighScoreTables::Entry> const& table) {
  std::vector<unsigned short> numbers;
  for (auto const& entry : table) {
    numbers.push_back(entry.gameNumber);
  }
  return numbers;
}

}  // namespace

TEST(HighScoreTables, OrderOfRowsAndOfEqualResults) {
  HighScoreTables tables(Game::GlowHorde, 2);
  ASSERT_EQ(tables.challengeCount(), 2u);
  // Only the first row counts; more units first, then the lesser total time (the greater negative).
  struct Add {
    unsigned short game;
    std::vector<long long> row;
  };
  for (Add const& add : std::vector<Add>{{1, {5, -9000}}, {2, {6, -20000}}, {3, {5, -8000}}, {4, {5, -9000}},
                                         {5, {5}}, {6, {5, -9000, 1}}, {7, {-1}}}) {
    ASSERT_TRUE(tables.addGame(CoopChallengeIndex{1}, add.game, ResultWith({add.row, {99, 0}})));
  }
  // A prefix ranks below the longer row; of equal rows the newer game comes first.
  EXPECT_EQ(GameNumbers(tables.table(1)), (std::vector<unsigned short>{2, 3, 6, 4, 1, 5, 7}));
  EXPECT_EQ(tables.table(1)[0].result, (std::vector<long long>{6, -20000}));
  EXPECT_TRUE(tables.table(0).empty());

  // What no table can take changes nothing.
  EXPECT_FALSE(tables.addGame(CoopChallengeIndex{2}, 8, ResultWith({{1}})));
  EXPECT_FALSE(tables.addGame(CoopChallengeIndex{0}, 8, ResultWith({})));
  EXPECT_TRUE(tables.table(0).empty());
  EXPECT_EQ(HighScoreTables(Game::GlowHorde, -3).challengeCount(), 0u);
}

TEST(HighScoreTables, TwentyEntriesAtMost) {
  HighScoreTables tables(Game::GlowHorde, 1);
  for (unsigned short g = 1; g <= 20; ++g) {
    tables.addGame(CoopChallengeIndex{0}, g, ResultWith({{static_cast<long long>(g) * 10}}));
  }
  ASSERT_EQ(tables.table(0).size(), 20u);
  // The 21st, worst of all, is dropped at once.
  tables.addGame(CoopChallengeIndex{0}, 21, ResultWith({{5}}));
  ASSERT_EQ(tables.table(0).size(), 20u);
  EXPECT_EQ(tables.table(0).back().gameNumber, 1);
  // A better one pushes the old last entry out.
  tables.addGame(CoopChallengeIndex{0}, 22, ResultWith({{15}}));
  ASSERT_EQ(tables.table(0).size(), 20u);
  EXPECT_EQ(tables.table(0).front().gameNumber, 20);
  EXPECT_EQ(tables.table(0).back().gameNumber, 22);
}
