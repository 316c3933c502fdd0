#include "glow_horde/GlowHordeClientGame.h"

#include "glow_horde/RunningGlowHorde.h"

std::unique_ptr<IRunningGame> GlowHordeClientGame::startSession(std::shared_ptr<SDL3App> app, int localPlayer,
                                                                unsigned long long framePeriod,
                                                                unsigned char delayFrames, GameSettings const& settings,
                                                                std::vector<unsigned short> const& players,
                                                                bool) const {
  MapSettings const map = mapFor(settings);
  return std::make_unique<RunningGlowHorde>(shared_from_this(), std::move(app), localPlayer, framePeriod, delayFrames,
                                            settings, map, players);
}
