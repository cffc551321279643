// Files as folders of tables.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <string>

#include "CsvFormat.h"
#include "RunProgram.h"
#include "SampleFiles.h"
#include "WrittenFile.h"

namespace velmar {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::Pair;

using Files = std::map<std::string, std::string>;

class Csv : public testing::Test {
 protected:
  Files Written(const std::string& part21) {
    LoadAllLibraries();
    RecordTypes types("AUTOMOTIVE_DESIGN");
    const std::uint64_t size = WriteCsv(part21, types, folder_);
    Files files;
    std::uint64_t sum = 0;
    for (const auto& entry : fs::directory_iterator(folder_)) {
      files[entry.path().filename().string()] = ReadFile(entry.path().string());
      sum += entry.file_size();
    }
    EXPECT_EQ(size, sum);
    return files;
  }
  // But for the header.
  Files TablesOf(const std::string& data) {
    Files files = Written(FileWith(data));
    files.erase("header.csv");
    return files;
  }

  TemporaryDirectory directory_;
  const std::string folder_ = directory_.Path("tables");
};

TEST(CsvLine, QuotesWhatNeedsIt) {
  EXPECT_EQ(CsvLine({"a", "", "b c"}), "a,,b c");
  EXPECT_EQ(CsvLine({"a,b", "say \"x\"", "two\nlines", "\r"}), "\"a,b\",\"say \"\"x\"\"\",\"two\nlines\",\"\r\"");
}

TEST_F(Csv, EachTypeHasAFile) {
  EXPECT_THAT(TablesOf(kPoint + "#2=CARTESIAN_POINT('a, \"b\"',(1.5));\n#3=VERTEX_POINT($,#1);\n"),
              ElementsAre(Pair("cartesian_point.csv",
                               "id,name,coordinates\n#1,p,\"(1., 2., 3.)\"\n#2,\"a, \"\"b\"\"\",(1.5)\n"),
                          Pair("vertex_point.csv", "id,name,vertex_geometry\n#3,,#1\n")));
}

TEST_F(Csv, TheHeaderHasAFileOfItsOwn) {
  EXPECT_EQ(Written(FileWith(""))["header.csv"],
            "record,attribute,value\n"
            "FILE_DESCRIPTION,description,('a test')\n"
            "FILE_DESCRIPTION,implementation_level,2;1\n"
            "FILE_NAME,name,t.stp\n"
            "FILE_NAME,time_stamp,2026-01-01T00:00:00\n"
            "FILE_NAME,author,\"('A', 'B')\"\n"
            "FILE_NAME,organization,('O')\n"
            "FILE_NAME,preprocessor_version,P\n"
            "FILE_NAME,originating_system,S\n"
            "FILE_NAME,authorization,Z\n"
            "FILE_SCHEMA,schema_identifiers,('AUTOMOTIVE_DESIGN')\n");
}

TEST_F(Csv, AnAttributeNamedLikeTheNumberHasALineBehindIt) {
  EXPECT_THAT(TablesOf("#7=PRODUCT('P1','part','two\nlines \\X\\E4',());\n"),
              ElementsAre(Pair("product.csv", "id,id_,name,description,frame_of_reference\n#7,P1,part,\"two\nlines ä\",()\n")));
}

TEST_F(Csv, PartsOfAComplexInstanceHaveWhatTheyInherit) {
  EXPECT_THAT(TablesOf("#5=(LENGTH_UNIT()NAMED_UNIT(#9)SI_UNIT(.MILLI.,.METRE.));\n"),
              ElementsAre(Pair("length_unit.csv", "id,dimensions\n#5,#9\n"), Pair("named_unit.csv", "id,dimensions\n#5,#9\n"),
                          Pair("si_unit.csv", "id,dimensions,prefix,name\n#5,#9,MILLI,METRE\n")));
}

TEST_F(Csv, ColumnsWithoutAttributesAreNumbered) {
  EXPECT_THAT(TablesOf("#1=VEKTOR();\n#2=VEKTOR('a\nb',A(1),.T.);\n#3=VEKTOR(*);\n#4=DIRECTION('',(1.),'more');\n#5=DIRECTION('',(1.));\n#6=!VEKTOR();\n"),
              ElementsAre(Pair("!vektor.csv", "id\n#6\n"),
                          Pair("direction.csv", "id,name,direction_ratios,value_3\n#4,,(1.),more\n#5,,(1.),\n"),
                          Pair("vektor.csv", "id,value_1,value_2,value_3\n#1,,,\n#2,\"a\nb\",A(1),T\n#3,,,\n")));
}

TEST_F(Csv, AFolderThatIsNotEmptyIsRefusedAndAnEmptyOneIsNot) {
  EXPECT_EQ(WhyNoFolder(folder_), "");
  EXPECT_EQ(WhyNoFolder(folder_ + "/"), "");
  fs::create_directory(folder_);
  EXPECT_EQ(WhyNoFolder(folder_), "");
  EXPECT_EQ(TablesOf(kPoint).size(), 1u);
  EXPECT_EQ(WhyNoFolder(folder_), "is a folder that is not empty");
  EXPECT_EQ(WhyNoFolder(folder_ + "/"), "is a folder that is not empty");
  EXPECT_EQ(WhyNoFolder(folder_ + "/header.csv"), "is no folder");
  EXPECT_EQ(WhyNoFolder(directory_.Path("none/tables")), "cannot be written: No such file or directory");
}

TEST_F(Csv, NothingIsLeftWhereTheFolderCannotTakeItsPlace) {
  fs::create_directory(folder_);
  WriteFile(folder_ + "/mine", "");
  EXPECT_THROW(Written(FileWith(kPoint)), std::runtime_error);
  EXPECT_EQ(std::distance(fs::directory_iterator(directory_.Path("")), {}), 1);
  EXPECT_EQ(std::distance(fs::directory_iterator(folder_), {}), 1);
}

}  // namespace
}  // namespace velmar
