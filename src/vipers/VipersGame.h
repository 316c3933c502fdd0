#pragma once

#include <memory>

#include "IGame.h"

class Games;

// The catalogue of Vipers: its map, schema and ranked matches, and the wording of results.
class VipersGame final : public IGame, public std::enable_shared_from_this<VipersGame> {
  struct Private {
    explicit Private() = default;
  };
  friend class Games;

public:
  explicit VipersGame(Private);

  Game type() const override { return Game::Vipers; }
  std::unique_ptr<IRunningGame> startSession(std::shared_ptr<SDL3App> app, int localPlayer,
                                             unsigned long long framePeriod, unsigned char delayFrames,
                                             GameSettings const& settings, std::vector<unsigned short> const& players,
                                             bool debugTools) const override;
  std::string formatResult(std::vector<long long> const& row, bool isTeamResult) const override;
};
