#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <limits>
#include <stdexcept>
#include <string>
#include <vector>

#include "app/AppStateInterface.h"
#include "sim/GameResult.h"
#include "sim/Games.h"
#include "glow_horde/GlowHordeSimulation.h"

TEST(GamesCatalogue, GlowHordeDefaultsMapsAndLookups) {
  Games const games;
  IGame const& glowHorde = games.refGame(Game::GlowHorde);
  GameSettings const defaults = DefaultSettingsFromSchema(glowHorde.schema);
  EXPECT_EQ(defaults.strings.size() + defaults.ints.size(), 11u);
  EXPECT_EQ(defaults.strings.at("map"), "Cauldrons");
  EXPECT_EQ(defaults.ints.at("duration_seconds"), 180);

  // Only selectable maps are offered, in ascending byte order.
  auto const mapEntry = std::ranges::find(glowHorde.schema, std::string("map"), &SchemaEntry::key);
  ASSERT_NE(mapEntry, glowHorde.schema.end());
  EXPECT_EQ(mapEntry->choices, (std::vector<std::string>{"Cauldrons", "Mosh pit", "Unwrapped Ledges", "Wrapped Ledges"}));
  for (char const* hidden : {"Astral Steps", "Tutorial 1: dig down", "Tutorial 2: dig sideways", "Tutorial 3: bridge"}) {
    EXPECT_TRUE(glowHorde.maps.contains(hidden)) << hidden;
  }

  EXPECT_EQ(glowHorde.maxPlayersForMap("Cauldrons"), 3);
  EXPECT_EQ(glowHorde.playerTeamsForMap("Mosh pit"), (std::vector<int>{0, 1, 0, 1}));
  EXPECT_THROW(glowHorde.maxPlayersForMap("No such map"), std::out_of_range);
  EXPECT_THROW(glowHorde.playerTeamsForMap("No such map"), std::out_of_range);
  // A challenge index stands for the challenge's own settings.
  GameSettings const& challenge = glowHorde.lookup.settingsFrom(CoopChallengeIndex{0});
  EXPECT_EQ(challenge.strings.at("map"), "Astral Steps");
  EXPECT_EQ(challenge.ints.at("bridge_orders"), 15);
  // An index beyond the catalogue, as a damaged recording may hold, is refused.
  auto const challenges = static_cast<std::uint32_t>(glowHorde.lookup.coopChallenges.size());
  auto const ranked = static_cast<std::uint32_t>(glowHorde.lookup.rankedMatches.size());
  EXPECT_THROW(glowHorde.lookup.settingsFrom(CoopChallengeIndex{challenges}), std::out_of_range);
  EXPECT_THROW(glowHorde.lookup.settingsFrom(RankedMatchIndex{ranked}), std::out_of_range);
  EXPECT_NO_THROW(glowHorde.lookup.settingsFrom(CoopChallengeIndex{challenges - 1}));
}

TEST(GamesCatalogue, ResultTextsOfAllThreeGames) {
  Games const games;
  AppStateInterface state;
  state.setGames(&games);
  constexpr long long kSurvived = std::numeric_limits<long long>::max();
  EXPECT_EQ(state.formatGameResult(Game::GlowHorde, {4, -100000}, true), "4 exited in average 25.0 seconds");
  EXPECT_EQ(state.formatGameResult(Game::GlowHorde, {0, 0}, false), "No hordelings exited");
  EXPECT_EQ(state.formatGameResult(Game::Aviators, {500, 180000}, false), "500 health remaining");
  EXPECT_EQ(state.formatGameResult(Game::Aviators, {500, 180000}, true), "500 health remaining");
  EXPECT_EQ(state.formatGameResult(Game::Aviators, {0, 12340}, false), "Died after 12.3 seconds");
  EXPECT_EQ(state.formatGameResult(Game::Aviators, {0, 12340}, true), "All died after 12.3 seconds");
  EXPECT_EQ(state.formatGameResult(Game::Vipers, {153600, kSurvived}, false), "Length 600 (survived)");
  EXPECT_EQ(state.formatGameResult(Game::Vipers, {153600, 61500}, true), "Length 600 (died after 61.5 seconds)");
}

TEST(CompareResultRows, SignedValuesFirstCountsFirstAndTheLongerRowWinsOnACommonPrefix) {
  struct Case {
    std::vector<long long> a, b;
    int sign;  // of CompareResultRows(a, b); the reverse gives the opposite
  };
  Case const cases[] = {
      {{2, -500}, {1, 0}, 1},       {{-1}, {0}, -1},         {{1, -100}, {1, -200}, 1},   {{3, 4}, {3, 4}, 0},
      {{INT64_MIN}, {INT64_MAX}, -1}, {{1, 2, 0}, {1, 2}, 1}, {{}, {-5}, -1},               {{}, {}, 0},
      // A whole ranking, best first.
      {{4, -200000}, {3, -60000}, 1}, {{3, -60000}, {3, -90000}, 1}, {{3, -90000}, {3}, 1}, {{3}, {0, 0}, 1},
      {{0, 0}, {-1, 5}, 1},
  };
  auto sign = [](int value) { return (value > 0) - (value < 0); };
  for (Case const& c : cases) {
    SCOPED_TRACE(::testing::PrintToString(c.a) + " against " + ::testing::PrintToString(c.b));
    EXPECT_EQ(sign(CompareResultRows(c.a, c.b)), c.sign);
    EXPECT_EQ(sign(CompareResultRows(c.b, c.a)), -c.sign);
  }
}

TEST(GamesCatalogue, AMissingMapOrSettingRaisesOneTextWhateverTheStandardLibrary) {
  Games const games;
  IGame const& glowHorde = games.refGame(Game::GlowHorde);
  GameSettings const defaults = DefaultSettingsFromSchema(glowHorde.schema);
  GameSettings noMapKey = defaults;
  noMapKey.strings.erase("map");
  GameSettings unknownMap = defaults;
  unknownMap.strings["map"] = "No such map";
  GameSettings noDuration = defaults;
  noDuration.ints.erase("duration_seconds");
  GameSettings noBridges = defaults;
  noBridges.ints.erase("bridge_orders");

  auto text = [](auto const& action) {
    try {
      action();
    } catch (std::out_of_range const& error) {
      return std::string(error.what());
    }
    return std::string("no error");
  };
  auto simulate = [&](GameSettings const& settings) {
    GlowHordeSimulation(0, 16666, 15, settings, glowHorde.maps.at(defaults.strings.at("map")), {0});
  };
  std::string const expected = "unordered_map::at: key not found";
  EXPECT_EQ(text([&] { glowHorde.maxPlayersForMap("No such map"); }), expected);
  EXPECT_EQ(text([&] { glowHorde.playerTeamsForMap("No such map"); }), expected);
  // A session's map is looked up before anything else is made, so no shell is needed to see it fail.
  EXPECT_EQ(text([&] { glowHorde.startSession(nullptr, 0, 16666, 15, noMapKey, {0}, false); }), expected);
  EXPECT_EQ(text([&] { glowHorde.startSession(nullptr, 0, 16666, 15, unknownMap, {0}, false); }), expected);
  EXPECT_EQ(text([&] { simulate(noDuration); }), expected);
  EXPECT_EQ(text([&] { simulate(noBridges); }), expected);
  EXPECT_EQ(text([&] { simulate(defaults); }), "no error");
}
