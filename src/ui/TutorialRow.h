#pragma once

#include <vector>

#include "app/UICmd.h"
#include "glow_horde/TutorialProgress.h"

// What one row of the tutorial page offers, worked out from the saved progress alone.
struct TutorialRowView {
  bool unlocked = false;
  char const* statusText = nullptr;  // "Skipped", "Completed", or none
  char const* button = nullptr;      // "Play", "Retry" or "Play again"; none while locked
  bool offersSkip = false;           // only to do, and tried at least once
  bool unlocksNext = false;          // skipped or completed
};

TutorialRowView TutorialRowFor(int level, TutorialProgress const& progress, bool unlocked);

// Draws one row of the tutorial page: title, summary and, when unlocked, help, status and buttons, then a
// separator line. A button press adds PlayTutorial or SkipTutorial of the level. Returns whether the
// next row is unlocked.
bool RenderTutorialRow(int level, char const* title, char const* summary, char const* help,
                       TutorialProgress const& progress, std::vector<UICmd>& commands, bool unlocked);

// The tutorial page's four rows under its title, and the way back. Returns true when "Return to main
// menu" was pressed.
bool RenderTutorialPage(TutorialProgress const& progress, std::vector<UICmd>& commands);
