#include <gtest/gtest.h>

#include "ui/VersionString.h"

TEST(VersionString, ReadsTheVersionConstantAndKeepsTheFirstText) {
  EXPECT_EQ(VersionString(1003), "0.1.3");
  // Built once: a later call with another number returns the same text.
  EXPECT_EQ(&VersionString(2004005), &VersionString(1003));
  EXPECT_EQ(VersionString(2004005), "0.1.3");
}
