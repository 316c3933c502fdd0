#include <gtest/gtest.h>

#include <string>

#include "ui/TutorialRow.h"

namespace {

std::string Text(char const* text) { return text == nullptr ? "-" : text; }

TEST(TutorialRowTest, RowsFollowStatusAttemptsAndTheRowBefore) {
  struct Case {
    int status;
    int attempts;
    bool unlocked;
    char const* statusText;
    char const* button;
    bool offersSkip;
    bool unlocksNext;
  };
  Case const cases[] = {
      {0, 0, true, nullptr, "Play", false, false},         // fresh: play, no skip, next stays locked
      {0, 1, true, nullptr, "Retry", true, false},         // one failed attempt: retry or skip
      {1, 1, true, "Skipped", "Retry", false, true},       // skipped: no second skip, next unlocked
      {2, 1, true, "Completed", "Play again", false, true},
      {2, 5, true, "Completed", "Play again", false, true},  // completed stays so whatever the attempts
      {1, 0, true, "Skipped", "Retry", false, true},       // a file may skip without attempts
      {2, 3, false, nullptr, nullptr, false, false},       // locked: nothing on offer, whatever the record
      {0, 0, false, nullptr, nullptr, false, false},
  };
  for (Case const& c : cases) {
    TutorialProgress progress;
    if (c.status != 0) progress.status[2] = c.status;
    if (c.attempts != 0) progress.attempts[2] = c.attempts;
    TutorialRowView const view = TutorialRowFor(2, progress, c.unlocked);
    SCOPED_TRACE(testing::Message() << "status " << c.status << ", attempts " << c.attempts << ", unlocked "
                                    << c.unlocked);
    EXPECT_EQ(view.unlocked, c.unlocked);
    EXPECT_EQ(Text(view.statusText), Text(c.statusText));
    EXPECT_EQ(Text(view.button), Text(c.button));
    EXPECT_EQ(view.offersSkip, c.offersSkip);
    EXPECT_EQ(view.unlocksNext, c.unlocksNext);
  }
}

// The rows unlock in a chain: each row is unlocked by what the row before returned.
TEST(TutorialRowTest, OnlyTheLevelsAfterAFinishedOneUnlock) {
  TutorialProgress progress;
  progress.status[0] = TutorialProgress::kCompleted;
  progress.attempts[1] = 2;
  bool unlocked = true;
  std::string buttons;
  for (int level = 0; level < 4; ++level) {
    TutorialRowView const view = TutorialRowFor(level, progress, unlocked);
    buttons += Text(view.button) + (view.offersSkip ? "+Skip" : "") + ";";
    unlocked = view.unlocksNext;
  }
  EXPECT_EQ(buttons, "Play again;Retry+Skip;-;-;");
}

}  // namespace
