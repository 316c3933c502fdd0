#include <gtest/gtest.h>

#include <atomic>
#include <deque>
#include <stdexcept>

#include "net/GameRecordsWire.h"
#include "sim/HeadlessGames.h"
#include "sim/Recording.h"
#include "sim/RecordingVerifier.h"

namespace {

using Bytes = std::vector<unsigned char>;

HeadlessGames const& TheGames() {
  static HeadlessGames const games;
  return games;
}

// A two-player Vipers game of 30 seconds without orders, with the given reports.
Recording VipersGame(std::vector<Bytes> reports, int duration = 30) {
  GameSettings settings = DefaultSettingsFromSchema(TheGames().refGame(Game::Vipers).schema);
  settings.ints["duration_seconds"] = duration;
  GameResults results;
  ToBytes(GameSpec{Game::Vipers, settings, 15, 2, 2}, results.specBytes);
  results.finished = true;
  results.playerSlots = {0, 1};
  results.playerNames = {"Ann", "Ben"};
  results.reportedResults = std::move(reports);
  return Recording(std::deque<Bytes>{}, results);
}

Bytes ToWire(GameResult const& result) {
  Bytes bytes;
  ToBytes(result, bytes);
  return bytes;
}

// The result of the game ended at endFrame (0: at its own end), from a replay with no report at all.
GameResult Replayed(std::uint32_t endFrame) {
  Recording const recording = VipersGame({{}, {}});
  IGame const& game = TheGames().refGame(Game::Vipers);
  ReplayPlan plan = PlanReplay(game, ParseGameSpec(recording.results.specBytes), recording);
  plan.hasExpectedEnd = endFrame != 0;
  plan.expectedEndFrame = endFrame;
  return RunReplay(game, plan, recording).result;
}

}  // namespace

TEST(RecordingVerifier, SettlesEachReportAgainstAReplayToItsOwnEnd) {
  GameResult const full = Replayed(0);
  GameResult const early = Replayed(300);  // a game both players ended at frame 300
  ASSERT_EQ(early.endFrame, 300u);
  ASSERT_NE(ToWire(full), ToWire(early));
  GameResult forged = full;
  forged.endStateChecksum ^= 1;
  GameResult longer = full;
  longer.results.push_back({1, 2});

  struct Case {
    char const* name;
    std::vector<Bytes> reports;
    std::vector<bool> matches;
    RecordingVerdict::Outcome outcome;
  };
  Case const cases[] = {
      {"both true", {ToWire(full), ToWire(full)}, {true, true}, RecordingVerdict::Outcome::Reproduced},
      {"both true, ended early", {ToWire(early), ToWire(early)}, {true, true}, RecordingVerdict::Outcome::Reproduced},
      {"one forged", {ToWire(full), ToWire(forged)}, {true, false}, RecordingVerdict::Outcome::NoAgreedResult},
      {"one with a row more", {ToWire(longer), ToWire(full)}, {false, true}, RecordingVerdict::Outcome::NoAgreedResult},
      {"both forged alike", {ToWire(forged), ToWire(forged)}, {false, false}, RecordingVerdict::Outcome::Differs},
      {"different ends, both true", {ToWire(early), ToWire(full)}, {true, true},
       RecordingVerdict::Outcome::NoAgreedResult},
      {"one missing", {ToWire(full), {}}, {true, false}, RecordingVerdict::Outcome::Reproduced},
      {"one unreadable", {ToWire(full), {1, 2, 3}}, {true, false}, RecordingVerdict::Outcome::NoAgreedResult},
  };
  for (Case const& c : cases) {
    SCOPED_TRACE(c.name);
    Recording const recording = VipersGame(c.reports);
    ReportSettlement const settlement = SettleReports(TheGames(), recording);
    EXPECT_EQ(settlement.matches, c.matches);
    EXPECT_FALSE(settlement.stopped);
    EXPECT_EQ(VerifyRecording(TheGames(), recording).outcome, c.outcome);
  }
  // The truth shown is the replay at the end that most reports name, the earliest on a tie.
  EXPECT_EQ(SettleReports(TheGames(), VipersGame({ToWire(early), ToWire(full)})).truth, early);
  EXPECT_EQ(SettleReports(TheGames(), VipersGame({ToWire(forged), ToWire(full)})).truth, full);
}

TEST(RecordingVerifier, ARaisedStopEndsTheReplayAfterOneFrame) {
  std::atomic<bool> const stop{true};
  ReportSettlement const settlement = SettleReports(TheGames(), VipersGame({ToWire(Replayed(0)), {}}, 600), &stop);
  EXPECT_TRUE(settlement.stopped);
  EXPECT_EQ(settlement.frames, 1u);
}

TEST(RecordingVerifier, RefusesRecordingsThatNameWhatNoGameHas) {
  auto with = [](auto change) {
    Recording recording = VipersGame({{}, {}});
    GameSpec spec = ParseGameSpec(recording.results.specBytes);
    change(spec, recording.results);
    recording.results.specBytes.clear();
    ToBytes(spec, recording.results.specBytes);
    return recording;
  };
  Recording const hostile[] = {
      with([](GameSpec& spec, GameResults&) { spec.game = static_cast<Game>(7); }),
      with([](GameSpec& spec, GameResults&) { std::get<GameSettings>(spec.settings).ints["duration_seconds"] = 1 << 30; }),
      with([](GameSpec& spec, GameResults&) { std::get<GameSettings>(spec.settings).strings["map"] = "Nowhere"; }),
      with([](GameSpec& spec, GameResults&) { spec.settings = RankedMatchIndex{999}; }),
      with([](GameSpec&, GameResults& results) { results.playerSlots = {0, 1, 2, 3, 0}; }),
      with([](GameSpec&, GameResults& results) { results.playerSlots = {}; }),
      with([](GameSpec&, GameResults& results) { results.playerSlots = {0, 9}; }),
  };
  for (Recording const& recording : hostile) {
    EXPECT_THROW(VerifyRecording(TheGames(), recording), std::runtime_error);
    EXPECT_THROW(SettleReports(TheGames(), recording), std::runtime_error);
  }
}
