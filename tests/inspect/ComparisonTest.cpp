// What differs between two files.
#include "Comparison.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

#include "Renumbered.h"
#include "RunProgram.h"
#include "SampleFiles.h"

namespace velmar {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::ThrowsMessage;

const std::string kSchema =
    "SCHEMA s; ENTITY a; v : STRING; w : OPTIONAL REAL; END_ENTITY; ENTITY b; l : LIST OF a; s : SET OF a; END_ENTITY;"
    "ENTITY n; s : BAG OF INTEGER; t : SET OF LIST OF INTEGER; END_ENTITY;"
    "TYPE any = SELECT (a, b, n, r); END_TYPE; ENTITY r; x : any; y : OPTIONAL any; END_ENTITY; END_SCHEMA;";

class Comparing : public testing::Test {
 protected:
  Comparison Compare(const std::string& first, const std::string& second, bool withHeader = true) {
    return CompareWhole(FileWith(first), FileWith(second), withHeader);
  }
  Comparison CompareWhole(const std::string& first, const std::string& second, bool withHeader = true) {
    ComparisonOptions options;
    options.schema.express = WriteFile(directory_.Path("s.exp"), kSchema);
    options.withHeader = withHeader;
    Findings findings(""), others("");
    return CompareFiles(WriteFile(directory_.Path("a.stp"), first), WriteFile(directory_.Path("b.stp"), second), options,
                        findings, others);
  }
  // "changed #1 #2 A.v 'x' 'y'", "removed #1", "added #2".
  std::vector<std::string> Differences(const std::string& first, const std::string& second) {
    std::vector<std::string> texts;
    for (const Difference& difference : Compare(first, second).instances) {
      if (difference.kind != Difference::Kind::Changed) {
        const bool isRemoved = difference.kind == Difference::Kind::Removed;
        texts.push_back((isRemoved ? "removed #" : "added #") +
                        std::to_string((isRemoved ? difference.before : difference.after).number));
        continue;
      }
      std::string text = "changed #" + std::to_string(difference.before.number) + " #" + std::to_string(difference.after.number);
      for (const ChangedValue& value : difference.values) {
        text += " " + difference.type + "." + value.attribute + " " + value.before + " " + value.after;
      }
      texts.push_back(text);
    }
    return texts;
  }
  bool AreSame(const std::string& first, const std::string& second) { return Compare(first, second).IsSame(); }

  TemporaryDirectory directory_;
};

TEST_F(Comparing, NumbersAndOrderMeanNothing) {
  EXPECT_TRUE(AreSame("#1=A('x',1.);\n#2=A('y',$);\n#3=B((#1,#2),(#1));\n",
                      "#7=B((#1000000,#3),(#1000000));\n#3=A('y',$);\n#1000000=A('x',1.);\n"));
  EXPECT_FALSE(AreSame("#1=A('x',1.);\n#2=A('y',$);\n#3=B((#1,#2),(#1));\n",
                       "#1=A('x',1.);\n#2=A('y',$);\n#3=B((#2,#1),(#1));\n"));
}

TEST_F(Comparing, NumbersAreComparedByTheirValues) {
  EXPECT_TRUE(AreSame("#1=A('',1.0);\n#2=A('',-0.);\n#3=N((1,+2),());\n", "#1=A('',10.E-1);\n#2=A('',0.000);\n#3=N((01,2),());\n"));
  EXPECT_FALSE(AreSame("#1=A('',1.);\n", "#1=A('',1.0000000000000002);\n"));
  EXPECT_FALSE(AreSame("#1=A('',1.);\n", "#1=A('',1);\n"));
}

TEST_F(Comparing, StringsAreComparedByTheirCharacters) {
  EXPECT_TRUE(AreSame("#1=A('\\X2\\00E4\\X0\\',$);\n", "#1=A('\xC3\xA4',$);\n"));
  EXPECT_TRUE(AreSame("#1=A('it''s',$);\n", "#1=A('it\\X\\27s',$);\n"));
  EXPECT_FALSE(AreSame("#1=A('a',$);\n", "#1=A('A',$);\n"));
  EXPECT_FALSE(AreSame("#1=A('\\X2\\00',$);\n", "#1=A('\\X2\\01',$);\n"));  // mistakes
}

TEST_F(Comparing, SetsAndBagsHaveNoOrder) {
  const std::string points = "#1=A('x',1.);\n#2=A('y',$);\n";
  EXPECT_TRUE(AreSame(points + "#3=B((),(#1,#2));\n", points + "#3=B((),(#2,#1));\n"));
  EXPECT_FALSE(AreSame(points + "#3=B((),(#1,#2));\n", points + "#3=B((),(#2,#2));\n"));
  EXPECT_TRUE(AreSame("#1=N((1,2,2),());\n", "#1=N((2,1,2),());\n"));
  EXPECT_FALSE(AreSame("#1=N((1,2,2),());\n", "#1=N((1,1,2),());\n"));
  EXPECT_FALSE(AreSame("#1=N((),((1,2),(3)));\n", "#1=N((),((1,3),(2)));\n"));
}

TEST_F(Comparing, RecordsOfComplexInstancesHaveNoOrder) {
  EXPECT_TRUE(AreSame("#1=(A('x',1.)N((),()));\n", "#1=(N((),())A('x',1.));\n"));
  EXPECT_THAT(Differences("#1=(A('x',1.)N((),()));\n", "#2=(N((),())A('y',1.));\n"),
              ElementsAre("changed #1 #2 (A N).A.v 'x' 'y'"));
}

TEST_F(Comparing, AChangeIsReportedWhereItIs) {
  EXPECT_THAT(Differences("#1=A('x',1.);\n#2=B((#1),());\n#3=R(#2,$);\n#4=R(#3,#1);\n",
                          "#4=A('x',2.);\n#3=B((#4),());\n#2=R(#3,$);\n#1=R(#2,#4);\n"),
              ElementsAre("changed #1 #4 A.w 1. 2."));
}

TEST_F(Comparing, OfEqualInstancesThatIsChangedWhichStandsThere) {
  const std::string users = "#10=R(#1,$);\n#11=R(#2,#10);\n";
  EXPECT_THAT(Differences("#1=A('x',1.);\n#2=A('x',1.);\n" + users, "#2=A('x',3.);\n#1=A('x',1.);\n" + users),
              ElementsAre("changed #2 #2 A.w 1. 3."));
}

TEST_F(Comparing, ManyChangesAreToldApartByWhoRefersToThem) {
  std::string before, after;
  for (int i = 0; i < 50; ++i) {
    const std::string n = std::to_string(i + 100), m = std::to_string(i + 200), l = std::to_string(i + 300);
    before += "#" + n + "=A('',1." + std::to_string(i) + ");\n#" + m + "=R(#" + n + ",#" + l + ");\n#" + l + "=A('id" + n + "',$);\n";
    after = "#" + n + "=A('',2." + std::to_string(i) + ");\n#" + m + "=R(#" + n + ",#" + l + ");\n#" + l + "=A('id" + n + "',$);\n" + after;
  }
  const Comparison comparison = Compare(before, after);
  ASSERT_EQ(comparison.instances.size(), 50u);
  for (const Difference& difference : comparison.instances) EXPECT_EQ(difference.before.number, difference.after.number);
}

TEST_F(Comparing, TellsAReferenceThatLeadsElsewhereFromOneToWhatHasChanged) {
  EXPECT_THAT(Differences("#1=A('x',1.);\n#2=A('y',1.);\n#3=R(#1,$);\n", "#1=A('x',1.);\n#2=A('y',1.);\n#3=R(#2,$);\n"),
              ElementsAre("changed #3 #3 R.x #1 #2"));
  EXPECT_THAT(Differences("#1=A('x',1.);\n#3=R(#1,$);\n", "#1=A('x',1.);\n#3=R(#9,$);\n"), ElementsAre("changed #3 #3 R.x #1 #9"));
}

TEST_F(Comparing, KnowsAnInstanceByItsFirstText) {
  EXPECT_THAT(Differences("#1=A('x',1.);\n#2=A('y',2.);\n#3=A('z',3.);\n", "#1=A('y',5.);\n#2=A('x',4.);\n#3=A('z',3.);\n"),
              ElementsAre("changed #1 #2 A.w 1. 4.", "changed #2 #1 A.w 2. 5."));
}

TEST_F(Comparing, FindsWhatIsRemovedAndAdded) {
  EXPECT_THAT(Differences("#1=A('x',1.);\n#2=B((#1),());\n", "#1=A('x',1.);\n"), ElementsAre("removed #2"));
  EXPECT_THAT(Differences("#1=A('x',1.);\n", "#1=A('x',1.);\n#2=A('x',1.);\n"), ElementsAre("added #2"));
  EXPECT_THAT(Differences("#1=A('x',1.);\n", "#1=N((),());\n"), ElementsAre("removed #1", "added #1"));
}

TEST_F(Comparing, CyclesAreNoTrouble) {
  const std::string cycle = "#1=R(#2,#4);\n#2=R(#3,$);\n#3=R(#1,$);\n#4=A('x',1.);\n#5=R(#5,$);\n";
  EXPECT_TRUE(AreSame(cycle, "#9=R(#7,$);\n#7=R(#8,#4);\n#4=A('x',1.);\n#8=R(#9,$);\n#1=R(#1,$);\n"));
  EXPECT_THAT(Differences(cycle, "#1=R(#2,#4);\n#2=R(#3,$);\n#3=R(#1,$);\n#4=A('x',7.);\n#5=R(#5,$);\n"),
              ElementsAre("changed #4 #4 A.w 1. 7."));
}

TEST_F(Comparing, TheHeaderCountsUnlessItIsLeftOut) {
  std::string after = FileWith("");
  after.replace(after.find("2026-01-01"), 10, "2027-01-01");
  const Comparison comparison = CompareWhole(FileWith(""), after);
  ASSERT_EQ(comparison.header.size(), 1u);
  EXPECT_EQ(comparison.header[0].type, "FILE_NAME");
  ASSERT_EQ(comparison.header[0].values.size(), 1u);
  EXPECT_EQ(comparison.header[0].values[0].attribute, "time_stamp");
  EXPECT_EQ(comparison.header[0].values[0].after, "'2027-01-01T00:00:00'");
  EXPECT_TRUE(CompareWhole(FileWith(""), after, false).IsSame());
}

TEST_F(Comparing, ReferencesInTheHeaderAreCompared) {
  const auto file = [](const std::string& reference, const std::string& data) {
    std::string text = FileWith(data);
    const std::string schema = "FILE_SCHEMA(";
    return text.replace(text.find(schema), 0, "EXTRA(" + reference + ");\n");
  };
  EXPECT_TRUE(CompareWhole(file("#1", "#1=A('x',$);\n#2=A('y',$);\n"), file("#7", "#7=A('x',$);\n#8=A('y',$);\n")).IsSame());
  const Comparison comparison = CompareWhole(file("#1", "#1=A('x',$);\n#2=A('y',$);\n"), file("#8", "#7=A('x',$);\n#8=A('y',$);\n"));
  ASSERT_EQ(comparison.header.size(), 1u);
  EXPECT_EQ(comparison.header[0].type, "EXTRA");
  EXPECT_EQ(comparison.header[0].values[0].after, "#8");
}

TEST_F(Comparing, ParametersThatAreMissingAreShown) {
  EXPECT_THAT(Differences("#1=A('x',1.);\n", "#1=A('x');\n"), ElementsAre("changed #1 #1 A.w 1. "));
}

TEST_F(Comparing, FilesThatCannotBeReadAreSaidToBe) {
  Findings findings(""), others("");
  EXPECT_THAT([&] { CompareFiles(SAMPLE_FILE, directory_.Path("none"), {}, findings, others); },
              ThrowsMessage<std::runtime_error>(HasSubstr("does not exist")));
}

TEST_F(Comparing, ACopyWithOtherNumbersIsTheSame) {
  for (unsigned seed = 0; seed < 5; ++seed) {
    const std::string copy = WriteFile(directory_.Path("b.stp"), Renumbered(SAMPLE_FILE, seed));
    Findings findings(""), others("");
    EXPECT_TRUE(CompareFiles(SAMPLE_FILE, copy, {}, findings, others).IsSame());
  }
}

}  // namespace
}  // namespace velmar
