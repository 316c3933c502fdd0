#pragma once

#include <vector>

#include "app/UICmd.h"

class IAppState;

// Plays the program in place of the interface: once a frame, after the pages have run, the main loop
// lets it look at the state and then takes its commands instead of those of the pages.
class IUICommandSource {
public:
  virtual ~IUICommandSource() = default;
  virtual void fillCommands(IAppState const& state, std::vector<UICmd>& commands) = 0;
  virtual void observeState(IAppState const& state) = 0;
};
