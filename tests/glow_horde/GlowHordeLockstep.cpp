#include "glow_horde/GlowHordeLockstep.h"

#include <fmt/format.h>

#include <random>

#include "glow_horde/GlowHordeSimulation.h"
#include "glow_horde/Order.h"
#include "glow_horde/RunningGlowHorde.h"
#include "sim/XXHashHasher.h"

namespace glow_horde_testing {

namespace {

using testing_support::Bytes;

int Between(std::mt19937_64& random, int low, int high) { return std::uniform_int_distribution<int>(low, high)(random); }

GlowHordeSimulation const& SimulationOf(IRunningGame const& session) {
  return dynamic_cast<RunningGlowHorde const&>(session).simulation();
}

// A click resolved against the player's own units as the interface resolves it, an order straight to a
// unit by place and id, or bytes that are no order at all.
Bytes RandomOrder(IRunningGame const& session, std::mt19937_64& random) {
  GlowHordeSimulation const& simulation = SimulationOf(session);
  PlayerState const& player = simulation.localPlayerState();
  auto const& units = player.lemmings();
  int const lastUnit = static_cast<int>(units.size()) - 1;
  auto const activity = static_cast<LemmingActivity>(Between(random, 0, k_lemmingActivityCount - 1));
  auto const trigger = static_cast<LemmingActivityTrigger>(Between(random, 0, k_lemmingActivityTriggerCount - 1));
  int const kind = Between(random, 1, 100);
  if (kind <= 70) {
    UIOrder click{0, 0, activity, trigger, DirectionFilter::Any};
    if (kind <= 55 && !units.empty()) {
      Position const near = units[static_cast<std::size_t>(Between(random, 0, lastUnit))].position();
      int const reach = Between(random, 1, 4) == 1 ? 250 : 60;
      click.x = near.x + Between(random, -reach, reach);
      click.y = near.y + Between(random, -reach, reach);
    } else {
      click.x = Between(random, -50, simulation.world().width() + 50);
      click.y = Between(random, -50, simulation.world().height() + 50);
    }
    click.filter = static_cast<DirectionFilter>(Between(random, 0, 2));
    std::optional<Order> const order = player.resolveUIOrder(click);
    return order.has_value() ? order->toBytes() : Bytes{};
  }
  if (kind <= 85) {
    if (units.empty()) {
      return {};
    }
    auto const place = static_cast<std::uint16_t>(Between(random, 0, lastUnit));
    return Order{place, units[place].id(), activity, trigger}.toBytes();
  }
  // A wrong length, or an activity or trigger that doesn't exist.
  Bytes bytes(static_cast<std::size_t>(Between(random, 0, 1) == 0 ? Between(random, 1, 6) : Between(random, 8, 12)));
  for (unsigned char& byte : bytes) {
    byte = static_cast<unsigned char>(Between(random, 0, 255));
  }
  if (Between(random, 0, 1) == 0) {
    bytes.assign(7, static_cast<unsigned char>(Between(random, 0, 255)));
    bytes[4] = static_cast<unsigned char>(Between(random, 7, 255));
  } else if (Between(random, 0, 1) == 0) {
    bytes.assign(7, static_cast<unsigned char>(Between(random, 0, 255)));
    bytes[6] = static_cast<unsigned char>(Between(random, 4, 255));
  }
  return bytes;
}

// Everything of one player that the clients must agree on, in one buffer hashed at once: each unit's
// hashed fields and its pending trigger (which the end-state checksum leaves out), the allowances, and the
// world changes that the player's last update queued (the newest filled slot of its queue in every chunk).
std::uint64_t PlayerDiagnosticDigest(GlowHordeSimulation const& simulation, int player) {
  thread_local std::vector<unsigned char> bytes;
  bytes.clear();
  PlayerState const& state = simulation.players()[static_cast<std::size_t>(player)];
  for (Lemming const& lemming : state.lemmings()) {
    lemming.serialiseHashedData(bytes);
    bytes.push_back(static_cast<unsigned char>(lemming.trigger()));
  }
  for (std::int32_t count : state.availabilities().counts) {
    auto const* raw = reinterpret_cast<unsigned char const*>(&count);
    bytes.insert(bytes.end(), raw, raw + sizeof count);
  }
  ChunkedWorld const& world = simulation.world();
  for (int cy = 0; cy < world.chunksHigh(); ++cy) {
    for (int cx = 0; cx < world.chunksWide(); ++cx) {
      ChangeQueue const& queue = world.getChunk(cx * 256, cy * 256)->queue(player);
      int const slot = queue.slots() - 2;
      auto const feed = [&](unsigned char x, unsigned char y) {
        bytes.push_back(x);
        bytes.push_back(y);
      };
      bytes.push_back(0xFE);
      queue.applyPendingAdds(slot, feed);
      bytes.push_back(0xFF);
      queue.applyPendingRemoves(slot, feed);
    }
  }
  XXHashHasher hasher;
  hasher.update(bytes.data(), bytes.size());
  return hasher.digest();
}

// Shared by frame: the localBase copy of the world (costly: only when the sink wants it) and the end
// frame. By each player's own update count, at every update: the player's diagnostic digest.
void Digests(IRunningGame const& session, testing_support::DigestSink& sink) {
  GlowHordeSimulation const& simulation = SimulationOf(session);
  std::int64_t const frame = simulation.frame();
  std::int64_t const delay = simulation.delayFrames();
  if (sink.wants(frame)) {
    sink.add("world localBase", frame, simulation.localBaseDigest());
    }
  // Exit tallies are not compared by frame: each client's own player runs ahead, so its units leave
  // delayFrames earlier there. Units that left are gone from their player's digest, and the tallies are
  // compared in the results.
  for (std::size_t p = 0; p < simulation.players().size(); ++p) {
    bool const local = static_cast<int>(p) == simulation.localPlayer();
    // The update that ran in the step just made, numbered from 0 on the player's own timeline.
    std::int64_t const update = local ? (frame - 1 < simulation.endFrame() ? frame - 1 : -1) : frame - 1 - delay;
    if (update >= 0) {
      sink.add(fmt::format("player {}", p), update, PlayerDiagnosticDigest(simulation, static_cast<int>(p)));
    }
  }
}

// An order of another player that names a unit this client's copy of that player doesn't have can only
// reach clients that have parted; the simulation stops on it, so the harness drops and reports it.
bool NamesAUnitThatIsThere(IRunningGame const& session, int player, Bytes const& bytes) {
  PlayerState const& state = SimulationOf(session).players()[static_cast<std::size_t>(player)];
  std::optional<Order> const order = Order::decode(bytes);
  return !order.has_value() ||
         (order->index_in_array_ < state.lemmings().size() && state.lemmings()[order->index_in_array_].id() == order->id_);
}

}  // namespace

testing_support::LockstepAdapter GlowHordeLockstepAdapter() {
  return {RandomOrder, Digests, NamesAUnitThatIsThere};
}

}  // namespace glow_horde_testing
