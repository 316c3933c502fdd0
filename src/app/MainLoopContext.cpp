#include "app/MainLoopContext.h"

#include <fmt/format.h>

#include <functional>
#include <stdexcept>
#include <type_traits>

#include "net/GameRecordsWire.h"
#include "sim/IGame.h"
#include "sim/KeyLookup.h"
#include "app/IUICommandSource.h"
#include "sim/LocalOnlyOrderSource.h"
#include "app/ProcessUICommands.h"
#include "app/QZAssert.h"
#include "sim/ReplayOrderSource.h"
#include "sim/ResultConsensus.h"
#include "app/SDL3App.h"
#include "app/ShowPerformanceTimings.h"
#include "app/TestLog.h"
#include "present/TextureCache.h"
#include "glow_horde/TutorialLevelSettings.h"
#include "sim/UpdateSimulation.h"

namespace {

constexpr RGBColour kClearColour{0.06f, 0.04f, 0.01f};
// Microseconds of game time in one frame: 1000000 / 60 in integer arithmetic.
constexpr unsigned long long kFramePeriod = 16666;
constexpr unsigned char kTutorialDelayFrames = 15;

}  // namespace

MainLoopContext::MainLoopContext(std::shared_ptr<SDL3App> shell) : app(std::move(shell)) {}

MainLoopContext::~MainLoopContext() = default;

std::unique_ptr<MainLoopContext> MainLoopContext::Create(std::shared_ptr<SDL3App> app, std::string ip,
                                                         unsigned short basePort, std::string storageDirectory,
                                                         std::string randomCredentialsDirectory,
                                                         IUICommandSource* commandSource, bool noFramePacing) {
  Games::oneTimeAppInit(*app);
  std::unique_ptr<MainLoopContext> context(new MainLoopContext(std::move(app)));
  context->shared.directory = storageDirectory;
  context->shared.ip = std::move(ip);
  context->shared.port = basePort;
  context->shared.randomCredentialsDirectory = std::move(randomCredentialsDirectory);
  context->storageDirectory = std::move(storageDirectory);
  context->commandSource = commandSource;
  context->noFramePacing = noFramePacing;
  context->appState.setGames(&context->shared.games);
  context->shared.tutorialProgress = LoadTutorialProgress(context->storageDirectory);
  context->shared.banner = context->app->getTextures().getTexture("banner.png");
  context->state = mainloop::OfflineState{};
  return context;
}

void MainLoopContext::waitAndStartFrame() {
  if (noFramePacing) {
    return;
  }
  limiter.waitForNextFrame();
  timings.nextFrame();
  endSection("start adjust");
}

void MainLoopContext::endSection(char const* name) {
  if (noFramePacing) {
    return;
  }
  timings.endSection(name, limiter);
}

void MainLoopContext::runOneFrame(bool skipRendering) {
  std::visit([this, skipRendering](auto& current) { frame(current, skipRendering); }, state);
  if (next_) {
    // The old state is destroyed here, field by field in reverse order, after the pages have run.
    state = std::move(*next_);
    next_.reset();
  }
}

void MainLoopContext::refreshOfflineSnapshot() {
  OfflineData& offline = appState.offline;
  if (offline.directory != shared.directory) {
    offline.directory = shared.directory;
  }
  offline.tutorialProgress = &shared.tutorialProgress;
  offline.recordings = &shared.recordings;
  offline.playedGames = &shared.playedGames;
}

template <class State>
void MainLoopContext::renderingBlock(State& current, IRunningGame* game, CommandOutcome& outcome) {
  commands_.clear();
  SDL3App::RenderingScope scope = app->startRendering(kClearColour);
  shared.ui.show(appState, shared.banner, commands_);
  if (commandSource != nullptr) {
    commandSource->observeState(appState);
    commands_.clear();
    commandSource->fillCommands(appState, commands_);
  }
  if (game != nullptr) {
    game->render();
  }
  ShowPerformanceTimings(timings.sections);
  scope.end();
  ProcessUICommands(*app, shared, current, commands_, storageDirectory, quit, outcome);
  endSection("rendering");
}

void MainLoopContext::frame(mainloop::OfflineState& offline, bool skipRendering) {
  appState.setMode(0);
  refreshOfflineSnapshot();
  app->processEvents([](SDL_Event const&) {}, [this] { waitAndStartFrame(); }, quit);
  endSection("events");
  endSection("ui checks/snapshot update");
  if (skipRendering) {
    return;
  }
  CommandOutcome outcome;
  renderingBlock(offline, nullptr, outcome);
  waitAndStartFrame();
  if (outcome.transition) {
    carryOut(*outcome.transition);
  }
}

void MainLoopContext::frame(mainloop::ConnectingState&, bool) {
  throw std::runtime_error("The connecting state can't run: this client has no lobby connection yet.");
}

void MainLoopContext::frame(mainloop::ConnectedState&, bool) {
  throw std::runtime_error("The connected state can't run: this client has no lobby client yet.");
}

template <class GameState>
void MainLoopContext::gameBackground(GameState& current) {
  if constexpr (std::is_same_v<GameState, mainloop::ReplayState>) {
    // The replay ends where the players' games ended, even if they ended a game early.
    if (current.hasExpectedEnd && current.game->currentFrame() + current.delayFrames == current.expectedEndFrame) {
      current.game->endGameNow();
    }
  }
  UpdateSimulation(*current.game, *current.orderSource, current.stalledFrames);
  endSection("simulation");
  waitAndStartFrame();
}

template <class GameState>
void MainLoopContext::gameFrame(GameState& current, int mode, bool skipRendering) {
  IRunningGame& game = *current.game;
  // Paced, a game held up in the event pump goes on stepping from the watchdog. Unpaced runs (the
  // driver's scripts) step exactly once a loop turn, so that what a script sees at a given frame
  // doesn't depend on how busy the machine is.
  std::function<void()> background = [] {};
  if (!noFramePacing) {
    background = [this, &current] { gameBackground(current); };
  }
  app->processEvents([&game](SDL_Event const& event) { game.eventHandler(event); }, std::move(background), quit);
  endSection("events");
  game.nonEventDrivenUIChecks();

  appState.setMode(mode);
  GameData& data = appState.game;
  data.ended = game.gameEnded();
  data.localPlayerDisconnected = false;
  data.localPlayer = 0;
  if (data.playerNames.size() != 1 || data.playerNames.front() != "Player") {
    data.playerNames.assign(1, "Player");
  }
  data.disconnected.assign(1, false);
  data.players = current.players;
  data.game = &game;
  data.stalledFrames = 0;
  endSection("ui checks/snapshot update");
  if (skipRendering) {
    return;
  }

  CommandOutcome outcome;
  renderingBlock(current, &game, outcome);
  gameBackground(current);
  if (outcome.leave) {
    if constexpr (std::is_same_v<GameState, mainloop::ReplayState>) {
      leaveReplay(current, outcome);
    } else {
      leaveLocalGame(current, outcome);
    }
  }
}

void MainLoopContext::frame(mainloop::LocalGameState& local, bool skipRendering) { gameFrame(local, 4, skipRendering); }

void MainLoopContext::frame(mainloop::ReplayState& replay, bool skipRendering) { gameFrame(replay, 5, skipRendering); }

void MainLoopContext::leaveLocalGame(mainloop::LocalGameState& local, CommandOutcome const& outcome) {
  // A level counts as completed once at least one unit got out.
  if (outcome.result && !outcome.result->results.empty() && !outcome.result->results.front().empty() &&
      outcome.result->results.front().front() >= 1) {
    shared.tutorialProgress.status[local.tutorialLevel] = TutorialProgress::kCompleted;
    SaveTutorialProgress(storageDirectory, shared.tutorialProgress);
  }
  next_.emplace(mainloop::OfflineState{});
}

void MainLoopContext::leaveReplay(mainloop::ReplayState& replay, CommandOutcome const& outcome) {
  // A replay left before its expected end has no kept result, and nothing is compared.
  if (replay.expectedResult && outcome.result) {
    GameResult const& actual = *outcome.result;
    GameResult expected;
    unsigned char const* cursor = replay.expectedResult->data();
    std::size_t remaining = replay.expectedResult->size();
    bool const parsed = FromBytes(cursor, remaining, expected);
    bool const matched = parsed && expected == actual;
    if (TestLog::isEnabled()) {
      TestLog::log("replay_verification", {{"matched", matched},
                                           {"end_frame", static_cast<long long>(actual.endFrame)},
                                           {"end_state_checksum", static_cast<unsigned long long>(actual.endStateChecksum)}});
    }
    if (!matched) {
      throw std::runtime_error("Result does not match expected result.");
    }
  }
  next_.emplace(mainloop::OfflineState{});
}

void MainLoopContext::carryOut(transition::Any const& requested) {
  bool const is_offline = std::holds_alternative<mainloop::OfflineState>(state);
  QZ_ASSERT(is_offline);

  struct Visitor {
    MainLoopContext& context;

    void operator()(transition::Connect const&) const {
      throw std::runtime_error("Can't connect to the server: this client has no lobby connection yet.");
    }

    void operator()(transition::ReplayRecording const& replay) const {
      std::vector<Recording> const& recordings = context.shared.recordings;
      if (replay.index >= recordings.size()) {
        throw std::runtime_error(fmt::format("There is no recording number {} to replay.", replay.index));
      }
      Recording const& recording = recordings[replay.index];
      GameSpec const spec = ParseGameSpec(recording.results.specBytes);
      if (static_cast<std::size_t>(spec.game) >= context.shared.games.size()) {
        throw std::runtime_error("The recording is of a game that this client doesn't know.");
      }
      IGame const& game = context.shared.games.refGame(spec.game);
      GameSettings const& settings = game.lookup.settingsFrom(spec.settings);
      mainloop::ReplayState next;
      next.players = recording.results.playerSlots;
      // A damaged or crafted file may name any number of players; a session needs one at least, and
      // no more than the map has places for.
      std::uint16_t const places = game.maxPlayersForMap(ValueAt(settings.strings, std::string("map")));
      if (next.players.empty() || next.players.size() > places) {
        throw std::runtime_error(fmt::format("The recording names {} players, but its map has places for 1 to {}.",
                                             next.players.size(), places));
      }
      next.game = game.startSession(context.app, 0, kFramePeriod, spec.delayFrames, settings, next.players, false);
      next.orderSource = std::make_unique<ReplayOrderSource>(recording, 0, static_cast<int>(next.players.size()),
                                                             static_cast<int>(spec.delayFrames));
      if (std::optional<std::vector<unsigned char>> agreed = AgreedResultBytes(recording.results)) {
        GameResult result;
        unsigned char const* cursor = agreed->data();
        std::size_t remaining = agreed->size();
        // A result too short to read gives neither an end nor anything to compare: the replay runs
        // to its own end.
        if (FromBytes(cursor, remaining, result)) {
          next.hasExpectedEnd = true;
          next.expectedEndFrame = result.endFrame;
          next.expectedResult = std::move(agreed);
        }
      }
      next.delayFrames = spec.delayFrames;
      context.next_.emplace(std::move(next));
    }

    void operator()(transition::PlayTutorial const& play) const {
      IGame const& glowHorde = context.shared.games.refGame(Game::GlowHorde);
      GameSettings const settings = TutorialLevelSettings(glowHorde.schema, play.level);
      mainloop::LocalGameState next;
      next.players = {0};
      next.game = glowHorde.startSession(context.app, 0, kFramePeriod, kTutorialDelayFrames, settings, next.players,
                                         false);
      next.orderSource = std::make_unique<LocalOnlyOrderSource>(1, 0, kTutorialDelayFrames);
      next.tutorialLevel = play.level;
      context.next_.emplace(std::move(next));
    }
  };
  std::visit(Visitor{*this}, requested);
}
