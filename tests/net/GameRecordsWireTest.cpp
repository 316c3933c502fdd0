#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "net/GameRecordsWire.h"
#include "support/Bytes.h"

using namespace testbytes;

namespace {

Bytes Str(std::string const& text) { return Encode(text); }

GameSettings SampleSettings() { return {{{"map", "Canyon"}, {"mode", "fast"}}, {{"duration_seconds", 180}, {"lives", -3}}}; }

}  // namespace

TEST(GameSettingsWire, EntriesAreWrittenInAscendingKeyOrder) {
  GameSettings settings;
  settings.strings["b"] = "2";
  settings.strings["a"] = "1";
  settings.ints["z"] = 1;
  settings.ints["y"] = -1;
  Bytes const expected = Concat({Of({2, 0}), Str("a"), Str("1"), Str("b"), Str("2"), Of({2, 0}), Str("y"),
                                 Of({0xFF, 0xFF, 0xFF, 0xFF}), Str("z"), Of({1, 0, 0, 0})});
  EXPECT_EQ(Encode(settings), expected);

  // Equal settings built in another order, with another bucket layout, give the same bytes.
  GameSettings other{{{"a", "1"}, {"b", "2"}}, {{"y", -1}, {"z", 1}}};
  other.strings.reserve(64);
  ASSERT_EQ(other, settings);
  EXPECT_EQ(Encode(other), expected);

  // Byte order, not character order: a byte above 127 sorts after every ASCII byte.
  GameSettings highBytes;
  highBytes.strings = {{"\xe9t\xe9", "x"}, {"z", "y"}};
  EXPECT_EQ(Encode(highBytes), Concat({Of({2, 0}), Str("z"), Str("y"), Str("\xe9t\xe9"), Str("x"), Of({0, 0})}));
}

TEST(GameSettingsWire, ReaderEmptiesTheMapsAcceptsAnyOrderKeepsTheLastDuplicateAndFailsWithoutInts) {
  GameSettings settings = SampleSettings();
  Bytes const bytes = Concat({Of({3, 0}), Str("map"), Str("A"), Str("key"), Str("v"), Str("map"), Str("B"), Of({0, 0})});
  ASSERT_TRUE(Decode(bytes, settings).ok);
  EXPECT_EQ(settings, (GameSettings{{{"map", "B"}, {"key", "v"}}, {}}));
  EXPECT_TRUE(RoundTrips(SampleSettings()));

  GameSettings cut;
  EXPECT_FALSE(Decode(Concat({Of({1, 0}), Str("map"), Str("A")}), cut).ok) << "the integer section is missing";
  EXPECT_EQ(cut.strings.at("map"), "A") << "what was read before the failure stands";
}

TEST(SettingsVariantWire, IndexByteThenTheAlternativeAndAnUnknownIndexFails) {
  EXPECT_EQ(Encode(GameSpecSettings{CoopChallengeIndex{5}}), Of({0, 5, 0, 0, 0}));
  EXPECT_EQ(Encode(GameSpecSettings{RankedMatchIndex{0x01020304}}), Of({1, 4, 3, 2, 1}));
  EXPECT_EQ(Encode(GameSpecSettings{GameSettings{}}), Of({2, 0, 0, 0, 0}));
  // Read over another alternative, each switches to its own.
  for (GameSpecSettings const& original :
       {GameSpecSettings{CoopChallengeIndex{7}}, GameSpecSettings{RankedMatchIndex{9}}, GameSpecSettings{SampleSettings()}}) {
    EXPECT_TRUE(RoundTrips(original, GameSpecSettings{RankedMatchIndex{1}}));
  }
  // An unknown index fails without changing the alternative.
  for (Bytes const& unknown : {Of({3, 0, 0, 0, 0}), Of({255})}) {
    GameSpecSettings settings = RankedMatchIndex{4};
    EXPECT_FALSE(Decode(unknown, settings).ok);
    EXPECT_EQ(settings, GameSpecSettings{RankedMatchIndex{4}});
  }
}

TEST(GameSpecWire, FieldsInOrder) {
  GameSpec spec{.game = Game::Vipers, .settings = RankedMatchIndex{2}, .delayFrames = 20, .minPlayers = 2, .maxPlayers = 4};
  EXPECT_EQ(Encode(spec), Of({2, 0, 1, 2, 0, 0, 0, 20, 2, 0, 4, 0}));
  EXPECT_EQ(ParseGameSpec(Encode(spec)), spec);
  spec.settings = SampleSettings();
  EXPECT_EQ(ParseGameSpec(Encode(spec)), spec);
}

TEST(GameSpecWire, ShortOrBrokenRecordsKeepTheDefaultsOfTheFieldsNotRead) {
  struct Case {
    char const* what;
    Bytes bytes;
    GameSpec expected;
  };
  Case const cases[] = {
      {"empty", {}, {}},
      {"half a game", Of({1}), {}},
      {"game only", Of({1, 0}), {.game = Game::Aviators}},
      {"settings, then nothing", Of({2, 0, 1, 6, 0, 0, 0}), {.game = Game::Vipers, .settings = RankedMatchIndex{6}}},
      {"ends after the delay", Of({0, 0, 0, 3, 0, 0, 0, 30}), {.settings = CoopChallengeIndex{3}, .delayFrames = 30}},
      {"one byte of minPlayers", Of({0, 0, 0, 3, 0, 0, 0, 30, 2}), {.settings = CoopChallengeIndex{3}, .delayFrames = 30}},
      {"minPlayers without maxPlayers", Of({0, 0, 0, 3, 0, 0, 0, 30, 2, 0, 9}),
       {.settings = CoopChallengeIndex{3}, .delayFrames = 30, .minPlayers = 2}},
      {"unknown settings index: the rest is not read", Of({1, 0, 7, 20, 2, 0, 4, 0}), {.game = Game::Aviators}},
  };
  for (Case const& c : cases) {
    EXPECT_EQ(ParseGameSpec(c.bytes), c.expected) << c.what;
  }
  // A challenge index cut short: the trailing bytes are not taken as the delay.
  GameSpec const cut = ParseGameSpec(Of({0, 0, 1, 5, 0}));
  EXPECT_EQ(cut.delayFrames, 15);
  EXPECT_EQ(cut.minPlayers, 1);
}

TEST(GameResultWire, FieldsInOrderAndRoundTrip) {
  GameResult const result{0x01020304, {{5, -1}, {}}, 0x1122334455667788ull};
  Bytes const expected = Concat({Of({4, 3, 2, 1}), Count(2), Count(2), Of({5, 0, 0, 0, 0, 0, 0, 0}),
                                 Of({0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF}), Count(0),
                                 Of({0x88, 0x77, 0x66, 0x55, 0x44, 0x33, 0x22, 0x11})});
  EXPECT_EQ(Encode(result), expected);
  EXPECT_TRUE(RoundTrips(result));
}

TEST(GameResultWire, ShortRecords) {
  GameResult read;
  ReadOutcome const tooShort = Decode(Of({1, 2, 3}), read);
  EXPECT_FALSE(tooShort.ok);
  EXPECT_EQ(tooShort.consumed, 0u) << "with fewer than 4 bytes nothing is read";

  // Rows parse, the checksum is missing: it is not taken, and the rows stand.
  read.endStateChecksum = 77;
  ReadOutcome const noChecksum = Decode(Concat({Of({9, 0, 0, 0}), Count(1), Count(0), Of({1, 2, 3})}), read);
  EXPECT_TRUE(noChecksum.ok);
  EXPECT_EQ(noChecksum.remaining, 3u);
  EXPECT_EQ(read, (GameResult{9, {{}}, 77}));

  EXPECT_FALSE(Decode(Concat({Of({9, 0, 0, 0}), Count(1), Count(1), Of({1, 2, 3})}), read).ok);
}
