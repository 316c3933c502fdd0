// The tutorial levels as the game sets them up, each with the orders of its intended solution (the
// same as in README.md), for the unit model to play out.
#include "MapDesigns.h"

namespace {

TutorialCheck Level(std::string name, MapDesign const& design, bool wrapY, int sx, int sy, bool faceRight, int ex,
                    int ey, int units, int duration, Activity activity, int count, std::vector<SimOrder> orders) {
  TutorialCheck check;
  check.name = std::move(name);
  SimSetup& s = check.setup;
  s.terrain = ToSimTerrain(design.layout, false, wrapY);
  s.spawnX = sx;
  s.spawnY = sy;
  s.firstFacesRight = faceRight;
  s.exitX = ex;
  s.exitY = ey;
  s.units = units;
  s.spawnIntervalDeciseconds = 20;
  s.durationSeconds = duration;
  s.availability[static_cast<int>(activity)] = count;
  s.orders = std::move(orders);
  return check;
}

}  // namespace

std::vector<TutorialCheck> TutorialChecks() {
  std::vector<TutorialCheck> checks;
  MapDesign const digDown = MakeTutorialDigDown();
  MapDesign const sideways = MakeTutorialDigSideways();
  MapDesign const bridge = MakeTutorialBridge();
  MapDesign const pit = MakeTutorialPit();

  auto both = [&](std::string name, MapDesign const& design, bool wrapY, int sx, int sy, bool right, int ex, int ey,
                  int units, int duration, Activity activity, int count, std::vector<SimOrder> solution, int minimum) {
    TutorialCheck solved = Level(name + ", intended solution", design, wrapY, sx, sy, right, ex, ey, units, duration,
                                 activity, count, std::move(solution));
    solved.minimumExited = minimum;
    checks.push_back(std::move(solved));
    TutorialCheck idle = Level(name + ", no orders", design, wrapY, sx, sy, right, ex, ey, units, duration, activity,
                               count, {});
    idle.minimumExited = 0;
    idle.maximumExited = 0;
    checks.push_back(std::move(idle));
  };

  both("Tutorial 1: dig down", digDown, false, 784, 1024 - 321, true, 700, 275, 1, 40, Activity::DigDown, 1,
       {{300, 800, 600, Activity::DigDown, Trigger::Immediate, 0}}, 1);
  both("Tutorial 2: dig sideways", sideways, false, 780, 800, true, 780, 400, 2, 60, Activity::DigSideways, 1,
       {{250, 800, 700, Activity::DigSideways, Trigger::WhenBlocked, 2}}, 2);
  both("Tutorial 3: bridge", bridge, true, 500, 650, true, 1090, 500, 4, 120, Activity::Bridge, 99,
       {{240, 560, 560, Activity::Bridge, Trigger::BeforeFalling, 2},
        {500, 540, 560, Activity::Bridge, Trigger::BeforeFalling, 2},
        {1020, 270, 560, Activity::Bridge, Trigger::BeforeFalling, 2},
        {1140, 150, 560, Activity::Bridge, Trigger::BeforeFalling, 2}},
       1);
  both("Tutorial 4: the pit", pit, false, 728, 400, false, 1280 - 350, 380, 10, 120, Activity::Bridge, 3,
       {{200, 700, 300, Activity::Bridge, Trigger::AfterTurning, 1},
        {480, 720, 312, Activity::Bridge, Trigger::AfterTurning, 2},
        {780, 714, 341, Activity::Bridge, Trigger::AfterTurning, 1}},
       1);

  // The multiplayer maps, one player with no orders: on Ledges every unit takes the long way down and
  // across to its own team's exit, none reaches the other team's; on Cauldrons units fall into their
  // own cauldron (the exit of the player on the left) or the gutter, and none reaches their own exit.
  auto repeated = [](SimTerrain const& tile, int copies, bool mirror) {
    SimTerrain t;
    t.width = tile.width * (mirror ? 2 : copies);
    t.height = tile.height;
    t.cells.resize(static_cast<std::size_t>(t.width) * t.height);
    for (int y = 0; y < t.height; ++y) {
      for (int x = 0; x < t.width; ++x) {
        int const sx = mirror ? (x < tile.width ? x : 2 * tile.width - 1 - x) : x % tile.width;
        t.cells[static_cast<std::size_t>(y) * t.width + x] = tile.at(sx, y);
      }
    }
    return t;
  };
  auto multiplayer = [&](std::string name, SimTerrain terrain, bool wrap, int sx, int sy, bool right, int ex, int ey,
                         int minimum, int maximum) {
    TutorialCheck check;
    check.name = std::move(name);
    terrain.wrapX = terrain.wrapY = wrap;
    check.setup.terrain = std::move(terrain);
    check.setup.spawnX = sx;
    check.setup.spawnY = sy;
    check.setup.firstFacesRight = right;
    check.setup.exitX = ex;
    check.setup.exitY = ey;
    check.setup.units = 50;
    check.setup.spawnIntervalDeciseconds = 33;
    check.setup.durationSeconds = 180;
    check.setup.cameraWrapX = wrap;
    check.minimumExited = minimum;
    check.maximumExited = maximum;
    checks.push_back(std::move(check));
  };
  SimTerrain const ledges = repeated(ToSimTerrain(MakeLedges().layout, false, false), 2, true);
  for (bool wrap : {true, false}) {
    std::string const map = wrap ? "Wrapped Ledges" : "Unwrapped Ledges";
    multiplayer(map + ", slot 0, no orders, own exit", ledges, wrap, 440, 991, false, 1647, 159, 20, 50);
    multiplayer(map + ", slot 0, no orders, other exit", ledges, wrap, 440, 991, false, 400, 159, 0, 0);
    multiplayer(map + ", slot 2, no orders, own exit", ledges, wrap, 817, 991, true, 1647, 159, 20, 50);
  }
  SimTerrain const cauldrons = repeated(ToSimTerrain(MakeCauldrons().layout, false, false), 3, false);
  multiplayer("Cauldrons, slot 0, no orders, own exit", cauldrons, true, 166, 514, false, 853, 208, 0, 0);
  multiplayer("Cauldrons, slot 0, no orders, exit in its own cauldron", cauldrons, true, 166, 514, false, 341, 208, 1, 50);
  return checks;
}
