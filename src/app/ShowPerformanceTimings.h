#pragma once

#include <deque>
#include <string>
#include <unordered_map>

// The small timings window in the top left corner: collapsed to a title at start, and when expanded a
// table of each section's mean and largest share of a frame over the last frames.
void ShowPerformanceTimings(std::unordered_map<std::string, std::deque<double>> const& sections);
