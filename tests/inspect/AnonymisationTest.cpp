// Files without the names and texts in them.
#include "Anonymisation.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

#include "RunProgram.h"

namespace velmar {
namespace {

using testing::HasSubstr;
using testing::Not;
using testing::ThrowsMessage;

const std::string kHead = "ISO-10303-21;\nHEADER;\nFILE_SCHEMA(('S'));\nENDSEC;\nDATA;\n";
const std::string kTail = "ENDSEC;\nEND-ISO-10303-21;\n";

class Anonymising : public testing::Test {
 protected:
  std::string Whole(const std::string& text) {
    result_ = Anonymise(WriteFile(directory_.Path("in.stp"), text));
    std::string joined;
    for (const std::string& piece : result_.text) joined += piece;
    return joined;
  }
  // What becomes of a DATA section.
  std::string Data(const std::string& data) {
    const std::string whole = Whole(kHead + data + kTail);
    EXPECT_EQ(whole.substr(0, kHead.size()), kHead);
    EXPECT_EQ(whole.substr(whole.size() - kTail.size()), kTail);
    return whole.substr(kHead.size(), whole.size() - kHead.size() - kTail.size());
  }

  TemporaryDirectory directory_;
  Anonymised result_;
};

TEST_F(Anonymising, ReplacesStringsEqualOnesAlike) {
  EXPECT_EQ(Data("#1=A('Anna','Bob''s ; \\X\\C4',( 'Anna' ) ,1.5E3,.X.,$ , *);\n"),
            "#1=A('text_1','text_2',( 'text_1' ) ,1.5E3,.X.,$ , *);\n");
  EXPECT_EQ(result_.strings, 3u);
  EXPECT_EQ(result_.texts, 2u);
}

TEST_F(Anonymising, KeepsEmptyStringsAndPublicOnes) {
  const std::string data = "#1=A('','  ','mechanical','DEGREE','red','S');\n";
  EXPECT_EQ(Data(data), data);
  EXPECT_EQ(Data("#1=A('redder');\n"), "#1=A('text_1');\n");
}

TEST_F(Anonymising, ReplacesTheHeaderButForTheSchema) {
  EXPECT_EQ(Whole("ISO-10303-21;\nHEADER;\nFILE_DESCRIPTION(('of Anna','red'),'2;1');\n"
                  "FILE_NAME('f','2026-01-01T00:00:00',('Anna',''),('O'),'','x','');\nFILE_SCHEMA(('Anna''s','T'));\nENDSEC;\n"
                  "DATA;\n#1=A('T');\nENDSEC;\nEND-ISO-10303-21;\n"),
            "ISO-10303-21;\nHEADER;\nFILE_DESCRIPTION(('text_1','text_2'),'2;1');\n"
            "FILE_NAME('text_3','1970-01-01T00:00:00',('text_4',''),('text_5'),'','text_6','');\nFILE_SCHEMA(('Anna''s','T'));\nENDSEC;\n"
            "DATA;\n#1=A('T');\nENDSEC;\nEND-ISO-10303-21;\n");
}

TEST_F(Anonymising, EmptiesCommentsAndKeepsTheirLines) {
  EXPECT_EQ(Data("/* by Anna's */#1=A(/*\nAnna\n*/1);\n"), "/* */#1=A(/*\n\n*/1);\n");
  EXPECT_EQ(result_.comments, 2u);
  EXPECT_EQ(Data("// by Anna 12\n#1=A(1);\n"), "// xx Xxxx 00\n#1=A(1);\n");
  EXPECT_EQ(Whole("ISO-10303-21;\nDATA;\n#1=A(1);/* Anna\n#2=B('Bob');\n"), "ISO-10303-21;\nDATA;\n#1=A(1);/* Xxxx\n#0=X('Xxx');\n");
}

TEST_F(Anonymising, LeavesOutWhatStandsAround) {
  EXPECT_EQ(Whole("From: Anna\n'ISO-10303-21;\nDATA;\nENDSEC;\nEND-ISO-10303-21;\n-- \nAnna"),
            "\nISO-10303-21;\nDATA;\nENDSEC;\nEND-ISO-10303-21;\n\n");
  EXPECT_TRUE(result_.hadTextBefore);
  EXPECT_TRUE(result_.hadTextBehind);
  EXPECT_EQ(Whole("\xEF\xBB\xBF/* Anna */ ISO-10303-21;\nDATA;\nENDSEC;\nEND-ISO-10303-21;\r\n"),
            "\xEF\xBB\xBF/* */ ISO-10303-21;\nDATA;\nENDSEC;\nEND-ISO-10303-21;\r\n");
  EXPECT_FALSE(result_.hadTextBefore);
  EXPECT_FALSE(result_.hadTextBehind);
}

TEST_F(Anonymising, NothingOfAStringWithoutAnEndIsLeft) {
  EXPECT_EQ(Data("#1=A('Anna, #12,(1.5);\n#2=A('Bob');\n"), "#1=A('Xxxx, #00,(0.0);\n#2=A('text_1');\n");
  EXPECT_EQ(Data("#1=A('Anna,'SECRET(Bob 4711','C');#2=A(1);\n"), "#1=A('Xxxx,'XXXXXX(Xxx 0000','X');#2=A(1);\n");
  EXPECT_EQ(Data("#1=A('x','Anna);\n"), "#1=A('x','Xxxx);\n");
  EXPECT_EQ(Data("#1=A(Anna','B o b','');\n"), "#1=A(Xxxx','X x x','');\n");
  EXPECT_EQ(Whole("ISO-10303-21;\nDATA;\n#1=A('Anna"), "ISO-10303-21;\nDATA;\n#1=A('Xxxx");
}

TEST_F(Anonymising, AStringMayLookLikeAnInstance) {
  EXPECT_EQ(Data("#1=A('Anna; #2=B(1);','x');\n"), "#1=A('text_1','text_2');\n");
  EXPECT_EQ(Data("#1=A('Anna);#2=B('Bob');\n"), "#1=A('Xxxx);#2=B('text_1');\n");
}

TEST_F(Anonymising, StringsMaySpanLines) { EXPECT_EQ(Data("#1=A('An\nna');\n"), "#1=A('text_1\n');\n"); }

TEST_F(Anonymising, KeepsMistakesThatTellNothing) {
  for (const char* data : {"#1=A((1,2);\n", "#1=A(1.D05,+.5,1.E+,-);\n", "#1=a(.T,F.);\n", "#1=;\n", "#1=(A()B();#2=B()\n", "#1A(1)\n",
                           "#1=&SCOPE\n#2=B();\nENDSCOPE /#2/ A(#2);\n", "endsec;\n", "=A(L_M(1.),l_m(2));\n"}) {
    EXPECT_EQ(Data(data), data);
  }
  EXPECT_EQ(Data("#1=A(1);\nA(2);\nB(2);\n"), "#1=A(1);\nA(2);\nB(2);\n");
  EXPECT_EQ(Data("Anna B 12 wrote (this);\n"), "Xxxx X 00 xxxxx (xxxx);\n");
}

TEST_F(Anonymising, ReplacesUserDefinedNamesAndBinaryValues) {
  EXPECT_EQ(Data("#1=!ANNAS_X(\"3AF09\");\n#2=(!BOBS(1)!ANNAS_X(\"0\",\"\",\"0ab\"));\n"),
            "#1=!USER_NAME_1(\"30000\");\n#2=(!USER_NAME_2(1)!USER_NAME_1(\"0\",\"\",\"0aa\"));\n");
}

TEST_F(Anonymising, ReplacesAnchorsReferencesAndSignatures) {
  EXPECT_EQ(Whole("ISO-10303-21;\nANCHOR;\n<anna>=#1{tag:'x'};\nENDSEC;\nREFERENCE;\n#2=<http://anna.example/p.stp#anna>;\nENDSEC;\n"
                  "DATA;\n#1=A(#2);\nENDSEC;\nSIGNATURE;\nAnna1+A(2)/x=\nENDSEC;\nEND-ISO-10303-21;\n"),
            "ISO-10303-21;\nANCHOR;\n<text_1>=#1{xxx:'text_2'};\nENDSEC;\nREFERENCE;\n#2=<//text_3>;\nENDSEC;\n"
            "DATA;\n#1=A(#2);\nENDSEC;\nSIGNATURE;\nXxxx0+X(0)/x=\nENDSEC;\nEND-ISO-10303-21;\n");
}

// Cut anywhere, a file gives nothing of its texts away.
TEST_F(Anonymising, NothingOfAFileThatIsCutIsLeft) {
  const std::string text =
      "ISO-10303-21;\nHEADER;\nFILE_NAME('Anna','2026',('Bobby'),(''),'','','');\nENDSEC;\nDATA;\n/* Carla */\n"
      "#1=A('Anna''s Bobby',#2,'Carla');#2=!DORA_X('Anna',(\"0ABC\"));\n#3=B('Carla;Bobby\n');\nENDSEC;\nEND-ISO-10303-21;\nDoris\n";
  for (std::size_t length = 0; length <= text.size(); ++length) {
    for (const std::string& part : {text.substr(0, length), text.substr(length), text.substr(0, length) + text.substr(std::min(length + 1, text.size()))}) {
      if (part.empty()) continue;
      const std::string out = Whole(part);
      // Without its exclamation mark a name is that of a type.
      if (part.find("=DORA_X") == std::string::npos) {
        ASSERT_THAT(out, Not(HasSubstr("ORA_"))) << part;
      }
      for (const char* secret : {"Anna", "obby", "arla", "oris"}) ASSERT_THAT(out, Not(HasSubstr(secret))) << part;
    }
  }
}

TEST_F(Anonymising, SaysWhatCannotBeRead) {
  EXPECT_THAT([&] { Anonymise(directory_.Path("none")); }, ThrowsMessage<std::runtime_error>(HasSubstr("does not exist")));
}

}  // namespace
}  // namespace velmar
