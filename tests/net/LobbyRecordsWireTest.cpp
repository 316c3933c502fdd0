#include <gtest/gtest.h>

#include "net/LobbyRecordsWire.h"
#include "support/Bytes.h"
#include "support/SampleRecords.h"

using namespace testbytes;

TEST(LobbyRecordsWire, RecordsFieldByField) {
  EXPECT_EQ(Encode(PlayerInLobby{{0xAA, 0xBB}, 0x0102}), Concat({Count(2), Of({0xAA, 0xBB, 0x02, 0x01})}));
  EXPECT_EQ(Encode(std::optional<PlayerInLobby>{}), Of({0}));
  EXPECT_EQ(Encode(samples::Running()),
            Concat({Of({7, 0, 1}), Count(3), Of({3, 0, 0, 0, 5, 0}), Count(3), Of({0, 1, 0})}));
  EXPECT_EQ(Encode(PlayerNameInfo{{1}, "Al"}), Concat({Count(1), Of({1}), Count(2), Of({'A', 'l'})}));

  GameRoom const room{.description = "R", .minPlayers = 1, .maxPlayers = 2, .specBytes = {0xEE}, .players = {4},
                      .slotChoices = {-1}, .assignedSlots = {3}, .ready = {true}, .roomToken = 0x0807060504030201ull,
                      .lastResultsIndex = 0x0A0B};
  Bytes const expected = Concat({Count(1), Of({'R', 1, 0, 2, 0}), Count(1), Of({0xEE, 0}), Count(1), Of({4, 0}),
                                 Count(1), Of({0xFF, 0xFF}), Count(1), Of({3, 0}), Count(1), Of({1}),
                                 Of({1, 2, 3, 4, 5, 6, 7, 8}), Of({0}), Of({1, 0x0B, 0x0A})});
  EXPECT_EQ(Encode(room), expected);
}

TEST(LobbyRecordsWire, EveryRecordRoundTrips) {
  EXPECT_TRUE(RoundTrips(samples::Lobby()));
  EXPECT_TRUE(RoundTrips(samples::Room()));
  EXPECT_TRUE(RoundTrips(samples::Running()));
  EXPECT_TRUE(RoundTrips(samples::Results()));
  EXPECT_TRUE(RoundTrips(PlayerNameInfo{{1, 2}, "Name"}));
}

TEST(LobbyRecordsWire, ReadingOverAnOldStateReusesAndReplacesIt) {
  LobbyState lobby = samples::Lobby();
  LobbyState smaller;
  smaller.players = {std::nullopt};
  smaller.rooms = {samples::Room()};
  smaller.rooms[0]->runningGame.reset();
  ASSERT_TRUE(Decode(Encode(smaller), lobby).ok);
  EXPECT_EQ(lobby, smaller) << "vectors shrink to the new count, absent optionals clear the old values";
}

TEST(LobbyRecordsWire, TruncatedLobbyStateKeepsWhatWasRead) {
  Bytes bytes = Encode(samples::Lobby());
  LobbyState full;
  ASSERT_TRUE(Decode(bytes, full).ok);
  // Cut inside the second room: the players and the first room stand.
  bytes.resize(bytes.size() - 30);
  LobbyState partial;
  ReadOutcome const outcome = Decode(bytes, partial);
  EXPECT_FALSE(outcome.ok);
  EXPECT_EQ(partial.players, full.players);
  ASSERT_EQ(partial.rooms.size(), 3u);
  EXPECT_EQ(partial.rooms[0], full.rooms[0]);
  ASSERT_TRUE(partial.rooms[1].has_value());
  EXPECT_EQ(partial.rooms[1]->description, full.rooms[1]->description);
}

TEST(LobbyRecordsWire, GameResultsFailsOnAnyMissingField) {
  Bytes const bytes = Encode(samples::Results());
  for (std::size_t cut = 0; cut < bytes.size(); ++cut) {
    GameResults results;
    Bytes const prefix(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(cut));
    EXPECT_FALSE(Decode(prefix, results).ok) << "cut at " << cut;
  }
}

// An absent entry is one byte on the wire: the reader bounds the count by what 2-byte numbers can
// address, so a long message of absent entries can't make it allocate hundreds of times its size.
TEST(LobbyRecordsWire, LobbyStateEntriesAreBoundedByTheNumberRange) {
  for (std::size_t count : {std::size_t{65536}, std::size_t{65537}}) {
    Bytes bytes = Count(count);
    bytes.resize(8 + count, 0);
    Bytes const rooms = Count(0);
    bytes.insert(bytes.end(), rooms.begin(), rooms.end());
    LobbyState state;
    EXPECT_EQ(Decode(bytes, state).ok, count == 65536) << count;
    EXPECT_EQ(state.players.size(), count == 65536 ? count : 0u) << count;
  }
}
