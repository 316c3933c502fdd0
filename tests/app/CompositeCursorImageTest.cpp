#include <gtest/gtest.h>

#include <SDL3/SDL_surface.h>

#include <array>
#include <cstdint>
#include <cstdlib>
#include <memory>

#include "app/CompositeCursorImage.h"

namespace {

using Rgba = std::array<int, 4>;
using SurfacePtr = std::unique_ptr<SDL_Surface, decltype(&SDL_DestroySurface)>;

SurfacePtr Make(int w, int h) { return {SDL_CreateSurface(w, h, SDL_PIXELFORMAT_ABGR8888), &SDL_DestroySurface}; }

void Put(SDL_Surface* surface, int x, int y, Rgba c) {
  auto* pixel = static_cast<std::uint8_t*>(surface->pixels) + y * surface->pitch + x * 4;
  for (int i = 0; i < 4; ++i) pixel[i] = static_cast<std::uint8_t>(c[static_cast<std::size_t>(i)]);
}

Rgba Get(SDL_Surface* surface, int x, int y) {
  auto const* pixel = static_cast<std::uint8_t const*>(surface->pixels) + y * surface->pitch + x * 4;
  return {pixel[0], pixel[1], pixel[2], pixel[3]};  // ABGR8888 lies in memory as R, G, B, A
}

void ExpectNear(Rgba actual, Rgba expected) {
  for (std::size_t i = 0; i < 4; ++i) {
    EXPECT_LE(std::abs(actual[i] - expected[i]), 1) << "channel " << i << ": " << actual[i] << " vs " << expected[i];
  }
}

}  // namespace

TEST(CompositeCursorImage, BlendsBothImagesWithTheIconRightAlignedBelow) {
  SurfacePtr image = Make(2, 2);
  SurfacePtr overlay = Make(1, 1);
  Put(image.get(), 0, 0, {10, 20, 30, 255});
  Put(image.get(), 1, 0, {0, 0, 0, 0});
  Put(image.get(), 0, 1, {200, 100, 50, 128});
  Put(image.get(), 1, 1, {255, 255, 255, 255});
  Put(overlay.get(), 0, 0, {90, 180, 240, 64});

  SurfacePtr composite(CompositeCursorImage(image.get(), overlay.get()), &SDL_DestroySurface);
  ASSERT_NE(composite, nullptr);
  ASSERT_EQ(composite->w, 2);
  ASSERT_EQ(composite->h, 3);
  ExpectNear(Get(composite.get(), 0, 0), {10, 20, 30, 255});
  ExpectNear(Get(composite.get(), 1, 0), {0, 0, 0, 0});
  ExpectNear(Get(composite.get(), 1, 1), {255, 255, 255, 255});
  // Blended onto the transparent start, a half-transparent pixel's colour is weighted by its alpha
  // (200 * 128 / 255 is 100.4); a copy would have kept 200, 100, 50.
  ExpectNear(Get(composite.get(), 0, 1), {100, 50, 25, 128});
  // The icon: under the image at its right edge; 90 * 64 / 255 is 22.6, 180 * 64 / 255 is 45.2,
  // 240 * 64 / 255 is 60.2.
  ExpectNear(Get(composite.get(), 0, 2), {0, 0, 0, 0});
  ExpectNear(Get(composite.get(), 1, 2), {23, 45, 60, 64});
}
