#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <tuple>

#include "world/Chunk.h"
#include "present/WorldDrawing.h"
#include "support/Checks.h"
#include "support/TestImages.h"

using testing_support::DigestOf;

TEST(Chunk, NewChunkIsEmptyAndDirty) {
  Chunk chunk;
  EXPECT_TRUE(chunk.dirty());
  EXPECT_FALSE(chunk.hasTexture());
  EXPECT_EQ(std::count(chunk.pixels(), chunk.pixels() + Chunk::kPixels, 0u), Chunk::kPixels);
}

TEST(Chunk, PixelsLieRowByRowFromTheBottomAndAreHashedAsTheyLie) {
  Chunk chunk;
  chunk.writePixel(3, 2, 0xFE010203u);
  EXPECT_EQ(chunk.pixels()[2 * 256 + 3], 0xFE010203u);
  EXPECT_EQ(chunk.readPixel(3, 2), 0xFE010203u);

  XXHashHasher whole;
  whole.update(chunk.pixels(), Chunk::kPixels * 4);
  EXPECT_EQ(DigestOf(chunk), whole.digest());

  // The same pixel in another place is another digest.
  Chunk moved;
  moved.writePixel(2, 3, 0xFE010203u);
  EXPECT_NE(DigestOf(moved), DigestOf(chunk));
}

TEST(Chunk, CopiesOwnTheirPixelsAndMovesLeaveTheSourceEmpty) {
  // Whether a chunk holds pixels, holds a texture, and is dirty.
  auto const state = [](Chunk const& c) { return std::tuple{c.hasPixels(), c.hasTexture(), c.dirty()}; };
  testing_support::SoftwareTarget target(16, 16);
  Chunk original;
  original.writePixel(1, 1, 0xFE111111u);
  ChunkTexture(original, target.renderer());
  ASSERT_EQ(state(original), std::tuple(true, true, false));

  Chunk copy(original);
  EXPECT_EQ(state(copy), std::tuple(true, false, false));  // not dirty: the source's flag
  copy.writePixel(1, 1, 0xFE222222u);
  EXPECT_EQ(original.readPixel(1, 1), 0xFE111111u);

  Chunk assigned;
  ChunkTexture(assigned, target.renderer());
  assigned = original;
  EXPECT_EQ(state(assigned), std::tuple(true, false, true));
  EXPECT_EQ(assigned.readPixel(1, 1), 0xFE111111u);

  Chunk moved(std::move(original));
  EXPECT_EQ(state(moved), std::tuple(true, true, false));
  EXPECT_EQ(moved.readPixel(1, 1), 0xFE111111u);
  // NOLINTNEXTLINE(bugprone-use-after-move): the moved-from state is specified
  EXPECT_EQ(state(original), std::tuple(false, false, true));

  Chunk target2;
  target2 = std::move(moved);
  EXPECT_EQ(state(target2), std::tuple(true, true, false));
  EXPECT_EQ(target2.readPixel(1, 1), 0xFE111111u);
  EXPECT_FALSE(moved.hasPixels());  // NOLINT(bugprone-use-after-move)
}

TEST(Chunk, TextureShowsTheTopRowFirstAndIsUploadedOnlyWhenDirty) {
  testing_support::SoftwareTarget target(256, 256, 0xFF000000u);
  Chunk chunk;
  chunk.writePixel(0, 255, 0xFFFF0000u);  // top left of the world square: red
  chunk.writePixel(255, 0, 0xFF00FF00u);  // bottom right: green
  SDL_Texture* texture = ChunkTexture(chunk, target.renderer());
  ASSERT_NE(texture, nullptr);
  EXPECT_FALSE(chunk.dirty());
  SDL_RenderTexture(target.renderer(), texture, nullptr, nullptr);
  target.flush();
  EXPECT_EQ(target.pixel(0, 0), 0xFFFF0000u);
  EXPECT_EQ(target.pixel(255, 255), 0xFF00FF00u);

  // A write makes it dirty; the next request re-uploads into the same texture.
  chunk.writePixel(0, 255, 0xFF0000FFu);
  EXPECT_TRUE(chunk.dirty());
  EXPECT_EQ(ChunkTexture(chunk, target.renderer()), texture);
  SDL_RenderTexture(target.renderer(), texture, nullptr, nullptr);
  target.flush();
  EXPECT_EQ(target.pixel(0, 0), 0xFF0000FFu);
}

TEST(Chunk, TextureFailureNamesTheCause) {
  Chunk chunk;
  EXPECT_THAT(testing_support::ErrorText([&] { ChunkTexture(chunk, nullptr); }),
              ::testing::MatchesRegex("Failed to create chunked world texture - .+"));
  EXPECT_FALSE(chunk.hasTexture());
}
