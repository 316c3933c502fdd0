#include <gtest/gtest.h>

#include <array>
#include <string>

#include "present/TextureCache.h"
#include "support/Checks.h"
#include "support/TestImages.h"

using testing_support::ErrorText;
using testing_support::SaveImage;

namespace {

class TextureCacheTest : public ::testing::Test {
protected:
  testing_support::ScopedDataDirectory directory;
  testing_support::SoftwareTarget target{8, 8};
  TextureCache cache{target.renderer()};
};

}  // namespace

TEST_F(TextureCacheTest, EachTextureIsLoadedOnceByName) {
  SaveImage("icon.png", 4, 4, [](int, int) { return 0xFF336699u; });
  SDL_Texture* colour = cache.getTexture("icon.png");
  ASSERT_NE(colour, nullptr);
  std::filesystem::remove("data/icon.png");  // no second read from disk
  EXPECT_EQ(cache.getTexture("icon.png"), colour);

  SaveImage("shape.png", 4, 4, [](int, int) { return 0xFF000000u; });
  SDL_Texture* grey = cache.getGreyscaleTexture("shape.png");
  EXPECT_EQ(cache.getGreyscaleTexture("shape.png"), grey);
  EXPECT_NE(grey, colour);
  // The two kinds are held apart: the same name can be both.
  SDL_Texture* asColour = cache.getTexture("shape.png");
  EXPECT_NE(asColour, grey);
}

TEST_F(TextureCacheTest, MissingFilesFailOnFirstUseWithThePath) {
  std::string const colour = ErrorText([&] { cache.getTexture("absent.png"); });
  EXPECT_EQ(colour.rfind("Failed to load image: data/absent.png - ", 0), 0u) << colour;
  ::testing::internal::CaptureStderr();
  std::string const grey = ErrorText([&] { cache.getGreyscaleTexture("absent.png"); });
  ::testing::internal::GetCapturedStderr();
  EXPECT_EQ(grey.rfind("Failed to load greyscale texture: data/absent.png - ", 0), 0u) << grey;
}

TEST_F(TextureCacheTest, GreyscaleColourIsGlobalToAllGreyscaleTextures) {
  SaveImage("a.png", 2, 2, [](int, int) { return 0xFF000000u; });
  SaveImage("b.png", 2, 2, [](int, int) { return 0xFF000000u; });
  EXPECT_EQ(cache.greyscaleColour().a, 255);
  EXPECT_EQ(cache.greyscaleColour().r, 255);
  SDL_Texture* a = cache.getGreyscaleTexture("a.png");
  cache.setGreyscaleColour(SDL_Color{10, 20, 30, 40});
  SDL_Texture* b = cache.getGreyscaleTexture("b.png");
  for (SDL_Texture* texture : {a, b}) {
    std::array<Uint8, 4> mod{};
    SDL_GetTextureColorMod(texture, &mod[0], &mod[1], &mod[2]);
    SDL_GetTextureAlphaMod(texture, &mod[3]);
    EXPECT_EQ(mod, (std::array<Uint8, 4>{10, 20, 30, 40}));
  }
}
