#include <fmt/format.h>
#include <gtest/gtest.h>

#include <string>

#include "FileWalk.h"
#include "RunProgram.h"
#include "SampleFiles.h"

namespace velmar {
namespace {

// Writes down what it is told, one line for a record.
class Recorder : public WalkListener {
 public:
  std::string text;

 private:
  void InstanceName(const wchar_t* name, Place place) override {
    text += fmt::format("{}@{}", Narrow(name), At(place));
  }
  void BeginInstance(const WalkedInstance& instance) override {
    text += fmt::format("=({}) ", instance.number);
  }
  void BeginRecord(const WalkedRecord& record) override {
    text += fmt::format("{}{}@{}:", record.isPart ? "part " : "", Narrow(record.typeName.c_str()),
                        At(record.place));
  }
  void Value(const WalkedValue& value) override {
    text += fmt::format(" {}{}{}{}@{}", value.parameter, value.isTyped ? "t" : "",
                        value.nesting.IsInList() ? "l" : "", Narrow(value.text), At(value.place));
  }
  void EndRecord(const WalkedRecord&, int parameters) override { text += fmt::format(" /{}\n", parameters); }
  static std::string At(Place place) { return fmt::format("{}.{}", place.line, place.column); }
};

std::string Walk(const std::string& file) {
  TemporaryDirectory directory;
  const File in = Open(WriteFile(directory.Path("f"), file));
  Recorder recorder;
  WalkFile(in.get(), recorder);
  return recorder.text;
}

std::string WalkData(const std::string& data) { return Walk("DATA;\n" + data + "ENDSEC;\n"); }

TEST(FileWalk, GivesHeaderRecordsWithTheirPlaces) {
  EXPECT_EQ(Walk("ISO-10303-21;\nHEADER;\nFILE_X('a',$);\n!Y();\nENDSEC;\n"),
            "FILE_X@3.1: 0'a'@3.8 1$@3.12 /2\nY@4.2: /0\n");
}

TEST(FileWalk, GivesInstancesAndTheValuesOfTheirRecords) {
  EXPECT_EQ(WalkData("#7 = POINT('p',\n (1.,2), .T., #8, *);\n"),
            "#7@2.1=(7) POINT@2.6: 0'p'@2.12 1(@3.2 1l1.@3.3 1l2@3.6 1l)@3.7 2T@3.10 3#8@3.15 4*@3.19 /5\n");
}

TEST(FileWalk, TypedParametersAreNoLists) {
  EXPECT_EQ(WalkData("#1=M(L(2.5),(L(1),L(.X.)));\n"),
            "#1@2.1=(1) M@2.4: 0L@2.6 0t(@2.7 02.5@2.8 0)@2.11 1(@2.13 1lL@2.14 1tl(@2.15 1l1@2.16 1l)@2.17 "
            "1lL@2.19 "
            "1tl(@2.20 1lX@2.21 1l)@2.24 1l)@2.25 /2\n");
}

TEST(FileWalk, GivesThePartsOfComplexInstances) {
  EXPECT_EQ(WalkData("#1=(A()B(1));\n"), "#1@2.1=(1) part A@2.5: /0\npart B@2.8: 01@2.10 /1\n");
}

TEST(FileWalk, ARecordBehindAScopeBelongsToTheInstanceBeforeIt) {
  EXPECT_EQ(WalkData("#1=&SCOPE #2=A(); ENDSCOPE /#2/ B();\n"),
            "#1@2.1=(1) #2@2.11=(2) A@2.14: /0\nB@2.33: /0\n");
}

TEST(FileWalk, ASemicolonEndsARecordThatIsNotClosed) {
  EXPECT_EQ(WalkData("#1=A((1;\n#2=B();\n"), "#1@2.1=(1) A@2.4: 0(@2.6 0l1@2.7 /1\n#2@3.1=(2) B@3.4: /0\n");
}

TEST(InstanceNumberOf, IsZeroForWhatCannotBeStored) {
  EXPECT_EQ(InstanceNumberOf(L"#1073741823"), 1073741823);
  EXPECT_EQ(InstanceNumberOf(L"#1073741824"), 0);
  EXPECT_EQ(InstanceNumberOf(L"#99999999999999999999999"), 0);
  EXPECT_EQ(InstanceNumberOf(L"#0"), 0);
  EXPECT_EQ(InstanceNumberOf(L"#007"), 7);
}

}  // namespace
}  // namespace velmar
