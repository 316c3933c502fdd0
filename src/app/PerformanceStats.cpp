#include "app/PerformanceStats.h"

#include "app/FrameRateLimiter.h"

void PerformanceStats::endSection(char const* name, FrameRateLimiter const& limiter) {
  double const fraction = (static_cast<double>(limiter.now() - limiter.frameStart) / 1e9) / limiter.frameInterval;
  double const value = fraction - lastFraction;
  lastFraction = fraction;
  addOrUpdate(name, value);
}

void PerformanceStats::addOrUpdate(char const* name, double value) {
  std::deque<double>& values = sections[name];
  if (values.empty()) {
    values.assign(kWindow, 0.0);
  }
  values.push_back(value);
}

void PerformanceStats::nextFrame() {
  for (auto& [name, values] : sections) {
    if (values.size() == kWindow) {
      values.push_back(0.0);
    }
    values.pop_front();
  }
  lastFraction = 0.0;
}
