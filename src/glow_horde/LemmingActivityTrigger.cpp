#include "glow_horde/LemmingActivityTrigger.h"

char const* LemmingActivityTriggerLabel(LemmingActivityTrigger trigger) {
  switch (trigger) {
  case LemmingActivityTrigger::Immediate:
    return "immediate";
  case LemmingActivityTrigger::WhenBlocked:
    return "when blocked";
  case LemmingActivityTrigger::BeforeFalling:
    return "before falling";
  case LemmingActivityTrigger::AfterTurning:
    return "after turning";
  }
  return "";
}
