#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <vector>

#include "rankings/CompletedGameFeed.h"
#include "support/SampleRecords.h"

// Expected ratings come from an independent script of the published Glicko-2 formulas.
namespace {

using Outcome = CompletedGameFeed::Outcome;
using Id = PlayerRatings::PlayerId;

Id IdOf(int n) { return Id(8, static_cast<unsigned char>(n)); }

GameResults Played(GameSpec const& spec, std::vector<int> ids, std::vector<unsigned short> slots,
                   std::vector<std::vector<unsigned char>> reports, bool finished = true) {
  GameResults game;
  game.specBytes = samples::Encoded(spec);
  game.finished = finished;
  for (int id : ids) {
    game.playerIds.push_back(IdOf(id));
    game.playerNames.emplace_back(1, static_cast<char>('a' + id % 26));
  }
  game.playerSlots = std::move(slots);
  game.reportedResults = std::move(reports);
  return game;
}

std::vector<unsigned char> Report(std::vector<std::vector<long long>> rows, std::uint64_t checksum = 42) {
  return samples::Encoded(GameResult{3600, std::move(rows), checksum});
}

struct Tables {
  HighScoreTables highScores{Game::GlowHorde, 6};
  PlayerRatings glowHorde{ResultRowOwner::Team};
  PlayerRatings ships{ResultRowOwner::Player};
  CompletedGameFeed feed;

  Outcome take(unsigned short number, GameResults const& game, Games const& games) {
    return feed.take(number, game, games, highScores, glowHorde, ships);
  }
};

}  // namespace

TEST(CompletedGameFeed, EachGameOnceAndOnlyAgreedResults) {
  Games const games;
  Tables t;
  GameSpec const shipRanked{.game = Game::Aviators, .settings = RankedMatchIndex{0}};
  GameSpec const hordeRanked{.game = Game::GlowHorde, .settings = RankedMatchIndex{2}};  // four, teams 0 1 0 1
  auto const shipWin = Report({{100, 5000}, {0, 3000}});
  auto const teamOneWins = Report({{3, -9000}, {4, -9000}});

  struct Step {
    unsigned short number;
    GameResults game;
    Outcome outcome;
  };
  std::vector<Step> const steps{
      {0, Played(shipRanked, {1, 2}, {0, 1}, {shipWin, shipWin}), Outcome::RatingsUpdated},
      {0, Played(shipRanked, {1, 2}, {0, 1}, {shipWin, shipWin}), Outcome::AlreadyTaken},
      // One checksum differs: the game never reaches a table, now or later.
      {1, Played(hordeRanked, {3, 4, 5, 6}, {0, 1, 2, 3}, {teamOneWins, teamOneWins, Report({{3, -9000}, {4, -9000}}, 43), {}}),
       Outcome::NoAgreedResult},
      {1, Played(hordeRanked, {3, 4, 5, 6}, {0, 1, 2, 3}, {teamOneWins, teamOneWins, teamOneWins, {}}), Outcome::AlreadyTaken},
      {2, Played(hordeRanked, {3, 4, 5, 6}, {0, 1, 2, 3}, {teamOneWins, {}, {}, {}}, false), Outcome::NotFinished},
      // An abandoned place's empty report doesn't count against the others.
      {2, Played(hordeRanked, {3, 4, 5, 6}, {0, 1, 2, 3}, {teamOneWins, {}, teamOneWins, teamOneWins}), Outcome::RatingsUpdated},
      {3, Played(GameSpec{.settings = CoopChallengeIndex{4}}, {7}, {0}, {Report({{12, -400}})}), Outcome::HighScoreAdded},
      {4, Played(GameSpec{.settings = GameSettings{{{"map", "Mosh pit"}}, {}}}, {8, 9}, {0, 1}, {shipWin, shipWin}),
       Outcome::FriendlyGame},
      {5, Played(shipRanked, {10, 11}, {0, 1}, {}), Outcome::NoAgreedResult},
      {6, Played(shipRanked, {10, 11}, {0, 1}, {{1, 2}, {1, 2}}), Outcome::UnreadableResult},
      {7, Played(GameSpec{.game = Game::Vipers, .settings = RankedMatchIndex{9}}, {10, 11}, {0, 1}, {shipWin}),
       Outcome::Refused},
      {8, Played(GameSpec{.game = static_cast<Game>(7), .settings = RankedMatchIndex{0}}, {10, 11}, {0, 1}, {shipWin}),
       Outcome::Refused},
      {9, Played(GameSpec{.game = Game::Aviators, .settings = CoopChallengeIndex{0}}, {10}, {0}, {shipWin}),
       Outcome::Refused},
      {10, Played(GameSpec{.settings = CoopChallengeIndex{6}}, {10}, {0}, {shipWin}), Outcome::Refused},
      {11, Played(shipRanked, {10, 10}, {0, 1}, {shipWin, shipWin}), Outcome::Refused},
  };
  testing::internal::CaptureStderr();  // the refused repeated id writes its line
  for (Step const& step : steps) {
    EXPECT_EQ(t.take(step.number, step.game, games), step.outcome) << "game " << step.number;
  }
  testing::internal::GetCapturedStderr();

  // The ship game, rated once, and the team game of four new players, rated once with team 1 ahead.
  EXPECT_EQ(t.ships.size(), 2u);
  EXPECT_NEAR(*t.ships.getRatingFor(IdOf(1)), 1662.3108939063, 1e-6);
  EXPECT_NEAR(*t.ships.getRatingFor(IdOf(2)), 1337.6891060937, 1e-6);
  EXPECT_EQ(t.glowHorde.size(), 4u);
  for (int id : {3, 5}) {
    EXPECT_NEAR(*t.glowHorde.getRatingFor(IdOf(id)), 1353.4259244926, 1e-6);
  }
  for (int id : {4, 6}) {
    EXPECT_NEAR(*t.glowHorde.getRatingFor(IdOf(id)), 1646.5740755074, 1e-6);
    EXPECT_NEAR(t.glowHorde.findRating(IdOf(id))->shownDeviation(), 307.9479321862, 1e-6);
  }
  ASSERT_EQ(t.highScores.table(4).size(), 1u);
  EXPECT_EQ(t.highScores.table(4)[0], (HighScoreTables::Entry{{12, -400}, 3}));
  for (std::size_t c : {0u, 1u, 2u, 3u, 5u}) {
    EXPECT_TRUE(t.highScores.table(c).empty());
  }
}

// Two clients see the same finished games, one of them with the repeats and half-finished states that
// the lobby's result lists bring, the other once each; random bytes stand in for some records. Both
// must come out with the same tables to the last bit, and nothing may fail or go non-finite.
TEST(CompletedGameFeed, SameGamesGiveTheSameTablesWhateverTheRepeats) {
  Games const games;
  Tables once;
  Tables repeated;
  std::mt19937 random(20261123);
  auto pick = [&](int n) { return static_cast<int>(random() % static_cast<unsigned>(n)); };
  auto bytes = [&](int n) {
    std::vector<unsigned char> out(static_cast<std::size_t>(pick(n)));
    for (auto& b : out) {
      b = static_cast<unsigned char>(random());
    }
    return out;
  };

  for (unsigned short number = 0; number < 400; ++number) {
    int const players = 1 + pick(4);
    GameSpec spec{.game = static_cast<Game>(pick(3))};
    int const kind = pick(4);
    spec.settings = kind == 0 ? GameSpecSettings{CoopChallengeIndex{static_cast<std::uint32_t>(pick(7))}}
                              : GameSpecSettings{RankedMatchIndex{static_cast<std::uint32_t>(pick(4))}};
    std::vector<int> ids;
    std::vector<unsigned short> slots;
    for (int p = 0; p < players; ++p) {
      ids.push_back(pick(12));  // a small pool, so players meet again and ids sometimes repeat
      slots.push_back(static_cast<unsigned short>(pick(5)));
    }
    std::vector<std::vector<long long>> rows(static_cast<std::size_t>(1 + pick(players)));
    for (auto& row : rows) {
      row = {pick(5), -pick(3) * 1000};
    }
    std::vector<std::vector<unsigned char>> reports(static_cast<std::size_t>(players), Report(rows));
    if (pick(10) == 0) {
      reports[0] = Report(rows, 43);  // a desynch
    }
    if (pick(10) == 0) {
      reports.back() = bytes(40);  // garbage from the network
    }
    GameResults game = Played(spec, ids, slots, reports);
    if (pick(20) == 0) {
      game.specBytes = bytes(30);
    }

    Outcome const first = once.take(number, game, games);
    GameResults running = game;
    running.finished = false;
    testing::internal::CaptureStderr();
    EXPECT_EQ(repeated.take(number, running, games), Outcome::NotFinished);
    EXPECT_EQ(repeated.take(number, game, games), first);
    EXPECT_EQ(repeated.take(number, game, games), Outcome::AlreadyTaken);
    if (number > 0) {
      EXPECT_EQ(repeated.take(static_cast<unsigned short>(number - 1), game, games), Outcome::AlreadyTaken);
    }
    testing::internal::GetCapturedStderr();
  }

  for (auto [a, b] : {std::pair{&once.glowHorde, &repeated.glowHorde}, std::pair{&once.ships, &repeated.ships}}) {
    EXPECT_GT(a->size(), 4u);
    ASSERT_EQ(a->size(), b->size());
    for (auto const& [id, shown] : a->getTopPlayers(100)) {
      Glicko::Rating const* mine = a->findRating(id);
      Glicko::Rating const* theirs = b->findRating(id);
      ASSERT_NE(theirs, nullptr);
      EXPECT_EQ(mine->mu, theirs->mu);
      EXPECT_EQ(mine->phi, theirs->phi);
      EXPECT_EQ(mine->sigma, theirs->sigma);
      EXPECT_TRUE(std::isfinite(shown) && std::isfinite(mine->phi) && std::isfinite(mine->sigma));
    }
  }
  for (std::size_t c = 0; c < once.highScores.challengeCount(); ++c) {
    EXPECT_EQ(once.highScores.table(c), repeated.highScores.table(c));
  }
}
