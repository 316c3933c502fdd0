// Several tandem clients and a relay built from the update stream, joined by an in-memory network
// that loses, duplicates, reorders and delays datagrams. Every client must get every collated tick
// exactly once and in order, and a lockstep game played over it must end the same on every client.

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <random>
#include <string>

#include "glow_horde/GlowHordeSimulation.h"
#include "glow_horde/Order.h"
#include "net/GameRecordsWire.h"
#include "net/NetworkOrderSource.h"
#include "net/TandemClient.h"
#include "net/TestUDPTransport.h"
#include "net/UDPDataStream.h"
#include "sim/Games.h"
#include "sim/IGame.h"
#include "sim/SplitServerData.h"
#include "sim/UpdateSimulation.h"

namespace {

using Bytes = std::vector<unsigned char>;
using Frame = std::vector<Bytes>;
using Client = TandemClient<TestUDPTransport>;

struct Conditions {
  int dropPercent = 20;
  int duplicatePercent = 10;
  int maxDelay = 4;  // passes a datagram may take, each way; differing delays reorder
};

// Datagrams in flight between the clients and the relay. Each send is lost, delivered once, or
// delivered twice, each copy after its own random delay.
class LossyNetwork {
public:
  static constexpr int kRelay = -1;

  LossyNetwork(unsigned seed, Conditions conditions) : random_(seed), conditions_(conditions) {}

  void send(int now, int from, int to, Bytes const& bytes) {
    ++sent;
    if (percent() < conditions_.dropPercent) {
      ++dropped;
      return;
    }
    int const copies = percent() < conditions_.duplicatePercent ? 2 : 1;
    duplicated += copies - 1;
    for (int copy = 0; copy < copies; ++copy) {
      int const delay = std::uniform_int_distribution<int>(0, conditions_.maxDelay)(random_);
      flight_.push_back({now + delay, order_++, from, to, bytes});
    }
  }

  // Hands every datagram due by now to deliver(from, to, bytes), earliest due first.
  template <class Deliver>
  void deliver(int now, Deliver&& deliverTo) {
    std::stable_sort(flight_.begin(), flight_.end(),
                     [](InFlight const& a, InFlight const& b) { return a.due < b.due; });
    auto const due = std::find_if(flight_.begin(), flight_.end(), [now](InFlight const& d) { return d.due > now; });
    std::vector<InFlight> arriving(std::make_move_iterator(flight_.begin()), std::make_move_iterator(due));
    flight_.erase(flight_.begin(), due);
    for (InFlight const& datagram : arriving) {
      deliverTo(datagram.from, datagram.to, datagram.bytes);
    }
  }

  int sent = 0;
  int dropped = 0;
  int duplicated = 0;

private:
  struct InFlight {
    int due;
    long long order;
    int from;
    int to;
    Bytes bytes;
  };
  int percent() { return std::uniform_int_distribution<int>(0, 99)(random_); }

  std::mt19937 random_;
  Conditions conditions_;
  std::vector<InFlight> flight_;
  long long order_ = 0;
};

// The relay: one stream with a peer for each player, over the network.
class Match {
public:
  Match(int players, int delayFrames, unsigned seed, Conditions conditions)
      : network(seed, conditions), relay(players) {
    for (int c = 0; c < players; ++c) {
      auto client = std::make_shared<Client>(TestUDPTransport{}, players, delayFrames);
      client->transport().send_hook = [this, c](int, Bytes const& bytes) {
        network.send(pass_, c, LossyNetwork::kRelay, bytes);
        return true;
      };
      clients.push_back(client);
    }
  }
  Match(Match const&) = delete;

  // One pass of the relay, before the clients step.
  void runRelay() {
    ++pass_;
    network.deliver(pass_, [this](int from, int to, Bytes const& bytes) {
      if (to == LossyNetwork::kRelay) {
        if (!bytes.empty() && bytes[0] == Datagram::kGameData) {
          relay.handle_game_packet(bytes.data(), bytes.size(), from);
        }
      } else {
        clients[static_cast<std::size_t>(to)]->transport().incoming.emplace_back(0, bytes);
      }
    });
    std::uint64_t const before = relay.next_tick;
    relay.collate();
    std::vector<Bytes> fresh = relay.send_queues[0].all_with_age_up_to(static_cast<unsigned char>(relay.next_tick - before));
    collated.insert(collated.end(), fresh.rbegin(), fresh.rend());
    relay.discard_acknowledged();
    relay.send_updates(*this);
  }

  // The relay's transport.
  bool send_packet(int peer, void const* data, std::size_t length) {
    auto const* bytes = static_cast<unsigned char const*>(data);
    network.send(pass_, LossyNetwork::kRelay, peer, Bytes(bytes, bytes + length));
    return true;
  }

  LossyNetwork network;
  UDPDataStream relay;
  std::vector<std::shared_ptr<Client>> clients;
  std::vector<Bytes> collated;  // every tick the relay built, in order

private:
  int pass_ = 0;
};

// A session stand-in: gives a random order of 0 to 6 bytes on each of its first `orders` steps and
// keeps every frame it is given.
struct RecordingSession {
  int delay = 0;
  int orders = 0;
  std::mt19937 random;
  Bytes pending;
  bool drawn = false;
  std::vector<Bytes> given;
  std::vector<Frame> seen;

  bool gameEnded() const { return static_cast<int>(seen.size()) >= orders + delay; }
  bool gameEnded_LocalPlayer() const { return static_cast<int>(seen.size()) >= orders; }
  Bytes processUIInputsAndGetOurNextOrder() {
    if (!drawn) {  // the same order again after a stall, so what is sent is known
      pending.assign(random() % 7, 0);
      for (unsigned char& byte : pending) {
        byte = static_cast<unsigned char>(random());
      }
      drawn = true;
    }
    return pending;
  }
  void update(Frame const& frame, Bytes ourOrder) {
    if (!gameEnded_LocalPlayer()) {
      given.push_back(std::move(ourOrder));
      drawn = false;
    }
    seen.push_back(frame);
  }
};

}  // namespace

TEST(LossyRelayTest, EveryClientGetsEveryCollatedTickOnceAndInOrder) {
  int const players = 4;
  int const delay = 6;
  int const orders = 300;
  for (unsigned seed : {1u, 2u, 3u}) {
    Match match(players, delay, seed, Conditions{});
    std::vector<RecordingSession> sessions(players);
    std::vector<BasicNetworkOrderSource<Client>> sources;
    for (int c = 0; c < players; ++c) {
      sessions[c].delay = delay;
      sessions[c].orders = orders;
      sessions[c].random.seed(seed * 100 + static_cast<unsigned>(c));
      sources.emplace_back(match.clients[c]);
    }
    std::vector<int> stalls(players, 0);
    int longestStall = 0;
    testing::internal::CaptureStdout();
    for (int pass = 0; pass < 20000; ++pass) {
      match.runRelay();
      bool allEnded = true;
      for (int c = 0; c < players; ++c) {
        UpdateSimulation(sessions[c], sources[c], stalls[c]);
        longestStall = std::max(longestStall, stalls[c]);
        allEnded = allEnded && sessions[c].gameEnded();
      }
      if (allEnded) {
        break;
      }
    }
    testing::internal::GetCapturedStdout();

    ASSERT_EQ(match.collated.size(), static_cast<std::size_t>(orders)) << "seed " << seed;
    for (int c = 0; c < players; ++c) {
      RecordingSession const& session = sessions[c];
      ASSERT_EQ(session.seen.size(), static_cast<std::size_t>(orders + delay)) << "seed " << seed << " client " << c;
      for (int step = 0; step < delay; ++step) {
        EXPECT_EQ(session.seen[step], Frame(players));
      }
      for (int tick = 0; tick < orders; ++tick) {
        Frame const expected = SplitServerData(match.collated[tick], players);
        ASSERT_EQ(session.seen[delay + tick], expected) << "seed " << seed << " client " << c << " tick " << tick;
        ASSERT_EQ(expected[c], session.given[tick]) << "seed " << seed << " client " << c << " tick " << tick;
      }
      EXPECT_TRUE(match.clients[c]->gameEndedCleanly()) << "seed " << seed << " client " << c;
    }
    // The conditions were as bad as announced.
    EXPECT_GT(match.network.dropped * 100, match.network.sent * 15) << "seed " << seed;
    EXPECT_GT(match.network.duplicated, 0);
    EXPECT_GT(longestStall, 0);
  }
}

namespace {

// A Glow Horde client: the bare simulation, with orders that are clicks near its own units, drawn
// from the frame number so that a stalled frame gives the same order again on the next.
struct HordeSession {
  std::unique_ptr<GlowHordeSimulation> simulation;
  unsigned seed = 0;
  int accepted = 0;

  bool gameEnded() const { return simulation->gameEnded(); }
  bool gameEnded_LocalPlayer() const { return simulation->gameEnded_LocalPlayer(); }
  Bytes processUIInputsAndGetOurNextOrder() {
    std::mt19937 random(seed * 7919u + simulation->frame());
    auto const& units = simulation->localPlayerState().lemmings();
    if (random() % 6 != 0 || units.empty()) {
      return {};
    }
    Position const near = units[random() % units.size()].position();
    UIOrder click;
    click.x = near.x + static_cast<int>(random() % 21) - 10;
    click.y = near.y + static_cast<int>(random() % 21) - 10;
    click.activity = static_cast<LemmingActivity>(random() % k_lemmingActivityCount);
    std::optional<Order> const order = simulation->localPlayerState().resolveUIOrder(click);
    return order.has_value() ? order->toBytes() : Bytes{};
  }
  void update(Frame const& orders, Bytes ourOrder) {
    accepted += simulation->update(orders, ourOrder).localOrderAccepted ? 1 : 0;
  }
};

// Plays one game over the network; returns each client's result bytes and final world digest.
std::vector<std::pair<Bytes, std::uint64_t>> PlayHorde(Conditions conditions, int* accepted) {
  static Games const games;
  IGame const& horde = games.refGame(Game::GlowHorde);
  std::vector<std::string> names;
  for (auto const& [name, map] : horde.maps) {
    if (map.maxPlayers >= 3) {
      names.push_back(name);
    }
  }
  std::sort(names.begin(), names.end());
  std::string const mapName = names.at(0);
  GameSettings settings = DefaultSettingsFromSchema(horde.schema);
  settings.strings["map"] = mapName;
  settings.ints["duration_seconds"] = 8;
  settings.ints["number_to_spawn"] = 20;
  settings.ints["spawn_interval_deciseconds"] = 3;
  for (char const* key : {"bridge_orders", "horizontal_bridge_orders", "raise_ground_orders", "block_orders",
                          "dig_down_orders", "dig_sideways_orders", "dig_upwards_orders"}) {
    settings.ints[key] = 5;
  }
  int const players = 3;
  int const delay = 8;
  std::vector<unsigned short> const slots = {0, 1, 2};

  Match match(players, delay, 99, conditions);
  std::vector<HordeSession> sessions(players);
  std::vector<BasicNetworkOrderSource<Client>> sources;
  for (int c = 0; c < players; ++c) {
    sessions[c].simulation = std::make_unique<GlowHordeSimulation>(c, 16666, delay, settings,
                                                                   horde.maps.at(mapName), slots);
    sessions[c].seed = static_cast<unsigned>(c + 1);
    sources.emplace_back(match.clients[c]);
  }
  std::vector<int> stalls(players, 0);
  testing::internal::CaptureStdout();
  for (int pass = 0; pass < 20000; ++pass) {
    match.runRelay();
    bool allEnded = true;
    for (int c = 0; c < players; ++c) {
      UpdateSimulation(sessions[c], sources[c], stalls[c]);
      allEnded = allEnded && sessions[c].gameEnded();
    }
    if (allEnded) {
      break;
    }
  }
  testing::internal::GetCapturedStdout();

  std::vector<std::pair<Bytes, std::uint64_t>> outcomes;
  for (HordeSession const& session : sessions) {
    EXPECT_TRUE(session.gameEnded());
    GameResult result;
    session.simulation->getGameResult(result);
    Bytes bytes;
    ToBytes(result, bytes);
    outcomes.emplace_back(bytes, session.simulation->localBaseDigest());
    *accepted += session.accepted;
  }
  return outcomes;
}

}  // namespace

TEST(LossyRelayTest, GlowHordeOverALossyNetworkEndsTheSameEverywhere) {
  int acceptedLossy = 0;
  int acceptedPerfect = 0;
  auto const lossy = PlayHorde(Conditions{}, &acceptedLossy);
  auto const perfect = PlayHorde(Conditions{0, 0, 0}, &acceptedPerfect);
  ASSERT_EQ(lossy.size(), 3u);
  for (std::size_t c = 0; c < lossy.size(); ++c) {
    EXPECT_EQ(lossy[c], lossy[0]) << "client " << c;
    EXPECT_EQ(lossy[c], perfect[c]) << "client " << c;  // the network's faults leave no trace
  }
  EXPECT_GT(acceptedLossy, 5);  // the players' orders took effect
  EXPECT_EQ(acceptedLossy, acceptedPerfect);
}
