// A data check of the catalogue: no unit can reach an exit within 35 frames of spawning (the longest
// head start), so an exit reached in the head start, which clients would count at different times,
// cannot happen on any map.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <map>

#include "glow_horde/GlowHordeSimulation.h"
#include "glow_horde/Order.h"
#include "sim/Games.h"

namespace {

// A unit moves at most this far in one frame: one pixel sideways (walking, digging or building, taken
// as two to be safe); up at most four pixels (a step climbed); down at most five (following a slope;
// digging down and falling make two).
constexpr std::int64_t k_maxStepX = 2;
constexpr std::int64_t k_maxStepUp = 4;
constexpr std::int64_t k_maxStepDown = 5;
constexpr std::int64_t k_headStartFrames = 35;

// The smallest distance between the exit and a box around the spawn, on a world that may wrap.
std::int64_t NearestSquared(Position spawn, Position exit, int width, int height, bool wrapX, bool wrapY) {
  std::int64_t const reachX = k_maxStepX * k_headStartFrames;
  std::int64_t const reachUp = k_maxStepUp * k_headStartFrames;
  std::int64_t const reachDown = k_maxStepDown * k_headStartFrames;
  std::int64_t best = INT64_MAX;
  for (int tx = wrapX ? -1 : 0; tx <= (wrapX ? 1 : 0); ++tx) {
    for (int ty = wrapY ? -1 : 0; ty <= (wrapY ? 1 : 0); ++ty) {
      std::int64_t const ex = std::int64_t{exit.x} + std::int64_t{tx} * width;
      std::int64_t const ey = std::int64_t{exit.y} + std::int64_t{ty} * height;
      std::int64_t const dx = std::max<std::int64_t>(0, std::llabs(ex - spawn.x) - reachX);
      std::int64_t const dy = ey >= spawn.y ? std::max<std::int64_t>(0, ey - spawn.y - reachUp)
                                            : std::max<std::int64_t>(0, spawn.y - ey - reachDown);
      best = std::min(best, dx * dx + dy * dy);
    }
  }
  return best;
}

TEST(GlowHordeCatalogue, NoExitWithinReachOfASpawnDuringTheHeadStart) {
  static Games const games;
  IGame const& game = games.refGame(Game::GlowHorde);
  ASSERT_FALSE(game.maps.empty());
  for (auto const& [name, map] : game.maps) {
    GameSettings settings = DefaultSettingsFromSchema(game.schema);
    settings.strings["map"] = name;
    std::vector<unsigned short> slots;
    for (unsigned short s = 0; s < map.maxPlayers; ++s) {
      slots.push_back(s);
    }
    GlowHordeSimulation const simulation(0, 16666, 10, settings, map, slots);
    ChunkedWorld const& world = simulation.world();
    std::int64_t const radius = GlowHordeSimulation::k_exitRadius;
    for (PlayerState const& player : simulation.players()) {
      for (Position const exit : simulation.exitPositions()) {
        EXPECT_GT(NearestSquared(player.spawn(), exit, world.width(), world.height(), world.wrapX(), world.wrapY()),
                  radius * radius)
            << name << ": spawn " << player.spawn().x << "," << player.spawn().y << " exit " << exit.x << ","
            << exit.y;
      }
    }
  }
}

// The step bounds above, seen in play: every unit of every map, walking and falling for 600 frames with
// every unit given a dig-down order now and then, never moves further in one frame.
TEST(GlowHordeCatalogue, UnitsMoveWithinTheStepBounds) {
  static Games const games;
  IGame const& game = games.refGame(Game::GlowHorde);
  for (auto const& [name, map] : game.maps) {
    GameSettings settings = DefaultSettingsFromSchema(game.schema);
    settings.strings["map"] = name;
    GlowHordeSimulation simulation(0, 16666, 10, settings, map, {0});
    int const width = simulation.world().width();
    int const height = simulation.world().height();
    std::map<std::uint16_t, Position> before;
    for (int frame = 0; frame < 600 && !simulation.gameEnded(); ++frame) {
      std::vector<unsigned char> order;
      auto const& units = simulation.localPlayerState().lemmings();
      if (frame % 7 == 0 && !units.empty()) {
        auto const place = static_cast<std::uint16_t>(frame % units.size());
        order = Order{place, units[place].id(), LemmingActivity::DigDown, LemmingActivityTrigger::Immediate}.toBytes();
      }
      simulation.update(std::vector<std::vector<unsigned char>>(1), order);
      for (Lemming const& unit : simulation.localPlayerState().lemmings()) {
        auto const previous = before.find(unit.id());
        if (previous != before.end()) {
          // The shortest way on a wrapping world.
          int dx = unit.position().x - previous->second.x;
          int dy = unit.position().y - previous->second.y;
          dx = std::abs(dx) > width / 2 ? dx - (dx > 0 ? width : -width) : dx;
          dy = std::abs(dy) > height / 2 ? dy - (dy > 0 ? height : -height) : dy;
          ASSERT_LE(std::abs(dx), k_maxStepX) << name << " unit " << unit.id();
          ASSERT_LE(dy, k_maxStepUp) << name << " unit " << unit.id();
          ASSERT_GE(dy, -k_maxStepDown) << name << " unit " << unit.id();
        }
        before[unit.id()] = unit.position();
      }
    }
  }
}

}  // namespace
