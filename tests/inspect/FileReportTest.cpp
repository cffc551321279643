// The page about a file: whatever the file holds is shown, and nothing of it acts.
#include "FileReport.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "RunProgram.h"
#include "SampleFiles.h"

namespace velmar {
namespace {

using testing::HasSubstr;
using testing::Not;

class FileReportTest : public testing::Test {
 protected:
  std::string PageOf(const std::string& text, const ReportLimits& limits = {}, const std::string& name = "in.stp") {
    return ToHtml(MakeReport(WriteFile(directory_.Path(name), text), {}, {}, limits));
  }
  static std::size_t Count(const std::string& text, const std::string& part) {
    std::size_t count = 0;
    for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) ++count;
    return count;
  }
  TemporaryDirectory directory_;
};

TEST_F(FileReportTest, SaysThatNothingIsWrong) {
  const std::string page = PageOf(FileWith(kPoint));
  EXPECT_THAT(page, HasSubstr("<p class=\"verdict good\">nothing is wrong</p>"));
  EXPECT_THAT(page, HasSubstr("<p class=\"facts\">AP214, "));
  EXPECT_THAT(page, HasSubstr("<th>CARTESIAN_<wbr>POINT</th><td><span class=\"bar\" style=\"width:100.0%\"></span></td><td>1</td>"));
  EXPECT_THAT(page, Not(HasSubstr("id=\"structure\"")));
  EXPECT_THAT(page, Not(HasSubstr("id=\"codes\"")));
}

TEST_F(FileReportTest, ShowsAFindingWithItsSourceLineAndWhatItsCodeMeans) {
  const std::string page = PageOf(FileWith("#1=DIRECTION(3,(1.,0.));\n"));
  EXPECT_THAT(page, HasSubstr("<p class=\"verdict bad\">1 error, 0 warnings</p>"));
  EXPECT_THAT(page, HasSubstr("<li class=\"row\"><span class=\"severity error\">error</span> <span class=\"place\">8:14</span> "
                              "<b>#1 DIRECTION.name </b> <bdi>expected label (a string), found the integer 3</bdi> "
                              "<a class=\"code\" href=\"#V028\">V028</a><pre><bdi>#1=DIRECTION(<mark>3</mark>,(1.,0.));</bdi></pre></li>"));
  EXPECT_THAT(page, HasSubstr("<dt id=\"V028\">V028 "));
}

TEST_F(FileReportTest, WarningsAloneAreDoubtful) {
  EXPECT_THAT(PageOf(FileWith("#1=VECTOR('',#2,1);\n#2=DIRECTION('',(1.,0.));\n")),
              HasSubstr("<p class=\"verdict doubtful\">0 errors, 1 warning</p>"));
}

// Every place where a text of the file may stand, with one that would act if it were not shown as a text.
TEST_F(FileReportTest, HoldsNoMarkupOfTheFile) {
  const std::string hostile = "</bdi></title></style><script>alert(1)</script><img src=x onerror=alert(2)>\"''&";
  std::string text = FileWith(
      "#1=APPLICATION_CONTEXT('" + hostile + "');\n#2=PRODUCT_CONTEXT('',#1,'');\n"
      "#3=PRODUCT('" + hostile + "','" + hostile + "','" + hostile + "',(#2));\n"
      "#4=PRODUCT_DEFINITION_FORMATION('" + hostile + "','',#3);\n"
      "#5=PRODUCT_DEFINITION_CONTEXT('',#1,'');\n#6=PRODUCT_DEFINITION('','',#4,#5);\n"
      "#7=DIRECTION(.<script>alert(3)</script>.,(1.,0.));/*" + hostile + "*/\n"
      "#8=<script>alert(4)</script>('" + hostile + "');\n"
      "#9=DIRECTION(,'" + hostile + "');\n");
  for (const char* part : {"a test", "t.stp", "'A'", "'O'", "'P'", "'S'", "'Z'"}) {
    const bool isQuoted = part[0] == '\'';
    text.replace(text.find(part), std::string(part).size(), isQuoted ? "'" + hostile + "'" : hostile);
  }
  const std::string good = PageOf(FileWith(kPoint));
  for (const std::string& schema : {std::string("AUTOMOTIVE_DESIGN"), "<script>alert(5)</script>" + hostile}) {
    std::string withSchema = text;
    withSchema.replace(withSchema.find("AUTOMOTIVE_DESIGN"), 17, schema);
    const std::string page = PageOf(withSchema, {}, "<img src=x onerror=alert(6)>.stp");
    EXPECT_THAT(page, HasSubstr("&lt;script&gt;alert(1)&lt;/script&gt;"));
    EXPECT_THAT(page, HasSubstr("<h1>&lt;img src=x onerror=alert(6)&gt;.stp</h1>"));
    for (const char* tag : {"<script", "</script", "<style", "</style", "<title", "</title"}) {
      EXPECT_EQ(Count(page, tag), Count(good, tag)) << tag;
    }
    EXPECT_THAT(page, Not(HasSubstr("<img")));
  }
}

TEST_F(FileReportTest, BytesThatAreNoTextAreReplaced) {
  const std::string page = PageOf(FileWith("#1=DIRECTION(3,/*\xC3*/(1.,0.));/*\x01\x1B[31m\xED\xA0\x80*/\n"));
  for (const char c : page) EXPECT_TRUE(static_cast<unsigned char>(c) >= 0x20 || c == '\n');
  EXPECT_THAT(page, Not(HasSubstr("\xED\xA0\x80")));
  EXPECT_THAT(PageOf(FileWith("#1=DIRECTION(3,(1.,0.)); /* \xE6\x94\xAF */\n")), HasSubstr("/* \xE6\x94\xAF */"));
  EXPECT_THAT(PageOf(FileWith(kPoint), {}, "bad\xFF.stp"), HasSubstr("<h1>bad\xEF\xBF\xBD.stp</h1>"));
}

TEST_F(FileReportTest, WhatIsBeyondTheLimitsIsCounted) {
  std::string data;
  for (int i = 1; i <= 30; ++i) data += "#" + std::to_string(i) + "=DIRECTION(3,(1.,0.));\n";
  const std::string text = FileWith(data);
  std::string page = PageOf(text, {20, 2000});
  EXPECT_EQ(Count(page, "<span class=\"severity error\">"), 20u);
  EXPECT_THAT(page, HasSubstr("<p class=\"soft\">10 more findings not shown.</p>"));
  page = PageOf(text, {29, 2000});
  EXPECT_THAT(page, HasSubstr("<p class=\"soft\">1 more finding not shown.</p>"));
  page = PageOf(text, {30, 2000});
  EXPECT_THAT(page, Not(HasSubstr("not shown")));

  data = "#1=APPLICATION_CONTEXT('');\n#2=PRODUCT_CONTEXT('',#1,'');\n";
  for (int i = 10; i < 15; ++i) data += "#" + std::to_string(i) + "=PRODUCT('p" + std::to_string(i) + "','','',(#2));\n";
  page = PageOf(FileWith(data), {200, 3});
  EXPECT_EQ(Count(page, "<span class=\"own\">"), 3u);
  EXPECT_THAT(page, HasSubstr("<p class=\"soft\">2 more lines not shown.</p>"));
}

TEST_F(FileReportTest, ComponentsStandWithinTheirAssembly) {
  const std::string page = ToHtml(MakeReport(TROLLEY_FILE, {}, {}));
  EXPECT_THAT(page, HasSubstr("<li class=\"row\"><details open><summary class=\"own\"><bdi>Trolley [T-1, version A]"));
  EXPECT_EQ(Count(page, "<ul"), Count(page, "</ul>"));
  EXPECT_EQ(Count(page, "<li"), Count(page, "</li>"));
  EXPECT_EQ(Count(page, "<details"), Count(page, "</details>"));
}

TEST_F(FileReportTest, NothingIsTakenFromAnywhereElse) {
  const std::string page = ToHtml(MakeReport(TROLLEY_FILE, {}, {}));
  for (const char* part : {"http:", "https:", "src=", "@import", "url(", "fetch", "XMLHttpRequest"}) {
    EXPECT_THAT(page, Not(HasSubstr(part)));
  }
  EXPECT_THAT(page, HasSubstr("default-src 'none'"));
}

TEST_F(FileReportTest, IsTheSameForTheSameFile) {
  EXPECT_EQ(ToHtml(MakeReport(TROLLEY_FILE, {}, {})), ToHtml(MakeReport(TROLLEY_FILE, {}, {})));
}

}  // namespace
}  // namespace velmar
