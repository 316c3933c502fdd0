// Every reader fed random and mutated bytes: no crash, no read past the end (the sanitizer build
// checks that), a consistent cursor, and retained memory bounded by the input's size.
#include <gtest/gtest.h>

#include <functional>
#include <random>
#include <string>

#include "net/GameRecordsWire.h"
#include "net/LobbyRecordsWire.h"
#include "net/ServerInfo.h"
#include "sim/SplitServerData.h"
#include "support/Bytes.h"
#include "support/SampleRecords.h"

using namespace testbytes;

namespace {

// Bytes held by a value's heap storage, by capacity.
template <class T>
std::size_t Footprint(std::vector<T> const& value);
std::size_t Footprint(std::string const& value) { return value.capacity() > 15 ? value.capacity() : 0; }
std::size_t Footprint(std::vector<bool> const& value) { return value.capacity() / 8; }
std::size_t Footprint(unsigned short) { return 0; }
std::size_t Footprint(short) { return 0; }
std::size_t Footprint(unsigned char) { return 0; }
std::size_t Footprint(long long) { return 0; }
std::size_t Footprint(GameSettings const& value) {
  std::size_t total = (value.strings.bucket_count() + value.ints.bucket_count()) * sizeof(void*);
  for (auto const& [key, text] : value.strings) total += 64 + Footprint(key) + Footprint(text);
  for (auto const& [key, number] : value.ints) total += 64 + Footprint(key);
  return total;
}
std::size_t Footprint(GameSpecSettings const& value) {
  return std::holds_alternative<GameSettings>(value) ? Footprint(std::get<GameSettings>(value)) : 0;
}
std::size_t Footprint(GameResult const& value) { return Footprint(value.results); }
std::size_t Footprint(PlayerInLobby const& value) { return Footprint(value.playerId); }
std::size_t Footprint(PlayerNameInfo const& value) { return Footprint(value.playerId) + Footprint(value.name); }
std::size_t Footprint(RunningGameState const& value) { return Footprint(value.players) + Footprint(value.disconnected); }
std::size_t Footprint(GameRoom const& value) {
  return Footprint(value.description) + Footprint(value.specBytes) + Footprint(value.players) +
         Footprint(value.slotChoices) + Footprint(value.assignedSlots) + Footprint(value.ready) +
         (value.runningGame ? Footprint(*value.runningGame) : 0);
}
template <class T>
std::size_t Footprint(std::optional<T> const& value) {
  return value ? Footprint(*value) : 0;
}
std::size_t Footprint(LobbyState const& value) { return Footprint(value.players) + Footprint(value.rooms); }
std::size_t Footprint(GameResults const& value) {
  return Footprint(value.specBytes) + Footprint(value.playerIds) + Footprint(value.playerNames) +
         Footprint(value.playerSlots) + Footprint(value.reportedResults);
}
template <class T>
std::size_t Footprint(std::vector<T> const& value) {
  std::size_t total = value.capacity() * sizeof(T);
  for (T const& element : value) total += Footprint(element);
  return total;
}

// The largest element of any record is an optional GameRoom; a count can promise one element per
// byte left, so retained memory may reach that size times the input, and no more.
constexpr std::size_t kBytesPerInputByte = sizeof(std::optional<GameRoom>) + 64;

class WireRobustness : public ::testing::Test {
protected:
  // Random buffers of random length, and the valid encodings given with single bytes changed, bytes
  // cut off or a count field overwritten by a huge value.
  std::vector<Bytes> Inputs(std::vector<Bytes> const& valid) {
    std::vector<Bytes> inputs;
    for (int i = 0; i < 1500; ++i) {
      Bytes bytes(random_() % 200);
      for (unsigned char& byte : bytes) byte = static_cast<unsigned char>(random_() % 4 == 0 ? random_() : random_() % 4);
      inputs.push_back(std::move(bytes));
    }
    for (Bytes const& encoding : valid) {
      for (int i = 0; i < 800 && !encoding.empty(); ++i) {
        Bytes bytes = encoding;
        std::size_t const at = random_() % bytes.size();
        switch (i % 3) {
          case 0: bytes[at] = static_cast<unsigned char>(random_()); break;
          case 1: bytes.resize(at); break;
          default:
            for (std::size_t k = at; k < std::min(at + 8, bytes.size()); ++k) bytes[k] = 0xFF;
            break;
        }
        inputs.push_back(std::move(bytes));
      }
    }
    return inputs;
  }

  template <class T>
  void CheckReader(std::vector<Bytes> const& valid) {
    for (Bytes const& input : Inputs(valid)) {
      T value{};
      ReadOutcome const outcome = Decode(input, value);
      ASSERT_EQ(outcome.consumed + outcome.remaining, input.size());
      ASSERT_LE(Footprint(value), 256 + kBytesPerInputByte * input.size()) << "input of " << input.size();
      if (outcome.ok) {
        // Whatever parses writes back to bytes that parse to the same value.
        T again{};
        ASSERT_TRUE(Decode(Encode(value), again).ok);
        ASSERT_EQ(again, value);
      }
    }
  }

  std::mt19937 random_{20240611};
};

}  // namespace

TEST_F(WireRobustness, StringsAndContainers) {
  CheckReader<std::string>({Encode(std::string("hello"))});
  CheckReader<Bytes>({Encode(Bytes{1, 2, 3})});
  CheckReader<std::vector<bool>>({Encode(std::vector<bool>{true, false, true})});
  CheckReader<std::vector<unsigned short>>({Encode(std::vector<unsigned short>{1, 2, 3})});
  CheckReader<std::vector<short>>({Encode(std::vector<short>{-1, 2})});
  CheckReader<std::vector<std::string>>({Encode(std::vector<std::string>{"a", "", "bc"})});
  CheckReader<std::vector<Bytes>>({Encode(std::vector<Bytes>{{1}, {}, {2, 3}})});
  CheckReader<std::vector<std::vector<long long>>>({Encode(std::vector<std::vector<long long>>{{1, -2}, {}})});
  CheckReader<std::optional<unsigned short>>({Encode(std::optional<unsigned short>{9})});
}

TEST_F(WireRobustness, GameRecords) {
  GameSettings settings{{{"map", "Canyon"}, {"x", ""}}, {{"duration_seconds", 60}}};
  CheckReader<GameSettings>({Encode(settings)});
  CheckReader<GameSpecSettings>({Encode(GameSpecSettings{settings}), Encode(GameSpecSettings{RankedMatchIndex{3}})});
  CheckReader<GameResult>({Encode(GameResult{10, {{1, 2}, {3}}, 99})});
}

TEST_F(WireRobustness, LobbyRecords) {
  CheckReader<PlayerInLobby>({Encode(PlayerInLobby{{1, 2}, 3})});
  CheckReader<std::optional<PlayerInLobby>>({Encode(std::optional<PlayerInLobby>{PlayerInLobby{{1}, 2}})});
  CheckReader<RunningGameState>({Encode(samples::Running())});
  CheckReader<std::optional<RunningGameState>>({Encode(std::optional<RunningGameState>{samples::Running()})});
  CheckReader<GameRoom>({Encode(samples::Room())});
  CheckReader<std::optional<GameRoom>>({Encode(std::optional<GameRoom>{samples::Room()})});
  CheckReader<LobbyState>({Encode(samples::Lobby())});
  CheckReader<GameResults>({Encode(samples::Results())});
  CheckReader<PlayerNameInfo>({Encode(PlayerNameInfo{{1, 2}, "Name"})});
}

TEST_F(WireRobustness, TolerantReadersAndSplitting) {
  GameSpec spec;
  spec.settings = GameSettings{{{"map", "Canyon"}}, {}};
  for (Bytes const& input : Inputs({Encode(spec)})) {
    GameSpec const parsed = ParseGameSpec(input);
    // A GameSpec that parsed writes back to bytes that parse to the same GameSpec.
    ASSERT_EQ(ParseGameSpec(Encode(parsed)), parsed);
  }
  for (Bytes const& input : Inputs({Of({1, 2, 3, 4})})) {
    unsigned char const* cursor = input.data();
    std::size_t remaining = input.size();
    ServerInfo const info = ServerInfo::from_wire(cursor, remaining);
    std::size_t const consumed = static_cast<std::size_t>(cursor - input.data());
    ASSERT_EQ(consumed, std::min<std::size_t>(input.size(), 4) & ~std::size_t{1});
    ASSERT_EQ(consumed + remaining, input.size());
    if (input.size() < 2) {
      ASSERT_EQ(info, ServerInfo{});
    }
  }
  for (Bytes const& input : Inputs({Of({2, 'a', 'b', 0, 1, 'c'})})) {
    int const players = static_cast<int>(input.size() % 5);
    std::vector<Bytes> const orders = SplitServerData(input, players);
    ASSERT_EQ(orders.size(), static_cast<std::size_t>(players));
    std::size_t total = 0;
    for (Bytes const& order : orders) total += order.size() + 1;
    ASSERT_LE(total, input.size() + static_cast<std::size_t>(players));
  }
}
