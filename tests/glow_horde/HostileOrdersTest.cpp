// A player whose client sends crafted orders (a unit place past the end of its list, or a real place
// with another unit's id) must not end anyone's game: every other client ignores those orders alike,
// with one line on the standard error stream each, and all clients end byte-equal. A replay of the
// recorded game, seated as that player, ignores them too and reproduces the same result.
#include <gtest/gtest.h>

#include <deque>
#include <memory>
#include <numeric>
#include <random>
#include <string>
#include <vector>

#include "net/GameRecordsWire.h"
#include "sim/Games.h"
#include "sim/IRunningGame.h"
#include "sim/Recording.h"
#include "sim/ReplayOrderSource.h"
#include "sim/UpdateSimulation.h"
#include "glow_horde/GlowHordeSimulation.h"
#include "glow_horde/Order.h"
#include "support/HeadlessApp.h"

namespace {

using Bytes = std::vector<unsigned char>;
using Orders = std::vector<Bytes>;

constexpr int kDelay = 12;
constexpr std::size_t kHostile = 0;  // the seat a replay takes

IGame const& GlowHorde() {
  static Games const games;
  return games.refGame(Game::GlowHorde);
}

// A genuine order of this client's player: a click on one of its units, resolved as a click is.
Bytes Genuine(GlowHordeSimulation const& client, std::mt19937& random) {
  auto const& units = client.localPlayerState().lemmings();
  if (units.empty()) return {};
  Position const at = units[random() % units.size()].position();
  auto const activity = static_cast<LemmingActivity>(random() % k_lemmingActivityCount);
  std::optional<Order> const order =
      client.localPlayerState().resolveUIOrder(UIOrder{at.x, at.y, activity, LemmingActivityTrigger::Immediate});
  return order ? order->toBytes() : Bytes{};
}

// An order that names a unit the player doesn't have at this point of its game time.
Bytes Crafted(GlowHordeSimulation const& client, std::mt19937& random) {
  auto const& units = client.localPlayerState().lemmings();
  auto const activity = static_cast<LemmingActivity>(random() % k_lemmingActivityCount);
  if (units.empty() || random() % 2 == 0) {
    auto const place = static_cast<std::uint16_t>(units.size() + random() % 70000);  // 16 bits, may wrap to a real place
    std::uint16_t const id = place < units.size() ? static_cast<std::uint16_t>(units[place].id() + 1) : 0;
    return Order{place, id, activity, LemmingActivityTrigger::Immediate}.toBytes();
  }
  auto const place = static_cast<std::uint16_t>(random() % units.size());
  auto const id = static_cast<std::uint16_t>(units[place].id() + 1 + random() % 5);
  return Order{place, id, activity, LemmingActivityTrigger::Immediate}.toBytes();
}

template <class Game>
Bytes ResultBytes(Game const& game) {
  GameResult result;
  game.getGameResult(result);
  Bytes bytes;
  ToBytes(result, bytes);
  return bytes;
}

// A step's update as the server collates it: a length byte and the bytes, for each player.
Bytes Collated(Orders const& tick) {
  Bytes update;
  for (Bytes const& order : tick) {
    update.push_back(static_cast<unsigned char>(order.size()));
    update.insert(update.end(), order.begin(), order.end());
  }
  return update;
}

using GlowHordeHostileOrders = HeadlessAppTest;

int CountLines(std::string const& text, std::string const& start) {
  int count = 0;
  for (std::size_t at = text.find(start); at != std::string::npos; at = text.find(start, at + 1)) ++count;
  return count;
}

}  // namespace

TEST_F(GlowHordeHostileOrders, CraftedOrdersOfAnotherPlayerAreIgnoredAlikeAndTheGameStaysInStep) {
  GameSettings settings = DefaultSettingsFromSchema(GlowHorde().schema);
  settings.strings["map"] = "Mosh pit";
  settings.ints["duration_seconds"] = 8;
  settings.ints["number_to_spawn"] = 25;
  settings.ints["spawn_interval_deciseconds"] = 2;
  for (char const* key : {"bridge_orders", "horizontal_bridge_orders", "raise_ground_orders", "block_orders",
                          "dig_down_orders", "dig_sideways_orders", "dig_upwards_orders"}) {
    settings.ints[key] = 10;
  }
  std::vector<unsigned short> const slots = {1, 3, 0};
  std::vector<std::unique_ptr<GlowHordeSimulation>> clients;
  for (int c = 0; c < 3; ++c) {
    clients.push_back(std::make_unique<GlowHordeSimulation>(c, 16666, kDelay, settings,
                                                            GlowHorde().maps.at("Mosh pit"), slots));
  }

  std::mt19937 random(2024);
  std::vector<Orders> ticks;  // ticks[k][p]: what player p sent for its step k, as the server relays it
  int crafted = 0;
  int genuine = 0;
  testing::internal::CaptureStderr();
  while (!clients.front()->gameEnded()) {
    std::size_t const k = clients.front()->frame() - kDelay;
    ticks.emplace_back(clients.size());
    Orders ours(clients.size());
    for (std::size_t c = 0; c < clients.size(); ++c) {
      if (clients[c]->gameEnded_LocalPlayer()) continue;
      if (c == kHostile && random() % 3 != 0) {
        // Sent to everyone, but not applied by the client that crafted it.
        ticks[k][c] = Crafted(*clients[c], random);
        crafted += 1;
      } else if (random() % 8 == 0) {
        ticks[k][c] = ours[c] = Genuine(*clients[c], random);
        genuine += ours[c].empty() ? 0 : 1;
      }
    }
    for (std::size_t c = 0; c < clients.size(); ++c) {
      clients[c]->update(k >= kDelay ? ticks[k - kDelay] : Orders(clients.size()), ours[c]);
    }
  }
  std::string const errors = testing::internal::GetCapturedStderr();

  ASSERT_GT(crafted, 100);
  ASSERT_GT(genuine, 10);
  // Each crafted order was refused by both other clients, with one line each.
  EXPECT_EQ(CountLines(errors, "Ignored an order of player 0 at frame "), 2 * crafted);
  EXPECT_EQ(CountLines(errors, "Ignored "), 2 * crafted);
  // Genuine orders of all three took effect somewhere.
  for (std::size_t p = 0; p < clients.size(); ++p) {
    auto const& left = clients.front()->players()[p].availabilities().counts;
    EXPECT_LT(std::accumulate(left.begin(), left.end(), 0), 7 * 10) << "player " << p << " gave no order";
  }
  Bytes const result = ResultBytes(*clients.front());
  for (std::size_t c = 1; c < clients.size(); ++c) {
    EXPECT_EQ(ResultBytes(*clients[c]), result) << "client " << c;
    EXPECT_EQ(clients[c]->localBaseDigest(), clients.front()->localBaseDigest()) << "client " << c;
    for (int p = 0; p < 3; ++p) {
      EXPECT_EQ(clients[c]->playerDigest(p), clients.front()->playerDigest(p)) << "client " << c << " player " << p;
    }
  }
}

TEST_F(GlowHordeHostileOrders, AReplaySeatedAsTheCraftingPlayerIgnoresItsOrdersAndReproducesTheGame) {
  GameSettings settings = DefaultSettingsFromSchema(GlowHorde().schema);
  settings.strings["map"] = "Cauldrons";
  settings.ints["duration_seconds"] = 6;
  settings.ints["number_to_spawn"] = 15;
  settings.ints["spawn_interval_deciseconds"] = 3;
  std::vector<unsigned short> const slots = {2, 0};
  std::vector<std::unique_ptr<GlowHordeSimulation>> clients;
  for (int c = 0; c < 2; ++c) {
    clients.push_back(std::make_unique<GlowHordeSimulation>(c, 16666, kDelay, settings,
                                                            GlowHorde().maps.at("Cauldrons"), slots));
  }
  std::mt19937 random(7);
  std::deque<Bytes> updatesNewestFirst;
  std::vector<Orders> ticks;
  int crafted = 0;
  int genuine = 0;
  testing::internal::CaptureStderr();
  while (!clients.front()->gameEnded()) {
    std::size_t const k = clients.front()->frame() - kDelay;
    ticks.emplace_back(clients.size());
    Orders ours(clients.size());
    for (std::size_t c = 0; c < clients.size(); ++c) {
      if (clients[c]->gameEnded_LocalPlayer()) continue;
      if (c == kHostile && random() % 2 == 0) {
        ticks[k][c] = Crafted(*clients[c], random);
        crafted += 1;
      } else if (random() % 6 == 0) {
        ticks[k][c] = ours[c] = Genuine(*clients[c], random);
        genuine += ours[c].empty() ? 0 : 1;
      }
    }
    updatesNewestFirst.push_front(Collated(ticks[k]));
    for (std::size_t c = 0; c < clients.size(); ++c) {
      clients[c]->update(k >= kDelay ? ticks[k - kDelay] : Orders(clients.size()), ours[c]);
    }
  }
  GameResults results;
  results.playerSlots = slots;
  Recording const recording(updatesNewestFirst, results);

  // The replay: a whole session from the catalogue in the crafting player's seat, stepped as the main
  // loop steps it, with the recording as its order source.
  std::unique_ptr<IRunningGame> replay =
      GlowHorde().startSession(app_, 0, 16666, kDelay, settings, slots, false);
  ReplayOrderSource source(recording, 0, static_cast<int>(slots.size()), kDelay);
  int stalled = 0;
  while (!replay->gameEnded()) {
    ASSERT_TRUE(UpdateSimulation(*replay, source, stalled));
  }
  std::string const errors = testing::internal::GetCapturedStderr();

  ASSERT_GT(crafted, 50);
  ASSERT_GT(genuine, 10);
  EXPECT_EQ(CountLines(errors, "Ignored an order of player 0 at frame "), crafted);            // by client 1
  EXPECT_EQ(CountLines(errors, "Ignored a recorded order of player 0 at frame "), crafted);    // by the replay
  EXPECT_EQ(ResultBytes(*clients[1]), ResultBytes(*clients[0]));
  EXPECT_EQ(ResultBytes(*replay), ResultBytes(*clients[0]));
}
