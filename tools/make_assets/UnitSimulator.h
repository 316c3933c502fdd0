#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

// A compact model of one player's units on a map, used by the tool to check that its levels can be
// played as intended: walking, climbing, falling, the seven activities and their triggers, spawning,
// orders picked by the nearest unit, and exits. It follows the game's unit rules for a single player,
// whose own changes to the terrain are seen from the next frame on.

enum class Activity { Bridge, HorizontalBridge, RaiseGround, Block, DigDown, DigSideways, DigUpwards };
enum class Trigger { Immediate, WhenBlocked, BeforeFalling, AfterTurning };

// Terrain in world coordinates (y up): 0 open, 1 ground, 2 indestructible ground.
struct SimTerrain {
  int width = 0;
  int height = 0;
  bool wrapX = false;
  bool wrapY = false;
  std::vector<std::uint8_t> cells;  // index y * width + x

  std::uint8_t at(int x, int y) const { return cells[static_cast<std::size_t>(y) * width + x]; }
  void wrap(int& x, int& y) const;
  bool isGround(int x, int y) const;
};

struct SimUnit {
  int id = 0;
  int x = 0;
  int y = 0;
  bool facingRight = true;
  std::optional<Activity> activity;
  Trigger trigger = Trigger::Immediate;
  int actionTimer = 0;
  int activityFrames = 0;
  bool inAir = true;
};

// An order as a player gives it: at an update number, a click at a world point, with a filter
// (0 any, 1 facing left, 2 facing right).
struct SimOrder {
  int frame = 0;
  int x = 0;
  int y = 0;
  Activity activity = Activity::Bridge;
  Trigger trigger = Trigger::Immediate;
  int filter = 0;
};

struct SimSetup {
  SimTerrain terrain;
  int spawnX = 0;
  int spawnY = 0;
  bool firstFacesRight = true;
  int exitX = 0;
  int exitY = 0;
  int units = 1;
  int spawnIntervalDeciseconds = 20;
  int durationSeconds = 60;
  int availability[7] = {0, 0, 0, 0, 0, 0, 0};
  bool cameraWrapX = false;
  bool cameraWrapY = false;
  std::vector<SimOrder> orders;
  int traceEvery = 0;  // if not 0, log every unit's state every so many frames
};

struct SimResult {
  int exited = 0;
  std::vector<int> exitFrames;      // update number of each arrival
  std::vector<std::string> log;     // one line per order: what it did
};

SimResult Simulate(SimSetup const& setup);
