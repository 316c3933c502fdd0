// The two in-game windows driven by mouse input through an interface context of their own, with no
// window system: each frame gets the pointer and button from the test, as the platform layer would
// hand them over.
#include <gtest/gtest.h>

#include <imgui.h>
#include <imgui_internal.h>

#include <set>

#include "present/TextureCache.h"
#include "glow_horde/DisplayActivitySelector.h"
#include "glow_horde/RenderTeamInfoAndScores.h"
#include "support/TestImages.h"

namespace {

using T = LemmingActivityTrigger;

class InGameWindows : public ::testing::Test {
protected:
  InGameWindows() : previous_(ImGui::GetCurrentContext()), context_(ImGui::CreateContext()) {
    ImGui::SetCurrentContext(context_);
    ImGuiIO& io = ImGui::GetIO();
    io.IniFilename = nullptr;
    io.DisplaySize = ImVec2(1280.0f, 720.0f);
    io.DeltaTime = 1.0f / 60.0f;
    unsigned char* pixels = nullptr;
    int width = 0;
    int height = 0;
    io.Fonts->GetTexDataAsRGBA32(&pixels, &width, &height);
    for (char const* icon : {"immediate_icon.png", "blocked_icon.png", "falling_icon.png", "turned_icon.png"}) {
      testing_support::SaveImage(icon, 20, 20, [](int, int) { return 0xFFFFFFFFu; });
    }
  }
  ~InGameWindows() override {
    ImGui::DestroyContext(context_);
    ImGui::SetCurrentContext(previous_);
  }

  // One frame of the selector with the pointer at (x, y), the left button as given.
  void selectorFrame(float x, float y, bool down) {
    ImGuiIO& io = ImGui::GetIO();
    io.AddMousePosEvent(x, y);
    io.AddMouseButtonEvent(ImGuiMouseButton_Left, down);
    ImGui::NewFrame();
    DisplayActivitySelector(availabilities, selected, defaultTriggers, textures);
    ImGui::Render();
  }

  // A click, down in one frame and up in the next, at (x, y).
  void click(float x, float y) {
    selectorFrame(x, y, true);
    selectorFrame(x, y, false);
  }

  // A window that fits its contents takes its size in the frames after its first.
  ImRect settledSelector() {
    for (int i = 0; i < 3; ++i) {
      selectorFrame(-100.0f, -100.0f, false);
    }
    return windowRect("##ActivitySelector");
  }

  static ImRect windowRect(char const* name) {
    ImGuiWindow* window = ImGui::FindWindowByName(name);
    return window != nullptr ? window->Rect() : ImRect();
  }
  static bool shownLastFrame(char const* name) {
    ImGuiWindow* window = ImGui::FindWindowByName(name);
    return window != nullptr && window->LastFrameActive == ImGui::GetFrameCount();
  }

  testing_support::ScopedDataDirectory directory;
  testing_support::SoftwareTarget target{32, 32};
  TextureCache textures{target.renderer()};
  ActivityAvailabilities availabilities{{3, 13, 2, 3, 0, 2, 2}};
  LemmingActivity selected = LemmingActivity::Bridge;
  std::vector<T> defaultTriggers{T::Immediate,   T::BeforeFalling, T::Immediate, T::Immediate,
                                 T::Immediate,   T::WhenBlocked,   T::WhenBlocked};

private:
  ImGuiContext* previous_;
  ImGuiContext* context_;
};

}  // namespace

TEST_F(InGameWindows, TheSelectorSitsAtTheTopAndEveryActivityButOneWithNoneLeftCanBeClicked) {
  ImRect const rect = settledSelector();
  ASSERT_GT(rect.GetWidth(), 300.0f);
  EXPECT_FLOAT_EQ(rect.Min.y, 0.0f);
  EXPECT_NEAR((rect.Min.x + rect.Max.x) / 2.0f, 640.0f, 1.0f);

  // Click along the row of buttons, pixel by pixel in steps of 3, and note what each click selects.
  ImGuiStyle const& style = ImGui::GetStyle();
  float const rowY = rect.Min.y + style.WindowPadding.y + ImGui::GetFrameHeight() / 2.0f;
  std::set<int> chosen;
  for (float x = rect.Min.x; x < rect.Max.x; x += 3.0f) {
    click(x, rowY);
    chosen.insert(static_cast<int>(selected));
  }
  // Dig down has none left: its button is disabled, so it is never chosen with the mouse.
  EXPECT_EQ(chosen, (std::set<int>{0, 1, 2, 3, 5, 6}));
}

TEST_F(InGameWindows, TheIconsUnderTheSelectedActivityChangeOnlyItsDefaultTrigger) {
  selected = LemmingActivity::DigSideways;
  ImRect const rect = settledSelector();
  ImGuiStyle const& style = ImGui::GetStyle();
  // The icons are 20 pixels high on the line under the buttons.
  float const iconY = rect.Min.y + style.WindowPadding.y + ImGui::GetFrameHeight() + style.ItemSpacing.y + 10.0f;
  std::set<int> triggers;
  for (float x = rect.Min.x; x < rect.Max.x; x += 2.0f) {
    click(x, iconY);
    triggers.insert(static_cast<int>(defaultTriggers[5]));
    ASSERT_EQ(selected, LemmingActivity::DigSideways);
  }
  EXPECT_EQ(triggers, (std::set<int>{0, 1, 2, 3}));
  std::vector<T> others = defaultTriggers;
  others.erase(others.begin() + 5);
  EXPECT_EQ(others, (std::vector<T>{T::Immediate, T::BeforeFalling, T::Immediate, T::Immediate, T::Immediate,
                                    T::WhenBlocked}));
}

TEST_F(InGameWindows, TheTeamBarSitsAtTheBottomAndCountsDownInWholeSeconds) {
  for (int i = 0; i < 3; ++i) {
    ImGui::NewFrame();
    RenderTeamInfoAndScores({3, 1}, 2, 0, 7, 90'000'000);
    ImGui::Render();
  }
  ImRect const rect = windowRect("##TeamInfo");
  EXPECT_FLOAT_EQ(rect.Max.y, 720.0f);
  EXPECT_NEAR((rect.Min.x + rect.Max.x) / 2.0f, 640.0f, 1.0f);
  EXPECT_TRUE(shownLastFrame("##TeamInfo"));
  EXPECT_FALSE(shownLastFrame("##ActivitySelector"));

  EXPECT_EQ(TimeRemainingText(90'000'000), "Time remaining: 01:30");
  EXPECT_EQ(TimeRemainingText(59'999'999), "Time remaining: 00:59");
  EXPECT_EQ(TimeRemainingText(0), "Time remaining: 00:00");
  EXPECT_EQ(TimeRemainingText(600'000'000), "Time remaining: 10:00");
}
