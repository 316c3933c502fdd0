#include "sim/Game.h"

char const* GameDisplayName(Game game) {
  switch (game) {
    case Game::GlowHorde: return "Glow Horde";
    case Game::Aviators: return "Aviators";
    case Game::Vipers: return "Vipers";
  }
  return "Unknown game";
}

char const* GameTypeDisplayName(GameType type) {
  switch (type) {
    case GameType::Friendly: return "Friendly";
    case GameType::CoopChallenge: return "Co-op or single player challenge";
    case GameType::RankedMatch: return "Ranked match";
  }
  return "Unknown game type";
}
