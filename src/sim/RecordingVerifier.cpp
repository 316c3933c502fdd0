#include "sim/RecordingVerifier.h"

#include <map>
#include <stdexcept>

#include "net/GameRecordsWire.h"
#include "sim/HeadlessGames.h"
#include "sim/IGame.h"
#include "sim/Recording.h"
#include "sim/ReplayOrderSource.h"

namespace {

// Microseconds of game time in one frame: 1000000 / 60 in integer arithmetic, as in the client.
constexpr unsigned long long kFramePeriod = 16666;

std::optional<GameResult> ReadResult(std::vector<unsigned char> const& bytes) {
  GameResult result;
  unsigned char const* cursor = bytes.data();
  std::size_t remaining = bytes.size();
  if (bytes.empty() || !FromBytes(cursor, remaining, result)) {
    return std::nullopt;
  }
  return result;
}

IGame const& GameOf(HeadlessGames const& games, GameSpec const& spec) {
  IGame const* game = games.find(spec.game);
  if (game == nullptr) {
    throw std::runtime_error("The recording is of a game that this program doesn't know.");
  }
  return *game;
}

}  // namespace

ReplayRun RunReplay(IGame const& game, ReplayPlan const& plan, Recording const& recording,
                    std::atomic<bool> const* stop) {
  // The replaying program sits in the seat of player 0, as the client's replay does.
  std::unique_ptr<IRunningGame> session =
      game.startSession(nullptr, 0, kFramePeriod, plan.spec.delayFrames, plan.settings, plan.players, false);
  ReplayOrderSource source(recording, 0, static_cast<int>(plan.players.size()), static_cast<int>(plan.spec.delayFrames));
  ReplayRun run;
  int stalledFrames = 0;
  // A session always ends: its end frame comes from a duration that the plan has checked, and the
  // replay's source never stalls.
  while (StepReplay(*session, source, stalledFrames, plan.hasExpectedEnd, plan.expectedEndFrame,
                    plan.spec.delayFrames)) {
    ++run.frames;
    if (stop != nullptr && stop->load(std::memory_order_relaxed)) {
      run.stopped = true;
      return run;
    }
  }
  session->getGameResult(run.result);
  return run;
}

RecordingVerdict VerifyRecording(HeadlessGames const& games, Recording const& recording) {
  GameSpec const spec = ParseGameSpec(recording.results.specBytes);
  IGame const& game = GameOf(games, spec);
  ReplayPlan const plan = PlanReplay(game, spec, recording);
  RecordingVerdict verdict;
  verdict.run = RunReplay(game, plan, recording);
  if (!plan.expectedResult) {
    verdict.outcome = RecordingVerdict::Outcome::NoAgreedResult;
    return verdict;
  }
  verdict.expected = ReadResult(*plan.expectedResult);
  verdict.outcome = ReplayMatches(*plan.expectedResult, verdict.run.result) ? RecordingVerdict::Outcome::Reproduced
                                                                             : RecordingVerdict::Outcome::Differs;
  return verdict;
}

ReportSettlement SettleReports(HeadlessGames const& games, Recording const& recording, std::atomic<bool> const* stop) {
  GameSpec const spec = ParseGameSpec(recording.results.specBytes);
  IGame const& game = GameOf(games, spec);
  ReplayPlan const plan = PlanReplay(game, spec, recording);
  std::vector<std::vector<unsigned char>> const& reports = recording.results.reportedResults;
  ReportSettlement settlement;
  settlement.matches.assign(reports.size(), false);
  // How many reports name each end frame; one replay for each.
  std::map<std::uint32_t, int> ends;
  for (std::vector<unsigned char> const& report : reports) {
    if (std::optional<GameResult> const result = ReadResult(report)) {
      ++ends[result->endFrame];
    }
  }
  int mostNamed = 0;
  for (auto const& [endFrame, count] : ends) {
    ReplayPlan ending = plan;
    ending.hasExpectedEnd = true;
    ending.expectedEndFrame = endFrame;
    ReplayRun const run = RunReplay(game, ending, recording, stop);
    settlement.frames += run.frames;
    if (run.stopped) {
      settlement.stopped = true;
      return settlement;
    }
    for (std::size_t i = 0; i < reports.size(); ++i) {
      if (ReadResult(reports[i]) && ReplayMatches(reports[i], run.result)) {
        settlement.matches[i] = true;
      }
    }
    if (count > mostNamed) {
      mostNamed = count;
      settlement.truth = run.result;
    }
  }
  return settlement;
}
