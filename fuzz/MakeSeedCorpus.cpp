// Writes the seed corpus of the fuzz targets: a few small, valid records for each reader, one file
// each, in <directory>/<target>/. Run it again after a change of the encoding and commit the result.
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "accounts/CredentialsFile.h"
#include "accounts/CredentialsString.h"
#include "net/GameRecordsWire.h"
#include "net/LobbyRecordsWire.h"
#include "sim/Recording.h"
#include "net/ServerInfo.h"
#include "net/GameDataPacket.h"
#include "net/LobbyMessages.h"
#include "net/MessageFramer.h"

namespace {

using Bytes = std::vector<unsigned char>;

template <class T>
Bytes Encode(T const& value) {
  Bytes out;
  ToBytes(value, out);
  return out;
}

Bytes Prefixed(unsigned char selector, Bytes const& rest) {
  Bytes bytes{selector};
  bytes.insert(bytes.end(), rest.begin(), rest.end());
  return bytes;
}

GameSettings Settings() { return GameSettings{{{"map", "Canyon"}, {"mode", "x"}}, {{"duration_seconds", 90}}}; }

GameSpec Spec(GameSpecSettings settings) {
  GameSpec spec;
  spec.game = Game::Aviators;
  spec.settings = std::move(settings);
  spec.delayFrames = 12;
  spec.minPlayers = 2;
  spec.maxPlayers = 4;
  return spec;
}

RunningGameState Running() { return RunningGameState{3, true, {1, 0}, {false, true}}; }

GameRoom Room() {
  GameRoom room;
  room.description = "room";
  room.minPlayers = 1;
  room.maxPlayers = 2;
  room.specBytes = Encode(Spec(RankedMatchIndex{1}));
  room.players = {1, 0};
  room.slotChoices = {-1, 1};
  room.assignedSlots = {0, 1};
  room.ready = {true, false};
  room.roomToken = 77;
  room.runningGame = Running();
  room.lastResultsIndex = 5;
  return room;
}

LobbyState Lobby() {
  LobbyState lobby;
  lobby.players = {PlayerInLobby{{1, 2, 3, 4, 5, 6, 7, 8}, 0}, std::nullopt, PlayerInLobby{{8, 7}, PlayerInLobby::kNoRoom}};
  lobby.rooms = {Room(), std::nullopt};
  return lobby;
}

GameResult Result() { return GameResult{600, {{2, 50}, {1, 20}}, 0x1234567890ull}; }

GameResults Results() {
  GameResults results;
  results.specBytes = Encode(Spec(CoopChallengeIndex{0}));
  results.finished = true;
  results.timestampMs = 1700000000000ull;
  results.playerIds = {{1, 1, 1, 1, 1, 1, 1, 1}, {2, 2, 2, 2, 2, 2, 2, 2}};
  results.playerNames = {"A", "B"};
  results.playerSlots = {0, 1};
  results.reportedResults = {Encode(Result()), {}};
  return results;
}

Bytes RecordingFile(std::deque<Bytes> const& newestFirst) {
  std::stringstream file;
  Recording(newestFirst, Results()).save(file);
  std::string const text = file.str();
  return Bytes(text.begin(), text.end());
}

Bytes Text(std::string const& text) { return Bytes(text.begin(), text.end()); }

void Write(std::filesystem::path const& directory, std::string const& target, std::vector<Bytes> const& seeds) {
  std::filesystem::create_directories(directory / target);
  for (std::size_t i = 0; i < seeds.size(); ++i) {
    std::ofstream out(directory / target / ("seed-" + std::to_string(i)), std::ios::binary | std::ios::trunc);
    out.write(reinterpret_cast<char const*>(seeds[i].data()), static_cast<std::streamsize>(seeds[i].size()));
  }
}

// Lobby messages, each as the server or the client writes it (type byte first).
std::vector<Bytes> Messages() {
  using namespace LobbyMessages;
  return {EncodeVersion(1003),
          EncodeConnectionResponse({true, {1, 2, 3, 4}}),
          EncodeAuthRequest({{1, 2, 3, 4, 5, 6, 7, 8}, 99}),
          EncodeAuthResponse({true, "", ServerInfo{12, 3}, 1}),
          EncodeAuthResponse({false, "refused", {}, 0}),
          EncodeLobbyState(Lobby()),
          EncodeMoveToGameRoom(1),
          EncodeCreateGame({"room", Encode(Spec(CoopChallengeIndex{1})), 1, 4, true}),
          EncodeGameStart(0x1122334455667788ull),
          EncodeRunningGameState(Running()),
          EncodeGameEnd(Result()),
          EncodeGameResults(3, {Results(), Results()}),
          EncodePlayerNames({{{1, 2, 3, 4, 5, 6, 7, 8}, "Name"}, {{2}, ""}}),
          EncodeChangeName("Name"),
          EncodeServerError({false, "room full"}),
          EncodeKeepAlive(),
          EncodeRequestRecording(3),
          EncodeRecordingData({3, RecordingFile({{1, 'b', 0}})})};
}

// A server's side of a session: the login answers, then the lobby's messages, framed.
Bytes ServerStream() {
  using namespace LobbyMessages;
  Bytes stream;
  for (Bytes const& message :
       {EncodeVersion(1003), EncodeConnectionResponse({true, {5, 6}}), EncodeAuthResponse({true, "", {}, 1}),
        EncodeLobbyState(Lobby()), EncodeGameStart(42), EncodeRunningGameState(Running()),
        EncodeGameResults(0, {Results()}), EncodePlayerNames({{{1}, "A"}}), EncodeServerError({false, "x"}),
        EncodeRecordingData({2, {1, 2}})}) {
    Bytes const frame = SocketPlatform::MakeFrame(message);
    stream.insert(stream.end(), frame.begin(), frame.end());
  }
  return stream;
}

Bytes Packet(std::uint64_t newest, std::uint64_t receivedBefore, std::vector<Bytes> updates) {
  Bytes bytes;
  GameDataPacket{newest, receivedBefore, std::move(updates)}.to_wire(bytes);
  return bytes;
}

// Datagrams each behind a length byte, as the update stream target reads them.
Bytes Datagrams(std::vector<Bytes> const& datagrams) {
  Bytes bytes;
  for (Bytes const& datagram : datagrams) {
    bytes.push_back(static_cast<unsigned char>(datagram.size()));
    bytes.insert(bytes.end(), datagram.begin(), datagram.end());
  }
  return bytes;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fprintf(stderr, "usage: %s <corpus directory>\n", argv[0]);
    return 2;
  }
  std::filesystem::path const out = argv[1];
  Credentials const account{{0xA0, 0xA1, 0xA2, 0xA3, 0xA4, 0xA5, 0xA6, 0xA7},
                            {0xFF, 0xFE, 0xFD, 0x30, 0x31, 0x32, 0x33, 0x34, 0x35, 0x36, 0x37, 0x38, 0x39, 0x3A, 0x3B, 0x3C}};
  std::string const text = EncodeCredentialsString(account);
  Write(out, "credentials_string", {Bytes(text.begin(), text.end()),
                                    Text(" " + text.substr(0, 12) + "\n" + text.substr(12) + "\r\n"), Text("AB==")});
  Write(out, "credentials_file",
        {CredentialsFileBytes(account), Bytes{0, 0, 0, 0, 3, 0, 0, 0, 1, 2, 3, 20, 0, 0, 0, 1, 2, 3, 4, 5, 6, 7, 8, 9,
                                              10, 11, 12, 13, 14, 15, 16, 17, 18, 19, 20}});
  Write(out, "tutorial_progress", {Text("[tutorial]\n0=completed\n1=skipped\n\n[attempts]\n0=3\n1=1\n"),
                                   Text("  [attempts]\r\n 2 = 4 \r\n[other]\nx=y\n[tutorial]\n-1=completed\n")});
  Write(out, "lobby_state", {Encode(Lobby()), Encode(LobbyState{})});
  Write(out, "game_room", {Encode(Room()), Encode(GameRoom{})});
  Write(out, "running_game_state", {Encode(Running())});
  Write(out, "game_results", {Encode(Results())});
  Write(out, "player_name_info", {Encode(PlayerNameInfo{{1, 2, 3, 4, 5, 6, 7, 8}, "Name"})});
  Write(out, "game_result", {Encode(Result()), Encode(GameResult{})});
  Write(out, "game_settings", {Encode(Settings()), Encode(GameSettings{})});
  Write(out, "settings_variant", {Encode(GameSpecSettings{CoopChallengeIndex{2}}),
                                  Encode(GameSpecSettings{RankedMatchIndex{1}}), Encode(GameSpecSettings{Settings()})});
  Write(out, "vector_of_bool", {Encode(std::vector<bool>{true, false, true})});
  Write(out, "vectors", {Prefixed(0, Encode(std::vector<unsigned short>{1, 65535})),
                         Prefixed(1, Encode(std::vector<short>{-1, 3})),
                         Prefixed(2, Encode(std::vector<std::string>{"a", ""})),
                         Prefixed(3, Encode(std::vector<Bytes>{{1, 2}, {}})),
                         Prefixed(4, Encode(std::vector<std::vector<long long>>{{1, -1}, {}})),
                         Prefixed(5, Encode(std::optional<unsigned short>{7}))});
  Write(out, "strings", {Prefixed(0, Encode(std::string("abc"))), Prefixed(1, Encode(Bytes{0, 255}))});
  Write(out, "game_spec", {Encode(Spec(CoopChallengeIndex{1})), Encode(Spec(RankedMatchIndex{0})),
                           Encode(Spec(Settings())), Bytes{2, 0}});
  Bytes serverInfo;
  ServerInfo{12, 3}.to_wire(serverInfo);
  Write(out, "server_info", {serverInfo});
  Write(out, "recording", {RecordingFile({{1, 'b', 0}, {1, 'a', 2, 'x', 'y'}}), RecordingFile({})});
  Write(out, "split_server_data", {Bytes{3, 2, 'A', 'B', 0, 1, 'C'}, Bytes{2, 1, 'x', 0}});
  Write(out, "lobby_messages", Messages());
  Write(out, "lobby_client", {ServerStream()});
  Write(out, "tcp_framing", {Prefixed(7, ServerStream()), Prefixed(0, SocketPlatform::MakeFrame(Bytes{}))});
  auto const request = Datagram::EncodeSessionRequest(77);
  Write(out, "game_data_packet", {Packet(2, 1, {{1, 'a', 0, 0}, {1, 'b', 0, 0}, {}}), Packet(0, 0, {}),
                                  Bytes(request.begin(), request.end())});
  Write(out, "update_stream", {Datagrams({Packet(0, 0, {{1, 'a', 0, 0}}), Packet(1, 1, {{0, 0, 0}, {1, 'a', 0, 0}}),
                                          Packet(1, 0, {{}, {}}), Bytes{2}})});
  return 0;
}
