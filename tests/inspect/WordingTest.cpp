#include <gtest/gtest.h>

#include "Wording.h"

namespace velmar {
namespace {

TEST(Grouped, PutsACommaBeforeEveryThirdDigit) {
  EXPECT_EQ(Grouped(0), "0");
  EXPECT_EQ(Grouped(999), "999");
  EXPECT_EQ(Grouped(1000), "1,000");
  EXPECT_EQ(Grouped(123456), "123,456");
  EXPECT_EQ(Grouped(1234567), "1,234,567");
}

TEST(Counted, OneIsSingular) {
  EXPECT_EQ(Counted(0, "type"), "0 types");
  EXPECT_EQ(Counted(1, "type"), "1 type");
  EXPECT_EQ(Counted(2000, "type"), "2,000 types");
}

TEST(Printable, ControlCharactersBecomeBlanks) {
  EXPECT_EQ(Printable("a\tb\x1B[31m\x7F\xC3\xA4"), "a b [31m \xC3\xA4");
  EXPECT_EQ(Printable("\xC2\x9B[31m\xC2\xA0\xC2"), " [31m\xC2\xA0\xC2");
}

}  // namespace
}  // namespace velmar
