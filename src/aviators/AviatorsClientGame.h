#pragma once

#include "aviators/AviatorsGame.h"

// Aviators in the client: the catalogue's tables, with sessions that draw, play sound and take input.
class AviatorsClientGame final : public AviatorsGame {
public:
  explicit AviatorsClientGame(Private key) : AviatorsGame(key) {}

  std::unique_ptr<IRunningGame> startSession(std::shared_ptr<SDL3App> app, int localPlayer,
                                             unsigned long long framePeriod, unsigned char delayFrames,
                                             GameSettings const& settings, std::vector<unsigned short> const& players,
                                             bool debugTools) const override;
};
