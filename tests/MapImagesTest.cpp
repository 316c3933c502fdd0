#include <gtest/gtest.h>

#include <xxhash.h>

#include <cstring>
#include <memory>
#include <stdexcept>
#include <vector>

#include "MapImages.h"
#include "XXHashHasher.h"
#include "support/TestImages.h"

using testing_support::MakeSurface;
using testing_support::SurfacePixel;

namespace {

struct SurfaceDeleter {
  void operator()(SDL_Surface* surface) const { SDL_DestroySurface(surface); }
};
using SurfacePtr = std::unique_ptr<SDL_Surface, SurfaceDeleter>;

// A pixel that names its own place, so any misplaced copy shows.
std::uint32_t Tag(int x, int y) { return 0xFE000000u | static_cast<std::uint32_t>(x) << 8 | static_cast<std::uint32_t>(y); }

SurfacePtr Tagged(int width, int height) { return SurfacePtr(MakeSurface(width, height, Tag)); }

std::uint64_t Digest(SDL_Surface* surface) {
  XXHashHasher hasher;
  CalculateImageChecksum(surface, &hasher);
  return hasher.digest();
}

}  // namespace

TEST(ApplyMapTransformations, RepeatThenMirrorPutsTheSeamInTheMiddle) {
  SurfacePtr source = Tagged(10, 4);
  MapSettings map;
  map.repeatX = 2;
  map.mirrorX = true;
  SurfacePtr result(ApplyMapTransformations(source.get(), map));
  ASSERT_EQ(result->w, 40);
  ASSERT_EQ(result->h, 4);
  for (int y = 0; y < 4; ++y) {
    for (int x = 0; x < 40; ++x) {
      int const unmirrored = x < 20 ? x : 39 - x;
      ASSERT_EQ(SurfacePixel(result.get(), x, y), Tag(unmirrored % 10, y)) << x << "," << y;
    }
    EXPECT_EQ(SurfacePixel(result.get(), 19, y), SurfacePixel(result.get(), 20, y));  // the seam
    EXPECT_NE(SurfacePixel(result.get(), 9, y), SurfacePixel(result.get(), 10, y));   // tiles join unmirrored
  }
  EXPECT_EQ(SurfacePixel(source.get(), 3, 2), Tag(3, 2));  // the source is left as it was
}

TEST(ApplyMapTransformations, TilesInBothDirections) {
  SurfacePtr source = Tagged(3, 2);
  MapSettings map;
  map.repeatX = 1;
  map.repeatY = 3;
  SurfacePtr tall(ApplyMapTransformations(source.get(), map));
  ASSERT_EQ(tall->w, 3);
  ASSERT_EQ(tall->h, 6);
  EXPECT_EQ(SurfacePixel(tall.get(), 2, 5), Tag(2, 1));
  map.repeatX = 2;
  map.repeatY = 2;
  SurfacePtr both(ApplyMapTransformations(source.get(), map));
  ASSERT_EQ(both->w, 6);
  ASSERT_EQ(both->h, 4);
  EXPECT_EQ(SurfacePixel(both.get(), 4, 3), Tag(1, 1));
}

TEST(ApplyMapTransformations, MirrorYPutsTheSourceAtTheBottom) {
  SurfacePtr source = Tagged(3, 2);
  MapSettings map;
  map.mirrorY = true;
  SurfacePtr result(ApplyMapTransformations(source.get(), map));
  ASSERT_EQ(result->w, 3);
  ASSERT_EQ(result->h, 4);
  for (int x = 0; x < 3; ++x) {
    // Surface rows count from the top: rows 2 and 3 are the bottom half, the source as it is.
    EXPECT_EQ(SurfacePixel(result.get(), x, 2), Tag(x, 0));
    EXPECT_EQ(SurfacePixel(result.get(), x, 3), Tag(x, 1));
    EXPECT_EQ(SurfacePixel(result.get(), x, 1), Tag(x, 0));
    EXPECT_EQ(SurfacePixel(result.get(), x, 0), Tag(x, 1));
  }
}

TEST(ApplyMapTransformations, RotateFourWaysTurnsCopiesAboutTheCentre) {
  for (int side : {2, 3}) {
    SurfacePtr source = Tagged(side, side);
    MapSettings map;
    map.rotateFourWays = true;
    SurfacePtr result(ApplyMapTransformations(source.get(), map));
    int const n = 2 * side;
    ASSERT_EQ(result->w, n);
    ASSERT_EQ(result->h, n);
    // The bottom left quarter is the source unturned.
    for (int r = 0; r < side; ++r) {
      for (int c = 0; c < side; ++c) {
        EXPECT_EQ(SurfacePixel(result.get(), c, side + r), Tag(c, r));
      }
    }
    // Turning the whole image a quarter about its centre gives the same image back; with the bottom
    // left quarter that fixes every pixel.
    for (int r = 0; r < n; ++r) {
      for (int c = 0; c < n; ++c) {
        EXPECT_EQ(SurfacePixel(result.get(), n - 1 - r, c), SurfacePixel(result.get(), c, r)) << r << "," << c;
      }
    }
  }
}

TEST(ApplyMapTransformations, RotatingANonSquareImageIsRefused) {
  SurfacePtr source = Tagged(4, 2);
  MapSettings map;
  map.rotateFourWays = true;
  EXPECT_THROW(SurfacePtr(ApplyMapTransformations(source.get(), map)), std::runtime_error);
  map.mirrorY = true;  // 4 by 4 after the mirror: square, accepted
  SurfacePtr result(ApplyMapTransformations(source.get(), map));
  EXPECT_EQ(result->w, 8);
}

TEST(ApplyMapTransformations, NoTransformationGivesAnIndependentCopy) {
  SDL_Surface* source = MakeSurface(5, 3, Tag);
  SurfacePtr result(ApplyMapTransformations(source, MapSettings{}));
  ASSERT_NE(result.get(), source);
  SDL_DestroySurface(source);
  ASSERT_EQ(result->w, 5);
  ASSERT_EQ(result->h, 3);
  for (int y = 0; y < 3; ++y) {
    for (int x = 0; x < 5; ++x) EXPECT_EQ(SurfacePixel(result.get(), x, y), Tag(x, y));
  }
}

TEST(CalculateImageChecksum, RowsThenWidthThenHeightWhateverThePitch) {
  SurfacePtr tight = Tagged(7, 3);
  // The same pixels in a buffer with a wider pitch, its padding filled with noise.
  int const pitch = 7 * 4 + 36;
  std::vector<std::uint8_t> buffer(static_cast<std::size_t>(pitch * 3), 0xAB);
  for (int y = 0; y < 3; ++y) {
    std::memcpy(buffer.data() + y * pitch, static_cast<std::uint8_t*>(tight->pixels) + y * tight->pitch, 7 * 4);
  }
  SurfacePtr padded(SDL_CreateSurfaceFrom(7, 3, SDL_PIXELFORMAT_ARGB8888, buffer.data(), pitch));
  ASSERT_NE(padded, nullptr);
  EXPECT_EQ(Digest(tight.get()), Digest(padded.get()));

  // One-shot XXH3 over the same stream.
  std::vector<std::uint8_t> stream(buffer.begin(), buffer.begin());
  for (int y = 0; y < 3; ++y) {
    stream.insert(stream.end(), buffer.begin() + y * pitch, buffer.begin() + y * pitch + 28);
  }
  for (std::int32_t value : {7, 3}) {
    std::uint8_t bytes[4];
    std::memcpy(bytes, &value, 4);
    stream.insert(stream.end(), bytes, bytes + 4);
  }
  EXPECT_EQ(Digest(tight.get()), XXH3_64bits(stream.data(), stream.size()));

  // The same 84 bytes read as 3 by 7 are another image.
  SurfacePtr swapped(SDL_CreateSurfaceFrom(3, 7, SDL_PIXELFORMAT_ARGB8888, stream.data(), 12));
  EXPECT_NE(Digest(swapped.get()), Digest(tight.get()));

  // And one changed pixel is another image.
  reinterpret_cast<std::uint32_t*>(buffer.data())[2] ^= 1;
  EXPECT_NE(Digest(padded.get()), Digest(tight.get()));
}

TEST(LoadGreyscaleAsAlpha, DarknessBecomesCoverageAndSourceAlphaIsIgnored) {
  testing_support::ScopedDataDirectory directory;
  // White, black, mid grey, a colour, and black and white with their own alpha.
  std::vector<std::uint32_t> const row{0xFFFFFFFFu, 0xFF000000u, 0xFF808080u, 0xFF1E3C5Au, 0x00000000u, 0x10FFFFFFu};
  testing_support::SaveImage("sprite.png", static_cast<int>(row.size()), 1,
                             [&](int x, int) { return row[static_cast<std::size_t>(x)]; });
  testing_support::SoftwareTarget target(static_cast<int>(row.size()), 1, 0x12345678u);
  SDL_Texture* texture = LoadGreyscaleAsAlpha("data/sprite.png", target.renderer());
  ASSERT_NE(texture, nullptr);
  SDL_BlendMode mode = SDL_BLENDMODE_NONE;
  SDL_GetTextureBlendMode(texture, &mode);
  EXPECT_EQ(mode, SDL_BLENDMODE_BLEND);
  // Copy the texels as they are, to read their alpha.
  SDL_SetTextureBlendMode(texture, SDL_BLENDMODE_NONE);
  SDL_RenderTexture(target.renderer(), texture, nullptr, nullptr);
  target.flush();
  std::vector<std::uint32_t> const expected{0x00FFFFFFu, 0xFFFFFFFFu, 0x7FFFFFFFu,
                                            0xC3FFFFFFu,  // mean of 30, 60, 90 is 60
                                            0xFFFFFFFFu, 0x00FFFFFFu};
  for (std::size_t x = 0; x < row.size(); ++x) {
    EXPECT_EQ(target.pixel(static_cast<int>(x), 0), expected[x]) << "pixel " << x;
  }
  SDL_DestroyTexture(texture);
}

TEST(LoadGreyscaleAsAlpha, MissingFileGivesNullAndALine) {
  testing_support::SoftwareTarget target(4, 4);
  ::testing::internal::CaptureStderr();
  SDL_Texture* texture = LoadGreyscaleAsAlpha("data/no_such_sprite.png", target.renderer());
  std::string const printed = ::testing::internal::GetCapturedStderr();
  EXPECT_EQ(texture, nullptr);
  EXPECT_EQ(printed.rfind("Failed to load image: ", 0), 0u) << printed;
}
