#include "vipers/VipersLockstep.h"

#include "sim/XXHashHasher.h"
#include "vipers/RunningVipers.h"

namespace vipers_testing {

namespace {

using testing_support::Bytes;

int Between(std::mt19937_64& random, int low, int high) { return std::uniform_int_distribution<int>(low, high)(random); }

VipersSimulation const& SimulationOf(IRunningGame const& session) {
  return dynamic_cast<RunningVipers const&>(session).simulation();
}

// New keys as the interface makes them (with Space now and then), or bytes that are no order: too
// long, with the high bits set, or empty.
Bytes RandomOrder(IRunningGame const&, std::mt19937_64& random) {
  int const kind = Between(random, 1, 100);
  if (kind <= 80) {
    return {static_cast<unsigned char>(Between(random, 0, 15) | (Between(random, 0, 5) == 0 ? 16 : 0))};
  }
  if (kind <= 90) {
    return {static_cast<unsigned char>(Between(random, 16, 255))};
  }
  Bytes bytes(static_cast<std::size_t>(Between(random, 2, 9)));
  for (unsigned char& byte : bytes) {
    byte = static_cast<unsigned char>(Between(random, 0, 255));
  }
  return bytes;
}

template <typename T>
void Feed(XXHashHasher& hasher, T value) {
  hasher.update(&value, sizeof value);
}

std::uint64_t TailsDigest(VipersSimulation const& simulation) {
  XXHashHasher hasher;
  for (Tail const& tail : simulation.tails()) {
    Feed(hasher, tail.length());
    Feed(hasher, tail.currentLength());
    for (Vec2<AviatorCoord> const& point : tail.points()) {
      Feed(hasher, point.x);
      Feed(hasher, point.y);
    }
  }
  return hasher.digest();
}

std::uint64_t FoodDigest(VipersSimulation const& simulation) {
  XXHashHasher hasher;
  for (Vec2<WorldCoord> const& item : simulation.food()) {
    Feed(hasher, item.x);
    Feed(hasher, item.y);
  }
  return hasher.digest();
}

// Heads every step; tails, food and the world, which cost more, when the sink wants them.
void Digests(IRunningGame const& session, testing_support::DigestSink& sink) {
  VipersSimulation const& simulation = SimulationOf(session);
  auto const frame = static_cast<std::int64_t>(simulation.frame());
  sink.add("heads", frame, simulation.headDigest());
  if (sink.wants(frame)) {
    sink.add("tails", frame, TailsDigest(simulation));
    sink.add("food", frame, FoodDigest(simulation));
    sink.add("world", frame, simulation.localBaseDigest());
  }
}

}  // namespace

testing_support::LockstepAdapter VipersLockstepAdapter() {
  testing_support::LockstepAdapter adapter;
  adapter.randomOrder = RandomOrder;
  adapter.digests = Digests;
  return adapter;
}

}  // namespace vipers_testing
