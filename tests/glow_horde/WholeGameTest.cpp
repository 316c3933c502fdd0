// Whole games, from spawn to result, on every map of the catalogue: the real session made by the
// catalogue, stepped by UpdateSimulation from the local order source as in a local game, with every
// slot of the map taken and no orders. The outcomes are those the maps were designed for (see
// tools/make_assets/README.md) and those that the maps' symmetries demand.
#include <gtest/gtest.h>

#include <memory>
#include <numeric>

#include "sim/Games.h"
#include "sim/LocalOnlyOrderSource.h"
#include "sim/UpdateSimulation.h"
#include "glow_horde/RunningGlowHorde.h"
#include "support/HeadlessApp.h"

namespace {

struct WholeGame {
  GameResult result;
  int updates = 0;
  std::uint32_t firstFrame = 0;
  std::vector<Position> exits;
};

class WholeGameTest : public ::testing::TestWithParam<std::string> {
protected:
  static void SetUpTestSuite() { app_ = MakeHeadlessApp(); }
  static void TearDownTestSuite() { app_.reset(); }

  // The default settings of the schema (180 s, 50 units every 3.3 s) on the map, with the given slots.
  static WholeGame play(std::string const& map, std::vector<unsigned short> const& players) {
    IGame const& glowHorde = games_.refGame(Game::GlowHorde);
    GameSettings settings = DefaultSettingsFromSchema(glowHorde.schema);
    settings.strings["map"] = map;
    std::unique_ptr<IRunningGame> session = glowHorde.startSession(app_, 0, 16666, 15, settings, players, false);
    WholeGame game;
    game.firstFrame = session->currentFrame();
    game.exits = dynamic_cast<RunningGlowHorde const&>(*session).simulation().exitPositions();
    LocalOnlyOrderSource source(static_cast<int>(players.size()), 0, 15);
    int stalled = 0;
    while (UpdateSimulation(*session, source, stalled)) {
      ++game.updates;
    }
    session->getGameResult(game.result);
    return game;
  }

  static std::vector<unsigned short> allSlots(std::string const& map) {
    std::vector<unsigned short> slots(games_.refGame(Game::GlowHorde).maps.at(map).maxPlayers);
    std::iota(slots.begin(), slots.end(), static_cast<unsigned short>(0));
    return slots;
  }

  static inline std::shared_ptr<SDL3App> app_;
  static inline Games const games_;
};

// Units out of all teams together.
long long UnitsOut(GameResult const& result) {
  long long out = 0;
  for (auto const& row : result.results) {
    out += row[0];
  }
  return out;
}

}  // namespace

TEST_P(WholeGameTest, EveryMapRunsItsFullTimeToAResult) {
  std::string const& map = GetParam();
  std::vector<unsigned short> const slots = allSlots(map);
  WholeGame const game = play(map, slots);

  // 180 s of 16,666 us: 10,800 frames for the local player, after which the tail of 15 frames lets the
  // others catch up; the head start already stood at 15.
  EXPECT_EQ(game.firstFrame, 15u);
  EXPECT_EQ(game.updates, 10800);
  EXPECT_EQ(game.result.endFrame, 10815u);

  // One row per team in play, each (units out, minus their total time in ms), and no more units out
  // than were spawned, none of them before the first could appear or after the end.
  std::vector<int> const teams = games_.refGame(Game::GlowHorde).playerTeamsForMap(map);
  std::size_t const teamCount = static_cast<std::size_t>(*std::max_element(teams.begin(), teams.end())) + 1;
  ASSERT_EQ(game.result.results.size(), teamCount);
  ASSERT_EQ(game.exits.size(), teamCount);
  EXPECT_LE(UnitsOut(game.result), 50LL * static_cast<long long>(slots.size()));
  for (auto const& row : game.result.results) {
    ASSERT_EQ(row.size(), 2u);
    EXPECT_GE(row[0], 0);
    EXPECT_LE(-row[1], row[0] * 16 * 10800);
    EXPECT_GE(-row[1], row[0] * 16 * 198);  // the first unit appears on the 199th update
  }
  // Without orders nobody leaves the pits, the steps or the tutorial rooms.
  if (map == "Mosh pit" || map == "Astral Steps" || map.starts_with("Tutorial")) {
    EXPECT_EQ(UnitsOut(game.result), 0);
  }
}

INSTANTIATE_TEST_SUITE_P(Catalogue, WholeGameTest,
                         ::testing::Values("Wrapped Ledges", "Unwrapped Ledges", "Cauldrons", "Mosh pit", "Astral Steps",
                                           "Tutorial 1: dig down", "Tutorial 2: dig sideways", "Tutorial 3: bridge"),
                         [](::testing::TestParamInfo<std::string> const& info) {
                           std::string name = info.param;
                           std::erase_if(name, [](unsigned char c) { return !std::isalnum(c); });
                           return name;
                         });

TEST_F(WholeGameTest, LedgesBringEachPlayersUnitsTheLongWayToTheirOwnExitOnly) {
  for (char const* map : {"Wrapped Ledges", "Unwrapped Ledges"}) {
    SCOPED_TRACE(map);
    // Alone, slot 0 gets some but not all of its 50 units to its exit in the time: the way is long.
    WholeGame const alone = play(map, {0});
    ASSERT_EQ(alone.result.results.size(), 1u);
    EXPECT_GT(alone.result.results[0][0], 0);
    EXPECT_LT(alone.result.results[0][0], 50);

    // Four players: the map is mirrored, slot 1 being slot 0's mirror image and slot 3 slot 2's, so
    // both teams score exactly alike; and slot 0 scores as it does alone, so the other team's units
    // never reach its exit.
    WholeGame const four = play(map, {0, 1, 2, 3});
    ASSERT_EQ(four.result.results.size(), 2u);
    EXPECT_EQ(four.result.results[0], four.result.results[1]);
    WholeGame const slots02 = play(map, {0, 2});
    ASSERT_EQ(slots02.result.results.size(), 1u);
    EXPECT_EQ(four.result.results[0], slots02.result.results[0]);
    EXPECT_GT(four.result.results[0][0], alone.result.results[0][0]);
  }
}

TEST_F(WholeGameTest, InCauldronsNoUnitReachesItsOwnExitButNeighboursScore) {
  // Units that walk right fall into their own cauldron, whose exit is the next player's on the left.
  WholeGame const alone = play("Cauldrons", {0});
  EXPECT_EQ(alone.result.results, (std::vector<std::vector<long long>>{{0, 0}}));
  // Three players: the map is three copies side by side, so every team scores alike, all of it
  // from its neighbour's units.
  WholeGame const three = play("Cauldrons", {0, 1, 2});
  ASSERT_EQ(three.result.results.size(), 3u);
  EXPECT_GT(three.result.results[0][0], 0);
  EXPECT_EQ(three.result.results[0], three.result.results[1]);
  EXPECT_EQ(three.result.results[1], three.result.results[2]);
}
