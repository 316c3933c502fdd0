#include "vipers/VipersSimulation.h"

#include <algorithm>
#include <limits>

#include "sim/XXHashHasher.h"
#include "vipers/Food.h"
#include "vipers/ShipMaps.h"

namespace {

// Settings multiplied into 1/256 pixel stay within 32 bits, whatever a room asked for.
std::int32_t Saturated(std::int64_t value) {
  return static_cast<std::int32_t>(std::clamp<std::int64_t>(value, std::numeric_limits<std::int32_t>::min(),
                                                            std::numeric_limits<std::int32_t>::max()));
}

std::int32_t Speed(MovingBody const& body) {
  return static_cast<std::int32_t>(IntegerSqrt(static_cast<std::uint64_t>(LengthSquared(body.velocity))));
}

template <typename T>
void Feed(IHasher& hasher, T value) {
  hasher.update(&value, sizeof value);
}

}  // namespace

VipersSimulation::VipersSimulation(int localPlayer, std::uint64_t framePeriod,
                                   std::uint8_t delayFrames, GameSettings const& settings, MapSettings const& map,
                                   std::vector<unsigned short> const& players)
    : localPlayer_(localPlayer), delayFrames_(delayFrames), framePeriod_(framePeriod),
      world_(std::make_unique<ChunkedWorld>(static_cast<int>(players.size()), localPlayer, delayFrames,
                                            map)),
      slots_(players), teams_(map.playerTeams) {
  growBy_ = Saturated(std::int64_t{settings.ints.at("grow_by")} * 256);
  collisionPenalty_ = Saturated(std::int64_t{settings.ints.at("collision_penalty")} * 256);
  std::int32_t const startLength = Saturated(std::int64_t{settings.ints.at("start_length")} * 256);
  ShipMaps maps = BuildShipMaps(*world_, localPlayer);
  solidMap_ = std::move(maps.solid);
  bodyMap_ = std::move(maps.body);

  heads_.reserve(players.size());
  tails_.reserve(players.size());
  for (unsigned short const slot : players) {
    Position start = map.starts.at(slot);
    if (start.x < 0) {
      start.x += world_->width() - 1;
    }
    if (start.y < 0) {
      start.y += world_->height() - 1;
    }
    ViperHead head;
    head.body.position = {PixelCentre(start.x), PixelCentre(start.y)};
    head.body.rotation = 0x4000;
    heads_.push_back(head);
    tails_.emplace_back(head.body.position);
    tails_.back().setLength(startLength);
  }
  if (!map.startRotations.empty()) {
    for (std::size_t i = 0; i < heads_.size(); ++i) {
      heads_[i].body.rotation = map.startRotations.at(i);
    }
  }
  endFrame_ = static_cast<std::uint32_t>(static_cast<std::uint64_t>(settings.ints.at("duration_seconds")) * 1000000u /
                                         framePeriod);
  for (ViperHead& head : heads_) {
    head.body.velocity += DirectionVector(head.body.rotation, k_startSpeed);
  }
  shadow_ = heads_.at(static_cast<std::size_t>(localPlayer));

  stalled_.resize(heads_.size());
  dying_.resize(heads_.size());
  lastPoints_.resize(heads_.size());
  positions_.resize(heads_.size());

  // The head start: only the prediction moves, so it starts delayFrames steps ahead of the shared heads.
  for (int i = 0; i < delayFrames_; ++i) {
    shadow_.body.updateMovement(bodyMap_, k_minimumSpeed);
    world_->frameAdvance();
    frame_ += 1;
  }
}

std::optional<std::int32_t> VipersSimulation::updateHeadWithEffects(ViperHead& head, Tail* tail) {
  if (!head.alive()) {
    return std::nullopt;
  }
  std::int32_t const impact = Speed(head.body);
  CollisionInfo const info = head.body.updateMovement(bodyMap_, k_minimumSpeed);
  if (!info.collided) {
    return std::nullopt;
  }
  if (tail != nullptr) {
    std::int64_t const loss = impact > k_fullImpactSpeed
                                  ? std::int64_t{collisionPenalty_}
                                  : std::int64_t{collisionPenalty_} * impact / k_fullImpactSpeed;
    tail->setLength(Saturated(std::max<std::int64_t>(std::int64_t{tail->length()} - loss, k_shortestTail)));
  }
  return impact;
}

void VipersSimulation::addRandomFood() {
  for (std::size_t i = 0; i < heads_.size(); ++i) {
    positions_[i] = heads_[i].body.position;
  }
  if (std::optional<Vec2<WorldCoord>> const item = food::RandomFreePixel(bodyMap_, food::Seed(positions_, frame_))) {
    food_.push_back(*item);
  }
}

VipersSimulation::StepEvents VipersSimulation::update(std::vector<std::vector<unsigned char>> const& orders,
                                                      std::vector<unsigned char> const& ourOrder) {
  StepEvents events;
  std::size_t const count = heads_.size();

  if (frame_ < endFrame_ && !ourOrder.empty()) {
    shadow_.body.controls = ourOrder.front() & 15u;
  }
  for (std::size_t i = 0; i < count && i < orders.size(); ++i) {
    if (!orders[i].empty() && heads_[i].alive()) {
      heads_[i].body.controls = orders[i].front() & 15u;
    }
  }
  if (frame_ < endFrame_) {
    std::int32_t const impact = Speed(shadow_.body);
    if (shadow_.body.updateMovement(bodyMap_, k_minimumSpeed).collided) {
      events.shadowHit = impact;
    }
  }
  if (frame_ % k_foodInterval == 0 && food_.size() < k_maxFood) {
    addRandomFood();
  }
  for (std::size_t i = 0; i < count; ++i) {
    std::optional<std::int32_t> const hit = updateHeadWithEffects(heads_[i], &tails_[i]);
    if (hit.has_value() && static_cast<int>(i) != localPlayer_) {
      events.otherHits.push_back(*hit);
    }
  }

  // A head that has not yet moved 2 pixels from its tail's front sits this frame out, so that tail
  // points lie at least 2 pixels apart.
  for (std::size_t i = 0; i < count; ++i) {
    std::uint64_t const moved = static_cast<std::uint64_t>(LengthSquared(heads_[i].body.position - tails_[i].front()));
    stalled_[i] = IntegerSqrt(moved) < static_cast<std::uint64_t>(k_smallestTailStep);
    dying_[i] = 0;
  }
  auto const active = [&](std::size_t i) { return heads_[i].alive() && stalled_[i] == 0; };

  for (std::size_t i = 0; i < count; ++i) {
    if (!active(i)) {
      continue;
    }
    Vec2<AviatorCoord> const from = tails_[i].front();
    for (std::size_t f = food_.size(); f-- > 0;) {
      if (food::Touches(from, heads_[i].body.position, food_[f])) {
        tails_[i].setLength(Saturated(std::int64_t{tails_[i].length()} + growBy_));
        food_.erase(food_.begin() + static_cast<std::ptrdiff_t>(f));
        events.foodEaten += 1;
      }
    }
  }
  for (std::size_t i = 0; i < count; ++i) {
    if (active(i) && tails_[i].checkSelfCollision(heads_[i].body.position)) {
      dying_[i] = 1;
    }
  }
  for (std::size_t i = 0; i < count; ++i) {
    lastPoints_[i] = tails_[i].front();
  }
  for (std::size_t i = 0; i < count; ++i) {
    if (active(i)) {
      tails_[i].update(heads_[i].body.position);
    }
  }
  for (std::size_t i = 0; i < count; ++i) {
    if (!active(i)) {
      continue;
    }
    for (std::size_t j = 0; j < count; ++j) {
      if (j != i && heads_[j].alive() && tails_[j].checkCollision(lastPoints_[i], heads_[i].body.position)) {
        dying_[i] = 1;
        break;
      }
    }
  }
  for (std::size_t i = 0; i < count; ++i) {
    if (dying_[i] != 0 && heads_[i].alive()) {
      heads_[i].deathFrame = static_cast<std::int32_t>(frame_);
      events.deaths += 1;
    }
  }

  world_->frameAdvance();
  frame_ += 1;
  return events;
}

std::uint64_t VipersSimulation::localBaseDigest() const {
  XXHashHasher hasher;
  world_->hashLocalBase(hasher);
  return hasher.digest();
}

std::uint64_t VipersSimulation::headDigest() const {
  XXHashHasher hasher;
  for (ViperHead const& head : heads_) {
    MovingBody const& body = head.body;
    Feed(hasher, body.position.x);
    Feed(hasher, body.position.y);
    Feed(hasher, body.velocity.x);
    Feed(hasher, body.velocity.y);
    Feed(hasher, body.rotation);
    Feed(hasher, body.recoveryFrames);
    Feed(hasher, body.controls);
    Feed(hasher, static_cast<std::uint8_t>(head.deathFrame.has_value() ? 1 : 0));
    if (head.deathFrame.has_value()) {
      Feed(hasher, *head.deathFrame);
    }
  }
  return hasher.digest();
}

void VipersSimulation::getGameResult(GameResult& result) const {
  result.endFrame = frame_;
  result.endStateChecksum = localBaseDigest() ^ headDigest();
  result.results.clear();
  for (std::size_t i = 0; i < heads_.size(); ++i) {
    std::int64_t const died = heads_[i].deathFrame.has_value()
                                  ? static_cast<std::int64_t>(framePeriod_ * static_cast<std::uint64_t>(*heads_[i].deathFrame) / 1000)
                                  : std::numeric_limits<std::int64_t>::max();
    result.results.push_back({tails_[i].length(), died});
  }
}
