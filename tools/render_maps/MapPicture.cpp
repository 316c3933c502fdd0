#include "MapPicture.h"

#include <cmath>
#include <memory>
#include <stdexcept>
#include <string>

#include "world/ChunkedWorld.h"
#include "sim/PlayerSlots.h"
#include "present/Renderer.h"
#include "present/TextureCache.h"
#include "present/WorldDrawing.h"

namespace {

struct RendererDeleter {
  void operator()(SDL_Renderer* renderer) const { SDL_DestroyRenderer(renderer); }
};
struct SurfaceDeleter {
  void operator()(SDL_Surface* surface) const { SDL_DestroySurface(surface); }
};

SDL_Color SlotColour(std::size_t slot) {
  PlayerSlot const& s = SLOTS[slot % SLOTS.size()];
  return SDL_Color{static_cast<Uint8>(s.red * 255.0f), static_cast<Uint8>(s.green * 255.0f),
                   static_cast<Uint8>(s.blue * 255.0f), 255};
}

// Map positions may count from the far edge: a negative coordinate has the world's size added.
Position FromFarEdge(Position p, ChunkedWorld const& world) {
  if (p.x < 0) p.x += world.width();
  if (p.y < 0) p.y += world.height();
  return p;
}

// A cross over the exact point and a square around it, so that positions read even without sprites.
void MarkPoint(SDL_Renderer* target, Renderer const& renderer, Position p, SDL_Color colour) {
  SDL_FRect const at = renderer.screenRect(static_cast<float>(p.x), static_cast<float>(p.y), 0.0f, 0.0f, 0, 0);
  SDL_SetRenderDrawColor(target, colour.r, colour.g, colour.b, 255);
  SDL_RenderLine(target, at.x - 6.0f, at.y, at.x + 6.0f, at.y);
  SDL_RenderLine(target, at.x, at.y - 6.0f, at.x, at.y + 6.0f);
  SDL_FRect const box{at.x - 4.0f, at.y - 4.0f, 8.0f, 8.0f};
  SDL_RenderRect(target, &box);
}

}  // namespace

SDL_Surface* RenderMapPicture(Game game, MapSettings const& map, float zoom) {
  int worldWidth = 0;
  int worldHeight = 0;
  {
    ChunkedWorld probe(1, 0, 1, map);
    worldWidth = probe.width();
    worldHeight = probe.height();
  }
  int const width = static_cast<int>(std::ceil(static_cast<float>(worldWidth) * zoom));
  int const height = static_cast<int>(std::ceil(static_cast<float>(worldHeight) * zoom));
  std::unique_ptr<SDL_Surface, SurfaceDeleter> surface(SDL_CreateSurface(width, height, SDL_PIXELFORMAT_ARGB8888));
  if (!surface) {
    throw std::runtime_error(std::string("Failed to create a picture surface: ") + SDL_GetError());
  }
  std::unique_ptr<SDL_Renderer, RendererDeleter> target(SDL_CreateSoftwareRenderer(surface.get()));
  if (!target) {
    throw std::runtime_error(std::string("Failed to create a software renderer: ") + SDL_GetError());
  }
  SDL_SetRenderDrawColor(target.get(), 24, 26, 38, 255);
  SDL_RenderClear(target.get());
  {
    int const players = std::max<int>(1, static_cast<int>(map.starts.size()));
    ChunkedWorld world(players, 0, 1, map);
    // The view's bottom edge lies one screen pixel below world row 0, so the camera stands one screen
    // pixel up for the whole world to fill the picture exactly.
    Camera const camera{0.0f, 1.0f / zoom, zoom};
    RenderWorld(world, target.get(), camera, width, height);

    TextureCache textures(target.get());
    Renderer renderer(target.get(), textures, width, height, world.width(), world.height(), false, false, camera);
    bool sprites = true;
    auto const sprite = [&](auto&& draw) {
      if (!sprites) return;
      try {
        draw();
      } catch (std::runtime_error const&) {
        sprites = false;  // without the sprite files the marks alone show the places
      }
    };
    for (std::size_t slot = 0; slot < map.starts.size(); ++slot) {
      Position const start = FromFarEdge(map.starts[slot], world);
      textures.setGreyscaleColour(SlotColour(slot));
      if (game == Game::GlowHorde) {
        sprite([&] { renderer.renderEntry(start); });
      } else {
        sprite([&] { renderer.renderCircle(static_cast<float>(start.x), static_cast<float>(start.y), 16.0f); });
      }
      MarkPoint(target.get(), renderer, start, SlotColour(slot));
    }
    for (std::size_t exit = 0; exit < map.exits.size(); ++exit) {
      Position const place = FromFarEdge(map.exits[exit], world);
      SDL_Color colour{255, 255, 255, 255};
      for (std::size_t slot = 0; slot < map.playerTeams.size(); ++slot) {
        if (map.playerTeams[slot] == static_cast<int>(exit)) {
          colour = SlotColour(slot);
          break;
        }
      }
      textures.setGreyscaleColour(colour);
      sprite([&] { renderer.renderExit(place); });
      MarkPoint(target.get(), renderer, place, colour);
    }
    SDL_FlushRenderer(target.get());
  }
  target.reset();
  return surface.release();
}
