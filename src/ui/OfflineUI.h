#pragma once

#include <SDL3/SDL.h>

#include <vector>

#include "app/UICmd.h"
#include "ui/OfflineUIState.h"

class IAppState;

// The offline pages: the main menu, the tutorial, the recording replay and the credentials setup. The
// page that is shown may name the next one, which replaces it from the next frame.
void RenderOfflineUI(OfflineUIState& state, SDL_Texture* banner, IAppState const& app, std::vector<UICmd>& commands);
