#include "sim/HeadlessGames.h"

#include "aviators/AviatorsGame.h"
#include "glow_horde/GlowHordeGame.h"
#include "vipers/VipersGame.h"

HeadlessGames::HeadlessGames() {
  games_.push_back(std::make_shared<GlowHordeGame>(GlowHordeGame::Private{}));
  games_.push_back(std::make_shared<AviatorsGame>(AviatorsGame::Private{}));
  games_.push_back(std::make_shared<VipersGame>(VipersGame::Private{}));
}

IGame const* HeadlessGames::find(Game game) const {
  auto const index = static_cast<std::size_t>(game);
  return index < games_.size() ? games_[index].get() : nullptr;
}
