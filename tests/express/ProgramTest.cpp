// velmar-express as a user runs it: its exit status, its streams and the files it writes.

#include <gmock/gmock.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>

#include "SchemaText.h"

namespace VELMAR::Express {
namespace {

using testing::HasSubstr;
using testing::StartsWith;
namespace fs = std::filesystem;

class Program : public testing::Test {
 protected:
  void SetUp() override {
    folder_ = fs::temp_directory_path() / ("velmar-express-" + std::to_string(getpid()));
    fs::remove_all(folder_);
    fs::create_directories(folder_);
    Write("good.exp", "SCHEMA good; ENTITY a; END_ENTITY; END_SCHEMA;");
    Write("bad.exp", "SCHEMA bad; ENTITY a; x : b; END_ENTITY; END_SCHEMA;");
  }
  void TearDown() override { fs::remove_all(folder_); }

  void Write(const std::string& name, const std::string& text) {
    std::ofstream(folder_ / name, std::ios::binary) << text;
  }

  // Runs the program in the test's folder; returns its exit status.
  int Run(const std::string& arguments) {
    const std::string command = "cd '" + folder_.string() + "' && '" VELMAR_EXPRESS_PROGRAM "' " + arguments +
                                " > stdout.txt 2> stderr.txt";
    const int status = std::system(command.c_str());
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  }

  std::string Content(const std::string& name) const { return ContentOf((folder_ / name).string()); }

  fs::path folder_;
};

TEST_F(Program, CheckOfAGoodSchemaSaysNothing) {
  EXPECT_EQ(Run("check good.exp"), 0);
  EXPECT_EQ(Content("stdout.txt"), "");
  EXPECT_EQ(Content("stderr.txt"), "");
}

TEST_F(Program, CheckOfABadSchemaSaysWhyOnStandardError) {
  EXPECT_EQ(Run("check good.exp bad.exp"), 1);
  EXPECT_EQ(Content("stdout.txt"), "");
  EXPECT_THAT(Content("stderr.txt"), StartsWith("bad.exp:1:27: error: unknown type 'b' [E021]"));
}

TEST_F(Program, PrintWritesTheCanonicalText) {
  EXPECT_EQ(Run("print good.exp"), 0);
  EXPECT_EQ(Content("stdout.txt"), "SCHEMA good;\n\nENTITY a;\nEND_ENTITY;\n\nEND_SCHEMA;\n");
  EXPECT_EQ(Content("stderr.txt"), "");
  EXPECT_EQ(Run("print bad.exp"), 1);
  EXPECT_EQ(Content("stdout.txt"), "");
}

TEST_F(Program, ListWritesPlaceKindAndName) {
  Write("all.exp",
        "SCHEMA all;\nCONSTANT c : REAL := 1.0; END_CONSTANT;\nTYPE t = REAL; END_TYPE;\n"
        "ENTITY e; END_ENTITY;\nFUNCTION f : REAL; RETURN (1.0); END_FUNCTION;\nPROCEDURE p; ; "
        "END_PROCEDURE;\n"
        "RULE r FOR (e); WHERE TRUE; END_RULE;\nSUBTYPE_CONSTRAINT s FOR e; END_SUBTYPE_CONSTRAINT;\n"
        "END_SCHEMA;\n");
  EXPECT_EQ(Run("list all.exp"), 0);
  EXPECT_EQ(Content("stdout.txt"),
            "all.exp:1:8: SCHEMA all\nall.exp:2:10: CONSTANT all.c\nall.exp:3:6: TYPE all.t\n"
            "all.exp:4:8: ENTITY all.e\nall.exp:5:10: FUNCTION all.f\nall.exp:6:11: PROCEDURE all.p\n"
            "all.exp:7:6: RULE all.r\nall.exp:8:20: SUBTYPE_CONSTRAINT all.s\n");
  EXPECT_EQ(Run("list bad.exp"), 1);
}

TEST_F(Program, InterfacedSchemasAreFoundOnTheSearchPath) {
  fs::create_directories(folder_ / "one");
  fs::create_directories(folder_ / "two");
  Write("main.exp",
        "SCHEMA main; USE FROM Middle (m AS n); ENTITY x SUBTYPE OF (n); END_ENTITY; END_SCHEMA;");
  Write("one/MIDDLE.EXP", "SCHEMA middle; USE FROM last; ENTITY m SUBTYPE OF (l); END_ENTITY; END_SCHEMA;");
  Write("one/last.exp", "SCHEMA something_else; END_SCHEMA;");
  Write("two/last.exp", "SCHEMA last; USE FROM main (x); ENTITY l; END_ENTITY; END_SCHEMA;");
  EXPECT_EQ(Run("check main.exp"), 1);
  EXPECT_THAT(
      Content("stderr.txt"),
      StartsWith("main.exp:1:23: error: unknown schema 'middle' [E023]; give the file that declares it, "
                 "too, or its folder with -I\n"));
  EXPECT_EQ(Run("check -I one main.exp"), 1);
  EXPECT_THAT(Content("stderr.txt"), HasSubstr("unknown schema 'last' [E023]"));
  EXPECT_EQ(Run("check main.exp -I one -I two"), 0);
  EXPECT_EQ(Content("stderr.txt"), "");
  EXPECT_EQ(Run("list -I one -I two main.exp"), 0);
  EXPECT_EQ(Content("stdout.txt"), "main.exp:1:8: SCHEMA main\nmain.exp:1:47: ENTITY main.x\n");
  EXPECT_EQ(Run("generate main.exp -I one -I two --output-dir out"), 0);
  EXPECT_TRUE(fs::exists(folder_ / "out/Main.h"));
  EXPECT_EQ(Run("check -I missing main.exp"), 2);
  EXPECT_THAT(Content("stderr.txt"), HasSubstr("missing"));
}

TEST_F(Program, WarningsAreNoErrors) {
  Write("warned.exp", "SCHEMA rule; END_SCHEMA;");
  EXPECT_EQ(Run("check warned.exp"), 0);
  EXPECT_THAT(Content("stderr.txt"), HasSubstr("warning: "));
}

TEST_F(Program, FileThatCannotBeReadIsWrongUsage) {
  EXPECT_EQ(Run("check missing.exp"), 2);
  EXPECT_THAT(Content("stderr.txt"), HasSubstr("missing.exp"));
  EXPECT_EQ(Run("check ."), 2);
}

TEST_F(Program, WrongUsage) {
  EXPECT_EQ(Run(""), 2);
  EXPECT_EQ(Run("check"), 2);
  EXPECT_EQ(Run("nonsense"), 2);
  EXPECT_EQ(Run("check --nonsense good.exp"), 2);
  EXPECT_EQ(Run("generate good.exp --parts 0"), 2);
  EXPECT_EQ(Run("generate good.exp --registry-name 1x"), 2);
  EXPECT_EQ(Run("generate good.exp --schema other"), 2);
  EXPECT_FALSE(fs::exists(folder_ / "Good.h"));
}

TEST_F(Program, HelpGoesToStandardOutput) {
  for (const char* arguments : {"--help", "check --help", "generate --help", "print --help", "list --help"}) {
    EXPECT_EQ(Run(arguments), 0);
    EXPECT_THAT(Content("stdout.txt"), HasSubstr("Exit status: 0"));
    EXPECT_EQ(Content("stderr.txt"), "");
  }
}

TEST_F(Program, GenerateWritesTheFilesAndMakesTheFolder) {
  EXPECT_EQ(Run("generate good.exp --output-dir a/b --registry-name MY_NAME --parts 2"), 0);
  for (const char* name : {"MyName.h", "MyName.cpp", "MyName_1.cpp", "MyName_2.cpp"}) {
    EXPECT_THAT(Content(std::string("a/b/") + name),
                StartsWith("// Generated from good.exp by velmar-express 3.1. Do not edit.\n"));
  }
}

TEST_F(Program, RegistryNameIsTheSchemasNameUnlessGivenAndUpperCase) {
  EXPECT_EQ(Run("generate good.exp --parts 1"), 0);
  EXPECT_THAT(Content("Good.cpp"), HasSubstr("RegisterAs(\"GOOD\")"));
  EXPECT_EQ(Run("generate good.exp --parts 1 --registry-name better"), 0);
  EXPECT_THAT(Content("Better.cpp"), HasSubstr("RegisterAs(\"BETTER\")"));
}

TEST_F(Program, FilesAreLeftAloneUnlessTheirTextChanges) {
  ASSERT_EQ(Run("generate good.exp"), 0);
  const fs::file_time_type old = fs::last_write_time(folder_ / "Good.h") - std::chrono::hours(1);
  fs::last_write_time(folder_ / "Good.h", old);
  fs::last_write_time(folder_ / "Good_1.cpp", old);
  Write("Good_1.cpp", "changed");
  ASSERT_EQ(Run("generate good.exp"), 0);
  EXPECT_EQ(fs::last_write_time(folder_ / "Good.h"), old);
  EXPECT_THAT(Content("Good_1.cpp"), StartsWith("// Generated"));
}

TEST_F(Program, DepfileNamesTheTextsThatWereRead) {
  fs::create_directories(folder_ / "more # texts");
  Write("main.exp", "SCHEMA main; USE FROM one; END_SCHEMA; SCHEMA other; END_SCHEMA;");
  Write("more # texts/one.exp", "SCHEMA one; USE FROM two; END_SCHEMA;");
  Write("more # texts/two.exp", "SCHEMA two; ENTITY e; END_ENTITY; END_SCHEMA;");
  Write("more # texts/three.exp", "SCHEMA three; END_SCHEMA;");
  ASSERT_EQ(Run("generate main.exp -I 'more # texts' --depfile d --depfile-target 'a $ stamp'"), 0);
  EXPECT_EQ(
      Content("d"),
      "a\\ $$\\ stamp: \\\n  main.exp \\\n  more\\ \\#\\ texts/one.exp \\\n  more\\ \\#\\ texts/two.exp\n");
}

TEST_F(Program, DepfileAndItsTargetComeTogether) {
  EXPECT_EQ(Run("generate good.exp --depfile d"), 2);
  EXPECT_EQ(Run("generate good.exp --depfile-target t"), 2);
  EXPECT_FALSE(fs::exists(folder_ / "d"));
}

TEST_F(Program, NothingIsWrittenForASchemaWithErrors) {
  EXPECT_EQ(Run("generate bad.exp --output-dir out --depfile d --depfile-target t"), 1);
  EXPECT_FALSE(fs::exists(folder_ / "out"));
  EXPECT_FALSE(fs::exists(folder_ / "d"));
}

TEST_F(Program, FolderThatCannotBeWrittenIsReported) {
  EXPECT_EQ(Run("generate good.exp --output-dir good.exp/x"), 2);
  EXPECT_THAT(Content("stderr.txt"), HasSubstr("velmar-express: "));
}

TEST_F(Program, SchemaIsChosenByName) {
  Write("two.exp", "SCHEMA one; END_SCHEMA; SCHEMA two; END_SCHEMA;");
  EXPECT_EQ(Run("generate two.exp"), 0);
  EXPECT_TRUE(fs::exists(folder_ / "Two.h"));
  EXPECT_FALSE(fs::exists(folder_ / "One.h"));
  EXPECT_EQ(Run("generate two.exp --schema ONE"), 0);
  EXPECT_TRUE(fs::exists(folder_ / "One.h"));
}

}  // namespace
}  // namespace VELMAR::Express
