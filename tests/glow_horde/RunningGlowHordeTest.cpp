#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "sim/Games.h"
#include "app/SDL3App.h"
#include "present/SoundSystem.h"
#include "glow_horde/TutorialLevelSettings.h"
#include "glow_horde/GlowHordeGame.h"
#include "glow_horde/RunningGlowHorde.h"
#include "support/HeadlessApp.h"

namespace {

using Orders = std::vector<std::vector<unsigned char>>;

// Sessions made by the catalogue on a real shell over SDL's dummy video driver (320 by 240).
class RunningGlowHordeTest : public ::testing::Test {
protected:
  static void SetUpTestSuite() {
    app_ = MakeHeadlessApp();
    GlowHordeGame::oneTimeAppInit(*app_);
  }
  static void TearDownTestSuite() { app_.reset(); }

  static std::unique_ptr<RunningGlowHorde> start(GameSettings const& settings, std::vector<unsigned short> const& slots) {
    std::unique_ptr<IRunningGame> session =
        games_.refGame(Game::GlowHorde).startSession(app_, 0, 16666, 15, settings, slots, false);
    return std::unique_ptr<RunningGlowHorde>(dynamic_cast<RunningGlowHorde*>(session.release()));
  }
  // The first tutorial level (one unit, one dig down order and none of any other), stepped to the
  // frame; by frame 300 the unit stands on the floor.
  static std::unique_ptr<RunningGlowHorde> tutorialOneAt(std::uint32_t frame = 15) {
    auto session = start(TutorialLevelSettings(games_.refGame(Game::GlowHorde).schema, 0), {0});
    while (session->currentFrame() < frame) {
      step(*session);
    }
    return session;
  }
  // Steps like a local game: the session's own order in ourOrder, nothing from anybody else.
  static void step(RunningGlowHorde& session, std::vector<unsigned char> ourOrder = {}) {
    session.update(Orders(session.simulation().players().size()), std::move(ourOrder));
  }

  // Draws one frame into the window's renderer and reads it back, row 0 at the top.
  static SDL_Surface* renderFrame(RunningGlowHorde& session) {
    SDL3App::RenderingScope scope = app_->startRendering(RGBColour{});
    session.render();
    SDL_Surface* pixels = SDL_RenderReadPixels(app_->getRenderer(), nullptr);
    scope.end();
    SDL_Surface* converted = SDL_ConvertSurface(pixels, SDL_PIXELFORMAT_ARGB8888);
    SDL_DestroySurface(pixels);
    return converted;
  }

  static inline std::shared_ptr<SDL3App> app_;
  static inline Games const games_;
};

// Pixels of the rectangle that are close to the colour (within 40 in each channel), counted; with
// another surface, the pixels that differ between the two.
int CountPixels(SDL_Surface* surface, SDL_Rect area, SDL_Color colour, SDL_Surface* other = nullptr) {
  int count = 0;
  for (int y = area.y; y < area.y + area.h; ++y) {
    for (int x = area.x; x < area.x + area.w; ++x) {
      SDL_Color a{};
      SDL_ReadSurfacePixel(surface, x, y, &a.r, &a.g, &a.b, nullptr);
      if (other != nullptr) {
        SDL_ReadSurfacePixel(other, x, y, &colour.r, &colour.g, &colour.b, nullptr);
      }
      bool const near = std::abs(a.r - colour.r) < 40 && std::abs(a.g - colour.g) < 40 && std::abs(a.b - colour.b) < 40;
      bool const same = a.r == colour.r && a.g == colour.g && a.b == colour.b;
      count += (other != nullptr ? !same : near) ? 1 : 0;
    }
  }
  return count;
}

}  // namespace

TEST_F(RunningGlowHordeTest, ANewSessionHasRunItsHeadStartAndLooksAtTheLocalSpawn) {
  auto session = tutorialOneAt();
  EXPECT_EQ(session->currentFrame(), 15u);
  EXPECT_EQ(session->wrappedAlways({784, -321}), (Position{784, 703}));
  EXPECT_FLOAT_EQ(session->controls().camera().x, 784.0f - 160.0f);
  EXPECT_FLOAT_EQ(session->controls().camera().y, 703.0f - 120.0f);
  EXPECT_FLOAT_EQ(session->controls().camera().zoom, 1.0f);
  EXPECT_EQ(&session->game(), &games_.refGame(Game::GlowHorde));
}

TEST_F(RunningGlowHordeTest, AClickFindsAUnitWithin150PixelsOrIsLost) {
  auto session = tutorialOneAt(300);
  SoundSystem const& sound = app_->getSoundSystem();
  std::size_t const playingBefore = sound.playingCount();
  auto const expectSoundsStarted = [&](std::size_t started) {
    if (sound.engineReady()) {
      EXPECT_EQ(sound.playingCount(), playingBefore + started);
    }
  };

  // The unit stands on the floor at y 600 near x 800. A click 150 pixels away still finds it; one
  // 151 pixels away finds nobody: no order goes out, the click is gone, and nothing is heard.
  Position const unit = session->simulation().localPlayerState().lemmings().at(0).position();
  ASSERT_EQ(unit.y, 600);
  auto const at = [](int x, int y) { return std::to_string(x) + "," + std::to_string(y) + " dig_down"; };
  EXPECT_TRUE(session->evaluateCondition("order_applies " + at(unit.x - 150, 600)));
  EXPECT_TRUE(session->evaluateCondition("order_applies " + at(unit.x, 600 + 150)));
  EXPECT_FALSE(session->evaluateCondition("order_applies   " + at(unit.x + 151, 600)));
  EXPECT_FALSE(session->evaluateCondition("order_applies " + at(unit.x + 120, 600 - 91)));
  session->injectOrder(at(unit.x + 151, 600));
  EXPECT_TRUE(session->processUIInputsAndGetOurNextOrder().empty());
  session->injectOrder("800,600 dig_down");
  EXPECT_TRUE(session->controls().pendingOrder().has_value());
  std::vector<unsigned char> const order = session->processUIInputsAndGetOurNextOrder();
  EXPECT_FALSE(session->controls().pendingOrder().has_value());
  ASSERT_EQ(order.size(), 7u);
  EXPECT_EQ(order[4], 4);  // dig down
  EXPECT_EQ(order[6], 0);  // immediate
  EXPECT_TRUE(session->processUIInputsAndGetOurNextOrder().empty());
  expectSoundsStarted(0);

  step(*session, order);
  EXPECT_EQ(session->simulation().localPlayerState().availabilities()[LemmingActivity::DigDown], 0);
  expectSoundsStarted(1);
  // None left: no unit is offered any more, though a click still resolves to an order that every
  // client will refuse.
  EXPECT_FALSE(session->evaluateCondition("order_applies 800,600 dig_down"));
  session->injectOrder("800,600 dig_down");
  std::vector<unsigned char> const refused = session->processUIInputsAndGetOurNextOrder();
  EXPECT_EQ(refused.size(), 7u);
  step(*session, refused);
  expectSoundsStarted(1);
}

TEST_F(RunningGlowHordeTest, TextOrdersTakeTheSessionsDefaultTriggers) {
  auto session = tutorialOneAt();
  EXPECT_EQ(session->parseUIOrder("5,6 dig_sideways")->trigger, LemmingActivityTrigger::WhenBlocked);
  session->controls().defaultTriggers()[5] = LemmingActivityTrigger::AfterTurning;
  EXPECT_EQ(session->parseUIOrder("5,6 dig_sideways")->trigger, LemmingActivityTrigger::AfterTurning);
  EXPECT_EQ(session->parseUIOrder("5,6 dig_sideways falling")->trigger, LemmingActivityTrigger::BeforeFalling);
  EXPECT_FALSE(session->parseUIOrder("5;6 dig_sideways").has_value());
  EXPECT_EQ(session->triggerInEffect(), LemmingActivityTrigger::Immediate);
}

TEST_F(RunningGlowHordeTest, ConditionsAndOrdersOfADriverMustBeWellFormed) {
  auto session = tutorialOneAt();
  EXPECT_DEATH(session->evaluateCondition("units_out 1"), "condition_type == \"order_applies\"");
  EXPECT_DEATH(session->evaluateCondition("order_applies 1,2 dance"), "parsed.has_value\\(\\)");
  EXPECT_DEATH(session->injectOrder("1 2 dig_down"), "parsed.has_value\\(\\)");
}

TEST_F(RunningGlowHordeTest, AnExitIsDrawnInTheColourOfItsPlaceAmongTheTeamsInPlay) {
  // The exit at (400, 159) belongs to the map's team 1. With slots 1 and 3 only it is the one exit,
  // team 0, green; with slots 0 and 1 it is the second, blue.
  SDL_Rect const exitArea{130, 89, 60, 60};
  for (bool secondTeamOnly : {true, false}) {
    SCOPED_TRACE(secondTeamOnly ? "slots 1 and 3" : "slots 0 and 1");
    GameSettings settings = DefaultSettingsFromSchema(games_.refGame(Game::GlowHorde).schema);
    settings.strings["map"] = "Unwrapped Ledges";
    auto session = start(settings, secondTeamOnly ? std::vector<unsigned short>{1, 3}
                                                                      : std::vector<unsigned short>{0, 1});
    Camera& camera = session->controls().camera();
    camera.x = 400.0f - 160.0f;
    camera.y = 159.0f - 120.0f;
    SDL_Surface* frame = renderFrame(*session);
    ASSERT_NE(frame, nullptr);
    int const green = CountPixels(frame, exitArea, {0, 255, 127, 255});
    int const blue = CountPixels(frame, exitArea, {0, 127, 255, 255});
    SDL_DestroySurface(frame);
    EXPECT_GT(secondTeamOnly ? green : blue, 50);
    EXPECT_EQ(secondTeamOnly ? blue : green, 0);
  }
}

TEST_F(RunningGlowHordeTest, BracketsMarkTheUnitThatAClickUnderThePointerWouldGoTo) {
  auto session = tutorialOneAt(300);
  Position const unit = session->simulation().localPlayerState().lemmings().at(0).position();
  Camera& camera = session->controls().camera();
  camera.x = static_cast<float>(unit.x) - 160.0f;
  camera.y = static_cast<float>(unit.y) - 120.0f;
  // Around the unit on screen, where the brackets (18 by 24 from 9 left and 6 below it) would be.
  SDL_Rect const around{160 - 12, 239 - 120 - 20, 24, 30};

  // Dig down is the one activity with an order left: brackets show only for an order that can be given.
  SDL_Event const key{.key = {.type = SDL_EVENT_KEY_DOWN, .scancode = SDL_SCANCODE_F5, .down = true}};
  session->controls().handleEvent(key, {200.0f, 130.0f, true});  // within 150 pixels of the unit
  ASSERT_TRUE(session->controls().hoverPosition().has_value());
  SDL_Surface* marked = renderFrame(*session);
  session->controls().handleEvent(key, {10.0f, 10.0f, false});  // the pointer over the interface
  EXPECT_FALSE(session->controls().hoverPosition().has_value());
  SDL_Surface* plain = renderFrame(*session);
  EXPECT_GT(CountPixels(plain, around, {}, marked), 10);
  SDL_DestroySurface(plain);
  SDL_DestroySurface(marked);
}

TEST_F(RunningGlowHordeTest, AResultRowReadsAsUnitsOutAndTheirAverageTime) {
  IGame const& game = games_.refGame(Game::GlowHorde);
  EXPECT_EQ(game.formatResult({4, -100000}, false), "4 exited in average 25.0 seconds");
  EXPECT_EQ(game.formatResult({3, -50000}, true), "3 exited in average 16.7 seconds");
  EXPECT_EQ(game.formatResult({0, 0}, false), "No hordelings exited");
}
