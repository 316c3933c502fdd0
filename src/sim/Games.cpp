#include "sim/Games.h"

#include "aviators/AviatorsGame.h"
#include "glow_horde/GlowHordeGame.h"
#include "vipers/VipersGame.h"

Games::Games() {
  games_.push_back(std::make_shared<GlowHordeGame>(GlowHordeGame::Private{}));
  games_.push_back(std::make_shared<AviatorsGame>(AviatorsGame::Private{}));
  games_.push_back(std::make_shared<VipersGame>(VipersGame::Private{}));
}
