#include "app/ProcessUICommands.h"

#include <filesystem>
#include <stdexcept>
#include <type_traits>

#include "accounts/CredentialsFile.h"
#include "accounts/RandomCredentials.h"
#include "net/GameRecordsWire.h"
#include "sim/RecordingFiles.h"
#include "app/SDL3App.h"

namespace {

namespace fs = std::filesystem;

template <class... Functions>
struct Overloaded : Functions... {
  using Functions::operator()...;
};
// Aggregate deduction from the lambdas; clang 16 does not yet deduce aggregates of base classes itself.
template <class... Functions>
Overloaded(Functions...) -> Overloaded<Functions...>;

void FirstPass(SDL3App& app, std::vector<UICmd> const& commands, std::string const& directory) {
  for (UICmd const& command : commands) {
    std::visit(Overloaded{
                   [&](UICmd::ClearCredentials const&) { fs::remove(fs::path(directory) / "credentials.bin"); },
                   [&](UICmd::SetCredentials const& set) {
                     SaveCredentials(set.credentials, (fs::path(directory) / "credentials.bin").string());
                   },
                   [&](UICmd::ToggleFullScreen const&) { app.toggleFullScreen(); },
                   [](auto const&) {},
               },
               command.value);
  }
}

// The saved file is read first, so that it is needed even when a directory of test accounts replaces it.
Credentials CredentialsForConnecting(mainloop::SharedData const& shared, std::string const& directory) {
  Credentials credentials = LoadCredentials((fs::path(directory) / "credentials.bin").string());
  if (!shared.randomCredentialsDirectory.empty()) {
    credentials = LoadRandomCredentials(shared.randomCredentialsDirectory);
  }
  return credentials;
}

void RefreshRecordings(mainloop::SharedData& shared, std::string const& directory) {
  std::vector<Recording> recordings = LoadRecordingsFromDirectory((fs::path(directory) / "recordings").string());
  std::vector<GameResults> playedGames;
  playedGames.reserve(recordings.size());
  for (Recording const& recording : recordings) {
    playedGames.push_back(recording.results);
  }
  shared.recordings = std::move(recordings);
  shared.playedGames = std::move(playedGames);
}

void OfflinePass(mainloop::SharedData& shared, std::vector<UICmd> const& commands, std::string const& directory,
                 bool& quit, CommandOutcome& outcome) {
  for (UICmd const& command : commands) {
    std::visit(Overloaded{
                   [&](UICmd::ConnectToServer const&) {
                     outcome.transition = transition::Connect{CredentialsForConnecting(shared, directory)};
                   },
                   [&](UICmd::ReplaySelectedRecording const& replay) {
                     outcome.transition = transition::ReplayRecording{replay.index};
                   },
                   [&](UICmd::RefreshRecordings const&) { RefreshRecordings(shared, directory); },
                   [&](UICmd::PlayTutorial const& play) {
                     shared.tutorialProgress.attempts[play.level] += 1;
                     SaveTutorialProgress(directory, shared.tutorialProgress);
                     outcome.transition = transition::PlayTutorial{play.level};
                   },
                   [&](UICmd::SkipTutorial const& skip) {
                     shared.tutorialProgress.status[skip.level] = TutorialProgress::kSkipped;
                     SaveTutorialProgress(directory, shared.tutorialProgress);
                   },
                   [&](UICmd::QuitToDesktop const&) { quit = true; },
                   [](auto const&) {},
               },
               command.value);
  }
}

// The in-game commands of a local game or a replay. A replay keeps the result only if it was taken at
// the expected end, or if there is no expected end.
template <class GameState>
void LocalGamePass(GameState& state, std::vector<UICmd> const& commands, CommandOutcome& outcome) {
  auto leave = [&] {
    GameResult result;
    state.game->getGameResult(result);
    bool keep = true;
    if constexpr (std::is_same_v<GameState, mainloop::ReplayState>) {
      keep = !state.hasExpectedEnd || result.endFrame == state.expectedEndFrame;
    }
    if (keep) {
      outcome.result = std::move(result);
    }
    outcome.leave = true;
  };
  for (UICmd const& command : commands) {
    std::visit(Overloaded{
                   [&](UICmd::ReturnToLobbyAfterGameEnd const&) { leave(); },
                   [&](UICmd::AbandonGame const&) { leave(); },
                   [&](UICmd::EndGameEarly const&) { state.game->endGameNow(); },
                   [&](UICmd::InjectGameOrder const& inject) { state.game->injectOrder(inject.order); },
                   [](auto const&) {},
               },
               command.value);
  }
}

// Without a game the lobby's commands go to the lobby client; during a network game only the in-game
// commands count, so a player leaves the game before leaving a room or the server.
void ConnectedPass(mainloop::ConnectedState& state, std::vector<UICmd> const& commands, CommandOutcome& outcome) {
  LobbyClient& lobby = *state.lobby;
  if (state.game) {
    IRunningGame& game = *state.game;
    for (UICmd const& command : commands) {
      std::visit(Overloaded{
                     [&](UICmd::ReturnToLobbyAfterGameEnd const&) { outcome.leave = true; },
                     [&](UICmd::AbandonGame const&) { outcome.leave = true; },
                     [&](UICmd::EndGameEarly const&) { game.endGameNow(); },
                     [&](UICmd::InjectGameOrder const& inject) { game.injectOrder(inject.order); },
                     [&](UICmd::MarkAllServerLogEntriesSeen const&) { lobby.markAllErrorsSeen(); },
                     [](auto const&) {},
                 },
                 command.value);
    }
    return;
  }
  for (UICmd const& command : commands) {
    std::visit(Overloaded{
                   [&](UICmd::DisconnectFromServer const&) { outcome.disconnect = true; },
                   [&](UICmd::MoveToGameRoom const& c) { lobby.moveToGameRoom(c.room); },
                   [&](UICmd::MoveToSlot const& c) { lobby.moveToSlot(c.slot); },
                   [&](UICmd::SetReadyState const& c) { lobby.setReadyState(c.ready); },
                   [&](UICmd::StartGame const&) { lobby.requestGameStart(); },
                   [&](UICmd::CreateGame const& c) {
                     GameSpec const spec = ParseGameSpec(c.specBytes);
                     // In a ranked match one account can't take two places.
                     bool const repeatedIdsAllowed = !std::holds_alternative<RankedMatchIndex>(spec.settings);
                     lobby.requestCreateGame(c.description, c.specBytes, spec.minPlayers, spec.maxPlayers,
                                             repeatedIdsAllowed);
                   },
                   [&](UICmd::LeaveGameRoom const&) { lobby.leaveGameRoom(); },
                   [&](UICmd::ChangeName const& c) { lobby.changeName(c.name); },
                   [&](UICmd::RequestRecording const& c) { lobby.requestRecording(c.game); },
                   [&](UICmd::MarkAllServerLogEntriesSeen const&) { lobby.markAllErrorsSeen(); },
                   [](auto const&) {},
               },
               command.value);
  }
}

}  // namespace

template <class State>
void ProcessUICommands(SDL3App& app, [[maybe_unused]] mainloop::SharedData& shared, [[maybe_unused]] State& state,
                       std::vector<UICmd> const& commands, std::string const& directory, [[maybe_unused]] bool& quit,
                       [[maybe_unused]] CommandOutcome& outcome) {
  FirstPass(app, commands, directory);
  if constexpr (std::is_same_v<State, mainloop::OfflineState>) {
    OfflinePass(shared, commands, directory, quit, outcome);
  } else if constexpr (std::is_same_v<State, mainloop::LocalGameState> || std::is_same_v<State, mainloop::ReplayState>) {
    LocalGamePass(state, commands, outcome);
  } else if constexpr (std::is_same_v<State, mainloop::ConnectedState>) {
    ConnectedPass(state, commands, outcome);
  }
}

template void ProcessUICommands(SDL3App&, mainloop::SharedData&, mainloop::OfflineState&, std::vector<UICmd> const&,
                                std::string const&, bool&, CommandOutcome&);
template void ProcessUICommands(SDL3App&, mainloop::SharedData&, mainloop::ConnectingState&,
                                std::vector<UICmd> const&, std::string const&, bool&, CommandOutcome&);
template void ProcessUICommands(SDL3App&, mainloop::SharedData&, mainloop::ConnectedState&, std::vector<UICmd> const&,
                                std::string const&, bool&, CommandOutcome&);
template void ProcessUICommands(SDL3App&, mainloop::SharedData&, mainloop::LocalGameState&,
                                std::vector<UICmd> const&, std::string const&, bool&, CommandOutcome&);
template void ProcessUICommands(SDL3App&, mainloop::SharedData&, mainloop::ReplayState&, std::vector<UICmd> const&,
                                std::string const&, bool&, CommandOutcome&);
