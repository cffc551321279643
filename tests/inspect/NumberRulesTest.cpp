// Real numbers that do not fit 64 bits.
#include <gtest/gtest.h>

#include <string>

#include "NumberRules.h"

namespace velmar {
namespace {

TEST(BeyondRange, IsWhatBecomesInfinite) {
  EXPECT_EQ(BeyondRange("1.7E308"), "");
  EXPECT_EQ(BeyondRange("1.8E308"), "infinite");
  EXPECT_EQ(BeyondRange("-1.E400"), "infinite");
  EXPECT_EQ(BeyondRange(std::string(309, '9') + "."), "infinite");
  EXPECT_EQ(BeyondRange(std::string(308, '9') + "."), "");
}

TEST(BeyondRange, IsWhatBecomesZeroAndIsNot) {
  EXPECT_EQ(BeyondRange("5.E-324"), "");
  EXPECT_EQ(BeyondRange("1.E-400"), "0");
  EXPECT_EQ(BeyondRange("0.E-400"), "");
  EXPECT_EQ(BeyondRange("0." + std::string(400, '0') + "1"), "0");
  EXPECT_EQ(BeyondRange("0." + std::string(400, '0')), "");
}

}  // namespace
}  // namespace velmar
