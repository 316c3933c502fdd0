#pragma once

#include <SDL3/SDL.h>

#include "present/Camera.h"
#include "world/Chunk.h"
#include "world/ChunkedWorld.h"

// The pixel world on screen.

// The chunk's streaming texture, made on first need and uploaded if a pixel was written since, flipped
// so that row 255 is its top row. Raises std::runtime_error if the texture can't be made.
SDL_Texture* ChunkTexture(Chunk const& chunk, SDL_Renderer* renderer);

// Draws the display copy of every chunk in view, repeating the world on the camera's wrapping axes.
// Returns the number of chunk textures drawn.
int RenderWorld(ChunkedWorld const& world, SDL_Renderer* renderer, Camera const& camera, int screenWidth,
                int screenHeight);
