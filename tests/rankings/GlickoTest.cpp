#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "rankings/Glicko.h"

// Expected figures were worked out apart from this code, with a short script that follows the published
// Glicko-2 formulas (tau 0.5, tolerance 0.000001) in double precision.
namespace {

struct Shown {
  double rating;
  double deviation;
  double volatility;
};

void ExpectRating(Glicko::Rating const& r, Shown expected, char const* what) {
  EXPECT_NEAR(r.shownRating(), expected.rating, 1e-6) << what;
  EXPECT_NEAR(r.shownDeviation(), expected.deviation, 1e-6) << what;
  EXPECT_NEAR(r.sigma, expected.volatility, 1e-9) << what;
}

}  // namespace

TEST(Glicko, PublishedExampleGivesItsFigures) {
  Glicko::Rating player(1500, 200, 0.06);
  std::vector<Glicko::Rating> const opponents{{1400, 30, 0.06}, {1550, 100, 0.06}, {1700, 300, 0.06}};
  double const scores[] = {1.0, 0.0, 0.0};
  player.Update(3, opponents.data(), scores);
  EXPECT_DOUBLE_EQ(player.shownRating(), 1500.0) << "Update writes the pending values only";
  player.Apply();
  // Published, rounded: 1464.05, 151.52, 0.059996.
  ExpectRating(player, {1464.0506705393, 151.5165241239, 0.059995984286}, "published example");
}

TEST(Glicko, DecayAndScaledUpdates) {
  Glicko::Rating r(1620, 80, 0.05);
  r.Decay();
  r.Apply();
  EXPECT_NEAR(r.shownRating(), 1620, 1e-9);
  EXPECT_NEAR(r.phi, std::sqrt(std::pow(80 / Glicko::kScale, 2) + 0.05 * 0.05), 1e-12);
  EXPECT_EQ(r.sigma, 0.05);

  // Scaling by 1 keeps the update, by 0 cancels it.
  Glicko::Rating const before(1500, 200, 0.06);
  Glicko::Rating kept = before;
  Glicko::Rating cancelled = before;
  for (Glicko::Rating* rating : {&kept, &cancelled}) {
    rating->Update(Glicko::Rating(1400, 30, 0.06), 1.0);
  }
  double const pendingMu = kept.newMu;
  kept.ScalePendingUpdate(1.0);
  cancelled.ScalePendingUpdate(0.0);
  kept.Apply();
  cancelled.Apply();
  EXPECT_EQ(kept.mu, pendingMu);
  EXPECT_GT(kept.mu, before.mu);
  EXPECT_EQ(cancelled.mu, before.mu);
  EXPECT_EQ(cancelled.phi, before.phi);
  EXPECT_EQ(cancelled.sigma, before.sigma);
}

TEST(Glicko, MatchesOfTeamsAndPlaces) {
  struct Case {
    char const* name;
    std::vector<Shown> before;
    std::vector<int> teamOfPlayer;
    std::vector<int> placeOfTeam;
    std::vector<Shown> after;
  };
  std::vector<Case> const cases{
      // The lower rated player gains from a draw, the higher one loses as much.
      {"draw", {{1400, 80, 0.06}, {1600, 80, 0.06}}, {0, 1}, {0, 0},
       {{1408.8619895938, 79.1985306543, 0.059998483538}, {1591.1380104062, 79.1985306543, 0.059998483538}}},
      // Two against two: each player meets one composite opponent, no scaling.
      {"two teams of two", {{1500, 200, 0.06}, {1600, 100, 0.05}, {1450, 300, 0.07}, {1700, 50, 0.06}},
       {0, 1, 0, 1}, {0, 1},
       {{1620.5032810783, 179.0435169490, 0.060001638368},
        {1577.2595971516, 98.7033780391, 0.050000427429},
        {1693.5573724980, 245.0810075172, 0.070002327667},
        {1693.1265634991, 50.8757456045, 0.060001612908}}},
      // Four teams with two sharing second place: the winner meets three opponents and its step is halved.
      {"four teams, a shared place", {{1500, 200, 0.06}, {1600, 100, 0.05}, {1450, 300, 0.07}, {1700, 50, 0.06}},
       {0, 1, 2, 3}, {0, 1, 1, 2},
       {{1632.1503469908, 173.4466695753, 0.060005265807},
        {1599.9459629554, 95.8177718878, 0.049998026879},
        {1521.5194484097, 235.2136900111, 0.069998182916},
        {1685.3825602969, 50.0591826592, 0.060018775476}}},
      // Everyone on one team: nobody has an opponent and nothing moves.
      {"one team", {{1500, 200, 0.06}, {1700, 50, 0.05}}, {0, 0}, {0},
       {{1500, 200, 0.06}, {1700, 50, 0.05}}},
  };
  for (Case const& c : cases) {
    std::vector<Glicko::Rating> ratings;
    for (Shown const& s : c.before) {
      ratings.emplace_back(s.rating, s.deviation, s.volatility);
    }
    Glicko::UpdateMatch(ratings.data(), static_cast<int>(ratings.size()), c.teamOfPlayer.data(),
                        c.placeOfTeam.data(), static_cast<int>(c.placeOfTeam.size()));
    for (std::size_t p = 0; p < ratings.size(); ++p) {
      ratings[p].Apply();
      ExpectRating(ratings[p], c.after[p], c.name);
    }
  }
}

TEST(Glicko, CertainResultsLeaveTheRatingFinite) {
  // So far apart that the expected score is exactly 1 in double precision.
  Glicko::Rating strong(1500 + 40 * Glicko::kScale, 30, 0.06);
  strong.Update(Glicko::Rating(1500, 30, 0.06), 0.0);
  strong.Apply();
  EXPECT_TRUE(std::isfinite(strong.mu) && std::isfinite(strong.phi) && std::isfinite(strong.sigma));
}
