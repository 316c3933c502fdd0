#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <random>
#include <string>
#include <vector>

#include "sim/GameSettings.h"
#include "sim/IGame.h"

class SDL3App;

// One lockstep harness for every game: N clients of an IGame side by side in one process, each a real
// session made by the game's startSession with its own local player, each stepped by the production
// UpdateSimulation through its own IOrderSource. The sources are joined by an in-memory relay that does
// what the server and the network do: it gathers every client's order of its step k, joins them in
// player order, and hands the joined update to each client after a random latency of its own (in order),
// so that clients stall and run apart as they do over a network; each client starts with delayFrames
// empty updates in hand.
//
// While the clients run, every fresh allocation of client c is filled with its own byte, so that state
// read before it is written differs between clients. After every step each client reports named
// digests of its state (through the game's adapter); the harness compares them between clients and, on
// disagreement, names the first frame and part that differed.
namespace testing_support {

using Bytes = std::vector<unsigned char>;

// Collects a client's diagnostic digests after a step. `at` is what the clients compare by: the frame
// for shared state, or for example a player's own update count where a client runs its player ahead.
class DigestSink {
public:
  virtual ~DigestSink() = default;
  // Whether a costly digest at `at` is wanted now: every one when the harness looks for the exact
  // first difference, otherwise one in 16 (and all at the end), to keep long games quick. Cheap parts
  // are added at every step.
  virtual bool wants(std::int64_t at) const = 0;
  virtual void add(std::string const& part, std::int64_t at, std::uint64_t digest) = 0;
};

// What the harness needs of one game beyond IGame.
struct LockstepAdapter {
  // The order that the client's player gives now: random, of every kind the game knows, sometimes empty
  // and sometimes bytes that are no order.
  std::function<Bytes(IRunningGame const& session, std::mt19937_64& random)> randomOrder;
  // Reports the state after a step, each part when the sink wants it.
  std::function<void(IRunningGame const& session, DigestSink& sink)> digests;
  // Optional: whether an arriving order of another player may be handed to this client's session; the
  // harness drops and reports one that may not (an order that only clients that have parted can see).
  std::function<bool(IRunningGame const& session, int player, Bytes const& order)> acceptsIncoming;
};

struct LockstepGame {
  std::uint64_t seed = 0;
  GameSettings settings;
  std::vector<unsigned short> slots;  // the slot of each player; one client per player, at least two
  int delayFrames = 15;
  int maxLatencyRounds = 3;  // of the relay, per client and update
  int meanFramesBetweenOrders = 20;
};

// A game drawn from the seed over the whole legal range of the schema: any selectable map, 2 up to its
// number of slots in any order, every integer setting anywhere from its minimum to its maximum, a
// delay of 10 to 35 frames.
LockstepGame RandomLockstepGame(IGame const& game, std::uint64_t seed);

// A relay fault, to show that the harness notices: the nth non-empty order (from 0) of the player
// reaches one client lateFrames updates after all the others.
struct RelayFault {
  int client = 1;
  int player = 0;
  int nthOrder = 0;
  int lateFrames = 1;
};

struct LockstepReport {
  bool agreed = false;
  std::uint32_t endFrame = 0;
  int ordersGiven = 0;  // non-empty orders sent by all clients
  int stalls = 0;       // frames on which some client had to wait
  std::vector<std::vector<long long>> results;  // client 0's result rows
  std::uint64_t endStateChecksum = 0;           // client 0's
  std::optional<std::uint32_t> faultFrame;  // with a fault: the update it hit on the faulty client
  // On disagreement: the first divergent frame (as the later of the two clients recorded it) and part.
  std::optional<std::uint32_t> firstDivergentFrame;
  std::string firstDivergentPart;
  std::string text;  // what happened, for a failure message
};

// Plays the game with digests at one entry in 16; if the clients disagree, plays it again with
// every digest at every frame so that the report names the exact first frame and part.
LockstepReport CheckLockstepGame(IGame const& game, LockstepAdapter const& adapter, LockstepGame const& settings,
                                 std::shared_ptr<SDL3App> const& app, std::optional<RelayFault> fault = {});

// One digest of client 0: part, the entry it was recorded at (see DigestSink), the frame it was taken
// after, and its value.
struct LockstepTraceEntry {
  std::string part;
  std::int64_t at = 0;
  std::uint32_t frame = 0;
  std::uint64_t digest = 0;
};

// Plays the game once with every digest at every frame and hands back client 0's digests, part by part
// in the order the adapter first gave them, entry by entry; the report says whether the clients agreed.
LockstepReport TraceLockstepGame(IGame const& game, LockstepAdapter const& adapter, LockstepGame const& settings,
                                 std::shared_ptr<SDL3App> const& app, std::vector<LockstepTraceEntry>& trace);

}  // namespace testing_support

// Defined in RandomLockstepGames.cpp, which reports through GoogleTest.
namespace testing_support {

// What a run of random games covered.
struct LockstepTally {
  int games = 0;
  long long frames = 0;
  long long orders = 0;
  long long stalls = 0;
  std::vector<std::vector<std::vector<long long>>> results;  // each game's result rows
  std::vector<std::string> maps;
  std::vector<std::size_t> playerCounts;
  std::vector<int> delays;
  std::vector<GameSettings> settings;
};

// Plays the random games with seeds first to first + count - 1; each one that disagrees fails the current
// test with the harness's report, and the run stops at the first. maxSeconds, when above 0, caps each
// game's duration (a cap at or above the schema's minimum keeps the settings legal).
LockstepTally PlayRandomLockstepGames(IGame const& game, LockstepAdapter const& adapter, std::uint64_t first,
                                      int count, std::shared_ptr<SDL3App> const& app, int maxSeconds = 0);

// The soak: TANDEM_LOCKSTEP_SOAK games (the test is skipped when that is unset or 0) from the seed
// TANDEM_LOCKSTEP_SOAK_FIRST (1000000 unless set), each at most TANDEM_LOCKSTEP_SOAK_SECONDS long
// when that is set; every one must agree.
void SoakRandomLockstepGames(IGame const& game, LockstepAdapter const& adapter, std::shared_ptr<SDL3App> const& app);

// The number of games from an environment variable, or the given number.
int LockstepGamesFromEnvironment(char const* name, int otherwise);

}  // namespace testing_support
