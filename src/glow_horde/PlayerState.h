#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "sim/IHasher.h"
#include "world/Position.h"
#include "glow_horde/ActivityAvailabilities.h"
#include "glow_horde/DirectionFilter.h"
#include "glow_horde/IHordelingWorld.h"
#include "glow_horde/Lemming.h"
#include "glow_horde/Order.h"
#include "glow_horde/UIOrder.h"

class ChunkedWorld;
// A player's colour, red, green, blue and alpha: part of its hashed state, and how its units are drawn.
struct UnitColour {
  std::uint8_t r = 255;
  std::uint8_t g = 255;
  std::uint8_t b = 255;
  std::uint8_t a = 255;
};

class Renderer;

// Everything one player owns in a game: the units, the spawn point and its schedule, and the counts
// of orders left. Steps its units in a fixed order, resolves clicks to unit orders and applies
// orders. All of it is the same on every client except drawing and the selection preview.
class PlayerState {
public:
  struct Setup {
    int index = 0;
    Position spawn;
    int toSpawn = 0;
    std::int64_t spawnInterval = 0; // microseconds between units
    std::int64_t framePeriod = 0;   // microseconds of game time per frame
    bool nextFacingRight = false;
    UnitColour colour{255, 255, 255, 255};
    ActivityAvailabilities availabilities;
    int worldWidth = 0;
    int worldHeight = 0;
    bool cameraWrapX = false;
    bool cameraWrapY = false;
  };

  // Units within this squared distance of a click may be chosen: 150 pixels.
  static constexpr std::int64_t k_selectionRadiusSquared = 150 * 150;

  explicit PlayerState(Setup const& setup);

  // One frame of this player over the session's world.
  void update(ChunkedWorld& world);
  // The same frame over any world a unit can see; what update(ChunkedWorld&) runs.
  void update(IHordelingWorld& world);

  void createLemming(int x, int y, bool facingRight);
  // Removes every unit within radius of the exit, measured across wrapping axes; returns how many.
  int removeAtExit(ChunkedWorld const& world, Position exit, int radius);
  // The index of the unit nearest (x, y) that the filter and trigger allow, within 150 pixels.
  std::optional<std::uint16_t> closestTo(int x, int y, DirectionFilter filter, LemmingActivityTrigger trigger) const;
  std::optional<Position> previewUnitSelectionForOrder(UIOrder const& order) const;
  std::optional<Order> resolveUIOrder(UIOrder const& order) const;
  // True if the order took effect; false, with no change at all, if none of that activity is left.
  // The order must name one of this player's units (see namesOneOfItsUnits).
  bool giveOrder(Order const& order);
  // Whether the order's place is within the list of units and the unit there has the order's id.
  bool namesOneOfItsUnits(Order const& order) const;

  void render(Renderer const& renderer, DirectionFilter filter, LemmingActivityTrigger trigger) const;
  // The units that render leaves out for this choice of filter and trigger, for a dimmer pass.
  void renderLowAlpha(Renderer const& renderer, DirectionFilter filter, LemmingActivityTrigger trigger) const;

  // index, spawn, toSpawn, spawnClock, nextFacingRight, colour, every unit, the seven availabilities.
  void hash(IHasher& hasher) const;
  void serialiseHashedData(std::vector<unsigned char>& out) const;

  int index() const { return index_; }
  Position spawn() const { return spawn_; }
  int toSpawn() const { return toSpawn_; }
  std::int64_t spawnClock() const { return spawnClock_; }
  bool nextFacingRight() const { return nextFacingRight_; }
  UnitColour colour() const { return colour_; }
  std::vector<Lemming> const& lemmings() const { return lemmings_; }
  ActivityAvailabilities const& availabilities() const { return availabilities_; }

private:
  // Whether render draws the unit at full strength for this choice of filter and trigger.
  static bool shownFor(Lemming const& lemming, DirectionFilter filter, LemmingActivityTrigger trigger);
  template <typename Sink> void feedHashedFields(Sink&& sink) const;

  int index_;
  Position spawn_;
  int toSpawn_;
  std::int64_t spawnInterval_;
  std::int64_t framePeriod_;
  std::int64_t spawnClock_ = 0;
  bool nextFacingRight_;
  UnitColour colour_;
  std::uint16_t nextId_ = 0;
  std::vector<Lemming> lemmings_;
  ActivityAvailabilities availabilities_;
  int worldWidth_;
  int worldHeight_;
  bool cameraWrapX_;
  bool cameraWrapY_;
};
