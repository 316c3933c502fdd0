#include <gtest/gtest.h>

#include <imgui.h>

#include <algorithm>
#include <memory>
#include <vector>

#include "app/SDL3App.h"
#include "support/HeadlessApp.h"

namespace {

class SDL3AppTest : public HeadlessAppTest {
protected:
  static void push(SDL_Event event) { SDL_PushEvent(&event); }
  static SDL_WindowID window() { return SDL_GetWindowID(app_->getWindow()); }
  static void pushKey(SDL_Keycode key) {
    push({.key = {.type = SDL_EVENT_KEY_DOWN, .windowID = window(), .key = key, .down = true}});
  }
  static void pushMouse(SDL_EventType type, float x, float y) {
    if (type == SDL_EVENT_MOUSE_MOTION) {
      push({.motion = {.type = type, .windowID = window(), .x = x, .y = y}});
    } else {
      push({.button = {.type = type, .windowID = window(), .button = SDL_BUTTON_LEFT,
                       .down = type == SDL_EVENT_MOUSE_BUTTON_DOWN, .clicks = 1, .x = x, .y = y}});
    }
  }

  // Runs the event pump and collects the types of the input events that reached the handler; the
  // window's own events (shown, moved, full screen and so on) are left out.
  static std::vector<Uint32> pump(bool& quit) {
    std::vector<Uint32> seen;
    app_->processEvents(
        [&seen](SDL_Event const& event) {
          bool const windowEvent = event.type >= SDL_EVENT_WINDOW_FIRST && event.type <= SDL_EVENT_WINDOW_LAST;
          bool const displayEvent = event.type >= SDL_EVENT_DISPLAY_FIRST && event.type <= SDL_EVENT_DISPLAY_LAST;
          if (!windowEvent && !displayEvent) {
            seen.push_back(event.type);
          }
        },
        quit);
    return seen;
  }

  // Renders frames until the interface has taken in the queued input (it takes one button change a frame).
  static void settleInterface() {
    for (int i = 0; i < 3; ++i) frameWithWindowAtTopLeft();
  }

  static void frameWithWindowAtTopLeft() {
    SDL3App::RenderingScope scope = app_->startRendering(RGBColour{});
    ImGui::SetNextWindowPos(ImVec2(0, 0));
    ImGui::SetNextWindowSize(ImVec2(100, 100));
    ImGui::Begin("Panel");
    ImGui::End();
    scope.end();
  }
};

}  // namespace

TEST_F(SDL3AppTest, F11FlipsFullScreenAndEscapeOnlyLeavesIt) {
  bool quit = true;
  ASSERT_FALSE(app_->isFullScreen());
  pushKey(SDLK_ESCAPE);  // windowed: nothing happens to the window, the game still sees the key
  EXPECT_EQ(pump(quit), (std::vector<Uint32>{SDL_EVENT_KEY_DOWN}));
  EXPECT_FALSE(quit);
  EXPECT_FALSE(app_->isFullScreen());

  pushKey(SDLK_F11);
  pump(quit);
  EXPECT_TRUE(app_->isFullScreen());
  pushKey(SDLK_F11);
  pump(quit);
  EXPECT_FALSE(app_->isFullScreen());

  pushKey(SDLK_F11);
  pushKey(SDLK_ESCAPE);
  // Only the key presses are counted: full screen changes bring pointer events of their own.
  EXPECT_EQ(std::ranges::count(pump(quit), Uint32{SDL_EVENT_KEY_DOWN}), 2);
  EXPECT_FALSE(app_->isFullScreen());
}

TEST_F(SDL3AppTest, AQuitEventSetsQuitForThatCallOnly) {
  bool quit = false;
  push({.type = SDL_EVENT_QUIT});
  pump(quit);
  EXPECT_TRUE(quit);
  EXPECT_TRUE(pump(quit).empty());
  EXPECT_FALSE(quit);
}

TEST_F(SDL3AppTest, ALeftClickOnAnInterfaceWindowDoesntReachTheGame) {
  bool quit = false;
  frameWithWindowAtTopLeft();
  pushMouse(SDL_EVENT_MOUSE_MOTION, 50, 50);
  pump(quit);
  settleInterface();  // the interface now knows that the pointer is over its window
  ASSERT_TRUE(ImGui::GetIO().WantCaptureMouse);

  pushMouse(SDL_EVENT_MOUSE_MOTION, 51, 50);
  pushMouse(SDL_EVENT_MOUSE_BUTTON_DOWN, 51, 50);
  pushMouse(SDL_EVENT_MOUSE_BUTTON_UP, 51, 50);
  EXPECT_EQ(pump(quit), (std::vector<Uint32>{SDL_EVENT_MOUSE_MOTION, SDL_EVENT_MOUSE_BUTTON_UP}));

  float x = 0;
  float y = 0;
  bool inWindow = true;
  app_->getMousePos(x, y, inWindow);
  EXPECT_FALSE(inWindow);  // never in the game's window while the interface wants the mouse

  // Away from the interface's window the click reaches the game.
  settleInterface();
  pushMouse(SDL_EVENT_MOUSE_MOTION, 200, 200);
  pump(quit);
  settleInterface();
  ASSERT_FALSE(ImGui::GetIO().WantCaptureMouse);
  pushMouse(SDL_EVENT_MOUSE_BUTTON_DOWN, 200, 200);
  EXPECT_EQ(pump(quit), (std::vector<Uint32>{SDL_EVENT_MOUSE_BUTTON_DOWN}));
}

TEST_F(SDL3AppTest, CursorsAreLoadedByNameAndPutInForce) {
  app_->loadCursor("cursor.png", Position{0, 0}, "plain");
  app_->loadCompositeCursor("cursor_left.png", "falling_icon.png", Position{0, 0}, "left_falling", true);
  EXPECT_TRUE(app_->hasCursor("plain"));
  EXPECT_TRUE(app_->hasCursor("left_falling"));

  app_->setCursor("left_falling");
  ASSERT_TRUE(app_->currentCursorName().has_value());
  EXPECT_EQ(*app_->currentCursorName(), "left_falling");
  app_->setDefaultCursor();
  EXPECT_FALSE(app_->currentCursorName().has_value());
  app_->forceCursorSet();
  EXPECT_EQ(SDL_GetCursor(), SDL_GetDefaultCursor());

  EXPECT_THROW(app_->loadCursor("no_such_cursor.png", Position{0, 0}, "missing"), std::runtime_error);
  EXPECT_FALSE(app_->hasCursor("missing"));
}

TEST_F(SDL3AppTest, AFrameLeftByAnExceptionInsideAWindowIsEndedAndTheNextOneWorks) {
  EXPECT_THROW(
      {
        SDL3App::RenderingScope scope = app_->startRendering(RGBColour{});
        ImGui::Begin("Left open");
        ImGui::BeginChild("Also left open");
        EXPECT_TRUE(app_->isRendering());
        throw std::runtime_error("a page failed");
      },
      std::runtime_error);
  EXPECT_FALSE(app_->isRendering());
  frameWithWindowAtTopLeft();
  EXPECT_FALSE(app_->isRendering());
}
