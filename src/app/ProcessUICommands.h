#pragma once

#include <optional>
#include <string>
#include <vector>

#include "sim/GameResult.h"
#include "app/MainLoopSharedData.h"
#include "app/MainLoopStates.h"
#include "app/Transition.h"
#include "app/UICmd.h"

class SDL3App;

// What a frame's commands leave for the rest of the frame to act on.
struct CommandOutcome {
  bool disconnect = false;  // DisconnectFromServer was given in the lobby
  bool leave = false;       // the player leaves a local game or a replay
  std::optional<GameResult> result;
  std::optional<transition::Any> transition;  // only the offline state requests one; the last stands
};

// Carries out a frame's commands in list order, in two passes. The first pass, the same in every
// state, handles the credentials file and full screen; the second the commands that the state honours.
// What a state doesn't honour is ignored there. Exceptions pass through and end the run.
template <class State>
void ProcessUICommands(SDL3App& app, mainloop::SharedData& shared, State& state, std::vector<UICmd> const& commands,
                       std::string const& directory, bool& quit, CommandOutcome& outcome);
