#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "aviators/Aviator.h"
#include "aviators/CollisionMap.h"
#include "aviators/Missile.h"
#include "sim/GameResult.h"
#include "sim/GameSettings.h"
#include "sim/MapSettings.h"
#include "world/ChunkedWorld.h"

// The simulated part of an Aviators game, integer-only: the shared ships and missiles, which only the
// relayed orders drive and which alone are hashed, and this client's prediction (`shadow` and the
// missiles that concern it), which the local order drives at once. Sounds are reported as events for
// the session to play.
class AviatorsSimulation {
public:
  enum class Sound : std::uint8_t { SmallHit, Explosion, LockSucceeded, LockFailed, FireMissile, CannotFire };
  struct SoundEvent {
    Sound sound;
    std::int32_t impact = -1;  // for SmallHit after a crash: the speed before it (volume impact / 3072); else -1
  };

  // Builds the world, the two collision maps (bodyMap through `expand`,
  // which the session times) and the ships, then runs the head start of delayFrames frames. Raises
  // std::out_of_range without "duration_seconds" or "missile_speed".
  AviatorsSimulation(int localPlayer, std::uint64_t framePeriod, std::uint8_t delayFrames,
                     GameSettings const& settings, MapSettings const& map, std::vector<unsigned short> const& players,
                     std::function<CollisionMap(CollisionMap const&)> const& expand);

  void update(std::vector<std::vector<unsigned char>> const& orders, std::vector<unsigned char> const& ourOrder);

  bool gameEnded_LocalPlayer() const { return frame_ >= endFrame_; }
  bool gameEnded() const { return frame_ >= endFrame_ + delayFrames_; }
  void endGameNow() { endFrame_ = frame_ < endFrame_ ? frame_ : endFrame_; }
  void getGameResult(GameResult& result) const;

  // The sounds of the last update, in order.
  std::vector<SoundEvent> const& sounds() const { return sounds_; }

  ChunkedWorld& world() { return *world_; }
  ChunkedWorld const& world() const { return *world_; }
  CollisionMap const& solidMap() const { return solidMap_; }
  CollisionMap const& bodyMap() const { return bodyMap_; }
  std::vector<Aviator> const& aviators() const { return aviators_; }
  Aviator const& shadow() const { return shadow_; }
  std::vector<Missile> const& missiles() const { return missiles_; }
  std::vector<Missile> const& shadowMissiles() const { return shadowMissiles_; }
  std::deque<Vec2<AviatorCoord>> const& positionHistory() const { return positionHistory_; }
  std::uint32_t frame() const { return frame_; }
  std::uint32_t endFrame() const { return endFrame_; }
  std::uint8_t delayFrames() const { return delayFrames_; }
  std::uint64_t framePeriod() const { return framePeriod_; }
  int localPlayer() const { return localPlayer_; }
  std::vector<unsigned short> const& slots() const { return slots_; }
  std::vector<int> const& teams() const { return teams_; }
  std::int32_t missileSpeed() const { return missileSpeed_; }
  void setMissileSpeed(std::int32_t speed) { missileSpeed_ = speed; }
  std::optional<Vec2<AviatorCoord>> const& pingPoint() const { return pingPoint_; }
  std::optional<std::uint32_t> const& pingFrame() const { return pingFrame_; }
  void clearPing() {
    pingPoint_.reset();
    pingFrame_.reset();
  }

  // A ship that has been dead for more than 44 frames takes no orders and no longer moves.
  bool goneForGood(Aviator const& aviator) const {
    return aviator.deathFrame.has_value() && static_cast<std::int64_t>(frame_) - *aviator.deathFrame > 44;
  }

  // Direct access to the ships and missiles, for tests and tools that set up a situation by hand.
  std::vector<Aviator>& editAviators() { return aviators_; }
  Aviator& editShadow() { return shadow_; }
  std::vector<Missile>& editMissiles() { return missiles_; }

  // The digest of the shared missiles, as the end-state checksum takes it (without the world).
  void hashMissiles(IHasher& hasher) const;

private:
  void applyLocalPrediction(unsigned char byte);
  void applySharedOrder(std::size_t player, unsigned char byte);
  void updateAviatorWithEffects(Aviator& aviator, bool sounds);
  void checkLock(Aviator& aviator);
  void updateMissiles(std::vector<Missile>& list, bool shadow);
  // The homing step against ship t; returns whether the missile is removed (it hit or t is gone).
  bool homeOn(Missile& missile, Aviator& t, bool shadow, bool targetIsLocal);
  Missile fireFrom(Aviator const& ship, std::int16_t owner, std::int32_t variationFrame, std::uint16_t slot) const;
  void play(Sound sound, std::int32_t impact = -1) { sounds_.push_back({sound, impact}); }

  int localPlayer_;
  std::uint64_t framePeriod_;
  std::uint8_t delayFrames_;
  std::unique_ptr<ChunkedWorld> world_;
  CollisionMap solidMap_;
  CollisionMap bodyMap_;
  std::uint32_t frame_ = 0;
  std::int32_t missileSpeed_ = 0;
  std::uint32_t endFrame_ = 0;
  std::vector<unsigned short> slots_;
  std::vector<int> teams_;
  std::deque<Vec2<AviatorCoord>> positionHistory_;
  std::vector<Aviator> aviators_;
  Aviator shadow_;
  std::vector<Missile> missiles_;
  std::vector<Missile> shadowMissiles_;
  std::optional<Vec2<AviatorCoord>> pingPoint_;
  std::optional<std::uint32_t> pingFrame_;
  std::vector<SoundEvent> sounds_;
  // Scratch space of the lock, kept to spare allocations.
  std::vector<Vec2<AviatorCoord>> lockPositions_;
  std::vector<bool> lockDead_;
};
