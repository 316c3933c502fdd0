#include "app/CompositeCursorImage.h"

#include <algorithm>

SDL_Surface* CompositeCursorImage(SDL_Surface* image, SDL_Surface* overlay) {
  SDL_Surface* composite =
      SDL_CreateSurface(std::max(image->w, overlay->w), image->h + overlay->h, SDL_PIXELFORMAT_ABGR8888);
  if (composite == nullptr) {
    return nullptr;
  }
  SDL_FillSurfaceRect(composite, nullptr, 0);
  // Both are blended (SDL's alpha blending), as an icon drawn over a pointer would be, so that
  // half-transparent edges come out as they look on screen.
  SDL_SetSurfaceBlendMode(image, SDL_BLENDMODE_BLEND);
  SDL_SetSurfaceBlendMode(overlay, SDL_BLENDMODE_BLEND);
  SDL_Rect imageAt{0, 0, image->w, image->h};
  SDL_BlitSurface(image, nullptr, composite, &imageAt);
  SDL_Rect overlayAt{image->w - overlay->w, image->h, overlay->w, overlay->h};
  SDL_BlitSurface(overlay, nullptr, composite, &overlayAt);
  return composite;
}
