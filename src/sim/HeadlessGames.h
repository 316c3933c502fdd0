#pragma once

#include <cstddef>
#include <memory>
#include <vector>

#include "sim/Game.h"
#include "sim/IGame.h"

// The three games with the client's very catalogues, whose sessions are the simulations alone: for
// programs without a window that replay recordings. startSession ignores its SDL3App (pass nullptr).
class HeadlessGames {
public:
  HeadlessGames();

  // nullptr for a value that isn't one of the games (a number read from a file).
  IGame const* find(Game game) const;
  IGame const& refGame(Game game) const { return *games_[static_cast<std::size_t>(game)]; }
  std::size_t size() const { return games_.size(); }

private:
  std::vector<std::shared_ptr<IGame>> games_;
};
