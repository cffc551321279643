// velmar report: a page about a file, and what a browser makes of it.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "RunProgram.h"
#include "SampleFiles.h"

namespace {

using testing::HasSubstr;

const std::string kVelmar = VELMAR_PROGRAM;

class Report : public testing::Test {
 protected:
  Outcome Velmar(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), {kVelmar, "report"});
    Setting setting;
    setting.directory = directory_.Path("");
    return RunProgram(arguments, setting);
  }
  TemporaryDirectory directory_;
};

TEST_F(Report, OfTheSampleIsAsBefore) {
  const std::string sample = SOURCE_FOLDER "/examples/trolley.stp";
  const Outcome outcome = Velmar({sample, "-o", "out.html"});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.out, "");
  EXPECT_EQ(outcome.err, sample + ": nothing is wrong\n");
  const std::string golden = SOURCE_FOLDER "/tests/tools/golden/report.html";
  const std::string page = ReadFile(directory_.Path("out.html"));
  if (page == ReadFile(golden)) return;
  const std::string made = WriteFile(testing::TempDir() + "velmar-golden-report.html", page);
  EXPECT_EQ(page, ReadFile(golden)) << "If this is as it should be: cp " << made << " " << golden;
}

TEST_F(Report, ExitStatusSaysWhetherTheFileHasErrors) {
  WriteFile(directory_.Path("bad.stp"), FileWith("#1=DIRECTION(3,(1.,0.));\n"));
  Outcome outcome = Velmar({"bad.stp", "-o", "out.html"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.err, "bad.stp: 1 error, 0 warnings\n");
  EXPECT_THAT(ReadFile(directory_.Path("out.html")), HasSubstr("expected label (a string), found the integer 3"));
  outcome = Velmar({"bad.stp", "-o", "out.html", "--quiet"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.err, "");
  WriteFile(directory_.Path("doubtful.stp"), FileWith("#1=VECTOR('',#2,1);\n#2=DIRECTION('',(1.,0.));\n"));
  EXPECT_EQ(Velmar({"doubtful.stp", "-o", "out.html"}).status, 0);
}

TEST_F(Report, FindingsBeyondMaxAreCounted) {
  WriteFile(directory_.Path("bad.stp"), FileWith("#1=DIRECTION(3,(1.,0.));\n#2=DIRECTION(3,(1.,0.));\n"));
  EXPECT_EQ(Velmar({"bad.stp", "-o", "out.html", "--max", "1"}).status, 1);
  EXPECT_THAT(ReadFile(directory_.Path("out.html")), HasSubstr("1 more finding not shown."));
}

TEST_F(Report, ReadsFilesOfAnExpressText) {
  const std::string data = SOURCE_FOLDER "/tests/tools/data/";
  EXPECT_EQ(Velmar({data + "gears.stp", "-o", "out.html", "--express", data + "gears.exp"}).status, 0);
  EXPECT_THAT(ReadFile(directory_.Path("out.html")), HasSubstr("<th>WORM</th>"));
}

TEST_F(Report, WhatCannotBeDoneLeavesOutAsItIs) {
  WriteFile(directory_.Path("out.html"), "before");
  WriteFile(directory_.Path("in.stp"), FileWith(kPoint));
  EXPECT_EQ(Velmar({"missing.stp", "-o", "out.html"}).status, 2);
  EXPECT_EQ(Velmar({"in.stp", "-o", "out.html", "--schema", "AP1"}).status, 2);
  EXPECT_EQ(ReadFile(directory_.Path("out.html")), "before");
  const Outcome outcome = Velmar({"in.stp", "-o", "./in.stp"});
  EXPECT_EQ(outcome.status, 2);
  EXPECT_THAT(outcome.err, HasSubstr("./in.stp is the file that is reported on"));
  EXPECT_EQ(ReadFile(directory_.Path("in.stp")), FileWith(kPoint));
  EXPECT_EQ(Velmar({"in.stp", "-o", "missing/out.html"}).status, 2);
  EXPECT_EQ(Velmar({"in.stp", "-o", "."}).status, 2);
  std::size_t files = 0;
  for (const auto& entry : std::filesystem::directory_iterator(directory_.Path(""))) files += entry.exists() ? 1 : 0;
  EXPECT_EQ(files, 2u);  // no part of a page is left
}

// The page in a browser, with a script that uses it as a person would and writes down what it sees.
class ReportInABrowser : public Report {
 protected:
  void SetUp() override {
    browser_ = RunProgram({"/bin/sh", "-c", "command -v chromium || command -v chromium-browser"}).out;
    if (browser_.empty()) GTEST_SKIP() << "there is no chromium";
    browser_.pop_back();
  }
  // What `expression` is once the page is shown, as JSON.
  std::string Evaluate(const std::string& file, const std::string& expression) {
    Velmar({file, "-o", "out.html"});
    std::string page = ReadFile(directory_.Path("out.html"));
    const std::size_t end = page.rfind("</body>");
    page.insert(end, "<pre id=\"seen\"></pre><script>document.getElementById('seen').textContent = "
                     "'SEEN' + JSON.stringify((function () {" + expression + "})()) + 'END';</script>\n");
    const std::string path = WriteFile(directory_.Path("seen.html"), page);
    const Outcome outcome = RunProgram({browser_, "--headless", "--no-sandbox", "--disable-gpu", "--window-size=360,800",
                                        "--user-data-dir=" + directory_.Path("profile"), "--dump-dom", "file://" + path});
    const std::string mark = "<pre id=\"seen\">SEEN";
    const std::size_t begin = outcome.out.find(mark);
    if (begin == std::string::npos) return "nothing: " + outcome.err;
    return outcome.out.substr(begin + mark.size(), outcome.out.find("END<", begin) - begin - mark.size());
  }
  static std::string Search(const std::string& words) {
    return "var box = document.getElementById('search'); box.value = '" + words +
           "'; box.dispatchEvent(new Event('input'));"
           "return [document.getElementById('found').textContent].concat("
           "Array.from(document.querySelectorAll('.row')).filter(function (row) { return row.offsetParent !== null; })"
           ".map(function (row) { return (row.querySelector('.own') || row).textContent.split(/[\\[(]/)[0].trim(); }));";
  }
  static constexpr const char* kTrolley = SOURCE_FOLDER "/examples/trolley.stp";
  std::string browser_;
};

TEST_F(ReportInABrowser, SearchShowsWhatHasEveryWordAndWhatLeadsThere) {
  EXPECT_EQ(Evaluate(kTrolley, Search("tube FRAME_NO")), "[\"0 of 37 found\"]");
  EXPECT_EQ(Evaluate(kTrolley, Search("tUbE  version")), "[\"1 of 37 found\",\"Trolley\",\"Frame\",\"2 x Tube\"]");
}

TEST_F(ReportInABrowser, NothingStandsOutOfTheScreenOfAPhone) {
  std::string data = "#1=DIRECTION(3,(1.,0.));/*" + std::string(300, 'x') + "*/\n";
  for (int i = 2; i < 5; ++i) data += "#" + std::to_string(i) + "=" + std::string(100, 'A' + i) + "();\n";
  const std::string bad = WriteFile(directory_.Path(std::string(100, 'n') + ".stp"), FileWith(data));
  for (const std::string& file : {bad, std::string(kTrolley), std::string(SAMPLE_FILE)}) {
    EXPECT_EQ(Evaluate(file,
                       "var frame = document.documentElement; frame.style.width = '360px';"
                       "return Array.from(document.querySelectorAll('body *')).filter(function (e) {"
                       "  return e.getBoundingClientRect().right > 360 && !e.closest('.tree'); })"
                       ".map(function (e) { return e.outerHTML; }).concat(frame.scrollWidth > Math.max(360, innerWidth) ? "
                       "['the page'] : []);"),
              "[]")
        << file;
  }
}

TEST_F(ReportInABrowser, NothingOfAHostileFileRuns) {
  const std::string hostile = "</bdi></title></style><script>document.title=1</script><img src=x onerror=document.title=2>";
  const std::string file = WriteFile(directory_.Path("hostile.stp"),
                                     FileWith("#1=PRODUCT('" + hostile + "','" + hostile + "',3,());/*" + hostile + "*/\n"));
  EXPECT_EQ(Evaluate(file, "return [document.title, document.images.length, document.scripts.length];"),
            "[\"hostile.stp \xE2\x80\x93 Velmar\",0,2]");
  EXPECT_THAT(ReadFile(directory_.Path("out.html")), HasSubstr("&lt;script&gt;document.title=1"));
}

}  // namespace
