#pragma once

#include <SDL3/SDL.h>

#include <string>
#include <unordered_map>

// Owns every texture loaded by name. Greyscale textures are white shapes tinted by one colour in
// force for all of them, which each session sets before it draws a player's things.
class TextureCache {
public:
  explicit TextureCache(SDL_Renderer* renderer);
  ~TextureCache();
  TextureCache(TextureCache const&) = delete;
  TextureCache& operator=(TextureCache const&) = delete;

  // A colour texture from "data/" + name, loaded once. Raises std::runtime_error on failure.
  SDL_Texture* getTexture(std::string const& name);
  // A tintable texture from "data/" + name, loaded once. Raises std::runtime_error on failure.
  SDL_Texture* getGreyscaleTexture(std::string const& name);
  void setGreyscaleColour(SDL_Color colour);
  SDL_Color greyscaleColour() const { return greyscaleColour_; }
  SDL_Renderer* renderer() const { return renderer_; }

private:
  SDL_Renderer* renderer_;
  std::unordered_map<std::string, SDL_Texture*> textures_;
  std::unordered_map<std::string, SDL_Texture*> greyscaleTextures_;
  SDL_Color greyscaleColour_{255, 255, 255, 255};
};
