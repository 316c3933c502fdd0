#pragma once

#include <deque>
#include <string>
#include <unordered_map>

class FrameRateLimiter;

// The share of a frame interval that each named section of the frame took, over the last 50 frames.
// Sections form a chain: each is charged with the time since the previous one ended.
class PerformanceStats {
public:
  static constexpr std::size_t kWindow = 50;

  // Charges the time since the previous section (or the frame's start) to this section.
  void endSection(char const* name, FrameRateLimiter const& limiter);
  // Appends one value, creating the section with a window of zeros if it is new.
  void addOrUpdate(char const* name, double value);
  // Moves every window on by one frame; a section that didn't end in the last frame counts 0 for it.
  void nextFrame();

  std::unordered_map<std::string, std::deque<double>> sections;
  double lastFraction = 0.0;
};
