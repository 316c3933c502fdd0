#pragma once

#include <SDL3/SDL.h>

#include "sim/Game.h"
#include "sim/MapSettings.h"

// The whole world of one map as the game draws it, at the given zoom, with every start marked in its
// slot's colour and every exit in the colour of the first slot of its team. Loads the map from "data/"
// in the working directory. Returns a new ARGB8888 surface owned by the caller; raises
// std::runtime_error if the map can't be built.
SDL_Surface* RenderMapPicture(Game game, MapSettings const& map, float zoom);
