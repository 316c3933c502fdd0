#pragma once

#include <SDL3/SDL_surface.h>

// The image of a cursor with a small icon below the pointer: a transparent ABGR8888 surface of width
// max(w1, w2) and height h1 + h2, the first image blended at (0, 0) and the overlay blended at
// (w1 - w2, h1), right-aligned under it. Returns nullptr (with SDL's error) if the surface can't be
// made; the caller destroys the result.
SDL_Surface* CompositeCursorImage(SDL_Surface* image, SDL_Surface* overlay);
