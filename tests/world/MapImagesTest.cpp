#include <gtest/gtest.h>

#include <xxhash.h>

#include <cstring>
#include <functional>
#include <memory>
#include <stdexcept>
#include <vector>

#include "present/MapSurfaces.h"
#include "sim/XXHashHasher.h"
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

// Every pixel of the surface against expected(x, y), naming the first that differs.
::testing::AssertionResult ImageIs(SDL_Surface* surface, int width, int height,
                                   std::function<std::uint32_t(int x, int y)> const& expected) {
  if (surface->w != width || surface->h != height) {
    return ::testing::AssertionFailure() << surface->w << " by " << surface->h << ", not " << width << " by " << height;
  }
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      if (SurfacePixel(surface, x, y) != expected(x, y)) {
        return ::testing::AssertionFailure() << (::testing::Message() << "pixel " << x << "," << y << std::hex
                                                                      << " is 0x" << SurfacePixel(surface, x, y)
                                                                      << ", not 0x" << expected(x, y));
      }
    }
  }
  return ::testing::AssertionSuccess();
}

std::uint64_t Digest(SDL_Surface* surface) {
  XXHashHasher hasher;
  CalculateImageChecksum(surface, &hasher);
  return hasher.digest();
}

}  // namespace

// Each result is a new surface: it is checked after its source is gone, and the source is left as it was.
TEST(ApplyMapTransformations, RepeatsAndMirrorsPlaceEveryPixel) {
  struct Case {
    char const* name;
    int width, height;
    std::function<void(MapSettings&)> set;
    int resultWidth, resultHeight;
    std::function<std::uint32_t(int x, int y)> expected;
  };
  std::vector<Case> const cases{
      {"nothing", 5, 3, [](MapSettings&) {}, 5, 3, Tag},
      // The mirror comes after the repeat, so its seam is in the middle and the tiles join unmirrored.
      {"repeat 2, mirror x", 10, 4, [](MapSettings& m) { m.repeatX = 2, m.mirrorX = true; }, 40, 4,
       [](int x, int y) { return Tag((x < 20 ? x : 39 - x) % 10, y); }},
      {"repeat 1 by 3", 3, 2, [](MapSettings& m) { m.repeatX = 1, m.repeatY = 3; }, 3, 6,
       [](int x, int y) { return Tag(x, y % 2); }},
      {"repeat 2 by 2", 3, 2, [](MapSettings& m) { m.repeatX = 2, m.repeatY = 2; }, 6, 4,
       [](int x, int y) { return Tag(x % 3, y % 2); }},
      // Surface rows count from the top: rows 2 and 3 are the bottom half, the source as it is.
      {"mirror y", 3, 2, [](MapSettings& m) { m.mirrorY = true; }, 3, 4,
       [](int x, int y) { return Tag(x, y < 2 ? 1 - y : y - 2); }},
  };
  for (Case const& c : cases) {
    SCOPED_TRACE(c.name);
    MapSettings map;
    c.set(map);
    SurfacePtr source = Tagged(c.width, c.height);
    SurfacePtr result(ApplyMapTransformations(source.get(), map));
    EXPECT_TRUE(ImageIs(source.get(), c.width, c.height, Tag));
    source.reset();
    EXPECT_TRUE(ImageIs(result.get(), c.resultWidth, c.resultHeight, c.expected));
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
    // The bottom left quarter is the source unturned; turning the whole image a quarter about its
    // centre gives the same image back, which with that quarter fixes every pixel.
    for (int r = 0; r < n; ++r) {
      for (int c = 0; c < n; ++c) {
        if (r < side && c < side) {
          EXPECT_EQ(SurfacePixel(result.get(), c, side + r), Tag(c, r)) << r << "," << c;
        }
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

  // One-shot XXH3 over the same stream: the rows without padding, then width and height as 32-bit integers.
  ASSERT_EQ(tight->pitch, 28);
  auto const* pixels = static_cast<std::uint8_t const*>(tight->pixels);
  std::vector<std::uint8_t> stream(pixels, pixels + 84);
  std::int32_t const size[2] = {7, 3};
  auto const* sizeBytes = reinterpret_cast<std::uint8_t const*>(size);
  stream.insert(stream.end(), sizeBytes, sizeBytes + 8);
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
  EXPECT_TRUE(ImageIs(target.surface(), static_cast<int>(row.size()), 1,
                      [&](int x, int) { return expected[static_cast<std::size_t>(x)]; }));
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
