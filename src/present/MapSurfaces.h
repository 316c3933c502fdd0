#pragma once

#include <SDL3/SDL.h>

#include "sim/IHasher.h"
#include "sim/MapSettings.h"
#include "world/MapImages.h"

// Map images as SDL surfaces, for the tools and the drawing code: the same checksum and
// transformations as the world's own (world/MapImages.h), on ARGB8888 surfaces.

// The surface's pixels, converted to ARGB8888 whatever its format and pitch.
MapImage ImageOfSurface(SDL_Surface* surface);
// A new ARGB8888 surface owned by the caller; null if SDL can't make one.
SDL_Surface* SurfaceOfImage(MapImage const& image);

// Feeds the surface's rows (without the pitch padding), then its width and height, to the hasher.
void CalculateImageChecksum(SDL_Surface* surface, IHasher* hasher);

// Tiles, mirrors and rotates an ARGB8888 map image as its settings ask. Returns a new ARGB8888 surface
// owned by the caller; the source is left as it was. Raises std::runtime_error if the image is to be
// rotated four ways but isn't square by then.
SDL_Surface* ApplyMapTransformations(SDL_Surface* source, MapSettings const& map);

// Loads a black-on-white drawing as a white texture whose alpha is the drawing's darkness, for tinting.
// Returns null, with a line on the standard error stream, on failure.
SDL_Texture* LoadGreyscaleAsAlpha(char const* path, SDL_Renderer* renderer);
