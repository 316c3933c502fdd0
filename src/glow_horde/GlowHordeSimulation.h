#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "world/ChunkedWorld.h"
#include "sim/GameResult.h"
#include "sim/GameSettings.h"
#include "sim/MapSettings.h"
#include "world/Position.h"
#include "glow_horde/PlayerState.h"

// The shared state of one Glow Horde game as one client holds it, and its step: the world, every
// player, the exits that are in play with their counts, and the frame counter. It knows nothing of
// input, drawing or sound, so it can be stepped alone; RunningGlowHorde joins it to the player.
//
// Game time is split: the local player's units run delayFrames updates ahead of everybody else's, so
// its own orders act at once while the others' arrive delayFrames frames later at the same point of
// their own game time. The constructor runs that head start.
class GlowHordeSimulation {
public:
  // What a step did that the player hears: whether the local order took effect, and how many times a
  // player's units reached an exit (one sound each).
  struct StepEvents {
    bool localOrderAccepted = false;
    int exitArrivals = 0;
  };

  // Units within this distance of an exit leave through it.
  static constexpr int k_exitRadius = 30;

  // Raises std::out_of_range for a missing setting or map entry and the world's texts for a bad image.
  GlowHordeSimulation(int localPlayer, std::uint64_t framePeriod, std::uint8_t delayFrames,
                      GameSettings const& settings, MapSettings const& map, std::vector<unsigned short> const& players);

  // One frame. orders holds one entry per player, in player order, each the order that player gave
  // delayFrames frames ago (empty for none); the local player's entry is ignored, its order arrives
  // in ourOrder at once. An empty orders list steps the local player alone.
  //
  // ourOrder is either resolved by this client against its own list of units (a click, a driver's
  // order), which can't name a unit that isn't there unless the clients have parted, or read back
  // from a recording, whose bytes this client didn't make: such an order that names no unit of the
  // local player is ignored, as every client of the recorded game ignored it.
  enum class OurOrderOrigin { ResolvedHere, Recorded };
  StepEvents update(std::vector<std::vector<unsigned char>> const& orders, std::vector<unsigned char> const& ourOrder,
                    OurOrderOrigin origin = OurOrderOrigin::ResolvedHere);

  bool gameEnded_LocalPlayer() const { return frame_ >= endFrame_; }
  bool gameEnded() const { return frame_ >= endFrame_ + delayFrames_; }
  // Brings the end forward to now, never later.
  void endGameNow();
  // endFrame is the frame now; one row per team in exit order: (units out, minus their total
  // arrival time in milliseconds); the checksum is the XOR of the world's and the players' digests.
  void getGameResult(GameResult& result) const;
  // The two digests of the checksum, for comparing clients as a game goes on.
  std::uint64_t localBaseDigest() const;
  std::uint64_t playerDigest(int player) const;

  // A negative coordinate counts from the far edge of the world, whatever the wrap flags.
  static Position WrappedAlways(Position position, int worldWidth, int worldHeight);

  ChunkedWorld& world() { return *world_; }
  ChunkedWorld const& world() const { return *world_; }
  std::vector<PlayerState> const& players() const { return players_; }
  PlayerState const& localPlayerState() const { return players_[static_cast<std::size_t>(localPlayer_)]; }
  int localPlayer() const { return localPlayer_; }
  std::uint8_t delayFrames() const { return delayFrames_; }
  std::uint32_t frame() const { return frame_; }
  std::uint32_t endFrame() const { return endFrame_; }
  std::uint64_t framePeriod() const { return framePeriod_; }
  std::vector<unsigned short> const& slots() const { return slots_; }
  // By slot: the team of each slot, numbered by place in exitPositions.
  std::vector<int> const& teams() const { return teams_; }
  std::vector<Position> const& exitPositions() const { return exitPositions_; }
  std::vector<int> const& exitedCounts() const { return exitedCounts_; }
  std::vector<std::int64_t> const& exitTimes() const { return exitTimes_; }

private:
  void compactExits(MapSettings const& map);

  int localPlayer_;
  std::uint8_t delayFrames_;
  std::uint64_t framePeriod_;
  std::unique_ptr<ChunkedWorld> world_;
  std::vector<PlayerState> players_;
  std::vector<unsigned short> slots_;
  std::vector<int> teams_;
  std::vector<Position> exitPositions_;
  std::vector<int> exitedCounts_;
  std::vector<std::int64_t> exitTimes_;
  std::uint32_t frame_ = 0;
  std::uint32_t endFrame_ = 0;
};
