#include "UnitSimulator.h"

#include <algorithm>
#include <cstdlib>
#include <fmt/format.h>
#include <tuple>

namespace {

constexpr long long kFramePeriod = 16666;
constexpr int kHeadStart = 15;

char const* const kActivityNames[] = {"bridge",   "horizontal_bridge", "raise_ground", "block",
                                      "dig_down", "dig_sideways",      "dig_upwards"};

// The terrain as units of this frame see it, with the changes they make held back until the frame ends.
// With `discard` set it is the look-ahead world: changes are dropped.
class FrameWorld {
public:
  FrameWorld(SimTerrain const& terrain, std::vector<std::pair<int, int>>* adds, std::vector<std::pair<int, int>>* removes)
      : terrain_(terrain), adds_(adds), removes_(removes) {}

  bool ground(int x, int y) const { return terrain_.isGround(x, y); }
  void add(int x, int y) {
    if (adds_ != nullptr) {
      adds_->emplace_back(x, y);
    }
  }
  void remove(int x, int y) {
    if (removes_ != nullptr) {
      removes_->emplace_back(x, y);
    }
  }
  FrameWorld discarding() const { return FrameWorld(terrain_, nullptr, nullptr); }
  SimTerrain const& terrain() const { return terrain_; }

private:
  SimTerrain const& terrain_;
  std::vector<std::pair<int, int>>* adds_;
  std::vector<std::pair<int, int>>* removes_;
};

bool Running(SimUnit const& u, Activity a) {
  return u.activity.has_value() && *u.activity == a && u.trigger == Trigger::Immediate;
}

bool RunningAny(SimUnit const& u) { return u.activity.has_value() && u.trigger == Trigger::Immediate; }

void WalkStep(SimUnit& u, FrameWorld& w) {
  int const dir = u.facingRight ? 1 : -1;
  int const nx = u.x + dir;
  if (!w.ground(nx, u.y)) {
    u.x = nx;
    for (int i = 0; i < 5; ++i) {
      if (!w.ground(u.x, u.y - 1)) {
        u.y -= 1;
      }
    }
    return;
  }
  if (Running(u, Activity::RaiseGround)) {
    u.facingRight = !u.facingRight;
    return;
  }
  for (int k = 1; k <= 4; ++k) {
    if (!w.ground(nx, u.y + k)) {
      u.x = nx;
      u.y += k;
      return;
    }
  }
  u.facingRight = !u.facingRight;
}

void BridgeStep(SimUnit& u, FrameWorld& w) {
  int const dir = u.facingRight ? 1 : -1;
  int const nx = u.x + dir;
  int const old = u.activityFrames++;
  if (old >= 220 && u.actionTimer == 0) {
    for (int k = 0; k <= 4; ++k) {
      if (w.ground(nx, u.y - k)) {
        u.activity.reset();
        break;
      }
    }
    if (u.activityFrames >= 321) {
      u.activity.reset();
    }
    return;
  }
  if (u.actionTimer <= 6) {
    ++u.actionTimer;
    return;
  }
  u.actionTimer = 0;
  bool const horizontal = *u.activity == Activity::HorizontalBridge;
  int const py = horizontal ? u.y - 1 : u.y;
  for (int d = 1; d <= 3; ++d) {
    w.add(u.x + d * dir, py);
  }
  if (!horizontal) {
    u.y += 1;
  }
  bool lastColumnGround = false;
  for (int d = 1; d <= 3; ++d) {
    bool const g = w.ground(u.x + d * dir, u.y);
    if (g && w.ground(u.x + d * dir, u.y + 1)) {
      u.activity.reset();
      return;
    }
    if (d == 3) {
      lastColumnGround = g;
    }
  }
  u.x += 3 * dir;
  if (lastColumnGround) {
    u.y += 1;
  }
}

// Returns whether the walk step follows.
bool RaiseStep(SimUnit& u, FrameWorld& w) {
  int const old = u.activityFrames++;
  if (old >= 300) {
    u.activity.reset();
    return false;
  }
  if (u.actionTimer <= 4) {
    ++u.actionTimer;
    return false;
  }
  u.actionTimer = 0;
  w.add(u.x, u.y);
  if (!w.ground(u.x, u.y + 1)) {
    u.y += 1;
  }
  return true;
}

bool SidewaysStep(SimUnit& u, FrameWorld& w) {
  int const dir = u.facingRight ? 1 : -1;
  int const nx = u.x + dir;
  int const old = u.activityFrames++;
  if (old >= 230) {
    bool opening = false;
    for (int k = 0; k <= 4; ++k) {
      opening = opening || !w.ground(nx, u.y + k);
    }
    if (opening || u.activityFrames > 330) {
      u.activity.reset();
    }
    return false;
  }
  if (u.actionTimer <= 2) {
    ++u.actionTimer;
    return false;
  }
  if (u.actionTimer == 3) {
    bool const upwards = *u.activity == Activity::DigUpwards;
    if (upwards && !w.ground(nx, u.y)) {
      u.actionTimer = 0;
      return true;
    }
    int const by = upwards ? u.y + 2 : u.y;
    for (int k = 0; k < 6; ++k) {
      w.remove(nx, by + k);
    }
    u.actionTimer = 4;
    return false;
  }
  u.actionTimer = 0;
  return true;
}

void DigDownStep(SimUnit& u, FrameWorld& w) {
  int const old = u.activityFrames++;
  if (old >= 70) {
    u.activity.reset();
    return;
  }
  if (u.actionTimer <= 1) {
    ++u.actionTimer;
    return;
  }
  u.actionTimer = 0;
  for (int dx = -2; dx <= 2; ++dx) {
    w.remove(u.x + dx, u.y - 1);
  }
}

void BlockStep(SimUnit& u, FrameWorld& w) {
  int const dir = u.facingRight ? 1 : -1;
  int const bx = u.x - dir;
  int top = 0;
  if (w.ground(bx, u.y)) {
    top = u.y + 4;
    for (int k = 0; k <= 3; ++k) {
      if (!w.ground(bx, u.y + k + 1)) {
        top = u.y + k;
        break;
      }
    }
  } else {
    top = u.y - 4;
    for (int t = u.y - 1; t >= u.y - 3; --t) {
      if (w.ground(bx, t)) {
        top = t;
        break;
      }
    }
  }
  for (int j = u.y; j <= top + 5; ++j) {
    w.add(u.x, j);
  }
}

void StepUnwrapped(SimUnit& u, FrameWorld& w) {
  if (Running(u, Activity::DigDown) && !w.ground(u.x, u.y - 1)) {
    u.y -= 1;
  }
  if (!w.ground(u.x, u.y - 1)) {
    u.y -= 1;
    if (u.trigger == Trigger::Immediate) {
      u.activity.reset();
    }
    u.inAir = true;
    return;
  }
  u.inAir = false;
  if (Running(u, Activity::Bridge) || Running(u, Activity::HorizontalBridge)) {
    BridgeStep(u, w);
    return;
  }
  if (Running(u, Activity::RaiseGround)) {
    if (!RaiseStep(u, w)) {
      return;
    }
  } else if (Running(u, Activity::DigSideways) || Running(u, Activity::DigUpwards)) {
    if (!SidewaysStep(u, w)) {
      return;
    }
  } else if (Running(u, Activity::DigDown)) {
    DigDownStep(u, w);
    return;
  } else if (Running(u, Activity::Block)) {
    BlockStep(u, w);
    return;
  }
  WalkStep(u, w);
}

void Arm(SimUnit& u) {
  u.trigger = Trigger::Immediate;
  u.actionTimer = 0;
  u.activityFrames = 0;
}

void UpdateUnit(SimUnit& u, FrameWorld& w) {
  SimUnit copy = u;
  FrameWorld lookAhead = w.discarding();
  StepUnwrapped(copy, lookAhead);
  if (u.activity && u.trigger == Trigger::WhenBlocked) {
    if (copy.facingRight != u.facingRight) {
      Arm(u);
    }
  } else if (!copy.inAir) {
    StepUnwrapped(copy, lookAhead);
    if (u.activity && u.trigger == Trigger::BeforeFalling && copy.inAir) {
      Arm(u);
    }
  }
  bool const wasRight = u.facingRight;
  StepUnwrapped(u, w);
  if (u.activity && u.trigger == Trigger::AfterTurning && u.facingRight != wasRight) {
    Arm(u);
  }
  w.terrain().wrap(u.x, u.y);
}

bool PlainWalker(SimUnit const& u) { return !RunningAny(u) && !u.inAir; }

}  // namespace

void SimTerrain::wrap(int& x, int& y) const {
  if (wrapX) {
    if (x < 0) {
      x += width;
    } else if (x >= width) {
      x -= width;
    }
  }
  if (wrapY) {
    if (y < 0) {
      y += height;
    } else if (y >= height) {
      y -= height;
    }
  }
}

bool SimTerrain::isGround(int x, int y) const {
  wrap(x, y);
  if (x < 0 || y < 0 || x >= width || y >= height) {
    return true;
  }
  return at(x, y) != 0;
}

SimResult Simulate(SimSetup const& setup) {
  SimResult result;
  SimTerrain terrain = setup.terrain;
  std::vector<SimUnit> units;
  int nextId = 0;
  int toSpawn = setup.units;
  long long spawnClock = 0;
  long long const spawnInterval = static_cast<long long>(setup.spawnIntervalDeciseconds) * 100000;
  bool nextFacingRight = setup.firstFacesRight;
  int availability[7];
  std::copy(std::begin(setup.availability), std::end(setup.availability), availability);
  int const endFrame = static_cast<int>(static_cast<long long>(setup.durationSeconds) * 1000000 / kFramePeriod);

  auto axisDistance = [](int a, int b, int size, bool wrap) {
    long long d = std::llabs(static_cast<long long>(a) - b);
    return wrap ? std::min(d, size - d) : d;
  };

  for (int frame = 0; frame < endFrame; ++frame) {
    // Orders of this frame are resolved against the list as the last update left it.
    for (SimOrder const& order : setup.orders) {
      if (order.frame != frame) {
        continue;
      }
      std::optional<std::size_t> best;
      long long bestDistance = 0;
      for (std::size_t i = 0; i < units.size(); ++i) {
        SimUnit const& u = units[i];
        if (order.trigger == Trigger::Immediate && u.inAir) {
          continue;
        }
        if ((order.filter == 1 && u.facingRight) || (order.filter == 2 && !u.facingRight)) {
          continue;
        }
        long long const dx = axisDistance(u.x, order.x, terrain.width, setup.cameraWrapX);
        long long const dy = axisDistance(u.y, order.y, terrain.height, setup.cameraWrapY);
        long long const d = dx * dx + dy * dy;
        if (d > 22500) {
          continue;
        }
        if (!best || d < bestDistance) {
          best = i;
          bestDistance = d;
        }
      }
      int const a = static_cast<int>(order.activity);
      if (!best) {
        result.log.push_back(fmt::format("frame {}: {} at ({}, {}): no unit in range", frame, kActivityNames[a], order.x, order.y));
      } else if (availability[a] == 0) {
        result.log.push_back(fmt::format("frame {}: {} refused, none left", frame, kActivityNames[a]));
      } else {
        SimUnit& u = units[*best];
        --availability[a];
        u.activity = order.activity;
        u.trigger = order.trigger;
        u.actionTimer = 0;
        u.activityFrames = 0;
        result.log.push_back(fmt::format("frame {}: {} given to unit {} at ({}, {}) facing {}", frame, kActivityNames[a],
                                         u.id, u.x, u.y, u.facingRight ? "right" : "left"));
      }
    }

    if (setup.traceEvery != 0 && frame % setup.traceEvery == 0) {
      std::string line = fmt::format("frame {}:", frame);
      for (SimUnit const& u : units) {
        line += fmt::format(" #{}({},{}{}{}{})", u.id, u.x, u.y, u.facingRight ? ">" : "<", u.inAir ? " air" : "",
                            u.activity ? (u.trigger == Trigger::Immediate ? " act" : " pend") : "");
      }
      result.log.push_back(line);
    }

    // The player's update: sort, step (stacked plain walkers leave one per frame), spawn.
    std::sort(units.begin(), units.end(), [](SimUnit const& a, SimUnit const& b) {
      return std::make_tuple(PlainWalker(a), a.facingRight, a.x, a.y, a.id) <
             std::make_tuple(PlainWalker(b), b.facingRight, b.x, b.y, b.id);
    });
    std::vector<std::pair<int, int>> adds;
    std::vector<std::pair<int, int>> removes;
    FrameWorld world(terrain, &adds, &removes);
    bool notedAny = false;
    int notedX = 0, notedY = 0;
    bool notedRight = false;
    for (SimUnit& u : units) {
      if (PlainWalker(u)) {
        if (notedAny && u.x == notedX && u.y == notedY && u.facingRight == notedRight) {
          continue;
        }
        notedAny = true;
        notedX = u.x;
        notedY = u.y;
        notedRight = u.facingRight;
      }
      UpdateUnit(u, world);
    }
    if (toSpawn != 0) {
      spawnClock += kFramePeriod;
      if (spawnClock > spawnInterval) {
        SimUnit u;
        u.id = nextId++;
        u.x = setup.spawnX;
        u.y = setup.spawnY;
        u.facingRight = nextFacingRight;
        units.push_back(u);
        spawnClock -= spawnInterval;
        --toSpawn;
        nextFacingRight = !nextFacingRight;
      }
    }

    if (frame >= kHeadStart) {
      for (std::size_t i = units.size(); i-- > 0;) {
        long long const dx = axisDistance(units[i].x, setup.exitX, terrain.width, terrain.wrapX);
        long long const dy = axisDistance(units[i].y, setup.exitY, terrain.height, terrain.wrapY);
        if (dx * dx + dy * dy <= 900) {
          units.erase(units.begin() + static_cast<std::ptrdiff_t>(i));
          ++result.exited;
          result.exitFrames.push_back(frame);
        }
      }
    }

    // The frame's changes become visible: adds, then removes, which win over adds of the same pixel.
    auto writable = [&](int x, int y) {
      terrain.wrap(x, y);
      return x >= 0 && y >= 0 && x < terrain.width && y < terrain.height && terrain.at(x, y) != 2;
    };
    for (auto [x, y] : adds) {
      if (writable(x, y)) {
        terrain.wrap(x, y);
        terrain.cells[static_cast<std::size_t>(y) * terrain.width + x] = 1;
      }
    }
    for (auto [x, y] : removes) {
      if (writable(x, y)) {
        terrain.wrap(x, y);
        terrain.cells[static_cast<std::size_t>(y) * terrain.width + x] = 0;
      }
    }
  }
  return result;
}
