#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "sim/IHasher.h"
#include "world/Position.h"
#include "glow_horde/IHordelingWorld.h"
#include "glow_horde/LemmingActivity.h"
#include "glow_horde/LemmingActivityTrigger.h"

// One hordeling: an integer state machine stepped once a simulation frame. It walks on its own,
// climbs up to four pixels, drops up to five without leaving the ground, falls one pixel a frame,
// and carries out one ordered activity at a time. A plain value: copying it is how look-ahead works.
class Lemming {
public:
  // A new unit has no activity, zero counters and starts in the air.
  Lemming(std::uint16_t id, Position position, bool facingRight);

  // Replaces whatever activity was set, running or pending, and restarts its counters.
  void give_order(LemmingActivity activity, LemmingActivityTrigger trigger);

  // One frame: trigger look-ahead and one step, then the position is wrapped through the world.
  void update(IHordelingWorld& world);
  // Trigger look-ahead, one step; no wrapping.
  void update_unwrapped_with_trigger_checks(IHordelingWorld& world);
  // One step of the state machine, with no trigger checks and no wrapping.
  void update_unwrapped(IHordelingWorld& world);

  std::uint16_t id() const { return id_; }
  Position position() const { return position_; }
  bool facingRight() const { return facingRight_; }
  std::optional<LemmingActivity> activity() const { return activity_; }
  LemmingActivityTrigger trigger() const { return trigger_; }
  std::int32_t actionTimer() const { return actionTimer_; }
  std::int32_t activityFrames() const { return activityFrames_; }
  bool inAir() const { return inAir_; }
  // An activity is running when it is set and its trigger is Immediate; otherwise it is pending.
  bool hasRunningActivity() const { return activity_.has_value() && trigger_ == LemmingActivityTrigger::Immediate; }

  // Feeds id, x, y, facing, activity (flag, then value if set), actionTimer, activityFrames and
  // inAir, each at its own width. The trigger is not part of the digest.
  void hash(IHasher& hasher) const;
  // Appends exactly the bytes that hash feeds, in the same order.
  void serialiseHashedData(std::vector<unsigned char>& out) const;

private:
  bool isRunning(LemmingActivity activity) const { return activity_ == activity && trigger_ == LemmingActivityTrigger::Immediate; }
  int dir() const { return facingRight_ ? 1 : -1; }
  void arm();

  // The activities' own steps. Those that return bool return true to go on to the walk step.
  void bridgeStep(IHordelingWorld& world);
  bool raiseStep(IHordelingWorld& world);
  bool sidewaysStep(IHordelingWorld& world);
  void digDownStep(IHordelingWorld& world);
  void blockStep(IHordelingWorld& world);
  void walkStep(IHordelingWorld const& world);

  template <typename Sink> void feedHashedFields(Sink&& sink) const;

  std::uint16_t id_;
  Position position_;
  bool facingRight_;
  std::optional<LemmingActivity> activity_;
  LemmingActivityTrigger trigger_ = LemmingActivityTrigger::Immediate;
  std::int32_t actionTimer_ = 0;
  std::int32_t activityFrames_ = 0;
  bool inAir_ = true;
};
