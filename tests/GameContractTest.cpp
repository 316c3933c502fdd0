#include <gtest/gtest.h>

#include "GameResult.h"
#include "GameSettings.h"
#include "Games.h"

TEST(CompareResultRows, FirstValueCountsFirstAsSigned64) {
  EXPECT_GT(CompareResultRows({2, -500}, {1, 0}), 0);
  EXPECT_LT(CompareResultRows({-1}, {0}), 0);
  EXPECT_GT(CompareResultRows({1, -100}, {1, -200}), 0);
  EXPECT_EQ(CompareResultRows({3, 4}, {3, 4}), 0);
  EXPECT_LT(CompareResultRows({INT64_MIN}, {INT64_MAX}), 0);
}

TEST(CompareResultRows, LongerRowWinsOnCommonPrefix) {
  EXPECT_GT(CompareResultRows({1, 2, 0}, {1, 2}), 0);
  EXPECT_LT(CompareResultRows({}, {-5}), 0);
  EXPECT_EQ(CompareResultRows({}, {}), 0);
}

TEST(DefaultSettingsFromSchema, EmptySchemaGivesEmptyMaps) {
  GameSettings const settings = DefaultSettingsFromSchema({});
  EXPECT_TRUE(settings.strings.empty());
  EXPECT_TRUE(settings.ints.empty());
}
