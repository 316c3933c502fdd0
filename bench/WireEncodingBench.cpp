// Parsing a busy lobby: the LOBBY_STATE that a client reads on every change in the lobby.
#include <benchmark/benchmark.h>

#include "net/GameRecordsWire.h"
#include "net/LobbyRecordsWire.h"

namespace {

// 256 players, 64 rooms of 4 places, every fourth room running a game.
LobbyState BusyLobby() {
  GameSpec spec;
  spec.game = Game::Aviators;
  spec.settings = GameSettings{{{"map", "Canyon"}}, {{"duration_seconds", 180}}};
  spec.maxPlayers = 4;
  std::vector<unsigned char> specBytes;
  ToBytes(spec, specBytes);

  LobbyState lobby;
  for (unsigned short number = 0; number < 256; ++number) {
    PlayerInLobby player;
    player.playerId = {1, 2, 3, 4, 5, 6, static_cast<unsigned char>(number), static_cast<unsigned char>(number >> 8)};
    player.roomIndex = number % 4 == 3 ? PlayerInLobby::kNoRoom : static_cast<unsigned short>(number / 4);
    lobby.players.emplace_back(player);
  }
  for (unsigned short index = 0; index < 64; ++index) {
    GameRoom room;
    room.description = "Room number " + std::to_string(index) + ", all welcome";
    room.minPlayers = 1;
    room.maxPlayers = 4;
    room.specBytes = specBytes;
    room.repeatedIdsAllowed = true;
    for (unsigned short place = 0; place < 3; ++place) {
      room.players.push_back(static_cast<unsigned short>(index * 4 + place));
      room.slotChoices.push_back(-1);
      room.assignedSlots.push_back(static_cast<short>(place));
      room.ready.push_back(place != 1);
    }
    room.roomToken = 0x1000 + index;
    if (index % 4 == 0) {
      room.runningGame = RunningGameState{static_cast<unsigned short>(index), true, room.players, {false, false, false}};
    }
    room.lastResultsIndex = index;
    lobby.rooms.emplace_back(std::move(room));
  }
  return lobby;
}

// Into a fresh mirror, as the first LOBBY_STATE of a connection.
void BM_ParseLobbyStateFresh(benchmark::State& state) {
  std::vector<unsigned char> bytes;
  ToBytes(BusyLobby(), bytes);
  for (auto _ : state) {
    LobbyState lobby;
    unsigned char const* cursor = bytes.data();
    std::size_t remaining = bytes.size();
    bool const ok = FromBytes(cursor, remaining, lobby);
    benchmark::DoNotOptimize(ok);
    benchmark::DoNotOptimize(lobby);
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * bytes.size()));
  state.counters["bytes"] = static_cast<double>(bytes.size());
}
BENCHMARK(BM_ParseLobbyStateFresh);

// Over the previous mirror, as every later LOBBY_STATE: the vectors' storage is reused.
void BM_ParseLobbyStateOverMirror(benchmark::State& state) {
  std::vector<unsigned char> bytes;
  ToBytes(BusyLobby(), bytes);
  LobbyState lobby;
  for (auto _ : state) {
    unsigned char const* cursor = bytes.data();
    std::size_t remaining = bytes.size();
    bool const ok = FromBytes(cursor, remaining, lobby);
    benchmark::DoNotOptimize(ok);
    benchmark::ClobberMemory();
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * bytes.size()));
}
BENCHMARK(BM_ParseLobbyStateOverMirror);

}  // namespace
