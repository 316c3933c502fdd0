#pragma once

#include <atomic>
#include <cstdint>
#include <optional>
#include <vector>

#include "sim/GameResult.h"
#include "sim/ReplayPlan.h"

class HeadlessGames;
class IGame;
class Recording;

// What a replay without a window arrived at: its result, taken when the session ended, and the
// number of frames stepped.
struct ReplayRun {
  GameResult result;
  std::uint64_t frames = 0;
  bool stopped = false;  // stop was raised before the session ended; result is of no use
};

// Replays recording by plan to the end of its session, as the client's replay page does from its
// first frame to the end of the game, but as fast as the simulation goes. game's sessions must not need
// an SDL3App (HeadlessGames). Raises what the session raises for a map whose image fails. A raised stop
// (looked at every frame) ends the replay early.
ReplayRun RunReplay(IGame const& game, ReplayPlan const& plan, Recording const& recording,
                    std::atomic<bool> const* stop = nullptr);

// The proof of a recording: it is replayed and the result compared with the one its players agreed
// on.
struct RecordingVerdict {
  enum class Outcome { Reproduced, Differs, NoAgreedResult };
  Outcome outcome = Outcome::NoAgreedResult;
  ReplayRun run;
  std::optional<GameResult> expected;  // the agreed result, when there is one
};

// Raises std::runtime_error with a sentence for a recording that can't be replayed.
RecordingVerdict VerifyRecording(HeadlessGames const& games, Recording const& recording);

// The settlement of the reports of a game whose players disagree: each report is held against a
// replay that ends where that report says the game ended (reports that name the same end share one
// replay), and matches only if the replay arrives at it value by value.
struct ReportSettlement {
  std::vector<bool> matches;        // one per place; false for a missing or unreadable report
  std::optional<GameResult> truth;  // the replay's result at the end most reports name (earliest on a tie)
  std::uint64_t frames = 0;         // frames simulated in all
  bool stopped = false;
};

// Raises std::runtime_error with a sentence for a recording that can't be replayed.
ReportSettlement SettleReports(HeadlessGames const& games, Recording const& recording,
                               std::atomic<bool> const* stop = nullptr);
