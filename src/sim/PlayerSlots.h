#pragma once

#include <array>

// The four player slots of the program, with their colours and names.
struct PlayerSlot {
  float red;
  float green;
  float blue;
  char const* name;
};

inline constexpr std::array<PlayerSlot, 4> SLOTS{{
    {0.0f, 1.0f, 0.5f, "green"},
    {0.0f, 0.5f, 1.0f, "blue"},
    {0.9f, 0.87f, 0.27f, "yellow"},
    {0.61f, 0.24f, 0.58f, "purple"},
}};
