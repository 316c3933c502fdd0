#include "glow_horde/GlowHordeSimulation.h"

#include <algorithm>
#include <cstdio>

#include "sim/KeyLookup.h"
#include "sim/PlayerSlots.h"
#include "sim/XXHashHasher.h"
#include "glow_horde/Order.h"

namespace {

// The settings that give each player's order counts, in activity order.
constexpr char const* k_availabilityKeys[k_lemmingActivityCount] = {
    "bridge_orders",       "horizontal_bridge_orders", "raise_ground_orders", "block_orders",
    "dig_down_orders",     "dig_sideways_orders",      "dig_upwards_orders"};

UnitColour SlotColour(unsigned short slot) {
  PlayerSlot const& entry = SLOTS.at(slot);
  return UnitColour{static_cast<std::uint8_t>(entry.red * 255.0f), static_cast<std::uint8_t>(entry.green * 255.0f),
                    static_cast<std::uint8_t>(entry.blue * 255.0f), 255};
}

} // namespace

Position GlowHordeSimulation::WrappedAlways(Position position, int worldWidth, int worldHeight) {
  if (position.x < 0) {
    position.x += worldWidth;
  }
  if (position.y < 0) {
    position.y += worldHeight;
  }
  return position;
}

GlowHordeSimulation::GlowHordeSimulation(int localPlayer, std::uint64_t framePeriod,
                                         std::uint8_t delayFrames, GameSettings const& settings,
                                         MapSettings const& map, std::vector<unsigned short> const& players)
    : localPlayer_(localPlayer), delayFrames_(delayFrames), framePeriod_(framePeriod),
      world_(std::make_unique<ChunkedWorld>(static_cast<int>(players.size()), localPlayer, delayFrames,
                                            map)),
      slots_(players), teams_(map.playerTeams) {
  compactExits(map);

  auto setting = [&settings](std::string const& key) { return ValueAt(settings.ints, key); };
  int const toSpawn = setting("number_to_spawn");
  std::int64_t const spawnInterval = static_cast<std::int64_t>(setting("spawn_interval_deciseconds")) * 100000;
  ActivityAvailabilities availabilities;
  for (int a = 0; a < k_lemmingActivityCount; ++a) {
    availabilities.counts[static_cast<std::size_t>(a)] = setting(k_availabilityKeys[a]);
  }
  players_.reserve(players.size());
  for (std::size_t p = 0; p < players.size(); ++p) {
    unsigned short const slot = players[p];
    PlayerState::Setup setup;
    setup.index = static_cast<int>(p);
    setup.spawn = WrappedAlways(map.starts.at(slot), world_->width(), world_->height());
    setup.toSpawn = toSpawn;
    setup.spawnInterval = spawnInterval;
    setup.framePeriod = static_cast<std::int64_t>(framePeriod);
    setup.nextFacingRight = map.startFacesRight.at(slot);
    setup.colour = SlotColour(slot);
    setup.availabilities = availabilities;
    setup.worldWidth = world_->width();
    setup.worldHeight = world_->height();
    setup.cameraWrapX = map.cameraWrapX;
    setup.cameraWrapY = map.cameraWrapY;
    players_.emplace_back(setup);
  }

  endFrame_ = static_cast<std::uint32_t>(static_cast<std::uint64_t>(setting("duration_seconds")) * 1000000u /
                                         framePeriod);

  // The head start: the local player's units alone run delayFrames updates, with no exits.
  for (int i = 0; i < delayFrames_; ++i) {
    players_[static_cast<std::size_t>(localPlayer_)].update(*world_);
    world_->frameAdvance();
    frame_ += 1;
  }
}

void GlowHordeSimulation::compactExits(MapSettings const& map) {
  // Only the exits of teams with a player stay; they are numbered anew in map order, and the slots'
  // teams with them, so that team numbers (and exit colours) are places in the compacted list.
  std::vector<bool> inPlay(map.exits.size(), false);
  for (unsigned short slot : slots_) {
    int const team = map.playerTeams.at(slot);
    if (team >= 0 && static_cast<std::size_t>(team) < inPlay.size()) {
      inPlay[static_cast<std::size_t>(team)] = true;
    }
  }
  std::vector<int> renumbered(map.exits.size(), -1);
  for (std::size_t e = 0; e < map.exits.size(); ++e) {
    if (inPlay[e]) {
      renumbered[e] = static_cast<int>(exitPositions_.size());
      exitPositions_.push_back(WrappedAlways(map.exits[e], world_->width(), world_->height()));
      exitedCounts_.push_back(0);
      exitTimes_.push_back(0);
    }
  }
  for (int& team : teams_) {
    team = team >= 0 && static_cast<std::size_t>(team) < renumbered.size() ? renumbered[static_cast<std::size_t>(team)]
                                                                          : -1;
  }
}

namespace {

void ReportIgnoredOrder(char const* kind, std::size_t player, std::uint32_t frame, Order const& order) {
  std::fprintf(stderr, "Ignored %s order of player %zu at frame %u: it names unit %u with id %u, which that player "
                       "doesn't have\n",
               kind, player, static_cast<unsigned>(frame), static_cast<unsigned>(order.index_in_array_),
               static_cast<unsigned>(order.id_));
}

}  // namespace

GlowHordeSimulation::StepEvents GlowHordeSimulation::update(std::vector<std::vector<unsigned char>> const& orders,
                                                            std::vector<unsigned char> const& ourOrder,
                                                            OurOrderOrigin origin) {
  StepEvents events;
  auto const local = static_cast<std::size_t>(localPlayer_);

  if (!ourOrder.empty()) {
    if (std::optional<Order> order = Order::decode(ourOrder)) {
      if (origin == OurOrderOrigin::Recorded && !players_[local].namesOneOfItsUnits(*order)) {
        ReportIgnoredOrder("a recorded", local, frame_, *order);
      } else {
        events.localOrderAccepted = players_[local].giveOrder(*order);
      }
    }
  }
  // The other players' orders come from the network. Each is given at the same point of its player's
  // game time on every client, where that player's list of units is the same, so an order that names
  // no unit of the list, or a unit of another id, is refused alike by every client and the game stays
  // in step: only a client that crafted it could have sent it.
  for (std::size_t p = 0; p < orders.size() && p < players_.size(); ++p) {
    if (p != local && !orders[p].empty()) {
      if (std::optional<Order> order = Order::decode(orders[p])) {
        if (players_[p].namesOneOfItsUnits(*order)) {
          players_[p].giveOrder(*order);
        } else {
          ReportIgnoredOrder("an", p, frame_, *order);
        }
      }
    }
  }

  if (!gameEnded_LocalPlayer()) {
    players_[local].update(*world_);
  }

  if (!orders.empty()) {
    std::int64_t const millisecondsPerFrame = static_cast<std::int64_t>(framePeriod_ / 1000);
    for (std::size_t p = 0; p < players_.size(); ++p) {
      if (p != local) {
        players_[p].update(*world_);
      }
      // The arrival time is the player's own update number, the same on every client.
      std::int64_t const t = p == local ? static_cast<std::int64_t>(frame_)
                                        : static_cast<std::int64_t>(frame_) - static_cast<std::int64_t>(delayFrames_);
      for (std::size_t e = 0; e < exitPositions_.size(); ++e) {
        int const n = players_[p].removeAtExit(*world_, exitPositions_[e], k_exitRadius);
        if (n != 0) {
          events.exitArrivals += 1;
          exitedCounts_[e] += n;
          exitTimes_[e] += millisecondsPerFrame * n * t;
        }
      }
    }
  }

  world_->frameAdvance();
  frame_ += 1;
  return events;
}

void GlowHordeSimulation::endGameNow() { endFrame_ = std::min(endFrame_, frame_); }

std::uint64_t GlowHordeSimulation::localBaseDigest() const {
  XXHashHasher hasher;
  world_->hashLocalBase(hasher);
  return hasher.digest();
}

std::uint64_t GlowHordeSimulation::playerDigest(int player) const {
  XXHashHasher hasher;
  players_.at(static_cast<std::size_t>(player)).hash(hasher);
  return hasher.digest();
}

void GlowHordeSimulation::getGameResult(GameResult& result) const {
  result.endFrame = frame_;
  XXHashHasher playersHasher;
  for (PlayerState const& player : players_) {
    player.hash(playersHasher);
  }
  result.endStateChecksum = localBaseDigest() ^ playersHasher.digest();
  result.results.clear();
  for (std::size_t e = 0; e < exitPositions_.size(); ++e) {
    result.results.push_back({static_cast<long long>(exitedCounts_[e]), -static_cast<long long>(exitTimes_[e])});
  }
}
