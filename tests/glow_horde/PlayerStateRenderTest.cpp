#include <gtest/gtest.h>

#include "present/Renderer.h"
#include "present/TextureCache.h"
#include "glow_horde/GridWorld.h"
#include "glow_horde/PlayerState.h"
#include "support/TestImages.h"

using testing_support::SaveImage;
using testing_support::ScopedDataDirectory;
using testing_support::SoftwareTarget;

namespace {

constexpr std::uint32_t kBlack = 0xFF000000u;
constexpr std::uint32_t kInk = 0xFF000000u; // opaque in a tintable sprite
constexpr std::uint32_t kRed = 0xFFFF0000u;
constexpr std::uint32_t kTint = 0xFF00FF7Fu; // the player's colour on an opaque sprite
constexpr int kScreenWidth = 200;
constexpr int kScreenHeight = 100;

// Three units on a 200 by 100 view of the world's bottom left corner: A (51, 20) facing right with a
// pending order, B (99, 20) facing left, C (120, 39) facing right and falling. The spawn is at
// (190, 0), whose 80-pixel-wide sign stays clear of them.
class PlayerStateDrawing : public ::testing::Test {
protected:
  PlayerStateDrawing() {
    SaveImage("hordeling.png", 8, 8, [](int, int) { return kInk; });
    SaveImage("entry.png", 8, 8, [](int, int) { return kInk; });
    SaveImage("blocked_icon.png", 8, 8, [](int, int) { return kRed; });
    textures.setGreyscaleColour({0, 255, 127, 255});

    GridWorld world(256, 256);
    world.fill(0, 0, 109, 19, GridWorld::Cell::Ground);
    state.createLemming(50, 20, true);
    state.createLemming(100, 20, false);
    state.createLemming(120, 40, true);
    state.update(world);
    for (std::uint16_t i = 0; i < state.lemmings().size(); ++i) {
      if (state.lemmings()[i].id() == 0) {
        state.giveOrder(Order{i, 0, LemmingActivity::DigSideways, LemmingActivityTrigger::WhenBlocked});
      }
    }
  }

  static PlayerState::Setup DrawingSetup() {
    PlayerState::Setup setup;
    setup.spawn = {190, 0};
    setup.availabilities.counts = {1, 1, 1, 1, 1, 1, 1};
    setup.worldWidth = 256;
    setup.worldHeight = 256;
    return setup;
  }

  Renderer renderer() { return Renderer(target.renderer(), textures, kScreenWidth, kScreenHeight, 256, 256, false, false, Camera{}); }

  // The middle of a unit's 5 by 10 sprite, on screen.
  std::uint32_t unitPixel(Position p) { return target.pixel(p.x, kScreenHeight - 1 - (p.y + 5)); }

  struct Seen {
    std::uint32_t a, b, c, icon, entry;
    bool operator==(Seen const&) const = default;
    friend std::ostream& operator<<(std::ostream& out, Seen const& s) {
      return out << std::hex << "a " << s.a << ", b " << s.b << ", c " << s.c << ", icon " << s.icon << ", entry "
                 << s.entry;
    }
  };
  Seen look() {
    target.flush();
    return {unitPixel({51, 20}), unitPixel({99, 20}), unitPixel({120, 39}),
            target.pixel(51, kScreenHeight - 1 - 43), target.pixel(170, 90)};
  }

  ScopedDataDirectory directory;
  SoftwareTarget target{kScreenWidth, kScreenHeight, kBlack};
  TextureCache textures{target.renderer()};
  PlayerState state{DrawingSetup()};
};

} // namespace

TEST_F(PlayerStateDrawing, FilterAndTriggerSplitUnitsBetweenTheTwoPasses) {
  ASSERT_TRUE(state.lemmings().size() == 3 && state.lemmings()[2].inAir());
  using F = DirectionFilter;
  using T = LemmingActivityTrigger;
  struct Case {
    char const* why;
    bool lowAlpha;
    F filter;
    T trigger;
    Seen expected;
  };
  Case const cases[] = {
      // A faces the other way and C can't take an immediate order while falling; a pending order's
      // icon shows whatever the filter.
      {"left, immediate", false, F::FacingLeft, T::Immediate, {kBlack, kTint, kBlack, kRed, kTint}},
      {"left, immediate, the others", true, F::FacingLeft, T::Immediate, {kTint, kBlack, kTint, kBlack, kBlack}},
      {"right, immediate", false, F::FacingRight, T::Immediate, {kTint, kBlack, kBlack, kRed, kTint}},
      // With a waiting trigger a falling unit is selectable too.
      {"any, waiting", false, F::Any, T::BeforeFalling, {kTint, kTint, kTint, kRed, kTint}},
      {"any, waiting, the others", true, F::Any, T::BeforeFalling, {kBlack, kBlack, kBlack, kBlack, kBlack}},
  };
  for (Case const& c : cases) {
    SCOPED_TRACE(c.why);
    target.clear(kBlack);
    if (c.lowAlpha) {
      state.renderLowAlpha(renderer(), c.filter, c.trigger);
    } else {
      state.render(renderer(), c.filter, c.trigger);
    }
    EXPECT_EQ(look(), c.expected);
  }
}
