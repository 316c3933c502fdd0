#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <random>
#include <string>
#include <vector>

// Runs several clients of one world side by side, each with its own local player, the way sessions
// step them: on client c at frame F the local player runs its update F and every other player its
// update F - D, then the world advances. Every update is logged (what its units asked and what they
// changed) so that clients can be compared with each other and with the rule that defines what a unit
// sees.
namespace testing_support {

struct Query {
  int x;
  int y;
  bool answer;
  friend bool operator==(Query const&, Query const&) = default;
};

struct Change {
  int x;
  int y;
  bool add;
  friend bool operator==(Change const&, Change const&) = default;
};

struct UpdateLog {
  std::vector<Query> queries;
  std::vector<Change> changes;
  friend bool operator==(UpdateLog const&, UpdateLog const&) = default;
};

// logs[player][update]
using ClientLog = std::vector<std::vector<UpdateLog>>;

struct Workload {
  unsigned seed = 1;
  int players = 2;
  int delay = 3;
  int updates = 100;
  int unitsPerPlayer = 20;
  // Units roam this box; coordinates outside the world are allowed.
  int minX = 0, maxX = 64, minY = 0, maxY = 64;
};

// One update of one player: each unit looks at a few pixels near where it stands and digs or builds
// according to what it saw, so a client that saw different terrain would soon make different changes.
template <typename World>
UpdateLog RunUpdate(World& world, Workload const& work, int player, int update) {
  UpdateLog log;
  std::mt19937 random(work.seed * 2654435761u + static_cast<unsigned>(player) * 40503u +
                      static_cast<unsigned>(update) * 97u);
  int const spanX = work.maxX - work.minX;
  int const spanY = work.maxY - work.minY;
  auto ask = [&](int x, int y) {
    bool const answer = world.isGround(player, x, y);
    log.queries.push_back({x, y, answer});
    return answer;
  };
  auto change = [&](int x, int y, bool add) {
    add ? world.queueAddPixel(player, x, y) : world.queueRemovePixel(player, x, y);
    log.changes.push_back({x, y, add});
  };
  for (int unit = 0; unit < work.unitsPerPlayer; ++unit) {
    std::mt19937 home(work.seed + static_cast<unsigned>(player * 1000 + unit));
    int const direction = home() % 2 == 0 ? 1 : -1;
    int const x = work.minX + static_cast<int>((home() + static_cast<unsigned>(direction * update / 3 + spanX * 64)) %
                                               static_cast<unsigned>(spanX));
    int const y = work.minY + static_cast<int>((home() + static_cast<unsigned>(update / 5)) % static_cast<unsigned>(spanY));
    bool const here = ask(x, y);
    bool const below = ask(x, y - 1);
    bool const ahead = ask(x + direction, y);
    if (here) {
      change(x, y, false);
      if (ahead && random() % 3 == 0) {
        change(x + direction, y, false);
      }
    } else if (!below && random() % 2 == 0) {
      change(x, y - 1, true);
    }
    if (random() % 5 == 0) {
      change(x + direction, y + 1, random() % 2 == 0);
    }
  }
  return log;
}

template <typename World>
ClientLog RunClient(World& world, Workload const& work, int localPlayer,
                    std::function<void(int frame)> const& afterFrame = {}) {
  ClientLog log(static_cast<std::size_t>(work.players), std::vector<UpdateLog>(static_cast<std::size_t>(work.updates)));
  for (int frame = 0; frame < work.updates + work.delay; ++frame) {
    for (int player = 0; player < work.players; ++player) {
      int const update = player == localPlayer ? frame : frame - work.delay;
      if (update >= 0 && update < work.updates) {
        log[static_cast<std::size_t>(player)][static_cast<std::size_t>(update)] =
            RunUpdate(world, work, player, update);
      }
    }
    world.frameAdvance();
    if (afterFrame) {
      afterFrame(frame);
    }
  }
  return log;
}

// What a unit of player P at its update n must see: every player's changes of updates up to n - D - 1,
// each update's adds of all players before its removes, then P's own changes of the later updates up
// to n - 1, update by update. Built from the logged changes alone, independently of the queues.
// `locate` maps a coordinate to a pixel index, or nothing outside the world (which is solid).
// Returns a description of the first disagreement, or nothing if every logged answer fits.
std::optional<std::string> CheckAgainstVisibilityRule(ClientLog const& log, Workload const& work,
                                                      std::vector<std::uint32_t> pixels,
                                                      std::function<std::optional<int>(int x, int y)> const& locate,
                                                      std::vector<std::vector<std::uint32_t>>* committedByUpdate = nullptr);

}  // namespace testing_support
