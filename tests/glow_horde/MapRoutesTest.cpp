// The multiplayer and co-op maps played through with the activities the game offers, the way a
// player would: a short script of clicks in the text form of a driver's orders, given at the
// player's own update numbers, one client per player. Each route is described under Maps in
// tools/make_assets/README.md; it was found by watching the units with tools/route_trace.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <string>

#include "glow_horde/ScriptedGame.h"

using namespace glow_horde_testing;

namespace {

// Every client of the game ends with the same result, every click found its unit and every order
// took effect, so the script kept within the counts.
void ExpectAgreedAndEveryOrderTook(ScriptedGame const& game, std::vector<ScriptedClick> const& clicks) {
  for (std::size_t c = 1; c < game.results.size(); ++c) {
    EXPECT_EQ(game.results[c], game.results.front()) << "client " << c;
  }
  for (std::size_t p = 0; p < game.ordersSent.size(); ++p) {
    auto const given =
        std::count_if(clicks.begin(), clicks.end(), [&](auto const& c) { return c.player == static_cast<int>(p); });
    EXPECT_EQ(game.ordersSent[p], given) << "player " << p;
    EXPECT_EQ(game.ordersAccepted[p], given) << "player " << p;
  }
}

// The clicks less the nth (from 0) of those whose text holds the keyword.
std::vector<ScriptedClick> Without(std::vector<ScriptedClick> clicks, std::string const& keyword, int nth) {
  int seen = 0;
  for (auto it = clicks.begin(); it != clicks.end(); ++it) {
    if (it->text.find(keyword) != std::string::npos && seen++ == nth) {
      clicks.erase(it);
      break;
    }
  }
  return clicks;
}

// Cauldrons, alone: a blocker at the left of the spawn ledge turns the units that walk left; four
// horizontal bridges, each begun before falling by a unit walking right, span the cauldron and the
// next gutter from the ledge's right end (x 240) to the next ledge (x 572); the units walk off its
// right end into the next cauldron, where the exit is.
std::vector<ScriptedClick> const k_cauldronsAlone = {
    {0, 268, "140,470 block"},
    {0, 450, "200,470 horizontal_bridge falling right"},
    {0, 700, "180,470 horizontal_bridge falling right"},
    {0, 850, "180,470 horizontal_bridge falling right"},
    {0, 1100, "183,470 horizontal_bridge falling right"},
};

// Astral Steps: a bridge begun 56 px before each riser (five rising right, six rising left), an
// upward dig at the foot of each of the three walls, and after each dig a horizontal bridge, begun
// after turning by the digger, that lids its tunnel's mouth: the digger comes out facing away from
// the way on, turns at the stop and would otherwise walk back down its own tunnel, and the others
// after it. 11 bridges, 3 upward digs and 3 horizontal bridges in four parts, which the players of a
// co-op challenge share out so that nobody gives more than the challenge allows (at the least 5
// bridges and 1 upward dig each, with four players).
struct RoutePart {
  std::vector<std::pair<std::uint32_t, char const*>> clicks;
  // By number of players, 1 to 4: who gives this part, and how much later than the frames above its
  // unit comes by.
  std::array<int, 4> player;
  std::array<std::uint32_t, 4> later;
};

std::vector<RoutePart> const k_astralParts = {
    // The first flight, the first wall and its lid, all by player 0's first unit.
    {{{361, "194,150 bridge immediate right"},
      {560, "294,172 bridge immediate right"},
      {759, "394,194 bridge immediate right"},
      {958, "494,216 bridge immediate right"},
      {1157, "594,238 bridge immediate right"},
      {1322, "660,260 dig_upwards blocked right"},
      {1571, "741,344 horizontal_bridge turned right"}},
     {0, 0, 0, 0},
     {0, 0, 0, 0}},
    // Five steps of the second flight: player 1's first unit comes through the wall just after.
    {{{1758, "676,344 bridge immediate left"},
      {1947, "586,366 bridge immediate left"},
      {2136, "496,388 bridge immediate left"},
      {2325, "406,410 bridge immediate left"},
      {2514, "316,432 bridge immediate left"}},
     {0, 1, 1, 1},
     {72, 0, 0, 0}},
    // The last step, the second wall and its lid.
    {{{2703, "226,454 bridge immediate left"},
      {2878, "150,476 dig_upwards blocked left"},
      {3148, "40,556 horizontal_bridge turned left"}},
     {0, 1, 2, 2},
     {72, 0, 268, 268}},
    // The third wall and its lid; then the exit platform is walked left to the exit.
    {{{3647, "400,556 dig_upwards blocked right"}, {3971, "560,638 horizontal_bridge turned right"}},
     {0, 0, 1, 3},
     {115, 0, 336, 326}},
};

std::vector<ScriptedClick> AstralRoute(int players) {
  auto const n = static_cast<std::size_t>(players - 1);
  std::vector<ScriptedClick> clicks;
  for (RoutePart const& part : k_astralParts) {
    for (auto const& [frame, text] : part.clicks) {
      clicks.push_back({part.player[n], frame + part.later[n], text});
    }
  }
  return clicks;
}

// Cauldrons, three players, all alike in their own tiles (512 px apart): four horizontal bridges
// from the own ledge to the next, by the units walking right, then a dig down by a unit walking on
// the next player's bridge, above the next cauldron, which holds the own exit. Once all bridges
// stand they join in a ring round the wrapping world, and the holes are the only way down.
std::vector<ScriptedClick> CauldronsRace() {
  std::vector<ScriptedClick> clicks;
  for (int p = 0; p < 3; ++p) {
    int const x = 512 * p;
    for (std::uint32_t frame : {475u, 871u, 1267u, 1663u}) {
      clicks.push_back({p, frame, std::to_string(x + 200) + ",470 horizontal_bridge falling right"});
    }
    clicks.push_back({p, 2516, std::to_string((x + 912) % 1536) + ",470 dig_down right"});
  }
  return clicks;
}

class AstralStepsRoute : public ::testing::TestWithParam<int> {};

std::string const k_astralChallenges[] = {"Single Player, Astral Steps", "Two player, Astral Steps",
                                          "Three player, Astral Steps", "Four player, Astral Steps"};

}  // namespace

TEST(MapRoutes, CauldronsAloneReachesTheOwnExitInTheNextCauldron) {
  ScriptedGame const game = PlayScriptedGame("Single player, Cauldrons", 1, k_cauldronsAlone);
  ExpectAgreedAndEveryOrderTook(game, k_cauldronsAlone);
  ASSERT_EQ(game.results.size(), 1u);
  ASSERT_EQ(game.results[0].results.size(), 1u);
  EXPECT_GE(game.results[0].results[0][0], 1);
  EXPECT_EQ(game.outByExit[0][0], game.results[0].results[0][0]);
  // Not before the last bridge was begun.
  EXPECT_GT(game.outFrames[0].at(0), k_cauldronsAlone.back().frame);

  // Three bridges end over the cauldron's right wall, 81 px short of the next ledge: nobody gets out.
  std::vector<ScriptedClick> const short3 = Without(k_cauldronsAlone, "horizontal_bridge", 3);
  EXPECT_EQ(PlayScriptedGame("Single player, Cauldrons", 1, short3).results[0].results[0][0], 0);
}

TEST(MapRoutes, CauldronsForThreeEachPlayerReachesItsOwnExit) {
  std::vector<ScriptedClick> const clicks = CauldronsRace();
  ScriptedGame const game = PlayScriptedGame("Three player, Cauldrons", 3, clicks);
  ExpectAgreedAndEveryOrderTook(game, clicks);
  // Exit e is team e's, and each player is a team of its own.
  ASSERT_EQ(game.outByExit.size(), 3u);
  for (std::size_t p = 0; p < 3; ++p) {
    EXPECT_GE(game.outByExit[p][p], 1) << "player " << p;
  }
  // Three copies of one tile and the same clicks in each: every team scores alike.
  EXPECT_EQ(game.results[0].results[0], game.results[0].results[1]);
  EXPECT_EQ(game.results[0].results[1], game.results[0].results[2]);
}

TEST_P(AstralStepsRoute, EveryPlayerBringsUnitsToTheExitWithinTheChallengesCounts) {
  int const players = GetParam();
  std::vector<ScriptedClick> const clicks = AstralRoute(players);
  ScriptedGame const game = PlayScriptedGame(k_astralChallenges[players - 1], players, clicks);
  // The counts are the challenge's: an order beyond them would be refused.
  ExpectAgreedAndEveryOrderTook(game, clicks);
  ASSERT_EQ(game.outByExit.size(), 1u);
  // Nobody before the last wall was dug.
  auto const lastDig = std::find_if(clicks.rbegin(), clicks.rend(),
                                    [](auto const& c) { return c.text.find("dig_upwards") != std::string::npos; });
  int total = 0;
  for (int p = 0; p < players; ++p) {
    EXPECT_GE(game.outByExit[0][static_cast<std::size_t>(p)], 1) << "player " << p;
    EXPECT_GT(game.outFrames[static_cast<std::size_t>(p)].at(0), lastDig->frame) << "player " << p;
    total += game.outByExit[0][static_cast<std::size_t>(p)];
  }
  EXPECT_EQ(game.results[0].results[0][0], total);
}

INSTANTIATE_TEST_SUITE_P(Challenges, AstralStepsRoute, ::testing::Range(1, 5),
                         [](::testing::TestParamInfo<int> const& info) {
                           return std::to_string(info.param) + "Players";
                         });

TEST(MapRoutes, AstralStepsWithoutTheFirstLidTheDiggerWalksBackDownItsTunnel) {
  std::vector<ScriptedClick> const noLid = Without(AstralRoute(1), "horizontal_bridge", 0);
  ScriptedGame const game = PlayScriptedGame("Single Player, Astral Steps", 1, noLid);
  // The second flight's first click finds no unit on top of the wall, and nobody gets out.
  EXPECT_LT(game.ordersSent[0], static_cast<int>(noLid.size()));
  EXPECT_EQ(game.results[0].results[0][0], 0);
}
