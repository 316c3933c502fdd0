#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <vector>

#include "world/ChunkedWorld.h"
#include "sim/XXHashHasher.h"
#include "glow_horde/GridWorld.h"
#include "glow_horde/PlayerState.h"
#include "support/TestImages.h"

namespace {

using A = LemmingActivity;
using T = LemmingActivityTrigger;
using Cell = GridWorld::Cell;

PlayerState::Setup BasicSetup() {
  return {.spawnInterval = 2'000'000, .framePeriod = 16'666, .colour = {0, 255, 127, 255},
          .availabilities = {{5, 5, 5, 5, 5, 5, 5}}, .worldWidth = 1024, .worldHeight = 1024};
}

std::vector<int> Ids(PlayerState const& state) {
  std::vector<int> ids;
  for (Lemming const& lemming : state.lemmings()) {
    ids.push_back(lemming.id());
  }
  return ids;
}

std::uint16_t IndexOfId(PlayerState const& state, int id) {
  auto const& list = state.lemmings();
  auto const it = std::find_if(list.begin(), list.end(), [&](Lemming const& l) { return l.id() == id; });
  return static_cast<std::uint16_t>(it - list.begin());
}

Order OrderFor(PlayerState const& state, int id, A activity, T trigger) {
  Order order;
  order.index_in_array_ = IndexOfId(state, id);
  order.id_ = static_cast<std::uint16_t>(id);
  order.activity_ = activity;
  order.trigger_ = trigger;
  return order;
}

UIOrder Click(int x, int y, A activity, T trigger, DirectionFilter filter = DirectionFilter::Any) {
  return UIOrder{x, y, activity, trigger, filter};
}

// A real 256 by 256 world with a floor two pixels thick (rows 0 and 1), loaded from an image the way a
// session loads its map.
std::unique_ptr<ChunkedWorld> FloorWorld(bool wrapX = false) {
  testing_support::ScopedDataDirectory directory;
  testing_support::SaveImage("floor.png", 256, 256, [](int, int row) { return row >= 254 ? 0xFE7A5030u : 0u; });
  MapSettings map;
  map.imageFile = "floor.png";
  map.wrapX = wrapX;
  return std::make_unique<ChunkedWorld>(1, 0, 1, map);
}

} // namespace

// --- Stepping order, crowds and spawning ---

TEST(PlayerStateUpdate, SortsBusyUnitsFirstThenLeftBeforeRightAndACrowdLeavesOnePerFrame) {
  auto world = FloorWorld();
  PlayerState state(BasicSetup());
  for (int i = 0; i < 5; ++i) {
    state.createLemming(10, 2, true); // ids 0 to 4, one spot, one facing
  }
  state.createLemming(50, 2, false); // id 5
  state.createLemming(50, 2, true);  // id 6: same spot, other facing
  auto frame = [&] {
    state.update(*world);
    world->frameAdvance();
  };
  auto crowdXs = [&] {
    std::vector<int> xs;
    for (Lemming const& lemming : state.lemmings()) {
      if (lemming.id() < 5) {
        xs.push_back(lemming.position().x);
      }
    }
    std::sort(xs.rbegin(), xs.rend());
    return xs;
  };

  frame(); // all were falling, so all step and land together
  EXPECT_EQ(crowdXs(), (std::vector<int>{11, 11, 11, 11, 11}));

  frame();
  EXPECT_EQ(Ids(state), (std::vector<int>{5, 0, 1, 2, 3, 4, 6}));
  EXPECT_EQ(crowdXs(), (std::vector<int>{12, 11, 11, 11, 11}));

  state.giveOrder(OrderFor(state, 6, A::Block, T::Immediate));
  frame();
  EXPECT_EQ(Ids(state), (std::vector<int>{6, 5, 1, 2, 3, 4, 0}));
  EXPECT_EQ(crowdXs(), (std::vector<int>{13, 12, 11, 11, 11}));

  for (std::vector<int> const& xs : {std::vector<int>{14, 13, 12, 11, 11}, {15, 14, 13, 12, 11}, {16, 15, 14, 13, 12}}) {
    frame();
    EXPECT_EQ(crowdXs(), xs);
  }

  EXPECT_EQ(state.lemmings()[IndexOfId(state, 5)].position(), (Position{44, 2}));

  // Two walkers on one spot facing different ways aren't a crowd: in a one-pixel pit both turn
  // every frame, so they keep facing opposite ways.
  GridWorld pit(20, 16);
  pit.fill(0, 0, 19, 1, Cell::Ground);
  pit.fill(9, 2, 9, 10, Cell::Ground);
  pit.fill(11, 2, 11, 10, Cell::Ground);
  PlayerState pair(BasicSetup());
  pair.createLemming(10, 2, false);
  pair.createLemming(10, 2, true);
  for (int i = 0; i < 4; ++i) {
    pair.update(pit);
    pit.endFrame();
    ASSERT_NE(pair.lemmings()[0].facingRight(), pair.lemmings()[1].facingRight()) << "frame " << i + 1;
    EXPECT_EQ(pair.lemmings()[0].position(), pair.lemmings()[1].position());
  }
}

TEST(PlayerStateUpdate, SpawnsOnGameTimeWithTheRemainderCarriedOver) {
  GridWorld world(16, 256);
  world.fill(0, 0, 15, 1, Cell::Ground);
  PlayerState::Setup setup = BasicSetup();
  setup.spawn = {5, 200};
  setup.toSpawn = 3;
  setup.nextFacingRight = false;
  PlayerState state(setup);

  auto updates = [&](int count) {
    for (int i = 0; i < count; ++i) {
      state.update(world);
      world.endFrame();
    }
  };
  updates(120);
  EXPECT_TRUE(state.lemmings().empty());
  updates(1); // the 121st
  ASSERT_EQ(state.lemmings().size(), 1u);
  EXPECT_EQ(state.lemmings()[0].position(), (Position{5, 200})) << "appears after the units have stepped";
  EXPECT_FALSE(state.lemmings()[0].facingRight());
  EXPECT_TRUE(state.lemmings()[0].inAir());
  EXPECT_EQ(state.spawnClock(), 121 * 16'666 - 2'000'000);
  EXPECT_EQ(state.toSpawn(), 2);

  updates(119);
  EXPECT_EQ(state.lemmings().size(), 1u);
  updates(1); // 120 after the first
  ASSERT_EQ(state.lemmings().size(), 2u);
  EXPECT_EQ(state.lemmings()[1].id(), 1);
  EXPECT_TRUE(state.lemmings()[1].facingRight()) << "directions alternate";

  updates(120);
  EXPECT_EQ(state.lemmings().size(), 3u);
  EXPECT_EQ(state.toSpawn(), 0);
  std::int64_t const clock = state.spawnClock();
  updates(500);
  EXPECT_EQ(state.lemmings().size(), 3u);
  EXPECT_EQ(state.spawnClock(), clock) << "the clock stops with nothing left to spawn";

  // Reaching the interval exactly isn't enough: it must be passed.
  setup.spawnInterval = 100;
  setup.framePeriod = 50;
  PlayerState exact(setup);
  exact.update(world);
  exact.update(world);
  EXPECT_TRUE(exact.lemmings().empty());
  exact.update(world);
  EXPECT_EQ(exact.lemmings().size(), 1u);
  EXPECT_EQ(exact.spawnClock(), 50);
}

// --- Choosing a unit ---

TEST(PlayerStateClosestTo, DirectionFilterAndThe150PixelLimit) {
  PlayerState state(BasicSetup());
  state.createLemming(100, 100, true);  // index 0
  state.createLemming(190, 100, false); // index 1, 90 away
  auto closest = [&](int x, int y, DirectionFilter filter) { return state.closestTo(x, y, filter, T::BeforeFalling); };
  EXPECT_EQ(closest(100, 100, DirectionFilter::Any), 0);
  EXPECT_EQ(closest(100, 100, DirectionFilter::FacingRight), 0);
  EXPECT_EQ(closest(100, 100, DirectionFilter::FacingLeft), 1);
  EXPECT_EQ(closest(40, 100, DirectionFilter::FacingLeft), 1) << "exactly 150 qualifies";
  EXPECT_FALSE(closest(39, 100, DirectionFilter::FacingLeft).has_value());
  EXPECT_EQ(closest(100, -20, DirectionFilter::FacingLeft), 1) << "90 across and 120 down is 150";
  EXPECT_FALSE(closest(100, -21, DirectionFilter::FacingLeft).has_value());

  PlayerState empty(BasicSetup());
  EXPECT_FALSE(empty.closestTo(0, 0, DirectionFilter::Any, T::BeforeFalling).has_value());
}

TEST(PlayerStateClosestTo, DistanceWrapsOnlyOnTheCameraWrappingAxes) {
  using Index = std::optional<std::uint16_t>;
  for (bool wrapX : {true, false}) {
    SCOPED_TRACE(wrapX ? "wraps in x" : "wraps in y");
    PlayerState::Setup setup = BasicSetup();
    setup.cameraWrapX = wrapX;
    setup.cameraWrapY = !wrapX;
    PlayerState state(setup);
    state.createLemming(1020, 500, true);
    state.createLemming(500, 1020, true);
    EXPECT_EQ(state.closestTo(5, 500, DirectionFilter::Any, T::BeforeFalling), wrapX ? Index{0} : std::nullopt);
    EXPECT_EQ(state.closestTo(500, 3, DirectionFilter::Any, T::BeforeFalling), wrapX ? std::nullopt : Index{1});
  }
}

TEST(PlayerStateClosestTo, FallingUnitsRefusedForImmediateOnlyAndTiesGoToTheLowerIndex) {
  GridWorld world(256, 128);
  world.fill(0, 0, 255, 1, Cell::Ground);
  PlayerState state(BasicSetup());
  state.createLemming(100, 2, true);   // lands and walks to (101, 2)
  state.createLemming(100, 60, true);  // falls to (100, 59)
  state.update(world);
  world.endFrame();
  auto const immediate = state.closestTo(100, 59, DirectionFilter::Any, T::Immediate);
  ASSERT_TRUE(immediate.has_value());
  EXPECT_EQ(state.lemmings()[*immediate].position(), (Position{101, 2}));
  auto const waiting = state.closestTo(100, 59, DirectionFilter::Any, T::BeforeFalling);
  ASSERT_TRUE(waiting.has_value());
  EXPECT_EQ(state.lemmings()[*waiting].position(), (Position{100, 59}));

  // Equal distances: the earlier place in the list wins, which after a sort needn't be the lower id.
  PlayerState tie(BasicSetup());
  tie.createLemming(110, 100, true); // id 0
  tie.createLemming(90, 100, false); // id 1, sorted first: facing left
  GridWorld open(256, 256);
  tie.update(open);
  ASSERT_EQ(Ids(tie), (std::vector<int>{1, 0}));
  EXPECT_EQ(tie.closestTo(100, 99, DirectionFilter::Any, T::BeforeFalling), 0);
}

// --- Resolving and giving orders ---

TEST(PlayerStateOrders, ResolvedOrdersNameTheUnitAndAreRefusedWhenNoneAreLeft) {
  PlayerState::Setup setup = BasicSetup();
  setup.availabilities.counts = {0, 0, 0, 0, 2, 0, 0};
  PlayerState state(setup);
  UIOrder const dig = Click(125, 100, A::DigDown, T::WhenBlocked);
  EXPECT_FALSE(state.previewUnitSelectionForOrder(dig).has_value()) << "no units";
  EXPECT_FALSE(state.resolveUIOrder(dig).has_value()) << "no units";
  state.createLemming(100, 100, true);
  state.createLemming(130, 100, true);
  EXPECT_FALSE(state.resolveUIOrder(Click(300, 100, A::DigDown, T::WhenBlocked)).has_value()) << "nobody within reach";

  UIOrder const bridge = Click(125, 100, A::Bridge, T::BeforeFalling);
  EXPECT_FALSE(state.previewUnitSelectionForOrder(bridge).has_value()) << "none left, no preview";
  auto const refused = state.resolveUIOrder(bridge);
  ASSERT_TRUE(refused.has_value()) << "resolved regardless: every client refuses it alike";
  EXPECT_EQ(*refused, (Order{1, 1, A::Bridge, T::BeforeFalling}));
  EXPECT_FALSE(state.giveOrder(*refused));
  EXPECT_FALSE(state.lemmings()[1].activity().has_value());
  EXPECT_EQ(state.availabilities()[A::Bridge], 0);

  EXPECT_EQ(state.previewUnitSelectionForOrder(dig), (Position{130, 100}));
  auto const order = state.resolveUIOrder(dig);
  ASSERT_TRUE(order.has_value());
  EXPECT_EQ(*order, (Order{1, 1, A::DigDown, T::WhenBlocked}));
  EXPECT_TRUE(state.giveOrder(*order));
  EXPECT_EQ(state.availabilities()[A::DigDown], 1);
  EXPECT_EQ(state.lemmings()[1].activity(), A::DigDown);
  EXPECT_EQ(state.lemmings()[1].trigger(), T::WhenBlocked);

  // Replacing an order is paid for again, and nothing is given back.
  EXPECT_TRUE(state.giveOrder(Order{1, 1, A::DigDown, T::AfterTurning}));
  EXPECT_EQ(state.availabilities()[A::DigDown], 0);
  EXPECT_FALSE(state.giveOrder(Order{0, 0, A::DigDown, T::Immediate}));
  EXPECT_FALSE(state.lemmings()[0].activity().has_value());
  EXPECT_EQ(state.lemmings()[1].trigger(), T::AfterTurning);
}

TEST(PlayerStateOrdersDeathTest, AnOrderForAnotherListStopsTheProgramWithItsCheck) {
  PlayerState state(BasicSetup());
  state.createLemming(100, 100, true);
  state.createLemming(110, 100, true);
  EXPECT_DEATH(state.giveOrder(Order{2, 2, A::Block, T::Immediate}), "order\\.index_in_array_ < lemmings_\\.size\\(\\)");
  EXPECT_DEATH(state.giveOrder(Order{1, 0, A::Block, T::Immediate}), "lem\\.id\\(\\) == order\\.id_");
}

// --- Exits ---

TEST(PlayerStateExit, RemovesWithinTheRadiusAcrossAWrappedSeamKeepingTheOrder) {
  for (bool wrapX : {true, false}) {
    SCOPED_TRACE(wrapX ? "wrapping" : "not wrapping");
    auto world = FloorWorld(wrapX);
    PlayerState state(BasicSetup());
    state.createLemming(2, 100, true);   // id 0: 4 across the seam
    state.createLemming(128, 100, true); // id 1
    state.createLemming(224, 100, true); // id 2: exactly 30
    state.createLemming(223, 100, true); // id 3: 31
    state.createLemming(250, 120, true); // id 4: 4 and 20
    int const removed = state.removeAtExit(*world, Position{254, 100}, 30);
    EXPECT_EQ(removed, wrapX ? 3 : 2);
    EXPECT_EQ(Ids(state), (wrapX ? std::vector<int>{1, 3} : std::vector<int>{0, 1, 3}));
  }
}

// --- Hashing ---

TEST(PlayerStateHash, BytesAreExactAndTheDigestIsOfTheSameBytes) {
  PlayerState::Setup const setup{.index = 1, .spawn = {16, -1}, .toSpawn = 5, .spawnInterval = 1'000'000'000,
                                 .framePeriod = 16'666, .nextFacingRight = true, .colour = {0, 255, 127, 255},
                                 .availabilities = {{13, 13, 2, 3, 5, 2, 258}}, .worldWidth = 1024, .worldHeight = 1024};
  PlayerState state(setup);
  state.createLemming(3, 4, false);
  GridWorld open(16, 16);
  state.update(open); // the unit falls a pixel, the clock runs one frame

  std::vector<unsigned char> const expected = {
      0x01, 0x00, 0x00, 0x00,                         // index
      0x10, 0x00, 0x00, 0x00, 0xFF, 0xFF, 0xFF, 0xFF, // spawn
      0x05, 0x00, 0x00, 0x00,                         // toSpawn
      0x1A, 0x41, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, // spawnClock = 16666
      0x01,                                           // nextFacingRight
      0x00, 0xFF, 0x7F, 0xFF,                         // colour
      // the unit: id, x, y, facing, no activity, timers, in the air
      0x00, 0x00, 0x03, 0x00, 0x00, 0x00, 0x03, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00,
      0x00, 0x00, 0x01,
      // availabilities
      0x0D, 0x00, 0x00, 0x00, 0x0D, 0x00, 0x00, 0x00, 0x02, 0x00, 0x00, 0x00, 0x03, 0x00, 0x00, 0x00, 0x05, 0x00,
      0x00, 0x00, 0x02, 0x00, 0x00, 0x00, 0x02, 0x01, 0x00, 0x00,
  };
  std::vector<unsigned char> bytes;
  state.serialiseHashedData(bytes);
  EXPECT_EQ(bytes, expected);

  XXHashHasher streamed;
  state.hash(streamed);
  XXHashHasher whole;
  whole.update(bytes.data(), bytes.size());
  EXPECT_EQ(streamed.digest(), whole.digest());

  // The spawn interval and frame period are settings, not state: not in the digest.
  PlayerState::Setup other = setup;
  other.spawnInterval = 7;
  other.framePeriod = 9;
  std::vector<unsigned char> a;
  std::vector<unsigned char> b;
  PlayerState(setup).serialiseHashedData(a);
  PlayerState(other).serialiseHashedData(b);
  EXPECT_EQ(a, b);
}
