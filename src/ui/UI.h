#pragma once

#include <SDL3/SDL.h>

#include <memory>
#include <vector>

#include "app/UICmd.h"
#include "ui/LobbyUIState.h"
#include "ui/OfflineUIState.h"

class IAppState;

// The root of the interface: once a frame it runs the pages of the application's mode, which leave
// commands in the frame's list. It owns what the pages remember between frames. Movable, not copyable.
class UI {
public:
  UI();
  UI(UI&&) noexcept;
  UI& operator=(UI&&) noexcept;
  ~UI();

  OfflineUIState& offlineState();
  LobbyUIState& lobbyState();

  void show(IAppState const& state, SDL_Texture* banner, std::vector<UICmd>& commands);

private:
  struct State;
  std::unique_ptr<State> state_;
};
