#include <gtest/gtest.h>

#include <string>
#include <tuple>

#include "glow_horde/GlowHordeControls.h"
#include "glow_horde/UIOrderText.h"

namespace {

using Keys = GlowHordeControls::HeldKeys;
using Pointer = GlowHordeControls::Pointer;
using T = LemmingActivityTrigger;
constexpr int k_screenWidth = 1280;
constexpr int k_screenHeight = 720;
// The default trigger of each activity, in activity order.
std::vector<T> const k_defaultTriggers{T::Immediate, T::BeforeFalling, T::Immediate, T::Immediate,
                                      T::Immediate, T::WhenBlocked,   T::WhenBlocked};

SDL_Event Key(SDL_Scancode scancode) { return {.key = {.type = SDL_EVENT_KEY_DOWN, .scancode = scancode, .down = true}}; }
SDL_Event Button(SDL_EventType type, Uint8 button) {
  return {.button = {.type = type, .button = button, .down = type == SDL_EVENT_MOUSE_BUTTON_DOWN}};
}
SDL_Event Wheel(float y) { return {.wheel = {.type = SDL_EVENT_MOUSE_WHEEL, .y = y}}; }
SDL_Event Motion() { return {.motion = {.type = SDL_EVENT_MOUSE_MOTION}}; }

std::string Poll(GlowHordeControls& controls, Keys const& keys, std::uint64_t milliseconds = 16,
                 Pointer pointer = {}) {
  return controls.applyHeldInput(keys, milliseconds, pointer, k_screenWidth, k_screenHeight);
}

}  // namespace

TEST(GlowHordeControls, ArrowsSetTheDirectionFilterTheTriggerOverrideAndTheCursor) {
  GlowHordeControls controls(2048, 1024, false, false);
  EXPECT_EQ(Poll(controls, {}), "");
  EXPECT_EQ(controls.directionFilter(), DirectionFilter::Any);
  EXPECT_EQ(Poll(controls, {.right = true}), "right");
  EXPECT_EQ(Poll(controls, {.left = true, .up = true}), "left_blocked");
  EXPECT_EQ(controls.directionFilter(), DirectionFilter::FacingLeft);
  EXPECT_EQ(controls.triggerInEffect(), T::WhenBlocked);
  // Both ways held: the filter stays left if it was left, and the override is "after turning".
  EXPECT_EQ(Poll(controls, {.left = true, .right = true}), "left_turned");
  EXPECT_EQ(controls.triggerOverride(), T::AfterTurning);
  EXPECT_EQ(Poll(controls, {.down = true}), "falling");
  EXPECT_EQ(controls.triggerInEffect(), T::BeforeFalling);
  EXPECT_EQ(Poll(controls, {.left = true, .right = true}), "right_turned");  // it was any, so right
  EXPECT_EQ(Poll(controls, {.left = true, .right = true, .down = true}), "right_falling");
  EXPECT_EQ(Poll(controls, {}), "");
  EXPECT_FALSE(controls.triggerOverride().has_value());
}

TEST(GlowHordeControls, FunctionKeysChooseTheActivityAndItsDefaultTriggerApplies) {
  GlowHordeControls controls(1024, 1024, false, false);
  EXPECT_EQ(controls.defaultTriggers(), k_defaultTriggers);
  for (int f = 0; f < 7; ++f) {
    controls.handleEvent(Key(static_cast<SDL_Scancode>(SDL_SCANCODE_F1 + f)), {});
    EXPECT_EQ(controls.selectedActivity(), static_cast<LemmingActivity>(f));
    EXPECT_EQ(controls.triggerInEffect(), k_defaultTriggers[static_cast<std::size_t>(f)]);
  }
  controls.handleEvent(Key(SDL_SCANCODE_F8), {});
  EXPECT_EQ(controls.selectedActivity(), LemmingActivity::DigUpwards);
}

TEST(GlowHordeControls, ALeftClickLeavesTheOrderOfThatMomentWaiting) {
  GlowHordeControls controls(2048, 1024, false, false);
  controls.camera() = {.x = 100.0f, .y = 50.0f, .zoom = 2.0f};
  controls.handleEvent(Key(SDL_SCANCODE_F2), {});
  Poll(controls, {.right = true});
  controls.handleEvent(Button(SDL_EVENT_MOUSE_BUTTON_DOWN, SDL_BUTTON_LEFT), {301.0f, 99.0f, true});
  EXPECT_EQ(controls.hoverPosition(), (Position{250, 99}));
  ASSERT_TRUE(controls.pendingOrder().has_value());
  EXPECT_EQ(*controls.pendingOrder(),
            (UIOrder{250, 99, LemmingActivity::HorizontalBridge, T::BeforeFalling, DirectionFilter::FacingRight}));
  // A newer click replaces it; taking it leaves nothing waiting.
  controls.handleEvent(Button(SDL_EVENT_MOUSE_BUTTON_DOWN, SDL_BUTTON_LEFT), {0.0f, 0.0f, true});
  EXPECT_EQ(controls.takePendingOrder()->x, 100);
  EXPECT_FALSE(controls.takePendingOrder().has_value());
  // A click that reaches the game is an order whatever the pointer's hover state (the pump keeps the
  // interface's clicks to itself); with the pointer not over the game there is no hover point.
  controls.handleEvent(Button(SDL_EVENT_MOUSE_BUTTON_DOWN, SDL_BUTTON_LEFT), {10.0f, 10.0f, false});
  EXPECT_EQ(controls.takePendingOrder(),
            (UIOrder{105, 55, LemmingActivity::HorizontalBridge, T::BeforeFalling, DirectionFilter::FacingRight}));
  EXPECT_FALSE(controls.hoverPosition().has_value());
  // A middle-button drag still starts there: the view follows the pointer from that world point.
  controls.handleEvent(Button(SDL_EVENT_MOUSE_BUTTON_DOWN, SDL_BUTTON_MIDDLE), {10.0f, 10.0f, false});
  controls.handleEvent(Motion(), {30.0f, 10.0f, false});
  EXPECT_FLOAT_EQ(controls.camera().x, 105.0f - 30.0f / 2.0f);
}

TEST(GlowHordeControls, ThePointerIsBroughtIntoTheWorldOnWrappingAxesOnly) {
  GlowHordeControls wrapped(1536, 768, true, false);
  wrapped.camera() = {.x = -10.5f, .y = -20.0f};
  EXPECT_EQ(wrapped.worldPositionAt(0.0f, 0.0f), (Position{1526, -20}));
  EXPECT_EQ(wrapped.worldPositionAt(1600.0f, 30.0f), (Position{53, 10}));
}

TEST(GlowHordeControls, ZoomKeepsThePointUnderThePointerAndStaysWithinItsLimits) {
  GlowHordeControls controls(2048, 1024, false, false);
  controls.camera() = {.x = 200.0f, .y = 100.0f};
  Pointer const pointer{400.0f, 300.0f, true};
  controls.handleEvent(Key(SDL_SCANCODE_KP_PLUS), pointer);
  EXPECT_FLOAT_EQ(controls.camera().zoom, 1.3f);
  EXPECT_NEAR(controls.camera().x + 400.0f / 1.3f, 600.0f, 1e-3);
  EXPECT_NEAR(controls.camera().y + 300.0f / 1.3f, 400.0f, 1e-3);

  for (int i = 0; i < 20; ++i) {
    controls.handleEvent(Wheel(5.0f), pointer);
  }
  EXPECT_FLOAT_EQ(controls.camera().zoom, 3.0f);
  Camera const atMaximum = controls.camera();
  controls.handleEvent(Wheel(1.0f), pointer);  // further in changes neither zoom nor camera
  EXPECT_EQ(std::tie(controls.camera().zoom, controls.camera().x, controls.camera().y),
            std::tie(atMaximum.zoom, atMaximum.x, atMaximum.y));

  for (int i = 0; i < 10; ++i) {
    controls.handleEvent(Key(SDL_SCANCODE_KP_MINUS), pointer);
  }
  EXPECT_FLOAT_EQ(controls.camera().zoom, 0.5f);
  EXPECT_NEAR(controls.camera().x + 400.0f / 0.5f, 600.0f, 1e-2);

  // Q and E zoom by a second's worth of time: 0.25 s of E from 0.5 gives 0.75.
  Poll(controls, {.e = true}, 250, pointer);
  EXPECT_FLOAT_EQ(controls.camera().zoom, 0.75f);
  Poll(controls, {.q = true}, 2000, pointer);
  EXPECT_FLOAT_EQ(controls.camera().zoom, 0.5f);
}

TEST(GlowHordeControls, WithoutWrapTheCameraKeepsSomeOfTheWorldInView) {
  GlowHordeControls controls(2048, 1024, false, false);
  for (int i = 0; i < 100; ++i) {
    Poll(controls, {.w = true, .d = true}, 100);
  }
  EXPECT_FLOAT_EQ(controls.camera().x, 2048.0f - 150.0f);
  EXPECT_FLOAT_EQ(controls.camera().y, 1024.0f - 150.0f);
  for (int i = 0; i < 100; ++i) {
    Poll(controls, {.a = true, .s = true}, 100);
  }
  EXPECT_FLOAT_EQ(controls.camera().x, 150.0f - 1280.0f);
  EXPECT_FLOAT_EQ(controls.camera().y, 150.0f - 720.0f);
  // Zoomed in, a screen covers less of the world, so the camera may go less far below zero.
  controls.zoomAtPointer(2.0f, {});
  Poll(controls, {.a = true, .s = true}, 100);
  EXPECT_FLOAT_EQ(controls.camera().x, 150.0f - 640.0f);
  EXPECT_FLOAT_EQ(controls.camera().y, 150.0f - 360.0f);
}

TEST(GlowHordeControls, ScrollingMovesAtItsSpeedThenGlidesToAStopAndWrapsWhereTheViewWraps) {
  GlowHordeControls controls(1536, 768, true, false);
  controls.camera() = {.x = 1500.0f, .y = 300.0f};
  Poll(controls, {.d = true}, 100);  // 500 pixels a second at zoom 1 for 0.1 s
  EXPECT_FLOAT_EQ(controls.camera().x, 14.0f);  // 1550 wrapped
  EXPECT_FLOAT_EQ(controls.camera().velocityX, 500.0f);
  Poll(controls, {}, 100);  // no key: the speed falls by a tenth
  EXPECT_FLOAT_EQ(controls.camera().velocityX, 450.0f);
  EXPECT_FLOAT_EQ(controls.camera().x, 59.0f);
  Poll(controls, {.w = true}, 100);
  EXPECT_FLOAT_EQ(controls.camera().y, 350.0f);
  controls.camera().x = -0.5f;
  Poll(controls, {}, 0);
  EXPECT_FLOAT_EQ(controls.camera().x, 0.0f);  // truncated first, then wrapped
}

TEST(GlowHordeControls, TheMiddleButtonDragsTheWorldPointAlongWithThePointer) {
  GlowHordeControls controls(2048, 1024, false, false);
  controls.camera() = {.x = 300.0f, .y = 200.0f, .zoom = 2.0f};
  controls.handleEvent(Button(SDL_EVENT_MOUSE_BUTTON_DOWN, SDL_BUTTON_MIDDLE), {100.0f, 100.0f, true});
  EXPECT_TRUE(controls.dragging());
  controls.handleEvent(Motion(), {300.0f, 50.0f, true});
  EXPECT_FLOAT_EQ(controls.camera().x, 350.0f - 150.0f);
  EXPECT_FLOAT_EQ(controls.camera().y, 250.0f - 25.0f);
  controls.handleEvent(Button(SDL_EVENT_MOUSE_BUTTON_UP, SDL_BUTTON_MIDDLE), {300.0f, 50.0f, true});
  controls.handleEvent(Motion(), {0.0f, 0.0f, true});
  EXPECT_FALSE(controls.dragging());
  EXPECT_FLOAT_EQ(controls.camera().x, 200.0f);
  EXPECT_FALSE(controls.pendingOrder().has_value());
}

TEST(UIOrderText, ParsesPositionKeywordAndTheWordsAfterIt) {
  std::vector<T> const& defaults = k_defaultTriggers;
  EXPECT_EQ(ParseUIOrderText("100,200 dig_down", defaults),
            (UIOrder{100, 200, LemmingActivity::DigDown, T::Immediate, DirectionFilter::Any}));
  EXPECT_EQ(ParseUIOrderText("560,560 bridge left falling", defaults),
            (UIOrder{560, 560, LemmingActivity::Bridge, T::BeforeFalling, DirectionFilter::FacingLeft}));
  // The default trigger of the activity, the last word winning, unknown words ignored.
  EXPECT_EQ(ParseUIOrderText("-5,7 dig_sideways", defaults)->trigger, T::WhenBlocked);
  EXPECT_EQ(ParseUIOrderText("1,2 block turned right left immediate sideways", defaults),
            (UIOrder{1, 2, LemmingActivity::Block, T::Immediate, DirectionFilter::FacingLeft}));
  for (int a = 0; a < 7; ++a) {
    auto const activity = static_cast<LemmingActivity>(a);
    std::string const text = std::string("3,4 ") + LemmingActivityKeyword(activity);
    EXPECT_EQ(ParseUIOrderText(text, defaults)->activity, activity) << text;
  }

  for (char const* bad : {"100;200 dig_down", "100,200 dig", "100,200", "100 200 dig_down", ",200 dig_down",
                          "x,200 dig_down", "100,y dig_down", "", "   ", "100,200 DIG_DOWN"}) {
    EXPECT_FALSE(ParseUIOrderText(bad, defaults).has_value()) << bad;
  }
}
