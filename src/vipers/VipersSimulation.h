#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "aviators/CollisionMap.h"
#include "aviators/MovingBody.h"
#include "sim/GameResult.h"
#include "sim/GameSettings.h"
#include "sim/MapSettings.h"
#include "vipers/Tail.h"
#include "world/ChunkedWorld.h"

// A head of the Vipers game: a body that never stops, and the frame it died on.
struct ViperHead {
  MovingBody body;
  std::optional<std::int32_t> deathFrame;

  bool alive() const { return !deathFrame.has_value(); }
};

// The state of one Vipers game as one client holds it, and its step. Heads fly on without stopping and
// draw tails; hitting terrain bounces a head and shortens its tail, crossing any living tail kills it,
// food makes a tail longer, and the clock ends the game. It knows nothing of input, drawing or sound
// (a step reports what is to be heard), so it can be stepped alone; RunningVipers joins it to the
// player.
//
// The shared part (heads, tails, food, world) moves only on `orders`, so it is the same on every client
// at the same frame and alone is hashed. `shadow` is this client's private prediction of its own head,
// moved at once by `ourOrder`; it starts delayFrames steps ahead of the shared heads.
class VipersSimulation {
public:
  static constexpr std::int32_t k_minimumSpeed = 768;
  static constexpr std::int32_t k_startSpeed = 1024;
  static constexpr std::int32_t k_fullImpactSpeed = 3072;
  static constexpr std::int32_t k_shortestTail = 25600;
  static constexpr std::int32_t k_smallestTailStep = 512;
  static constexpr std::uint32_t k_foodInterval = 180;
  static constexpr std::size_t k_maxFood = 15;

  // What a step did that the player hears. Impacts are speeds before the hit, in 1/256 pixel a frame.
  struct StepEvents {
    std::optional<std::int32_t> shadowHit;
    std::vector<std::int32_t> otherHits;  // heads other than the local one, in player order
    int foodEaten = 0;
    int deaths = 0;
  };

  // Raises std::out_of_range for a missing setting or map entry and the world's texts for a bad image.
  VipersSimulation(int localPlayer, std::uint64_t framePeriod, std::uint8_t delayFrames,
                   GameSettings const& settings, MapSettings const& map, std::vector<unsigned short> const& players);

  // One frame: orders holds each player's order of delayFrames frames ago (entries past the players,
  // and bytes past the first, are ignored); ourOrder is this client's order of this very frame.
  StepEvents update(std::vector<std::vector<unsigned char>> const& orders, std::vector<unsigned char> const& ourOrder);

  bool gameEnded_LocalPlayer() const { return frame_ >= endFrame_; }
  bool gameEnded() const { return frame_ >= static_cast<std::uint64_t>(endFrame_) + delayFrames_; }
  void endGameNow() { endFrame_ = std::min(endFrame_, frame_); }
  void getGameResult(GameResult& result) const;
  // The two digests whose XOR is the end state checksum: the world's, and the heads'. The second is
  // cheap enough to take every frame.
  std::uint64_t localBaseDigest() const;
  std::uint64_t headDigest() const;

  // Placement of a new food item from the simulation's own state (nothing if the map has no room).
  void addRandomFood();

  ChunkedWorld& world() { return *world_; }
  ChunkedWorld const& world() const { return *world_; }
  CollisionMap const& solidMap() const { return solidMap_; }
  CollisionMap const& bodyMap() const { return bodyMap_; }
  std::vector<ViperHead> const& heads() const { return heads_; }
  std::vector<Tail> const& tails() const { return tails_; }
  ViperHead const& shadow() const { return shadow_; }
  std::vector<Vec2<WorldCoord>> const& food() const { return food_; }
  int localPlayer() const { return localPlayer_; }
  std::uint8_t delayFrames() const { return delayFrames_; }
  std::uint32_t frame() const { return frame_; }
  std::uint32_t endFrame() const { return endFrame_; }
  std::uint64_t framePeriod() const { return framePeriod_; }
  std::int32_t growBy() const { return growBy_; }
  std::int32_t collisionPenalty() const { return collisionPenalty_; }
  std::vector<unsigned short> const& slots() const { return slots_; }
  std::vector<int> const& teams() const { return teams_; }

  // For tests and tools that set up a position: state that the step would otherwise reach.
  std::vector<ViperHead>& mutableHeads() { return heads_; }
  std::vector<Tail>& mutableTails() { return tails_; }
  std::vector<Vec2<WorldCoord>>& mutableFood() { return food_; }

private:
  // Moves one head; returns the impact speed if it hit terrain. With a tail, the hit costs tail.
  std::optional<std::int32_t> updateHeadWithEffects(ViperHead& head, Tail* tail);

  int localPlayer_;
  std::uint8_t delayFrames_;
  std::uint64_t framePeriod_;
  std::unique_ptr<ChunkedWorld> world_;
  CollisionMap solidMap_;
  CollisionMap bodyMap_;
  std::vector<unsigned short> slots_;
  std::vector<int> teams_;
  std::uint32_t frame_ = 0;
  std::uint32_t endFrame_ = 0;
  std::int32_t growBy_ = 0;
  std::int32_t collisionPenalty_ = 0;
  std::vector<ViperHead> heads_;
  std::vector<Tail> tails_;
  ViperHead shadow_;
  std::vector<Vec2<WorldCoord>> food_;

  // Scratch of the step, kept to spare allocations.
  std::vector<std::uint8_t> stalled_;
  std::vector<std::uint8_t> dying_;
  std::vector<Vec2<AviatorCoord>> lastPoints_;
  std::vector<Vec2<AviatorCoord>> positions_;
};
