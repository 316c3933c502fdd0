#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "sim/IHasher.h"
#include "glow_horde/GridWorld.h"
#include "glow_horde/Lemming.h"
#include "glow_horde/WorldWithDiscardedChanges.h"

// Scenes are built with y upward; a unit at (x, y) stands on the pixel (x, y - 1).
// Expected positions and frame numbers below are worked out by hand from the unit's rules.

namespace {

using Cell = GridWorld::Cell;
using A = LemmingActivity;
using T = LemmingActivityTrigger;

Position P(int x, int y) {
  return Position{x, y};
}

// A flat floor two pixels thick (rows 0 and 1), so units stand at y = 2.
GridWorld Floor(int width, int height, bool wrapX = false) {
  GridWorld world(width, height, wrapX);
  world.fill(0, 0, width - 1, 1, Cell::Ground);
  return world;
}

// A cliff: ground in columns 0 to 9 up to y = 10, so that a unit at (9, 11) stands at its edge.
GridWorld Cliff(int width, int height) {
  GridWorld world(width, height);
  world.fill(0, 0, 9, 10, Cell::Ground);
  return world;
}

// A slab of ground 41 rows thick across a 24 by 48 world: units stand at y = 41.
GridWorld Slab() {
  GridWorld world(24, 48);
  world.fill(0, 0, 23, 40, Cell::Ground);
  return world;
}

Lemming Ordered(Lemming unit, A activity, T trigger) {
  unit.give_order(activity, trigger);
  return unit;
}

// The cells of a row or a column, from (x0, y0) to (x1, y1): '.' empty, '#' ground, '@' rock.
std::string Cells(GridWorld const& world, int x0, int y0, int x1, int y1) {
  std::string cells;
  for (int y = y0; y <= y1; ++y) {
    for (int x = x0; x <= x1; ++x) {
      cells += ".#@"[static_cast<int>(world.cell(x, y))];
    }
  }
  return cells;
}

} // namespace

// --- Walking, climbing, dropping, falling ---

TEST(LemmingWalk, ClimbsFourPixelsInOneFrameAndTurnsAtFive) {
  GridWorld step = Floor(20, 12);
  step.fill(10, 2, 19, 5, Cell::Ground); // top at y = 5: four pixels above the floor's surface
  Lemming climber(0, P(9, 2), true);
  StepFrame(climber, step);
  EXPECT_EQ(climber.position(), P(10, 6));
  EXPECT_TRUE(climber.facingRight());
  EXPECT_FALSE(climber.inAir());

  GridWorld wall = Floor(20, 12);
  wall.fill(10, 2, 19, 6, Cell::Ground);
  Lemming turner(0, P(9, 2), true);
  StepFrame(turner, wall);
  EXPECT_EQ(turner.position(), P(9, 2)) << "a unit doesn't move in the frame that it turns";
  EXPECT_FALSE(turner.facingRight());
  StepFrame(turner, wall);
  EXPECT_EQ(turner.position(), P(8, 2));
}

TEST(LemmingWalk, FivePixelLedgeLandsInTheSameFrameAndKeepsBeforeFallingPending) {
  GridWorld world = Cliff(20, 16);
  world.fill(10, 0, 19, 5, Cell::Ground);
  Lemming unit = Ordered(Lemming(0, P(9, 11), true), A::Bridge, T::BeforeFalling);
  StepFrame(unit, world);
  EXPECT_EQ(unit.position(), P(10, 6));
  EXPECT_FALSE(unit.inAir());
  StepFrames(unit, world, 3);
  EXPECT_EQ(unit.position(), P(13, 6));
  EXPECT_EQ(unit.activity(), A::Bridge);
  EXPECT_EQ(unit.trigger(), T::BeforeFalling);
  EXPECT_EQ(world.queuedAdds(), 0);
}

TEST(LemmingWalk, SixPixelLedgePutsTheUnitInTheAir) {
  GridWorld world = Cliff(20, 16);
  world.fill(10, 0, 19, 4, Cell::Ground);
  Lemming unit(0, P(9, 11), true);
  StepFrame(unit, world);
  EXPECT_EQ(unit.position(), P(10, 6)) << "follows five pixels down on the ground";
  EXPECT_FALSE(unit.inAir());
  StepFrame(unit, world);
  EXPECT_EQ(unit.position(), P(10, 5));
  EXPECT_TRUE(unit.inAir());
  StepFrame(unit, world);
  EXPECT_EQ(unit.position(), P(11, 5)) << "lands and walks in the same step";
  EXPECT_FALSE(unit.inAir());

  // A pending dig down doesn't sink the unit: it falls like any walker.
  Lemming pending = Ordered(Lemming(1, P(9, 11), true), A::DigDown, T::WhenBlocked);
  StepFrames(pending, world, 2);
  EXPECT_EQ(pending.position(), P(10, 5));
  EXPECT_TRUE(pending.inAir());
}

TEST(LemmingWalk, FallingEndsARunningActivityButKeepsAPendingOne) {
  GridWorld world = Floor(20, 40);
  Lemming pending = Ordered(Lemming(0, P(10, 30), true), A::DigSideways, T::WhenBlocked);
  Lemming running = Ordered(Lemming(1, P(10, 30), true), A::Bridge, T::Immediate);

  StepFrame(running, world);
  EXPECT_FALSE(running.activity().has_value());
  EXPECT_TRUE(running.inAir());

  // Already falling, a BeforeFalling order isn't fired by the fall it is in.
  Lemming beforeFalling = Ordered(Lemming(2, P(10, 30), true), A::Bridge, T::BeforeFalling);
  StepFrames(beforeFalling, world, 30);
  EXPECT_EQ(beforeFalling.position(), P(12, 2));
  EXPECT_EQ(beforeFalling.trigger(), T::BeforeFalling);

  StepFrames(pending, world, 28);
  EXPECT_EQ(pending.position(), P(10, 2)) << "one pixel a frame";
  EXPECT_TRUE(pending.inAir());
  StepFrame(pending, world);
  EXPECT_FALSE(pending.inAir());
  EXPECT_EQ(pending.activity(), A::DigSideways);
  EXPECT_EQ(pending.trigger(), T::WhenBlocked);
  EXPECT_EQ(world.queuedRemoves(), 0) << "a pending order has no effect";
}

// --- Triggers ---

TEST(LemmingTrigger, BeforeFallingFiresTwoStepsAheadSoTheBridgeBeginsAtTheEdge) {
  GridWorld world = Cliff(40, 24);
  world.fill(10, 0, 39, 4, Cell::Ground);
  Lemming unit = Ordered(Lemming(0, P(8, 11), true), A::Bridge, T::BeforeFalling);

  StepFrame(unit, world); // the fall is three steps away yet
  EXPECT_EQ(unit.position(), P(9, 11));
  EXPECT_EQ(unit.trigger(), T::BeforeFalling);

  StepFrame(unit, world); // now it is two: armed, and the first bridge frame runs at the edge
  EXPECT_EQ(unit.position(), P(9, 11));
  EXPECT_EQ(unit.trigger(), T::Immediate);
  EXPECT_EQ(unit.activityFrames(), 1);
  EXPECT_EQ(unit.actionTimer(), 1);

  StepFrames(unit, world, 6);
  EXPECT_EQ(world.queuedAdds(), 0) << "nothing is laid before the eighth frame";
  StepFrame(unit, world);
  EXPECT_EQ(world.queuedAdds(), 3);
  EXPECT_EQ(Cells(world, 10, 11, 13, 11), "###.");
  EXPECT_EQ(unit.position(), P(12, 12));

  StepFrames(unit, world, 8); // the next three pixels, one higher
  EXPECT_EQ(unit.position(), P(15, 13));
  EXPECT_EQ(Cells(world, 13, 12, 15, 12), "###");
  EXPECT_EQ(Cells(world, 13, 11, 13, 12), ".#");
  EXPECT_EQ(world.queuedAdds(), 6);
}

TEST(LemmingTrigger, WhenBlockedFiresInTheFrameTheUnitWouldTurn) {
  GridWorld world = Floor(20, 16);
  world.fill(12, 2, 19, 12, Cell::Ground);
  Lemming unit = Ordered(Lemming(0, P(9, 2), true), A::DigSideways, T::WhenBlocked);
  StepFrames(unit, world, 2);
  EXPECT_EQ(unit.position(), P(11, 2));
  EXPECT_EQ(unit.trigger(), T::WhenBlocked);

  StepFrame(unit, world);
  EXPECT_EQ(unit.trigger(), T::Immediate);
  EXPECT_TRUE(unit.facingRight()) << "armed ahead of the turn, so it never turns";
  EXPECT_EQ(unit.activityFrames(), 1);
  EXPECT_EQ(unit.actionTimer(), 1);

  StepFrames(unit, world, 3); // fourth running frame digs
  EXPECT_EQ(world.queuedRemoves(), 6);
  StepFrame(unit, world);
  EXPECT_EQ(unit.position(), P(12, 2));
  EXPECT_EQ(Cells(world, 12, 2, 12, 8), "......#");
}

TEST(LemmingTrigger, AfterTurningArmsAfterTheTurnAndStartsNextFrame) {
  GridWorld world = Floor(20, 16);
  world.fill(12, 2, 19, 12, Cell::Ground);
  Lemming unit = Ordered(Lemming(0, P(10, 2), true), A::Block, T::AfterTurning);
  StepFrame(unit, world);
  EXPECT_EQ(unit.trigger(), T::AfterTurning);

  StepFrame(unit, world);
  EXPECT_EQ(unit.position(), P(11, 2));
  EXPECT_FALSE(unit.facingRight());
  EXPECT_EQ(unit.trigger(), T::Immediate);
  EXPECT_EQ(world.queuedAdds(), 0) << "the activity starts in the next frame";

  StepFrame(unit, world);
  // Now the ground behind is the wall it turned at: four pixels and more, so the column reaches
  // (y + 4) + 5 = 11.
  EXPECT_EQ(world.queuedAdds(), 10);
  EXPECT_EQ(Cells(world, 11, 2, 11, 12), "##########.");
}

TEST(LemmingTrigger, LookAheadLeavesNoTraceAndDiscardingWorldForwardsReads) {
  GridWorld world = Floor(8, 8, true);
  world.set(3, 4, Cell::Ground);
  WorldWithDiscardedChanges view(world);
  view.add_ground(1, 5);
  view.remove_ground(3, 4);
  EXPECT_EQ(world.pendingChanges(), 0);
  EXPECT_TRUE(view.is_ground(3, 4));
  EXPECT_FALSE(view.is_ground(1, 5));
  EXPECT_EQ(view.width(), 8);
  EXPECT_EQ(view.height(), 8);
  int x = 9, y = 3;
  view.wrap(x, y);
  EXPECT_EQ(x, 1);

  // A unit whose look-ahead runs every frame, across a dig-ready wall, moves one step a frame and
  // queues nothing until its own order fires.
  GridWorld scene = Floor(20, 16);
  scene.fill(14, 2, 19, 12, Cell::Ground);
  Lemming unit = Ordered(Lemming(0, P(9, 2), true), A::DigSideways, T::WhenBlocked);
  for (int frame = 1; frame <= 3; ++frame) {
    StepFrame(unit, scene);
    EXPECT_EQ(unit.position(), P(9 + frame, 2));
  }
  EXPECT_EQ(scene.queuedRemoves(), 0);
  EXPECT_EQ(scene.queuedAdds(), 0);
}

// --- Bridges ---

TEST(LemmingBridge, OverOpenSpaceLaysUntil220ThenWaitsAndEndsAt321) {
  GridWorld world = Cliff(128, 64);
  Lemming unit = Ordered(Lemming(0, P(9, 11), true), A::Bridge, T::Immediate);

  for (int n = 1; n <= 28; ++n) { // 28 cycles of eight frames: 224 frames
    StepFrames(unit, world, 8);
    ASSERT_EQ(unit.position(), P(9 + 3 * n, 11 + n)) << "after cycle " << n;
  }
  EXPECT_EQ(world.queuedAdds(), 84);
  EXPECT_EQ(world.cell(93, 38), Cell::Ground);

  StepFrames(unit, world, 96); // frame 320: still waiting for a footing
  EXPECT_EQ(unit.activity(), A::Bridge);
  EXPECT_EQ(unit.position(), P(93, 39));
  EXPECT_EQ(world.queuedAdds(), 84);

  StepFrame(unit, world); // frame 321
  EXPECT_FALSE(unit.activity().has_value());
  EXPECT_EQ(unit.position(), P(93, 39));

  StepFrame(unit, world); // walks off the end, follows five pixels down
  EXPECT_EQ(unit.position(), P(94, 34));
  EXPECT_FALSE(unit.inAir());
  StepFrame(unit, world);
  EXPECT_TRUE(unit.inAir());
}

TEST(LemmingBridge, FootingAheadEndsItOnlyOnceLayingIsDoneAndOnlyWithinFiveBelow) {
  // The finished bridge leaves the unit at (93, 39); the column ahead is x = 94.
  for (int footing : {39, 35, 34}) {
    GridWorld world(128, 64);
    world.fill(0, 0, 9, 10, Cell::Ground);
    world.set(94, footing, Cell::Ground);
    Lemming unit = Ordered(Lemming(0, P(9, 11), true), A::Bridge, T::Immediate);
    StepFrames(unit, world, 224);
    EXPECT_EQ(unit.activity(), A::Bridge) << footing;
    StepFrame(unit, world);
    EXPECT_EQ(unit.position(), P(93, 39)) << footing;
    EXPECT_EQ(unit.activity().has_value(), footing == 34) << "footing at " << footing;
  }
}

TEST(LemmingBridge, HorizontalBridgeStaysLevel) {
  GridWorld world = Cliff(40, 24);
  Lemming unit = Ordered(Lemming(0, P(9, 11), true), A::HorizontalBridge, T::Immediate);
  StepFrames(unit, world, 8);
  EXPECT_EQ(unit.position(), P(12, 11));
  EXPECT_EQ(Cells(world, 10, 10, 12, 11), "###...");
  StepFrames(unit, world, 8);
  EXPECT_EQ(unit.position(), P(15, 11));
  EXPECT_EQ(world.cell(15, 10), Cell::Ground);
}

TEST(LemmingBridge, EndsAtAWallOnePixelHigherWithNoMove) {
  GridWorld world = Cliff(40, 40);
  world.fill(12, 0, 39, 30, Cell::Ground);
  Lemming unit = Ordered(Lemming(0, P(9, 11), true), A::Bridge, T::Immediate);
  StepFrames(unit, world, 7);
  EXPECT_EQ(unit.position(), P(9, 11));
  StepFrame(unit, world);
  EXPECT_EQ(unit.position(), P(9, 12));
  EXPECT_FALSE(unit.activity().has_value());
  EXPECT_EQ(world.queuedAdds(), 3) << "the pixels are laid before the wall is found";

  // A single pixel in the third column is no wall: the unit moves on and steps up onto it.
  GridWorld bump = Cliff(40, 40);
  bump.set(12, 12, Cell::Ground);
  Lemming climber = Ordered(Lemming(1, P(9, 11), true), A::Bridge, T::Immediate);
  StepFrames(climber, bump, 8);
  EXPECT_EQ(climber.position(), P(12, 13));
  EXPECT_EQ(climber.activity(), A::Bridge);
}

// --- Raising ground ---

TEST(LemmingRaise, LaysEverySixthFrameAndEndsAfter300) {
  GridWorld world = Floor(80, 12);
  Lemming unit = Ordered(Lemming(0, P(10, 2), true), A::RaiseGround, T::Immediate);
  StepFrames(unit, world, 5);
  EXPECT_EQ(world.queuedAdds(), 0);
  StepFrame(unit, world);
  EXPECT_EQ(world.queuedAdds(), 1);
  EXPECT_EQ(world.cell(10, 2), Cell::Ground);
  EXPECT_EQ(unit.position(), P(11, 2)) << "steps up on its pixel, walks on and down";

  StepFrames(unit, world, 294); // frame 300: the fiftieth pixel
  EXPECT_EQ(world.queuedAdds(), 50);
  EXPECT_EQ(unit.position(), P(60, 2));
  EXPECT_EQ(unit.activity(), A::RaiseGround);
  StepFrame(unit, world);
  EXPECT_FALSE(unit.activity().has_value());
  EXPECT_EQ(unit.position(), P(60, 2));
  StepFrame(unit, world);
  EXPECT_EQ(unit.position(), P(61, 2));
}

TEST(LemmingRaise, TurnsAtAStepInsteadOfClimbing) {
  GridWorld world = Floor(20, 12);
  world.fill(12, 2, 19, 3, Cell::Ground);
  Lemming raiser = Ordered(Lemming(0, P(10, 2), true), A::RaiseGround, T::Immediate);
  StepFrames(raiser, world, 12);
  EXPECT_EQ(raiser.position(), P(11, 3));
  EXPECT_FALSE(raiser.facingRight());

  Lemming walker(1, P(11, 2), true);
  StepFrame(walker, world);
  EXPECT_EQ(walker.position(), P(12, 4)) << "a plain walker climbs the same step";
}

// --- Digging ---

TEST(LemmingDigSideways, DigsAColumnOfSixEveryFiveFramesStopsAfter230AndEndsAt331) {
  GridWorld world = Floor(128, 24);
  world.fill(11, 2, 100, 20, Cell::Ground);
  Lemming unit = Ordered(Lemming(0, P(10, 2), true), A::DigSideways, T::Immediate);
  StepFrames(unit, world, 3);
  EXPECT_EQ(world.queuedRemoves(), 0);
  StepFrame(unit, world);
  EXPECT_EQ(world.queuedRemoves(), 6);
  EXPECT_EQ(unit.position(), P(10, 2));
  StepFrame(unit, world);
  EXPECT_EQ(unit.position(), P(11, 2));
  EXPECT_EQ(Cells(world, 11, 2, 11, 8), "......#");

  StepFrames(unit, world, 225); // frame 230
  EXPECT_EQ(unit.position(), P(56, 2));
  EXPECT_EQ(world.queuedRemoves(), 46 * 6);
  StepFrames(unit, world, 100); // frame 330: standing before solid ground
  EXPECT_EQ(unit.activity(), A::DigSideways);
  EXPECT_EQ(unit.position(), P(56, 2));
  EXPECT_EQ(world.queuedRemoves(), 46 * 6);
  StepFrame(unit, world);
  EXPECT_FALSE(unit.activity().has_value());
}

TEST(LemmingDigSideways, RockRefusesTheDigSoTheUnitTurnsAndDigsTheOtherWay) {
  GridWorld world = Floor(40, 24);
  world.fill(11, 2, 39, 20, Cell::Rock);
  world.fill(0, 2, 8, 20, Cell::Ground);
  Lemming unit = Ordered(Lemming(0, P(10, 2), true), A::DigSideways, T::Immediate);
  StepFrames(unit, world, 4);
  EXPECT_EQ(world.queuedRemoves(), 0) << "rock takes no change";
  StepFrame(unit, world);
  EXPECT_FALSE(unit.facingRight());
  EXPECT_EQ(unit.position(), P(10, 2));

  StepFrames(unit, world, 10);
  EXPECT_EQ(unit.position(), P(8, 2));
  EXPECT_EQ(Cells(world, 8, 2, 8, 8), "......#");
  EXPECT_EQ(Cells(world, 11, 2, 11, 20), std::string(19, '@'));
  EXPECT_EQ(unit.activity(), A::DigSideways);
}

TEST(LemmingDigUpwards, WalksEveryFourthFrameInTheOpenThenClimbsTwoPerDig) {
  GridWorld world = Floor(40, 24);
  world.fill(14, 2, 39, 20, Cell::Ground);
  Lemming unit = Ordered(Lemming(0, P(10, 2), true), A::DigUpwards, T::Immediate);
  for (int step = 1; step <= 3; ++step) {
    StepFrames(unit, world, 3);
    EXPECT_EQ(unit.position(), P(9 + step, 2));
    StepFrame(unit, world);
    EXPECT_EQ(unit.position(), P(10 + step, 2));
  }
  EXPECT_EQ(world.queuedRemoves(), 0);

  StepFrames(unit, world, 4); // frame 16: the wall is ahead
  EXPECT_EQ(world.queuedRemoves(), 6);
  EXPECT_EQ(unit.position(), P(13, 2));
  StepFrame(unit, world);
  EXPECT_EQ(unit.position(), P(14, 4));
  EXPECT_EQ(Cells(world, 14, 2, 14, 10), "##......#");
}

TEST(LemmingDigDown, RemovesARowOfFiveEveryThirdFrameSinksAndEndsAfter70) {
  GridWorld world = Slab();
  Lemming unit = Ordered(Lemming(0, P(10, 41), true), A::DigDown, T::Immediate);
  StepFrames(unit, world, 2);
  EXPECT_EQ(world.queuedRemoves(), 0);
  StepFrame(unit, world);
  EXPECT_EQ(world.queuedRemoves(), 5);
  EXPECT_EQ(unit.position(), P(10, 41)) << "the hole is invisible in the frame it is dug";
  StepFrame(unit, world);
  EXPECT_EQ(unit.position(), P(10, 40));

  StepFrames(unit, world, 66); // frame 70
  EXPECT_EQ(unit.activity(), A::DigDown);
  StepFrame(unit, world);
  EXPECT_FALSE(unit.activity().has_value());
  EXPECT_EQ(unit.position(), P(10, 18));
  EXPECT_FALSE(unit.inAir());
  EXPECT_EQ(world.queuedRemoves(), 23 * 5);
  EXPECT_EQ(Cells(world, 7, 17, 13, 17), "#######");
  for (int y = 18; y <= 40; ++y) {
    EXPECT_EQ(Cells(world, 7, y, 13, y), "#.....#") << y;
  }
}

TEST(LemmingDigDown, BreakingIntoACaveEndsItAsTheUnitFalls) {
  GridWorld world = Slab();
  world.fill(5, 30, 15, 35, Cell::Empty);
  Lemming unit = Ordered(Lemming(0, P(10, 41), true), A::DigDown, T::Immediate);
  StepFrames(unit, world, 15);
  EXPECT_EQ(unit.position(), P(10, 37));
  EXPECT_EQ(unit.activity(), A::DigDown);
  StepFrame(unit, world);
  EXPECT_EQ(unit.position(), P(10, 35)) << "sinks into the last row, then falls one pixel";
  EXPECT_TRUE(unit.inAir());
  EXPECT_FALSE(unit.activity().has_value());
}

// --- Blocking ---

TEST(LemmingBlock, BuildsAColumnFiveAboveTheGroundBehind) {
  struct Case {
    char const* name;
    int behindTop;   // top ground pixel of the column behind the unit, which stands at y = 8
    int expectedTop; // top of the wall it builds
  };
  for (Case const c : {Case{"flat", 7, 12}, Case{"two higher", 9, 14}, Case{"four higher and more", 16, 17},
                       Case{"one lower", 6, 11}, Case{"three lower", 4, 9}, Case{"pit", 2, 9}}) {
    GridWorld world(20, 24);
    world.fill(0, 0, 19, 7, Cell::Ground);
    world.fill(9, 0, 9, 23, Cell::Empty);
    world.fill(9, 0, 9, c.behindTop, Cell::Ground);
    Lemming unit = Ordered(Lemming(0, P(10, 8), true), A::Block, T::Immediate);
    StepFrame(unit, world);
    EXPECT_EQ(world.queuedAdds(), c.expectedTop - 8 + 1) << c.name;
    EXPECT_EQ(Cells(world, 10, 8, 10, c.expectedTop + 1), std::string(c.expectedTop - 7, '#') + ".") << c.name;
  }
}

TEST(LemmingBlock, TurnsWalkersHoldsForeverAndEndsOnlyByFallingLeavingTheWall) {
  GridWorld world = Floor(20, 16);
  Lemming blocker = Ordered(Lemming(0, P(10, 2), true), A::Block, T::Immediate);
  Lemming walker(1, P(13, 2), false);
  for (int frame = 0; frame < 3; ++frame) {
    blocker.update(world);
    walker.update(world);
    world.endFrame();
  }
  EXPECT_EQ(walker.position(), P(11, 2));
  EXPECT_TRUE(walker.facingRight()) << "the five-pixel wall turns a walker";

  StepFrames(blocker, world, 500);
  EXPECT_EQ(blocker.activity(), A::Block);
  EXPECT_EQ(blocker.position(), P(10, 2));

  world.fill(10, 0, 10, 1, Cell::Empty); // dig the ground from under it
  StepFrame(blocker, world);
  EXPECT_FALSE(blocker.activity().has_value());
  EXPECT_TRUE(blocker.inAir());
  EXPECT_EQ(Cells(world, 10, 2, 10, 6), "#####");
}

// --- Orders ---

TEST(LemmingOrder, ASecondOrderRestartsTheCountersAndForgetsTheOldActivity) {
  GridWorld world = Slab();
  Lemming unit = Ordered(Lemming(0, P(10, 41), true), A::DigDown, T::Immediate);
  StepFrames(unit, world, 4);
  EXPECT_EQ(unit.activityFrames(), 4);
  EXPECT_EQ(unit.actionTimer(), 1);

  unit.give_order(A::Bridge, T::Immediate);
  EXPECT_EQ(unit.activity(), A::Bridge);
  EXPECT_EQ(unit.activityFrames(), 0);
  EXPECT_EQ(unit.actionTimer(), 0);
  StepFrame(unit, world);
  EXPECT_EQ(unit.activityFrames(), 1);
  EXPECT_EQ(unit.actionTimer(), 1);

  // A pending order replaces a running one: the unit walks and digs nothing.
  Lemming digger(1, P(10, 41), true);
  GridWorld other = Slab();
  digger.give_order(A::DigDown, T::Immediate);
  StepFrames(digger, other, 2);
  digger.give_order(A::DigSideways, T::WhenBlocked);
  StepFrames(digger, other, 2);
  EXPECT_EQ(digger.position(), P(12, 41));
  EXPECT_EQ(other.queuedRemoves(), 0);
}

// --- Wrapping ---

TEST(LemmingWrap, PositionWrapsAtTheEndOfUpdateNotDuringTheStep) {
  GridWorld world = Floor(32, 8, true);
  Lemming right(0, P(31, 2), true);
  Lemming unwrapped = right;
  unwrapped.update_unwrapped_with_trigger_checks(world);
  EXPECT_EQ(unwrapped.position(), P(32, 2));
  right.update(world);
  EXPECT_EQ(right.position(), P(0, 2));

  Lemming left(1, P(0, 2), false);
  left.update(world);
  EXPECT_EQ(left.position(), P(31, 2));

  world.fill(0, 2, 0, 7, Cell::Ground); // a wall just across the seam
  Lemming turner(2, P(31, 2), true);
  turner.update(world);
  EXPECT_EQ(turner.position(), P(31, 2));
  EXPECT_FALSE(turner.facingRight());

  GridWorld vertical(8, 8, false, true);
  Lemming faller(3, P(4, 0), true);
  faller.update(vertical);
  EXPECT_EQ(faller.position(), P(4, 7)) << "falls through the bottom into the top";
}

// --- Hashing ---

namespace {

// Records every update as its own byte list, to check widths and order.
class RecordingHasher final : public IHasher {
public:
  void update(void const* data, unsigned long size) override {
    auto const* bytes = static_cast<unsigned char const*>(data);
    calls.emplace_back(bytes, bytes + size);
  }
  std::vector<std::vector<unsigned char>> calls;
};

std::vector<unsigned char> Serialised(Lemming const& unit) {
  std::vector<unsigned char> out;
  unit.serialiseHashedData(out);
  return out;
}

} // namespace

TEST(LemmingHash, BytesAreExactAndHashFeedsThemFieldByField) {
  std::vector<unsigned char> const newUnit = {
      0x34, 0x12,             // id
      0x04, 0x03, 0x02, 0x01, // x
      0xFE, 0xFF, 0xFF, 0xFF, // y
      0x01,                   // facing right
      0x00,                   // no activity, and so no value
      0x00, 0x00, 0x00, 0x00, // actionTimer
      0x00, 0x00, 0x00, 0x00, // activityFrames
      0x01,                   // in the air
  };
  EXPECT_EQ(Serialised(Lemming(0x1234, P(0x01020304, -2), true)), newUnit);

  GridWorld world = Slab();
  Lemming unit = Ordered(Lemming(7, P(10, 41), false), A::DigDown, T::Immediate);
  StepFrames(unit, world, 2);
  std::vector<unsigned char> const expected = {
      0x07, 0x00,             // id
      0x0A, 0x00, 0x00, 0x00, // x = 10
      0x29, 0x00, 0x00, 0x00, // y = 41
      0x00,                   // facing left
      0x01, 0x04, 0x00,       // activity DigDown
      0x02, 0x00, 0x00, 0x00, // actionTimer
      0x02, 0x00, 0x00, 0x00, // activityFrames
      0x00,                   // on the ground
  };
  EXPECT_EQ(Serialised(unit), expected);

  RecordingHasher hasher;
  unit.hash(hasher);
  std::vector<std::size_t> sizes;
  std::vector<unsigned char> joined;
  for (auto const& call : hasher.calls) {
    sizes.push_back(call.size());
    joined.insert(joined.end(), call.begin(), call.end());
  }
  EXPECT_EQ(sizes, (std::vector<std::size_t>{2, 4, 4, 1, 1, 2, 4, 4, 1}));
  EXPECT_EQ(joined, expected);
}

TEST(LemmingHash, TriggerIsNotHashedButEveryOtherFieldIs) {
  Lemming a(1, P(5, 5), true);
  Lemming b = a;
  a.give_order(A::Block, T::WhenBlocked);
  b.give_order(A::Block, T::AfterTurning);
  EXPECT_EQ(Serialised(a), Serialised(b));

  Lemming c = a;
  c.give_order(A::DigDown, T::WhenBlocked);
  EXPECT_NE(Serialised(a), Serialised(c));
  Lemming d = Ordered(Lemming(1, P(5, 5), false), A::Block, T::WhenBlocked);
  EXPECT_NE(Serialised(a), Serialised(d));
}
