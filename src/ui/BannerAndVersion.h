#pragma once

#include <SDL3/SDL.h>

// The banner, scaled to at most 65 per cent of the viewport's height and to the window's width, centred,
// and under it the line "Game client version" with the client's version, in the current window.
void ShowBannerAndVersion(SDL_Texture* banner);
