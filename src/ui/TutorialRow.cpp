#include "ui/TutorialRow.h"

#include <imgui.h>

#include <algorithm>
#include <cstdint>

#include "ui/CentredButton.h"
#include "ui/CentredText.h"
#include "ui/ImGuiColours.h"
#include "ui/StartPage.h"

TutorialRowView TutorialRowFor(int level, TutorialProgress const& progress, bool unlocked) {
  TutorialRowView view;
  view.unlocked = unlocked;
  if (!unlocked) {
    return view;
  }
  int const status = progress.statusOf(level);
  int const attempts = progress.attemptsOf(level);
  if (status == TutorialProgress::kSkipped) {
    view.statusText = "Skipped";
    view.button = "Retry";
  } else if (status == TutorialProgress::kCompleted) {
    view.statusText = "Completed";
    view.button = "Play again";
  } else {
    view.button = attempts > 0 ? "Retry" : "Play";
    view.offersSkip = attempts > 0;
  }
  view.unlocksNext = status != TutorialProgress::kToDo;
  return view;
}

namespace {

// A text wrapped to a column of min(70 font sizes, available width) centred in the window. A text
// narrower than 0.6 of the column is centred in it; a longer one starts at the column's left edge.
void ColumnText(char const* text) {
  float const windowWidth = ImGui::GetWindowWidth();
  float const column = std::min(70.0f * ImGui::GetFontSize(), ImGui::GetContentRegionAvail().x);
  float const left = (windowWidth - column) / 2.0f;
  float const width = ImGui::CalcTextSize(text).x;
  float const x = width < 0.6f * column ? left + (column - width) / 2.0f : left;
  ImGui::SetCursorPosX(x);
  ImGui::PushTextWrapPos(left + column);
  ImGui::TextUnformatted(text);
  ImGui::PopTextWrapPos();
}

}  // namespace

bool RenderTutorialRow(int level, char const* title, char const* summary, char const* help,
                       TutorialProgress const& progress, std::vector<UICmd>& commands, bool unlocked) {
  TutorialRowView const view = TutorialRowFor(level, progress, unlocked);
  CentredText(std::string(title), ImGuiColours::grey);
  ColumnText(summary);
  if (!view.unlocked) {
    CentredText(std::string("Complete previous tutorials to unlock"), ImGuiColours::grey);
    ui::SeparatorLine();
    return false;
  }
  ImGui::PushID(level);
  ColumnText(help);
  if (view.statusText != nullptr) {
    bool const skipped = progress.statusOf(level) == TutorialProgress::kSkipped;
    CentredText(std::string(view.statusText), skipped ? ImGuiColours::orange : ImGuiColours::green);
  }
  if (CentredButton(view.button)) {
    commands.emplace_back(UICmd::PlayTutorial{static_cast<std::uint16_t>(level)});
  }
  if (view.offersSkip && CentredButton("Skip")) {
    commands.emplace_back(UICmd::SkipTutorial{static_cast<std::uint16_t>(level)});
  }
  ImGui::PopID();
  ui::SeparatorLine();
  return view.unlocksNext;
}

namespace {

struct TutorialLevelText {
  char const* title;
  char const* summary;
  char const* help;
};

constexpr TutorialLevelText kLevels[] = {
    {"Tutorial level 1 (Dig down)",
     "The exit is below the floor your hordeling lands on. Dig down through the floor to reach the exit.",
     "Drag with middle mouse or use the WASD keys to move the view and see the exit. You'll need to select the dig "
     "down activity, move the mouse cursor near the hordeling so that target brackets appear, and then left click "
     "to give the order."},
    {"Tutorial level 2 (Dig sideways)",
     "The exit is below you, once again. Dig sideways through a wall to reach it.",
     "This time you need to select the dig sideways activity. By default, the hordeling will wait until blocked "
     "before starting to dig (which is what you want in this case), but this can be changed with the icons under "
     "the activity selector."},
    {"Tutorial level 3 (Bridges)", "Build bridges across the gap to reach the exit. Watch out for foliage!",
     "Select the bridge activity and click when you want to start building. It gets trickier in this one as "
     "you'll need to give additional orders and extend a bridge several times to reach the other side, but you "
     "have a lot of bridge orders available. Note that hordelings falling through the bottom of this map come "
     "back in at the top (so it can be ok if they fall). Try setting the order trigger (using the 'before "
     "falling' icon under the bridge activity selector) so that bridges start automatically when hordelings are "
     "about to fall!"},
    {"Tutorial level 4 (The Pit)", "Build bridges to enable your hordelings to escape up out of the pit.",
     "Bridges need to start close to the walls, which is difficult to achieve by clicking immediate bridge "
     "orders, but you can use the 'after turning around' trigger setting for this. The left and right arrow keys "
     "can also be used to only apply orders to hordelings moving in a desired direction (left or right)."},
};

}  // namespace

bool RenderTutorialPage(TutorialProgress const& progress, std::vector<UICmd>& commands) {
  std::optional<ui::ScopedEnd> page = ui::StartPage("Glow Horde Tutorial");
  if (!page) {
    return false;
  }
  bool unlocked = true;
  int level = 0;
  for (TutorialLevelText const& text : kLevels) {
    unlocked = RenderTutorialRow(level, text.title, text.summary, text.help, progress, commands, unlocked);
    ++level;
  }
  ImGui::Spacing();
  return CentredButton("Return to main menu");
}
