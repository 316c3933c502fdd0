#pragma once

#include <SDL3/SDL.h>

#include <cstdint>
#include <string>
#include <vector>

#include "sim/GameResults.h"
#include "sim/Games.h"
#include "sim/Recording.h"
#include "glow_horde/TutorialProgress.h"
#include "ui/UI.h"

namespace mainloop {

// What lasts for the whole run, whatever the state.
struct SharedData {
  Games games;
  SDL_Texture* banner = nullptr;  // from the shell's texture cache, not owned
  std::string directory;          // the storage directory
  TutorialProgress tutorialProgress;
  std::vector<Recording> recordings;
  std::vector<GameResults> playedGames;  // the results held in each recording, in the same order
  std::string ip;
  std::uint16_t port = 0;
  std::string randomCredentialsDirectory;
  UI ui;
};

}  // namespace mainloop
