#include <gtest/gtest.h>

#include <string>

#include "net/LobbyMessages.h"
#include "net/MessageType.h"
#include "support/Bytes.h"

using namespace testbytes;
using namespace LobbyMessages;

namespace {

Bytes Text(std::string const& text) { return Concat({Count(text.size()), Bytes(text.begin(), text.end())}); }

}  // namespace

TEST(MessageTypeTest, NamesOfEveryValueAndUnknownForResultsAndBeyond) {
  char const* const names[] = {"VERSION",         "CONNECTION_RESPONSE", "AUTH_REQUEST", "AUTH_RESPONSE",
                               "LOBBY_STATE",     "MOVE_TO_GAME_ROOM",   "SET_READY_STATE", "MOVE_TO_SLOT",
                               "CREATE_GAME",     "GAME_START",          "RUNNING_GAME_STATE", "GAME_END",
                               "UNKNOWN",         "PLAYER_NAMES",        "CHANGE_NAME",  "SERVER_ERROR",
                               "KEEP_ALIVE",      "REQUEST_RECORDING",   "RECORDING_DATA"};
  for (int value = 0; value < 19; ++value) {
    EXPECT_STREQ(MessageTypeToString(static_cast<MessageType>(value)), names[value]) << value;
  }
  EXPECT_STREQ(MessageTypeToString(static_cast<MessageType>(19)), "UNKNOWN");
  EXPECT_STREQ(MessageTypeToString(static_cast<MessageType>(255)), "UNKNOWN");
}

// Every message the encoders write, against its layout written out byte by byte.
TEST(LobbyMessagesTest, EncodersWriteTheLayoutsByteForByte) {
  GameResult result{0x01020304, {{-1}}, 0x1122334455667788ull};
  Bytes const resultBytes = Concat({Of({4, 3, 2, 1}), Count(1), Count(1), Of({0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff}),
                                    Of({0x88, 0x77, 0x66, 0x55, 0x44, 0x33, 0x22, 0x11})});
  struct Row {
    char const* name;
    Bytes encoded;
    Bytes expected;
  };
  Row const rows[] = {
      {"version", EncodeVersion(1003), Of({0, 0xeb, 0x03, 0, 0})},
      {"connection response", EncodeConnectionResponse({true, {9, 8}}), Concat({Of({1, 1}), Count(2), Of({9, 8})})},
      {"auth request", EncodeAuthRequest({{1, 2, 3, 4, 5, 6, 7, 8}, 0x0807060504030201ull}),
       Concat({Of({2}), Count(8), Of({1, 2, 3, 4, 5, 6, 7, 8}), Of({1, 2, 3, 4, 5, 6, 7, 8})})},
      {"auth granted", EncodeAuthResponse({true, "", ServerInfo{0x0102, 0x0304}, 0x0506}),
       Of({3, 1, 0x02, 0x01, 0x04, 0x03, 0x06, 0x05})},
      {"auth refused", EncodeAuthResponse({false, "no", {}, 0}), Concat({Of({3, 0}), Text("no")})},
      {"move to room", EncodeMoveToGameRoom(0x0102), Of({5, 0x02, 0x01})},
      {"leave room", EncodeMoveToGameRoom(kLeaveRoom), Of({5, 0xff, 0xff})},
      {"ready", EncodeSetReadyState(true), Of({6, 1})},
      {"automatic slot", EncodeMoveToSlot(-1), Of({7, 0xff, 0xff})},
      {"create game", EncodeCreateGame({"d", {7}, 2, 4, true}),
       Concat({Of({8}), Text("d"), Count(1), Of({7}), Of({2, 0, 4, 0, 1})})},
      {"game start", EncodeGameStart(0x0102030405060708ull), Of({9, 8, 7, 6, 5, 4, 3, 2, 1})},
      {"running game state", EncodeRunningGameState({0x0102, true, {3}, {true}}),
       Concat({Of({10, 0x02, 0x01, 1}), Count(1), Of({3, 0}), Count(1), Of({1})})},
      {"game end with result", EncodeGameEnd(result), Concat({Of({11}), Count(resultBytes.size()), resultBytes})},
      {"game end without", EncodeGameEnd(std::nullopt), Concat({Of({11}), Count(0)})},
      {"game results", EncodeGameResults(7, {}), Concat({Of({12, 7, 0, 0, 0}), Count(0)})},
      {"player names", EncodePlayerNames({{{1}, "a"}}), Concat({Of({13}), Count(1), Count(1), Of({1}), Text("a")})},
      {"change name", EncodeChangeName("Zed"), Concat({Of({14}), Text("Zed")})},
      {"server error", EncodeServerError({true, "x"}), Concat({Of({15, 1}), Text("x")})},
      {"keep alive", EncodeKeepAlive(), Of({16})},
      {"request recording", EncodeRequestRecording(0x0102), Of({17, 0x02, 0x01})},
      {"recording data", EncodeRecordingData({3, {0xaa}}), Concat({Of({18, 3, 0}), Count(1), Of({0xaa})})},
  };
  for (Row const& row : rows) {
    EXPECT_EQ(row.encoded, row.expected) << row.name;
  }
}

// The readers over hand-made bodies (the bytes after the type), whole and cut short.
TEST(LobbyMessagesTest, ReadersTakeWholeBodiesAndRefuseShortOnes) {
  std::uint32_t version = 0;
  EXPECT_TRUE(DecodeVersion(Of({0xec, 0x03, 0, 0}).data(), 4, version));
  EXPECT_EQ(version, 1004u);
  EXPECT_FALSE(DecodeVersion(Of({0xec, 0x03, 0}).data(), 3, version));

  ConnectionResponse response;
  Bytes body = Concat({Of({7}), Count(3), Of({1, 2, 3})});
  EXPECT_TRUE(DecodeConnectionResponse(body.data(), body.size(), response));
  EXPECT_TRUE(response.accepted);  // any non-zero byte
  EXPECT_EQ(response.challenge, Of({1, 2, 3}));
  EXPECT_FALSE(DecodeConnectionResponse(body.data(), body.size() - 1, response));  // challenge cut
  EXPECT_FALSE(DecodeConnectionResponse(body.data(), 0, response));
  EXPECT_TRUE(DecodeConnectionResponse(Of({0}).data(), 1, response));  // a refusal needs no challenge
  EXPECT_FALSE(response.accepted);

  AuthResponse auth;
  body = Of({1, 5, 0, 6, 0, 9, 0});
  EXPECT_TRUE(DecodeAuthResponse(body.data(), body.size(), auth));
  EXPECT_EQ(auth.serverInfo, (ServerInfo{5, 6}));
  EXPECT_EQ(auth.playerNumber, 9);
  auth = {};
  EXPECT_FALSE(DecodeAuthResponse(body.data(), 5, auth));  // ServerInfo but no number
  EXPECT_EQ(auth.serverInfo, (ServerInfo{5, 6}));
  auth = {};
  EXPECT_FALSE(DecodeAuthResponse(body.data(), 1, auth));  // nothing after the flag: defaults stand
  EXPECT_EQ(auth.serverInfo, (ServerInfo{11, 0}));
  body = Concat({Of({0}), Text("full")});
  EXPECT_TRUE(DecodeAuthResponse(body.data(), body.size(), auth));
  EXPECT_EQ(auth.reason, "full");
  EXPECT_FALSE(DecodeAuthResponse(body.data(), body.size() - 1, auth));

  ServerError error;
  body = Concat({Of({0}), Text("hi")});
  EXPECT_TRUE(DecodeServerError(body.data(), body.size(), error));
  EXPECT_EQ(error.text, "hi");
  EXPECT_FALSE(DecodeServerError(body.data(), 8, error));
  EXPECT_FALSE(DecodeServerError(body.data(), body.size() - 1, error));

  RecordingData recording;
  body = Concat({Of({0x34, 0x12}), Count(2), Of({5, 6})});
  EXPECT_TRUE(DecodeRecordingData(body.data(), body.size(), recording));
  EXPECT_EQ(recording.game, 0x1234);
  EXPECT_EQ(recording.bytes, Of({5, 6}));
  EXPECT_FALSE(DecodeRecordingData(body.data(), body.size() - 1, recording));
  EXPECT_FALSE(DecodeRecordingData(body.data(), 9, recording));

  CreateGame create;
  body = Concat({Text("room"), Count(1), Of({2}), Of({1, 0, 3, 0, 0})});
  EXPECT_TRUE(DecodeCreateGame(body.data(), body.size(), create));
  EXPECT_EQ(create, (CreateGame{"room", {2}, 1, 3, false}));
  EXPECT_FALSE(DecodeCreateGame(body.data(), body.size() - 1, create));
}

TEST(LobbyMessagesTest, PlayerNamesAreReadLeniently) {
  Bytes const one = Concat({Count(1), Of({7}), Text("ann")});
  Bytes body = Concat({Count(3), one, one});
  std::vector<PlayerNameInfo> names = DecodePlayerNames(body.data(), body.size());
  ASSERT_EQ(names.size(), 3u);  // sized to the count; the third is never reached
  EXPECT_EQ(names[1], (PlayerNameInfo{{7}, "ann"}));
  EXPECT_EQ(names[2], PlayerNameInfo{});
  names = DecodePlayerNames(body.data(), body.size() - 1);  // the second is cut short
  EXPECT_EQ(names[0].name, "ann");
  EXPECT_TRUE(names[1].name.empty());
  body = Concat({Count(1000), one});
  EXPECT_TRUE(DecodePlayerNames(body.data(), body.size()).empty());
  EXPECT_TRUE(DecodePlayerNames(body.data(), 3).empty());
}

TEST(LobbyMessagesTest, GameResultsKeepTheListWhenTheHeaderIsBad) {
  std::vector<GameResults> games(2);
  games[0].finished = true;
  std::uint32_t first = 5;
  Bytes body = Concat({Of({9, 0, 0, 0}), Count(100)});
  EXPECT_FALSE(DecodeGameResults(body.data(), body.size(), first, games));
  EXPECT_EQ(first, 5u);
  EXPECT_EQ(games.size(), 2u);
  EXPECT_TRUE(games[0].finished);
  EXPECT_FALSE(DecodeGameResults(body.data(), 11, first, games));
  EXPECT_EQ(games.size(), 2u);
}
