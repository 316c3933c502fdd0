#include "vipers/VipersClientGame.h"

#include "vipers/RunningVipers.h"

std::unique_ptr<IRunningGame> VipersClientGame::startSession(std::shared_ptr<SDL3App> app, int localPlayer,
                                                             unsigned long long framePeriod, unsigned char delayFrames,
                                                             GameSettings const& settings,
                                                             std::vector<unsigned short> const& players,
                                                             bool debugTools) const {
  MapSettings const map = mapFor(settings);
  return std::make_unique<RunningVipers>(shared_from_this(), std::move(app), localPlayer, framePeriod, delayFrames,
                                         settings, map, players, debugTools);
}
