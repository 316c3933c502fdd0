#include <gtest/gtest.h>

#include "sim/Games.h"
#include "glow_horde/TutorialLevelSettings.h"
#include "support/Checks.h"

TEST(TutorialLevelSettings, EachLevelTeachesOneKindOfOrderOnItsOwnMap) {
  Games const games;
  IGame const& glowHorde = games.refGame(Game::GlowHorde);
  struct Expected {
    char const* map;
    char const* orders;  // the one kind of order given, and how many
    int count, spawn, duration;
  };
  Expected const levels[] = {
      {"Tutorial 1: dig down", "dig_down_orders", 1, 1, 40},
      {"Tutorial 2: dig sideways", "dig_sideways_orders", 1, 2, 60},
      {"Tutorial 3: bridge", "bridge_orders", 99, 4, 120},
      {"Mosh pit", "bridge_orders", 3, 10, 120},
  };
  char const* const orderKeys[] = {"bridge_orders",   "horizontal_bridge_orders", "raise_ground_orders", "block_orders",
                                   "dig_down_orders", "dig_sideways_orders",      "dig_upwards_orders"};
  for (int level = 0; level < 4; ++level) {
    SCOPED_TRACE(level);
    Expected const& expected = levels[level];
    GameSettings const settings = TutorialLevelSettings(glowHorde.schema, level);
    EXPECT_EQ(settings.strings.at("map"), expected.map);
    EXPECT_GE(glowHorde.maxPlayersForMap(expected.map), 1);  // the map is in the catalogue
    EXPECT_EQ(settings.ints.at("number_to_spawn"), expected.spawn);
    EXPECT_EQ(settings.ints.at("duration_seconds"), expected.duration);
    EXPECT_EQ(settings.ints.at("spawn_interval_deciseconds"), 20);
    for (char const* key : orderKeys) {
      EXPECT_EQ(settings.ints.at(key), std::string(key) == expected.orders ? expected.count : 0) << key;
    }
    EXPECT_EQ(settings.strings.size() + settings.ints.size(), 11u);
  }
}

TEST(TutorialLevelSettings, ALevelBeyondTheFourIsAClearError) {
  Games const games;
  EXPECT_EQ(testing_support::ErrorText([&] { TutorialLevelSettings(games.refGame(Game::GlowHorde).schema, 4); }),
            "There is no tutorial level 4.");
}
