#include <gtest/gtest.h>

#include <stdexcept>

#include "TextTemplate.h"

namespace VELMAR::Express {
namespace {

TEST(Fill, PutsTextsIntoHoles) { EXPECT_EQ(Fill("$a$-$b$$a$", {{"a", "1"}, {"b", "2"}}), "1-21"); }

TEST(Fill, LeavesOutOneLineFeedAtTheBeginning) {
  EXPECT_EQ(Fill("\nx", {}), "x");
  EXPECT_EQ(Fill("\n\nx", {}), "\nx");
}

TEST(Fill, EmptyHoleAloneOnItsLineTakesTheLineWithIt) {
  EXPECT_EQ(Fill("a\n$x$\nb", {{"x", ""}}), "a\nb");
  EXPECT_EQ(Fill("a\n$x$;\nb", {{"x", ""}}), "a\n;\nb");
  EXPECT_EQ(Fill("a $x$\nb", {{"x", ""}}), "a \nb");
}

TEST(Fill, TextThatEndsItsLineNeedsNoSecondLineEnd) {
  EXPECT_EQ(Fill("a\n$x$\nb", {{"x", "1\n2\n"}}), "a\n1\n2\nb");
}

TEST(Fill, FilledTextIsNotSearchedForHoles) { EXPECT_EQ(Fill("$a$", {{"a", "$b$"}}), "$b$"); }

TEST(Fill, UnknownHoleAndSingleDollarThrow) {
  EXPECT_THROW(Fill("$b$", {{"a", "1"}}), std::logic_error);
  EXPECT_THROW(Fill("a$", {}), std::logic_error);
}

}  // namespace
}  // namespace VELMAR::Express
