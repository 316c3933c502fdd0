// The server's lobby message handler under fuzzed messages from three logged-in connections and one
// that never logs in, mixed with time passing, disconnections, game starts and datagrams. After every
// step the lobby must hold together: parallel vectors in step, players and rooms pointing at each
// other, slots distinct, and the LOBBY_STATE it would send reading back to itself.
#include <algorithm>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <map>
#include <set>
#include <vector>

#include "FuzzChecks.h"
#include "LobbyServer.h"
#include "MemoryStorage.h"
#include "accounts/SaltedHash.h"
#include "net/LobbyMessages.h"

namespace {

struct FakeHost final : IServerHost {
  std::map<ConnectionId, std::vector<unsigned char>> challenge;
  std::map<ConnectionId, std::uint64_t> sessionToken;
  std::set<unsigned short> ports;
  void send(ConnectionId connection, std::vector<unsigned char> const& payload) override {
    FUZZ_REQUIRE(!payload.empty());
    if (payload[0] == 1) {
      LobbyMessages::ConnectionResponse response;
      FUZZ_REQUIRE(LobbyMessages::DecodeConnectionResponse(payload.data() + 1, payload.size() - 1, response));
      challenge[connection] = response.challenge;
    }
    if (payload[0] == 9) {
      FUZZ_REQUIRE(payload.size() == 9);
      LobbyMessages::DecodeGameStart(payload.data() + 1, 8, sessionToken[connection]);
    }
  }
  void close(ConnectionId) override {}
  bool openPort(unsigned short offset) override { return ports.insert(offset).second; }
  void closePort(unsigned short offset) override { ports.erase(offset); }
  void sendDatagram(unsigned short offset, Endpoint const&, std::vector<unsigned char> const& bytes) override {
    FUZZ_REQUIRE(ports.count(offset) == 1);
    FUZZ_REQUIRE(!bytes.empty() && bytes.size() <= 65507);
  }
};

std::vector<unsigned char> Id(unsigned char n) {
  return {n, 1, 2, 3, 4, 5, 6, 7};
}
std::vector<unsigned char> Secret(unsigned char n) {
  return std::vector<unsigned char>(16, static_cast<unsigned char>(n + 40));
}

void Login(LobbyServer& lobby, FakeHost& host, ConnectionId id, unsigned char account) {
  lobby.onConnect(id, 0);
  std::vector<unsigned char> const version = {0, 0xEB, 0x03, 0, 0};
  lobby.onMessage(id, version.data(), version.size(), 0);
  LobbyMessages::AuthRequest request{Id(account), SaltedHash(host.challenge[id], Secret(account))};
  auto const message = LobbyMessages::EncodeAuthRequest(request);
  lobby.onMessage(id, message.data(), message.size(), 0);
}

void CheckLobby(LobbyServer const& lobby) {
  LobbyState const state = lobby.snapshot().lobby;
  for (std::size_t r = 0; r < state.rooms.size(); ++r) {
    if (!state.rooms[r]) continue;
    GameRoom const& room = *state.rooms[r];
    std::size_t const n = room.players.size();
    FUZZ_REQUIRE(room.slotChoices.size() == n && room.assignedSlots.size() == n && room.ready.size() == n);
    FUZZ_REQUIRE(n <= room.maxPlayers);
    FUZZ_REQUIRE(n > 0 || room.runningGame);
    std::set<short> slots;
    for (std::size_t i = 0; i < n; ++i) {
      unsigned short const p = room.players[i];
      FUZZ_REQUIRE(p < state.players.size() && state.players[p] && state.players[p]->roomIndex == r);
      FUZZ_REQUIRE(room.assignedSlots[i] >= 0 && room.assignedSlots[i] < 4);
      FUZZ_REQUIRE(slots.insert(room.assignedSlots[i]).second);
    }
    if (room.runningGame) {
      FUZZ_REQUIRE(room.runningGame->players.size() == room.runningGame->disconnected.size());
    }
  }
  for (std::size_t p = 0; p < state.players.size(); ++p) {
    if (!state.players[p] || state.players[p]->roomIndex == PlayerInLobby::kNoRoom) continue;
    unsigned short const r = state.players[p]->roomIndex;
    FUZZ_REQUIRE(r < state.rooms.size() && state.rooms[r]);
    auto const& members = state.rooms[r]->players;
    FUZZ_REQUIRE(std::find(members.begin(), members.end(), p) != members.end());
  }
  auto const bytes = LobbyMessages::EncodeLobbyState(state);
  LobbyState back;
  FUZZ_REQUIRE(LobbyMessages::DecodeLobbyState(bytes.data() + 1, bytes.size() - 1, back));
  FUZZ_REQUIRE(back == state);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
  MemoryStorage storage;
  for (unsigned char n = 0; n < 2; ++n) storage.addAccount(Id(n), Secret(n), "Player");
  FakeHost host;
  // Games aren't re-simulated here (the games' code isn't part of this target): a disputed game is
  // settled as not replayable, which exercises the lobby's side of a dispute.
  LobbyServer lobby(host, storage, LobbyTimeouts{},
                    [](std::uint32_t game, std::vector<unsigned char> const&, std::atomic<bool> const&) {
                      SettledDispute dispute;
                      dispute.game = game;
                      dispute.error = "not re-simulated while fuzzing";
                      return dispute;
                    });
  // Connections 1 to 3 log in (3 with the first account again); 4 stays unauthenticated.
  Login(lobby, host, 1, 0);
  Login(lobby, host, 2, 1);
  Login(lobby, host, 3, 0);
  lobby.onConnect(4, 0);
  std::int64_t now = 0;
  std::size_t at = 0;
  auto take = [&]() -> unsigned { return at < size ? data[at++] : 0; };
  while (at < size) {
    unsigned const op = take();
    ConnectionId const connection = 1 + (op >> 4) % 4;
    switch (op & 7) {
      case 0:
      case 1:
      case 2: {
        std::size_t length = take();
        if ((op & 7) == 2) length = length * 8 + take();
        length = std::min(length, size - at);
        std::vector<unsigned char> message(data + at, data + at + length);
        at += length;
        if (!message.empty()) lobby.onMessage(connection, message.data(), message.size(), now);
        break;
      }
      case 3:
        now += static_cast<std::int64_t>(take()) * 250;
        lobby.tick(now);
        break;
      case 4: {
        // The host of the connection's room starts it with the right token.
        LobbyState const state = lobby.snapshot().lobby;
        for (auto const& room : state.rooms) {
          if (room) {
            auto const message = LobbyMessages::EncodeGameStart(room->roomToken);
            lobby.onMessage(connection, message.data(), message.size(), now);
          }
        }
        break;
      }
      case 5: {
        // A session request with the connection's token, then fuzzed datagrams from its address.
        Endpoint const from{0x7f000001u, static_cast<std::uint16_t>(1000 + connection)};
        unsigned short const offset = host.ports.empty() ? 2 : *host.ports.begin();
        auto const request = Datagram::EncodeSessionRequest(host.sessionToken[connection]);
        lobby.onDatagram(offset, from, request.data(), request.size(), now);
        std::size_t const length = std::min<std::size_t>(take(), size - at);
        if (length > 0) lobby.onDatagram(offset, from, data + at, length, now);
        at += length;
        break;
      }
      case 6:
        lobby.onDisconnect(connection, now);
        break;
      case 7:
        lobby.onOversizedMessage(connection);
        break;
    }
    CheckLobby(lobby);
  }
  return 0;
}
