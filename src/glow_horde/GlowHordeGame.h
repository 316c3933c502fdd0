#pragma once

#include "sim/GameCatalogue.h"

class SDL3App;

// The catalogue of Glow Horde: schema, maps, co-op challenges, ranked matches; its sessions here are
// headless (the simulation alone), the client's own draw and sound (GlowHordeClientGame).
class GlowHordeGame : public GameCatalogue<GlowHordeGame, Game::GlowHorde> {
public:
  explicit GlowHordeGame(Private);

  std::unique_ptr<IRunningGame> startSession(std::shared_ptr<SDL3App> app, int localPlayer,
                                             unsigned long long framePeriod, unsigned char delayFrames,
                                             GameSettings const& settings, std::vector<unsigned short> const& players,
                                             bool debugTools) const override;
  std::string formatResult(std::vector<long long> const& row, bool isTeamResult) const override;

  // Loads the twelve cursors of the game and puts the plain one in force.
  static void oneTimeAppInit(SDL3App& app);
};
