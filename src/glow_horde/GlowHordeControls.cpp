#include "glow_horde/GlowHordeControls.h"

#include <algorithm>
#include <cmath>

namespace {

int WrapInto(int value, int size) {
  int const r = value % size;
  return r < 0 ? r + size : r;
}

// The cursors by direction filter (any, left, right) and trigger override (none, when blocked,
// before falling, after turning); the default triggers don't change the cursor.
constexpr char const* k_cursorNames[3][4] = {
    {"", "blocked", "falling", "turned"},
    {"left", "left_blocked", "left_falling", "left_turned"},
    {"right", "right_blocked", "right_falling", "right_turned"},
};

} // namespace

GlowHordeControls::GlowHordeControls(int worldWidth, int worldHeight, bool cameraWrapX, bool cameraWrapY)
    : worldWidth_(worldWidth), worldHeight_(worldHeight), cameraWrapX_(cameraWrapX), cameraWrapY_(cameraWrapY),
      defaultTriggers_{LemmingActivityTrigger::Immediate,   LemmingActivityTrigger::BeforeFalling,
                       LemmingActivityTrigger::Immediate,   LemmingActivityTrigger::Immediate,
                       LemmingActivityTrigger::Immediate,   LemmingActivityTrigger::WhenBlocked,
                       LemmingActivityTrigger::WhenBlocked} {}

void GlowHordeControls::centreOn(Position point, int screenWidth, int screenHeight) {
  camera_.x = static_cast<float>(point.x) - 0.5f * static_cast<float>(screenWidth);
  camera_.y = static_cast<float>(point.y) - 0.5f * static_cast<float>(screenHeight);
}

Position GlowHordeControls::worldPositionAt(float screenX, float screenY) const {
  Position p{static_cast<int>(camera_.x + screenX / camera_.zoom), static_cast<int>(camera_.y + screenY / camera_.zoom)};
  if (cameraWrapX_) {
    p.x = WrapInto(p.x, worldWidth_);
  }
  if (cameraWrapY_) {
    p.y = WrapInto(p.y, worldHeight_);
  }
  return p;
}

void GlowHordeControls::zoomAtPointer(float zoom, Pointer const& pointer) {
  float const oldZoom = camera_.zoom;
  float const newZoom = std::clamp(zoom, k_minZoom, k_maxZoom);
  camera_.zoom = newZoom;
  camera_.x += pointer.x / oldZoom - pointer.x / newZoom;
  camera_.y += pointer.y / oldZoom - pointer.y / newZoom;
}

void GlowHordeControls::handleEvent(SDL_Event const& event, Pointer const& pointer) {
  Position const world = worldPositionAt(pointer.x, pointer.y);
  if (pointer.overGame) {
    hoverPosition_ = world;
  } else {
    hoverPosition_.reset();
  }

  switch (event.type) {
  case SDL_EVENT_KEY_DOWN: {
    SDL_Scancode const key = event.key.scancode;
    if (key >= SDL_SCANCODE_F1 && key <= SDL_SCANCODE_F7) {
      selectedActivity_ = static_cast<LemmingActivity>(key - SDL_SCANCODE_F1);
    } else if (key == SDL_SCANCODE_KP_PLUS) {
      zoomAtPointer(camera_.zoom * 1.3f, pointer);
    } else if (key == SDL_SCANCODE_KP_MINUS) {
      zoomAtPointer(camera_.zoom * 0.7f, pointer);
    }
    break;
  }
  case SDL_EVENT_MOUSE_BUTTON_DOWN:
    // A click on the interface (the activity selector, the team bar) never gets here: the event pump
    // keeps it for the interface. Every left click that arrives is an order at the pointer.
    if (event.button.button == SDL_BUTTON_LEFT) {
      pendingOrder_ = orderAt(world);
    } else if (event.button.button == SDL_BUTTON_MIDDLE) {
      dragging_ = true;
      dragWorldPosition_ = world;
    }
    break;
  case SDL_EVENT_MOUSE_BUTTON_UP:
    if (event.button.button == SDL_BUTTON_MIDDLE) {
      dragging_ = false;
    }
    break;
  case SDL_EVENT_MOUSE_MOTION:
    if (dragging_) {
      camera_.x = static_cast<float>(dragWorldPosition_.x) - pointer.x / camera_.zoom;
      camera_.y = static_cast<float>(dragWorldPosition_.y) - pointer.y / camera_.zoom;
    }
    break;
  case SDL_EVENT_MOUSE_WHEEL:
    zoomAtPointer(camera_.zoom * (1.0f + 0.1f * event.wheel.y), pointer);
    break;
  default:
    break;
  }
}

char const* GlowHordeControls::applyHeldInput(HeldKeys const& keys, std::uint64_t milliseconds, Pointer const& pointer,
                                              int screenWidth, int screenHeight) {
  if (keys.left && keys.right) {
    // Both held: keep left if it was left, else right.
    directionFilter_ =
        directionFilter_ == DirectionFilter::FacingLeft ? DirectionFilter::FacingLeft : DirectionFilter::FacingRight;
  } else if (keys.left) {
    directionFilter_ = DirectionFilter::FacingLeft;
  } else if (keys.right) {
    directionFilter_ = DirectionFilter::FacingRight;
  } else {
    directionFilter_ = DirectionFilter::Any;
  }

  triggerOverride_.reset();
  if (keys.up) {
    triggerOverride_ = LemmingActivityTrigger::WhenBlocked;
  } else if (keys.down) {
    triggerOverride_ = LemmingActivityTrigger::BeforeFalling;
  } else if (keys.left && keys.right) {
    triggerOverride_ = LemmingActivityTrigger::AfterTurning;
  }
  char const* cursor =
      k_cursorNames[static_cast<int>(directionFilter_)][triggerOverride_ ? static_cast<int>(*triggerOverride_) : 0];

  float const speed = k_scrollSpeed / camera_.zoom;
  if (keys.a) {
    camera_.velocityX = -speed;
  } else if (keys.d) {
    camera_.velocityX = speed;
  } else {
    camera_.velocityX *= 0.9f;
  }
  if (keys.w) {
    camera_.velocityY = speed;
  } else if (keys.s) {
    camera_.velocityY = -speed;
  } else {
    camera_.velocityY *= 0.9f;
  }

  float const seconds = static_cast<float>(milliseconds) / 1000.0f;
  if (keys.q) {
    zoomAtPointer(camera_.zoom - seconds, pointer);
  }
  if (keys.e) {
    zoomAtPointer(camera_.zoom + seconds, pointer);
  }
  camera_.x += camera_.velocityX * seconds;
  camera_.y += camera_.velocityY * seconds;
  limitCamera(screenWidth, screenHeight);
  return cursor;
}

void GlowHordeControls::limitCamera(int screenWidth, int screenHeight) {
  auto const wrap = [](float value, int size) {
    return static_cast<float>(WrapInto(static_cast<int>(value), size));
  };
  auto const limit = [this](float value, int worldSize, int screenSize) {
    value = std::min(value, static_cast<float>(worldSize) - k_cameraMargin);
    return std::max(value, k_cameraMargin - static_cast<float>(screenSize) / camera_.zoom);
  };
  camera_.x = cameraWrapX_ ? wrap(camera_.x, worldWidth_) : limit(camera_.x, worldWidth_, screenWidth);
  camera_.y = cameraWrapY_ ? wrap(camera_.y, worldHeight_) : limit(camera_.y, worldHeight_, screenHeight);
}

LemmingActivityTrigger GlowHordeControls::triggerInEffect() const {
  return triggerOverride_.value_or(defaultTriggers_[static_cast<std::size_t>(selectedActivity_)]);
}

UIOrder GlowHordeControls::orderAt(Position point) const {
  return UIOrder{point.x, point.y, selectedActivity_, triggerInEffect(), directionFilter_};
}

std::optional<UIOrder> GlowHordeControls::takePendingOrder() {
  std::optional<UIOrder> taken = pendingOrder_;
  pendingOrder_.reset();
  return taken;
}
