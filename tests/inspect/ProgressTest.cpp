// How far they are, as long operations tell it.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <new>
#include <ostream>
#include <stdexcept>
#include <string>
#include <vector>

#include "Anonymisation.h"
#include "Checking.h"
#include "Comparison.h"
#include "Conversion.h"
#include "Extraction.h"
#include "FileReport.h"
#include "InstanceGraph.h"
#include "InstancePairing.h"
#include "Instances.h"
#include "ProductStructure.h"
#include "Progress.h"
#include "Reading.h"
#include "RunProgram.h"
#include "SampleFiles.h"

namespace velmar {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

// Notes what is reported.
class Reports {
 public:
  Progress Note() {
    return [this](double done) { all.push_back(done); };
  }
  std::vector<double> all;
};

TEST(ReportedProgress, Is0AtTheBeginningAnd1AtTheEnd) {
  Reports reports;
  {
    ReportedProgress progress(reports.Note());
    EXPECT_THAT(reports.all, ElementsAre(0));
  }
  EXPECT_THAT(reports.all, ElementsAre(0, 1));
}

TEST(ReportedProgress, IsAShareOfTheTotalAndAtMost99Percent) {
  Reports reports;
  {
    ReportedProgress progress(reports.Note(), 200);
    progress(100);
    progress(198);
    progress(200);
    progress(1000);
  }
  EXPECT_THAT(reports.all, ElementsAre(0, 0.5, 0.99, 1));
}

TEST(ReportedProgress, IsNotReportedForLessThanAThousandthMore) {
  Reports reports;
  {
    ReportedProgress progress(reports.Note(), 10000);
    progress(9);
    progress(10);
    progress(19);
    progress(20);
    progress(5);
  }
  EXPECT_THAT(reports.all, ElementsAre(0, 0.001, 0.002, 1));
  reports.all.clear();
  {
    ReportedProgress progress(reports.Note(), 1000000);
    for (int i = 0; i <= 1000000; ++i) progress(i);
  }
  EXPECT_THAT(reports.all, SizeIs(testing::AllOf(testing::Gt(900u), testing::Le(1001u))));
}

TEST(ReportedProgress, OfPartsIsOneOfTheWhole) {
  Reports reports;
  {
    ReportedProgress progress(reports.Note(), 7);
    {
      ReportedProgress first(progress.Part(0, 0.5), 10);
      first(5);
    }
    ReportedProgress second(progress.Part(0.5, 1));
    ReportedProgress within(second.Part(0.5, 1));
  }
  EXPECT_THAT(reports.all, testing::Pointwise(testing::DoubleEq(), {0.0, 0.25, 0.5, 0.75, 0.99, 1.0}));
}

TEST(ReportedProgress, EndsWhereNobodyCanBeToldOfIt) {
  const auto fail = [](double done) {
    if (done > 0) throw std::bad_alloc();
  };
  EXPECT_NO_THROW({
    ReportedProgress progress(fail, 2);
    ReportedProgress part(progress.Part(0, 0.5));
  });
  ReportedProgress progress(fail, 2);
  EXPECT_THROW(progress(1), std::bad_alloc);
}

TEST(ReportedProgress, OfNothingToTellCostsNothing) {
  ReportedProgress progress(nullptr);
  EXPECT_EQ(progress.Part(0, 1), nullptr);
  progress(0.5);
  Reports reports;
  { ReportedProgress(reports.Note(), 0)(5); }
  EXPECT_THAT(reports.all, ElementsAre(0, 1));
}

// A file of instances of about the same length.
std::string Sample() {
  std::string data;
  for (int i = 1; i <= 3000; ++i) {
    const std::string number = std::to_string(1000 + i);
    data += "#" + number + (i % 2 == 0 ? "=DIRECTION('a',(1.,0.));\n" : "=PRODUCT('b','c',$,());\n");
  }
  return FileWith(data);
}

void Write(const std::string& path, FileFormat format, const std::string& out, const Progress& progress) {
  Reading reading(path);
  Findings findings(out);
  WriteAndReport(reading.GetPopulation(), format, out, findings, progress, reading.Size());
  if (findings.Errors() > 0) throw std::runtime_error("not written");
}

struct Operation {
  const char* name;
  std::function<void(const std::string& path, const std::string& out, const Progress& progress)> run;
};

void PrintTo(const Operation& operation, std::ostream* os) { *os << operation.name; }

class ProgressOf : public testing::TestWithParam<Operation> {
 protected:
  // 0, then more and more without great leaps, at the end 1.
  void ExpectRisingFor(const std::string& path) {
    Reports reports;
    GetParam().run(path, directory_.Path("out"), reports.Note());
    const std::vector<double>& all = reports.all;
    ASSERT_GT(all.size(), 100u);
    EXPECT_EQ(all.front(), 0);
    EXPECT_EQ(all.back(), 1);
    double leap = 0;
    for (std::size_t i = 1; i < all.size(); ++i) {
      EXPECT_LT(all[i - 1], all[i]);
      leap = std::max(leap, all[i] - all[i - 1]);
    }
    EXPECT_LE(leap, 0.25);
  }

  TemporaryDirectory directory_;
  std::string path_ = WriteFile(directory_.Path("in.stp"), Sample());
};

TEST_P(ProgressOf, RisesFrom0To1) { ExpectRisingFor(path_); }

class ProgressOfJson : public ProgressOf {};

TEST_P(ProgressOfJson, RisesFrom0To1) {
  const std::string json = directory_.Path("in.json");
  Write(path_, FileFormat::Json, json, nullptr);
  ExpectRisingFor(json);
}

TEST_P(ProgressOf, EndsWhereItFails) {
  Reports reports;
  EXPECT_THROW(GetParam().run(directory_.Path("none.stp"), directory_.Path("out"), reports.Note()), std::runtime_error);
  if (!reports.all.empty()) {
    EXPECT_EQ(reports.all.back(), 1);
  }
}

// Where instances differ, finding out which is which takes the most time.
TEST(ProgressOfPairing, IsTheEffortThatHasBeenMade) {
  TemporaryDirectory directory;
  // Points that differ in their last digits, in lists that differ by them: nothing tells them apart but their order.
  const auto points = [](int differing) {
    std::string data, list = "#9000000=POLYLINE('',(";
    for (int i = 1; i <= 20000; ++i) {
      data += "#" + std::to_string(i) + "=CARTESIAN_POINT('',(1.,2.," + std::to_string(i / 2) + "." + std::to_string(differing) + "));\n";
      list += (i == 1 ? "#" : ",#") + std::to_string(i);
    }
    return FileWith(data + list + "));\n");
  };
  const std::string a = WriteFile(directory.Path("a.stp"), points(1)), b = WriteFile(directory.Path("b.stp"), points(2));
  const InstanceGraph graph(a, b, nullptr);
  Reports reports;
  EXPECT_THAT(PairInstances(graph, reports.Note()).pairs, SizeIs(20001));
  EXPECT_GT(reports.all.size(), 2u);
  EXPECT_EQ(reports.all.front(), 0);
  EXPECT_EQ(reports.all.back(), 1);
  EXPECT_TRUE(std::is_sorted(reports.all.begin(), reports.all.end()));
}

const auto kOfAnyFormat =
    testing::Values(Operation{"Anonymise", [](auto& path, auto&, auto& progress) { Anonymise(path, progress); }},
                    Operation{"CheckFile", [](auto& path, auto&, auto& progress) { CheckFile(path, {}, progress); }},
                    Operation{"CompareFiles",
                              [](auto& path, auto&, auto& progress) {
                                Findings first(path), second(path);
                                CompareFiles(path, path, {}, first, second, progress);
                              }},
                    Operation{"Extract", [](auto& path, auto&, auto& progress) { Extract(path, {1001}, progress); }},
                    Operation{"FindPlaces", [](auto& path, auto&, auto& progress) { FindPlaces(path, {1001}, progress); }},
                    Operation{"MakeReport",
                              [](auto& path, auto&, auto& progress) {
                                ReadingOptions options;
                                options.progress = progress;
                                MakeReport(path, options, {});
                              }},
                    Operation{"Merge",
                              [](auto& path, auto&, auto& progress) {
                                Merge({path, path, path}, progress);
                              }},
                    Operation{"ReadProductStructure",
                              [](auto& path, auto&, auto& progress) {
                                Findings findings(path);
                                ReadProductStructure(path, {}, findings, progress);
                              }},
                    Operation{"Reading", [](auto& path, auto&, auto& progress) {
                                ReadingOptions options;
                                options.progress = progress;
                                Reading reading(path, options);
                              }});

const auto kOfPart21 = testing::Values(
    Operation{"WriteCsv", [](auto& path, auto& out, auto& progress) { Write(path, FileFormat::Csv, out, progress); }},
    Operation{"WriteJson", [](auto& path, auto& out, auto& progress) { Write(path, FileFormat::Json, out, progress); }},
    Operation{"WritePart21", [](auto& path, auto& out, auto& progress) { Write(path, FileFormat::Part21, out, progress); }},
    Operation{"WriteSqlite", [](auto& path, auto& out, auto& progress) { Write(path, FileFormat::Sqlite, out, progress); }});

std::string NameOf(const testing::TestParamInfo<Operation>& info) { return info.param.name; }

INSTANTIATE_TEST_SUITE_P(OfAnyFormat, ProgressOf, kOfAnyFormat, NameOf);
INSTANTIATE_TEST_SUITE_P(OfPart21, ProgressOf, kOfPart21, NameOf);
INSTANTIATE_TEST_SUITE_P(OfAnyFormat, ProgressOfJson, kOfAnyFormat, NameOf);

}  // namespace
}  // namespace velmar
