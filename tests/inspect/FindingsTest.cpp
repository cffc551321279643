#include <gtest/gtest.h>

#include <string>

#include "Findings.h"

namespace velmar {
namespace {

TEST(Findings, OfAPlaceComeInTheOrderOfPlacesAndThenAsTheyWereAdded) {
  Findings findings("f");
  findings.Add(Code::kSyntax, {2, 1}, "b");
  findings.Add(Code::kSyntax, {1, 9}, "a");
  findings.Add(Code::kSyntax, {2, 1}, "c");
  findings.Add(Code::kGivenUp, "whole");
  findings.Sort();
  std::string texts;
  for (const Finding& finding : findings.WithPlace()) texts += finding.text;
  EXPECT_EQ(texts, "abc");
  ASSERT_EQ(findings.WithoutPlace().size(), 1u);
  EXPECT_EQ(findings.WithoutPlace()[0].text, "whole");
}

TEST(Findings, TakeTheirSeverityFromTheCatalogueAndWarningsAreNoErrors) {
  Findings findings("f");
  EXPECT_TRUE(findings.IsEmpty());
  findings.Add(Code::kScope, {1, 1}, "");
  EXPECT_EQ(findings.Errors(), 0u);
  EXPECT_EQ(findings.WithPlace()[0].severity, Severity::kWarning);
  findings.Add(Code::kSyntax, {1, 1}, "");
  EXPECT_EQ(findings.Errors(), 1u);
  EXPECT_FALSE(findings.IsEmpty());
}

TEST(Findings, BeyondTheLimitAreCounted) {
  Findings findings("f");
  for (std::size_t i = 0; i < Findings::kKept + 2; ++i) findings.Add(Code::kSyntax, {1, 1}, "");
  EXPECT_EQ(findings.WithPlace().size(), Findings::kKept);
  EXPECT_EQ(findings.NotKept(), 2u);
  EXPECT_EQ(findings.Errors(), Findings::kKept + 2);
}

}  // namespace
}  // namespace velmar
