#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "GameRecordsWire.h"
#include "support/Bytes.h"

using namespace testbytes;

namespace {

Bytes Str(std::string const& text) { return Encode(text); }

GameSettings SampleSettings() {
  GameSettings settings;
  settings.strings = {{"map", "Canyon"}, {"mode", "fast"}};
  settings.ints = {{"duration_seconds", 180}, {"lives", -3}};
  return settings;
}

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
  GameSettings other;
  other.strings.reserve(64);
  other.ints["y"] = -1;
  other.strings["a"] = "1";
  other.ints["z"] = 1;
  other.strings["b"] = "2";
  ASSERT_EQ(other, settings);
  EXPECT_EQ(Encode(other), expected);

  // Byte order, not character order: a byte above 127 sorts after every ASCII byte.
  GameSettings highBytes;
  highBytes.strings = {{"\xe9t\xe9", "x"}, {"z", "y"}};
  EXPECT_EQ(Encode(highBytes), Concat({Of({2, 0}), Str("z"), Str("y"), Str("\xe9t\xe9"), Str("x"), Of({0, 0})}));
}

TEST(GameSettingsWire, ReaderEmptiesTheMapsAcceptsAnyOrderAndKeepsTheLastDuplicate) {
  GameSettings settings = SampleSettings();
  Bytes const bytes = Concat({Of({3, 0}), Str("map"), Str("A"), Str("key"), Str("v"), Str("map"), Str("B"), Of({0, 0})});
  ASSERT_TRUE(Decode(bytes, settings).ok);
  EXPECT_EQ(settings.strings, (std::unordered_map<std::string, std::string>{{"map", "B"}, {"key", "v"}}));
  EXPECT_TRUE(settings.ints.empty());

  EXPECT_TRUE(RoundTrips(SampleSettings()));
}

TEST(GameSettingsWire, MissingIntegerSectionFails) {
  GameSettings settings;
  Bytes const bytes = Concat({Of({1, 0}), Str("map"), Str("A")});
  EXPECT_FALSE(Decode(bytes, settings).ok);
  EXPECT_EQ(settings.strings.at("map"), "A") << "what was read before the failure stands";
}

TEST(SettingsVariantWire, IndexByteThenTheAlternative) {
  EXPECT_EQ(Encode(GameSpecSettings{CoopChallengeIndex{5}}), Of({0, 5, 0, 0, 0}));
  EXPECT_EQ(Encode(GameSpecSettings{RankedMatchIndex{0x01020304}}), Of({1, 4, 3, 2, 1}));
  EXPECT_EQ(Encode(GameSpecSettings{GameSettings{}}), Of({2, 0, 0, 0, 0}));

  for (GameSpecSettings const& original :
       {GameSpecSettings{CoopChallengeIndex{7}}, GameSpecSettings{RankedMatchIndex{9}}, GameSpecSettings{SampleSettings()}}) {
    GameSpecSettings read = RankedMatchIndex{1};
    ReadOutcome const outcome = Decode(Encode(original), read);
    EXPECT_TRUE(outcome.ok);
    EXPECT_EQ(outcome.remaining, 0u);
    EXPECT_EQ(read, original);
  }
}

TEST(SettingsVariantWire, UnknownIndexFailsWithoutChangingTheAlternative) {
  GameSpecSettings settings = RankedMatchIndex{4};
  EXPECT_FALSE(Decode(Of({3, 0, 0, 0, 0}), settings).ok);
  EXPECT_EQ(settings, GameSpecSettings{RankedMatchIndex{4}});
  EXPECT_FALSE(Decode(Of({255}), settings).ok);
  EXPECT_EQ(settings, GameSpecSettings{RankedMatchIndex{4}});
}

TEST(GameSpecWire, FieldsInOrder) {
  GameSpec spec;
  spec.game = Game::Vipers;
  spec.settings = RankedMatchIndex{2};
  spec.delayFrames = 20;
  spec.minPlayers = 2;
  spec.maxPlayers = 4;
  EXPECT_EQ(Encode(spec), Of({2, 0, 1, 2, 0, 0, 0, 20, 2, 0, 4, 0}));
  EXPECT_EQ(ParseGameSpec(Encode(spec)), spec);

  spec.settings = SampleSettings();
  EXPECT_EQ(ParseGameSpec(Encode(spec)), spec);
}

TEST(GameSpecWire, ShortRecordsKeepTheDefaultsOfTheMissingFields) {
  GameSpec const defaults;
  EXPECT_EQ(ParseGameSpec(Bytes{}), defaults);
  EXPECT_EQ(ParseGameSpec(Of({1})), defaults);

  GameSpec const twoBytes = ParseGameSpec(Of({1, 0}));
  EXPECT_EQ(twoBytes.game, Game::Aviators);
  EXPECT_EQ(twoBytes.settings, GameSpecSettings{CoopChallengeIndex{0}});
  EXPECT_EQ(twoBytes.delayFrames, 15);
  EXPECT_EQ(twoBytes.minPlayers, 1);
  EXPECT_EQ(twoBytes.maxPlayers, 1);

  // Settings read, then nothing: delay and counts keep their defaults.
  GameSpec const noDelay = ParseGameSpec(Of({2, 0, 1, 6, 0, 0, 0}));
  EXPECT_EQ(noDelay.settings, GameSpecSettings{RankedMatchIndex{6}});
  EXPECT_EQ(noDelay.delayFrames, 15);

  // Ends after delayFrames: both counts stay at 1.
  GameSpec const afterDelay = ParseGameSpec(Of({0, 0, 0, 3, 0, 0, 0, 30}));
  EXPECT_EQ(afterDelay.settings, GameSpecSettings{CoopChallengeIndex{3}});
  EXPECT_EQ(afterDelay.delayFrames, 30);
  EXPECT_EQ(afterDelay.minPlayers, 1);
  EXPECT_EQ(afterDelay.maxPlayers, 1);

  // One byte of minPlayers is not enough; minPlayers without maxPlayers is.
  EXPECT_EQ(ParseGameSpec(Of({0, 0, 0, 3, 0, 0, 0, 30, 2})).minPlayers, 1);
  GameSpec const onlyMin = ParseGameSpec(Of({0, 0, 0, 3, 0, 0, 0, 30, 2, 0, 9}));
  EXPECT_EQ(onlyMin.minPlayers, 2);
  EXPECT_EQ(onlyMin.maxPlayers, 1);
}

TEST(GameSpecWire, BrokenSettingsLeaveTheTrailingFieldsAtTheirDefaults) {
  // An unknown settings index: the rest of the record is not read.
  GameSpec const unknown = ParseGameSpec(Of({1, 0, 7, 20, 2, 0, 4, 0}));
  EXPECT_EQ(unknown.game, Game::Aviators);
  EXPECT_EQ(unknown.settings, GameSpecSettings{CoopChallengeIndex{0}});
  EXPECT_EQ(unknown.delayFrames, 15);
  EXPECT_EQ(unknown.maxPlayers, 1);

  // A challenge index cut short: the trailing bytes are not taken as the delay.
  GameSpec const cut = ParseGameSpec(Of({0, 0, 1, 5, 0}));
  EXPECT_EQ(cut.delayFrames, 15);
  EXPECT_EQ(cut.minPlayers, 1);
}

TEST(GameResultWire, FieldsInOrderAndRoundTrip) {
  GameResult result;
  result.endFrame = 0x01020304;
  result.results = {{5, -1}, {}};
  result.endStateChecksum = 0x1122334455667788ull;
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
  EXPECT_EQ(read.endFrame, 9u);
  EXPECT_EQ(read.results, (std::vector<std::vector<long long>>{{}}));
  EXPECT_EQ(read.endStateChecksum, 77u);

  EXPECT_FALSE(Decode(Concat({Of({9, 0, 0, 0}), Count(1), Count(1), Of({1, 2, 3})}), read).ok);
}
