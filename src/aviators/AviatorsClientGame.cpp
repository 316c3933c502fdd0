#include "aviators/AviatorsClientGame.h"

#include "aviators/RunningAviators.h"

std::unique_ptr<IRunningGame> AviatorsClientGame::startSession(std::shared_ptr<SDL3App> app, int localPlayer,
                                                               unsigned long long framePeriod,
                                                               unsigned char delayFrames, GameSettings const& settings,
                                                               std::vector<unsigned short> const& players,
                                                               bool debugTools) const {
  MapSettings const map = mapFor(settings);
  return std::make_unique<RunningAviators>(shared_from_this(), std::move(app), localPlayer, framePeriod, delayFrames,
                                           settings, map, players, debugTools);
}
