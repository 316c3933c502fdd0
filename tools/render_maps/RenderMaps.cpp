// Draws every map of the three games' catalogues to PNG files, without a window, so that maps can be
// looked at without playing them: the world as the game builds and draws it, starts and exits marked.
#include <SDL3/SDL.h>
#include <SDL3_image/SDL_image.h>

#include <argparse/argparse.hpp>
#include <fmt/format.h>

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <string>
#include <vector>

#include "sim/Games.h"
#include "MapPicture.h"

namespace {

std::string Slug(std::string const& text) {
  std::string slug;
  for (char c : text) {
    if (std::isalnum(static_cast<unsigned char>(c))) {
      slug += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    } else if (!slug.empty() && slug.back() != '_') {
      slug += '_';
    }
  }
  while (!slug.empty() && slug.back() == '_') slug.pop_back();
  return slug;
}

}  // namespace

int main(int argc, char** argv) {
  argparse::ArgumentParser program("render_maps");
  program.add_description("Renders every catalogue map to a PNG file, with starts and exits marked.");
  program.add_argument("--out").default_value(std::string("map_renders")).help("folder for the PNG files");
  program.add_argument("--zoom").default_value(0.5f).scan<'g', float>().help("picture pixels per world pixel");
  program.add_argument("--map").default_value(std::string()).help("only maps whose name contains this text");
  program.add_argument("--data-parent")
      .default_value(std::string())
      .help("folder holding data/ (default: the folder of this program)");
  try {
    program.parse_args(argc, argv);
  } catch (std::exception const& error) {
    std::fprintf(stderr, "%s\n%s", error.what(), program.usage().c_str());
    return 2;
  }
  float const zoom = program.get<float>("--zoom");
  if (!(zoom > 0.0f) || zoom > 8.0f) {
    std::fprintf(stderr, "The zoom must lie above 0 and at most 8.\n");
    return 2;
  }
  std::string const filter = program.get<std::string>("--map");
  std::filesystem::path const out = std::filesystem::absolute(program.get<std::string>("--out"));
  std::filesystem::create_directories(out);

  // Maps are loaded from "data/" relative to the working directory, as in the client.
  std::string dataParent = program.get<std::string>("--data-parent");
  if (dataParent.empty()) {
    char const* base = SDL_GetBasePath();
    dataParent = base != nullptr ? base : ".";
  }
  std::filesystem::current_path(dataParent);

  Games const games;
  int written = 0;
  int failed = 0;
  for (int index = 0; index < kGameCount; ++index) {
    Game const game = static_cast<Game>(index);
    IGame const& catalogue = games.refGame(game);
    std::vector<std::string> names;
    for (auto const& [name, map] : catalogue.maps) names.push_back(name);
    std::sort(names.begin(), names.end());
    for (std::string const& name : names) {
      if (!filter.empty() && name.find(filter) == std::string::npos) continue;
      MapSettings const& map = catalogue.maps.at(name);
      std::filesystem::path const file = out / (Slug(GameDisplayName(game)) + "__" + Slug(name) + ".png");
      try {
        SDL_Surface* picture = RenderMapPicture(game, map, zoom);
        bool const saved = IMG_SavePNG(picture, file.string().c_str());
        int const w = picture->w, h = picture->h;
        SDL_DestroySurface(picture);
        if (!saved) {
          throw std::runtime_error(fmt::format("Failed to save {}: {}", file.string(), SDL_GetError()));
        }
        std::printf("%s\n", fmt::format("{} / {}: '{}' -> {} ({}x{} pixels, {} starts, {} exits)", GameDisplayName(game),
                                        name, map.imageFile, file.string(), w, h, map.starts.size(),
                                        map.exits.size())
                                .c_str());
        std::fflush(stdout);
        ++written;
      } catch (std::exception const& error) {
        std::fprintf(stderr, "Skipped %s / %s: %s\n", GameDisplayName(game), name.c_str(), error.what());
        ++failed;
      }
    }
  }
  std::printf("%d map pictures written to %s, %d failed\n", written, out.string().c_str(), failed);
  return failed == 0 ? 0 : 1;
}
