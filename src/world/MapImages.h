#pragma once

#include <SDL3/SDL.h>

#include "sim/IHasher.h"
#include "sim/MapSettings.h"

// Feeds a surface's rows (without the pitch padding), then its width and height, to the hasher.
void CalculateImageChecksum(SDL_Surface* surface, IHasher* hasher);

// Tiles, mirrors and rotates an ARGB8888 map image as its settings ask. Returns a new ARGB8888 surface
// owned by the caller; the source is left as it was. Raises std::runtime_error if the image is to be
// rotated four ways but isn't square by then.
SDL_Surface* ApplyMapTransformations(SDL_Surface* source, MapSettings const& map);

// Loads a black-on-white drawing as a white texture whose alpha is the drawing's darkness, for tinting.
// Returns null, with a line on the standard error stream, on failure.
SDL_Texture* LoadGreyscaleAsAlpha(char const* path, SDL_Renderer* renderer);
