#pragma once

#include <memory>
#include <vector>

#include "sim/Game.h"
#include "sim/IGame.h"

class SDL3App;

// The three games, in the order of the Game enumeration, for the life of the program.
class Games {
public:
  Games();

  IGame& refGame(Game game) const { return *games_[static_cast<std::size_t>(game)]; }
  std::shared_ptr<IGame> sharedGame(Game game) const { return games_[static_cast<std::size_t>(game)]; }
  std::size_t size() const { return games_.size(); }

  // Called once, before any Games object exists: loads the cursors.
  static void oneTimeAppInit(SDL3App& app);

private:
  std::vector<std::shared_ptr<IGame>> games_;
};
