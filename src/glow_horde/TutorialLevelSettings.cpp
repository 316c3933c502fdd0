#include "glow_horde/TutorialLevelSettings.h"

#include <fmt/format.h>

#include <array>
#include <stdexcept>

namespace {

struct Level {
  char const* map;
  char const* orders;
  int orderCount;
  int numberToSpawn;
  int durationSeconds;
};

constexpr std::array<Level, kTutorialLevels> kLevels{{
    {"Tutorial 1: dig down", "dig_down_orders", 1, 1, 40},
    {"Tutorial 2: dig sideways", "dig_sideways_orders", 1, 2, 60},
    {"Tutorial 3: bridge", "bridge_orders", 99, 4, 120},
    {"Mosh pit", "bridge_orders", 3, 10, 120},
}};

constexpr std::array<char const*, 7> kOrderKeys{"bridge_orders",    "horizontal_bridge_orders", "raise_ground_orders",
                                                "block_orders",     "dig_down_orders",          "dig_sideways_orders",
                                                "dig_upwards_orders"};

}  // namespace

GameSettings TutorialLevelSettings(GameSettingsSchema const& glowHordeSchema, int level) {
  if (level < 0 || level >= kTutorialLevels) {
    throw std::runtime_error(fmt::format("There is no tutorial level {}.", level));
  }
  GameSettings settings = DefaultSettingsFromSchema(glowHordeSchema);
  settings.ints["duration_seconds"] = 60;
  settings.ints["spawn_interval_deciseconds"] = 20;
  for (char const* key : kOrderKeys) {
    settings.ints[key] = 0;
  }
  Level const& chosen = kLevels[static_cast<std::size_t>(level)];
  settings.strings["map"] = chosen.map;
  settings.ints[chosen.orders] = chosen.orderCount;
  settings.ints["number_to_spawn"] = chosen.numberToSpawn;
  settings.ints["duration_seconds"] = chosen.durationSeconds;
  return settings;
}
