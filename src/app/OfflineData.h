#pragma once

#include <string>
#include <vector>

struct TutorialProgress;
class Recording;
struct GameResults;

// The offline part of the interface's snapshot. The pointers point into the shared data of the main loop.
struct OfflineData {
  std::string directory;
  TutorialProgress const* tutorialProgress = nullptr;
  std::vector<Recording> const* recordings = nullptr;
  std::vector<GameResults> const* playedGames = nullptr;
};
