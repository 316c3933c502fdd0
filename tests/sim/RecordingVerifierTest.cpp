#include <gtest/gtest.h>

#include <atomic>
#include <deque>
#include <random>
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

// Recorded orders are bytes from a file or the network: a game of each kind whose every step carries
// random orders of random lengths for every player replays to its end without harm, and to the same
// result twice.
TEST(RecordingVerifier, GarbageOrdersOfEveryGameReplayToTheSameEnd) {
  for (Game which : {Game::GlowHorde, Game::Aviators, Game::Vipers}) {
    SCOPED_TRACE(static_cast<int>(which));
    IGame const& game = TheGames().refGame(which);
    GameSettings settings = DefaultSettingsFromSchema(game.schema);
    settings.ints["duration_seconds"] = 30;
    GameResults results;
    ToBytes(GameSpec{which, settings, 15, 2, 2}, results.specBytes);
    results.playerSlots = {0, 1};
    results.reportedResults.resize(2);
    std::mt19937 random(static_cast<unsigned>(which) + 11);
    std::deque<Bytes> newestFirst;
    for (int step = 0; step < 1000; ++step) {
      Bytes update;
      for (int player = 0; player < 2; ++player) {
        auto const length = static_cast<unsigned char>(random() % 12);
        update.push_back(length);
        for (unsigned char i = 0; i < length; ++i) update.push_back(static_cast<unsigned char>(random()));
      }
      newestFirst.push_front(std::move(update));
    }
    Recording const recording(newestFirst, results);
    RecordingVerdict const first = VerifyRecording(TheGames(), recording);
    RecordingVerdict const second = VerifyRecording(TheGames(), recording);
    EXPECT_EQ(first.outcome, RecordingVerdict::Outcome::NoAgreedResult);
    // At most the game's 30 seconds (a ship game ends sooner once one ship is left).
    EXPECT_GT(first.run.frames, 15u);
    EXPECT_LE(first.run.frames, 30u * 60u);
    EXPECT_EQ(first.run.result, second.run.result);
  }
}
