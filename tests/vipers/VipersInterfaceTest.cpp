// The parts of Vipers that a player sees and touches: the bar that compares tails, and the orders that
// keys make.
#include <gtest/gtest.h>

#include <imgui.h>
#include <imgui_internal.h>

#include "sim/Games.h"
#include "support/HeadlessApp.h"
#include "vipers/RunningVipers.h"
#include "vipers/VipersGame.h"
#include "vipers/VipersStatusBar.h"

namespace {

TEST(VipersStatusBar, BarsRunLongestFirstAtOnePixelPerPixelUntilTheyWouldPassSeventyPercent) {
  // 600 + 300 + 100 pixels and two gaps of 2: 1004, under 70% of 1600 (1120): drawn as they are.
  VipersStatusBarLayout narrow = LayOutVipersStatusBar({300 * 256, 600 * 256, 100 * 256}, 1600.0f);
  ASSERT_EQ(narrow.bars.size(), 3u);
  EXPECT_EQ(narrow.bars[0].player, 1);
  EXPECT_EQ(narrow.bars[1].player, 0);
  EXPECT_EQ(narrow.bars[2].player, 2);
  EXPECT_FLOAT_EQ(narrow.bars[0].width, 600.0f);
  EXPECT_FLOAT_EQ(narrow.bars[2].width, 100.0f);
  EXPECT_FLOAT_EQ(narrow.totalWidth, 1004.0f);

  // On a screen of 1000, the limit is 700: scale (700 - 4) / 1000, and the bar fills exactly 70%.
  VipersStatusBarLayout wide = LayOutVipersStatusBar({300 * 256, 600 * 256, 100 * 256}, 1000.0f);
  EXPECT_FLOAT_EQ(wide.bars[0].width, 600.0f * 0.696f);
  EXPECT_FLOAT_EQ(wide.totalWidth, 700.0f);

  // A negative length counts as nothing; with one player there is no bar at all.
  VipersStatusBarLayout negative = LayOutVipersStatusBar({-5000, 256}, 1000.0f);
  EXPECT_FLOAT_EQ(negative.bars[1].width, 0.0f);
  EXPECT_FLOAT_EQ(negative.totalWidth, 3.0f);
  EXPECT_TRUE(LayOutVipersStatusBar({600 * 256}, 1000.0f).bars.empty());
  EXPECT_TRUE(LayOutVipersStatusBar({0, 0}, 1000.0f).totalWidth == 2.0f);
}

TEST(VipersStatusBar, SitsCentredAtTheTopOfTheScreen) {
  ImGuiContext* previous = ImGui::GetCurrentContext();
  ImGuiContext* context = ImGui::CreateContext();
  ImGui::SetCurrentContext(context);
  ImGuiIO& io = ImGui::GetIO();
  io.IniFilename = nullptr;
  io.DisplaySize = ImVec2(1280.0f, 720.0f);
  io.DeltaTime = 1.0f / 60.0f;
  unsigned char* pixels = nullptr;
  int width = 0;
  int height = 0;
  io.Fonts->GetTexDataAsRGBA32(&pixels, &width, &height);
  for (int i = 0; i < 3; ++i) {
    ImGui::NewFrame();
    VipersStatusBar({0, 2}, {600 * 256, 300 * 256}, {true, false}, 1);
    ImGui::Render();
  }
  ImGuiWindow* window = ImGui::FindWindowByName("##StatusBar");
  ASSERT_NE(window, nullptr);
  EXPECT_FLOAT_EQ(window->Rect().Min.y, 0.0f);
  EXPECT_NEAR((window->Rect().Min.x + window->Rect().Max.x) / 2.0f, 640.0f, 1.0f);
  // The bars (902 pixels with the gap) and the padding.
  EXPECT_GE(window->Rect().GetWidth(), 902.0f);
  EXPECT_LT(window->Rect().GetWidth(), 940.0f);
  ImGui::DestroyContext(context);
  ImGui::SetCurrentContext(previous);
}

class RunningVipersTest : public HeadlessAppTest {};

TEST_F(RunningVipersTest, KeysMakeAnOrderOnlyWhenTheyDifferFromThePredictionOrSpaceWasPressed) {
  EXPECT_EQ(RunningVipers::ControlsFromKeys(false, false, false, false), 0);
  EXPECT_EQ(RunningVipers::ControlsFromKeys(true, true, false, false), 1);   // A wins over D
  EXPECT_EQ(RunningVipers::ControlsFromKeys(false, true, false, true), 2 | 8);
  EXPECT_EQ(RunningVipers::ControlsFromKeys(false, false, true, true), 4);   // W wins over S

  Games const games;
  IGame const& game = games.refGame(Game::Vipers);
  std::unique_ptr<IRunningGame> session =
      game.startSession(app_, 0, 16666, 15, DefaultSettingsFromSchema(game.schema), {0, 2}, false);
  auto const* vipers = dynamic_cast<RunningVipers const*>(session.get());
  ASSERT_NE(vipers, nullptr);
  EXPECT_EQ(session->currentFrame(), 15u);
  EXPECT_TRUE(session->processUIInputsAndGetOurNextOrder().empty());

  SDL_Event space{};
  space.type = SDL_EVENT_KEY_DOWN;
  space.key.scancode = SDL_SCANCODE_SPACE;
  session->eventHandler(space);
  EXPECT_EQ(session->processUIInputsAndGetOurNextOrder(), (std::vector<unsigned char>{16}));
  EXPECT_TRUE(session->processUIInputsAndGetOurNextOrder().empty());  // pressed once, sent once

  // The order steers the prediction at once; the shared head hears of it only delayFrames later.
  session->update({{}, {}}, {1});
  EXPECT_EQ(vipers->simulation().shadow().body.controls, 1);
  EXPECT_EQ(vipers->simulation().heads()[0].body.controls, 0);
  EXPECT_FALSE(session->evaluateCondition("anything"));
  GameResult result;
  session->getGameResult(result);
  EXPECT_EQ(result.results.size(), 2u);
  EXPECT_EQ(game.formatResult(result.results[0], false), "Length 600 (survived)");
}

}  // namespace
