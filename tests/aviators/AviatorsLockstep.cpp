#include "aviators/AviatorsLockstep.h"

#include <fmt/format.h>

#include "aviators/FixedTrig.h"
#include "aviators/RunningAviators.h"
#include "sim/XXHashHasher.h"

namespace aviators_testing {

namespace {

using testing_support::Bytes;

AviatorsSimulation const& SimulationOf(IRunningGame const& session) {
  return dynamic_cast<RunningAviators const&>(session).simulation();
}

int Between(std::mt19937_64& random, int low, int high) { return std::uniform_int_distribution<int>(low, high)(random); }

// Half the time the pilot turns toward the nearest living ship as the shared state shows it, thrusts
// (brakes when fast), and asks for a lock and a missile; otherwise any byte, now and then with more bytes after it.
Bytes RandomOrder(IRunningGame const& session, std::mt19937_64& random) {
  AviatorsSimulation const& simulation = SimulationOf(session);
  auto const& ships = simulation.aviators();
  Aviator const& own = simulation.shadow();
  if (Between(random, 0, 1) == 0) {
    std::optional<std::size_t> nearest;
    std::int64_t best = 0;
    for (std::size_t i = 0; i < ships.size(); ++i) {
      if (static_cast<int>(i) == simulation.localPlayer() || ships[i].deathFrame.has_value()) {
        continue;
      }
      std::int64_t const d = LengthSquared(ships[i].position - own.position);
      if (!nearest.has_value() || d < best) {
        nearest = i;
        best = d;
      }
    }
    if (nearest.has_value()) {
      Vec2<AviatorCoord> const d = ships[*nearest].position - own.position;
      std::int64_t const side =
          std::int64_t{d.x} * FixedSine(own.rotation) - std::int64_t{d.y} * FixedCosine(own.rotation);
      unsigned char byte = side < 0 ? 1 : 2;                          // turn toward it
      bool const fast = LengthSquared(own.velocity) > 1200 * 1200;
      byte |= static_cast<unsigned char>(fast || Between(random, 0, 3) == 0 ? 8 : 4);  // brake when fast
      byte |= static_cast<unsigned char>(Between(random, 0, 2) == 0 ? 32 : 0);
      byte |= static_cast<unsigned char>(Between(random, 0, 1) == 0 ? 16 : 0);
      return {byte};
    }
  }
  Bytes bytes{static_cast<unsigned char>(Between(random, 0, 255))};
  if (Between(random, 0, 9) == 0) {
    bytes.resize(static_cast<std::size_t>(Between(random, 2, 9)), static_cast<unsigned char>(Between(random, 0, 255)));
  }
  return bytes;
}

template <class Feed>
std::uint64_t DigestOf(Feed&& feed) {
  XXHashHasher hasher;
  feed(hasher);
  return hasher.digest();
}

// Shared by frame, at every frame: each ship, the missiles, the position history and the end frame; the
// world only when the sink wants it. The prediction is this client's own and is not compared.
void Digests(IRunningGame const& session, testing_support::DigestSink& sink) {
  AviatorsSimulation const& simulation = SimulationOf(session);
  std::int64_t const frame = simulation.frame();
  for (std::size_t i = 0; i < simulation.aviators().size(); ++i) {
    sink.add(fmt::format("ship {}", i), frame, DigestOf([&](IHasher& h) { simulation.aviators()[i].hash(h); }));
  }
  sink.add("missiles", frame, DigestOf([&](IHasher& h) { simulation.hashMissiles(h); }));
  sink.add("position history", frame, DigestOf([&](IHasher& h) {
             for (Vec2<AviatorCoord> const& p : simulation.positionHistory()) {
               h.update(&p.x, sizeof p.x);
               h.update(&p.y, sizeof p.y);
             }
           }));
  sink.add("end frame", frame, simulation.endFrame());
  if (sink.wants(frame)) {
    sink.add("world localBase", frame, DigestOf([&](IHasher& h) { simulation.world().hashLocalBase(h); }));
  }
}

}  // namespace

testing_support::LockstepAdapter AviatorsLockstepAdapter() { return {RandomOrder, Digests, {}}; }

}  // namespace aviators_testing
