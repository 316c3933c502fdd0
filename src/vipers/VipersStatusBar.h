#pragma once

#include <vector>

// The bar at the top of the screen that compares the tails: one coloured bar per player, longest first,
// its width the tail's length in world pixels, scaled down together when they would fill more than 70%
// of the screen; under it the local player's own length.
struct VipersStatusBarLayout {
  struct Bar {
    int player = 0;
    float width = 0.0f;  // screen pixels
  };
  std::vector<Bar> bars;  // longest first; empty with fewer than two players
  float totalWidth = 0.0f;  // the bars and the 2-pixel gaps between them
};

inline constexpr float k_statusBarHeight = 14.0f;
inline constexpr float k_statusBarGap = 2.0f;

VipersStatusBarLayout LayOutVipersStatusBar(std::vector<int> const& lengths, float screenWidth);

void VipersStatusBar(std::vector<unsigned short> const& slots, std::vector<int> const& lengths,
                     std::vector<bool> const& alive, int localPlayer);
