// The map images in data/ against the catalogues: each still has the digest recorded for it, and each
// map's starts and exits make sense on the world that the image becomes, read through the game's own
// world (transformed, rounded up to whole chunks, y upward, solid outside unless the axis wraps).
#include <SDL3/SDL.h>
#include <SDL3_image/SDL_image.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <utility>

#include "world/ChunkedWorld.h"
#include "sim/Games.h"
#include "present/MapSurfaces.h"
#include "sim/XXHashHasher.h"
#include "support/TestImages.h"

namespace {

SDL_Surface* LoadConverted(std::string const& file) {
  SDL_Surface* loaded = IMG_Load(("data/" + file).c_str());
  if (loaded == nullptr) {
    return nullptr;
  }
  SDL_Surface* converted = SDL_ConvertSurface(loaded, SDL_PIXELFORMAT_ARGB8888);
  SDL_DestroySurface(loaded);
  return converted;
}

// The size of a map's image after its transformations, before the world rounds it up to whole chunks.
std::pair<int, int> TransformedSize(MapSettings const& map) {
  SDL_Surface* source = LoadConverted(map.imageFile);
  if (source == nullptr) {
    ADD_FAILURE() << map.imageFile << " does not load";
    return {0, 0};
  }
  SDL_Surface* image = ApplyMapTransformations(source, map);
  std::pair const size{image->w, image->h};
  SDL_DestroySurface(source);
  SDL_DestroySurface(image);
  return size;
}

// Counting down from just below (x, y): the distance to the first ground that is part of the world
// (not the solid outside), or -1 if a unit falling there would never land on the map itself.
int FallDistance(ChunkedWorld const& world, int x, int y) {
  int const h = world.height();
  for (int d = 1; d <= h; ++d) {
    int ty = y - d;
    if (world.wrapY()) {
      ty = (ty % h + h) % h;
    } else if (ty < 0) {
      return -1;
    }
    if (world.isGround(0, x, ty)) {
      return d - 1;
    }
  }
  return -1;
}

bool OpenBox(ChunkedWorld const& world, int x0, int y0, int x1, int y1) {
  for (int y = y0; y <= y1; ++y) {
    for (int x = x0; x <= x1; ++x) {
      if (world.isGround(0, x, y)) return false;
    }
  }
  return true;
}

bool Inside(ChunkedWorld const& world, Position p) {
  return p.x >= 0 && p.y >= 0 && p.x < world.width() && p.y < world.height();
}

// Negative coordinates count from the far edge of the world; the ship games count from its last pixel.
Position FromFarEdge(Position p, ChunkedWorld const& world, int lastPixel = 0) {
  return {p.x < 0 ? p.x + world.width() - lastPixel : p.x, p.y < 0 ? p.y + world.height() - lastPixel : p.y};
}

class MapData : public ::testing::Test {
protected:
  static ChunkedWorld WorldOf(MapSettings const& map) { return ChunkedWorld(1, 0, 1, map); }
  Games games;
};

}  // namespace

TEST_F(MapData, EveryMapImageMatchesItsRecordedDigest) {
  int checked = 0;
  for (Game game : {Game::GlowHorde, Game::Aviators, Game::Vipers}) {
    for (auto const& [name, map] : games.refGame(game).maps) {
      EXPECT_NE(map.imageChecksum, 0u) << name << ": no digest recorded, so the image is never checked";
      SDL_Surface* surface = LoadConverted(map.imageFile);
      ASSERT_NE(surface, nullptr) << map.imageFile;
      XXHashHasher hasher;
      CalculateImageChecksum(surface, &hasher);
      SDL_DestroySurface(surface);
      EXPECT_EQ(hasher.digest(), map.imageChecksum) << name << " (" << map.imageFile << ")";
      ++checked;
    }
  }
  EXPECT_EQ(checked, 10);
}

TEST_F(MapData, WrappingMapsAreWholeChunks) {
  for (auto const& [name, map] : games.refGame(Game::GlowHorde).maps) {
    auto const [width, height] = TransformedSize(map);
    EXPECT_TRUE(!map.wrapX || width % 256 == 0) << name << " is " << width << " wide";
    EXPECT_TRUE(!map.wrapY || height % 256 == 0) << name << " is " << height << " high";
  }
}

TEST_F(MapData, StartsDropUnitsOntoTheMapAndExitsStandInTheOpenAwayFromThem) {
  for (auto const& [name, map] : games.refGame(Game::GlowHorde).maps) {
    ChunkedWorld const world = WorldOf(map);
    ASSERT_GE(map.starts.size(), map.maxPlayers) << name;
    for (std::size_t team = 0; team < map.exits.size(); ++team) {
      Position const exit = FromFarEdge(map.exits[team], world);
      SCOPED_TRACE(name + ", exit " + std::to_string(team));
      ASSERT_TRUE(Inside(world, exit));
      int const fall = FallDistance(world, exit.x, exit.y);
      EXPECT_GE(fall, 0);
      EXPECT_LE(fall, 3) << "the exit floats above the ground";
      EXPECT_TRUE(OpenBox(world, exit.x - 6, exit.y, exit.x + 6, exit.y + 12)) << "the exit is buried";
    }
    for (std::size_t slot = 0; slot < map.maxPlayers; ++slot) {
      Position const start = FromFarEdge(map.starts[slot], world);
      SCOPED_TRACE(name + ", slot " + std::to_string(slot));
      ASSERT_TRUE(Inside(world, start)) << start.x << ", " << start.y;
      EXPECT_TRUE(OpenBox(world, start.x - 3, start.y - 3, start.x + 3, start.y + 3)) << "the start is in terrain";
      int const fall = FallDistance(world, start.x, start.y);
      EXPECT_GE(fall, 0) << "units fall out of the map below the start";
      EXPECT_LE(fall, 400);
      // A unit must not be taken by an exit on its way down: an exit grabs anything within 30 pixels,
      // falling or not.
      for (std::size_t team = 0; team < map.exits.size(); ++team) {
        Position const exit = FromFarEdge(map.exits[team], world);
        for (int d = 0; d <= fall; ++d) {
          long long const dx = start.x - exit.x;
          long long const dy = start.y - d - exit.y;
          EXPECT_GT(dx * dx + dy * dy, 900) << "falls into exit " << team;
        }
      }
    }
  }
}

TEST_F(MapData, ShipsStartInOpenSpace) {
  for (Game game : {Game::Aviators, Game::Vipers}) {
    for (auto const& [name, map] : games.refGame(game).maps) {
      ChunkedWorld const world = WorldOf(map);
      EXPECT_EQ(TransformedSize(map).first, world.width()) << name;
      for (std::size_t slot = 0; slot < map.maxPlayers; ++slot) {
        Position const start = FromFarEdge(map.starts[slot], world, 1);
        SCOPED_TRACE(name + ", slot " + std::to_string(slot));
        ASSERT_TRUE(Inside(world, start));
        // A ship is kept 10 pixels from terrain; leave it room to turn and thrust.
        EXPECT_TRUE(OpenBox(world, start.x - 40, start.y - 40, start.x + 40, start.y + 40));
      }
    }
  }
}

TEST(MapDataHelpers, FallDistanceAndOpenBoxReadTheWorld) {
  // The helpers above against a map made here: the checks are only as good as they are. Image row 1,
  // world row 0: ground, then almost-ground; image row 0: scenery.
  testing_support::ScopedDataDirectory directory;
  testing_support::SaveImage("floor.png", 300, 2, [](int x, int y) {
    return y == 0 ? 0x10FFFFFFu : x < 100 ? 0xFE804020u : 0xFD804020u;
  });
  MapSettings map;
  map.imageFile = "floor.png";
  ChunkedWorld const world(1, 0, 1, map);
  EXPECT_EQ(FallDistance(world, 50, 40), 39);
  EXPECT_EQ(FallDistance(world, 150, 40), -1);
  EXPECT_TRUE(OpenBox(world, 99, 1, 400, 255));   // scenery and the margin are open
  EXPECT_FALSE(OpenBox(world, 99, 0, 99, 0));
  EXPECT_FALSE(OpenBox(world, -5, 10, 5, 10));     // outside is solid
}
