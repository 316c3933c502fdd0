#pragma once

#include <cstdint>

// A point of the world: x to the right, y upward, (0, 0) at the bottom left of the world.
struct Position {
  std::int32_t x = 0;
  std::int32_t y = 0;

  friend bool operator==(Position const&, Position const&) = default;
};
