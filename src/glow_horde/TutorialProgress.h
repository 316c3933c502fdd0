#pragma once

#include <iosfwd>
#include <map>
#include <string>

// How far the player has come through the tutorial levels, numbered from 0. A level with no entry has
// status 0 (to do) and no attempts.
struct TutorialProgress {
  static constexpr int kToDo = 0;
  static constexpr int kSkipped = 1;
  static constexpr int kCompleted = 2;

  std::map<int, int> status;
  std::map<int, int> attempts;

  int statusOf(int level) const;
  int attemptsOf(int level) const;

  friend bool operator==(TutorialProgress const&, TutorialProgress const&) = default;
};

// Reads "userdata/progress.ini" under the storage directory. A missing or damaged file costs only
// progress: unreadable lines are passed over and nothing is reported.
TutorialProgress LoadTutorialProgress(std::string const& storageDirectory);

// The same from the text of such a file, and the text that saving writes.
TutorialProgress ReadTutorialProgress(std::istream& file);
void WriteTutorialProgress(std::ostream& file, TutorialProgress const& progress);

// Writes the record, making the folder if needed. A file that can't be written is skipped silently.
void SaveTutorialProgress(std::string const& storageDirectory, TutorialProgress const& progress);

// The path of the progress file under a storage directory.
std::string TutorialProgressPath(std::string const& storageDirectory);
