// The wide-string functions of the scanner.
#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "Scanner.h"

namespace {

// Takes over what a create function returned.
std::wstring Taken(wchar_t* text) {
  EXPECT_NE(text, nullptr);
  if (text == nullptr) return L"(null)";
  const std::wstring copy(text);
  coco_string_delete(text);
  EXPECT_EQ(text, nullptr);
  return copy;
}

const wchar_t* const kNull = nullptr;

TEST(CocoString, CreateCopiesTheText) {
  const wchar_t* original = L"a\u00E9\u4E00z";
  wchar_t* copy = coco_string_create(original);
  EXPECT_NE(copy, original);
  EXPECT_EQ(Taken(copy), original);
  EXPECT_EQ(Taken(coco_string_create(L"")), L"");
}

TEST(CocoString, CreateOfNullIsNull) {
  EXPECT_EQ(coco_string_create(kNull), nullptr);
  EXPECT_EQ(coco_string_create(kNull, 0, 0), nullptr);
  EXPECT_EQ(coco_string_create_upper(kNull), nullptr);
  EXPECT_EQ(coco_string_create_lower(kNull), nullptr);
  EXPECT_EQ(coco_string_create_lower(kNull, 0, 0), nullptr);
  EXPECT_EQ(coco_string_create(static_cast<const char*>(nullptr)), nullptr);
  EXPECT_EQ(coco_string_create_char(kNull), nullptr);
}

TEST(CocoString, CreateOfAPartCopiesLengthCharactersFromTheIndex) {
  EXPECT_EQ(Taken(coco_string_create(L"abcdef", 0, 6)), L"abcdef");
  EXPECT_EQ(Taken(coco_string_create(L"abcdef", 2, 3)), L"cde");
  EXPECT_EQ(Taken(coco_string_create(L"abcdef", 5, 1)), L"f");
  EXPECT_EQ(Taken(coco_string_create(L"abcdef", 6, 0)), L"");
}

TEST(CocoString, CreateUpperChangesOnlyTheLettersAToZ) {
  EXPECT_EQ(Taken(coco_string_create_upper(L"`azAZ{09_\u00E9\u03B1")), L"`AZAZ{09_\u00E9\u03B1");
}

TEST(CocoString, CreateLowerChangesOnlyTheLettersAToZ) {
  EXPECT_EQ(Taken(coco_string_create_lower(L"@AZaz[09_\u00C9\u0391")), L"@azaz[09_\u00C9\u0391");
}

TEST(CocoString, CreateLowerOfAPart) {
  EXPECT_EQ(Taken(coco_string_create_lower(L"ABCDEF", 1, 3)), L"bcd");
  EXPECT_EQ(Taken(coco_string_create_lower(L"ABCDEF", 6, 0)), L"");
}

TEST(CocoString, CreateAppendConcatenates) {
  EXPECT_EQ(Taken(coco_string_create_append(L"ab", L"cd")), L"abcd");
  EXPECT_EQ(Taken(coco_string_create_append(L"", L"cd")), L"cd");
  EXPECT_EQ(Taken(coco_string_create_append(L"ab", L"")), L"ab");
}

TEST(CocoString, CreateAppendAddsOneCharacter) {
  EXPECT_EQ(Taken(coco_string_create_append(L"ab", L'c')), L"abc");
  EXPECT_EQ(Taken(coco_string_create_append(L"", L'\u4E00')), L"\u4E00");
}

TEST(CocoString, DeleteSetsThePointerToNull) {
  wchar_t* wide = coco_string_create(L"a");
  coco_string_delete(wide);
  EXPECT_EQ(wide, nullptr);
  coco_string_delete(wide);
  EXPECT_EQ(wide, nullptr);
  char* narrow = coco_string_create_char(L"a");
  coco_string_delete(narrow);
  EXPECT_EQ(narrow, nullptr);
  coco_string_delete(narrow);
  EXPECT_EQ(narrow, nullptr);
}

TEST(CocoString, LengthIsZeroForNull) {
  EXPECT_EQ(coco_string_length(kNull), 0);
  EXPECT_EQ(coco_string_length(L""), 0);
  EXPECT_EQ(coco_string_length(L"abc"), 3);
}

TEST(CocoString, EndswithTestsTheSuffix) {
  EXPECT_TRUE(coco_string_endswith(L"part.stp", L".stp"));
  EXPECT_TRUE(coco_string_endswith(L"part.stp", L"part.stp"));
  EXPECT_TRUE(coco_string_endswith(L"part.stp", L""));
  EXPECT_FALSE(coco_string_endswith(L"part.stp", L".STP"));
  EXPECT_FALSE(coco_string_endswith(L"part.stp", L".st"));
  EXPECT_FALSE(coco_string_endswith(L"stp", L".stp"));
}

TEST(CocoString, IndexofIsTheFirstIndexOrMinusOne) {
  EXPECT_EQ(coco_string_indexof(L"abcabc", L'a'), 0);
  EXPECT_EQ(coco_string_indexof(L"abcabc", L'c'), 2);
  EXPECT_EQ(coco_string_indexof(L"abcabc", L'd'), -1);
  EXPECT_EQ(coco_string_indexof(L"", L'a'), -1);
}

TEST(CocoString, LastindexofIsTheLastIndexOrMinusOne) {
  EXPECT_EQ(coco_string_lastindexof(L"abcabc", L'a'), 3);
  EXPECT_EQ(coco_string_lastindexof(L"abcabc", L'c'), 5);
  EXPECT_EQ(coco_string_lastindexof(L"a", L'a'), 0);
  EXPECT_EQ(coco_string_lastindexof(L"abcabc", L'd'), -1);
  EXPECT_EQ(coco_string_lastindexof(L"", L'a'), -1);
}

TEST(CocoString, MergeReplacesTheFirstByTheConcatenation) {
  wchar_t* text = coco_string_create(L"ab");
  coco_string_merge(text, L"cd");
  EXPECT_STREQ(text, L"abcd");
  coco_string_merge(text, L"");
  EXPECT_STREQ(text, L"abcd");
  coco_string_delete(text);
}

TEST(CocoString, EqualComparesWholeTextsWithTheirCase) {
  EXPECT_TRUE(coco_string_equal(L"abc", L"abc"));
  EXPECT_TRUE(coco_string_equal(L"", L""));
  EXPECT_FALSE(coco_string_equal(L"abc", L"abC"));
  EXPECT_FALSE(coco_string_equal(L"abc", L"ab"));
}

TEST(CocoString, ComparetoOrdersAsWcscmp) {
  EXPECT_EQ(coco_string_compareto(L"abc", L"abc"), 0);
  EXPECT_LT(coco_string_compareto(L"abc", L"abd"), 0);
  EXPECT_GT(coco_string_compareto(L"abd", L"abc"), 0);
  EXPECT_LT(coco_string_compareto(L"ab", L"abc"), 0);
  EXPECT_GT(coco_string_compareto(L"b", L"abc"), 0);
}

TEST(CocoString, HashMultipliesBySevenAndXorsEachCharacter) {
  EXPECT_EQ(coco_string_hash(L""), 0);
  EXPECT_EQ(coco_string_hash(L"A"), 65);
  EXPECT_EQ(coco_string_hash(L"AB"), 389);  // 65 * 7 = 455 = 1C7h, xor 42h = 185h
}

TEST(CocoString, HashIsTakenIn32BitsAndMadeNonNegative) {
  bool sawNegative = false;
  std::wstring text;
  for (int i = 0; i < 200; ++i) {
    text += static_cast<wchar_t>(L'A' + i * 7 % 26);
    std::uint32_t bits = 0;
    for (wchar_t c : text) bits = bits * 7u ^ static_cast<std::uint32_t>(c);
    const auto hash = static_cast<std::int32_t>(bits);
    sawNegative = sawNegative || hash < 0;
    ASSERT_EQ(coco_string_hash(text.c_str()), hash < 0 ? -hash : hash) << i;
  }
  EXPECT_TRUE(sawNegative);
}

TEST(CocoString, CreateFromBytesWidensEachByteUnsigned) {
  EXPECT_EQ(Taken(coco_string_create("aZ\x7F\x80\xE9\xFF")),
            (std::wstring{L'a', L'Z', 0x7F, 0x80, 0xE9, 0xFF}));
  EXPECT_EQ(Taken(coco_string_create("")), L"");
}

TEST(CocoString, CreateCharNarrowsEachCharacterToItsLowByte) {
  char* narrow = coco_string_create_char(L"aZ\u00E9\u0141\u4E5A\U0001F642");
  EXPECT_STREQ(narrow, "aZ\xE9\x41\x5A\x42");
  coco_string_delete(narrow);
}

}  // namespace
