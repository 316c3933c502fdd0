#pragma once

#include <SDL3/SDL.h>

#include <cstdint>
#include <optional>
#include <vector>

#include "present/Camera.h"
#include "world/Position.h"
#include "glow_horde/DirectionFilter.h"
#include "glow_horde/LemmingActivity.h"
#include "glow_horde/LemmingActivityTrigger.h"
#include "glow_horde/UIOrder.h"

// The player's side of a Glow Horde session: the view, the chosen activity, filter and triggers, and
// the click that waits to become an order. It reads input as values handed to it (an event, the
// pointer, the keys held) and never touches the simulation, so it can be tested without a window.
class GlowHordeControls {
public:
  // The pointer on screen, y upward, and whether it is over the game rather than the interface.
  struct Pointer {
    float x = 0.0f;
    float y = 0.0f;
    bool overGame = false;
  };

  // The keys that act while held.
  struct HeldKeys {
    bool left = false;
    bool right = false;
    bool up = false;
    bool down = false;
    bool w = false;
    bool a = false;
    bool s = false;
    bool d = false;
    bool q = false;
    bool e = false;
  };

  static constexpr float k_minZoom = 0.5f;
  static constexpr float k_maxZoom = 3.0f;
  // Without wrapping, at least this much of the world stays in view.
  static constexpr float k_cameraMargin = 150.0f;
  // World pixels a second at zoom 1.
  static constexpr float k_scrollSpeed = 500.0f;

  GlowHordeControls(int worldWidth, int worldHeight, bool cameraWrapX, bool cameraWrapY);

  // Puts the world point at the centre of the screen.
  void centreOn(Position point, int screenWidth, int screenHeight);
  // The world point under a screen point, brought into the world on the wrapping axes.
  Position worldPositionAt(float screenX, float screenY) const;

  // One input event. Keys F1 to F7 choose the activity, keypad plus and minus and the wheel zoom at
  // the pointer, a left click over the game leaves an order waiting, the middle button drags the view.
  void handleEvent(SDL_Event const& event, Pointer const& pointer);
  // Once a rendered frame: the arrows set the filter and the trigger override, WASD scroll, Q and E
  // zoom, and the camera is wrapped or kept near the world. Returns the name of the cursor to show.
  char const* applyHeldInput(HeldKeys const& keys, std::uint64_t milliseconds, Pointer const& pointer,
                             int screenWidth, int screenHeight);
  // Sets the zoom, within its limits, keeping the world point under the pointer where it is.
  void zoomAtPointer(float zoom, Pointer const& pointer);

  // The override if an arrow key gives one, else the default of the selected activity.
  LemmingActivityTrigger triggerInEffect() const;
  // The order that a click at this world point would give now.
  UIOrder orderAt(Position point) const;
  std::optional<UIOrder> takePendingOrder();
  void setPendingOrder(UIOrder const& order) { pendingOrder_ = order; }
  std::optional<UIOrder> const& pendingOrder() const { return pendingOrder_; }

  Camera const& camera() const { return camera_; }
  Camera& camera() { return camera_; }
  LemmingActivity selectedActivity() const { return selectedActivity_; }
  LemmingActivity& selectedActivity() { return selectedActivity_; }
  DirectionFilter directionFilter() const { return directionFilter_; }
  std::optional<LemmingActivityTrigger> triggerOverride() const { return triggerOverride_; }
  std::vector<LemmingActivityTrigger> const& defaultTriggers() const { return defaultTriggers_; }
  std::vector<LemmingActivityTrigger>& defaultTriggers() { return defaultTriggers_; }
  std::optional<Position> const& hoverPosition() const { return hoverPosition_; }
  bool dragging() const { return dragging_; }

private:
  void limitCamera(int screenWidth, int screenHeight);

  int worldWidth_;
  int worldHeight_;
  bool cameraWrapX_;
  bool cameraWrapY_;
  Camera camera_;
  LemmingActivity selectedActivity_ = LemmingActivity::Bridge;
  DirectionFilter directionFilter_ = DirectionFilter::Any;
  std::optional<UIOrder> pendingOrder_;
  std::optional<Position> hoverPosition_;
  bool dragging_ = false;
  Position dragWorldPosition_;
  std::vector<LemmingActivityTrigger> defaultTriggers_;
  std::optional<LemmingActivityTrigger> triggerOverride_;
};
