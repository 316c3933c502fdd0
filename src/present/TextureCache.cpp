#include "present/TextureCache.h"

#include <SDL3_image/SDL_image.h>

#include <stdexcept>

#include "present/MapSurfaces.h"

namespace {

void ApplyColour(SDL_Texture* texture, SDL_Color colour) {
  SDL_SetTextureColorMod(texture, colour.r, colour.g, colour.b);
  SDL_SetTextureAlphaMod(texture, colour.a);
}

}  // namespace

TextureCache::TextureCache(SDL_Renderer* renderer) : renderer_(renderer) {}

TextureCache::~TextureCache() {
  for (auto& [name, texture] : textures_) {
    SDL_DestroyTexture(texture);
  }
  for (auto& [name, texture] : greyscaleTextures_) {
    SDL_DestroyTexture(texture);
  }
}

SDL_Texture* TextureCache::getTexture(std::string const& name) {
  if (auto found = textures_.find(name); found != textures_.end()) {
    return found->second;
  }
  std::string const path = "data/" + name;
  SDL_Surface* surface = IMG_Load(path.c_str());
  if (surface == nullptr) {
    throw std::runtime_error("Failed to load image: " + path + " - " + SDL_GetError());
  }
  SDL_Texture* texture = SDL_CreateTextureFromSurface(renderer_, surface);
  SDL_DestroySurface(surface);
  if (texture == nullptr) {
    throw std::runtime_error("Failed to create texture from: " + path + " - " + SDL_GetError());
  }
  textures_.emplace(name, texture);
  return texture;
}

SDL_Texture* TextureCache::getGreyscaleTexture(std::string const& name) {
  if (auto found = greyscaleTextures_.find(name); found != greyscaleTextures_.end()) {
    return found->second;
  }
  std::string const path = "data/" + name;
  SDL_Texture* texture = LoadGreyscaleAsAlpha(path.c_str(), renderer_);
  if (texture == nullptr) {
    throw std::runtime_error("Failed to load greyscale texture: " + path + " - " + SDL_GetError());
  }
  ApplyColour(texture, greyscaleColour_);
  greyscaleTextures_.emplace(name, texture);
  return texture;
}

void TextureCache::setGreyscaleColour(SDL_Color colour) {
  greyscaleColour_ = colour;
  for (auto& [name, texture] : greyscaleTextures_) {
    ApplyColour(texture, colour);
  }
}
