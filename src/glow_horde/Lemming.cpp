#include "glow_horde/Lemming.h"

#include "glow_horde/WorldWithDiscardedChanges.h"

namespace {

// Frames after which the activities stop laying or digging, and when they give up waiting.
constexpr std::int32_t k_bridgeLayingFrames = 220;
constexpr std::int32_t k_bridgeLastFrame = 321;
constexpr std::int32_t k_raiseFrames = 300;
constexpr std::int32_t k_digSidewaysFrames = 230;
constexpr std::int32_t k_digSidewaysLastFrame = 330;
constexpr std::int32_t k_digDownFrames = 70;

// The largest step up a walker takes in one frame, and the largest drop it follows on the ground.
constexpr int k_maxClimb = 4;
constexpr int k_maxDrop = 5;

} // namespace

Lemming::Lemming(std::uint16_t id, Position position, bool facingRight)
    : id_(id), position_(position), facingRight_(facingRight) {}

void Lemming::give_order(LemmingActivity activity, LemmingActivityTrigger trigger) {
  activity_ = activity;
  trigger_ = trigger;
  actionTimer_ = 0;
  activityFrames_ = 0;
}

void Lemming::arm() {
  trigger_ = LemmingActivityTrigger::Immediate;
  actionTimer_ = 0;
  activityFrames_ = 0;
}

void Lemming::update(IHordelingWorld& world) {
  update_unwrapped_with_trigger_checks(world);
  world.wrap(position_.x, position_.y);
}

void Lemming::update_unwrapped_with_trigger_checks(IHordelingWorld& world) {
  // Look-ahead on a copy over a world that drops its changes. Its outcome only ever arms a pending
  // WhenBlocked or BeforeFalling order and leaves no trace, so it is skipped for every other unit.
  bool const whenBlocked = activity_.has_value() && trigger_ == LemmingActivityTrigger::WhenBlocked;
  bool const beforeFalling = activity_.has_value() && trigger_ == LemmingActivityTrigger::BeforeFalling;
  if (whenBlocked || beforeFalling) {
    WorldWithDiscardedChanges lookAhead(world);
    Lemming copy = *this;
    copy.update_unwrapped(lookAhead);
    if (whenBlocked) {
      if (copy.facingRight_ != facingRight_) {
        arm();
      }
    } else if (!copy.inAir_) {
      copy.update_unwrapped(lookAhead);
      if (copy.inAir_) {
        arm();
      }
    }
  }

  bool const wasFacingRight = facingRight_;
  update_unwrapped(world);
  if (activity_.has_value() && trigger_ == LemmingActivityTrigger::AfterTurning && facingRight_ != wasFacingRight) {
    arm();
  }
}

void Lemming::update_unwrapped(IHordelingWorld& world) {
  int& x = position_.x;
  int& y = position_.y;

  // A digging unit sinks into the hole that it made before anything else is tested.
  if (isRunning(LemmingActivity::DigDown) && !world.is_ground(x, y - 1)) {
    y -= 1;
  }
  if (!world.is_ground(x, y - 1)) {
    // Falling, one pixel a frame: a running activity ends, a pending one survives the fall.
    y -= 1;
    if (trigger_ == LemmingActivityTrigger::Immediate) {
      activity_.reset();
    }
    inAir_ = true;
    return;
  }
  inAir_ = false;

  if (hasRunningActivity()) {
    switch (*activity_) {
    case LemmingActivity::Bridge:
    case LemmingActivity::HorizontalBridge:
      bridgeStep(world);
      return;
    case LemmingActivity::RaiseGround:
      if (!raiseStep(world)) {
        return;
      }
      break;
    case LemmingActivity::DigSideways:
    case LemmingActivity::DigUpwards:
      if (!sidewaysStep(world)) {
        return;
      }
      break;
    case LemmingActivity::DigDown:
      digDownStep(world);
      return;
    case LemmingActivity::Block:
      blockStep(world);
      return;
    }
  }
  walkStep(world);
}

void Lemming::walkStep(IHordelingWorld const& world) {
  int& x = position_.x;
  int& y = position_.y;
  int const nx = x + dir();

  if (!world.is_ground(nx, y)) {
    // The way is free; follow a downward slope without leaving the ground.
    x = nx;
    for (int i = 0; i < k_maxDrop; ++i) {
      if (!world.is_ground(x, y - 1)) {
        y -= 1;
      }
    }
    return;
  }
  if (isRunning(LemmingActivity::RaiseGround)) {
    // A unit raising ground doesn't climb.
    facingRight_ = !facingRight_;
    return;
  }
  for (int k = 1; k <= k_maxClimb; ++k) {
    if (!world.is_ground(nx, y + k)) {
      x = nx;
      y += k;
      return;
    }
  }
  // A wall: turn around without moving.
  facingRight_ = !facingRight_;
}

void Lemming::bridgeStep(IHordelingWorld& world) {
  int& x = position_.x;
  int& y = position_.y;
  int const d = dir();
  int const nx = x + d;

  std::int32_t const old = activityFrames_++;
  if (old >= k_bridgeLayingFrames && actionTimer_ == 0) {
    // Done laying: wait at the end of the bridge for a footing ahead, but not forever.
    for (int k = 0; k <= 4; ++k) {
      if (world.is_ground(nx, y - k)) {
        activity_.reset();
        break;
      }
    }
    if (activityFrames_ >= k_bridgeLastFrame) {
      activity_.reset();
    }
    return;
  }
  if (actionTimer_ <= 6) {
    actionTimer_ += 1;
    return;
  }
  actionTimer_ = 0;

  bool const rising = *activity_ == LemmingActivity::Bridge;
  int const py = rising ? y : y - 1;
  for (int k = 1; k <= 3; ++k) {
    world.add_ground(x + k * d, py);
  }
  if (rising) {
    y += 1;
  }
  // The three pixels just laid can't be seen yet, so this reads the terrain that was there.
  bool lastColumnGround = false;
  for (int k = 1; k <= 3; ++k) {
    bool const ground = world.is_ground(x + k * d, y);
    if (ground && world.is_ground(x + k * d, y + 1)) {
      activity_.reset();
      return;
    }
    lastColumnGround = ground;
  }
  x += 3 * d;
  if (lastColumnGround) {
    y += 1;
  }
}

bool Lemming::raiseStep(IHordelingWorld& world) {
  int const x = position_.x;
  int& y = position_.y;

  std::int32_t const old = activityFrames_++;
  if (old >= k_raiseFrames) {
    activity_.reset();
    return false;
  }
  if (actionTimer_ <= 4) {
    actionTimer_ += 1;
    return false;
  }
  actionTimer_ = 0;
  world.add_ground(x, y);
  if (!world.is_ground(x, y + 1)) {
    y += 1;
  }
  return true;
}

bool Lemming::sidewaysStep(IHordelingWorld& world) {
  int const y = position_.y;
  int const nx = position_.x + dir();

  std::int32_t const old = activityFrames_++;
  if (old >= k_digSidewaysFrames) {
    // Done digging: stand until an opening appears ahead, or the time is up.
    bool opening = false;
    for (int k = 0; k <= 4; ++k) {
      if (!world.is_ground(nx, y + k)) {
        opening = true;
        break;
      }
    }
    if (opening || activityFrames_ > k_digSidewaysLastFrame) {
      activity_.reset();
    }
    return false;
  }
  if (actionTimer_ <= 2) {
    actionTimer_ += 1;
    return false;
  }
  if (actionTimer_ == 3) {
    bool const upwards = *activity_ == LemmingActivity::DigUpwards;
    if (upwards && !world.is_ground(nx, y)) {
      // Nothing to dig into yet: walk on.
      actionTimer_ = 0;
      return true;
    }
    int const by = upwards ? y + 2 : y;
    for (int k = 0; k < 6; ++k) {
      world.remove_ground(nx, by + k);
    }
    actionTimer_ = 4;
    return false;
  }
  actionTimer_ = 0;
  return true;
}

void Lemming::digDownStep(IHordelingWorld& world) {
  std::int32_t const old = activityFrames_++;
  if (old >= k_digDownFrames) {
    activity_.reset();
    return;
  }
  if (actionTimer_ <= 1) {
    actionTimer_ += 1;
    return;
  }
  actionTimer_ = 0;
  for (int k = -2; k <= 2; ++k) {
    world.remove_ground(position_.x + k, position_.y - 1);
  }
}

void Lemming::blockStep(IHordelingWorld& world) {
  int const x = position_.x;
  int const y = position_.y;
  int const bx = x - dir();

  // The top of the ground behind the unit, near foot level.
  int top = 0;
  if (world.is_ground(bx, y)) {
    top = y + 4;
    for (int k = 0; k <= 3; ++k) {
      if (!world.is_ground(bx, y + k + 1)) {
        top = y + k;
        break;
      }
    }
  } else {
    top = y - 4;
    for (int t = y - 1; t >= y - 3; --t) {
      if (world.is_ground(bx, t)) {
        top = t;
        break;
      }
    }
  }
  for (int j = y; j <= top + 5; ++j) {
    world.add_ground(x, j);
  }
}

template <typename Sink> void Lemming::feedHashedFields(Sink&& sink) const {
  unsigned char const facing = facingRight_ ? 1 : 0;
  unsigned char const hasActivity = activity_.has_value() ? 1 : 0;
  unsigned char const air = inAir_ ? 1 : 0;
  sink(&id_, sizeof id_);
  sink(&position_.x, sizeof position_.x);
  sink(&position_.y, sizeof position_.y);
  sink(&facing, 1);
  sink(&hasActivity, 1);
  if (activity_.has_value()) {
    auto const value = static_cast<std::uint16_t>(*activity_);
    sink(&value, sizeof value);
  }
  sink(&actionTimer_, sizeof actionTimer_);
  sink(&activityFrames_, sizeof activityFrames_);
  sink(&air, 1);
}

void Lemming::hash(IHasher& hasher) const {
  feedHashedFields([&](void const* data, unsigned long size) { hasher.update(data, size); });
}

void Lemming::serialiseHashedData(std::vector<unsigned char>& out) const {
  feedHashedFields([&](void const* data, unsigned long size) {
    auto const* bytes = static_cast<unsigned char const*>(data);
    out.insert(out.end(), bytes, bytes + size);
  });
}
