// Writes every file of the data directory: images, sounds and maps, and the digests of the maps.
// Deterministic: the only randomness is the tool's own fixed-seed generator, so two runs give the
// same pixels and samples.
#include <SDL3/SDL.h>
#include <SDL3_ttf/SDL_ttf.h>

#include <cstdio>
#include <exception>
#include <filesystem>
#include <functional>
#include <map>
#include <iostream>
#include <set>
#include <string>
#include <vector>

#include "Banner.h"
#include "sim/Games.h"
#include "world/EmptyBerthMap.h"
#include "MapDesigns.h"
#include "MapOutputs.h"
#include "Cursors.h"
#include "Sounds.h"
#include "Sprites.h"
#include "WavWriter.h"

namespace {

struct Options {
  std::string dataDir = std::string(TANDEM_SOURCE_DIR) + "/data";
  std::string digestsHeader = std::string(TANDEM_SOURCE_DIR) + "/src/world/MapDigests.h";
  std::string previewDir;  // empty: no previews
  std::string fontPath = TANDEM_BANNER_FONT;
  std::set<std::string> only;  // empty: everything
};

void PrintUsage() {
  std::puts(
      "Usage: make_assets [--data DIR] [--digests FILE] [--previews DIR] [--font FILE] [FILE...]\n"
      "Writes the images and sounds of the data directory (default: the source tree's data/) and the\n"
      "map digests header. Naming files writes only those. --previews writes upright renderings of the\n"
      "maps, with starts and exits marked, into DIR.");
}

Options ParseOptions(int argc, char** argv) {
  Options options;
  for (int i = 1; i < argc; ++i) {
    std::string const arg = argv[i];
    auto value = [&]() -> std::string {
      if (i + 1 >= argc) {
        throw std::runtime_error("The option " + arg + " needs a value.");
      }
      return argv[++i];
    };
    if (arg == "--data") {
      options.dataDir = value();
    } else if (arg == "--digests") {
      options.digestsHeader = value();
    } else if (arg == "--previews") {
      options.previewDir = value();
    } else if (arg == "--font") {
      options.fontPath = value();
    } else if (arg == "--help" || arg == "-h") {
      PrintUsage();
      std::exit(0);
    } else if (!arg.empty() && arg[0] == '-') {
      throw std::runtime_error("Unknown option " + arg + ".");
    } else {
      options.only.insert(arg);
    }
  }
  return options;
}

}  // namespace

// The catalogue entry that shows a map image best in a preview.
MapSettings PreviewSettings(std::string const& file) {
  if (file == "aviators.png") {
    return EmptyBerthMap();
  }
  Games const games;
  std::string name;
  for (auto const& [mapName, map] : games.refGame(Game::GlowHorde).maps) {
    if (map.imageFile == file && (name.empty() || map.maxPlayers > games.refGame(Game::GlowHorde).maps.at(name).maxPlayers ||
                                  (map.wrapX && name == "Unwrapped Ledges"))) {
      name = mapName;
    }
  }
  return games.refGame(Game::GlowHorde).maps.at(name);
}

int main(int argc, char** argv) {
  try {
    Options const options = ParseOptions(argc, argv);
    if (!SDL_Init(0)) {
      throw std::runtime_error(std::string("Failed to initialise SDL: ") + SDL_GetError());
    }
    std::filesystem::create_directories(options.dataDir);
    auto wanted = [&](std::string const& file) { return options.only.empty() || options.only.count(file) != 0; };
    auto image = [&](std::string const& file, std::function<Canvas()> const& make) {
      if (wanted(file)) {
        make().savePng(options.dataDir + "/" + file);
        std::cout << "Wrote " << file << std::endl;
      }
    };

    image("banner.png", [&] { return MakeBanner(options.fontPath); });
    image("cursor.png", [] { return MakeCursor(CursorDirection::None); });
    image("cursor_left.png", [] { return MakeCursor(CursorDirection::Left); });
    image("cursor_right.png", [] { return MakeCursor(CursorDirection::Right); });
    image("immediate_icon.png", MakeImmediateIcon);
    image("blocked_icon.png", MakeBlockedIcon);
    image("falling_icon.png", MakeFallingIcon);
    image("turned_icon.png", MakeTurnedIcon);

    image("entry.png", MakeEntrySprite);
    image("exit.png", MakeExitSprite);
    image("hordeling.png", MakeHordelingSprite);
    image("selection_brackets.png", MakeSelectionBracketsSprite);
    image("circle.png", MakeCircleSprite);
    image("circle_cross_section.png", MakeCircleCrossSectionSprite);
    image("ship.png", MakeShipSprite);
    image("ring.png", MakeRingSprite);
    image("star.png", MakeStarSprite);

    auto sound = [&](std::string const& file, std::function<std::vector<float>()> const& make) {
      if (wanted(file)) {
        WriteWav(options.dataDir + "/" + file, make(), kSoundRate);
        std::cout << "Wrote " << file << std::endl;
      }
    };
    sound("order_given.wav", MakeOrderGivenSound);
    sound("exit.wav", MakeExitSound);
    sound("small_hit.wav", MakeSmallHitSound);
    sound("explosion.wav", MakeExplosionSound);
    sound("target_lock_succeeded.wav", MakeTargetLockSucceededSound);
    sound("target_lock_failed.wav", MakeTargetLockFailedSound);
    sound("fire_missile.wav", MakeFireMissileSound);
    sound("cannot_fire_missile.wav", MakeCannotFireMissileSound);

    std::map<std::string, std::uint64_t> digests;
    for (auto make : {MakeLedges, MakeCauldrons, MakeAstralSteps, MakeTutorialDigDown, MakeTutorialDigSideways,
                      MakeTutorialBridge, MakeTutorialPit, MakeShipArena}) {
      MapDesign const design = make();
      std::string const path = options.dataDir + "/" + design.file;
      if (wanted(design.file)) {
        PaintMap(design.layout, design.theme).savePng(path);
        std::cout << "Wrote " << design.file << std::endl;
      }
      if (std::filesystem::exists(path)) {
        digests[design.file] = MapFileDigest(path);
        if (!options.previewDir.empty()) {
          std::filesystem::create_directories(options.previewDir);
          WriteMapPreview(path, PreviewSettings(design.file), options.previewDir + "/preview_" + design.file);
        }
      }
    }
    if (!options.digestsHeader.empty() && digests.size() == 8) {
      WriteMapDigestsHeader(options.digestsHeader, digests);
      std::cout << "Wrote " << options.digestsHeader << std::endl;
    }

    if (TTF_WasInit()) {
      TTF_Quit();
    }
    SDL_Quit();
    return 0;
  } catch (std::exception const& e) {
    std::cerr << e.what() << std::endl;
    return 1;
  }
}
