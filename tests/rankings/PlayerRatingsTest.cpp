#include <gtest/gtest.h>

#include <limits>
#include <optional>
#include <string>
#include <vector>

#include "rankings/MatchStandings.h"
#include "rankings/PlayerRatings.h"

// Expected ratings come from an independent script of the published Glicko-2 formulas.
namespace {

using Id = PlayerRatings::PlayerId;
using Rows = std::vector<std::vector<long long>>;

Id IdOf(int n) { return Id(8, static_cast<unsigned char>(n)); }

GameResult ResultWith(Rows rows) { return GameResult{100, std::move(rows), 7}; }

}  // namespace

TEST(MatchStandings, PlacesByTheOneRowComparison) {
  long long const kMin = std::numeric_limits<long long>::min();
  struct Case {
    Rows rows;
    std::vector<int> places;
  };
  std::vector<Case> const cases{
      {{{3, -900}, {3, -800}, {1, 0}}, {1, 0, 2}},           // the first number decides, the second breaks ties
      {{{2, 5}, {2, 5}, {2}}, {0, 0, 1}},                    // equal rows share a place; a prefix is the lesser
      {{{-1}, {kMin}, {0}, {-1}}, {1, 2, 0, 1}},             // signed, not unsigned
      {{{}, {0}}, {1, 0}},
  };
  for (Case const& c : cases) {
    EXPECT_EQ(PlacesOfRows(c.rows), c.places);
  }
}

TEST(MatchStandings, RowOwnersAndUnfittingInput) {
  std::vector<int> const pairs{0, 1, 0, 1};
  std::vector<int> const own{0, 1, 2};
  Rows const three{{3, -100}, {1, -50}, {2, -10}};
  struct Case {
    char const* name;
    std::vector<unsigned short> slots;
    std::vector<int> teams;
    Rows rows;
    ResultRowOwner owner;
    std::optional<MatchStandings> expected;
  };
  std::vector<Case> const cases{
      {"pairs in slot order", {0, 1, 2, 3}, pairs, {{5, 0}, {6, 0}}, ResultRowOwner::Inferred, MatchStandings{{0, 1, 0, 1}, {1, 0}}},
      // Slots 0 and 2 are both team 0: one team in play, one row.
      {"one team in play", {2, 0}, pairs, {{5, 0}}, ResultRowOwner::Team, MatchStandings{{0, 0}, {0}}},
      // Teams in play are numbered in the order of their exits, whatever slots the players took.
      {"own teams, rows by team", {2, 0, 1}, own, three, ResultRowOwner::Team, MatchStandings{{2, 0, 1}, {0, 2, 1}}},
      {"own teams, rows by player", {2, 0, 1}, own, three, ResultRowOwner::Player, MatchStandings{{2, 0, 1}, {2, 1, 0}}},
      {"inferred as by player", {2, 0, 1}, own, three, ResultRowOwner::Inferred, MatchStandings{{2, 0, 1}, {2, 1, 0}}},
      // By player, a team stands where its best player stands.
      {"team by its best player", {0, 1, 2, 3}, pairs, {{1}, {4}, {9}, {2}}, ResultRowOwner::Player, MatchStandings{{0, 1, 0, 1}, {0, 1}}},
      {"slot without a team", {0, 4}, pairs, {{1}, {2}}, ResultRowOwner::Inferred, std::nullopt},
      {"fewer rows than teams", {0, 1}, pairs, {{1}}, ResultRowOwner::Team, std::nullopt},
      {"fewer rows than players", {0, 1, 2}, own, {{1}, {2}}, ResultRowOwner::Player, std::nullopt},
      {"no rows", {0}, own, {}, ResultRowOwner::Inferred, std::nullopt},
  };
  for (Case const& c : cases) {
    std::optional<MatchStandings> const got = StandingsOfMatch(c.slots, c.teams, c.rows, c.owner);
    ASSERT_EQ(got.has_value(), c.expected.has_value()) << c.name;
    if (got) {
      EXPECT_EQ(got->teamOfPlayer, c.expected->teamOfPlayer) << c.name;
      EXPECT_EQ(got->placeOfTeam, c.expected->placeOfTeam) << c.name;
    }
  }
}

TEST(PlayerRatings, FirstGamesWinsDrawsAndUnknownIds) {
  PlayerRatings table;
  EXPECT_FALSE(table.getRatingFor(IdOf(1)).has_value());

  // Two new players, the first ahead.
  ASSERT_TRUE(table.updateForCompletedGame({IdOf(1), IdOf(2)}, {0, 1}, {0, 1, 2, 3}, ResultWith({{900, 10}, {900, 9}})));
  EXPECT_NEAR(*table.getRatingFor(IdOf(1)), 1662.3108939063, 1e-6);
  EXPECT_NEAR(*table.getRatingFor(IdOf(2)), 1337.6891060937, 1e-6);
  EXPECT_NEAR(table.findRating(IdOf(1))->shownDeviation(), 290.3189637180, 1e-6);

  // Two new players with equal rows draw: each stays at 1500, both deviations shrink alike.
  ASSERT_TRUE(table.updateForCompletedGame({IdOf(3), IdOf(4)}, {0, 1}, {0, 1, 2, 3}, ResultWith({{2, 2}, {2, 2}})));
  for (int id : {3, 4}) {
    EXPECT_NEAR(*table.getRatingFor(IdOf(id)), 1500.0, 1e-9);
    EXPECT_NEAR(table.findRating(IdOf(id))->shownDeviation(), 290.3189616138, 1e-6);
  }
  EXPECT_FALSE(table.getRatingFor(IdOf(5)).has_value());
  EXPECT_EQ(table.size(), 4u);
}

TEST(PlayerRatings, RowsByTeamFollowTheSlotsThePlayersChose) {
  // Three new players in a map where every slot is a team, holding slots 2, 0, 1. By team, row k is the
  // k-th team in play: player 1 (slot 0) has the best row, player 0 (slot 2) the middle one.
  Rows const rows{{3, -100}, {1, -50}, {2, -10}};
  PlayerRatings byTeam(ResultRowOwner::Team);
  ASSERT_TRUE(byTeam.updateForCompletedGame({IdOf(0), IdOf(1), IdOf(2)}, {2, 0, 1}, {0, 1, 2}, ResultWith(rows)));
  EXPECT_NEAR(*byTeam.getRatingFor(IdOf(0)), 1500.0, 1e-9);
  EXPECT_NEAR(*byTeam.getRatingFor(IdOf(1)), 1674.8802858057, 1e-6);
  EXPECT_NEAR(*byTeam.getRatingFor(IdOf(2)), 1325.1197141943, 1e-6);

  // Read by player, the same rows make player 0 the winner.
  PlayerRatings byPlayer(ResultRowOwner::Player);
  ASSERT_TRUE(byPlayer.updateForCompletedGame({IdOf(0), IdOf(1), IdOf(2)}, {2, 0, 1}, {0, 1, 2}, ResultWith(rows)));
  EXPECT_NEAR(*byPlayer.getRatingFor(IdOf(0)), 1674.8802858057, 1e-6);
}

TEST(PlayerRatings, RefusedGamesLeaveNoTrace) {
  struct Case {
    char const* name;
    std::vector<Id> ids;
    std::vector<unsigned short> slots;
    Rows rows;
    char const* line;
  };
  char const* const unfit =
      "Completed game's players, slots and results don't fit together, not updating ratings for this game.\n";
  std::vector<Case> const cases{
      {"repeated id", {IdOf(7), IdOf(8), IdOf(7)}, {0, 1, 2}, {{1}, {2}, {3}},
       "Completed game has duplicate player ids, not updating ratings for this game.\n"},
      {"slot past the map", {IdOf(7), IdOf(8)}, {0, 9}, {{1}, {2}}, unfit},
      {"more ids than slots", {IdOf(7), IdOf(8)}, {0}, {{1}, {2}}, unfit},
      {"no rows", {IdOf(7), IdOf(8)}, {0, 1}, {}, unfit},
  };
  for (Case const& c : cases) {
    PlayerRatings table;
    testing::internal::CaptureStderr();
    EXPECT_FALSE(table.updateForCompletedGame(c.ids, c.slots, {0, 1, 2, 3}, ResultWith(c.rows))) << c.name;
    EXPECT_EQ(testing::internal::GetCapturedStderr(), c.line) << c.name;
    EXPECT_EQ(table.size(), 0u) << c.name;
  }
}

TEST(PlayerRatings, TopPlayersBestFirstAndCut) {
  PlayerRatings table;
  // Sixty players in thirty games of two; the winners of later games (higher ids) have beaten nobody
  // better, so all winners tie, all losers tie, and ids break ties in ascending order.
  for (int g = 0; g < 30; ++g) {
    ASSERT_TRUE(table.updateForCompletedGame({IdOf(2 * g), IdOf(2 * g + 1)}, {0, 1}, {0, 1}, ResultWith({{1}, {0}})));
  }
  auto const three = table.getTopPlayers(3);
  ASSERT_EQ(three.size(), 3u);
  EXPECT_EQ(three[0].first, IdOf(0));
  EXPECT_EQ(three[2].first, IdOf(4));
  auto const fifty = table.getTopPlayers(50);
  ASSERT_EQ(fifty.size(), 50u);
  EXPECT_NEAR(fifty[29].second, 1662.3108939063, 1e-6);
  EXPECT_NEAR(fifty[30].second, 1337.6891060937, 1e-6);
  EXPECT_EQ(fifty[30].first, IdOf(1));
  EXPECT_EQ(table.getTopPlayers(100).size(), 60u);
}
