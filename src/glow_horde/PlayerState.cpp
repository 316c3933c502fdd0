#include "glow_horde/PlayerState.h"

#include <algorithm>
#include <cstdlib>
#include <tuple>

#include "world/ChunkedWorld.h"
#include "app/QZAssert.h"
#include "glow_horde/LemmingWorld.h"

namespace {

// A unit that neither runs an activity nor falls: one that only walks this frame.
bool IsPlainWalker(Lemming const& lemming) {
  return !lemming.hasRunningActivity() && !lemming.inAir();
}

// The stepping order: busy units first, then facing left before right, then by x, y and id.
// Ids are unique, so the order is total and any sort gives the same list.
bool StepsBefore(Lemming const& a, Lemming const& b) {
  auto const key = [](Lemming const& l) {
    return std::make_tuple(IsPlainWalker(l), l.facingRight(), l.position().x, l.position().y, l.id());
  };
  return key(a) < key(b);
}

// Distance along one axis, the short way round where the view wraps.
std::int64_t AxisDistance(std::int64_t a, std::int64_t b, bool wraps, std::int64_t size) {
  std::int64_t const d = a > b ? a - b : b - a;
  return wraps ? std::min(d, size - d) : d;
}


} // namespace

PlayerState::PlayerState(Setup const& setup)
    : index_(setup.index), spawn_(setup.spawn), toSpawn_(setup.toSpawn), spawnInterval_(setup.spawnInterval),
      framePeriod_(setup.framePeriod), nextFacingRight_(setup.nextFacingRight), colour_(setup.colour),
      availabilities_(setup.availabilities), worldWidth_(setup.worldWidth), worldHeight_(setup.worldHeight),
      cameraWrapX_(setup.cameraWrapX), cameraWrapY_(setup.cameraWrapY) {
  // Every unit this player will have, so that spawning never allocates in a frame.
  lemmings_.reserve(static_cast<std::size_t>(std::max(setup.toSpawn, 0)));
}

void PlayerState::update(ChunkedWorld& world) {
  LemmingWorld lemmingWorld(world, index_);
  update(lemmingWorld);
}

void PlayerState::update(IHordelingWorld& world) {
  std::sort(lemmings_.begin(), lemmings_.end(), StepsBefore);

  // Busy units all step. Plain walkers, now together at the end, step unless one just before them
  // stood on the same spot facing the same way: a crowd on one spot spreads out one unit a frame.
  auto const firstWalker = std::find_if(lemmings_.begin(), lemmings_.end(), IsPlainWalker);
  for (auto it = lemmings_.begin(); it != firstWalker; ++it) {
    it->update(world);
  }
  bool noted = false;
  Position notedPosition;
  bool notedFacingRight = false;
  for (auto it = firstWalker; it != lemmings_.end(); ++it) {
    Position const position = it->position();
    bool const facingRight = it->facingRight();
    if (noted && position == notedPosition && facingRight == notedFacingRight) {
      continue;
    }
    noted = true;
    notedPosition = position;
    notedFacingRight = facingRight;
    it->update(world);
  }

  // Spawning runs on game time; the remainder carries over, so the schedule doesn't drift.
  if (toSpawn_ != 0) {
    spawnClock_ += framePeriod_;
    if (spawnClock_ > spawnInterval_) {
      createLemming(spawn_.x, spawn_.y, nextFacingRight_);
      spawnClock_ -= spawnInterval_;
      toSpawn_ -= 1;
      nextFacingRight_ = !nextFacingRight_;
    }
  }
}

void PlayerState::createLemming(int x, int y, bool facingRight) {
  lemmings_.emplace_back(nextId_, Position{x, y}, facingRight);
  nextId_ += 1;
}

int PlayerState::removeAtExit(ChunkedWorld const& world, Position exit, int radius) {
  std::int64_t const limit = static_cast<std::int64_t>(radius) * radius;
  auto const kept = std::remove_if(lemmings_.begin(), lemmings_.end(), [&](Lemming const& lemming) {
    return world.wrappedDistSquared(lemming.position(), exit) <= limit;
  });
  auto const removed = static_cast<int>(lemmings_.end() - kept);
  lemmings_.erase(kept, lemmings_.end());
  return removed;
}

std::optional<std::uint16_t> PlayerState::closestTo(int x, int y, DirectionFilter filter,
                                                     LemmingActivityTrigger trigger) const {
  std::optional<std::uint16_t> best;
  std::int64_t bestDistance = 0;
  for (std::size_t i = 0; i < lemmings_.size(); ++i) {
    Lemming const& lemming = lemmings_[i];
    if (trigger == LemmingActivityTrigger::Immediate && lemming.inAir()) {
      continue; // an order that acts at once can't go to a falling unit
    }
    if (!PassesDirectionFilter(filter, lemming.facingRight())) {
      continue;
    }
    std::int64_t const dx = AxisDistance(lemming.position().x, x, cameraWrapX_, worldWidth_);
    std::int64_t const dy = AxisDistance(lemming.position().y, y, cameraWrapY_, worldHeight_);
    std::int64_t const distance = dx * dx + dy * dy;
    if (distance > k_selectionRadiusSquared) {
      continue;
    }
    if (!best.has_value() || distance < bestDistance) {
      best = static_cast<std::uint16_t>(i);
      bestDistance = distance;
    }
  }
  return best;
}

std::optional<Position> PlayerState::previewUnitSelectionForOrder(UIOrder const& order) const {
  if (lemmings_.empty() || availabilities_[order.activity] <= 0) {
    return std::nullopt;
  }
  auto const chosen = closestTo(order.x, order.y, order.filter, order.trigger);
  if (!chosen.has_value()) {
    return std::nullopt;
  }
  return lemmings_[*chosen].position();
}

std::optional<Order> PlayerState::resolveUIOrder(UIOrder const& order) const {
  // Availability isn't looked at: an order with nothing left goes out and every client refuses it.
  if (lemmings_.empty()) {
    return std::nullopt;
  }
  auto const chosen = closestTo(order.x, order.y, order.filter, order.trigger);
  if (!chosen.has_value()) {
    return std::nullopt;
  }
  Order resolved;
  resolved.index_in_array_ = *chosen;
  resolved.id_ = lemmings_[*chosen].id();
  resolved.activity_ = order.activity;
  resolved.trigger_ = order.trigger;
  return resolved;
}

bool PlayerState::namesOneOfItsUnits(Order const& order) const {
  return order.index_in_array_ < lemmings_.size() && lemmings_[order.index_in_array_].id() == order.id_;
}

bool PlayerState::giveOrder(Order const& order) {
  // Both hold whenever the clients agree; failing them means the simulations have parted.
  QZ_ASSERT(order.index_in_array_ < lemmings_.size());
  Lemming& lem = lemmings_[order.index_in_array_];
  QZ_ASSERT(lem.id() == order.id_);
  std::int32_t& left = availabilities_[order.activity_];
  if (left <= 0) {
    return false;
  }
  left -= 1;
  lem.give_order(order.activity_, order.trigger_);
  return true;
}

bool PlayerState::shownFor(Lemming const& lemming, DirectionFilter filter, LemmingActivityTrigger trigger) {
  // With an Immediate order in hand, falling units can't be chosen, so they are shown dimmed.
  bool const selectable = trigger != LemmingActivityTrigger::Immediate || !lemming.inAir();
  return selectable && PassesDirectionFilter(filter, lemming.facingRight());
}

template <typename Sink> void PlayerState::feedHashedFields(Sink&& sink) const {
  std::int32_t const index = index_;
  std::int32_t const toSpawn = toSpawn_;
  unsigned char const facing = nextFacingRight_ ? 1 : 0;
  unsigned char const colour[4] = {colour_.r, colour_.g, colour_.b, colour_.a};
  sink(&index, sizeof index);
  sink(&spawn_.x, sizeof spawn_.x);
  sink(&spawn_.y, sizeof spawn_.y);
  sink(&toSpawn, sizeof toSpawn);
  sink(&spawnClock_, sizeof spawnClock_);
  sink(&facing, 1);
  sink(colour, sizeof colour);
}

void PlayerState::hash(IHasher& hasher) const {
  feedHashedFields([&](void const* data, unsigned long size) { hasher.update(data, size); });
  for (Lemming const& lemming : lemmings_) {
    lemming.hash(hasher);
  }
  availabilities_.hash(hasher);
}

void PlayerState::serialiseHashedData(std::vector<unsigned char>& out) const {
  feedHashedFields([&](void const* data, unsigned long size) {
    auto const* bytes = static_cast<unsigned char const*>(data);
    out.insert(out.end(), bytes, bytes + size);
  });
  for (Lemming const& lemming : lemmings_) {
    lemming.serialiseHashedData(out);
  }
  availabilities_.serialiseHashedData(out);
}
