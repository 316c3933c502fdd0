#pragma once

#include "glow_horde/DirectionFilter.h"
#include "glow_horde/LemmingActivity.h"
#include "glow_horde/LemmingActivityTrigger.h"

// What the player asked for, before it is resolved to a unit: a world position and the choice of
// activity, trigger and direction filter in force at the click.
struct UIOrder {
  int x = 0;
  int y = 0;
  LemmingActivity activity = LemmingActivity::Bridge;
  LemmingActivityTrigger trigger = LemmingActivityTrigger::Immediate;
  DirectionFilter filter = DirectionFilter::Any;

  friend bool operator==(UIOrder const&, UIOrder const&) = default;
};
