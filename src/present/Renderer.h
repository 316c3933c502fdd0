#pragma once

#include <SDL3/SDL.h>

#include <string>

#include "present/Camera.h"
#include "world/Position.h"

class TextureCache;

// Per-frame drawing helper: knows camera, screen and world sizes and draws each kind of sprite once
// for every copy of a wrapping world in view. World y is upward; the flip to screen y happens here.
class Renderer {
public:
  Renderer(SDL_Renderer* renderer, TextureCache& textures, int screenWidth, int screenHeight, int worldWidth,
           int worldHeight, bool cameraWrapX, bool cameraWrapY, Camera camera);

  void renderEntry(Position p) const;
  void renderExit(Position p) const;
  void renderLemming(Position p) const;
  void renderSelectionBrackets(Position p) const;
  void renderCircle(float x, float y, float r) const;
  void renderMissile(Position p, float angle) const;
  void renderShip(float x, float y, float scale, float rotation) const;
  void renderSweptCircle(float x1, float y1, float x2, float y2, float r) const;
  void renderTexture_CentreAnchor(SDL_Texture* texture, float x, float y, float scale, float rotation,
                                  bool mirrored) const;
  void renderTexture_CentreAnchor(std::string const& name, float x, float y, float scale, float rotation,
                                  bool mirrored) const;
  // Flips a rectangle between y-up and y-down screen coordinates.
  void invert_y(SDL_FRect& rect) const;

  // The screen rectangle of a world rectangle (left, bottom, width, height) in the given copy of the world.
  SDL_FRect screenRect(float left, float bottom, float width, float height, int tileX, int tileY) const;

  TextureCache& textures() const { return textures_; }
  Camera const& camera() const { return camera_; }
  int firstTileX() const { return firstTileX_; }
  int lastTileX() const { return lastTileX_; }
  int firstTileY() const { return firstTileY_; }
  int lastTileY() const { return lastTileY_; }

private:
  // Draws the whole texture over a world rectangle in every copy of the world in range, tiles row by
  // row; rotated about the rectangle's centre by an angle in radians, counter-clockwise in the world.
  void drawEverywhere(SDL_Texture* texture, float left, float bottom, float width, float height,
                      float rotation = 0.0f, bool rotated = false, SDL_FlipMode flip = SDL_FLIP_NONE) const;

  TextureCache& textures_;
  SDL_Renderer* renderer_;
  int screenWidth_;
  int screenHeight_;
  int worldWidth_;
  int worldHeight_;
  bool cameraWrapX_;
  bool cameraWrapY_;
  Camera camera_;
  int firstTileX_ = 0;
  int lastTileX_ = 0;
  int firstTileY_ = 0;
  int lastTileY_ = 0;
};
