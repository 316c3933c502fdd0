#include "glow_horde/PlayerState.h"

#include "present/Renderer.h"

// The drawing of a player's units, apart from the simulation so that programs without a window link
// the simulation alone.

namespace {

char const* TriggerIcon(LemmingActivityTrigger trigger) {
  switch (trigger) {
  case LemmingActivityTrigger::WhenBlocked:
    return "blocked_icon.png";
  case LemmingActivityTrigger::BeforeFalling:
    return "falling_icon.png";
  case LemmingActivityTrigger::AfterTurning:
    return "turned_icon.png";
  case LemmingActivityTrigger::Immediate:
    break;
  }
  return nullptr;
}

}  // namespace

void PlayerState::render(Renderer const& renderer, DirectionFilter filter, LemmingActivityTrigger trigger) const {
  for (Lemming const& lemming : lemmings_) {
    Position const p = lemming.position();
    if (shownFor(lemming, filter, trigger)) {
      renderer.renderLemming(p);
    }
    if (lemming.activity().has_value()) {
      if (char const* icon = TriggerIcon(lemming.trigger())) {
        renderer.renderTexture_CentreAnchor(icon, static_cast<float>(p.x), static_cast<float>(p.y + 23), 1.0f,
                                            0.0f, !lemming.facingRight());
      }
    }
  }
  renderer.renderEntry(spawn_);
}

void PlayerState::renderLowAlpha(Renderer const& renderer, DirectionFilter filter,
                                 LemmingActivityTrigger trigger) const {
  for (Lemming const& lemming : lemmings_) {
    if (!shownFor(lemming, filter, trigger)) {
      renderer.renderLemming(lemming.position());
    }
  }
}
