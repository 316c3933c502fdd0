// The Aviators simulation against its rules, on the catalogue's map (no renderer): crash and missile
// damage, death and the end of the game, target lock, firing, the missile stock, the prediction ahead of
// the shared state, the salvo spread and the layout of the hashed state.
#include <gtest/gtest.h>

#include <xxhash.h>

#include <memory>

#include "aviators/AviatorsSimulation.h"
#include "aviators/TargetLock.h"
#include "sim/Games.h"

namespace {

using Orders = std::vector<std::vector<unsigned char>>;
using Sound = AviatorsSimulation::Sound;

IGame const& Aviators() {
  static Games const games;
  return games.refGame(Game::Aviators);
}

std::unique_ptr<AviatorsSimulation> Make(int players, int durationSeconds = 180, std::uint8_t delay = 15) {
  GameSettings settings = DefaultSettingsFromSchema(Aviators().schema);
  settings.ints["duration_seconds"] = durationSeconds;
  std::vector<unsigned short> slots;
  for (int i = 0; i < players; ++i) {
    slots.push_back(static_cast<unsigned short>(i));
  }
  return std::make_unique<AviatorsSimulation>(0, 16666, delay, settings,
                                              Aviators().maps.at("The Empty Berth"), slots, nullptr);
}

Orders None(std::size_t players) { return Orders(players); }

bool Played(AviatorsSimulation const& simulation, Sound sound) {
  for (auto const& event : simulation.sounds()) {
    if (event.sound == sound) {
      return true;
    }
  }
  return false;
}

// A free pixel of the body map with a blocked one just to its left, on the row of the first start.
Vec2<WorldCoord> BesideAWall(AviatorsSimulation const& simulation) {
  CollisionMap const& map = simulation.bodyMap();
  WorldCoord const y = PixelOf(simulation.aviators()[0].position.y);
  WorldCoord x = PixelOf(simulation.aviators()[0].position.x);
  EXPECT_FALSE(map.isBlocked(x, y));
  while (!map.isBlocked(x - 1, y)) {
    --x;
  }
  EXPECT_FALSE(map.isBlocked(x, y));
  return {x, y};
}

TEST(AviatorsSimulation, CrashDamageBySpeed) {
  struct Case {
    AviatorCoord speed;
    std::int32_t damage;
  };
  for (Case const c : {Case{7500, 40}, Case{3001, 40}, Case{3000, 40}, Case{2999, 39}, Case{150, 2}, Case{74, 0}}) {
    std::unique_ptr<AviatorsSimulation> simulation = Make(2);
    Vec2<WorldCoord> const free = BesideAWall(*simulation);
    Aviator& ship = simulation->editAviators()[1];
    ship.position = {free.x * 256 + 10, PixelCentre(free.y)};  // 10/256 pixel from the wall
    ship.velocity = {-c.speed, 0};
    simulation->update(None(2), {});
    EXPECT_EQ(ship.health, 500 - c.damage) << "speed " << c.speed;
    EXPECT_EQ(ship.recoveryFrames, 2) << "speed " << c.speed;
    EXPECT_TRUE(Played(*simulation, Sound::SmallHit)) << "another player's crash is heard";
  }
}

TEST(AviatorsSimulation, MissileHitLeavesZeroAndTheShipDiesInTheNextFrameWhichEndsTheGame) {
  std::unique_ptr<AviatorsSimulation> simulation = Make(2);
  Aviator& target = simulation->editAviators()[1];
  target.health = 30;
  Missile missile;
  missile.position = target.position;
  missile.owner = 0;
  missile.target = 1;
  missile.age = 30;
  simulation->editMissiles().push_back(missile);
  simulation->update(None(2), {});
  EXPECT_EQ(target.health, 0);
  EXPECT_FALSE(target.deathFrame.has_value());
  EXPECT_TRUE(simulation->missiles().empty());
  EXPECT_FALSE(simulation->gameEnded_LocalPlayer());

  std::uint32_t const frame = simulation->frame();
  simulation->update(None(2), {});
  ASSERT_TRUE(target.deathFrame.has_value());
  EXPECT_EQ(*target.deathFrame, static_cast<std::int32_t>(frame));
  EXPECT_EQ(simulation->endFrame(), frame + 1);
  EXPECT_TRUE(simulation->gameEnded_LocalPlayer());
  // The game runs delayFrames more frames; the result keeps the times of death.
  int more = 0;
  while (!simulation->gameEnded()) {
    simulation->update(None(2), {});
    ++more;
  }
  EXPECT_EQ(more, 15);
  GameResult result;
  simulation->getGameResult(result);
  EXPECT_EQ(result.results[1], (std::vector<long long>{0, 16666LL * frame / 1000}));
  EXPECT_EQ(result.results[0], (std::vector<long long>{500, 16666LL * simulation->frame() / 1000}));
}

TEST(AviatorsSimulation, SessionsEndByDeathOfTheLastOrBoth) {
  {  // one ship: not at the first frame, but when it dies
    std::unique_ptr<AviatorsSimulation> simulation = Make(1);
    simulation->update(None(1), {});
    EXPECT_FALSE(simulation->gameEnded_LocalPlayer());
    simulation->editAviators()[0].health = 0;
    simulation->update(None(1), {});
    EXPECT_TRUE(simulation->gameEnded_LocalPlayer());
  }
  {  // both in one frame: both results hold health 0 with their own times
    std::unique_ptr<AviatorsSimulation> simulation = Make(2);
    std::uint32_t const frame = simulation->frame();
    simulation->editAviators()[0].health = 0;
    simulation->editAviators()[1].health = 0;
    simulation->update(None(2), {});
    EXPECT_TRUE(simulation->gameEnded_LocalPlayer());
    GameResult result;
    simulation->getGameResult(result);
    EXPECT_EQ(result.results[0], (std::vector<long long>{0, 16666LL * frame / 1000}));
    EXPECT_EQ(result.results[1], (std::vector<long long>{0, 16666LL * frame / 1000}));
  }
  {  // the clock: 30 s is 1800 frames; the local end comes delayFrames frames before the end
    std::unique_ptr<AviatorsSimulation> simulation = Make(2, 30, 12);
    EXPECT_EQ(simulation->endFrame(), 30u * 1000000u / 16666u);
    while (!simulation->gameEnded_LocalPlayer()) {
      simulation->update(None(2), {});
    }
    EXPECT_EQ(simulation->frame(), simulation->endFrame());
    int more = 0;
    while (!simulation->gameEnded()) {
      simulation->update(None(2), {});
      ++more;
    }
    EXPECT_EQ(more, 12);
  }
}

TEST(AviatorsSimulation, TargetLockPicksTheNearestLivingOtherShipWithinRange) {
  Vec2<AviatorCoord> aim;
  std::vector<Vec2<AviatorCoord>> const positions{{0, 0}, {102400, 1000}, {102400, -1000}, {102400 + 76800, 0}};
  EXPECT_EQ(TargetLock(0, {0, 0}, 0, positions, {false, false, false, false}, aim), 1);  // a tie: lowest index
  EXPECT_EQ(aim, (Vec2<AviatorCoord>{102400, 0}));
  EXPECT_EQ(TargetLock(0, {0, 0}, 0, positions, {false, true, false, false}, aim), 2);
  EXPECT_EQ(TargetLock(0, {0, 0}, 0, positions, {false, true, true, false}, aim), 3);  // exactly 300 pixels
  std::vector<Vec2<AviatorCoord>> const far{{0, 0}, {102400 + 76801, 0}};
  EXPECT_EQ(TargetLock(0, {0, 0}, 0, far, {false, false}, aim), std::nullopt);
  std::vector<Vec2<AviatorCoord>> const self{{102400, 0}, {102400 + 76800, 0}};
  EXPECT_EQ(TargetLock(0, {0, 0}, 0, self, {false, false}, aim), 1);  // never itself
}

TEST(AviatorsSimulation, LockAndFireInThePrediction) {
  std::unique_ptr<AviatorsSimulation> simulation = Make(2);
  // Facing away from the other ship: a lock fails, and a missile can't be fired without one.
  simulation->editShadow().rotation = 0xA000;
  simulation->update(None(2), {32 | 16});
  EXPECT_TRUE(Played(*simulation, Sound::LockFailed));
  EXPECT_TRUE(Played(*simulation, Sound::CannotFire));
  EXPECT_FALSE(simulation->shadow().target.has_value());
  EXPECT_TRUE(simulation->shadowMissiles().empty());
  std::int32_t const stock = simulation->shadow().missiles;
  EXPECT_TRUE(simulation->pingPoint().has_value());
  // A failed lock keeps an earlier one; with it a missile goes out at once in the prediction only.
  simulation->editShadow().target = 1;
  simulation->update(None(2), {32 | 16});
  EXPECT_EQ(simulation->shadow().target, std::optional<std::uint16_t>(1));
  EXPECT_EQ(simulation->shadow().missiles, stock - 1);
  EXPECT_TRUE(Played(*simulation, Sound::FireMissile));
  EXPECT_EQ(simulation->shadowMissiles().size(), 1u);
  EXPECT_TRUE(simulation->missiles().empty());
}

TEST(AviatorsSimulation, ThePredictionActsAtOnceAndTheSharedShipDelayFramesLater) {
  std::unique_ptr<AviatorsSimulation> simulation = Make(2);
  std::vector<unsigned char> const thrust{4};
  simulation->update(None(2), thrust);
  EXPECT_NE(simulation->shadow().velocity, (Vec2<AviatorCoord>{}));
  EXPECT_EQ(simulation->aviators()[0].velocity, (Vec2<AviatorCoord>{}));
  for (int i = 1; i < 15; ++i) {
    simulation->update(None(2), {});
  }
  EXPECT_EQ(simulation->aviators()[0].velocity, (Vec2<AviatorCoord>{}));
  Orders orders = None(2);
  orders[0] = thrust;
  simulation->update(orders, {});
  EXPECT_NE(simulation->aviators()[0].velocity, (Vec2<AviatorCoord>{}));
  // Both had 15 frames of thrust; bodies that never touched a wall agree.
  EXPECT_EQ(simulation->aviators()[0].controls, simulation->shadow().controls);
}

TEST(AviatorsSimulation, MissileStockStopsAtFortyButTheTimerRestarts) {
  std::unique_ptr<AviatorsSimulation> simulation = Make(2);
  Aviator& ship = simulation->editAviators()[1];
  ASSERT_EQ(ship.missiles, 40);
  ASSERT_EQ(ship.missileTimer, 0);
  simulation->update(None(2), {});
  EXPECT_EQ(ship.missiles, 40);
  EXPECT_EQ(ship.missileTimer, 120);
  ship.missiles = 7;
  ship.missileTimer = 0;
  simulation->update(None(2), {});
  EXPECT_EQ(ship.missiles, 8);
}

TEST(AviatorsSimulation, SalvoSpreadIsTheDigestOfFrameAndSlot) {
  for (auto [frame, slot] : {std::pair<std::int32_t, std::uint16_t>{0, 0}, {15, 1}, {123456, 3}, {-1, 2}}) {
    std::uint64_t const key = std::uint64_t{slot} | (std::uint64_t{static_cast<std::uint32_t>(frame)} << 16);
    unsigned char bytes[8];
    for (int i = 0; i < 8; ++i) {
      bytes[i] = static_cast<unsigned char>(key >> (8 * i));
    }
    std::uint64_t const digest = XXH3_64bits(bytes, 8);
    Vec2<AviatorCoord> const expected{static_cast<std::int8_t>(digest), static_cast<std::int8_t>(digest >> 8)};
    EXPECT_EQ(MissileVelocityVariation(frame, slot), expected);
    EXPECT_EQ(MissileVelocityVariation(frame, slot), MissileVelocityVariation(frame, slot));
  }
}

// The hashed layout of a ship: 46 bytes, and 2 and 4 more with a target and a death frame.
TEST(AviatorsSimulation, ShipHashLayout) {
  struct Counter final : IHasher {
    std::vector<unsigned long> sizes;
    void update(void const*, unsigned long size) override { sizes.push_back(size); }
  };
  Aviator ship;
  Counter plain;
  ship.hash(plain);
  EXPECT_EQ(plain.sizes, (std::vector<unsigned long>{4, 4, 4, 4, 2, 4, 1, 4, 4, 4, 4, 1, 4, 1}));
  ship.target = 2;
  ship.deathFrame = 99;
  Counter full;
  ship.hash(full);
  EXPECT_EQ(full.sizes, (std::vector<unsigned long>{4, 4, 4, 4, 2, 4, 1, 4, 4, 4, 4, 1, 2, 4, 1, 4}));
}

TEST(AviatorsGame, FormatResultAndCatalogue) {
  IGame const& game = Aviators();
  EXPECT_EQ(game.formatResult({500, 180000}, false), "500 health remaining");
  EXPECT_EQ(game.formatResult({0, 12340}, false), "Died after 12.3 seconds");
  EXPECT_EQ(game.formatResult({0, 12340}, true), "All died after 12.3 seconds");
  ASSERT_EQ(game.lookup.rankedMatches.size(), 2u);
  EXPECT_EQ(game.lookup.rankedMatches[1].minPlayers, 4);
  EXPECT_EQ(game.lookup.rankedMatches[1].maxPlayers, 4);
  GameSettings missing = DefaultSettingsFromSchema(game.schema);
  missing.ints.erase("missile_speed");
  EXPECT_THROW(game.startSession(nullptr, 0, 16666, 15, missing, {0, 1}, false), std::out_of_range);
}

}  // namespace
