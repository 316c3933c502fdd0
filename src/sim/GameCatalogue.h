#pragma once

#include <memory>
#include <stdexcept>
#include <string>

#include "sim/IGame.h"

class Games;
class HeadlessGames;

// What every game's catalogue shares: only Games and HeadlessGames make one (through the Private pass key), a session
// holds on to its game through shared_from_this(), and the game names its own type. The catalogue
// fills the schema, the maps and the lookup in its constructor.
template <typename Derived, Game kType>
class GameCatalogue : public IGame, public std::enable_shared_from_this<Derived> {
public:
  Game type() const final { return kType; }

protected:
  struct Private {
    explicit Private() = default;
  };
  friend class Games;
  friend class HeadlessGames;
class HeadlessGames;

  // For a game whose sessions this build doesn't have: checks the map like any session would, then
  // refuses with a sentence that names the game.
  [[noreturn]] void refuseSession(GameSettings const& settings, char const* gameName) const {
    this->mapFor(settings);
    throw std::runtime_error(std::string(gameName) + " sessions are not available in this build of the client.");
  }
};
