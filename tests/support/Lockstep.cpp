#include "support/Lockstep.h"

#include <algorithm>

namespace testing_support {

namespace {

bool Ground(std::uint32_t pixel) { return (pixel >> 24) >= 254; }
bool Indestructible(std::uint32_t pixel) { return (pixel >> 24) == 255; }

void Commit(ClientLog const& log, int update, std::vector<std::uint32_t>& pixels,
            std::function<std::optional<int>(int x, int y)> const& locate) {
  for (bool adds : {true, false}) {
    for (auto const& playerLog : log) {
      for (Change const& change : playerLog[static_cast<std::size_t>(update)].changes) {
        std::optional<int> const index = locate(change.x, change.y);
        if (change.add != adds || !index || Indestructible(pixels[static_cast<std::size_t>(*index)])) {
          continue;
        }
        pixels[static_cast<std::size_t>(*index)] = adds ? 0xFEFFFFFFu : 0u;
      }
    }
  }
}

}  // namespace

std::optional<std::string> CheckAgainstVisibilityRule(ClientLog const& log, Workload const& work,
                                                      std::vector<std::uint32_t> pixels,
                                                      std::function<std::optional<int>(int x, int y)> const& locate,
                                                      std::vector<std::vector<std::uint32_t>>* committedByUpdate) {
  int committed = -1;  // updates up to this one are in `pixels`
  // Past the last update only to fill committedByUpdate to the end.
  int const last = committedByUpdate != nullptr ? work.updates + work.delay : work.updates - 1;
  for (int update = 0; update <= last; ++update) {
    while (committed < std::min(update - work.delay - 1, work.updates - 1)) {
      Commit(log, ++committed, pixels, locate);
      if (committedByUpdate != nullptr) {
        committedByUpdate->push_back(pixels);
      }
    }
    for (int player = 0; player < work.players && update < work.updates; ++player) {
      auto const& own = log[static_cast<std::size_t>(player)];
      for (Query const& query : own[static_cast<std::size_t>(update)].queries) {
        std::optional<int> const index = locate(query.x, query.y);
        bool expected = true;
        if (index) {
          std::uint32_t const pixel = pixels[static_cast<std::size_t>(*index)];
          expected = Ground(pixel);
          if (!Indestructible(pixel)) {
            for (int earlier = std::max(0, update - work.delay); earlier < update; ++earlier) {
              for (bool adds : {true, false}) {
                for (Change const& change : own[static_cast<std::size_t>(earlier)].changes) {
                  if (change.add == adds && locate(change.x, change.y) == index) {
                    expected = adds;
                  }
                }
              }
            }
          }
        }
        if (query.answer != expected) {
          return "player " + std::to_string(player) + " update " + std::to_string(update) + " saw " +
                 (query.answer ? "ground" : "nothing") + " at (" + std::to_string(query.x) + ", " +
                 std::to_string(query.y) + ")";
        }
      }
    }
  }
  return std::nullopt;
}

}  // namespace testing_support
