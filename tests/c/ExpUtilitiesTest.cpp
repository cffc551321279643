#include <gtest/gtest.h>

#include <exception>
#include <memory>
#include <string>
#include <type_traits>

#include "ExpUtilities.h"

#include "TestEntities.h"

namespace VELMAR {
namespace {

TEST(ReplaceString, ReplacesEveryOccurrence) { EXPECT_EQ(ReplaceString("a\\b\\c", "\\", "/"), "a/b/c"); }

TEST(ReplaceString, GoesLeftToRightWithoutOverlaps) {
  EXPECT_EQ(ReplaceString("aaa", "aa", "b"), "ba");
  EXPECT_EQ(ReplaceString("aaaa", "aa", "b"), "bb");
}

TEST(ReplaceString, DoesNotLookIntoWhatItPutIn) {
  EXPECT_EQ(ReplaceString("aba", "a", "aa"), "aabaa");
  EXPECT_EQ(ReplaceString("aab", "ab", "b"), "ab");
}

TEST(ReplaceString, ReplacesAtBothEndsAndTheWholeText) {
  EXPECT_EQ(ReplaceString("xaxbx", "x", "--"), "--a--b--");
  EXPECT_EQ(ReplaceString("abc", "abc", "z"), "z");
}

TEST(ReplaceString, RemovesWithAnEmptyReplacement) { EXPECT_EQ(ReplaceString("a-b-c-", "-", ""), "abc"); }

TEST(ReplaceString, LeavesTheTextWhenThereIsNothingToReplace) {
  EXPECT_EQ(ReplaceString("abc", "d", "e"), "abc");
  EXPECT_EQ(ReplaceString("abc", "abcd", "e"), "abc");
  EXPECT_EQ(ReplaceString("", "a", "b"), "");
}

TEST(ReplaceString, EmptySearchTextLeavesTheTextUnchanged) {
  EXPECT_EQ(ReplaceString("abc", "", "x"), "abc");
  EXPECT_EQ(ReplaceString("", "", "x"), "");
}

TEST(ReplaceString, WorksThroughNulBytes) {
  EXPECT_EQ(ReplaceString(std::string("a\0b\0c", 5), std::string(1, '\0'), "."), "a.b.c");
}

TEST(ReplaceString, LeavesItsArgumentsAlone) {
  const std::string text = "a.b";
  EXPECT_EQ(ReplaceString(text, ".", ","), "a,b");
  EXPECT_EQ(text, "a.b");
}

TEST(ToUpperString, ChangesTheAsciiLettersOnly) {
  EXPECT_EQ(ToUpperString("cartesian_point_2D"), "CARTESIAN_POINT_2D");
  EXPECT_EQ(ToUpperString(u8"l\u00E4nge \u00DF"), u8"L\u00E4NGE \u00DF");
  EXPECT_EQ(ToUpperString(""), "");
}

TEST(ToLowerString, ChangesTheAsciiLettersOnly) {
  EXPECT_EQ(ToLowerString("CARTESIAN_POINT_2d"), "cartesian_point_2d");
  EXPECT_EQ(ToLowerString(u8"L\u00C4NGE"), u8"l\u00C4nge");
  EXPECT_EQ(ToLowerString(""), "");
}

TEST(ToUpperString, EveryByteIsMappedAsInTheClassicLocale) {
  for (int byte = 0; byte < 256; ++byte) {
    const int expected = byte >= 'a' && byte <= 'z' ? byte - 32 : byte;
    EXPECT_EQ(ToUpperString(std::string(1, static_cast<char>(byte))),
              std::string(1, static_cast<char>(expected)))
        << byte;
  }
}

TEST(ToLowerString, EveryByteIsMappedAsInTheClassicLocale) {
  for (int byte = 0; byte < 256; ++byte) {
    const int expected = byte >= 'A' && byte <= 'Z' ? byte + 32 : byte;
    EXPECT_EQ(ToLowerString(std::string(1, static_cast<char>(byte))),
              std::string(1, static_cast<char>(expected)))
        << byte;
  }
}

TEST(DescriptiveException, WhatReturnsTheMessage) {
  const ::descriptive_exception exception("Unknown schema");
  EXPECT_STREQ(exception.what(), "Unknown schema");
  EXPECT_STREQ(::descriptive_exception(std::string()).what(), "");
}

TEST(DescriptiveException, IsCaughtAsAStandardException) {
  static_assert(std::is_base_of_v<std::exception, ::descriptive_exception>);
  try {
    throw ::descriptive_exception("what went wrong");
  } catch (const std::exception& exception) {
    EXPECT_STREQ(exception.what(), "what went wrong");
  }
}

TEST(DescriptiveException, ACopyKeepsTheMessageOfItsOwn) {
  auto original = std::make_unique<::descriptive_exception>("a message that is too long to be kept in place");
  const ::descriptive_exception copy(*original);
  original.reset();
  EXPECT_STREQ(copy.what(), "a message that is too long to be kept in place");
}

// ----------------------------------------------------------------------------------------- MarkUnsetValues

using TestData::AllKinds;
using TestData::Make;

TEST(MarkUnsetValues, MarksWhatHasNoPart21Form) {
  const auto entity = Make<AllKinds>();
  EXPECT_EQ(MarkUnsetValues(*entity), 5);
  EXPECT_EQ(entity->ToString(), "ALL_KINDS(0., 0, '', $, (), $, $, $, $);");
}

TEST(MarkUnsetValues, LeavesValuesAndMarksAlone) {
  const auto entity = Make<AllKinds>();
  entity->link.SetExpLink(7);
  entity->colour.SetExpEnumeration("RED");
  entity->logical.SetOmitted(true);
  entity->boolean.SetAsBool(true);
  entity->choice.SetExpReal(1);
  EXPECT_EQ(MarkUnsetValues(*entity), 0);
  EXPECT_EQ(entity->ToString(), "ALL_KINDS(0., 0, '', #7, (), .RED., *, .T., 1.);");
}

TEST(MarkUnsetValues, ReachesTheElementsOfAggregates) {
  const auto entity = Make<AllKinds>();
  auto* select = new ExpSelect;
  select->AddExpSelectTypeName("LABEL");
  auto* inner = new ExpAggregation;
  inner->AddValue(select);
  inner->AddValue(nullptr);
  entity->list.AddValue(inner);
  entity->choice.AddValue(new ExpLink);
  EXPECT_EQ(MarkUnsetValues(*entity), 6);
  EXPECT_EQ(entity->ToString(), "ALL_KINDS(0., 0, '', $, (($, $)), $, $, $, ($));");
}

TEST(MarkUnsetValues, OfAComplexInstanceMarksTheOwnValuesOfItsParts) {
  const auto top = Make<TestData::Top>();
  const auto left = Make<TestData::Left>();
  ExpExternalMappingEntity complex;
  complex.AddEntity(top.get());
  complex.AddEntity(left.get());
  EXPECT_EQ(MarkUnsetValues(complex), 1);
  EXPECT_EQ(complex.ToString(), "(\n   LEFT ($)\n   TOP (0, ())\n);");
}

}  // namespace
}  // namespace VELMAR
