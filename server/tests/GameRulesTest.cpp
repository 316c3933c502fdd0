#include <gtest/gtest.h>

#include <algorithm>
#include <tuple>

#include "GameRules.h"
#include "net/GameRecordsWire.h"
#include "sim/Games.h"

namespace {

std::vector<unsigned char> SpecBytes(GameSpec const& spec) {
  std::vector<unsigned char> bytes;
  ToBytes(spec, bytes);
  return bytes;
}

// The settings a client's room page starts from, on the given map.
GameSettings DefaultsOn(Game game, char const* map) {
  static Games const games;
  GameSettings settings = DefaultSettingsFromSchema(games.refGame(game).schema);
  settings.strings["map"] = map;
  return settings;
}

}  // namespace

// The lobby checks rooms without the games, so its table must be held to the client's catalogues and
// schemas here.
TEST(GameRules, TableMatchesTheClientCatalogues) {
  Games const games;
  ASSERT_EQ(GameRules::AllGames().size(), games.size());
  for (auto const& limits : GameRules::AllGames()) {
    IGame const& game = games.refGame(limits.game);
    std::vector<std::pair<std::string, int>> expected;
    for (auto const& [name, map] : game.maps) {
      if (map.selectable) {
        expected.emplace_back(name, map.maxPlayers);
      }
    }
    std::vector<std::pair<std::string, int>> actual;
    for (auto const& map : limits.selectableMaps) {
      actual.emplace_back(map.name, map.maxPlayers);
    }
    std::sort(expected.begin(), expected.end());
    std::sort(actual.begin(), actual.end());
    EXPECT_EQ(actual, expected) << limits.name;
    auto compare = [&](std::vector<GameRules::NamedLimit> const& ours, std::vector<NamedGameSettings> const& theirs) {
      ASSERT_EQ(ours.size(), theirs.size()) << limits.name;
      for (std::size_t i = 0; i < ours.size(); ++i) {
        EXPECT_EQ(ours[i].map, theirs[i].settings.strings.at("map")) << limits.name << " " << i;
        EXPECT_EQ(ours[i].minPlayers, theirs[i].minPlayers) << limits.name << " " << i;
        EXPECT_EQ(ours[i].maxPlayers, theirs[i].maxPlayers) << limits.name << " " << i;
        EXPECT_LE(ours[i].maxPlayers, game.maxPlayersForMap(ours[i].map));
      }
    };
    compare(limits.coopChallenges, game.lookup.coopChallenges);
    compare(limits.rankedMatches, game.lookup.rankedMatches);
    std::vector<std::tuple<std::string, int, int>> schemaIntegers;
    for (SchemaEntry const& entry : game.schema) {
      if (entry.kind == SchemaEntry::Integer) {
        schemaIntegers.emplace_back(entry.key, entry.minimum, entry.maximum);
      } else {
        EXPECT_EQ(entry.key, "map") << limits.name << ": the table checks no other string setting";
      }
    }
    std::vector<std::tuple<std::string, int, int>> ourIntegers;
    for (auto const& limit : limits.integers) {
      ourIntegers.emplace_back(limit.key, limit.minimum, limit.maximum);
    }
    EXPECT_EQ(ourIntegers, schemaIntegers) << limits.name;
  }
}

TEST(GameRules, CheckSpecAcceptsAndRefuses) {
  struct Case {
    char const* what;
    std::vector<unsigned char> bytes;
    bool accepted;
    int slots;
  };
  GameSpec custom{Game::GlowHorde, DefaultsOn(Game::GlowHorde, "Cauldrons"), 15, 1, 3};
  auto withSetting = [](GameSpec spec, char const* key, std::int32_t value) {
    std::get<GameSettings>(spec.settings).ints[key] = value;
    return spec;
  };
  GameSpec missingSetting = custom;
  std::get<GameSettings>(missingSetting.settings).ints.erase("block_orders");
  GameSpec extraString = custom;
  std::get<GameSettings>(extraString.settings).strings["skin"] = "dark";
  GameSpec vipers{Game::Vipers, DefaultsOn(Game::Vipers, "The Empty Berth"), 15, 1, 4};
  GameSpec tooMany = custom;
  tooMany.maxPlayers = 4;
  GameSpec lowDelay = custom;
  lowDelay.delayFrames = 9;
  GameSpec highDelay = custom;
  highDelay.delayFrames = 36;
  GameSpec edgeDelays = custom;
  edgeDelays.delayFrames = 10;
  GameSpec tutorialMap{Game::GlowHorde, DefaultsOn(Game::GlowHorde, "Tutorial 1: dig down"), 15, 1, 1};
  GameSpec ranked{Game::Aviators, RankedMatchIndex{1}, 20, 4, 4};
  GameSpec rankedShort{Game::Aviators, RankedMatchIndex{1}, 20, 2, 4};
  GameSpec noRanked{Game::Aviators, RankedMatchIndex{2}, 20, 2, 2};
  GameSpec challenge{Game::GlowHorde, CoopChallengeIndex{3}, 15, 4, 4};
  GameSpec noChallenge{Game::Vipers, CoopChallengeIndex{0}, 15, 1, 1};
  GameSpec minAboveMax = custom;
  minAboveMax.minPlayers = 3;
  minAboveMax.maxPlayers = 2;
  std::vector<unsigned char> unknownGame = SpecBytes(custom);
  unknownGame[0] = 3;
  std::vector<unsigned char> trailing = SpecBytes(custom);
  trailing.push_back(0);
  std::vector<unsigned char> shortSpec = SpecBytes(custom);
  shortSpec.pop_back();
  std::vector<Case> const cases = {
      {"custom", SpecBytes(custom), true, 3},
      {"delay 10", SpecBytes(edgeDelays), true, 3},
      {"more players than places", SpecBytes(tooMany), false, 0},
      {"delay 9", SpecBytes(lowDelay), false, 0},
      {"delay 36", SpecBytes(highDelay), false, 0},
      {"map not offered", SpecBytes(tutorialMap), false, 0},
      {"settings at their bounds", SpecBytes(withSetting(withSetting(custom, "duration_seconds", 600), "bridge_orders", 0)), true, 3},
      {"duration above its range", SpecBytes(withSetting(custom, "duration_seconds", 601)), false, 0},
      {"spawn interval 0", SpecBytes(withSetting(custom, "spawn_interval_deciseconds", 0)), false, 0},
      {"a setting missing", SpecBytes(missingSetting), false, 0},
      {"a setting of another game", SpecBytes(withSetting(custom, "missile_speed", 50)), false, 0},
      {"a second string", SpecBytes(extraString), false, 0},
      {"vipers", SpecBytes(vipers), true, 4},
      {"vipers growth, a range that bounds nothing", SpecBytes(withSetting(vipers, "grow_by", 5000)), true, 4},
      {"vipers start length", SpecBytes(withSetting(vipers, "start_length", 1201)), false, 0},
      {"ranked", SpecBytes(ranked), true, 4},
      {"ranked with fewer players", SpecBytes(rankedShort), false, 0},
      {"ranked index past the end", SpecBytes(noRanked), false, 0},
      {"challenge", SpecBytes(challenge), true, 4},
      {"challenge of a game without any", SpecBytes(noChallenge), false, 0},
      {"min above max", SpecBytes(minAboveMax), false, 0},
      {"game 3", unknownGame, false, 0},
      {"trailing byte", trailing, false, 0},
      {"short record", shortSpec, false, 0},
      {"empty", {}, false, 0},
  };
  for (Case const& c : cases) {
    std::string error;
    auto const checked = GameRules::CheckSpec(c.bytes, error);
    EXPECT_EQ(checked.has_value(), c.accepted) << c.what << ": " << error;
    if (checked) {
      EXPECT_EQ(checked->slots, c.slots) << c.what;
    } else {
      EXPECT_FALSE(error.empty()) << c.what;
    }
  }
}
