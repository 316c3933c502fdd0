#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <string>
#include <tuple>

#include "world/ChunkedWorld.h"
#include "present/WorldDrawing.h"
#include "present/Renderer.h"
#include "present/TextureCache.h"
#include "sim/XXHashHasher.h"
#include "support/Checks.h"
#include "support/Lockstep.h"
#include "support/TestImages.h"

using testing_support::LocalBaseDigest;
using testing_support::SaveImage;
using testing_support::ScopedDataDirectory;
using testing_support::SoftwareTarget;

namespace {

constexpr std::uint32_t kGround = 0xFE8B5A2Bu;
constexpr std::uint32_t kSky = 0x00000000u;

MapSettings MapOf(std::string const& file) {
  MapSettings map;
  map.imageFile = file;
  return map;
}

std::string ErrorOf(MapSettings const& map) {
  return testing_support::ErrorText([&] { ChunkedWorld(1, 0, 1, map); });
}

// Every test writes its map images into a fresh data directory.
class InDataDirectory : public ::testing::Test {
protected:
  ScopedDataDirectory directory;
};
using ChunkedWorldMaps = InDataDirectory;
using ChunkedWorldRender = InDataDirectory;
using ChunkedWorldLockstep = InDataDirectory;

}  // namespace

TEST_F(ChunkedWorldMaps, LoadFailuresNameTheFileWithoutTheFolder) {
  EXPECT_THAT(ErrorOf(MapOf("nowhere.png")), ::testing::MatchesRegex("Failed to load image 'nowhere\\.png': .+"));

  SaveImage("small.png", 4, 4, [](int, int) { return kGround; });
  MapSettings checked = MapOf("small.png");
  checked.imageChecksum = 12345;
  EXPECT_EQ(ErrorOf(checked), "Image checksum does not match, for 'small.png'");
}

TEST_F(ChunkedWorldMaps, SizeRoundsUpToChunksAndTheImageIsFlipped) {
  // Ground along the image's bottom row and at one pixel of its top row.
  SaveImage("wide.png", 300, 200, [](int x, int y) { return y == 199 || (y == 0 && x == 7) ? kGround : kSky; });
  ChunkedWorld world(1, 0, 1, MapOf("wide.png"));
  EXPECT_EQ((std::array{world.chunksWide(), world.chunksHigh(), world.width(), world.height()}),
            (std::array{2, 1, 512, 256}));
  // The margin past x 299 and y 199 is no ground.
  for (auto [x, y, ground] : {std::tuple{0, 0, true}, {299, 0, true}, {300, 0, false}, {511, 0, false},
                              {7, 199, true}, {7, 198, false}, {7, 200, false}, {7, 255, false}}) {
    EXPECT_EQ(world.isGround(0, x, y), ground) << x << "," << y;
  }
  EXPECT_EQ(world.getChunk(299, 199)->localBase().readPixel(299 - 256, 199), kSky);
  EXPECT_EQ(world.getChunk(7, 199)->base().readPixel(7, 199), kGround);
  EXPECT_EQ(world.getChunk(512, 0), nullptr);
  EXPECT_EQ(world.getChunk(0, -1), nullptr);
}

TEST_F(ChunkedWorldMaps, OutsideIsSolidUnlessTheAxisWraps) {
  // Ground only in the rightmost column and the top row.
  SaveImage("edges.png", 512, 256, [](int x, int y) { return x == 511 || y == 0 ? kGround : kSky; });
  ChunkedWorld plain(2, 0, 2, MapOf("edges.png"));
  MapSettings wrapping = MapOf("edges.png");
  wrapping.wrapX = wrapping.wrapY = true;
  ChunkedWorld wrapped(2, 0, 2, wrapping);

  // Wrapped, x -1 reads column 511 and x 512 column 0; y 256 reads world row 0, the image's bottom
  // row, and y -1 row 255, its top row. One period at most: further out stays outside, which is solid.
  struct Case {
    int x, y;
    bool plain, wrapped;
  };
  for (Case c : {Case{-1, 10, true, true}, {512, 10, true, false}, {10, 256, true, false}, {10, -1, true, true},
                 {0, 10, false, false}, {-513, 10, true, true}, {1024, 10, true, true}}) {
    for (int player : {0, 1}) {
      EXPECT_EQ(plain.isGround(player, c.x, c.y), c.plain) << c.x << "," << c.y;
      EXPECT_EQ(wrapped.isGround(player, c.x, c.y), c.wrapped) << c.x << "," << c.y;
    }
  }
}

TEST_F(ChunkedWorldMaps, WrapAndDistanceGoRoundEachWrappingAxisByItsOwnSize) {
  SaveImage("rect.png", 512, 256, [](int, int) { return kSky; });
  MapSettings map = MapOf("rect.png");
  ChunkedWorld plain(1, 0, 1, map);
  map.wrapX = true;
  ChunkedWorld acrossX(1, 0, 1, map);
  map.wrapX = false;
  map.wrapY = true;
  ChunkedWorld acrossY(1, 0, 1, map);

  // Wrapping moves by one period at most, on wrapping axes only.
  for (auto [from, to] : {std::pair{std::pair{-1, -1}, std::pair{511, -1}}, {{512, 300}, {0, 300}},
                          {{-600, 5}, {-88, 5}}, {{1100, 5}, {588, 5}}, {{17, 18}, {17, 18}}}) {
    auto at = from;
    acrossX.wrap(at.first, at.second);
    EXPECT_EQ(at, to) << from.first << "," << from.second;
  }

  // Distances take the short way round.
  EXPECT_EQ(plain.wrappedDistSquared({0, 0}, {511, 0}), 511 * 511);
  EXPECT_EQ(acrossX.wrappedDistSquared({0, 0}, {511, 0}), 1);
  EXPECT_EQ(acrossX.wrappedDistSquared({0, 0}, {0, 255}), 255 * 255);
  EXPECT_EQ(acrossY.wrappedDistSquared({0, 0}, {0, 255}), 1);
  EXPECT_EQ(acrossY.wrappedDistSquared({3, 250}, {6, 2}), 9 + 64);
  EXPECT_EQ(acrossX.wrappedDistSquared({500, 7}, {10, 3}), 22 * 22 + 16);
  // 64-bit: far beyond 32 bits.
  EXPECT_EQ(plain.wrappedDistSquared({-1500000000, 0}, {1500000000, 0}), std::int64_t{3000000000} * 3000000000);
}

TEST_F(ChunkedWorldMaps, ChangesOutsideAnUnwrappedWorldAreDropped) {
  SaveImage("ground.png", 256, 256, [](int, int) { return kGround; });
  ChunkedWorld world(2, 0, 1, MapOf("ground.png"));
  std::uint64_t const before = LocalBaseDigest(world);
  for (int player : {0, 1}) {
    world.queueRemovePixel(player, -1, 5);
    world.queueRemovePixel(player, 256, 5);
    world.queueAddPixel(player, 5, -1);
    world.queueRemovePixel(player, 5, 256);
  }
  EXPECT_FALSE(world.hasLocalChangesQueued());
  for (int frame = 0; frame < 4; ++frame) world.frameAdvance();
  EXPECT_EQ(LocalBaseDigest(world), before);

  MapSettings map = MapOf("ground.png");
  map.wrapX = true;
  ChunkedWorld wrapped(2, 0, 1, map);
  wrapped.queueRemovePixel(0, -1, 5);  // lands on column 255
  EXPECT_TRUE(wrapped.hasLocalChangesQueued());
  wrapped.frameAdvance();
  EXPECT_FALSE(wrapped.isGround(0, 255, 5));
  EXPECT_TRUE(wrapped.isGround(1, 255, 5));  // the other player sees it only later
  wrapped.frameAdvance();
  EXPECT_FALSE(wrapped.hasLocalChangesQueued());
  EXPECT_EQ(wrapped.getChunk(255, 5)->localBase().readPixel(255, 5), 0u);
}

TEST_F(ChunkedWorldMaps, LocalBaseIsHashedChunkByChunkInGridOrder) {
  // Four chunks, each its own colour, so that any other order gives another digest.
  SaveImage("grid.png", 512, 512, [](int x, int y) {
    return 0xFE000000u | static_cast<std::uint32_t>((x / 256) * 0x40 + (y / 256) * 0x4000);
  });
  ChunkedWorld world(1, 0, 1, MapOf("grid.png"));
  auto const chunksInOrder = [&](bool rowByRow) {
    XXHashHasher hasher;
    for (int i = 0; i < 4; ++i) {
      int const row = rowByRow ? i / 2 : i % 2;
      int const column = rowByRow ? i % 2 : i / 2;
      hasher.update(world.getChunk(column * 256, row * 256)->localBase().pixels(), 262144);
    }
    return hasher.digest();
  };
  EXPECT_EQ(LocalBaseDigest(world), chunksInOrder(true));
  EXPECT_NE(LocalBaseDigest(world), chunksInOrder(false));
  // World row 0 is the image's bottom row: the first chunk hashed is the image's bottom left.
  EXPECT_EQ(world.getChunk(0, 0)->localBase().readPixel(0, 0), 0xFE004000u);
}

// Rendering: the world on a software renderer.

TEST_F(ChunkedWorldRender, CameraWhollyOutsideAnUnwrappedWorldDrawsNothing) {
  SaveImage("block.png", 512, 256, [](int, int) { return 0xFFFF0000u; });
  SoftwareTarget target(320, 200, 0xFF000000u);
  ChunkedWorld world(1, 0, 1, MapOf("block.png"));
  for (Camera camera : {Camera{-2000.0f, 0.0f, 1.0f}, Camera{600.0f, 0.0f, 1.0f}, Camera{0.0f, -900.0f, 2.0f},
                        Camera{0.0f, 300.0f, 1.0f}}) {
    EXPECT_EQ(RenderWorld(world, target.renderer(), camera, 320, 200), 0) << camera.x << "," << camera.y;
  }
  target.flush();
  for (int x = 0; x < 320; x += 7) {
    for (int y = 0; y < 200; y += 7) ASSERT_EQ(target.pixel(x, y), 0xFF000000u);
  }
  EXPECT_FALSE(world.getChunk(0, 0)->display().hasTexture());
  // Partly in view: the columns and rows from the view's first to the one its far edge rounds up to,
  // clamped to the world.
  EXPECT_EQ(RenderWorld(world, target.renderer(), Camera{-100.0f, -50.0f, 1.0f}, 320, 200), 2);
  EXPECT_EQ(RenderWorld(world, target.renderer(), Camera{200.0f, 100.0f, 1.0f}, 320, 200), 2);
  EXPECT_EQ(RenderWorld(world, target.renderer(), Camera{-320.0f, 0.0f, 1.0f}, 320, 200), 1);
  EXPECT_EQ(RenderWorld(world, target.renderer(), Camera{0.0f, 0.0f, 0.5f}, 320, 200), 2);
}

TEST_F(ChunkedWorldRender, WrappedWorldSmallerThanTheScreenCoversEveryColumnAndRow) {
  // One chunk, striped across the wrapping axis so that a gap or a misplaced copy would show.
  auto const stripe = [](int i) { return i % 2 == 0 ? 0xFFFF0000u : 0xFF00FF00u; };
  SaveImage("columns.png", 256, 256, [&](int x, int) { return stripe(x); });
  SaveImage("rows.png", 256, 256, [&](int, int y) { return stripe(y); });

  MapSettings acrossX = MapOf("columns.png");
  acrossX.wrapX = acrossX.cameraWrapX = true;
  SoftwareTarget wide(1280, 100, 0xFF000000u);
  ChunkedWorld narrow(1, 0, 1, acrossX);
  EXPECT_GE(RenderWorld(narrow, wide.renderer(), Camera{-301.0f, 20.0f, 1.0f}, 1280, 100), 1280 / 256);
  wide.flush();
  for (int x = 0; x < 1280; ++x) {
    // Screen x shows world x - 301, taken round the world.
    ASSERT_EQ(wide.pixel(x, 50), stripe(((x - 301) % 256 + 256) % 256)) << "column " << x;
  }

  MapSettings acrossY = MapOf("rows.png");
  acrossY.wrapY = acrossY.cameraWrapY = true;
  SoftwareTarget tall(40, 700, 0xFF000000u);
  ChunkedWorld flat(1, 0, 1, acrossY);
  RenderWorld(flat, tall.renderer(), Camera{0.0f, -77.0f, 1.0f}, 40, 700);
  tall.flush();
  for (int y = 0; y < 700; ++y) {
    // Screen row y shows world row 699 - 1 - y + camera y, taken round the world; image row 0 is its top.
    int const worldRow = ((698 - y - 77) % 256 + 256) % 256;
    ASSERT_EQ(tall.pixel(20, y), stripe(255 - worldRow)) << "row " << y;
  }
}

TEST_F(ChunkedWorldRender, TerrainLinesUpWithSprites) {
  // Sky with a single ground pixel at world (300, 40), drawn at zoom 4: it must fill the screen rectangle
  // that the sprite renderer gives for the world rectangle (300, 40, 1, 1).
  SaveImage("dot.png", 512, 256, [](int x, int y) { return x == 300 && y == 255 - 40 ? 0xFFFFFFFFu : 0xFF000080u; });
  SoftwareTarget target(200, 150, 0xFF000000u);
  ChunkedWorld world(1, 0, 1, MapOf("dot.png"));
  TextureCache textures(target.renderer());
  Camera const camera{270.0f, 20.0f, 4.0f};
  Renderer renderer(target.renderer(), textures, 200, 150, world.width(), world.height(), false, false, camera);
  SDL_SetTextureScaleMode(ChunkTexture(world.getChunk(0, 0)->display(), target.renderer()), SDL_SCALEMODE_NEAREST);
  SDL_SetTextureScaleMode(ChunkTexture(world.getChunk(300, 0)->display(), target.renderer()), SDL_SCALEMODE_NEAREST);
  RenderWorld(world, target.renderer(), camera, 200, 150);
  target.flush();
  // World x 300 is screen x (300 - 270) * 4; the top of world row 40 is screen row 149 - (40 + 1 - 20) * 4.
  SDL_FRect const dot = renderer.screenRect(300.0f, 40.0f, 1.0f, 1.0f, 0, 0);
  EXPECT_EQ(std::pair(dot.x, dot.y), std::pair(120.0f, 65.0f));
  for (auto [x, y, colour] : {std::tuple{121, 66, 0xFFFFFFFFu}, {122, 67, 0xFFFFFFFFu}, {118, 66, 0xFF000080u},
                              {121, 71, 0xFF000080u}}) {
    EXPECT_EQ(target.pixel(x, y), colour) << x << "," << y;
  }
}

// The whole world, several chunks, wrapping on x, units roaming across the seam and below the bottom
// edge: every client must log the same answers and hold the same localBase frame by frame.
TEST_F(ChunkedWorldLockstep, ClientsAgreeAcrossChunksSeamsAndEdges) {
  auto const terrain = [](int x, int y) -> std::uint32_t {
    if ((x * 7 + y * 3) % 23 == 0) return 0xFF606060u;  // rock
    return (x / 3 + y / 5) % 3 == 0 ? 0x00000000u : kGround;
  };
  SaveImage("lockstep.png", 512, 300, terrain);
  MapSettings map = MapOf("lockstep.png");
  map.wrapX = true;

  testing_support::Workload work;
  work.seed = 77;
  work.players = 3;
  work.delay = 4;
  work.updates = 80;
  work.unitsPerPlayer = 30;
  work.minX = -30, work.maxX = 60, work.minY = -6, work.maxY = 20;  // x crosses the seam, y the bottom

  std::vector<testing_support::ClientLog> logs;
  std::vector<std::vector<std::uint64_t>> digests(3);
  for (int local = 0; local < 3; ++local) {
    ChunkedWorld world(work.players, local, work.delay, map);
    logs.push_back(testing_support::RunClient(world, work, local, [&](int) {
      digests[static_cast<std::size_t>(local)].push_back(LocalBaseDigest(world));
    }));
  }
  for (int local = 1; local < 3; ++local) {
    EXPECT_TRUE(logs[static_cast<std::size_t>(local)] == logs[0]) << "client of player " << local;
    EXPECT_EQ(digests[static_cast<std::size_t>(local)], digests[0]) << "client of player " << local;
  }
  EXPECT_NE(digests[0].front(), digests[0].back());

  // The rule, with the world's own geometry: x wraps, y outside is solid, the image flipped.
  int const height = 512;
  std::vector<std::uint32_t> pixels(static_cast<std::size_t>(512 * height), 0);
  for (int y = 0; y < 300; ++y) {
    for (int x = 0; x < 512; ++x) pixels[static_cast<std::size_t>((299 - y) * 512 + x)] = terrain(x, y);
  }
  auto const locate = [&](int x, int y) -> std::optional<int> {
    if (x < 0) x += 512;
    if (x >= 512) x -= 512;
    if (x < 0 || x >= 512 || y < 0 || y >= height) return std::nullopt;
    return y * 512 + x;
  };
  EXPECT_EQ(testing_support::CheckAgainstVisibilityRule(logs[0], work, pixels, locate), std::nullopt);
}
