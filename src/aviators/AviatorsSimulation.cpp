#include "aviators/AviatorsSimulation.h"

#include <algorithm>

#include "aviators/FixedTrig.h"
#include "aviators/IntegerSqrt.h"
#include "aviators/TargetLock.h"
#include "sim/XXHashHasher.h"

namespace {

constexpr std::int32_t k_shipRadius = 2560;  // 10 pixels
constexpr std::int32_t k_missileDamage = 40;
constexpr std::int32_t k_crashDamageCap = 40;
constexpr std::int64_t k_lockRangeSquared = 0xF42400000;  // (1000 pixels)²
constexpr std::int32_t k_lockLostLimit = 359;
constexpr std::int32_t k_expandRadius = 10;

}  // namespace

AviatorsSimulation::AviatorsSimulation(int localPlayer, std::uint64_t framePeriod,
                                       std::uint8_t delayFrames, GameSettings const& settings, MapSettings const& map,
                                       std::vector<unsigned short> const& players,
                                       std::function<CollisionMap(CollisionMap const&)> const& expand)
    : localPlayer_(localPlayer), framePeriod_(framePeriod), delayFrames_(delayFrames), slots_(players),
      teams_(map.playerTeams) {
  std::int32_t const duration = settings.ints.at("duration_seconds");
  missileSpeed_ = settings.ints.at("missile_speed");
  world_ = std::make_unique<ChunkedWorld>(static_cast<int>(players.size()), localPlayer, delayFrames, map);

  std::int32_t const width = world_->width();
  std::int32_t const height = world_->height();
  solidMap_ = CollisionMap(width, height);
  for (std::int32_t y = 0; y < height; ++y) {
    for (std::int32_t x = 0; x < width; ++x) {
      if (world_->isGround(localPlayer, x, y)) {
        solidMap_.set(x, y, true);
      }
    }
  }
  bodyMap_ = expand ? expand(solidMap_) : solidMap_.expandByRadius(k_expandRadius);

  for (std::size_t i = 0; i < players.size(); ++i) {
    std::size_t const slot = players[i];
    Position start = slot < map.starts.size() ? map.starts[slot] : Position{width / 2, height / 2};
    if (start.x < 0) {
      start.x += width - 1;
    }
    if (start.y < 0) {
      start.y += height - 1;
    }
    std::uint16_t rotation = 0x4000;
    if (!map.startRotations.empty()) {
      rotation = map.startRotations[i % map.startRotations.size()];
    }
    aviators_.push_back(Aviator::At({start.x * 256, start.y * 256}, rotation));
  }
  shadow_ = aviators_.at(static_cast<std::size_t>(localPlayer));

  endFrame_ = static_cast<std::uint32_t>(static_cast<std::uint64_t>(std::max(duration, 0)) * 1000000ull /
                                         std::max<std::uint64_t>(framePeriod, 1));
  for (std::uint8_t i = 0; i < delayFrames; ++i) {
    world_->frameAdvance();
    for (Aviator const& aviator : aviators_) {
      positionHistory_.push_back(aviator.position);
    }
    frame_ += 1;
  }
}

Missile AviatorsSimulation::fireFrom(Aviator const& ship, std::int16_t owner, std::int32_t variationFrame,
                                     std::uint16_t slot) const {
  Missile missile;
  missile.position = ship.position;
  missile.velocity = ship.velocity + MissileVelocityVariation(variationFrame, slot);
  missile.rotation = ship.rotation;
  missile.owner = owner;
  missile.target = static_cast<std::int16_t>(*ship.target);
  missile.firedFrame = frame_;
  missile.renderPosition = missile.position;
  missile.renderRotation = missile.rotation;
  return missile;
}

void AviatorsSimulation::applyLocalPrediction(unsigned char byte) {
  shadow_.controls = byte & 15u;
  if ((byte & 32u) != 0) {
    lockPositions_.clear();
    lockDead_.clear();
    for (Aviator const& aviator : aviators_) {
      lockPositions_.push_back(aviator.position);
      lockDead_.push_back(aviator.deathFrame.has_value());
    }
    Vec2<AviatorCoord> aim;
    std::optional<std::uint16_t> const target = TargetLock(static_cast<std::uint16_t>(localPlayer_), shadow_.position,
                                                           shadow_.rotation, lockPositions_, lockDead_, aim);
    pingPoint_ = aim;
    pingFrame_ = frame_;
    if (target.has_value()) {
      shadow_.target = target;
      shadow_.lockLostFrames = 0;
      play(Sound::LockSucceeded);
    } else {
      play(Sound::LockFailed);
    }
  }
  if ((byte & 16u) != 0) {
    if (shadow_.target.has_value() && shadow_.missiles != 0) {
      shadow_.missiles -= 1;
      shadowMissiles_.push_back(fireFrom(shadow_, static_cast<std::int16_t>(localPlayer_),
                                         static_cast<std::int32_t>(frame_ + delayFrames_),
                                         slots_[static_cast<std::size_t>(localPlayer_)]));
      play(Sound::FireMissile);
    } else {
      play(Sound::CannotFire);
    }
  }
}

void AviatorsSimulation::applySharedOrder(std::size_t player, unsigned char byte) {
  Aviator& ship = aviators_[player];
  ship.controls = byte & 15u;
  if ((byte & 32u) != 0) {
    // The positions the player saw when giving the order: those of delayFrames frames ago.
    std::size_t const count = aviators_.size();
    lockPositions_.assign(positionHistory_.begin(), positionHistory_.begin() + static_cast<std::ptrdiff_t>(count));
    lockDead_.clear();
    for (Aviator const& aviator : aviators_) {
      lockDead_.push_back(aviator.deathFrame.has_value());
    }
    Vec2<AviatorCoord> aim;
    if (std::optional<std::uint16_t> const target =
            TargetLock(static_cast<std::uint16_t>(player), ship.position, ship.rotation, lockPositions_, lockDead_, aim)) {
      ship.target = target;
      ship.lockLostFrames = 0;
    }
  }
  if ((byte & 16u) != 0 && ship.target.has_value() && ship.missiles != 0) {
    if (static_cast<int>(player) != localPlayer_) {
      play(Sound::FireMissile);
    }
    ship.missiles -= 1;
    Missile const missile =
        fireFrom(ship, static_cast<std::int16_t>(player), static_cast<std::int32_t>(frame_), slots_[player]);
    missiles_.push_back(missile);
    if (missile.target == localPlayer_ && missile.owner != localPlayer_) {
      shadowMissiles_.push_back(missile);
    }
  }
}

void AviatorsSimulation::update(std::vector<std::vector<unsigned char>> const& orders,
                                std::vector<unsigned char> const& ourOrder) {
  sounds_.clear();
  // 1. The local prediction acts on this client's order at once.
  if (frame_ < endFrame_ && !goneForGood(shadow_) && !ourOrder.empty()) {
    applyLocalPrediction(ourOrder[0]);
  }
  // 2. The shared orders, in player order.
  for (std::size_t i = 0; i < aviators_.size() && i < orders.size(); ++i) {
    if (!orders[i].empty() && !goneForGood(aviators_[i])) {
      applySharedOrder(i, orders[i][0]);
    }
  }
  // 3. and 4. Movement and damage: the prediction, then every ship.
  if (frame_ < endFrame_) {
    updateAviatorWithEffects(shadow_, true);
    checkLock(shadow_);
  }
  int alive = 0;
  for (std::size_t i = 0; i < aviators_.size(); ++i) {
    updateAviatorWithEffects(aviators_[i], static_cast<int>(i) != localPlayer_);
    alive += aviators_[i].health != 0 ? 1 : 0;
    checkLock(aviators_[i]);
  }
  // 6. The positions of this frame join the history.
  for (Aviator const& aviator : aviators_) {
    positionHistory_.pop_front();
    positionHistory_.push_back(aviator.position);
  }
  // 7. The world and the missiles.
  world_->frameAdvance();
  updateMissiles(missiles_, false);
  updateMissiles(shadowMissiles_, true);
  frame_ += 1;
  // 9. The last ship standing, or none, ends the game.
  if (alive == 0 || (alive < 2 && aviators_.size() >= 2)) {
    endFrame_ = std::min(endFrame_, frame_);
  }
}

void AviatorsSimulation::updateAviatorWithEffects(Aviator& aviator, bool sounds) {
  if (goneForGood(aviator)) {
    return;
  }
  auto const impact = static_cast<std::int32_t>(IntegerSqrt(static_cast<std::uint64_t>(LengthSquared(aviator.velocity))));
  if (aviator.effectTimer != 0) {
    aviator.effectTimer -= 1;
  }
  if (aviator.missileTimer == 0) {
    if (aviator.missiles < Aviator::max_missiles) {
      aviator.missiles += 1;
    }
    aviator.missileTimer = Aviator::missiles_add_interval;
  } else {
    aviator.missileTimer -= 1;
  }
  CollisionInfo const info = aviator.updateMovement(bodyMap_, std::nullopt);
  if (info.collided) {
    std::int32_t const damage = info.speed > 3000 ? k_crashDamageCap : info.speed / 75;
    aviator.health = std::max(aviator.health - damage, 0);
    if (sounds) {
      play(Sound::SmallHit, impact);
    }
  }
  if (aviator.health == 0 && !aviator.deathFrame.has_value()) {
    aviator.deathFrame = static_cast<std::int32_t>(frame_);
    if (sounds) {
      play(Sound::Explosion);
    }
  }
}

void AviatorsSimulation::checkLock(Aviator& aviator) {
  if (!aviator.target.has_value()) {
    return;
  }
  Aviator const& target = aviators_[*aviator.target];
  if (target.deathFrame.has_value()) {
    aviator.target.reset();
    aviator.lockLostFrames = 0;
    return;
  }
  std::int64_t const dx = std::int64_t{target.position.x} - aviator.position.x;
  std::int64_t const dy = std::int64_t{target.position.y} - aviator.position.y;
  if (dx * dx + dy * dy > k_lockRangeSquared) {
    std::int32_t const before = aviator.lockLostFrames;
    aviator.lockLostFrames += 1;
    if (before >= k_lockLostLimit) {
      aviator.target.reset();
      aviator.lockLostFrames = 0;
    }
  } else {
    aviator.lockLostFrames = 0;
  }
}

bool AviatorsSimulation::homeOn(Missile& missile, Aviator& t, bool shadow, bool targetIsLocal) {
  if (goneForGood(t)) {
    missile.renderPosition = missile.position;
    missile.renderRotation = missile.rotation;
    return true;
  }
  Vec2<AviatorCoord> const lead{static_cast<AviatorCoord>(static_cast<std::uint32_t>(Missile::lead_frames) *
                                                          static_cast<std::uint32_t>(t.velocity.x)),
                                static_cast<AviatorCoord>(static_cast<std::uint32_t>(Missile::lead_frames) *
                                                          static_cast<std::uint32_t>(t.velocity.y))};
  missile.updateWithHomingTowards(t.position + lead, missileSpeed_);
  std::int64_t const reach = std::int64_t{Missile::hit_radius} + k_shipRadius;
  if (LengthSquared(t.position - missile.position) < reach * reach) {
    t.velocity += Vec2<AviatorCoord>{missile.velocity.x / 4, missile.velocity.y / 4};
    t.health = std::max(t.health - k_missileDamage, 0);
    if (shadow || !targetIsLocal) {
      play(Sound::SmallHit);
    }
    return true;
  }
  return false;
}

void AviatorsSimulation::updateMissiles(std::vector<Missile>& list, bool shadow) {
  std::size_t i = 0;
  while (i < list.size()) {
    Missile& m = list[i];
    bool removed = false;
    if (!shadow) {
      if (m.age < Missile::k_launch_steps) {
        m.position += m.velocity;
        m.age += 1;
      } else {
        auto const target = static_cast<std::size_t>(m.target);
        removed = homeOn(m, aviators_[target], false, static_cast<int>(target) == localPlayer_);
      }
      if (!removed) {
        m.renderPosition = m.position;
        m.renderRotation = m.rotation;
        removed = solidMap_.isBlocked(PixelOf(m.position.x), PixelOf(m.position.y));
      }
    } else if (m.age < Missile::k_launch_steps) {
      // The launch phase stretched (own missiles, which start delayFrames early) or squeezed (missiles
      // aimed at us, seen delayFrames late) so that it ends when it does on the shared timeline. With a
      // delay of 30 or more a missile aimed at us leaves it on its first step.
      bool const aimedAtUs = m.target == localPlayer_;
      std::int64_t span = aimedAtUs ? 30 - std::int64_t{delayFrames_} : 30 + std::int64_t{delayFrames_};
      std::int64_t const elapsed = (std::int64_t{frame_} - m.firedFrame + 1) * 30;
      std::int64_t steps = 0;
      if (span <= 0) {
        span = 1;
        steps = std::max<std::int64_t>(elapsed, Missile::k_launch_steps);
      } else {
        steps = elapsed / span;
      }
      bool blocked = false;
      if (steps > m.age) {
        for (std::int64_t s = m.age; s < steps; ++s) {
          m.position += m.velocity;
          if (solidMap_.isBlocked(PixelOf(m.position.x), PixelOf(m.position.y))) {
            blocked = true;
            break;
          }
        }
        m.age = static_cast<std::uint32_t>(steps);
      }
      m.renderPosition = m.position;
      std::int64_t const rest = elapsed - steps * span;
      if (rest > 0 && !blocked) {
        m.renderPosition += Vec2<AviatorCoord>{static_cast<AviatorCoord>(std::int64_t{m.velocity.x} * rest / span),
                                               static_cast<AviatorCoord>(std::int64_t{m.velocity.y} * rest / span)};
      }
      m.renderRotation = m.rotation;
      removed = blocked || (m.age >= Missile::k_launch_steps && !aimedAtUs);
    } else {
      removed = homeOn(m, shadow_, true, true);
      if (!removed) {
        m.renderPosition = m.position;
        m.renderRotation = m.rotation;
        removed = solidMap_.isBlocked(PixelOf(m.position.x), PixelOf(m.position.y));
      }
    }
    if (removed) {
      list[i] = list.back();
      list.pop_back();
    } else {
      ++i;
    }
  }
}

void AviatorsSimulation::hashMissiles(IHasher& hasher) const {
  auto feed = [&](auto const& value) { hasher.update(&value, sizeof value); };
  for (Missile const& m : missiles_) {
    feed(m.position.x);
    feed(m.position.y);
    feed(m.velocity.x);
    feed(m.velocity.y);
    feed(m.rotation);
    feed(m.owner);
    feed(m.target);
    feed(m.firedFrame);
    feed(m.age);
  }
}

void AviatorsSimulation::getGameResult(GameResult& result) const {
  result.endFrame = frame_;
  XXHashHasher shared;
  world_->hashLocalBase(shared);
  hashMissiles(shared);
  XXHashHasher ships;
  for (Aviator const& aviator : aviators_) {
    aviator.hash(ships);
  }
  result.endStateChecksum = shared.digest() ^ ships.digest();
  result.results.clear();
  for (Aviator const& aviator : aviators_) {
    std::uint64_t const lived = aviator.deathFrame.has_value() ? static_cast<std::uint64_t>(*aviator.deathFrame) : frame_;
    result.results.push_back({aviator.health, static_cast<long long>(framePeriod_ * lived / 1000)});
  }
}
