#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <functional>
#include <numbers>
#include <optional>
#include <stdexcept>
#include <string>

#include "present/Renderer.h"
#include "present/TextureCache.h"
#include "support/TestImages.h"

using testing_support::SaveImage;
using testing_support::ScopedDataDirectory;
using testing_support::SoftwareTarget;

namespace {

constexpr std::uint32_t kBlack = 0xFF000000u;
constexpr std::uint32_t kInk = 0xFF000000u;  // opaque in a greyscale sprite
constexpr std::uint32_t kPaper = 0xFFFFFFFFu;  // transparent in a greyscale sprite

struct Box {
  int left, top, right, bottom;  // inclusive, screen pixels
  friend bool operator==(Box const&, Box const&) = default;
};

std::ostream& operator<<(std::ostream& out, Box const& box) {
  return out << "[" << box.left << ".." << box.right << "] x [" << box.top << ".." << box.bottom << "]";
}

// The screen box of a world rectangle at zoom 2 with the camera at (cx, cy), worked out by hand from
// "screen y grows downward from the top row, world y upward from the bottom row".
Box Expected(float left, float bottom, float width, float height, float cx, float cy, int screenHeight) {
  float const x = 2.0f * (left - cx);
  float const top = static_cast<float>(screenHeight - 1) - 2.0f * (bottom + height - cy);
  return Box{static_cast<int>(x), static_cast<int>(top), static_cast<int>(x + 2.0f * width) - 1,
             static_cast<int>(top + 2.0f * height) - 1};
}

class RendererDrawing : public ::testing::Test {
protected:
  RendererDrawing() {
    for (char const* name : {"entry.png", "exit.png", "hordeling.png", "selection_brackets.png", "circle.png",
                             "circle_cross_section.png", "ship.png"}) {
      SaveImage(name, 8, 8, [](int, int) { return kInk; });
    }
  }
  // Clears the screen, draws, and returns the smallest box holding every pixel that isn't black.
  Box drawn(std::function<void()> const& draw) {
    target.clear(kBlack);
    draw();
    target.flush();
    std::optional<Box> box;
    for (int y = 0; y < target.height(); ++y) {
      for (int x = 0; x < target.width(); ++x) {
        if (target.pixel(x, y) == kBlack) continue;
        Box const b = box.value_or(Box{x, y, x, y});
        box = Box{std::min(b.left, x), std::min(b.top, y), std::max(b.right, x), std::max(b.bottom, y)};
      }
    }
    EXPECT_TRUE(box.has_value()) << "nothing drawn";
    return box.value_or(Box{-1, -1, -1, -1});
  }
  Renderer make(Camera camera, bool wrapX = false, bool wrapY = false, int worldWidth = 1000, int worldHeight = 1000) {
    return Renderer(target.renderer(), textures, target.width(), target.height(), worldWidth, worldHeight, wrapX, wrapY,
                    camera);
  }

  ScopedDataDirectory directory;
  SoftwareTarget target{400, 500, kBlack};
  TextureCache textures{target.renderer()};
};
using RendererGeometry = RendererDrawing;

}  // namespace

TEST_F(RendererGeometry, InvertYFlipsAboutTheScreen) {
  Renderer renderer(target.renderer(), textures, 800, 600, 100, 100, false, false, Camera{});
  SDL_FRect rect{5.0f, 0.0f, 20.0f, 10.0f};
  renderer.invert_y(rect);
  EXPECT_FLOAT_EQ(rect.y, 589.0f);
  EXPECT_FLOAT_EQ(rect.x, 5.0f);
  renderer.invert_y(rect);
  EXPECT_FLOAT_EQ(rect.y, 0.0f);
}

TEST_F(RendererGeometry, TileRangesCoverTheViewWithAMarginOnWrappingAxesOnly) {
  // First and last tile on x, then on y.
  auto const tiles = [&](bool wrapX, bool wrapY, Camera camera) {
    Renderer const r(target.renderer(), textures, 1280, 720, 512, 256, wrapX, wrapY, camera);
    return std::array{r.firstTileX(), r.lastTileX(), r.firstTileY(), r.lastTileY()};
  };
  EXPECT_EQ(tiles(false, false, Camera{100.0f, -10.0f, 1.0f}), (std::array{0, 0, 0, 0}));
  // floor(-50 / 512), ceil(1530 / 512), floor(-160 / 256), ceil(860 / 256)
  EXPECT_EQ(tiles(true, true, Camera{100.0f, -10.0f, 1.0f}), (std::array{-1, 3, -1, 4}));
  // floor(50 / 512), ceil(990 / 512); y doesn't wrap
  EXPECT_EQ(tiles(true, false, Camera{200.0f, 0.0f, 2.0f}), (std::array{0, 2, 0, 0}));
}

TEST_F(RendererDrawing, EverySpriteCoversItsWorldRectangle) {
  Renderer renderer = make(Camera{100.0f, 50.0f, 2.0f});
  Position const p{160, 110};
  float const x = 160.0f, y = 110.0f;
  auto const box = [&](float left, float bottom, float width, float height) {
    return Expected(left, bottom, width, height, 100, 50, target.height());
  };
  struct Case {
    char const* name;
    std::function<void()> draw;
    Box expected;
  };
  std::vector<Case> const cases{
      {"entry", [&] { renderer.renderEntry(p); }, box(x - 40, y, 80, 100)},
      {"exit", [&] { renderer.renderExit(p); }, box(x - 30, y - 30, 60, 60)},
      {"unit", [&] { renderer.renderLemming(p); }, box(x - 2.5f, y, 5, 10)},
      {"brackets", [&] { renderer.renderSelectionBrackets(p); }, box(x - 9, y - 6, 18, 24)},
      {"circle", [&] { renderer.renderCircle(x, y, 12.0f); }, box(x - 12, y - 12, 24, 24)},
      {"missile", [&] { renderer.renderMissile(p, 0.0f); }, box(x - 2, y - 2, 17, 4)},
      // An 8 by 8 ship at scale 1.5 is 12 by 12, centred.
      {"ship", [&] { renderer.renderShip(x, y, 1.5f, 0.0f); }, box(x - 6, y - 6, 12, 12)},
      // A capsule along x: the two circles and the 20 by 6 band between their centres.
      {"swept", [&] { renderer.renderSweptCircle(x - 10, y, x + 10, y, 3.0f); }, box(x - 13, y - 3, 26, 6)},
  };
  for (Case const& c : cases) {
    EXPECT_EQ(drawn(c.draw), c.expected) << c.name;
  }
}

TEST_F(RendererDrawing, RotationIsCounterClockwiseInTheWorld) {
  // A unit sprite whose left half is ink and right half paper: turned a quarter counter-clockwise in
  // the world, the ink ends up below the centre on the screen.
  SaveImage("hordeling.png", 8, 8, [](int px, int) { return px < 4 ? kInk : kPaper; });
  Renderer renderer = make(Camera{0.0f, 0.0f, 2.0f});
  Position const p{100, 70};
  Box const flat = drawn([&] { renderer.renderMissile(p, 0.0f); });
  Box const turned = drawn([&] { renderer.renderMissile(p, std::numbers::pi_v<float> / 2.0f); });
  // Centre of the 17 by 4 rectangle: world (106.5, 70), screen (213, height - 1 - 140).
  float const centreY = static_cast<float>(target.height() - 1) - 2.0f * 70.0f;
  // The box turned upright is 34 pixels tall about the centre; the ink is its lower half, give or take
  // the filtering at the edge between ink and paper.
  EXPECT_GE(turned.top, static_cast<int>(centreY) - 4);
  EXPECT_GE(turned.bottom, static_cast<int>(centreY) + 15);
  EXPECT_NEAR((turned.left + turned.right) / 2.0, 213.0, 2.5);
  EXPECT_LT(turned.right - turned.left, flat.right - flat.left);
}

TEST_F(RendererDrawing, MirroredSpriteFlipsAboutItsCentre) {
  SaveImage("arrow.png", 8, 4, [](int px, int) { return px < 2 ? 0xFFFF0000u : 0xFF00FF00u; });
  Renderer renderer = make(Camera{0.0f, 0.0f, 2.0f});
  Box const plain = drawn([&] { renderer.renderTexture_CentreAnchor("arrow.png", 50.0f, 40.0f, 1.0f, 0.0f, false); });
  EXPECT_EQ(plain, Expected(46, 38, 8, 4, 0, 0, target.height()));
  EXPECT_EQ(target.pixel(plain.left, plain.top + 1), 0xFFFF0000u);
  EXPECT_EQ(target.pixel(plain.right, plain.top + 1), 0xFF00FF00u);
  EXPECT_EQ(drawn([&] { renderer.renderTexture_CentreAnchor("arrow.png", 50.0f, 40.0f, 1.0f, 0.0f, true); }), plain);
  EXPECT_EQ(target.pixel(plain.left, plain.top + 1), 0xFF00FF00u);
  EXPECT_EQ(target.pixel(plain.right, plain.top + 1), 0xFFFF0000u);
}

TEST_F(RendererDrawing, SweptCircleWithEqualEndsDrawsOnlyTheCircles) {
  std::filesystem::remove("data/circle_cross_section.png");
  Renderer renderer = make(Camera{0.0f, 0.0f, 1.0f});
  EXPECT_NO_THROW(renderer.renderSweptCircle(50.0f, 50.0f, 50.0f, 50.0f, 5.0f));
  EXPECT_NO_THROW(renderer.renderSweptCircle(50.0f, 50.0f, 50.0005f, 50.0f, 5.0f));
  // The band needs its texture, and asks for it only now.
  EXPECT_THROW(renderer.renderSweptCircle(50.0f, 50.0f, 60.0f, 50.0f, 5.0f), std::runtime_error);
}

TEST_F(RendererDrawing, ASpriteIsDrawnOnceForEachCopyOfAWrappedWorldInView) {
  // A 100-pixel world on a 400-pixel screen at zoom 1: units at x 30 show at 30, 130, 230, 330.
  Renderer wrapped = make(Camera{0.0f, 0.0f, 1.0f}, true, false, 100, 1000);
  wrapped.renderLemming(Position{30, 100});
  int const row = target.height() - 1 - 105;
  auto const copiesStart = [&] {
    target.flush();
    std::vector<int> starts;
    for (int x = 0; x < target.width(); ++x) {
      if (target.pixel(x, row) != kBlack && (x == 0 || target.pixel(x - 1, row) == kBlack)) starts.push_back(x);
    }
    return starts;
  };
  EXPECT_EQ(copiesStart(), (std::vector<int>{27, 127, 227, 327}));

  // Without the flag on that axis there is one copy, even though the world is narrower than the view.
  target.clear(kBlack);
  Renderer flat = make(Camera{0.0f, 0.0f, 1.0f}, false, true, 100, 1000);
  flat.renderLemming(Position{30, 100});
  EXPECT_EQ(copiesStart(), (std::vector<int>{27}));
}

TEST_F(RendererDrawing, GreyscaleSpritesWearTheColourInForce) {
  textures.setGreyscaleColour(SDL_Color{0, 128, 255, 255});
  Renderer renderer = make(Camera{0.0f, 0.0f, 2.0f});
  // The circle's texture is first asked for after the colour was set.
  Box const box = drawn([&] { renderer.renderCircle(50.0f, 50.0f, 4.0f); });
  EXPECT_EQ(target.pixel(box.left + 2, box.top + 2), 0xFF0080FFu);

  // A new colour reaches the textures already held.
  textures.setGreyscaleColour(SDL_Color{255, 0, 0, 255});
  target.clear(kBlack);
  renderer.renderCircle(50.0f, 50.0f, 4.0f);
  target.flush();
  EXPECT_EQ(target.pixel(box.left + 2, box.top + 2), 0xFFFF0000u);
}
