#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "sim/GameSettings.h"

class SDL3App;

// Several clients of one Glow Horde game in one process, each its own simulation with its own local
// player, joined by an in-memory relay that does what the server does: every client's order of its
// step k goes to all clients, the giver too, for their step k + delayFrames; before that they get no
// orders. Each client gives random orders at random frames, resolved against its own player as a
// click would be, and sometimes bytes that are no order at all.
//
// Every frame each client keeps a digest of each player's state (by the number of updates that player
// has had, which is what clients can compare: a client's own player runs delayFrames updates ahead) and, every
// few frames or at every frame, a digest of its world's localBase copy (by frame number, the same on
// every client). At the end the clients must have the same digests and byte-equal results; when they
// don't, the report says where they first parted.
namespace glow_horde_testing {

struct LockstepGame {
  std::uint64_t seed = 0;
  std::string map;
  std::vector<unsigned short> slots;  // the slot of each player; one client per player
  int delayFrames = 15;
  GameSettings settings;
  int meanFramesBetweenOrders = 20;  // of each client
};

// A game drawn from the seed: any map of the catalogue with 1 up to its number of slots in any order,
// a delay of 10 to 35 frames, 4 to 25 seconds, up to 40 units each, 0 to 6 orders of each activity.
LockstepGame RandomLockstepGame(std::uint64_t seed);

// A broken relay, to prove that the harness notices: the nth order (from 0) that the player gives
// reaches one client lateFrames frames after all the others.
struct RelayFault {
  int client = 1;
  int player = 0;
  int nthOrder = 0;
  int lateFrames = 1;
};

struct LockstepReport {
  bool agreed = false;
  std::uint32_t endFrame = 0;
  int ordersGiven = 0;     // non-empty orders that clients sent
  int ordersAccepted = 0;  // of the clients' own, those that took effect
  long long unitsOut = 0;  // as client 0 counts them
  // Filled in when the clients disagree:
  std::optional<std::uint32_t> firstLocalBaseDifference;  // the first frame whose localBase digests differ
  // By player: the number of updates after which that player's state first differed between two clients.
  std::vector<std::optional<std::uint32_t>> firstPlayerDifference;
  std::optional<std::uint32_t> faultFrame;  // with a fault: the frame on which the late order was due
  std::string text;  // what happened, for a failure message
};

// Plays the game with a world digest every 16 frames; if the clients disagree, plays it again with
// one at every frame, so that the report names the exact first frame at which the worlds parted.
// Given a shell, each client is the whole session that the catalogue starts on it, stepped through
// IRunningGame::update as the main loop steps it; without one, each is the bare simulation.
LockstepReport CheckLockstepGame(LockstepGame const& game, std::optional<RelayFault> fault = {},
                                 std::shared_ptr<SDL3App> const& shell = nullptr);

}  // namespace glow_horde_testing
