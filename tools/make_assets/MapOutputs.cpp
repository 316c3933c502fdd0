#include "MapOutputs.h"

#include <SDL3/SDL.h>
#include <SDL3_image/SDL_image.h>

#include <fmt/format.h>

#include <algorithm>
#include <cstdint>
#include <fstream>
#include <stdexcept>

#include "Canvas.h"
#include "present/MapSurfaces.h"
#include "sim/PlayerSlots.h"
#include "sim/XXHashHasher.h"

namespace {

SDL_Surface* LoadArgb(std::string const& path) {
  SDL_Surface* loaded = IMG_Load(path.c_str());
  if (loaded == nullptr) {
    throw std::runtime_error("Failed to load image '" + path + "': " + SDL_GetError());
  }
  SDL_Surface* converted = SDL_ConvertSurface(loaded, SDL_PIXELFORMAT_ARGB8888);
  SDL_DestroySurface(loaded);
  if (converted == nullptr) {
    throw std::runtime_error(std::string("Failed to convert surface: ") + SDL_GetError());
  }
  return converted;
}

// The identifier of a map image in the header: "tutorial_dig_down.png" becomes "tutorialDigDown".
std::string Identifier(std::string const& file) {
  std::string id;
  bool upper = false;
  for (char c : file.substr(0, file.find('.'))) {
    if (c == '_') {
      upper = true;
    } else {
      id += upper ? static_cast<char>(c - 'a' + 'A') : c;
      upper = false;
    }
  }
  return id;
}

}  // namespace

std::uint64_t MapFileDigest(std::string const& path) {
  SDL_Surface* surface = LoadArgb(path);
  XXHashHasher hasher;
  CalculateImageChecksum(surface, &hasher);
  SDL_DestroySurface(surface);
  return hasher.digest();
}

void WriteMapDigestsHeader(std::string const& path, std::map<std::string, std::uint64_t> const& digests) {
  std::string text =
      "#pragma once\n\n#include <cstdint>\n\n"
      "// Digests of the map images in data/, as a world computes them when it loads a map: XXH3 of the\n"
      "// image's rows converted to ARGB8888, then its width and height. Written by tools/make_assets;\n"
      "// a test checks that the committed images still match.\n"
      "namespace MapDigests {\n";
  for (char const* file : {"world.png", "world2.png", "coop.png", "tutorial_dig_down.png", "tutorial_dig_sideways.png",
                           "tutorial_bridge.png", "tutorial_pit.png", "aviators.png"}) {
    auto const found = digests.find(file);
    if (found == digests.end()) {
      throw std::runtime_error(std::string("No digest for ") + file + ".");
    }
    text += fmt::format("inline constexpr std::uint64_t {} = 0x{:016X}ull;\n", Identifier(file), found->second);
  }
  text += "}  // namespace MapDigests\n";
  std::ofstream out(path, std::ios::trunc);
  out << text;
  if (!out) {
    throw std::runtime_error("Failed to write '" + path + "'.");
  }
}

void WriteMapPreview(std::string const& imagePath, MapSettings const& map, std::string const& previewPath) {
  SDL_Surface* source = LoadArgb(imagePath);
  SDL_Surface* world = ApplyMapTransformations(source, map);
  SDL_DestroySurface(source);
  int const width = (world->w + 255) / 256 * 256;
  int const height = (world->h + 255) / 256 * 256;
  Canvas preview(width, height, Rgb(24, 26, 34));
  // The image's top row is the world's top row: the world rows are counted from the bottom of the
  // whole-chunk size, so a short image sits at the top of its margin, as the world builds it.
  int const top = height - world->h;
  for (int y = 0; y < world->h; ++y) {
    auto const* row = reinterpret_cast<std::uint32_t const*>(static_cast<std::uint8_t const*>(world->pixels) +
                                                             static_cast<std::ptrdiff_t>(y) * world->pitch);
    for (int x = 0; x < world->w; ++x) {
      std::uint32_t const p = row[x];
      Colour c = Rgb(static_cast<int>((p >> 16) & 255), static_cast<int>((p >> 8) & 255), static_cast<int>(p & 255),
                     static_cast<float>(p >> 24) / 255.0f);
      preview.blend(x, top + y, c, 1.0f);
    }
  }
  SDL_DestroySurface(world);
  auto imagePoint = [&](Position p) {
    int const x = p.x < 0 ? p.x + width : p.x;
    int const y = p.y < 0 ? p.y + height : p.y;
    return Point{static_cast<float>(x) + 0.5f, static_cast<float>(height - 1 - y) + 0.5f};
  };
  for (std::size_t slot = 0; slot < map.starts.size() && slot < map.maxPlayers; ++slot) {
    PlayerSlot const& s = SLOTS[slot % SLOTS.size()];
    Colour const colour{s.red, s.green, s.blue, 1.0f};
    Point const p = imagePoint(map.starts[slot]);
    preview.strokeCircle(p.x, p.y, 6, 2, colour);
    preview.line(p.x, p.y, p.x, p.y + 10, 1.5f, colour);
  }
  if (map.name != "The Empty Berth") {
    for (std::size_t team = 0; team < map.exits.size(); ++team) {
      PlayerSlot const& s = SLOTS[team % SLOTS.size()];
      Point const p = imagePoint(map.exits[team]);
      preview.strokeCircle(p.x, p.y, 30, 2, Colour{s.red, s.green, s.blue, 0.9f});
    }
  }
  preview.savePng(previewPath);
}
