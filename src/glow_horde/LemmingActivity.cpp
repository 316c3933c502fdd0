#include "glow_horde/LemmingActivity.h"

char const* LemmingActivityLabel(LemmingActivity activity) {
  switch (activity) {
  case LemmingActivity::Bridge:
    return "Bridge";
  case LemmingActivity::HorizontalBridge:
    return "Horizontal bridge";
  case LemmingActivity::RaiseGround:
    return "Raise ground";
  case LemmingActivity::Block:
    return "Block";
  case LemmingActivity::DigDown:
    return "Dig down";
  case LemmingActivity::DigSideways:
    return "Dig sideways";
  case LemmingActivity::DigUpwards:
    return "Dig upwards";
  }
  return "";
}
