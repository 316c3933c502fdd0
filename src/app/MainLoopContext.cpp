#include "app/MainLoopContext.h"

#include <fmt/format.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <set>
#include <filesystem>
#include <functional>
#include <stdexcept>
#include <type_traits>

#include "net/GameRecordsWire.h"
#include "net/LobbyRecordsWire.h"
#include "net/NetworkOrderSource.h"
#include "net/TCPClient.h"
#include "sim/RecordingFiles.h"
#include "sim/RecordingOrderSource.h"
#include "sim/IGame.h"
#include "sim/KeyLookup.h"
#include "app/IUICommandSource.h"
#include "sim/LocalOnlyOrderSource.h"
#include "app/ProcessUICommands.h"
#include "app/QZAssert.h"
#include "sim/ReplayOrderSource.h"
#include "sim/ReplayPlan.h"
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
  // The lobby's pointers went with the connected state.
  appState.lobby = LobbyData{};
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

void MainLoopContext::frame(mainloop::ConnectingState& connecting, bool skipRendering) {
  appState.setMode(0);
  refreshOfflineSnapshot();
  if (connecting.phase == 1) {
    if (!connecting.transport->is_connected()) {
      throw std::runtime_error("Lost connection before completion of version exchange and authorisation");
    }
    connecting.handshake->connect();
  } else {
    connecting.transport->complete_connection();
    if (connecting.transport->get_connection_state() != ConnectionState::Connecting) {
      if (!connecting.transport->is_connected()) {
        throw std::runtime_error("Failed to connect to server");
      }
      std::printf("(Transport connected)\n");
      std::fflush(stdout);
      connecting.handshake = std::make_unique<ConnectToLobbyServer>(connecting.transport, connecting.credentials);
      connecting.phase = 1;
    }
  }
  app->processEvents([](SDL_Event const&) {}, [this] { waitAndStartFrame(); }, quit);
  endSection("events");
  endSection("ui checks/snapshot update");
  if (skipRendering) {
    return;
  }
  CommandOutcome outcome;
  renderingBlock(connecting, nullptr, outcome);
  waitAndStartFrame();
  if (connecting.handshake && connecting.handshake->state() == ConnectToLobbyServer::State::Authenticated) {
    enterConnectedState(connecting);
  }
}

void MainLoopContext::enterConnectedState(mainloop::ConnectingState& connecting) {
  mainloop::ConnectedState next;
  next.transport = connecting.transport;
  next.lobby = std::make_unique<LobbyClient>(connecting.transport, connecting.handshake->localPlayerNumber(),
                                             connecting.handshake->serverInfo().infoB, storageDirectory);
  next.highScores = HighScoreTables(
      Game::GlowHorde, static_cast<int>(shared.games.refGame(Game::GlowHorde).lookup.coopChallenges.size()));
  next.lobby->scanForExistingRecordings();
  next_.emplace(std::move(next));
}

void MainLoopContext::connectedBackground(mainloop::ConnectedState& connected) {
  connected.lobby->sendKeepAliveIfNeeded();
  if (connected.game) {
    UpdateSimulation(*connected.game, *connected.orderSource, connected.stalledFrames);
    endSection("simulation");
  }
  waitAndStartFrame();
}

void MainLoopContext::startOrEndNetworkGame(mainloop::ConnectedState& connected) {
  LobbyClient& lobby = *connected.lobby;
  bool const started = lobby.gameStartInfo().has_value();
  if (!connected.game && started && lobby.isUDPServerRunning()) {
    GameStartInfo const& info = *lobby.gameStartInfo();
    GameSpec const spec = ParseGameSpec(lobby.gameSpec());
    // The GameSpec and the slots come from the server: a game, a slot or a player count that this client
    // can't play is refused with a message instead of being read past an end.
    if (static_cast<std::size_t>(spec.game) >= shared.games.size()) {
      throw std::runtime_error("The server started a game that this client doesn't know.");
    }
    IGame const& game = shared.games.refGame(spec.game);
    // Its settings must lie within the game's schema and its slots on the map (a negative slot reads as
    // one far past the map's end).
    std::vector<std::uint16_t> const slots(info.assignedSlots.begin(), info.assignedSlots.end());
    if (std::optional<std::string> problem = GameSpecProblem(game, spec, slots)) {
      throw std::runtime_error("The server started a game that this client can't play: " + *problem + ".");
    }
    GameSettings const& settings = game.lookup.settingsFrom(spec.settings);
    if (slots.empty() || info.localPlayer >= slots.size()) {
      throw std::runtime_error("The server started a game without this client's place in it.");
    }
    connected.startInfo = info;
    std::printf("Creating tandem game client\n");
    std::fflush(stdout);
    connected.client = std::make_shared<TandemClient<UDPClient>>(
        shared.ip, static_cast<unsigned short>(shared.port + info.portOffset), static_cast<int>(slots.size()),
        static_cast<int>(spec.delayFrames), lobby.authToken());
    std::printf("Tandem game client created\n");
    std::fflush(stdout);
    connected.orderSource = std::make_unique<NetworkOrderSource>(connected.client);
    connected.game = game.startSession(app, info.localPlayer, kFramePeriod, spec.delayFrames, settings, slots, false);
    connected.stalledFrames = 0;
    std::printf("Game started\n");
    std::fflush(stdout);
  } else if (connected.game && !started) {
    connected.game.reset();
    connected.orderSource.reset();
    connected.client.reset();
    connected.gameEndNotified = false;
  }
}

void MainLoopContext::refreshConnectedSnapshot(mainloop::ConnectedState& connected) {
  LobbyClient const& lobby = *connected.lobby;
  LobbyData& data = appState.lobby;
  data.client = &lobby;
  data.lobbyState = &lobby.lobbyState();
  data.highScores = &connected.highScores;
  data.glowHordeRatings = &connected.glowHordeRatings;
  data.aviatorsRatings = &connected.aviatorsRatings;
  data.playerNames = &lobby.playerNames();
  data.serverLog = &lobby.serverLog();
  data.localPlayerNumber = lobby.localPlayerNumber();
  GameRoom const* room = lobby.localRoom();
  data.allPlayersReady = room != nullptr;
  data.playerCountInRoom = room != nullptr ? static_cast<int>(room->players.size()) : 0;
  if (room != nullptr) {
    for (bool ready : room->ready) {
      data.allPlayersReady = data.allPlayersReady && ready;
    }
  }
  if (!connected.game) {
    PlayerInLobby const* local = lobby.localPlayer();
    bool const inRoom = local != nullptr && local->roomIndex != PlayerInLobby::kNoRoom && room != nullptr;
    appState.setMode(inRoom ? 2 : 1);
    return;
  }

  IRunningGame& game = *connected.game;
  game.nonEventDrivenUIChecks();
  appState.setMode(3);
  GameData& gameData = appState.game;
  GameStartInfo const& info = connected.startInfo;
  gameData.ended = game.gameEnded();
  gameData.disconnected = lobby.getPlayerDisconnectedState();
  gameData.localPlayerDisconnected =
      info.localPlayer < gameData.disconnected.size() && gameData.disconnected[info.localPlayer];
  gameData.localPlayer = info.localPlayer;
  gameData.playerNames.resize(info.players.size());
  LobbyState const& state = lobby.lobbyState();
  for (std::size_t i = 0; i < info.players.size(); ++i) {
    unsigned short const number = info.players[i];
    std::string name;
    if (number < state.players.size() && state.players[number]) {
      name = lobby.playerNames().playerName(state.players[number]->playerId);
    }
    if (gameData.playerNames[i] != name) {
      gameData.playerNames[i] = std::move(name);
    }
  }
  gameData.players.assign(info.assignedSlots.begin(), info.assignedSlots.end());
  gameData.game = &game;
  gameData.stalledFrames = connected.stalledFrames;
}

void MainLoopContext::frame(mainloop::ConnectedState& connected, bool skipRendering) {
  finishedGames_.clear();
  connected.lobby->processMessages(finishedGames_);
  for (unsigned short number : finishedGames_) {
    if (GameResults const* results = connected.lobby->playedGame(number)) {
      connected.feed.take(number, *results, shared.games, connected.highScores, connected.glowHordeRatings,
                          connected.aviatorsRatings);
    }
  }
  endSection("network");
  startOrEndNetworkGame(connected);
  endSection("transitions");

  IRunningGame* game = connected.game.get();
  std::function<void()> background = [] {};
  if (!noFramePacing) {
    background = [this, &connected] { connectedBackground(connected); };
  }
  app->processEvents(
      [game](SDL_Event const& event) {
        if (game != nullptr) {
          game->eventHandler(event);
        }
      },
      std::move(background), quit);
  endSection("events");
  refreshConnectedSnapshot(connected);
  endSection("ui checks/snapshot update");
  if (skipRendering) {
    return;
  }

  CommandOutcome outcome;
  renderingBlock(connected, game, outcome);
  if (game != nullptr && outcome.leave && !connected.gameEndNotified) {
    std::optional<GameResult> result;
    if (game->gameEnded() || connected.lobby->allOtherPlayersDisconnected()) {
      result.emplace();
      game->getGameResult(*result);
    }
    connected.lobby->notifyGameEnd(result);
    connected.gameEndNotified = true;
  }
  connectedBackground(connected);
  if (outcome.disconnect) {
    std::printf("Client shutdown complete\n");
    std::fflush(stdout);
    next_.emplace(mainloop::OfflineState{});
  }
}

template <class GameState>
void MainLoopContext::gameBackground(GameState& current) {
  if constexpr (std::is_same_v<GameState, mainloop::ReplayState>) {
    StepReplay(*current.game, *current.orderSource, current.stalledFrames, current.hasExpectedEnd,
               current.expectedEndFrame, current.delayFrames);
  } else {
    UpdateSimulation(*current.game, *current.orderSource, current.stalledFrames);
  }
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
  // A level counts as completed once at least one unit got out. Local games of the other games (which
  // only a driver starts) are no tutorial level.
  if (local.game && local.game->game().type() == Game::GlowHorde && outcome.result && !outcome.result->results.empty() && !outcome.result->results.front().empty() &&
      outcome.result->results.front().front() >= 1) {
    shared.tutorialProgress.status[local.tutorialLevel] = TutorialProgress::kCompleted;
    SaveTutorialProgress(storageDirectory, shared.tutorialProgress);
  }
  if (recordLocalGames && outcome.result) {
    saveLocalGameRecording(local, *outcome.result);
  }
  next_.emplace(mainloop::OfflineState{});
}

void MainLoopContext::saveLocalGameRecording(mainloop::LocalGameState const& local, GameResult const& result) const {
  auto const* recorder = dynamic_cast<RecordingOrderSource const*>(local.orderSource.get());
  if (recorder == nullptr) {
    return;
  }
  GameSpec spec;
  spec.game = Game::GlowHorde;
  spec.settings = TutorialLevelSettings(shared.games.refGame(Game::GlowHorde).schema, local.tutorialLevel);
  spec.delayFrames = kTutorialDelayFrames;
  spec.minPlayers = 1;
  spec.maxPlayers = 1;
  GameResults results;
  ToBytes(spec, results.specBytes);
  results.finished = true;
  results.timestampMs = static_cast<unsigned long long>(
      std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::system_clock::now().time_since_epoch())
          .count());
  results.playerIds.assign(local.players.size(), std::vector<unsigned char>(8, 0));
  results.playerNames.assign(local.players.size(), "Player");
  results.playerSlots = local.players;
  results.reportedResults.assign(local.players.size(), {});
  ToBytes(result, results.reportedResults[static_cast<std::size_t>(local.localPlayer)]);

  // The recording is given newest first, as a server collects it.
  std::deque<std::vector<unsigned char>> newestFirst(recorder->updates().rbegin(), recorder->updates().rend());
  Recording const recording(newestFirst, results);
  std::filesystem::path const directory = std::filesystem::path(storageDirectory) / "recordings";
  std::filesystem::create_directories(directory);
  std::set<unsigned short> const taken = RecordingNumbersInDirectory(directory.string());
  unsigned number = 1;
  while (taken.count(static_cast<unsigned short>(number)) != 0) {
    ++number;
  }
  std::string const path = (directory / ("recording" + std::to_string(number) + ".bin")).string();
  recording.save(path);
  std::printf("Saved the recording of the local game to %s\n", path.c_str());
  std::fflush(stdout);
}

void MainLoopContext::leaveReplay(mainloop::ReplayState& replay, CommandOutcome const& outcome) {
  // A replay left before its expected end has no kept result, and nothing is compared.
  if (replay.expectedResult && outcome.result) {
    GameResult const& actual = *outcome.result;
    bool const matched = ReplayMatches(*replay.expectedResult, actual);
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

    void operator()(transition::Connect const& connect) const {
      std::printf("Connecting to server at %s, base port %u\n", context.shared.ip.c_str(),
                  static_cast<unsigned>(context.shared.port));
      std::fflush(stdout);
      mainloop::ConnectingState next;
      next.transport = std::make_shared<TCPClient>(context.shared.ip, context.shared.port);
      next.credentials = connect.credentials;
      context.next_.emplace(std::move(next));
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
      ReplayPlan plan = PlanReplay(game, spec, recording);
      mainloop::ReplayState next;
      next.players = plan.players;
      next.game = game.startSession(context.app, 0, kFramePeriod, spec.delayFrames, plan.settings, next.players, false);
      next.orderSource = std::make_unique<ReplayOrderSource>(recording, 0, static_cast<int>(next.players.size()),
                                                             static_cast<int>(spec.delayFrames));
      next.hasExpectedEnd = plan.hasExpectedEnd;
      next.expectedEndFrame = plan.expectedEndFrame;
      next.expectedResult = std::move(plan.expectedResult);
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
      if (context.recordLocalGames) {
        next.orderSource = std::make_unique<RecordingOrderSource>(std::move(next.orderSource), kTutorialDelayFrames);
      }
      next.tutorialLevel = play.level;
      context.next_.emplace(std::move(next));
    }
  };
  std::visit(Visitor{*this}, requested);
}
