// The host program's locale changes neither what is read nor what is printed.
#include <gtest/gtest.h>
#include <stdlib.h>

#include <clocale>
#include <locale>
#include <memory>
#include <sstream>
#include <string>

#include "CapturedLog.h"
#include "ExpFile.h"
#include "ExpRuntimeRegistry.h"
#include "ExpUtilities.h"
#include "Scanner.h"
#include "TestEntities.h"

namespace VELMAR {
namespace {

using TestData::AllKinds;
using TestData::CapturedLog;
using TestData::MakeIn;

/// Numbers as a German reader expects them: 1.234.567,25.
class CommaNumbers : public std::numpunct<char> {
 protected:
  char do_decimal_point() const override { return ','; }
  char do_thousands_sep() const override { return '.'; }
  std::string do_grouping() const override { return "\3"; }
};

class WideCommaNumbers : public std::numpunct<wchar_t> {
 protected:
  wchar_t do_decimal_point() const override { return L','; }
  wchar_t do_thousands_sep() const override { return L'.'; }
  std::string do_grouping() const override { return "\3"; }
};

/// The parts of the process's locale that a test changes.
struct Host {
  const char* name;
  const char* cLocale;  ///< for setlocale; null leaves the C locale
  bool streams;         ///< whether std::locale::global gets the comma
};

void PrintTo(const Host& host, std::ostream* os) { *os << host.name; }

/// Runs each test within the host's locale, and restores that of the test program behind it.
class Locale : public testing::TestWithParam<Host> {
 protected:
  void SetUp() override {
    const Host& host = GetParam();
    if (host.cLocale != nullptr && !Choose(host.cLocale)) {
      GTEST_SKIP() << "the locale " << host.cLocale
                   << " is neither installed (Debian package locales-all) nor made by "
                   << "the build (Debian package locales)";
    }
    if (host.streams) {
      const std::locale narrow(std::locale::classic(), new CommaNumbers);
      std::locale::global(std::locale(narrow, new WideCommaNumbers));
    }
    // The host really does print as it is meant to.
    std::ostringstream text;
    text << 1234.5;
    ASSERT_EQ(text.str(), host.streams ? "1.234,5" : "1234.5");
    char buffer[32];
    std::snprintf(buffer, sizeof buffer, "%.1f", 1234.5);
    ASSERT_STREQ(buffer, host.cLocale != nullptr ? "1234,5" : "1234.5");
  }

  void TearDown() override {
    std::locale::global(std::locale::classic());
    setlocale(LC_ALL, "C");
  }

 private:
  static bool Choose(const char* name) {
    if (setlocale(LC_ALL, name) != nullptr) return true;
#ifdef VELMAR_TEST_LOCALES
    // The C library looks here first while it opens a locale, and not afterwards.
    const char* const before = getenv("LOCPATH");
    const std::string kept = before == nullptr ? "" : before;
    setenv("LOCPATH", VELMAR_TEST_LOCALES, 1);
    const bool chosen = setlocale(LC_ALL, name) != nullptr;
    before == nullptr ? unsetenv("LOCPATH") : setenv("LOCPATH", kept.c_str(), 1);
    if (chosen) return true;
#endif
    return false;
  }
};

constexpr const char* kFile = R"(ISO-10303-21;
HEADER;
FILE_DESCRIPTION(('numbers'), '2;1');
FILE_NAME('numbers.stp', '2024-01-01T00:00:00', ('a'), ('o'), 'p', 's', 'n');
FILE_SCHEMA(('AUTOMOTIVE_DESIGN'));
ENDSEC;
DATA;
#1 = ALL_KINDS(1234567.25, 1234567, '\X\E4', #12345, (0.5, -1.5E-7, 1000, #1000),
  .RED., .T., .F., MEASURE(2.5E+10));
#12345 = POINT('1.234,5', (1234.5, 0.001, 123456789012345678.));
ENDSEC;
END-ISO-10303-21;
)";

constexpr const char* kInstances =
    "#1 = ALL_KINDS(1234567.25, 1234567, '\\X\\E4', #12345, (0.5, -1.5E-7, 1000, #1000), .RED., .T., .F., "
    "MEASURE(25000000000.));\n"
    "#12345 = POINT('1.234,5', (1234.5, 0.001, 1.23456789012346E+17));\n";

TEST_P(Locale, NumbersAreReadWithAPoint) {
  std::istringstream text(kFile);
  ExpFile file;
  file.Read(text);
  const auto entity = dynamic_cast<AllKinds*>(file.GetEntity(1));
  ASSERT_NE(entity, nullptr);
  EXPECT_EQ(entity->real.GetExpReal(), 1234567.25);
  EXPECT_EQ(entity->integer.GetExpInteger(), 1234567);
  EXPECT_EQ(entity->link.GetExpLink(), 12345);
  EXPECT_EQ(entity->choice.GetExpReal(), 2.5E+10);
  ASSERT_EQ(entity->list.NofElements(), 4u);
  EXPECT_EQ(entity->list.GetExpAggregation()->front()->GetExpReal(), 0.5);
}

TEST_P(Locale, AFileIsWrittenWithPointsAndWithoutGrouping) {
  std::istringstream text(kFile);
  ExpFile file;
  file.Read(text);
  std::ostringstream out;  // has the host's locale
  file.WriteDataSection(out);
  EXPECT_EQ(out.str(), std::string("DATA;\n") + kInstances + "ENDSEC;\n");
}

TEST_P(Locale, WhatIsWrittenReadsAgainToTheSameBytes) {
  std::istringstream text(kFile);
  ExpFile file;
  file.Read(text);
  std::stringstream once;
  file.Write(once);
  ExpFile again;
  again.Read(once);
  std::ostringstream twice;
  again.Write(twice);
  EXPECT_EQ(twice.str(), once.str());
  EXPECT_NE(once.str().find(kInstances), std::string::npos) << once.str();
}

TEST_P(Locale, AnInstanceIsDumpedWithoutGrouping) {
  std::istringstream text(kFile);
  ExpFile file;
  file.Read(text);
  std::ostringstream out;
  file.DumpEntity(1, out);
  EXPECT_NE(out.str().find("#12345 = POINT('1.234,5', (1234.5, 0.001, 1.23456789012346E+17));\n"),
            std::string::npos)
      << out.str();
  EXPECT_NE(out.str().find("#1 = ALL_KINDS(1234567.25, 1234567, "), std::string::npos) << out.str();
}

TEST_P(Locale, ValuesPrintTheSameBytes) {
  EXPECT_EQ(ExpReal(1234567.25).ToString(), "1234567.25");
  EXPECT_EQ(ExpReal(0.1).ToString(), "0.1");
  EXPECT_EQ(ExpReal(1e20).ToString(), "1.E+20");
  EXPECT_EQ(ExpReal(-1.5e-7).ToString(), "-1.5E-7");
  EXPECT_EQ(ExpInteger(-1234567).ToString(), "-1234567");
  EXPECT_EQ(ExpLink(1234567).ToString(), "#1234567");
}

TEST_P(Locale, SyntaxErrorsCountLinesWithoutGrouping) {
  std::istringstream text("ISO-10303-21;\nHEADER;\nFILE_NAME('','',(''),(''),'','','');\nENDSEC;\nDATA;\n" +
                          std::string(1229, '\n') + std::string(1999, ' ') + "#1 = POINT('', (1.5 2.5));\n" +
                          "ENDSEC;\nEND-ISO-10303-21;\n");
  CapturedLog log;
  ExpFile file;
  file.Read(text);
  EXPECT_NE(log.text.find("-- line 1235 col 2020: "), std::string::npos) << log.text;
}

TEST_P(Locale, TheIndexOfABrokenTextIsPrintedWithoutGrouping) {
  const std::string text = std::string(12344, 'a') + "\xC3";
  std::string thrown;
  try {
    ConvertUtf8ToSTEPString(text);
  } catch (const std::string& message) {
    thrown = message;
  }
  EXPECT_EQ(thrown, "String ended in middle of utf8 character '" + text + "' - index: 12345");
}

TEST_P(Locale, OnlyAsciiLettersChangeTheirCase) {
  std::string letters;
  for (int byte = 0x80; byte < 0x100; ++byte) letters += static_cast<char>(byte);
  EXPECT_EQ(ToUpperString("i" + letters), "I" + letters);
  EXPECT_EQ(ToLowerString("I" + letters), "i" + letters);
}

TEST_P(Locale, FileNamesAreWidenedByteByByte) {
  const std::unique_ptr<wchar_t[]> wide(coco_string_create("a\xE4"));
  EXPECT_EQ(wide[1], wchar_t{0xE4});
  const std::unique_ptr<char[]> narrow(coco_string_create_char(wide.get()));
  EXPECT_STREQ(narrow.get(), "a\xE4");
}

TEST_P(Locale, ManagedObjectsPrintTheirAddressWithoutGrouping) {
  ExpManagedObject object;
  std::ostringstream address;
  address.imbue(std::locale::classic());
  address << static_cast<const void*>(&object);
  EXPECT_EQ(object.ToString(), "ExpManagedObject: " + address.str());
}

TEST_P(Locale, RegistryReportsAreTheSame) {
  const auto report = [](const std::locale& locale) {
    std::ostringstream out;
    out.imbue(locale);
    ExpRuntimeRegistry::GetInstance()->DumpRegisteredSchemas(out);
    ExpRuntimeRegistry::GetInstance()->DumpRegisteredEntityTypes(out);
    ExpRuntimeRegistry::GetInstance()->DumpSingleDefinitions(out);
    ExpRuntimeRegistry::GetInstance()->DumpMultipleDefinitions(out);
    return out.str();
  };
  const std::string classic = report(std::locale::classic());
  EXPECT_NE(classic.find("ALL_KINDS"), std::string::npos) << classic;
  EXPECT_EQ(report(std::locale()), classic);
}

INSTANTIATE_TEST_SUITE_P(Hosts, Locale,
                         testing::Values(Host{"Streams", nullptr, true}, Host{"C", "de_DE.UTF-8", false},
                                         Host{"CAndStreams", "de_DE.UTF-8", true},
                                         Host{"Latin1AndStreams", "de_DE.ISO-8859-1", true}),
                         [](const auto& info) { return std::string(info.param.name); });

}  // namespace
}  // namespace VELMAR
