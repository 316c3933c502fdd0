#include "sim/Games.h"

#include "aviators/AviatorsClientGame.h"
#include "glow_horde/GlowHordeClientGame.h"
#include "vipers/VipersClientGame.h"

Games::Games() {
  games_.push_back(std::make_shared<GlowHordeClientGame>(GlowHordeClientGame::Private{}));
  games_.push_back(std::make_shared<AviatorsClientGame>(AviatorsClientGame::Private{}));
  games_.push_back(std::make_shared<VipersClientGame>(VipersClientGame::Private{}));
}
