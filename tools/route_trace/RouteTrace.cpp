// Plays one Glow Horde game with scripted orders and reports what every unit did, to find and check
// the routes through a map. Orders come from a file, one a line: "player frame x,y activity [words]",
// the frame being that player's update number, as for a driver's injected order. All players run in
// one simulation, with player 0 local and the others' orders arriving delayFrames later, as on one
// client of a networked game.
#include <SDL3/SDL.h>
#include <SDL3_image/SDL_image.h>
#include <fmt/format.h>

#include <argparse/argparse.hpp>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "sim/Games.h"
#include "sim/PlayerSlots.h"
#include "present/Renderer.h"
#include "present/TextureCache.h"
#include "present/WorldDrawing.h"
#include "glow_horde/GlowHordeSimulation.h"
#include "glow_horde/UIOrderText.h"

namespace {

std::vector<LemmingActivityTrigger> const k_defaultTriggers = {
    LemmingActivityTrigger::Immediate,  LemmingActivityTrigger::BeforeFalling, LemmingActivityTrigger::Immediate,
    LemmingActivityTrigger::Immediate,  LemmingActivityTrigger::Immediate,     LemmingActivityTrigger::WhenBlocked,
    LemmingActivityTrigger::WhenBlocked};

struct ScriptedOrder {
  int player = 0;
  std::uint32_t frame = 0;
  std::string text;
};

std::vector<ScriptedOrder> ReadOrders(std::string const& file) {
  std::vector<ScriptedOrder> orders;
  if (file.empty()) return orders;
  std::ifstream in(file);
  if (!in) throw std::runtime_error("Failed to open the order file " + file + ".");
  std::string line;
  while (std::getline(in, line)) {
    if (line.empty() || line[0] == '#') continue;
    std::istringstream words(line);
    ScriptedOrder order;
    words >> order.player >> order.frame;
    std::getline(words, order.text);
    while (!order.text.empty() && order.text.front() == ' ') order.text.erase(order.text.begin());
    if (!words && order.text.empty()) throw std::runtime_error("Not an order line: " + line);
    orders.push_back(order);
  }
  return orders;
}

char const* ActivityName(std::optional<LemmingActivity> activity) {
  return activity.has_value() ? LemmingActivityKeyword(*activity) : "walk";
}

std::string Describe(Lemming const& unit) {
  std::string state = unit.inAir() ? "falling" : ActivityName(unit.activity());
  if (unit.activity().has_value() && unit.trigger() != LemmingActivityTrigger::Immediate) {
    state =
        fmt::format("walk (pending {} {})", ActivityName(unit.activity()), LemmingActivityTriggerLabel(unit.trigger()));
  }
  return fmt::format("({},{}) {} {}", unit.position().x, unit.position().y, unit.facingRight() ? "R" : "L", state);
}

}  // namespace

int main(int argc, char** argv) {
  argparse::ArgumentParser program("route_trace");
  program.add_description("Plays a Glow Horde map with scripted orders and reports what the units did.");
  program.add_argument("--challenge").default_value(std::string()).help("a co-op challenge or ranked match by name");
  program.add_argument("--map").default_value(std::string()).help("a map by name, with default settings");
  program.add_argument("--players").default_value(1).scan<'i', int>().help("players, in slots 0, 1, ...");
  program.add_argument("--orders").default_value(std::string()).help("file of 'player frame order' lines");
  program.add_argument("--delay").default_value(15).scan<'i', int>();
  program.add_argument("--frames").default_value(0).scan<'i', int>().help("stop after this many frames (0: all)");
  program.add_argument("--events")
      .default_value(false)
      .implicit_value(true)
      .help("print every change of a unit's state");
  program.add_argument("--every").default_value(0).scan<'i', int>().help("print every unit every N frames");
  program.add_argument("--watch")
      .default_value(std::string())
      .help("print unit 'player:id' (id * for all) every frame");
  program.add_argument("--png").default_value(std::string()).help("draw the final terrain and the trails here");
  program.add_argument("--data-parent").default_value(std::string());
  try {
    program.parse_args(argc, argv);
  } catch (std::exception const& error) {
    std::fprintf(stderr, "%s\n%s", error.what(), program.usage().c_str());
    return 2;
  }
  try {
    std::string dataParent = program.get<std::string>("--data-parent");
    if (dataParent.empty()) {
      char const* base = SDL_GetBasePath();
      dataParent = base != nullptr ? base : ".";
    }
    std::vector<ScriptedOrder> const orders = ReadOrders(program.get<std::string>("--orders"));
    std::filesystem::current_path(dataParent);

    Games const games;
    IGame const& glowHorde = games.refGame(Game::GlowHorde);
    GameSettings settings = DefaultSettingsFromSchema(glowHorde.schema);
    std::string const challenge = program.get<std::string>("--challenge");
    if (!challenge.empty()) {
      bool found = false;
      for (auto const* list : {&glowHorde.lookup.coopChallenges, &glowHorde.lookup.rankedMatches}) {
        for (NamedGameSettings const& named : *list) {
          if (named.name == challenge) {
            settings = named.settings;
            found = true;
          }
        }
      }
      if (!found) throw std::runtime_error("No challenge is called " + challenge + ".");
    } else {
      settings.strings["map"] = program.get<std::string>("--map");
    }
    auto const found = glowHorde.maps.find(settings.strings.at("map"));
    if (found == glowHorde.maps.end()) throw std::runtime_error("Give a map or a challenge of Glow Horde by name.");
    MapSettings const& map = found->second;
    int const playerCount = program.get<int>("--players");
    if (playerCount < 1 || playerCount > map.maxPlayers) {
      throw std::runtime_error(fmt::format("The map {} takes 1 to {} players.", map.name, map.maxPlayers));
    }
    std::vector<unsigned short> slots;
    for (int p = 0; p < playerCount; ++p) slots.push_back(static_cast<unsigned short>(p));
    auto const delay = static_cast<std::uint8_t>(program.get<int>("--delay"));

    std::string const png = program.get<std::string>("--png");
    SDL_Surface* surface = nullptr;
    SDL_Renderer* target = nullptr;
    {
      ChunkedWorld probe(1, 0, 1, map);
      if (!png.empty()) {
        surface = SDL_CreateSurface(probe.width(), probe.height(), SDL_PIXELFORMAT_ARGB8888);
        target = SDL_CreateSoftwareRenderer(surface);
      }
    }
    GlowHordeSimulation simulation(0, 16666, delay, settings, map, slots);
    int const worldHeight = simulation.world().height();

    int watchPlayer = -1, watchId = -1;
    if (std::string const watch = program.get<std::string>("--watch"); !watch.empty()) {
      if (std::sscanf(watch.c_str(), "%d:%d", &watchPlayer, &watchId) != 2) {
        watchId = -1;  // "p:*": every unit of the player
      }
    }
    bool const events = program.get<bool>("--events");
    int const every = program.get<int>("--every");
    int const maxFrames = program.get<int>("--frames");

    std::vector<std::map<std::uint16_t, std::string>> lastState(slots.size());
    int const worldWidth = simulation.world().width();
    // Every pixel that a unit of the player has stood on, row by row from the bottom.
    std::vector<std::vector<bool>> trails(
        slots.size(), std::vector<bool>(static_cast<std::size_t>(worldWidth) * static_cast<std::size_t>(worldHeight)));
    std::vector<int> exitedBefore = simulation.exitedCounts();
    std::size_t next = 0;
    std::vector<ScriptedOrder> sorted = orders;
    std::stable_sort(sorted.begin(), sorted.end(), [&](auto const& a, auto const& b) {
      return a.frame + (a.player == 0 ? 0u : delay) < b.frame + (b.player == 0 ? 0u : delay);
    });
    int accepted = 0;
    std::vector<std::vector<int>> outByPlayer(simulation.exitPositions().size(), std::vector<int>(slots.size()));
    while (!simulation.gameEnded() && (maxFrames == 0 || simulation.frame() < static_cast<std::uint32_t>(maxFrames))) {
      std::uint32_t const frame = simulation.frame();
      std::vector<std::vector<unsigned char>> frameOrders(slots.size());
      std::vector<unsigned char> ours;
      while (next < sorted.size() && sorted[next].frame + (sorted[next].player == 0 ? 0u : delay) <= frame) {
        ScriptedOrder const& order = sorted[next++];
        std::optional<UIOrder> const click = ParseUIOrderText(order.text, k_defaultTriggers);
        if (!click) throw std::runtime_error("Not an order: " + order.text);
        PlayerState const& player = simulation.players()[static_cast<std::size_t>(order.player)];
        std::optional<Order> const resolved = player.resolveUIOrder(*click);
        std::string chosen = "no unit";
        if (resolved) {
          chosen = fmt::format("unit {} at {}", resolved->id_, Describe(player.lemmings()[resolved->index_in_array_]));
          (order.player == 0 ? ours : frameOrders[static_cast<std::size_t>(order.player)]) = resolved->toBytes();
        }
        std::printf("order p%d f%u '%s' -> %s\n", order.player, order.frame, order.text.c_str(), chosen.c_str());
      }
      std::vector<std::map<std::uint16_t, Position>> before(slots.size());
      for (std::size_t p = 0; p < slots.size(); ++p) {
        for (Lemming const& unit : simulation.players()[p].lemmings()) before[p][unit.id()] = unit.position();
      }
      GlowHordeSimulation::StepEvents const stepEvents = simulation.update(frameOrders, ours);
      // Units that went out: each at the exit nearest its last position.
      for (std::size_t p = 0; p < slots.size(); ++p) {
        for (Lemming const& unit : simulation.players()[p].lemmings()) before[p].erase(unit.id());
        for (auto const& [id, position] : before[p]) {
          std::size_t nearest = 0;
          std::int64_t best = -1;
          for (std::size_t e = 0; e < simulation.exitPositions().size(); ++e) {
            std::int64_t const dx = position.x - simulation.exitPositions()[e].x;
            std::int64_t const dy = position.y - simulation.exitPositions()[e].y;
            if (best < 0 || dx * dx + dy * dy < best) {
              best = dx * dx + dy * dy;
              nearest = e;
            }
          }
          ++outByPlayer[nearest][p];
        }
      }
      accepted += stepEvents.localOrderAccepted ? 1 : 0;
      for (std::size_t p = 0; p < slots.size(); ++p) {
        PlayerState const& player = simulation.players()[p];
        int const update = static_cast<int>(frame) - (p == 0 ? 0 : delay);
        for (Lemming const& unit : player.lemmings()) {
          Position const at = unit.position();
          if (at.x >= 0 && at.x < worldWidth && at.y >= 0 && at.y < worldHeight) {
            trails[p][static_cast<std::size_t>(at.y) * static_cast<std::size_t>(worldWidth) +
                      static_cast<std::size_t>(at.x)] = true;
          }
          std::string const description = Describe(unit);
          std::string state = description.substr(description.find(')') + 1);
          std::string& last = lastState[p][unit.id()];
          if (events && state != last) {
            std::printf("f%d p%zu u%u %s\n", update, p, unit.id(), description.c_str());
          }
          if ((every > 0 && update % every == 0) ||
              (static_cast<int>(p) == watchPlayer && (watchId < 0 || unit.id() == watchId))) {
            std::printf("f%d p%zu u%u %s\n", update, p, unit.id(), description.c_str());
          }
          last = state;
        }
      }
      for (std::size_t e = 0; e < exitedBefore.size(); ++e) {
        if (simulation.exitedCounts()[e] != exitedBefore[e]) {
          std::printf("f%u exit %zu: %d out\n", frame, e, simulation.exitedCounts()[e]);
        }
      }
      exitedBefore = simulation.exitedCounts();
    }
    for (std::size_t e = 0; e < simulation.exitedCounts().size(); ++e) {
      std::printf("exit %zu at (%d,%d): %d units out, by player:", e, simulation.exitPositions()[e].x,
                  simulation.exitPositions()[e].y, simulation.exitedCounts()[e]);
      for (int n : outByPlayer[e]) std::printf(" %d", n);
      std::printf("\n");
    }
    for (std::size_t p = 0; p < slots.size(); ++p) {
      PlayerState const& player = simulation.players()[p];
      std::printf("player %zu: %zu units left, %d to spawn, availabilities", p, player.lemmings().size(),
                  player.toSpawn());
      for (int a = 0; a < 7; ++a) std::printf(" %d", player.availabilities().counts[static_cast<std::size_t>(a)]);
      std::printf("\n");
    }
    if (target != nullptr) {
      SDL_SetRenderDrawColor(target, 24, 26, 38, 255);
      SDL_RenderClear(target);
      Camera const camera{0.0f, 1.0f, 1.0f};
      RenderWorld(simulation.world(), target, camera, surface->w, surface->h);
      for (std::size_t p = 0; p < slots.size(); ++p) {
        PlayerSlot const& s = SLOTS[slots[p] % SLOTS.size()];
        SDL_SetRenderDrawColor(target, static_cast<Uint8>(s.red * 255), static_cast<Uint8>(s.green * 255),
                               static_cast<Uint8>(s.blue * 255), 255);
        for (int y = 0; y < worldHeight; ++y) {
          for (int x = 0; x < worldWidth; ++x) {
            if (trails[p][static_cast<std::size_t>(y) * static_cast<std::size_t>(worldWidth) +
                          static_cast<std::size_t>(x)]) {
              SDL_RenderPoint(target, static_cast<float>(x), static_cast<float>(worldHeight - 1 - y));
            }
          }
        }
      }
      SDL_SetRenderDrawColor(target, 255, 255, 255, 255);
      for (Position const& exit : simulation.exitPositions()) {
        float const x = static_cast<float>(exit.x), y = static_cast<float>(worldHeight - 1 - exit.y);
        SDL_RenderLine(target, x - 6, y, x + 6, y);
        SDL_RenderLine(target, x, y - 6, x, y + 6);
      }
      SDL_FlushRenderer(target);
      IMG_SavePNG(surface, png.c_str());
      SDL_DestroyRenderer(target);
      SDL_DestroySurface(surface);
    }
    std::printf("local orders accepted: %d\n", accepted);
    std::fflush(stdout);
    return 0;
  } catch (std::exception const& error) {
    std::fprintf(stderr, "%s\n", error.what());
    return 1;
  }
}
