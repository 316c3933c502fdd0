#include <gtest/gtest.h>

#include "sim/ResultConsensus.h"

TEST(AgreedResultBytes, EmptyReportsDontCountAndAnyDifferenceMeansNoAgreement) {
  GameResults results;
  EXPECT_FALSE(AgreedResultBytes(results).has_value());
  results.reportedResults = {{}, {}};
  EXPECT_FALSE(AgreedResultBytes(results).has_value());

  results.reportedResults = {{}, {1, 2, 3}, {}, {1, 2, 3}};
  EXPECT_EQ(AgreedResultBytes(results), (std::vector<unsigned char>{1, 2, 3}));

  results.reportedResults = {{1, 2, 3}, {1, 2, 3, 0}};  // a longer report differs too
  EXPECT_FALSE(AgreedResultBytes(results).has_value());
  results.reportedResults = {{1, 2, 3}, {1, 2, 4}, {1, 2, 3}};
  EXPECT_FALSE(AgreedResultBytes(results).has_value());
}
