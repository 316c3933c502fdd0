#include "present/Renderer.h"

#include <cmath>

#include "present/TextureCache.h"

namespace {

// Any sprite is smaller than this, in world pixels, so a copy of the world this far outside the view
// can't reach into it.
constexpr float kTileMargin = 150.0f;
constexpr float kDegreesPerRadian = 57.295776f;

}  // namespace

Renderer::Renderer(SDL_Renderer* renderer, TextureCache& textures, int screenWidth, int screenHeight, int worldWidth,
                   int worldHeight, bool cameraWrapX, bool cameraWrapY, Camera camera)
    : textures_(textures),
      renderer_(renderer),
      screenWidth_(screenWidth),
      screenHeight_(screenHeight),
      worldWidth_(worldWidth),
      worldHeight_(worldHeight),
      cameraWrapX_(cameraWrapX),
      cameraWrapY_(cameraWrapY),
      camera_(camera) {
  if (cameraWrapX_ && worldWidth_ > 0) {
    float const width = static_cast<float>(worldWidth_);
    firstTileX_ = static_cast<int>(std::floor((camera_.x - kTileMargin) / width));
    lastTileX_ = static_cast<int>(
        std::ceil((camera_.x + static_cast<float>(screenWidth_) / camera_.zoom + kTileMargin) / width));
  }
  if (cameraWrapY_ && worldHeight_ > 0) {
    float const height = static_cast<float>(worldHeight_);
    firstTileY_ = static_cast<int>(std::floor((camera_.y - kTileMargin) / height));
    lastTileY_ = static_cast<int>(
        std::ceil((camera_.y + static_cast<float>(screenHeight_) / camera_.zoom + kTileMargin) / height));
  }
}

SDL_FRect Renderer::screenRect(float left, float bottom, float width, float height, int tileX, int tileY) const {
  float const zoom = camera_.zoom;
  return SDL_FRect{
      zoom * (static_cast<float>(tileX * worldWidth_) + left - camera_.x),
      static_cast<float>(screenHeight_ - 1) - zoom * (static_cast<float>(tileY * worldHeight_) + bottom - camera_.y) -
          zoom * height,
      zoom * width,
      zoom * height,
  };
}

void Renderer::drawEverywhere(SDL_Texture* texture, float left, float bottom, float width, float height,
                              float rotation, bool rotated, SDL_FlipMode flip) const {
  for (int tileY = firstTileY_; tileY <= lastTileY_; ++tileY) {
    for (int tileX = firstTileX_; tileX <= lastTileX_; ++tileX) {
      SDL_FRect const destination = screenRect(left, bottom, width, height, tileX, tileY);
      if (rotated) {
        SDL_RenderTextureRotated(renderer_, texture, nullptr, &destination,
                                 static_cast<double>(rotation * -kDegreesPerRadian), nullptr, flip);
      } else {
        SDL_RenderTexture(renderer_, texture, nullptr, &destination);
      }
    }
  }
}

void Renderer::renderEntry(Position p) const {
  drawEverywhere(textures_.getGreyscaleTexture("entry.png"), static_cast<float>(p.x) - 40.0f, static_cast<float>(p.y),
                 80.0f, 100.0f);
}

void Renderer::renderExit(Position p) const {
  drawEverywhere(textures_.getGreyscaleTexture("exit.png"), static_cast<float>(p.x) - 30.0f,
                 static_cast<float>(p.y) - 30.0f, 60.0f, 60.0f);
}

void Renderer::renderLemming(Position p) const {
  drawEverywhere(textures_.getGreyscaleTexture("hordeling.png"), static_cast<float>(p.x) - 2.5f,
                 static_cast<float>(p.y), 5.0f, 10.0f);
}

void Renderer::renderSelectionBrackets(Position p) const {
  drawEverywhere(textures_.getGreyscaleTexture("selection_brackets.png"), static_cast<float>(p.x) - 9.0f,
                 static_cast<float>(p.y) - 6.0f, 18.0f, 24.0f);
}

void Renderer::renderCircle(float x, float y, float r) const {
  drawEverywhere(textures_.getGreyscaleTexture("circle.png"), x - r, y - r, 2.0f * r, 2.0f * r);
}

void Renderer::renderMissile(Position p, float angle) const {
  drawEverywhere(textures_.getGreyscaleTexture("hordeling.png"), static_cast<float>(p.x) - 2.0f,
                 static_cast<float>(p.y) - 2.0f, 17.0f, 4.0f, angle, true, SDL_FLIP_NONE);
}

void Renderer::renderShip(float x, float y, float scale, float rotation) const {
  renderTexture_CentreAnchor(textures_.getGreyscaleTexture("ship.png"), x, y, scale, rotation, false);
}

void Renderer::renderSweptCircle(float x1, float y1, float x2, float y2, float r) const {
  renderCircle(x1, y1, r);
  renderCircle(x2, y2, r);
  float const dx = x2 - x1;
  float const dy = y2 - y1;
  float const length = std::sqrt(dx * dx + dy * dy);
  if (length < 0.001f) {
    return;
  }
  drawEverywhere(textures_.getGreyscaleTexture("circle_cross_section.png"), (x1 + x2) / 2.0f - length / 2.0f,
                 (y1 + y2) / 2.0f - r, length, 2.0f * r, std::atan2(dy, dx), true, SDL_FLIP_NONE);
}

void Renderer::renderTexture_CentreAnchor(SDL_Texture* texture, float x, float y, float scale, float rotation,
                                          bool mirrored) const {
  float textureWidth = 0.0f;
  float textureHeight = 0.0f;
  SDL_GetTextureSize(texture, &textureWidth, &textureHeight);
  float const width = textureWidth * scale;
  float const height = textureHeight * scale;
  drawEverywhere(texture, x - width / 2.0f, y - height / 2.0f, width, height, rotation, true,
                 mirrored ? SDL_FLIP_HORIZONTAL : SDL_FLIP_NONE);
}

void Renderer::renderTexture_CentreAnchor(std::string const& name, float x, float y, float scale, float rotation,
                                          bool mirrored) const {
  renderTexture_CentreAnchor(textures_.getTexture(name), x, y, scale, rotation, mirrored);
}

void Renderer::invert_y(SDL_FRect& rect) const { rect.y = static_cast<float>(screenHeight_ - 1) - rect.y - rect.h; }
