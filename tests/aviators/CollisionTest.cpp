#include <gtest/gtest.h>

#include <cstdint>
#include <random>

#include "aviators/Collision.h"
#include "aviators/CollisionMap.h"
#include "aviators/MovingBody.h"

namespace {

CollisionMap MapWithSolid(std::int32_t width, std::int32_t height, std::initializer_list<Vec2<WorldCoord>> solid) {
  CollisionMap map(width, height);
  for (Vec2<WorldCoord> p : solid) {
    map.set(p.x, p.y, true);
  }
  return map;
}

Vec2<AviatorCoord> Centre(WorldCoord x, WorldCoord y) { return {PixelCentre(x), PixelCentre(y)}; }

TEST(CollisionMap, BitsAndOutsideCountAsSolid) {
  CollisionMap map = MapWithSolid(70, 3, {{64, 1}, {0, 0}, {69, 2}});
  EXPECT_EQ(map.stride, 2);
  EXPECT_EQ(map.words.size(), 6u);
  EXPECT_EQ(map.words[1 * 2 + 1], 1u);  // x 64 is bit 0 of the second word of row 1
  EXPECT_TRUE(map.isBlocked(64, 1));
  EXPECT_FALSE(map.isBlocked(63, 1));
  for (auto [x, y] : {std::pair{-1, 0}, {0, -1}, {70, 0}, {0, 3}, {-100000, 100000}}) {
    EXPECT_TRUE(map.isBlocked(x, y)) << x << "," << y;
  }
}

// The expanded map against a brute-force search for the nearest set pixel, on random maps of odd sizes.
TEST(CollisionMap, ExpandByRadiusIsTheExactEuclideanThreshold) {
  std::mt19937 random(7);
  for (int trial = 0; trial < 40; ++trial) {
    std::int32_t const width = 1 + static_cast<std::int32_t>(random() % 90);
    std::int32_t const height = 1 + static_cast<std::int32_t>(random() % 40);
    int const radius = static_cast<int>(random() % 12);
    CollisionMap map(width, height);
    unsigned const density = trial < 3 ? 0 : 1 + random() % 60;  // the first maps are empty
    for (std::int32_t y = 0; y < height; ++y) {
      for (std::int32_t x = 0; x < width; ++x) {
        if (density != 0 && random() % 1000 < density) {
          map.set(x, y, true);
        }
      }
    }
    CollisionMap const grown = map.expandByRadius(radius);
    ASSERT_EQ(grown.width, width);
    ASSERT_EQ(grown.height, height);
    for (std::int32_t y = 0; y < height; ++y) {
      for (std::int32_t x = 0; x < width; ++x) {
        bool near = false;
        for (std::int32_t sy = 0; sy < height && !near; ++sy) {
          for (std::int32_t sx = 0; sx < width && !near; ++sx) {
            near = !map.isBlocked(sx, sy) ? false : (sx - x) * (sx - x) + (sy - y) * (sy - y) <= radius * radius;
          }
        }
        ASSERT_EQ(grown.isBlocked(x, y), near) << "trial " << trial << " pixel " << x << "," << y;
      }
    }
  }
  // One set pixel grows into the disc dx² + dy² <= 100.
  CollisionMap const disc = MapWithSolid(41, 41, {{20, 20}}).expandByRadius(10);
  int count = 0;
  for (std::int32_t y = 0; y < 41; ++y) {
    for (std::int32_t x = 0; x < 41; ++x) {
      count += disc.isBlocked(x, y) ? 1 : 0;
    }
  }
  EXPECT_EQ(count, 317);  // lattice points within radius 10
}

TEST(CollisionNormal, FromTheEightNeighbours) {
  struct Case {
    CollisionMap map;
    Vec2<WorldCoord> pixel;
    Vec2<AviatorCoord> normal;
  };
  Case const cases[] = {
      {MapWithSolid(9, 9, {{4, 4}}), {4, 4}, {0, -256}},                      // alone: no direction
      {MapWithSolid(9, 9, {}), {-50, -50}, {0, -256}},                        // deep outside: all blocked
      {MapWithSolid(9, 9, {{3, 4}, {4, 4}, {5, 4}}), {4, 4}, {0, -256}},       // a flat row: nothing below
      {MapWithSolid(9, 9, {{4, 3}, {4, 4}, {4, 5}}), {4, 4}, {0, 0}},          // a column: (0,0) → (0,-256)
      {MapWithSolid(9, 9, {{3, 4}, {3, 3}, {3, 5}, {4, 4}}), {4, 4}, {4 * 256, 0}},  // wall to the left
      {MapWithSolid(9, 9, {{4, 3}, {3, 3}, {5, 3}, {4, 4}}), {4, 4}, {0, 4 * 256}},  // floor below
      {MapWithSolid(9, 9, {{3, 3}, {4, 4}}), {4, 4}, {256, 256}},             // a corner below left
  };
  for (Case const& c : cases) {
    Vec2<AviatorCoord> expected = c.normal == Vec2<AviatorCoord>{0, 0} ? Vec2<AviatorCoord>{0, -256} : c.normal;
    EXPECT_EQ(ComputeCollisionNormal(c.map, c.pixel.x, c.pixel.y), expected) << c.pixel.x << "," << c.pixel.y;
  }
}

TEST(CollisionBounce, ReflectionWorkedByHand) {
  struct Case {
    Vec2<AviatorCoord> velocity;
    Vec2<AviatorCoord> normal;
    bool applied;
    Vec2<AviatorCoord> after;
  };
  Case const cases[] = {
      // dot = -1000·1024, nn = 1024², k = -1000·1024·456/1024² = -445 (truncated), v.y -= -445·1024/256.
      {{0, -1000}, {0, 1024}, true, {0, 780}},
      {{500, -1000}, {0, 1024}, true, {500, 780}},
      // Corner normal (256, 256): dot = -2000·256, nn = 2·256², k = -1000·456/256 = -1781.
      {{-1000, -1000}, {256, 256}, true, {781, 781}},
      {{0, 1000}, {0, 1024}, false, {0, 1000}},   // moving away
      {{1000, 0}, {0, 1024}, false, {1000, 0}},   // along the surface
      {{0, -1}, {0, 0}, false, {0, -1}},          // zero normal
      {{0, -1}, {0, 25600}, false, {0, -1}},      // k truncates to 0
  };
  for (Case const& c : cases) {
    Vec2<AviatorCoord> v = c.velocity;
    EXPECT_EQ(TryApplyBounce(v, c.normal, 200), c.applied);
    EXPECT_EQ(v, c.after) << c.velocity.x << "," << c.velocity.y;
  }
}

TEST(CollisionUpdate, HitsStopAtTheLastFreeCentreAndBounce) {
  // A floor along y = 0..1 of a 20x20 map.
  CollisionMap floor(20, 20);
  for (int x = 0; x < 20; ++x) {
    floor.set(x, 0, true);
    floor.set(x, 1, true);
  }
  {
    Vec2<AviatorCoord> position{PixelCentre(10) + 37, PixelCentre(5) + 11};
    Vec2<AviatorCoord> velocity{0, -1000};
    bool stuck = true;
    EXPECT_TRUE(CollisionUpdate(floor, position, velocity, 200, &stuck));
    EXPECT_FALSE(stuck);
    EXPECT_EQ(position, Centre(10, 2));          // the sub-pixel fraction is lost
    EXPECT_EQ(velocity, (Vec2<AviatorCoord>{0, 780}));  // normal (0, 1024), as worked out above
  }
  {  // no hit: the whole move
    Vec2<AviatorCoord> position = Centre(10, 10);
    Vec2<AviatorCoord> velocity{300, -500};
    EXPECT_FALSE(CollisionUpdate(floor, position, velocity, 200, nullptr));
    EXPECT_EQ(position, (Centre(10, 10) + Vec2<AviatorCoord>{300, -500}));
  }
  {  // starting inside a blocked pixel changes nothing
    Vec2<AviatorCoord> position = Centre(3, 1);
    Vec2<AviatorCoord> velocity{5, 5};
    EXPECT_TRUE(CollisionUpdate(floor, position, velocity, 200, nullptr));
    EXPECT_EQ(position, Centre(3, 1));
    EXPECT_EQ(velocity, (Vec2<AviatorCoord>{5, 5}));
  }
  {  // into the inside corner of two walls, along the diagonal: blocked pixel (0, 0) has every
     // neighbour blocked but (1, 1), so nx = ny = 2 - 2 + 1 + 1 - 1 = 1 and the normal is (256, 256);
     // dot = -307200, nn = 131072, k = -307200·456/131072 = -1068, velocity (-600 + 1068, same)
    CollisionMap corner(10, 10);
    for (int i = 0; i < 10; ++i) {
      corner.set(i, 0, true);
      corner.set(0, i, true);
    }
    Vec2<AviatorCoord> position = Centre(2, 2);
    Vec2<AviatorCoord> velocity{-600, -600};
    bool stuck = true;
    EXPECT_TRUE(CollisionUpdate(corner, position, velocity, 200, &stuck));
    EXPECT_FALSE(stuck);
    EXPECT_EQ(position, Centre(1, 1));
    EXPECT_EQ(velocity, (Vec2<AviatorCoord>{468, 468}));
  }
  {  // a one-pixel pocket: every way out is blocked, the body stops dead and is stuck
    CollisionMap pocket(3, 3);
    for (int y = 0; y < 3; ++y) {
      for (int x = 0; x < 3; ++x) {
        pocket.set(x, y, !(x == 1 && y == 1));
      }
    }
    Vec2<AviatorCoord> position = Centre(1, 1);
    Vec2<AviatorCoord> velocity{400, 0};
    bool stuck = false;
    EXPECT_TRUE(CollisionUpdate(pocket, position, velocity, 200, &stuck));
    EXPECT_TRUE(stuck);
    EXPECT_EQ(position, Centre(1, 1));
    EXPECT_EQ(velocity, (Vec2<AviatorCoord>{0, 0}));
  }
}

TEST(MovingBody, ThrustBrakeTurnAndRecovery) {
  CollisionMap open(100, 100);
  {  // brake truncates toward zero
    MovingBody body{Centre(50, 50), {1, -1}, 0, 0, 8};
    body.updateMovement(open, std::nullopt);
    EXPECT_EQ(body.velocity, (Vec2<AviatorCoord>{0, 0}));
  }
  {  // thrust along 0x2000 and a turn first: rotation 0x1C00 + 0x400 = 0x2000, then (70, 70)
    MovingBody body{Centre(50, 50), {}, 0x1C00, 0, 1 | 4};
    CollisionInfo const info = body.updateMovement(open, std::nullopt);
    EXPECT_EQ(body.rotation, 0x2000);
    EXPECT_EQ(body.velocity, (Vec2<AviatorCoord>{70, 70}));
    EXPECT_EQ(info.speed, 98);  // isqrt(9800)
    EXPECT_FALSE(info.collided);
  }
  {  // turn value 2 adds 64512; 3 is no turn, thrust 3 is no thrust
    MovingBody body{Centre(50, 50), {}, 0, 0, 2};
    body.updateMovement(open, std::nullopt);
    EXPECT_EQ(body.rotation, 64512);
    body.controls = 3 | 12;
    body.updateMovement(open, std::nullopt);
    EXPECT_EQ(body.rotation, 64512);
    EXPECT_EQ(body.velocity, (Vec2<AviatorCoord>{0, 0}));
  }
  {  // a wall hit at speed 1000: collided, speed 1000, then two frames still while it turns
    CollisionMap wall(100, 100);
    for (int y = 0; y < 100; ++y) {
      wall.set(60, y, true);
    }
    MovingBody body{Centre(58, 50), {1000, 0}, 0, 0, 1};
    CollisionInfo const hit = body.updateMovement(wall, std::nullopt);
    EXPECT_TRUE(hit.collided);
    EXPECT_EQ(hit.speed, 1000);
    EXPECT_EQ(body.recoveryFrames, 2);
    Vec2<AviatorCoord> const resting = body.position;
    Vec2<AviatorCoord> const velocity = body.velocity;
    for (int frame = 0; frame < 2; ++frame) {
      CollisionInfo const still = body.updateMovement(wall, std::nullopt);
      EXPECT_FALSE(still.collided);
      EXPECT_EQ(still.speed, 0);
      EXPECT_EQ(body.position, resting);
      EXPECT_EQ(body.velocity, velocity);
    }
    EXPECT_EQ(body.rotation, 3 * 1024);
    EXPECT_EQ(body.recoveryFrames, 0);
  }
  {  // minimum speed raises a slow body, leaves a still or fast one
    struct Case {
      Vec2<AviatorCoord> velocity;
      Vec2<AviatorCoord> after;
    };
    for (Case const& c : {Case{{100, 0}, {768, 0}}, Case{{0, 0}, {0, 0}}, Case{{1000, 0}, {1000, 0}},
                          Case{{300, 400}, {460, 614}}}) {
      MovingBody body{Centre(50, 50), c.velocity, 0, 0, 0};
      body.updateMovement(open, 768);
      EXPECT_EQ(body.velocity, c.after) << c.velocity.x << "," << c.velocity.y;
    }
  }
}

TEST(AviatorCoord, PixelOfFloorsAndCentre) {
  EXPECT_EQ(PixelOf(-1), -1);
  EXPECT_EQ(PixelOf(-256), -1);
  EXPECT_EQ(PixelOf(-257), -2);
  EXPECT_EQ(PixelOf(255), 0);
  EXPECT_EQ(PixelCentre(0), 128);
  EXPECT_EQ(PixelCentre(-1), -128);
  EXPECT_EQ((Vec2<AviatorCoord>{0x7FFFFFFF, 0} + Vec2<AviatorCoord>{1, 0}).x, -0x7FFFFFFF - 1);  // wraps
}

}  // namespace
