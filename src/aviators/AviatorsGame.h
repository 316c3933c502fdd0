#pragma once

#include "sim/GameCatalogue.h"

// The catalogue of Aviators: its map, schema and ranked matches, and the wording of results.
class AviatorsGame final : public GameCatalogue<AviatorsGame, Game::Aviators> {
public:
  explicit AviatorsGame(Private);

  std::unique_ptr<IRunningGame> startSession(std::shared_ptr<SDL3App> app, int localPlayer,
                                             unsigned long long framePeriod, unsigned char delayFrames,
                                             GameSettings const& settings, std::vector<unsigned short> const& players,
                                             bool debugTools) const override;
  std::string formatResult(std::vector<long long> const& row, bool isTeamResult) const override;
};
