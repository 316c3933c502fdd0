#include "glow_horde/LockstepHarness.h"

#include <fmt/format.h>

#include <algorithm>
#include <memory>
#include <numeric>
#include <random>

#include "GameRecordsWire.h"
#include "Games.h"
#include "glow_horde/GlowHordeSimulation.h"
#include "glow_horde/Order.h"

namespace glow_horde_testing {

namespace {

using Bytes = std::vector<unsigned char>;
using Orders = std::vector<Bytes>;

constexpr std::uint64_t k_framePeriod = 16666;

Games const& TheGames() {
  static Games const games;
  return games;
}

IGame const& GlowHorde() { return TheGames().refGame(Game::GlowHorde); }

int Between(std::mt19937_64& random, int low, int high) {
  return std::uniform_int_distribution<int>(low, high)(random);
}

struct Digest {
  std::uint64_t value = 0;
  bool taken = false;
};

// One client: its simulation, its own random orders, and what it saw.
struct Client {
  std::unique_ptr<GlowHordeSimulation> simulation;
  std::mt19937_64 random;
  std::vector<Digest> localBase;               // by frame counter
  std::vector<std::vector<Digest>> players;    // [player][number of updates the player has had]
  std::vector<std::string> partedOrders;       // orders that named a unit that isn't there

  int local() const { return simulation->localPlayer(); }
};

// The order that this client's player gives now, as bytes; empty for none.
Bytes RandomOrder(Client& client, LockstepGame const& game) {
  std::mt19937_64& random = client.random;
  if (Between(random, 1, game.meanFramesBetweenOrders) != 1) {
    return {};
  }
  PlayerState const& player = client.simulation->localPlayerState();
  auto const& units = player.lemmings();
  auto const activity = static_cast<LemmingActivity>(Between(random, 0, k_lemmingActivityCount - 1));
  auto const trigger = static_cast<LemmingActivityTrigger>(Between(random, 0, k_lemmingActivityTriggerCount - 1));
  int const kind = Between(random, 1, 100);
  if (kind <= 70) {
    // A click: near one of the player's units (sometimes too far from all of them), or anywhere.
    UIOrder click;
    if (kind <= 55 && !units.empty()) {
      Position const near = units[static_cast<std::size_t>(Between(random, 0, static_cast<int>(units.size()) - 1))].position();
      int const reach = Between(random, 1, 4) == 1 ? 250 : 60;
      click.x = near.x + Between(random, -reach, reach);
      click.y = near.y + Between(random, -reach, reach);
    } else {
      click.x = Between(random, -50, client.simulation->world().width() + 50);
      click.y = Between(random, -50, client.simulation->world().height() + 50);
    }
    click.activity = activity;
    click.trigger = trigger;
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
    auto const place = static_cast<std::uint16_t>(Between(random, 0, static_cast<int>(units.size()) - 1));
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

// An order from another player that doesn't name a unit of this client's copy of that player can
// only mean that the clients have parted; the simulation would stop on it, so the harness notes it
// and drops it instead.
bool NamesAUnitThatIsThere(PlayerState const& player, Bytes const& bytes) {
  std::optional<Order> const order = Order::decode(bytes);
  if (!order.has_value()) {
    return true;  // no order at all: the simulation ignores it
  }
  return order->index_in_array_ < player.lemmings().size() &&
         player.lemmings()[order->index_in_array_].id() == order->id_;
}

void Record(Client& client, int localBaseEvery, bool last) {
  GlowHordeSimulation const& simulation = *client.simulation;
  std::uint32_t const frame = simulation.frame();
  if (last || frame % static_cast<std::uint32_t>(localBaseEvery) == 0) {
    client.localBase[frame] = {simulation.localBaseDigest(), true};
  }
  for (std::size_t p = 0; p < simulation.players().size(); ++p) {
    std::int64_t const update = static_cast<int>(p) == client.local()
                                    ? std::min(frame, simulation.endFrame())
                                    : static_cast<std::int64_t>(frame) - simulation.delayFrames();
    if (update >= 0) {
      client.players[p][static_cast<std::size_t>(update)] = {simulation.playerDigest(static_cast<int>(p)), true};
    }
  }
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

}  // namespace

std::string LockstepGame::describe() const {
  std::string slotList;
  for (unsigned short slot : slots) {
    if (!slotList.empty()) {
      slotList += ',';
    }
    slotList += std::to_string(slot);
  }
  return fmt::format("seed {}: \"{}\", slots {}, delay {}, {} s, {} units every {} ds, an order every {} frames",
                     seed, map, slotList, delayFrames, settings.ints.at("duration_seconds"),
                     settings.ints.at("number_to_spawn"), settings.ints.at("spawn_interval_deciseconds"),
                     meanFramesBetweenOrders);
}

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

LockstepReport RunLockstepGame(LockstepGame const& game, std::optional<RelayFault> fault, int localBaseEvery) {
  MapSettings const& map = GlowHorde().maps.at(game.map);
  std::size_t const playerCount = game.slots.size();
  auto const delay = static_cast<std::uint32_t>(game.delayFrames);

  std::vector<Client> clients(playerCount);
  for (std::size_t c = 0; c < playerCount; ++c) {
    Client& client = clients[c];
    client.simulation = std::make_unique<GlowHordeSimulation>(nullptr, static_cast<int>(c), k_framePeriod,
                                                              static_cast<std::uint8_t>(delay), game.settings, map,
                                                              game.slots);
    client.random.seed(game.seed * 1000003ull + c);
    std::uint32_t const endFrame = client.simulation->endFrame();
    client.localBase.resize(endFrame + delay + 1);
    client.players.assign(playerCount, std::vector<Digest>(endFrame + 1));
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
        ours[c] = RandomOrder(clients[c], game);
        ticks[k][c] = ours[c];
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
        if (static_cast<int>(p) != client.local() && !orders[p].empty() &&
            !NamesAUnitThatIsThere(client.simulation->players()[p], orders[p])) {
          client.partedOrders.push_back(fmt::format("client {} at frame {}: player {}'s order names a unit that isn't there",
                                                    c, client.simulation->frame(), p));
          orders[p].clear();
        }
      }
      GlowHordeSimulation::StepEvents const events = client.simulation->update(orders, ours[c]);
      if (events.localOrderAccepted) {
        acceptedByGiver[k][c] = true;
        report.ordersAccepted += 1;
      }
      Record(client, localBaseEvery, client.simulation->gameEnded());
    }
  }

  // Compare every client with client 0.
  report.endFrame = clients.front().simulation->frame();
  for (Client const& client : clients) {
    GameResult result;
    client.simulation->getGameResult(result);
    report.resultBytes.emplace_back();
    ToBytes(result, report.resultBytes.back());
  }
  for (long long out : clients.front().simulation->exitedCounts()) {
    report.unitsOut += out;
  }

  std::vector<std::string> findings;
  Client const& reference = clients.front();
  for (std::size_t c = 1; c < playerCount; ++c) {
    Client const& other = clients[c];
    for (std::size_t f = 0; f < reference.localBase.size(); ++f) {
      Digest const& a = reference.localBase[f];
      Digest const& b = other.localBase[f];
      if (a.taken && b.taken && a.value != b.value) {
        if (!report.firstLocalBaseDifference.has_value() || f < *report.firstLocalBaseDifference) {
          report.firstLocalBaseDifference = static_cast<std::uint32_t>(f);
        }
        findings.push_back(fmt::format("the localBase copies of clients 0 and {} first differed at frame {}", c, f));
        break;
      }
    }
  }
  report.firstPlayerDifference.assign(playerCount, std::nullopt);
  for (std::size_t p = 0; p < playerCount; ++p) {
    for (std::size_t c = 1; c < playerCount; ++c) {
      for (std::size_t u = 0; u < reference.players[p].size(); ++u) {
        Digest const& a = reference.players[p][u];
        Digest const& b = clients[c].players[p][u];
        if (a.taken && b.taken && a.value != b.value) {
          if (u == 0) {
            findings.push_back(fmt::format("player {}'s state differed from the start between clients 0 and {}", p, c));
          } else {
            // The update that made the count u ran at frame u - 1 on its own client, delay later elsewhere.
            auto const at = [&](std::size_t client) { return client == p ? u - 1 : u - 1 + delay; };
            findings.push_back(fmt::format("player {}'s state differed after {} updates, the last at frame {} on "
                                           "client 0 and at frame {} on client {}",
                                           p, u, at(0), at(c), c));
          }
          if (!report.firstPlayerDifference[p].has_value() || u < *report.firstPlayerDifference[p]) {
            report.firstPlayerDifference[p] = static_cast<std::uint32_t>(u);
          }
          break;
        }
      }
    }
    if (report.firstPlayerDifference[p].has_value()) {
      report.playersThatDiffered.push_back(static_cast<int>(p));
    }
  }
  for (std::size_t c = 1; c < playerCount; ++c) {
    if (report.resultBytes[c] != report.resultBytes.front()) {
      findings.push_back(fmt::format("the results differ: client 0 {}; client {} {}", DescribeResult(report.resultBytes.front()),
                                     c, DescribeResult(report.resultBytes[c])));
    }
  }
  for (Client const& client : clients) {
    findings.insert(findings.end(), client.partedOrders.begin(), client.partedOrders.end());
  }

  report.agreed = findings.empty();
  report.text = fmt::format("Game {}: {} orders given, {} accepted, {} units out, end frame {}", game.describe(),
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

LockstepReport CheckLockstepGame(LockstepGame const& game, std::optional<RelayFault> fault) {
  LockstepReport report = RunLockstepGame(game, fault);
  if (!report.agreed) {
    report = RunLockstepGame(game, fault, 1);
  }
  return report;
}

}  // namespace glow_horde_testing
