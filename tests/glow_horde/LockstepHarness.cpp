#include "glow_horde/LockstepHarness.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <memory>
#include <numeric>
#include <random>

#include "net/GameRecordsWire.h"
#include "sim/Games.h"
#include "glow_horde/GlowHordeSimulation.h"
#include "glow_horde/Order.h"
#include "glow_horde/RunningGlowHorde.h"

namespace glow_horde_testing {

namespace {

using Bytes = std::vector<unsigned char>;
using Orders = std::vector<Bytes>;
using Digests = std::vector<std::optional<std::uint64_t>>;

IGame const& GlowHorde() {
  static Games const games;
  return games.refGame(Game::GlowHorde);
}

int Between(std::mt19937_64& random, int low, int high) { return std::uniform_int_distribution<int>(low, high)(random); }

int OrdersLeft(PlayerState const& player) {
  auto const& counts = player.availabilities().counts;
  return std::accumulate(counts.begin(), counts.end(), 0);
}

// One client: its simulation (bare, or inside a whole session), its own random orders, and what it saw.
struct Client {
  std::unique_ptr<GlowHordeSimulation> bare;
  std::unique_ptr<IRunningGame> session;
  GlowHordeSimulation const* simulation = nullptr;
  std::mt19937_64 random;
  Digests localBase;                      // by frame counter
  std::vector<Digests> players;           // [player][number of updates the player has had]
  std::vector<std::string> partedOrders;  // orders that named a unit that isn't there

  int local() const { return simulation->localPlayer(); }

  // Steps once; whether the client's own order took effect (a session doesn't say, but the order
  // used up one of its player's allowance then).
  bool step(Orders const& orders, Bytes const& ours) {
    if (bare) {
      return bare->update(orders, ours).localOrderAccepted;
    }
    int const before = OrdersLeft(simulation->localPlayerState());
    session->update(orders, ours);
    return OrdersLeft(simulation->localPlayerState()) < before;
  }
};

// The order that this client's player gives now, as bytes; empty for none.
Bytes RandomOrder(Client& client, LockstepGame const& game) {
  std::mt19937_64& random = client.random;
  if (Between(random, 1, game.meanFramesBetweenOrders) != 1) {
    return {};
  }
  PlayerState const& player = client.simulation->localPlayerState();
  auto const& units = player.lemmings();
  int const lastUnit = static_cast<int>(units.size()) - 1;
  auto const activity = static_cast<LemmingActivity>(Between(random, 0, k_lemmingActivityCount - 1));
  auto const trigger = static_cast<LemmingActivityTrigger>(Between(random, 0, k_lemmingActivityTriggerCount - 1));
  int const kind = Between(random, 1, 100);
  if (kind <= 70) {
    // A click: near one of the player's units (sometimes too far from all of them), or anywhere.
    UIOrder click{0, 0, activity, trigger, DirectionFilter::Any};
    if (kind <= 55 && !units.empty()) {
      Position const near = units[static_cast<std::size_t>(Between(random, 0, lastUnit))].position();
      int const reach = Between(random, 1, 4) == 1 ? 250 : 60;
      click.x = near.x + Between(random, -reach, reach);
      click.y = near.y + Between(random, -reach, reach);
    } else {
      click.x = Between(random, -50, client.simulation->world().width() + 50);
      click.y = Between(random, -50, client.simulation->world().height() + 50);
    }
    click.filter = static_cast<DirectionFilter>(Between(random, 0, 2));
    std::optional<Order> const order = player.resolveUIOrder(click);
    return order.has_value() ? order->toBytes() : Bytes{};
  }
  if (kind <= 85) {
    // Straight to a unit by its place and id, with none of a click's choices: a falling unit may get
    // an immediate order, any unit any activity, counts or not.
    if (units.empty()) {
      return {};
    }
    auto const place = static_cast<std::uint16_t>(Between(random, 0, lastUnit));
    return Order{place, units[place].id(), activity, trigger}.toBytes();
  }
  // Bytes that are no order: a wrong length, or an activity or trigger that doesn't exist.
  Bytes bytes(static_cast<std::size_t>(Between(random, 0, 1) == 0 ? Between(random, 1, 6) : Between(random, 8, 12)));
  if (Between(random, 0, 1) == 0) {
    bytes.assign(7, 0);
    bytes[4] = static_cast<unsigned char>(Between(random, 7, 255));
  } else if (Between(random, 0, 1) == 0) {
    bytes.assign(7, 0);
    bytes[6] = static_cast<unsigned char>(Between(random, 4, 255));
  }
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    if (bytes.size() != 7 || (i != 4 && i != 6)) {
      bytes[i] = static_cast<unsigned char>(Between(random, 0, 255));
    }
  }
  return bytes;
}

// Between honest clients, an order from another player that doesn't name a unit of this client's copy
// of that player can only mean that the clients have parted (the simulation would ignore it, as it
// does a crafted one), so the harness notes it as a finding. Bytes that are no order at all pass.
bool NamesAUnitThatIsThere(PlayerState const& player, Bytes const& bytes) {
  std::optional<Order> const order = Order::decode(bytes);
  return !order.has_value() || (order->index_in_array_ < player.lemmings().size() &&
                                player.lemmings()[order->index_in_array_].id() == order->id_);
}

void Record(Client& client, int localBaseEvery, bool last) {
  GlowHordeSimulation const& simulation = *client.simulation;
  std::uint32_t const frame = simulation.frame();
  if (last || frame % static_cast<std::uint32_t>(localBaseEvery) == 0) {
    client.localBase[frame] = simulation.localBaseDigest();
  }
  for (std::size_t p = 0; p < simulation.players().size(); ++p) {
    std::int64_t const update = static_cast<int>(p) == client.local()
                                    ? std::min(frame, simulation.endFrame())
                                    : static_cast<std::int64_t>(frame) - simulation.delayFrames();
    if (update >= 0) {
      client.players[p][static_cast<std::size_t>(update)] = simulation.playerDigest(static_cast<int>(p));
    }
  }
}

// The first place at which both hold a digest and the digests differ.
std::optional<std::uint32_t> FirstDifference(Digests const& a, Digests const& b) {
  for (std::size_t i = 0; i < a.size(); ++i) {
    if (a[i] && b[i] && *a[i] != *b[i]) {
      return static_cast<std::uint32_t>(i);
    }
  }
  return std::nullopt;
}

void KeepEarliest(std::optional<std::uint32_t>& earliest, std::uint32_t candidate) {
  earliest = std::min(earliest.value_or(candidate), candidate);
}

std::string DescribeResult(Bytes const& bytes) {
  GameResult result;
  unsigned char const* cursor = bytes.data();
  std::size_t remaining = bytes.size();
  FromBytes(cursor, remaining, result);
  std::string rows;
  for (auto const& row : result.results) {
    rows += fmt::format(" ({}, {})", row.at(0), row.at(1));
  }
  return fmt::format("end frame {}, rows{}, checksum {:016x}", result.endFrame, rows, result.endStateChecksum);
}

// Plays the game once. localBaseEvery is the frame stride of the world digests (1: every frame).
LockstepReport RunLockstepGame(LockstepGame const& game, std::optional<RelayFault> fault, int localBaseEvery,
                               std::shared_ptr<SDL3App> const& shell) {
  MapSettings const& map = GlowHorde().maps.at(game.map);
  std::size_t const playerCount = game.slots.size();
  auto const delay = static_cast<std::uint32_t>(game.delayFrames);

  std::vector<Client> clients(playerCount);
  for (std::size_t c = 0; c < playerCount; ++c) {
    Client& client = clients[c];
    if (shell) {
      client.session = GlowHorde().startSession(shell, static_cast<int>(c), 16666, static_cast<unsigned char>(delay),
                                                game.settings, game.slots, false);
      client.simulation = &dynamic_cast<RunningGlowHorde&>(*client.session).simulation();
    } else {
      client.bare = std::make_unique<GlowHordeSimulation>(nullptr, static_cast<int>(c), 16666,
                                                          static_cast<std::uint8_t>(delay), game.settings, map,
                                                          game.slots);
      client.simulation = client.bare.get();
    }
    client.random.seed(game.seed * 1000003ull + c);
    std::uint32_t const endFrame = client.simulation->endFrame();
    client.localBase.resize(endFrame + delay + 1);
    client.players.assign(playerCount, Digests(endFrame + 1));
    Record(client, localBaseEvery, true);
  }

  LockstepReport report;
  // ticks[k][p]: what player p gave on its step k, as the server would gather it.
  std::vector<Orders> ticks;
  std::vector<std::vector<bool>> acceptedByGiver;  // [k][p]
  int faultCount = 0;
  std::optional<std::uint32_t> lateTick;  // the tick of the order that the fault holds back
  Bytes lateOrder;

  while (!clients.front().simulation->gameEnded()) {
    std::uint32_t const k = clients.front().simulation->frame() - delay;
    ticks.emplace_back(playerCount);
    acceptedByGiver.emplace_back(playerCount, false);
    Orders ours(playerCount);
    for (std::size_t c = 0; c < playerCount; ++c) {
      if (!clients[c].simulation->gameEnded_LocalPlayer()) {
        ticks[k][c] = ours[c] = RandomOrder(clients[c], game);
        report.ordersGiven += ours[c].empty() ? 0 : 1;
      }
    }

    for (std::size_t c = 0; c < playerCount; ++c) {
      Client& client = clients[c];
      Orders orders = k >= delay ? ticks[k - delay] : Orders(playerCount);
      if (fault.has_value() && static_cast<int>(c) == fault->client) {
        auto const p = static_cast<std::size_t>(fault->player);
        if (k >= delay && acceptedByGiver[k - delay][p] && !lateTick.has_value() && faultCount++ == fault->nthOrder) {
          lateTick = k - delay;
          lateOrder = orders[p];
          orders[p].clear();
          report.faultFrame = client.simulation->frame();
        } else if (lateTick.has_value() && k == *lateTick + delay + static_cast<std::uint32_t>(fault->lateFrames)) {
          orders[p] = lateOrder;
        }
      }
      for (std::size_t p = 0; p < playerCount; ++p) {
        if (static_cast<int>(p) != client.local() && !NamesAUnitThatIsThere(client.simulation->players()[p], orders[p])) {
          client.partedOrders.push_back(fmt::format("client {} at frame {}: player {}'s order names a unit that isn't there",
                                                    c, client.simulation->frame(), p));
          orders[p].clear();
        }
      }
      if (client.step(orders, ours[c])) {
        acceptedByGiver[k][c] = true;
        report.ordersAccepted += 1;
      }
      Record(client, localBaseEvery, client.simulation->gameEnded());
    }
  }

  // Compare every client with client 0.
  Client const& reference = clients.front();
  report.endFrame = reference.simulation->frame();
  auto const& out = reference.simulation->exitedCounts();
  report.unitsOut = std::accumulate(out.begin(), out.end(), 0LL);
  std::vector<Bytes> results(playerCount);
  for (std::size_t c = 0; c < playerCount; ++c) {
    GameResult result;
    clients[c].simulation->getGameResult(result);
    ToBytes(result, results[c]);
  }
  std::vector<std::string> findings;
  report.firstPlayerDifference.assign(playerCount, std::nullopt);
  for (std::size_t c = 1; c < playerCount; ++c) {
    if (auto const f = FirstDifference(reference.localBase, clients[c].localBase)) {
      KeepEarliest(report.firstLocalBaseDifference, *f);
      findings.push_back(fmt::format("the localBase copies of clients 0 and {} first differed at frame {}", c, *f));
    }
    for (std::size_t p = 0; p < playerCount; ++p) {
      std::optional<std::uint32_t> const u = FirstDifference(reference.players[p], clients[c].players[p]);
      if (!u.has_value()) {
        continue;
      }
      KeepEarliest(report.firstPlayerDifference[p], *u);
      // The update that made the count u ran at frame u - 1 on its own client, delay later elsewhere.
      auto const at = [&](std::size_t client) { return client == p ? *u - 1 : *u - 1 + delay; };
      findings.push_back(*u == 0 ? fmt::format("player {}'s state differed from the start between clients 0 and {}", p, c)
                                 : fmt::format("player {}'s state differed after {} updates, the last at frame {} on "
                                               "client 0 and at frame {} on client {}",
                                               p, *u, at(0), at(c), c));
    }
    if (results[c] != results.front()) {
      findings.push_back(fmt::format("the results differ: client 0 {}; client {} {}", DescribeResult(results.front()), c,
                                     DescribeResult(results[c])));
    }
  }
  for (Client const& client : clients) {
    findings.insert(findings.end(), client.partedOrders.begin(), client.partedOrders.end());
  }

  report.agreed = findings.empty();
  report.text = fmt::format("Game seed {}: \"{}\", slots {}, delay {}, {} s, {} units every {} ds, an order every {} "
                            "frames: {} orders given, {} accepted, {} units out, end frame {}",
                            game.seed, game.map, fmt::join(game.slots, ","), game.delayFrames,
                            game.settings.ints.at("duration_seconds"), game.settings.ints.at("number_to_spawn"),
                            game.settings.ints.at("spawn_interval_deciseconds"), game.meanFramesBetweenOrders,
                            report.ordersGiven, report.ordersAccepted, report.unitsOut, report.endFrame);
  if (report.faultFrame.has_value()) {
    report.text += fmt::format("; relay fault: an order due at frame {} reached client {} {} frame(s) late",
                               *report.faultFrame, fault->client, fault->lateFrames);
  }
  for (std::string const& finding : findings) {
    report.text += "\n  " + finding;
  }
  return report;
}

}  // namespace

LockstepGame RandomLockstepGame(std::uint64_t seed) {
  std::mt19937_64 random(seed * 0x9E3779B97F4A7C15ull + 12345);
  LockstepGame game;
  game.seed = seed;
  std::vector<std::string> maps;
  for (auto const& [name, map] : GlowHorde().maps) {
    maps.push_back(name);
  }
  std::sort(maps.begin(), maps.end());
  game.map = maps[static_cast<std::size_t>(Between(random, 0, static_cast<int>(maps.size()) - 1))];
  MapSettings const& map = GlowHorde().maps.at(game.map);

  std::vector<unsigned short> slots(map.maxPlayers);
  std::iota(slots.begin(), slots.end(), static_cast<unsigned short>(0));
  std::shuffle(slots.begin(), slots.end(), random);
  slots.resize(static_cast<std::size_t>(Between(random, 1, map.maxPlayers)));
  game.slots = slots;
  game.delayFrames = Between(random, 10, 35);

  game.settings = DefaultSettingsFromSchema(GlowHorde().schema);
  game.settings.strings["map"] = game.map;
  game.settings.ints["duration_seconds"] = Between(random, 4, 25);
  game.settings.ints["number_to_spawn"] = Between(random, 1, 40);
  game.settings.ints["spawn_interval_deciseconds"] = Between(random, 1, 15);
  for (char const* key : {"bridge_orders", "horizontal_bridge_orders", "raise_ground_orders", "block_orders",
                          "dig_down_orders", "dig_sideways_orders", "dig_upwards_orders"}) {
    game.settings.ints[key] = Between(random, 0, 6);
  }
  game.meanFramesBetweenOrders = Between(random, 4, 40);
  return game;
}

LockstepReport CheckLockstepGame(LockstepGame const& game, std::optional<RelayFault> fault,
                                 std::shared_ptr<SDL3App> const& shell) {
  LockstepReport report = RunLockstepGame(game, fault, 16, shell);
  return report.agreed ? report : RunLockstepGame(game, fault, 1, shell);
}

}  // namespace glow_horde_testing
