// The string encoding of Part 21 files: ISO 10303-21 control directives, UTF-8 and the parts of ISO 8859.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <iconv.h>

#include <cerrno>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "ExpUtilities.h"
#include "StepStrings.h"

namespace VELMAR {
namespace {

using namespace std::string_literals;

/// The std::string that `action` throws; a failure when it throws none.
template <class Action>
std::string ThrownBy(Action action) {
  try {
    action();
  } catch (const std::string& text) {
    return text;
  }
  ADD_FAILURE() << "nothing was thrown";
  return {};
}

// ---------------------------------------------------------------------------------------------------- Code
// pages

struct Page {
  int part;
  const unsigned int* table;
};

void PrintTo(const Page& page, std::ostream* os) { *os << "ISO 8859-" << page.part; }

constexpr Page kPages[] = {
    {2, page2}, {3, page3},   {4, page4},   {5, page5},   {6, page6},   {7, page7},   {8, page8},
    {9, page9}, {10, page10}, {11, page11}, {13, page13}, {14, page14}, {15, page15}, {16, page16},
};

/// The system's own conversion of one byte of ISO 8859-`part`; 0 where it knows none.
class SystemConversion {
 public:
  explicit SystemConversion(int part)
      : descriptor_(iconv_open("UTF-32LE", ("ISO-8859-" + std::to_string(part)).c_str())) {}
  ~SystemConversion() {
    if (IsOpen()) iconv_close(descriptor_);
  }
  SystemConversion(const SystemConversion&) = delete;
  SystemConversion& operator=(const SystemConversion&) = delete;

  bool IsOpen() const { return descriptor_ != reinterpret_cast<iconv_t>(-1); }

  std::uint32_t operator()(unsigned char byte) {
    char in = static_cast<char>(byte);
    unsigned char out[8] = {};
    char* inPosition = &in;
    char* outPosition = reinterpret_cast<char*>(out);
    std::size_t inLeft = 1;
    std::size_t outLeft = sizeof out;
    iconv(descriptor_, nullptr, nullptr, nullptr, nullptr);
    if (iconv(descriptor_, &inPosition, &inLeft, &outPosition, &outLeft) == static_cast<std::size_t>(-1)) {
      EXPECT_EQ(errno, EILSEQ);
      return 0;
    }
    EXPECT_EQ(outLeft, sizeof out - 4);
    return out[0] | out[1] << 8 | out[2] << 16 | static_cast<std::uint32_t>(out[3]) << 24;
  }

 private:
  iconv_t descriptor_;
};

class CodePage : public testing::TestWithParam<Page> {
 protected:
  void CompareWithSystem(int first, int last) {
    const auto [part, table] = GetParam();
    SystemConversion system(part);
    ASSERT_TRUE(system.IsOpen()) << "the system has no conversion for this part";
    for (int byte = first; byte <= last; ++byte) {
      // The edition of 1987 lacks the euro sign, the drachma sign and the ypogegrammeni.
      const bool added = part == 7 && (byte == 0xA4 || byte == 0xA5 || byte == 0xAA);
      EXPECT_EQ(table[byte], added ? 0u : system(static_cast<unsigned char>(byte))) << std::hex << byte;
    }
  }
};

TEST_P(CodePage, LowerHalfAgreesWithTheSystem) { CompareWithSystem(0x00, 0x7F); }

TEST_P(CodePage, UpperHalfAgreesWithTheSystem) { CompareWithSystem(0x80, 0xFF); }

TEST_P(CodePage, IsChosenByItsPartNumber) {
  const auto [part, table] = GetParam();
  for (int byte = 0; byte < 256; ++byte) {
    EXPECT_EQ(ISO8859ToUtf8(std::string(1, static_cast<char>(byte)), part), Utf8Encode(table[byte])) << byte;
  }
}

TEST_P(CodePage, IsChosenByTheAlphabetDirective) {
  const auto [part, table] = GetParam();
  const std::string alphabet = "\\P"s + static_cast<char>('A' - 1 + part) + "\\";
  for (int byte = 0xA0; byte < 256; ++byte) {
    const std::string text = alphabet + "\\S\\" + static_cast<char>(byte - 0x80);
    EXPECT_EQ(ConvertSTEPStringToUtf8(text), Utf8Encode(table[byte])) << text;
  }
}

INSTANTIATE_TEST_SUITE_P(AllParts, CodePage, testing::ValuesIn(kPages),
                         [](const auto& info) { return "Part" + std::to_string(info.param.part); });

TEST(CodePages, TheGreekPartIsTheEditionOf1987) {
  EXPECT_EQ(page7[0xA4], 0u);
  EXPECT_EQ(page7[0xA5], 0u);
  EXPECT_EQ(page7[0xAA], 0u);
  EXPECT_EQ(page7[0xA3], 0xA3u);
  EXPECT_EQ(page7[0xA6], 0xA6u);
}

TEST(CodePages, BytesThatAPartDoesNotAssignAreZero) {
  EXPECT_EQ(page3[0xA5], 0u);
  EXPECT_EQ(page6[0xA1], 0u);
  EXPECT_EQ(page8[0xFF], 0u);
  EXPECT_EQ(page11[0xDB], 0u);
}

TEST(ISO8859ToUtf8, PartOneIsTheIdentity) {
  for (int byte = 0; byte < 256; ++byte) {
    EXPECT_EQ(ISO8859ToUtf8(std::string(1, static_cast<char>(byte)), 1),
              Utf8Encode(static_cast<unsigned>(byte)));
  }
}

TEST(ISO8859ToUtf8, ConvertsEveryByteOfTheText) {
  EXPECT_EQ(ISO8859ToUtf8("M\xFCller", 1), u8"M\u00FCller");
  EXPECT_EQ(ISO8859ToUtf8("\xBF\xE0\xD8", 5), u8"\u041F\u0440\u0438");
  EXPECT_EQ(ISO8859ToUtf8("", 1), "");
  EXPECT_EQ(ISO8859ToUtf8("a\0b"s, 1), "a\0b"s);
}

TEST(ISO8859ToUtf8, AnUnassignedByteYieldsOneNul) {
  EXPECT_EQ(ISO8859ToUtf8("a\xA5"
                          "b",
                          3),
            "a\0b"s);
}

class PartWithoutTable : public testing::TestWithParam<int> {};

TEST_P(PartWithoutTable, EveryByteYieldsOneNul) {
  EXPECT_EQ(ISO8859ToUtf8("aB\xE4", GetParam()), std::string(3, '\0'));
}

INSTANTIATE_TEST_SUITE_P(NoSuchPart, PartWithoutTable,
                         testing::Values(-2147483647 - 1, -1, 0, 12, 17, 2147483647));

// ---------------------------------------------------------------------------------------------------------
// UTF-8

struct Encoding {
  unsigned int codepoint;
  std::string text;
};

void PrintTo(const Encoding& encoding, std::ostream* os) {
  *os << std::hex << encoding.codepoint << " as " << testing::PrintToString(encoding.text);
}

class Utf8Encoding : public testing::TestWithParam<Encoding> {};

TEST_P(Utf8Encoding, GivesTheBytesOfItsRange) {
  EXPECT_EQ(Utf8Encode(GetParam().codepoint), GetParam().text);
}

INSTANTIATE_TEST_SUITE_P(BothSidesOfEveryRange, Utf8Encoding,
                         testing::Values(Encoding{0x0, "\0"s}, Encoding{0x1, "\x01"}, Encoding{0x7F, "\x7F"},
                                         Encoding{0x80, "\xC2\x80"}, Encoding{0x7FF, "\xDF\xBF"},
                                         Encoding{0x800, "\xE0\xA0\x80"}, Encoding{0xD800, "\xED\xA0\x80"},
                                         Encoding{0xDFFF, "\xED\xBF\xBF"}, Encoding{0xFFFF, "\xEF\xBF\xBF"},
                                         Encoding{0x10000, "\xF0\x90\x80\x80"},
                                         Encoding{0x10FFFF, "\xF4\x8F\xBF\xBF"},
                                         Encoding{0x110000, "\xF4\x90\x80\x80"},
                                         Encoding{0x1FFFFF, "\xF7\xBF\xBF\xBF"}, Encoding{0x200000, ""},
                                         Encoding{0xFFFFFFFF, ""}));

TEST(NextIsContinuation, HoldsForTheBytes80ToBF) {
  for (int byte = 0; byte < 256; ++byte) {
    EXPECT_EQ(NextIsContinuation(static_cast<unsigned char>(byte)), byte >= 0x80 && byte <= 0xBF) << byte;
  }
}

TEST(GetNextContinuation, StepsOnAndFoldsSixBits) {
  unsigned int index = 0;
  unsigned int codepoint = 0x03;
  GetNextContinuation("\xC3\xA9", index, codepoint);
  EXPECT_EQ(index, 1u);
  EXPECT_EQ(codepoint, 0xE9u);
}

TEST(GetNextContinuation, ThrowsAtTheEndOfTheText) {
  unsigned int index = 2;
  unsigned int codepoint = 7;
  EXPECT_EQ(ThrownBy([&] { GetNextContinuation("ab\xE2", index, codepoint); }),
            "String ended in middle of utf8 character 'ab\xE2' - index: 3");
  EXPECT_EQ(index, 3u);
  EXPECT_EQ(codepoint, 7u);
}

TEST(GetNextContinuation, ThrowsForAByteThatIsNoContinuation) {
  unsigned int index = 0;
  unsigned int codepoint = 7;
  EXPECT_EQ(ThrownBy([&] { GetNextContinuation("\xC3z", index, codepoint); }),
            "Expected a utf8 continuation, did not get one '\xC3z' - index: 1 - character: z");
  EXPECT_EQ(index, 1u);
  EXPECT_EQ(codepoint, 7u);
}

TEST(GetNextContinuation, BothEndsOfTheContinuationBytesAreTaken) {
  for (const char byte : {'\x80', '\xBF'}) {
    unsigned int index = 0;
    unsigned int codepoint = 1;
    GetNextContinuation("x"s + byte, index, codepoint);
    EXPECT_EQ(codepoint, 0x40u + (static_cast<unsigned char>(byte) & 0x3F));
  }
  for (const char byte : {'\x7F', '\xC0', '\0'}) {
    unsigned int index = 0;
    unsigned int codepoint = 1;
    EXPECT_EQ(
        ThrownBy([&] { GetNextContinuation("x"s + byte, index, codepoint); }),
        "Expected a utf8 continuation, did not get one 'x"s + byte + "' - index: 1 - character: " + byte);
  }
}

struct Sequence {
  std::string bytes;
  unsigned int codepoint;
  unsigned int lastByte;
};

void PrintTo(const Sequence& sequence, std::ostream* os) { *os << testing::PrintToString(sequence.bytes); }

class Utf8Decoding : public testing::TestWithParam<Sequence> {};

TEST_P(Utf8Decoding, GivesTheCodepointAndStopsOnTheLastByte) {
  const std::string before = "ab";
  unsigned int index = 2;
  EXPECT_EQ(GetNextUtf8Codepoint(before + GetParam().bytes + "z", index), GetParam().codepoint);
  EXPECT_EQ(index, 2 + GetParam().lastByte);
}

INSTANTIATE_TEST_SUITE_P(OneToFourBytes, Utf8Decoding,
                         testing::Values(Sequence{"\0"s, 0, 0}, Sequence{"A", 0x41, 0},
                                         Sequence{"\x7F", 0x7F, 0}, Sequence{"\xC2\x80", 0x80, 1},
                                         Sequence{"\xDF\xBF", 0x7FF, 1}, Sequence{"\xE0\xA0\x80", 0x800, 2},
                                         Sequence{"\xED\xA0\x80", 0xD800, 2},
                                         Sequence{"\xEF\xBF\xBF", 0xFFFF, 2},
                                         Sequence{"\xF0\x9F\x98\x80", 0x1F600, 3},
                                         Sequence{"\xF7\xBF\xBF\xBF", 0x1FFFFF, 3}));

INSTANTIATE_TEST_SUITE_P(OverlongForms, Utf8Decoding,
                         testing::Values(Sequence{"\xC0\x80", 0, 1}, Sequence{"\xC1\xA7", 0x67, 1},
                                         Sequence{"\xE0\x80\xA7", 0x27, 2},
                                         Sequence{"\xF0\x80\x80\xA7", 0x27, 3}));

INSTANTIATE_TEST_SUITE_P(BytesThatStartNoSequence, Utf8Decoding,
                         testing::Values(Sequence{"\x80", 0, 0}, Sequence{"\xBF", 0, 0},
                                         Sequence{"\xF8", 0, 0}, Sequence{"\xFF", 0, 0}));

class CutSequence : public testing::TestWithParam<std::string> {};

TEST_P(CutSequence, ThrowsWithTheLengthAsIndex) {
  for (std::size_t length = 1; length < GetParam().size(); ++length) {
    const std::string cut = GetParam().substr(0, length);
    unsigned int index = 0;
    EXPECT_EQ(ThrownBy([&] { GetNextUtf8Codepoint(cut, index); }),
              "String ended in middle of utf8 character '" + cut + "' - index: " + std::to_string(length));
    EXPECT_EQ(ThrownBy([&] { ConvertUtf8ToSTEPString(cut); }),
              "String ended in middle of utf8 character '" + cut + "' - index: " + std::to_string(length));
  }
}

TEST_P(CutSequence, ThrowsWithTheIndexOfTheByteThatIsNoContinuation) {
  for (std::size_t length = 1; length < GetParam().size(); ++length) {
    const std::string broken = GetParam().substr(0, length) + "xyzw";
    unsigned int index = 0;
    EXPECT_EQ(ThrownBy([&] { GetNextUtf8Codepoint(broken, index); }),
              "Expected a utf8 continuation, did not get one '" + broken +
                  "' - index: " + std::to_string(length) + " - character: x");
  }
}

INSTANTIATE_TEST_SUITE_P(TwoToFourBytes, CutSequence,
                         testing::Values("\xC3\xA9", "\xE2\x82\xAC", "\xF0\x9F\x98\x80"));

TEST(GetNextUtf8Codepoint, BehindTheTextThereIsNothing) {
  for (const unsigned int behind : {3u, 4u, 100u, 0xFFFFFFFFu}) {
    unsigned int index = behind;
    EXPECT_EQ(GetNextUtf8Codepoint("abc", index), 0u);
    EXPECT_EQ(index, behind);
  }
}

// ------------------------------------------------------------------------------------------------------
// Encoding

class CodepointToStep : public testing::TestWithParam<Encoding> {};

TEST_P(CodepointToStep, GivesTheFormOfItsRange) {
  EXPECT_EQ(ConvertUnicodeCodepointToSTEPEncoding(GetParam().codepoint), GetParam().text);
}

INSTANTIATE_TEST_SUITE_P(
    BothSidesOfEveryRange, CodepointToStep,
    testing::Values(Encoding{0x26, "&"}, Encoding{0x27, "''"}, Encoding{0x28, "("}, Encoding{0x5B, "["},
                    Encoding{0x5C, "\\\\"}, Encoding{0x5D, "]"}, Encoding{0x00, "\\X\\00"},
                    Encoding{0x09, "\\X\\09"}, Encoding{0x1F, "\\X\\1F"}, Encoding{0x20, " "},
                    Encoding{0x7E, "~"}, Encoding{0x7F, "\x7F"}, Encoding{0x80, "\\X\\80"},
                    Encoding{0xE9, "\\X\\E9"}, Encoding{0xFF, "\\X\\FF"}, Encoding{0x100, "\\X2\\0100\\X0\\"},
                    Encoding{0x3A9, "\\X2\\03A9\\X0\\"}, Encoding{0xFFFF, "\\X2\\FFFF\\X0\\"},
                    Encoding{0x10000, "\\X4\\00010000\\X0\\"}, Encoding{0x1F600, "\\X4\\0001F600\\X0\\"},
                    Encoding{0xFFFFFFFF, "\\X4\\FFFFFFFF\\X0\\"}));

struct Text {
  std::string in;
  std::string out;
};

void PrintTo(const Text& text, std::ostream* os) { *os << testing::PrintToString(text.in); }

class Utf8ToStep : public testing::TestWithParam<Text> {};

TEST_P(Utf8ToStep, GivesTheFileForm) { EXPECT_EQ(ConvertUtf8ToSTEPString(GetParam().in), GetParam().out); }

INSTANTIATE_TEST_SUITE_P(
    Texts, Utf8ToStep,
    testing::Values(Text{"", ""},
                    Text{"plain text, without anything (special) 0..9",
                         "plain text, without anything (special) 0..9"},
                    Text{"'\\A", "''\\\\A"}, Text{u8"\u00E9", "\\X\\E9"},
                    Text{u8"\u03A9", "\\X2\\03A9\\X0\\"}, Text{u8"\U0001F600", "\\X4\\0001F600\\X0\\"},
                    Text{"\t", "\\X\\09"}, Text{"\x7F", "\x7F"},
                    Text{u8"\u03B1\u03B2", "\\X2\\03B1\\X0\\\\X2\\03B2\\X0\\"},
                    Text{u8"\u03B1\u03B2\u03B3", "\\X2\\03B1\\X0\\\\X2\\03B2\\X0\\\\X2\\03B3\\X0\\"},
                    Text{"a\0b"s, "a\\X\\00b"}, Text{"line\r\nend", "line\\X\\0D\\X\\0Aend"},
                    Text{u8"Geh\u00E4use 'links' C:\\teile", "Geh\\X\\E4use ''links'' C:\\\\teile"}));

INSTANTIATE_TEST_SUITE_P(BytesThatStartNoSequence, Utf8ToStep,
                         testing::Values(Text{"\x80", "\\X\\00"}, Text{"\xFF\xFE", "\\X\\00\\X\\00"},
                                         Text{"a\x80"
                                              "b",
                                              "a\\X\\00b"},
                                         Text{"\xC3\xA9\xA9", "\\X\\E9\\X\\00"}));

TEST(ConvertUtf8ToSTEPString, ThrowsAtACutSequence) {
  EXPECT_EQ(ThrownBy([] { ConvertUtf8ToSTEPString("\xC3"); }),
            "String ended in middle of utf8 character '\xC3' - index: 1");
  EXPECT_EQ(ThrownBy([] { ConvertUtf8ToSTEPString("a text before \xE2\x82"); }),
            "String ended in middle of utf8 character 'a text before \xE2\x82' - index: 16");
}

TEST(ConvertUtf8ToSTEPString, ThrowsAtABrokenSequence) {
  EXPECT_EQ(ThrownBy([] { ConvertUtf8ToSTEPString("\xC3'"); }),
            "Expected a utf8 continuation, did not get one '\xC3'' - index: 1 - character: '");
  EXPECT_EQ(
      ThrownBy([] { ConvertUtf8ToSTEPString("ab\xE2\x82\xC3\xA9"); }),
      "Expected a utf8 continuation, did not get one 'ab\xE2\x82\xC3\xA9' - index: 4 - character: \xC3");
}

TEST(ConvertUtf8ToSTEPString, ThrownTextHasDigitsOnlyForAFarIndex) {
  const std::string text = std::string(12345, 'a') + "\xC3";
  EXPECT_THAT(ThrownBy([&] { ConvertUtf8ToSTEPString(text); }), testing::EndsWith("' - index: 12346"));
}

// ------------------------------------------------------------------------------------------- Pieces of
// directives

TEST(AddHexDigit, TakesDigitsOfBothCasesAndNothingElse) {
  const std::string digits = "0123456789abcdefABCDEF";
  for (int byte = 0; byte < 256; ++byte) {
    const char c = static_cast<char>(byte);
    const std::size_t position = digits.find(c);
    unsigned int value = 0x12;
    bool ok = position == std::string::npos;  // the opposite of what is to come
    AddHexDigit(c, value, ok);
    if (position == std::string::npos) {
      EXPECT_FALSE(ok) << byte;
      EXPECT_EQ(value, 0x12u) << byte;
    } else {
      EXPECT_TRUE(ok) << byte;
      EXPECT_EQ(value, 0x120u + (position < 16 ? position : position - 6)) << byte;
    }
  }
}

TEST(GetHexTwoCodePoint, ReadsFourDigitsAndMovesBehindThem) {
  unsigned int index = 1;
  unsigned int codepoint = 99;
  EXPECT_TRUE(GetHexTwoCodePoint("x03a9", index, codepoint));
  EXPECT_EQ(index, 5u);
  EXPECT_EQ(codepoint, 0x3A9u);
}

TEST(GetHexTwoCodePoint, FewerThanFourCharactersChangeNothing) {
  for (unsigned int start = 2; start < 8; ++start) {
    unsigned int index = start;
    unsigned int codepoint = 99;
    EXPECT_FALSE(GetHexTwoCodePoint("x03A9", index, codepoint));
    EXPECT_EQ(index, start);
    EXPECT_EQ(codepoint, 99u);
  }
}

TEST(GetHexTwoCodePoint, ACharacterThatIsNoDigitLeavesTheIndex) {
  for (unsigned int bad = 0; bad < 4; ++bad) {
    std::string text = "1111";
    text[bad] = 'G';
    unsigned int index = 0;
    unsigned int codepoint = 99;
    EXPECT_FALSE(GetHexTwoCodePoint(text, index, codepoint));
    EXPECT_EQ(index, 0u);
    EXPECT_EQ(codepoint, 0x1111u >> (4 * (4 - bad))) << "the digits before the bad one";
  }
}

TEST(GetHexFourCodePoint, ReadsEightDigitsAndMovesBehindThem) {
  unsigned int index = 1;
  unsigned int codepoint = 99;
  EXPECT_TRUE(GetHexFourCodePoint("x0001F6aF", index, codepoint));
  EXPECT_EQ(index, 9u);
  EXPECT_EQ(codepoint, 0x1F6AFu);
}

TEST(GetHexFourCodePoint, FewerThanEightCharactersChangeNothing) {
  for (unsigned int start = 2; start < 12; ++start) {
    unsigned int index = start;
    unsigned int codepoint = 99;
    EXPECT_FALSE(GetHexFourCodePoint("x0001F6AF", index, codepoint));
    EXPECT_EQ(index, start);
    EXPECT_EQ(codepoint, 99u);
  }
}

TEST(GetHexFourCodePoint, ACharacterThatIsNoDigitLeavesTheIndex) {
  for (unsigned int bad = 0; bad < 8; ++bad) {
    std::string text = "11111111";
    text[bad] = '\\';
    unsigned int index = 0;
    unsigned int codepoint = 99;
    EXPECT_FALSE(GetHexFourCodePoint(text, index, codepoint));
    EXPECT_EQ(index, 0u);
  }
}

TEST(GetHexCodePoint, AnIndexAtTheEndOfItsRangeDoesNotWrap) {
  unsigned int index = 0xFFFFFFFE;
  unsigned int codepoint = 99;
  EXPECT_FALSE(GetHexTwoCodePoint("0123456789", index, codepoint));
  EXPECT_FALSE(GetHexFourCodePoint("0123456789", index, codepoint));
  EXPECT_FALSE(MatchStepEscapeSequence("\\S\\", index, 'S'));
  EXPECT_EQ(index, 0xFFFFFFFEu);
}

TEST(MatchStepEscapeSequence, MovesBehindTheThreeCharacters) {
  unsigned int index = 1;
  EXPECT_TRUE(MatchStepEscapeSequence("a\\S\\", index, 'S'));
  EXPECT_EQ(index, 4u);
}

TEST(MatchStepEscapeSequence, EveryOtherTextOfThreeLeavesTheIndex) {
  for (const std::string text : {"", "\\", "\\S", "\\X\\", "xS\\", "\\Sx", "\\s\\", "S\\S\\"}) {
    unsigned int index = 0;
    EXPECT_FALSE(MatchStepEscapeSequence(text, index, 'S')) << text;
    EXPECT_EQ(index, 0u) << text;
  }
}

TEST(MatchStepEscapeSequence, MovesBehindTheFourCharacters) {
  unsigned int index = 1;
  EXPECT_TRUE(MatchStepEscapeSequence("a\\X2\\", index, 'X', '2'));
  EXPECT_EQ(index, 5u);
}

TEST(MatchStepEscapeSequence, EveryOtherTextOfFourLeavesTheIndex) {
  for (const std::string text : {"", "\\X2", "\\X4\\", "\\Y2\\", "xX2\\", "\\X2x", "\\x2\\", "\\2X\\"}) {
    unsigned int index = 0;
    EXPECT_FALSE(MatchStepEscapeSequence(text, index, 'X', '2')) << text;
    EXPECT_EQ(index, 0u) << text;
  }
}

// ---------------------------------------------------------------------------------------------
// IsPossibleISO8859

TEST(IsPossibleISO8859, NullEmptyAsciiAndUtf8AreNot) {
  EXPECT_FALSE(IsPossibleISO8859(nullptr));
  EXPECT_FALSE(IsPossibleISO8859(""));
  EXPECT_FALSE(IsPossibleISO8859("plain \x01\x7F"));
  EXPECT_FALSE(IsPossibleISO8859(u8"\u00E9\u20AC\U0001F600z"));
  EXPECT_FALSE(IsPossibleISO8859("\xC0\x80\xE0\x80\x80\xF0\x80\x80\x80")) << "overlong forms";
  EXPECT_FALSE(IsPossibleISO8859("\xED\xA0\x80\xF7\xBF\xBF\xBF")) << "beyond Unicode";
}

class NotUtf8 : public testing::TestWithParam<std::string> {};

TEST_P(NotUtf8, IsPossiblyISO8859) {
  EXPECT_TRUE(IsPossibleISO8859(GetParam().c_str()));
  EXPECT_TRUE(IsPossibleISO8859((u8"before \u00E9" + GetParam()).c_str()));
  EXPECT_TRUE(IsPossibleISO8859((GetParam() + u8" behind \u00E9").c_str()));
}

INSTANTIATE_TEST_SUITE_P(Texts, NotUtf8,
                         testing::Values("\x80", "\xBF", "\xF8", "\xFF", "\xC3", "\xC3x", "\xC3\xC3\xA9",
                                         "\xE2", "\xE2\x82", "\xE2x\x82", "\xE2\x82x", "\xF0", "\xF0\x9F",
                                         "\xF0\x9F\x98", "\xF0\x9F\x98x", "M\xFCller"));

TEST(IsPossibleISO8859, TheTextEndsAtItsNul) {
  EXPECT_FALSE(IsPossibleISO8859("abc\0\xFF"));
  EXPECT_TRUE(IsPossibleISO8859("\xC3\0\xA9")) << "a NUL is no continuation";
}

// ------------------------------------------------------------------------------------------------------
// Decoding

class StepToUtf8 : public testing::TestWithParam<Text> {};

TEST_P(StepToUtf8, GivesTheText) { EXPECT_EQ(ConvertSTEPStringToUtf8(GetParam().in), GetParam().out); }

INSTANTIATE_TEST_SUITE_P(PlainTexts, StepToUtf8,
                         testing::Values(Text{"", ""}, Text{"A", "A"},
                                         Text{"a longer text, with (blanks)", "a longer text, with (blanks)"},
                                         Text{"\x01\t\n\x7F", "\x01\t\n\x7F"}, Text{"a\0b"s, "a\0b"s}));

INSTANTIATE_TEST_SUITE_P(Doubled, StepToUtf8,
                         testing::Values(Text{"''", "'"}, Text{"''''", "''"}, Text{"'", "'"},
                                         Text{"'''", "''"}, Text{"it''s", "it's"}, Text{"it's", "it's"},
                                         Text{"\\\\", "\\"}, Text{"\\\\\\\\", "\\\\"}, Text{"\\\\\\", "\\\\"},
                                         Text{"C:\\\\parts", "C:\\parts"}, Text{"\\\\X2\\\\", "\\X2\\"},
                                         Text{"\\\\S\\e", "\\S\\e"}));

INSTANTIATE_TEST_SUITE_P(UnknownDirectives, StepToUtf8,
                         testing::Values(Text{"\\a", "\\a"}, Text{"C:\\parts", "C:\\parts"}, Text{"\\", "\\"},
                                         Text{"end\\", "end\\"}, Text{"\\''", "\\'"},
                                         Text{"\\x\\E9", "\\x\\E9"},
                                         Text{"\\X3\\00E9\\X0\\", "\\X3\\00E9\\X0\\"},
                                         Text{"\\X0\\", "\\X0\\"}, Text{"\\s\\a", "\\s\\a"},
                                         Text{"\\pE\\", "\\pE\\"}));

INSTANTIATE_TEST_SUITE_P(UpperHalf, StepToUtf8,
                         testing::Values(Text{"\\S\\a", u8"\u00E1"},
                                         Text{"\\S\\d\\S\\v\\S\\|", u8"\u00E4\u00F6\u00FC"},
                                         Text{"\\S\\'", u8"\u00A7"}, Text{"\\S\\\\", u8"\u00DC"},
                                         Text{"\\S\\''", u8"\u00A7'"}, Text{"x\\S\\ y", u8"x\u00A0y"},
                                         Text{"\\S\\\x7F", u8"\u00FF"}, Text{"\\S\\\x01z", u8"\u0081z"},
                                         Text{"\\S\\\0z"s, u8"\u0080z"}));

INSTANTIATE_TEST_SUITE_P(Alphabets, StepToUtf8,
                         testing::Values(Text{"\\PE\\\\S\\a", u8"\u0441"},
                                         Text{"\\PE\\\\S\\a\\S\\b text \\S\\a", u8"\u0441\u0442 text \u0441"},
                                         Text{"\\PG\\\\S\\a\\PA\\\\S\\a", u8"\u03B1\u00E1"},
                                         Text{"\\PB\\", ""}, Text{"\\PA\\x", "x"},
                                         Text{"\\PE\\\\X\\E1", u8"\u00E1"}, Text{"\\P@\\\\S\\a", "\0"s},
                                         Text{"\\PL\\\\S\\a", "\0"s}, Text{"\\PM\\\\S\\d", u8"\u00E4"},
                                         Text{"\\PP\\\\S\\$", u8"\u20AC"}, Text{"\\PQ\\\\S\\a", "\0"s},
                                         Text{"\\Pe\\\\S\\a", "\0"s}, Text{"\\P\\\\\\S\\a", "\0"s},
                                         Text{"\\P!\\\\S\\a", "\0"s}, Text{"\\PEx", "\\PEx"},
                                         Text{"\\PEE\\", "\\PEE\\"}));

TEST(ConvertSTEPStringToUtf8, TheAlphabetIsForgottenBetweenTexts) {
  EXPECT_EQ(ConvertSTEPStringToUtf8("\\PE\\\\S\\a"), u8"\u0441");
  EXPECT_EQ(ConvertSTEPStringToUtf8("\\S\\a"), u8"\u00E1");
}

INSTANTIATE_TEST_SUITE_P(SingleBytes, StepToUtf8,
                         testing::Values(Text{"\\X\\E9", u8"\u00E9"}, Text{"\\X\\e9x", u8"\u00E9x"},
                                         Text{"\\X\\09", "\t"}, Text{"\\X\\00", "\0"s}, Text{"\\X\\41", "A"},
                                         Text{"\\X\\27\\X\\5C", "'\\"},
                                         Text{"\\X\\FF\\X\\80", u8"\u00FF\u0080"}, Text{"\\X\\4G", "4G"},
                                         Text{"\\X\\G4", "G4"}, Text{"\\X\\''", "''"},
                                         Text{"\\X\\\\X\\41", "\\X\\41"}, Text{"\\X\\E", "E"}));

INSTANTIATE_TEST_SUITE_P(
    Ucs2, StepToUtf8,
    testing::Values(Text{"\\X2\\00E900E8\\X0\\", u8"\u00E9\u00E8"}, Text{"\\X2\\00E9", u8"\u00E9"},
                    Text{"\\X2\\03b103B2\\X0\\c", u8"\u03B1\u03B2c"}, Text{"\\X2\\\\X0\\", ""},
                    Text{"\\X2\\0041x", "Ax"}, Text{"\\X2\\00G1\\X0\\", "00G1\\X0\\"},
                    Text{"\\X2\\0041004\\X0\\", "A004\\X0\\"}, Text{"\\X2\\0041''", "A'"},
                    Text{"\\X2\\0041\\X4\\00000042\\X0\\", "AB"}, Text{"\\X2\\0000\\X0\\", "\0"s},
                    Text{"\\X2\\D83DDE00\\X0\\", "\xED\xA0\xBD\xED\xB8\x80"},
                    Text{"\\X2\\03B1\\X0\\\\X2\\03B2\\X0\\", u8"\u03B1\u03B2"}));

INSTANTIATE_TEST_SUITE_P(Ucs4, StepToUtf8,
                         testing::Values(Text{"\\X4\\0001F600\\X0\\", u8"\U0001F600"},
                                         Text{"\\X4\\0001f6000001F601\\X0\\.", u8"\U0001F600\U0001F601."},
                                         Text{"\\X4\\0001F600", u8"\U0001F600"},
                                         Text{"\\X4\\0001F60\\X0\\", "0001F60\\X0\\"},
                                         Text{"\\X4\\00200000\\X0\\z", "z"}, Text{"\\X4\\FFFFFFFF\\X0\\", ""},
                                         Text{"\\X4\\001FFFFF\\X0\\", "\xF7\xBF\xBF\xBF"},
                                         Text{"\\X4\\0000004100000\\X0\\", "A00000\\X0\\"}));

INSTANTIATE_TEST_SUITE_P(
    CutDirectives, StepToUtf8,
    testing::Values(Text{"\\S", "\\S"}, Text{"\\S\\", ""}, Text{"\\P", "\\P"}, Text{"\\PE", "\\PE"},
                    Text{"\\PE\\", ""}, Text{"\\X", "\\X"}, Text{"\\X\\", ""}, Text{"\\X\\4", "4"},
                    Text{"\\X2", "\\X2"}, Text{"\\X2\\", ""}, Text{"\\X2\\0", "0"}, Text{"\\X2\\00E", "00E"},
                    Text{"\\X2\\00E9\\", u8"\u00E9\\"}, Text{"\\X2\\00E9\\X", u8"\u00E9\\X"},
                    Text{"\\X2\\00E9\\X0", u8"\u00E9\\X0"}, Text{"\\X4", "\\X4"}, Text{"\\X4\\", ""},
                    Text{"\\X4\\0001F60", "0001F60"}, Text{"\\X4\\0001F600\\X0", u8"\U0001F600\\X0"}));

INSTANTIATE_TEST_SUITE_P(RawBytes, StepToUtf8,
                         testing::Values(Text{u8"\u00E9 \u20AC \U0001F600", u8"\u00E9 \u20AC \U0001F600"},
                                         Text{"\xE9", u8"\u00E9"},
                                         Text{"M\xFCller \\X\\E9", u8"M\u00FCller \u00E9"},
                                         Text{u8"\u00E9"s + "\xE9", u8"\u00C3\u00A9\u00E9"},
                                         Text{"\\S\\\xC3\xA9", "\xC3\x83\xA9"},
                                         Text{"\\X\\\xC3\xA9", "\xC3\x83\xA9"}, Text{"a\0\xE9"s, "a\0\xE9"s},
                                         Text{"\xE9\0\xE9"s, "\xC3\xA9\0\xC3\xA9"s}));

TEST(ConvertSTEPStringToUtf8, EveryPrefixOfAMixedTextIsDecodedUpToTheCut) {
  const std::string before = "twenty plain letters";
  const std::string text =
      before + "''\\\\\\S\\a\\PE\\\\S\\a\\X\\E9\\X2\\03B103B2\\X0\\\\X4\\0001F600\\X0\\"s + u8"\u20AC";
  for (std::size_t length = before.size(); length <= text.size(); ++length) {
    // A buffer of exactly this size, so that the address sanitizer sees every byte read beyond it.
    const std::unique_ptr<char[]> bytes(new char[length]);
    std::memcpy(bytes.get(), text.data(), length);
    std::string prefix(bytes.get(), length);
    prefix.shrink_to_fit();
    EXPECT_THAT(ConvertSTEPStringToUtf8(prefix), testing::StartsWith(before));
  }
  EXPECT_EQ(ConvertSTEPStringToUtf8(text), before + u8"'\\\u00E1\u0441\u00E9\u03B1\u03B2\U0001F600\u20AC");
}

TEST(StepStrings, EveryCodepointSurvivesTheRoundTrip) {
  for (unsigned int codepoint = 0; codepoint <= 0x1FFFFF; ++codepoint) {
    const std::string utf8 = Utf8Encode(codepoint);
    unsigned int index = 0;
    ASSERT_EQ(GetNextUtf8Codepoint(utf8, index), codepoint);
    ASSERT_EQ(index, utf8.size() - 1);
    ASSERT_EQ(ConvertSTEPStringToUtf8(ConvertUtf8ToSTEPString(utf8)), utf8) << std::hex << codepoint;
  }
}

TEST(StepStrings, AMillionDirectivesAreConvertedBothWays) {
  std::string greek;
  std::string escaped;
  for (int i = 0; i < 1000000; ++i) {
    greek += u8"\u03B1";
    escaped += "\\X2\\03B1\\X0\\";
  }
  EXPECT_EQ(ConvertUtf8ToSTEPString(greek), escaped);
  EXPECT_EQ(ConvertSTEPStringToUtf8(escaped), greek);
}

// ---------------------------------------------------------------------------------------------------- Fast
// paths

TEST(PlainStepPrefix, StopsAtTheFirstByteThatIsNotPlainWhereverItStands) {
  for (std::size_t length = 0; length <= 26; ++length) {
    for (std::size_t position = 0; position < length; ++position) {
      for (int byte = 0; byte < 256; ++byte) {
        std::string text(length, '~');
        text[position] = static_cast<char>(byte);
        const bool plain = byte >= 0x20 && byte <= 0x7F && byte != '\'' && byte != '\\';
        ASSERT_EQ(PlainStepPrefix(text.data(), length), plain ? length : position)
            << byte << " at " << position;
        ASSERT_EQ(IsPlainStepText(text.data(), length), plain);
      }
    }
  }
}

TEST(PlainStepPrefix, TwoSpecialBytesDoNotHideEachOther) {
  for (const char first : {'\0', '\x1F', '\'', '\\', '\x80', '\xFF'}) {
    for (const char second : {'\0', '\x1F', '\'', '\\', '\x80', '\xFF'}) {
      for (std::size_t a = 0; a < 16; ++a) {
        for (std::size_t b = a + 1; b < 16; ++b) {
          std::string text(16, ' ');
          text[a] = first;
          text[b] = second;
          ASSERT_EQ(PlainStepPrefix(text.data(), 16), a);
        }
      }
    }
  }
}

TEST(PlainStepPrefix, ReadsNothingBeyondTheLength) {
  for (std::size_t length = 0; length <= 26; ++length) {
    const std::unique_ptr<char[]> bytes(new char[length]);
    std::memset(bytes.get(), 'a', length);
    EXPECT_EQ(PlainStepPrefix(bytes.get(), length), length);
    const std::string text = std::string(length, 'a') + "'";
    EXPECT_TRUE(IsPlainStepText(text.data(), length));
    EXPECT_FALSE(IsPlainStepText(text.data(), length + 1));
  }
}

TEST(PlainStepText, GivesTheSameBytesInBothDirections) {
  for (int byte = 0; byte < 256; ++byte) {
    const char c = static_cast<char>(byte);
    const std::string text = "an innocent beginning"s + c + c + "z";
    if (!IsPlainStepText(text.data(), text.size())) continue;
    EXPECT_EQ(ConvertSTEPStringToUtf8(text), text);
    EXPECT_EQ(ConvertUtf8ToSTEPString(text), text);
  }
  EXPECT_TRUE(IsPlainStepText("", 0));
}

}  // namespace
}  // namespace VELMAR
