#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "app/AppStateInterface.h"
#include "app/FrameRateLimiter.h"
#include "app/MainLoopSharedData.h"
#include "app/MainLoopStates.h"
#include "app/PerformanceStats.h"
#include "app/Transition.h"
#include "app/UICmd.h"

class SDL3App;
class IUICommandSource;
struct CommandOutcome;

// Everything that the main loop holds: what lasts for the run, the current state, the frame clock and
// the timings, the interface's snapshot. One call of runOneFrame is one frame of the current state;
// states change only at the end of a frame.
class MainLoopContext {
public:
  static std::unique_ptr<MainLoopContext> Create(std::shared_ptr<SDL3App> app, std::string ip,
                                                 unsigned short basePort, std::string storageDirectory,
                                                 std::string randomCredentialsDirectory,
                                                 IUICommandSource* commandSource, bool noFramePacing);
  ~MainLoopContext();
  MainLoopContext(MainLoopContext const&) = delete;
  MainLoopContext& operator=(MainLoopContext const&) = delete;

  // With skipRendering the frame ends after the snapshot: no rendering, no commands, no simulation
  // and no transition.
  void runOneFrame(bool skipRendering);
  // Waits for the next sixtieth of a second and starts the frame's timings. Nothing with noFramePacing.
  void waitAndStartFrame();
  // Charges the time since the last section to this one. Nothing with noFramePacing.
  void endSection(char const* name);

  // The number of the current state: 0 offline, 1 connecting, 2 connected, 3 local game, 4 replay.
  std::size_t stateIndex() const { return state.index(); }

  std::shared_ptr<SDL3App> app;
  mainloop::SharedData shared;
  mainloop::State state;
  FrameRateLimiter limiter;
  PerformanceStats timings;
  bool quit = false;
  AppStateInterface appState;
  std::string storageDirectory;
  IUICommandSource* commandSource = nullptr;
  bool noFramePacing = false;
  // A driver's option: every local game is saved on leaving as a recording file in "recordings" of the
  // storage directory, so that it can be replayed and proved like a recorded network game.
  bool recordLocalGames = false;

private:
  explicit MainLoopContext(std::shared_ptr<SDL3App> app);

  void frame(mainloop::OfflineState& offline, bool skipRendering);
  void frame(mainloop::ConnectingState& connecting, bool skipRendering);
  void frame(mainloop::ConnectedState& connected, bool skipRendering);
  void frame(mainloop::LocalGameState& local, bool skipRendering);
  void frame(mainloop::ReplayState& replay, bool skipRendering);

  template <class GameState>
  void gameFrame(GameState& game, int mode, bool skipRendering);
  template <class GameState>
  void gameBackground(GameState& game);
  template <class State>
  void renderingBlock(State& current, IRunningGame* game, CommandOutcome& outcome);

  void refreshOfflineSnapshot();
  void refreshConnectedSnapshot(mainloop::ConnectedState& connected);
  void connectedBackground(mainloop::ConnectedState& connected);
  void startOrEndNetworkGame(mainloop::ConnectedState& connected);
  void enterConnectedState(mainloop::ConnectingState& connecting);
  void leaveLocalGame(mainloop::LocalGameState& local, CommandOutcome const& outcome);
  void leaveReplay(mainloop::ReplayState& replay, CommandOutcome const& outcome);
  void carryOut(transition::Any const& requested);
  void saveLocalGameRecording(mainloop::LocalGameState const& local, GameResult const& result) const;

  std::vector<UICmd> commands_;            // the frame's commands; kept to reuse its storage
  std::optional<mainloop::State> next_;    // the state that the frame ends in, if it changes
  std::vector<unsigned short> finishedGames_;  // the games that the lobby reported finished this frame
};
