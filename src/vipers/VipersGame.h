#pragma once

#include "sim/GameCatalogue.h"

// The catalogue of Vipers: its map, schema and ranked matches, and the wording of results. Its sessions
// here are headless (the simulation alone); the client's own draw and sound (VipersClientGame).
class VipersGame : public GameCatalogue<VipersGame, Game::Vipers> {
public:
  explicit VipersGame(Private);

  std::unique_ptr<IRunningGame> startSession(std::shared_ptr<SDL3App> app, int localPlayer,
                                             unsigned long long framePeriod, unsigned char delayFrames,
                                             GameSettings const& settings, std::vector<unsigned short> const& players,
                                             bool debugTools) const override;
  std::string formatResult(std::vector<long long> const& row, bool isTeamResult) const override;
};
