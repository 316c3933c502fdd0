// The map images in data/ against the catalogues: each still has the digest recorded for it, and each
// map's starts and exits make sense on the world that the image becomes.
#include <SDL3/SDL.h>
#include <SDL3_image/SDL_image.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "Games.h"
#include "MapImages.h"
#include "XXHashHasher.h"

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

// The terrain of a map as its world holds it: transformed, rounded up to whole chunks, y upward, read
// with the world's rules for wrapping and for what lies outside.
class MapWorld {
public:
  explicit MapWorld(MapSettings const& map) : wrapX_(map.wrapX), wrapY_(map.wrapY) {
    SDL_Surface* source = LoadConverted(map.imageFile);
    if (source == nullptr) {
      ADD_FAILURE() << map.imageFile << " does not load";
      return;
    }
    SDL_Surface* world = ApplyMapTransformations(source, map);
    SDL_DestroySurface(source);
    imageWidth_ = world->w;
    imageHeight_ = world->h;
    width_ = (world->w + 255) / 256 * 256;
    height_ = (world->h + 255) / 256 * 256;
    alpha_.assign(static_cast<std::size_t>(width_) * height_, 0);
    for (int row = 0; row < world->h; ++row) {
      auto const* pixels = reinterpret_cast<std::uint32_t const*>(static_cast<std::uint8_t const*>(world->pixels) +
                                                                  static_cast<std::ptrdiff_t>(row) * world->pitch);
      int const y = world->h - 1 - row;
      for (int x = 0; x < world->w; ++x) {
        alpha_[static_cast<std::size_t>(y) * width_ + x] = static_cast<std::uint8_t>(pixels[x] >> 24);
      }
    }
    SDL_DestroySurface(world);
  }

  int width() const { return width_; }
  int height() const { return height_; }
  int imageWidth() const { return imageWidth_; }
  int imageHeight() const { return imageHeight_; }

  bool inside(int x, int y) const { return x >= 0 && y >= 0 && x < width_ && y < height_; }

  bool isGround(int x, int y) const {
    if (wrapX_) {
      x = ((x % width_) + width_) % width_;
    }
    if (wrapY_) {
      y = ((y % height_) + height_) % height_;
    }
    if (!inside(x, y)) {
      return true;
    }
    return alpha_[static_cast<std::size_t>(y) * width_ + x] >= 254;
  }

  // Counting down from just below (x, y): the distance to the first ground that is part of the world
  // (not the solid outside), or -1 if a unit falling there would never land on the map itself.
  int fallDistance(int x, int y) const {
    for (int d = 1; d <= height_; ++d) {
      int ty = y - d;
      if (wrapY_) {
        ty = ((ty % height_) + height_) % height_;
      } else if (ty < 0) {
        return -1;
      }
      if (isGround(x, ty)) {
        return d - 1;
      }
    }
    return -1;
  }

  bool openBox(int x0, int y0, int x1, int y1) const {
    for (int y = y0; y <= y1; ++y) {
      for (int x = x0; x <= x1; ++x) {
        if (isGround(x, y)) {
          return false;
        }
      }
    }
    return true;
  }

private:
  bool wrapX_;
  bool wrapY_;
  int imageWidth_ = 0;
  int imageHeight_ = 0;
  int width_ = 0;
  int height_ = 0;
  std::vector<std::uint8_t> alpha_;
};

// Negative coordinates count from the far edge of the world.
Position WrappedAlways(Position p, MapWorld const& world) {
  return {p.x < 0 ? p.x + world.width() : p.x, p.y < 0 ? p.y + world.height() : p.y};
}

class MapData : public ::testing::Test {
protected:
  void SetUp() override { ASSERT_TRUE(SDL_Init(0)) << SDL_GetError(); }
  void TearDown() override { SDL_Quit(); }
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
    if (!map.wrapX && !map.wrapY) {
      continue;
    }
    MapWorld const world(map);
    if (map.wrapX) {
      EXPECT_EQ(world.imageWidth() % 256, 0) << name;
    }
    if (map.wrapY) {
      EXPECT_EQ(world.imageHeight() % 256, 0) << name;
    }
  }
}

TEST_F(MapData, EveryStartDropsUnitsOntoTheMap) {
  for (auto const& [name, map] : games.refGame(Game::GlowHorde).maps) {
    MapWorld const world(map);
    ASSERT_GE(map.starts.size(), map.maxPlayers) << name;
    for (std::size_t slot = 0; slot < map.maxPlayers; ++slot) {
      Position const start = WrappedAlways(map.starts[slot], world);
      SCOPED_TRACE(name + ", slot " + std::to_string(slot));
      ASSERT_TRUE(world.inside(start.x, start.y)) << start.x << ", " << start.y;
      EXPECT_TRUE(world.openBox(start.x - 3, start.y - 3, start.x + 3, start.y + 3)) << "the start is in terrain";
      int const fall = world.fallDistance(start.x, start.y);
      EXPECT_GE(fall, 0) << "units fall out of the map below the start";
      EXPECT_LE(fall, 400);
    }
  }
}

TEST_F(MapData, EveryExitStandsOnGroundInTheOpen) {
  for (auto const& [name, map] : games.refGame(Game::GlowHorde).maps) {
    MapWorld const world(map);
    for (std::size_t team = 0; team < map.exits.size(); ++team) {
      Position const exit = WrappedAlways(map.exits[team], world);
      SCOPED_TRACE(name + ", exit " + std::to_string(team));
      ASSERT_TRUE(world.inside(exit.x, exit.y));
      int const fall = world.fallDistance(exit.x, exit.y);
      EXPECT_GE(fall, 0);
      EXPECT_LE(fall, 3) << "the exit floats above the ground";
      EXPECT_TRUE(world.openBox(exit.x - 6, exit.y, exit.x + 6, exit.y + 12)) << "the exit is buried";
    }
  }
}

TEST_F(MapData, ExitsAreNotAtTheStarts) {
  // A unit must not be taken by an exit on its way down from a start: the exit grabs anything within
  // 30 pixels, falling or not.
  for (auto const& [name, map] : games.refGame(Game::GlowHorde).maps) {
    MapWorld const world(map);
    for (std::size_t slot = 0; slot < map.maxPlayers; ++slot) {
      Position const start = WrappedAlways(map.starts[slot], world);
      int const fall = world.fallDistance(start.x, start.y);
      for (std::size_t team = 0; team < map.exits.size(); ++team) {
        Position const exit = WrappedAlways(map.exits[team], world);
        for (int d = 0; d <= fall; ++d) {
          long long const dx = start.x - exit.x;
          long long const dy = start.y - d - exit.y;
          EXPECT_GT(dx * dx + dy * dy, 900) << name << ": slot " << slot << " falls into exit " << team;
        }
      }
    }
  }
}

TEST_F(MapData, ShipsStartInOpenSpace) {
  for (Game game : {Game::Aviators, Game::Vipers}) {
    for (auto const& [name, map] : games.refGame(game).maps) {
      MapWorld const world(map);
      EXPECT_EQ(world.imageWidth(), world.width()) << name;
      for (std::size_t slot = 0; slot < map.maxPlayers; ++slot) {
        Position start = map.starts[slot];
        // The ship games count a negative coordinate from the last pixel.
        start.x = start.x < 0 ? start.x + world.width() - 1 : start.x;
        start.y = start.y < 0 ? start.y + world.height() - 1 : start.y;
        SCOPED_TRACE(name + ", slot " + std::to_string(slot));
        ASSERT_TRUE(world.inside(start.x, start.y));
        // A ship is kept 10 pixels from terrain; leave it room to turn and thrust.
        EXPECT_TRUE(world.openBox(start.x - 40, start.y - 40, start.x + 40, start.y + 40));
      }
    }
  }
}

TEST(MapWorldReader, SeesGroundWhereTheAlphaSaysSo) {
  // The reader of this file against a map made here: the checks above are only as good as it is.
  ASSERT_TRUE(SDL_Init(0));
  SDL_Surface* surface = SDL_CreateSurface(300, 2, SDL_PIXELFORMAT_ARGB8888);
  auto* pixels = static_cast<std::uint32_t*>(surface->pixels);
  auto* row1 = reinterpret_cast<std::uint32_t*>(static_cast<std::uint8_t*>(surface->pixels) + surface->pitch);
  for (int x = 0; x < 300; ++x) {
    pixels[x] = 0x10FFFFFF;                 // top row: scenery
    row1[x] = x < 100 ? 0xFE804020u : 0xFD804020u;  // bottom row: ground, then almost-ground
  }
  std::string const path = "data/map_world_reader_test.png";
  ASSERT_TRUE(IMG_SavePNG(surface, path.c_str()));
  SDL_DestroySurface(surface);
  MapSettings map;
  map.imageFile = "map_world_reader_test.png";
  MapWorld const world(map);
  std::remove(path.c_str());
  EXPECT_EQ(world.width(), 512);
  EXPECT_EQ(world.height(), 256);
  EXPECT_TRUE(world.isGround(50, 0));
  EXPECT_FALSE(world.isGround(150, 0));
  EXPECT_FALSE(world.isGround(50, 1));
  EXPECT_FALSE(world.isGround(400, 100));  // the margin is open
  EXPECT_TRUE(world.isGround(-1, 5));      // outside is solid
  EXPECT_EQ(world.fallDistance(50, 40), 39);
  EXPECT_EQ(world.fallDistance(150, 40), -1);
  SDL_Quit();
}
