#include <gtest/gtest.h>

#include "glow_horde/TutorialProgress.h"
#include "support/TempDirectory.h"

TEST(TutorialProgress, SavesStatusesThenAttemptsInRisingOrder) {
  TempDirectory directory;
  TutorialProgress progress;
  progress.status[1] = TutorialProgress::kSkipped;
  progress.status[0] = TutorialProgress::kCompleted;
  progress.status[3] = TutorialProgress::kToDo;  // status 0 isn't written
  progress.attempts[1] = 1;
  progress.attempts[0] = 2;
  SaveTutorialProgress(directory.str(), progress);
  EXPECT_EQ(directory.read("userdata/progress.ini"),
            "[tutorial]\n0=completed\n1=skipped\n\n[attempts]\n0=2\n1=1\n");

  TutorialProgress const loaded = LoadTutorialProgress(directory.str());
  EXPECT_EQ(loaded.statusOf(0), TutorialProgress::kCompleted);
  EXPECT_EQ(loaded.statusOf(1), TutorialProgress::kSkipped);
  EXPECT_EQ(loaded.statusOf(3), TutorialProgress::kToDo);
  EXPECT_EQ(loaded.attemptsOf(0), 2);
  EXPECT_EQ(loaded.attemptsOf(2), 0);

  // An empty record still writes the two sections and the empty line.
  SaveTutorialProgress(directory.str(), TutorialProgress{});
  EXPECT_EQ(directory.read("userdata/progress.ini"), "[tutorial]\n\n[attempts]\n");
  EXPECT_EQ(LoadTutorialProgress(directory.str()), TutorialProgress{});
}

TEST(TutorialProgress, AMissingFileOrAnUnwritableFolderCostsOnlyProgress) {
  TempDirectory directory;
  EXPECT_EQ(LoadTutorialProgress((directory.path() / "nothing-here").string()), TutorialProgress{});
  // The storage "directory" is a file: the folder can't be made and nothing is written or raised.
  directory.write("not-a-folder", "x");
  TutorialProgress progress;
  progress.attempts[0] = 1;
  EXPECT_NO_THROW(SaveTutorialProgress((directory.path() / "not-a-folder").string(), progress));
  EXPECT_EQ(directory.read("not-a-folder"), "x");
}

TEST(TutorialProgress, LoadingPassesOverDamagedLines) {
  TempDirectory directory;
  directory.write("userdata/progress.ini",
                  "garbage before any section\n"
                  "0=completed\n"                // no section yet: ignored
                  "  [tutorial]\n"
                  "\t1 \t=  skipped\n"           // blanks around "=" are fine
                  "x=completed\n"                // left side isn't a number
                  "2=finished\n"                 // unknown word
                  "3 completed\n"                // no "="
                  "4=completed\n"
                  "4=skipped\n"                  // a later line replaces an earlier one
                  "\n"
                  "[Attempts]\n"                 // another case of letters: no section
                  "1=5\n"
                  "[attempts] trailing\n"        // something follows: no section
                  "2=6\n"
                  "[attempts]\n"
                  "0=0\n"                        // a count of 0 is no entry
                  "1=-2\n"
                  "2=three\n"
                  "3 = 3\n"
                  "4=7\n");
  TutorialProgress const loaded = LoadTutorialProgress(directory.str());
  EXPECT_EQ(loaded.status, (std::map<int, int>{{1, TutorialProgress::kSkipped}, {4, TutorialProgress::kSkipped}}));
  EXPECT_EQ(loaded.attempts, (std::map<int, int>{{3, 3}, {4, 7}}));
}
