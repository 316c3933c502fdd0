#include <gtest/gtest.h>

#include <fmt/format.h>

#include <deque>
#include <memory>

#include "net/GameRecordsWire.h"
#include "app/IUICommandSource.h"
#include "sim/LocalOnlyOrderSource.h"
#include "app/MainLoopContext.h"
#include "app/SDL3App.h"
#include "app/TestLog.h"
#include "support/Bytes.h"
#include "support/Checks.h"
#include "support/FakeRunningGame.h"
#include "support/HeadlessApp.h"
#include "support/TempDirectory.h"

using testing_support::ErrorText;

namespace {

// Gives one list of commands a frame, in order, and remembers what it saw.
class QueuedCommands final : public IUICommandSource {
public:
  void fillCommands(IAppState const& state, std::vector<UICmd>& commands) override {
    ++fills;
    EXPECT_TRUE(commands.empty()) << "the pages' commands must be dropped before the source's";
    lastMode = state.mode();
    if (!frames.empty()) {
      commands = std::move(frames.front());
      frames.pop_front();
    }
  }
  void observeState(IAppState const& state) override {
    ++observations;
    EXPECT_EQ(fills, observations - 1) << "observeState comes before fillCommands";
    lastMode = state.mode();
  }

  std::deque<std::vector<UICmd>> frames;
  int fills = 0;
  int observations = 0;
  int lastMode = -1;
};

class MainLoopContextTest : public HeadlessAppTest {
protected:
  std::unique_ptr<MainLoopContext> create(bool noFramePacing = true) {
    return MainLoopContext::Create(app_, "127.0.0.1", 6567, directory.str(), "", &source, noFramePacing);
  }

  // Puts the context into a local game with a fake session, as the tutorial transition would.
  FakeRunningGame& enterLocalGame(MainLoopContext& context, std::uint16_t level) {
    auto game = std::make_unique<FakeRunningGame>(context.shared.games.refGame(Game::GlowHorde), 15, 1000);
    FakeRunningGame& fake = *game;
    context.state =
        mainloop::LocalGameState{{std::move(game), {0}, 0, std::make_unique<LocalOnlyOrderSource>(1, 0, 15)}, level};
    return fake;
  }

  // Puts the context into a replay of a game recorded to end at frame 40 (its players ended it early,
  // at frame 25), whose session gives the recorded result but for the end-state checksum given. The
  // test log is written in logDirectory.
  FakeRunningGame& enterReplay(MainLoopContext& context, std::uint64_t reproducedChecksum) {
    TestLog::init((logDirectory.path() / "log.jsonl").string());
    GameResult const expected{40, {{5, 9}, {3, 1}}, 77};
    auto game = std::make_unique<FakeRunningGame>(context.shared.games.refGame(Game::Vipers), 15, 1000);
    FakeRunningGame& fake = *game;
    fake.result = GameResult{40, expected.results, reproducedChecksum};
    context.state = mainloop::ReplayState{{std::move(game), {0, 1}, 0, std::make_unique<LocalOnlyOrderSource>(2, 0, 15)},
                                          expected.endFrame, true, 15, testbytes::Encode(expected)};
    return fake;
  }
  std::string closedLog() {
    TestLog::close();
    return logDirectory.read("log.jsonl");
  }

  TempDirectory directory;
  TempDirectory logDirectory;
  QueuedCommands source;
};

}  // namespace

TEST_F(MainLoopContextTest, StartsOfflineWithTheSavedProgressAndTheBanner) {
  directory.write("userdata/progress.ini", "[tutorial]\n0=completed\n");
  auto context = create();
  EXPECT_EQ(context->stateIndex(), 0u);
  EXPECT_NE(context->shared.banner, nullptr);
  EXPECT_EQ(context->shared.tutorialProgress.statusOf(0), TutorialProgress::kCompleted);
  EXPECT_TRUE(app_->hasCursor("left_falling"));  // the game's cursors were loaded

  context->runOneFrame(false);
  EXPECT_EQ(context->appState.mode(), 0);
  EXPECT_EQ(context->appState.offlineData().directory, directory.str());
  EXPECT_EQ(context->appState.offlineData().tutorialProgress, &context->shared.tutorialProgress);
  EXPECT_EQ(context->appState.gameFrame(), 0u);
  EXPECT_FALSE(context->appState.gameRoomExists(0));
  EXPECT_EQ(source.observations, 1);
  EXPECT_EQ(source.lastMode, 0);
  // The interface filled the custom settings of each game on its first frame.
  EXPECT_EQ(context->shared.ui.lobbyState().customSettings.size(), 3u);
}

TEST_F(MainLoopContextTest, SkippingRenderingRunsNoCommandsAndNoSimulation) {
  auto context = create();
  FakeRunningGame& game = enterLocalGame(*context, 0);
  source.frames = {{UICmd::AbandonGame{}}};
  context->runOneFrame(true);
  EXPECT_EQ(source.observations, 0);
  EXPECT_EQ(game.uiChecks, 1);
  EXPECT_EQ(game.renders, 0);
  EXPECT_TRUE(game.steps.empty());
  EXPECT_EQ(context->appState.mode(), 4);
  EXPECT_EQ(context->stateIndex(), 3u);
}

TEST_F(MainLoopContextTest, ALocalGameStepsOncePerFrameAndShowsItsSnapshot) {
  auto context = create();
  FakeRunningGame& game = enterLocalGame(*context, 2);
  context->runOneFrame(false);
  context->runOneFrame(false);
  ASSERT_EQ(game.steps.size(), 2u);
  EXPECT_EQ(game.renders, 2);
  EXPECT_EQ(game.steps.back().orders.size(), 1u);

  GameData const& data = context->appState.gameData();
  EXPECT_EQ(context->appState.mode(), 4);
  EXPECT_EQ(data.localPlayer, 0);
  EXPECT_EQ(data.playerNames, (std::vector<std::string>{"Player"}));
  EXPECT_EQ(data.players, (std::vector<std::uint16_t>{0}));
  EXPECT_EQ(data.game, &game);
  // The snapshot is taken before the frame's step: the session stood at 16 when the second frame began.
  EXPECT_EQ(context->appState.gameFrame(), 17u);
}

TEST_F(MainLoopContextTest, LeavingATutorialLevelCompletesItOnlyWithAUnitOut) {
  directory.write("userdata/progress.ini", "[tutorial]\n1=skipped\n");
  auto context = create();
  // Abandoned with nobody out: the status stands and nothing is saved.
  enterLocalGame(*context, 1).result.results = {{0, 0}};
  source.frames = {{UICmd::AbandonGame{}}};
  context->runOneFrame(false);
  EXPECT_EQ(context->stateIndex(), 0u);
  EXPECT_EQ(context->shared.tutorialProgress.statusOf(1), TutorialProgress::kSkipped);
  EXPECT_EQ(directory.read("userdata/progress.ini"), "[tutorial]\n1=skipped\n");

  enterLocalGame(*context, 2).result.results = {{1, -30000}};
  source.frames = {{UICmd::ReturnToLobbyAfterGameEnd{}}};
  context->runOneFrame(false);
  EXPECT_EQ(context->stateIndex(), 0u);
  EXPECT_EQ(context->shared.tutorialProgress.statusOf(2), TutorialProgress::kCompleted);
  EXPECT_EQ(directory.read("userdata/progress.ini"), "[tutorial]\n1=skipped\n2=completed\n\n[attempts]\n");
}

TEST_F(MainLoopContextTest, AReplayEndsAtTheRecordedEndAndProvesItsResult) {
  auto context = create();
  FakeRunningGame& game = enterReplay(*context, 77);
  // The session starts at frame 15 and would run to 1000; the background action brings its end
  // forward at frame 25, when frame + 15 is the recorded end, and it ends 15 frames later.
  for (int frame = 0; frame < 30; ++frame) context->runOneFrame(false);
  EXPECT_EQ(game.currentFrame(), 40u);
  EXPECT_EQ(game.endGameNowCalls, 1);
  EXPECT_TRUE(game.gameEnded());

  source.frames = {{UICmd::ReturnToLobbyAfterGameEnd{}}};
  context->runOneFrame(false);
  EXPECT_EQ(context->stateIndex(), 0u);
  EXPECT_EQ(closedLog(),
            "{\"event\":\"replay_verification\",\"matched\":true,\"end_frame\":40,\"end_state_checksum\":77}\n");
}

TEST_F(MainLoopContextTest, AReplayThatDoesntReproduceItsResultIsFatal) {
  auto context = create();
  enterReplay(*context, 78);
  for (int frame = 0; frame < 25; ++frame) context->runOneFrame(false);
  source.frames = {{UICmd::AbandonGame{}}};
  EXPECT_EQ(ErrorText([&] { context->runOneFrame(false); }), "Result does not match expected result.");
  EXPECT_EQ(closedLog(),
            "{\"event\":\"replay_verification\",\"matched\":false,\"end_frame\":40,\"end_state_checksum\":78}\n");
}

TEST_F(MainLoopContextTest, ARecordingWhoseAgreedResultDoesntReadReplaysToItsEndWithoutAComparison) {
  auto context = create();
  GameResults results;
  results.specBytes = testbytes::Encode(GameSpec{Game::GlowHorde, CoopChallengeIndex{0}, 15, 1, 1});
  results.finished = true;
  results.playerIds = {{1, 1, 1, 1, 1, 1, 1, 1}};
  results.playerNames = {"A"};
  results.playerSlots = {0};
  results.reportedResults = {{1, 2, 3}};  // agreed by the one player, but too short to be a result
  context->shared.recordings.emplace_back(std::deque<std::vector<unsigned char>>{{0}}, results);
  source.frames = {{UICmd::ReplaySelectedRecording{0}}};
  context->runOneFrame(false);
  ASSERT_EQ(context->stateIndex(), 4u);
  auto& replay = std::get<mainloop::ReplayState>(context->state);
  EXPECT_FALSE(replay.hasExpectedEnd);
  EXPECT_FALSE(replay.expectedResult.has_value());

  // The session runs to its own end (a short fake one stands in for it) and is left with no comparison.
  replay.game = std::make_unique<FakeRunningGame>(context->shared.games.refGame(Game::GlowHorde), 15, 20);
  replay.orderSource = std::make_unique<LocalOnlyOrderSource>(1, 0, 15);
  for (int frame = 0; frame < 25; ++frame) context->runOneFrame(false);
  EXPECT_TRUE(replay.game->gameEnded());
  source.frames = {{UICmd::ReturnToLobbyAfterGameEnd{}}};
  EXPECT_EQ(ErrorText([&] { context->runOneFrame(false); }), "no error");
  EXPECT_EQ(context->stateIndex(), 0u);
}

TEST_F(MainLoopContextTest, ARecordingWithNoPlayersOrMoreThanItsMapHoldsIsRefusedClearly) {
  auto context = create();
  // The first challenge is on a map of four places.
  GameResults results;
  results.specBytes = testbytes::Encode(GameSpec{Game::GlowHorde, CoopChallengeIndex{0}, 15, 1, 1});
  for (std::vector<unsigned short> const& slots : {std::vector<unsigned short>{}, std::vector<unsigned short>(5, 0)}) {
    results.playerSlots = slots;
    context->shared.recordings.assign(1, Recording(std::deque<std::vector<unsigned char>>{}, results));
    source.frames = {{UICmd::ReplaySelectedRecording{0}}};
    EXPECT_EQ(ErrorText([&] { context->runOneFrame(false); }),
              fmt::format("The recording names {} players, but its map has places for 1 to 4.", slots.size()));
    EXPECT_EQ(context->stateIndex(), 0u);
  }
}

TEST_F(MainLoopContextTest, ReplayingARecordingThatIsntThereIsAClearError) {
  auto context = create();
  source.frames = {{UICmd::ReplaySelectedRecording{0}}};
  EXPECT_EQ(ErrorText([&] { context->runOneFrame(false); }), "There is no recording number 0 to replay.");
}

TEST_F(MainLoopContextTest, PacedFramesRecordTheirSections) {
  auto context = create(false);
  context->runOneFrame(false);
  context->runOneFrame(false);
  for (char const* section : {"events", "ui checks/snapshot update", "rendering"}) {
    ASSERT_TRUE(context->timings.sections.contains(section)) << section;
    EXPECT_EQ(context->timings.sections.at(section).size(), 50u) << section;
  }
  // A frame ends by starting the next one, whose first section is already charged.
  ASSERT_TRUE(context->timings.sections.contains("start adjust"));
  EXPECT_EQ(context->timings.sections.at("start adjust").size(), 51u);

  auto unpaced = create(true);
  unpaced->runOneFrame(false);
  EXPECT_TRUE(unpaced->timings.sections.empty());
}

// Recordings come from the server and from files: a GameSpec that names what this client doesn't have ends
// at a clear error, never in a crash.
TEST_F(MainLoopContextTest, AHostileRecordingIsRefusedClearly) {
  struct Case {
    char const* what;
    GameSpec spec;
    std::vector<unsigned short> slots;
  };
  GameSettings noMap;
  GameSettings unknownMap;
  unknownMap.strings["map"] = "no such map";
  GameSettings noInterval = DefaultSettingsFromSchema(create()->shared.games.refGame(Game::GlowHorde).schema);
  noInterval.strings["map"] = "Cauldrons";
  noInterval.ints["spawn_interval_deciseconds"] = 0;
  Case const cases[] = {
      {"a challenge index past the table", GameSpec{Game::GlowHorde, CoopChallengeIndex{999}, 15, 1, 1}, {0}},
      {"a ranked match index past the table", GameSpec{Game::Aviators, RankedMatchIndex{999}, 15, 2, 2}, {0, 1}},
      {"custom settings without a map", GameSpec{Game::Vipers, noMap, 15, 1, 1}, {0}},
      {"custom settings with an unknown map", GameSpec{Game::GlowHorde, unknownMap, 15, 1, 1}, {0}},
      {"a custom setting out of its range", GameSpec{Game::GlowHorde, noInterval, 15, 1, 1}, {0}},
      {"a slot the map doesn't have", GameSpec{Game::GlowHorde, CoopChallengeIndex{0}, 15, 1, 1}, {9}},
  };
  for (Case const& c : cases) {
    SCOPED_TRACE(c.what);
    auto context = create();
    GameResults results;
    ToBytes(c.spec, results.specBytes);
    results.playerSlots = c.slots;
    context->shared.recordings.push_back(Recording({}, results));
    source.frames = {{UICmd::ReplaySelectedRecording{0}}};
    EXPECT_TRUE(ErrorText([&] { context->runOneFrame(false); }).starts_with("The recording can't be replayed: "));
    EXPECT_EQ(context->stateIndex(), 0u);
  }
}
