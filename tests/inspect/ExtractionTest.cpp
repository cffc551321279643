// Parts of files, and files put together.
#include "Extraction.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

#include "RunProgram.h"

namespace velmar {
namespace {

using testing::HasSubstr;
using testing::ThrowsMessage;

const std::string kHeader = "ISO-10303-21;\nHEADER; /* by us */\nFILE_SCHEMA(('S'));\nENDSEC;\nDATA;\n";
const std::string kEnd = "ENDSEC;\nEND-ISO-10303-21;\n";

class Files : public testing::Test {
 protected:
  std::string Path(const std::string& name, const std::string& data, const std::string& header = kHeader) {
    return WriteFile(directory_.Path(name), header + data + kEnd);
  }
  static std::string Joined(const Text& text) {
    std::string joined;
    for (const std::string& piece : text) joined += piece;
    return joined;
  }

  TemporaryDirectory directory_;
};

TEST_F(Files, AreExtractedWithAllThatIsReferredTo) {
  const std::string path = Path("in.stp",
                                "#1=A('#4',(#3));\n#2=B(#1);\n#3 = C( 1., /* here */ L(#5) ) ;\n#4=D();\n"
                                "#5=(X(#6)Y('it''s'));\n#6=E(#3,#99);\n");
  EXPECT_EQ(Joined(Extract(path, {1})), kHeader +
                                            "#1=A('#4',(#3));\n#3=C( 1., /* here */ L(#5) );\n#5=(X(#6)Y('it''s'));\n"
                                            "#6=E(#3,#99);\n" +
                                            kEnd);
  EXPECT_EQ(Joined(Extract(path, {4, 4})), kHeader + "#4=D();\n" + kEnd);
  EXPECT_EQ(Joined(Extract(path, {})), kHeader + kEnd);
}

TEST_F(Files, AreExtractedWithoutScopes) {
  const std::string path = Path("in.stp", "#1=&SCOPE\n#2=B();\nENDSCOPE /#2/ A(#2);\n");
  EXPECT_EQ(Joined(Extract(path, {1})), kHeader + "#2=B();\n#1=A(#2);\n" + kEnd);
  EXPECT_EQ(Joined(Extract(path, {2})), kHeader + "#2=B();\n" + kEnd);
}

TEST_F(Files, AreExtractedWithTheLaterOfTwoInstances) {
  const std::string path = Path("in.stp", "#1=A();\n#1=B();\n#2=C(#1);\n");
  EXPECT_EQ(Joined(Extract(path, {2})), kHeader + "#1=B();\n#2=C(#1);\n" + kEnd);
}

TEST_F(Files, ThatLackAnInstanceAreNotExtracted) {
  const std::string path = Path("in.stp", "#1=A();\n");
  EXPECT_THAT([&] { Extract(path, {1, 7}); }, ThrowsMessage<std::runtime_error>(path + " has no instance #7"));
  EXPECT_THAT([&] { Extract(directory_.Path("none"), {1}); }, ThrowsMessage<std::runtime_error>(HasSubstr("does not exist")));
  const std::string empty = WriteFile(directory_.Path("x.stp"), "#1=A();\n");
  EXPECT_THAT([&] { Extract(empty, {1}); }, ThrowsMessage<std::runtime_error>(empty + " has no DATA section"));
}

TEST_F(Files, AreMergedWithNumbersBehindEachOther) {
  const std::string one = Path("1.stp", "#10=A(#3);\n/* #4 */ #3=B('#3');\n");
  const std::string two = Path("2.stp", "#1=A(#2,(L(#1)));\n#2=(X()Y(#7));\n");
  const std::string three = Path("3.stp", "#1=C(#1);");
  EXPECT_EQ(Joined(Merge({one, two, three})), kHeader + "#10=A(#3);\n/* #4 */ #3=B('#3');\n" +
                                                  "#11=A(#12,(L(#11)));\n#12=(X()Y(#17));\n" + "#18=C(#18);\n" + kEnd);
  EXPECT_EQ(Joined(Merge({three})), kHeader + "#1=C(#1);\n" + kEnd);
}

TEST_F(Files, OfTwoSchemasAreNotMerged) {
  const std::string one = Path("1.stp", "#1=A();\n");
  const std::string same = Path("2.stp", "#1=A();\n", "ISO-10303-21;HEADER;FILE_SCHEMA(('s','T'));ENDSEC;DATA;");
  const std::string other = Path("3.stp", "#1=A();\n", "ISO-10303-21;HEADER;FILE_SCHEMA(('T'));ENDSEC;DATA;");
  EXPECT_NO_THROW(Merge({one, same}));
  EXPECT_THAT([&] { Merge({one, same, other}); }, ThrowsMessage<std::runtime_error>(
                                                      one + " has the schema 'S', " + other + " 'T': they make no file of one schema"));
}

TEST_F(Files, WhoseNumbersBecomeTooHighAreNotMerged) {
  const std::string one = Path("1.stp", "#1073741823=A();\n");
  const std::string two = Path("2.stp", "\n  #1=A();\n");
  EXPECT_NO_THROW(Merge({one}));
  EXPECT_THAT([&] { Merge({one, two}); }, ThrowsMessage<std::runtime_error>(two + ":7:3: the instance numbers become too high"));
}

TEST_F(Files, AreWrittenWholeOrNotAtAll) {
  const std::string path = directory_.Path("out.stp");
  WriteText({"one ", "two"}, path);
  EXPECT_EQ(ReadFile(path), "one two");
  EXPECT_THAT([&] { WriteText({"x"}, directory_.Path("no/out.stp")); },
              ThrowsMessage<std::runtime_error>(HasSubstr("no/out.stp cannot be written: ")));
}

}  // namespace
}  // namespace velmar
