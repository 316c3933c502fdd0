#include <gtest/gtest.h>

#include <cstdint>
#include <numeric>

#include "app/FrameRateLimiter.h"
#include "app/PerformanceStats.h"

namespace {

double Mean(std::deque<double> const& values) {
  return std::accumulate(values.begin(), values.end(), 0.0) / static_cast<double>(values.size());
}

}  // namespace

TEST(PerformanceStats, SectionsAreChargedWithTheTimeSinceThePreviousOne) {
  std::int64_t now = 0;
  FrameRateLimiter limiter([&now] { return now; }, [](std::uint32_t) {});
  PerformanceStats stats;

  now = 1000000000 / 60 / 4;  // a quarter of the frame
  stats.endSection("events", limiter);
  now = 1000000000 / 60 * 3 / 4;  // then half a frame more
  stats.endSection("rendering", limiter);

  ASSERT_EQ(stats.sections.at("events").size(), 51u);
  EXPECT_NEAR(stats.sections.at("events").back(), 0.25, 1e-6);
  EXPECT_NEAR(stats.sections.at("rendering").back(), 0.5, 1e-6);
  EXPECT_NEAR(stats.lastFraction, 0.75, 1e-6);

  // The next frame's chain starts again from its start.
  stats.nextFrame();
  EXPECT_EQ(stats.lastFraction, 0.0);
  limiter.frameStart = now;
  now += 1000000000 / 60 / 10;
  stats.endSection("events", limiter);
  EXPECT_NEAR(stats.sections.at("events").back(), 0.1, 1e-6);
}

TEST(PerformanceStats, KeepsTheLastFiftyFramesWithMissingFramesAsZero) {
  PerformanceStats stats;
  stats.addOrUpdate("simulation", 1.0);
  stats.nextFrame();
  std::deque<double> const& values = stats.sections.at("simulation");
  // The first frame of a section: 49 zeros and the value.
  ASSERT_EQ(values.size(), 50u);
  EXPECT_DOUBLE_EQ(Mean(values), 1.0 / 50.0);

  for (int frame = 1; frame < 50; ++frame) {
    stats.addOrUpdate("simulation", 1.0);
    stats.nextFrame();
  }
  EXPECT_EQ(values.size(), 50u);
  EXPECT_DOUBLE_EQ(Mean(values), 1.0);

  // A frame in which the section didn't end counts as 0 for it.
  stats.nextFrame();
  EXPECT_EQ(values.size(), 50u);
  EXPECT_EQ(values.back(), 0.0);
  EXPECT_DOUBLE_EQ(Mean(values), 49.0 / 50.0);

  // Fifty frames later the section's own values have all slid out.
  for (int frame = 0; frame < 50; ++frame) {
    stats.nextFrame();
  }
  EXPECT_DOUBLE_EQ(Mean(values), 0.0);
}

TEST(PerformanceStats, ASectionEndingTwiceInAFrameKeepsBothValues) {
  PerformanceStats stats;
  stats.addOrUpdate("simulation", 0.5);
  stats.addOrUpdate("simulation", 0.25);
  stats.nextFrame();
  std::deque<double> const& values = stats.sections.at("simulation");
  EXPECT_EQ(values.size(), 51u);
  EXPECT_EQ(values[49], 0.5);
  EXPECT_EQ(values[50], 0.25);
}
