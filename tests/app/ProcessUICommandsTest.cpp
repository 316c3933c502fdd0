#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>

#include "accounts/CredentialsFile.h"
#include "net/GameRecordsWire.h"
#include "app/ProcessUICommands.h"
#include "app/SDL3App.h"
#include "support/FakeRunningGame.h"
#include "support/HeadlessApp.h"
#include "support/TempDirectory.h"

namespace {

class ProcessUICommandsTest : public HeadlessAppTest {
protected:
  template <class State>
  CommandOutcome run(State& state, std::vector<UICmd> const& commands) {
    CommandOutcome outcome;
    ProcessUICommands(*app_, shared, state, commands, directory.str(), quit, outcome);
    return outcome;
  }

  std::string progressFile() const { return directory.read("userdata/progress.ini"); }

  TempDirectory directory;
  mainloop::SharedData shared;
  mainloop::OfflineState offline;
  bool quit = false;
};

}  // namespace

TEST_F(ProcessUICommandsTest, TheLastRequestedTransitionStands) {
  CommandOutcome outcome = run(offline, {UICmd::PlayTutorial{0}, UICmd::PlayTutorial{2}});
  ASSERT_TRUE(outcome.transition.has_value());
  ASSERT_TRUE(std::holds_alternative<transition::PlayTutorial>(*outcome.transition));
  EXPECT_EQ(std::get<transition::PlayTutorial>(*outcome.transition).level, 2);
  // Both commands were carried out: each level's attempt was counted and saved before its start.
  EXPECT_EQ(progressFile(), "[tutorial]\n\n[attempts]\n0=1\n2=1\n");

  outcome = run(offline, {UICmd::PlayTutorial{1}, UICmd::ReplaySelectedRecording{4}});
  ASSERT_TRUE(outcome.transition.has_value());
  EXPECT_EQ(std::get<transition::ReplayRecording>(*outcome.transition).index, 4u);

  outcome = run(offline, {UICmd::ReplaySelectedRecording{4}, UICmd::PlayTutorial{3}});
  EXPECT_EQ(std::get<transition::PlayTutorial>(*outcome.transition).level, 3);
  EXPECT_EQ(shared.tutorialProgress.attemptsOf(1), 1);
  EXPECT_EQ(shared.tutorialProgress.attemptsOf(3), 1);
}

TEST_F(ProcessUICommandsTest, TheFirstPassRunsBeforeAnyCommandOfTheSecond) {
  // SkipTutorial comes first in the list but belongs to the second pass; SetCredentials fails in the
  // first pass (a folder stands where the file would go), so the skip is never carried out.
  std::filesystem::create_directories(directory.path() / "credentials.bin");
  UICmd::SetCredentials set;
  set.credentials.playerId.assign(8, 1);
  set.credentials.secret.assign(16, 2);
  EXPECT_THROW(run(offline, {UICmd::SkipTutorial{1}, set}), std::runtime_error);
  EXPECT_FALSE(directory.exists("userdata/progress.ini"));
  EXPECT_EQ(shared.tutorialProgress.statusOf(1), TutorialProgress::kToDo);

  bool const wasFullScreen = app_->isFullScreen();
  CommandOutcome const outcome = run(offline, {UICmd::QuitToDesktop{}, UICmd::ToggleFullScreen{}, UICmd::SkipTutorial{1}});
  EXPECT_TRUE(quit);
  EXPECT_NE(app_->isFullScreen(), wasFullScreen);
  EXPECT_FALSE(outcome.transition.has_value());
  EXPECT_EQ(progressFile(), "[tutorial]\n1=skipped\n\n[attempts]\n");
  run(offline, {UICmd::ToggleFullScreen{}});
  EXPECT_EQ(app_->isFullScreen(), wasFullScreen);
}

TEST_F(ProcessUICommandsTest, ClearCredentialsRemovesTheFileAndIsHarmlessWithoutOne) {
  directory.write("credentials.bin", "data");
  run(offline, {UICmd::ClearCredentials{}});
  EXPECT_FALSE(directory.exists("credentials.bin"));
  EXPECT_NO_THROW(run(offline, {UICmd::ClearCredentials{}}));
}

TEST_F(ProcessUICommandsTest, SetCredentialsSavesInEveryStateAndConnectingLoadsThem) {
  Credentials const saved{std::vector<unsigned char>(8, 1), std::vector<unsigned char>(16, 2)};
  mainloop::LocalGameState local;
  local.game = std::make_unique<FakeRunningGame>(shared.games.refGame(Game::GlowHorde), 15, 100);
  run(local, {UICmd::SetCredentials{saved}, UICmd::ConnectToServer{}});
  EXPECT_EQ(LoadCredentials(directory.file("credentials.bin")), saved);

  CommandOutcome const outcome = run(offline, {UICmd::ConnectToServer{}});
  ASSERT_TRUE(outcome.transition.has_value());
  EXPECT_EQ(std::get<transition::Connect>(*outcome.transition).credentials, saved);
}

TEST_F(ProcessUICommandsTest, ARandomCredentialsDirectoryReplacesTheSavedFileButNeedsIt) {
  TempDirectory accounts;
  shared.randomCredentialsDirectory = accounts.str();
  auto failure = [&] {
    try {
      run(offline, {UICmd::ConnectToServer{}});
    } catch (std::exception const& error) {
      return std::string(error.what());
    }
    return std::string("connected");
  };
  EXPECT_EQ(failure(), "Failed to open file: " + directory.file("credentials.bin"));
  Credentials const saved{std::vector<unsigned char>(8, 1), std::vector<unsigned char>(16, 2)};
  run(offline, {UICmd::SetCredentials{saved}});
  std::filesystem::create_directories(accounts.path() / "subfolder");  // not a regular file
  EXPECT_EQ(failure(), "No files found in directory");

  std::vector<Credentials> const choices = {{std::vector<unsigned char>(8, 3), std::vector<unsigned char>(16, 4)},
                                            {std::vector<unsigned char>(8, 5), std::vector<unsigned char>(16, 6)}};
  SaveCredentials(choices[0], accounts.file("a.bin"));
  SaveCredentials(choices[1], accounts.file("b.bin"));
  for (int i = 0; i < 8; ++i) {
    CommandOutcome const outcome = run(offline, {UICmd::ConnectToServer{}});
    Credentials const& picked = std::get<transition::Connect>(*outcome.transition).credentials;
    EXPECT_TRUE(picked == choices[0] || picked == choices[1]);
  }
}

TEST_F(ProcessUICommandsTest, CommandsThatTheOfflineStateDoesntHonourAreIgnored) {
  CommandOutcome const outcome =
      run(offline, {UICmd::MoveToGameRoom{1}, UICmd::MoveToSlot{-1}, UICmd::SetReadyState{true}, UICmd::StartGame{},
                    UICmd::CreateGame{"room", {1, 2}}, UICmd::LeaveGameRoom{}, UICmd::ChangeName{"n"},
                    UICmd::RequestRecording{3}, UICmd::DisconnectFromServer{}, UICmd::ReturnToLobbyAfterGameEnd{},
                    UICmd::AbandonGame{}, UICmd::EndGameEarly{}, UICmd::InjectGameOrder{"o"},
                    UICmd::MarkAllServerLogEntriesSeen{}});
  EXPECT_FALSE(quit);
  EXPECT_FALSE(outcome.leave);
  EXPECT_FALSE(outcome.disconnect);
  EXPECT_FALSE(outcome.transition.has_value());
  EXPECT_FALSE(directory.exists("userdata"));
}

TEST_F(ProcessUICommandsTest, ALocalGameHonoursOnlyItsInGameCommands) {
  mainloop::LocalGameState local;
  auto game = std::make_unique<FakeRunningGame>(shared.games.refGame(Game::GlowHorde), 15, 100);
  FakeRunningGame& fake = *game;
  fake.result.results = {{2, -4000}};
  local.game = std::move(game);

  CommandOutcome const outcome =
      run(local, {UICmd::QuitToDesktop{}, UICmd::PlayTutorial{0}, UICmd::SkipTutorial{0}, UICmd::EndGameEarly{},
                  UICmd::InjectGameOrder{"dig_down 10 20"}, UICmd::DisconnectFromServer{}, UICmd::AbandonGame{}});
  EXPECT_FALSE(quit);
  EXPECT_FALSE(outcome.transition.has_value());
  EXPECT_FALSE(directory.exists("userdata"));
  EXPECT_EQ(fake.endGameNowCalls, 1);
  EXPECT_EQ(fake.injected, (std::vector<std::string>{"dig_down 10 20"}));
  EXPECT_TRUE(outcome.leave);
  ASSERT_TRUE(outcome.result.has_value());
  EXPECT_EQ(outcome.result->results, fake.result.results);
}

TEST_F(ProcessUICommandsTest, AReplayKeepsTheResultOnlyAtItsExpectedEnd) {
  auto game = std::make_unique<FakeRunningGame>(shared.games.refGame(Game::Aviators), 15, 100);
  FakeRunningGame& fake = *game;
  mainloop::ReplayState replay{{std::move(game)}, 40, true};  // expected to end at frame 40

  CommandOutcome outcome = run(replay, {UICmd::ReturnToLobbyAfterGameEnd{}});
  EXPECT_TRUE(outcome.leave);
  EXPECT_FALSE(outcome.result.has_value());  // left at frame 15, before the expected end

  for (int i = 0; i < 25; ++i) fake.update({}, {});
  outcome = run(replay, {UICmd::ReturnToLobbyAfterGameEnd{}});
  ASSERT_TRUE(outcome.result.has_value());
  EXPECT_EQ(outcome.result->endFrame, 40u);

  replay.hasExpectedEnd = false;  // with no expected end any result is kept
  fake.update({}, {});
  outcome = run(replay, {UICmd::AbandonGame{}});
  ASSERT_TRUE(outcome.result.has_value());
  EXPECT_EQ(outcome.result->endFrame, 41u);
}

TEST_F(ProcessUICommandsTest, RefreshRecordingsReplacesTheListAndItsPlayedGames) {
  GameResults const results{.finished = true, .playerNames = {"a", "b"}, .playerSlots = {0, 1}};
  Recording const recording(std::deque<std::vector<unsigned char>>{{1, 7, 0}, {0, 0}}, results);
  std::filesystem::create_directories(directory.path() / "recordings");
  recording.save((directory.path() / "recordings" / "recording12.bin").string());
  directory.write("recordings/recording13.bin", "not a recording");  // left out, with a line on stderr
  directory.write("recordings/recording14.bin.old", "ignored by name");

  shared.playedGames.push_back(GameResults{});  // a stale list is replaced, not added to
  run(offline, {UICmd::RefreshRecordings{}});
  ASSERT_EQ(shared.recordings.size(), 1u);
  EXPECT_EQ(shared.recordings.front(), recording);
  EXPECT_EQ(shared.playedGames, (std::vector<GameResults>{results}));
}
