// Files as databases, asked by the program sqlite3.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <string>

#include "RunProgram.h"
#include "SampleFiles.h"
#include "SqliteFormat.h"
#include "WrittenFile.h"

namespace velmar {
namespace {

namespace fs = std::filesystem;

class Sqlite : public testing::Test {
 protected:
  void SetUp() override {
    if (std::string(SQLITE_PROGRAM).empty()) GTEST_SKIP() << "there is no program sqlite3";
  }
  void Write(const std::string& data) {
    LoadAllLibraries();
    RecordTypes types("AUTOMOTIVE_DESIGN");
    const std::uint64_t size = WriteSqlite(FileWith(data), types, path_);
    EXPECT_EQ(size, fs::file_size(path_));
  }
  // A line for each row, with `|` between values.
  std::string Ask(const std::string& sql) {
    const Outcome outcome = RunProgram({SQLITE_PROGRAM, "-readonly", "-nullvalue", "NULL", path_, sql});
    return outcome.out + outcome.err;
  }
  std::string Answer(const std::string& data, const std::string& sql) {
    Write(data);
    return Ask(sql);
  }

  TemporaryDirectory directory_;
  const std::string path_ = directory_.Path("file.db");
};

TEST_F(Sqlite, EachTypeHasATable) {
  Write(kPoint + "#3=VERTEX_POINT('v',#1);\n#4=VERTEX_POINT($,#1);\n");
  EXPECT_EQ(Ask("SELECT * FROM vertex_point"), "3|v|1\n4|NULL|1\n");
  EXPECT_EQ(Ask("SELECT typeof(id), typeof(name), typeof(vertex_geometry) FROM vertex_point"),
            "integer|text|integer\ninteger|null|integer\n");
  EXPECT_EQ(Ask("SELECT * FROM instance"), "1|CARTESIAN_POINT\n3|VERTEX_POINT\n4|VERTEX_POINT\n");
  EXPECT_EQ(Ask("PRAGMA integrity_check"), "ok\n");
}

TEST_F(Sqlite, ElementsOfAggregatesStandInATableOfTheirOwn) {
  Write(kPoint + "#2=CARTESIAN_POINT('',());\n");
  EXPECT_EQ(Ask("SELECT * FROM cartesian_point"), "1|p\n2|\n");
  EXPECT_EQ(Ask("SELECT *, typeof(value) FROM cartesian_point_coordinates"), "1|1|1.0|real\n1|2|2.0|real\n1|3|3.0|real\n");
}

TEST_F(Sqlite, ATableOfElementsIsThereWithoutElements) {
  EXPECT_EQ(Answer("#2=CARTESIAN_POINT('',());\n", "SELECT count(*) FROM cartesian_point_coordinates"), "0\n");
}

TEST_F(Sqlite, NestedAggregatesHaveAPositionForEachLevel) {
  Write("#1=B_SPLINE_SURFACE('',1,1,((#5,#6),(),(#7)),.UNSPECIFIED.,.F.,.F.,.U.);\n");
  EXPECT_EQ(Ask("SELECT * FROM b_spline_surface_control_points_list"), "1|1|1|5\n1|1|2|6\n1|3|1|7\n");
  EXPECT_EQ(Ask("SELECT * FROM b_spline_surface"), "1||1|1|UNSPECIFIED|F|F|U\n");
}

TEST_F(Sqlite, WhatIsNestedDeeperIsText) {
  EXPECT_EQ(Answer("#1=VECTOR('',$,1.);\n#2=DIRECTION('',(1.,(2.,(3.,(4.,(5.))))));\n",
                   "SELECT position, position_2, position_3, value, typeof(value) FROM direction_direction_ratios"),
            "1|0|0|1.0|real\n2|1|0|2.0|real\n2|2|1|3.0|real\n2|2|2|(4., (5.))|text\n");
}

TEST_F(Sqlite, ASelectHasAColumnForTheTypeOfItsValue) {
  Write("#6=MEASURE_WITH_UNIT(LENGTH_MEASURE(2.5),#5);\n#7=MEASURE_WITH_UNIT(DESCRIPTIVE_MEASURE('it''s'),$);\n"
        "#8=MEASURE_WITH_UNIT(A((1,2)),*);\n#9=MEASURE_WITH_UNIT(A(B(1)),$);\n#10=MEASURE_WITH_UNIT(A(1,2),$);\n");
  EXPECT_EQ(Ask("SELECT *, typeof(value_component) FROM measure_with_unit"),
            "6|2.5|LENGTH_MEASURE|5|NULL|real\n7|it's|DESCRIPTIVE_MEASURE|NULL|NULL|text\n8|(1, 2)|A|NULL|NULL|text\n"
            "9|B(1)|A|NULL|NULL|text\n10|A(1, 2)|NULL|NULL|NULL|text\n");
}

TEST_F(Sqlite, ValuesThatDoNotFitAreText) {
  Write("#1=VECTOR(5,'12',#3);\n#2=VECTOR(\"0F\",99999999999999999999,1.E400);\n#3=VERTEX_POINT('',#99999999999999999999);\n");
  EXPECT_EQ(Ask("SELECT *, typeof(orientation) FROM vector"), "1|5|'12'|#3|text\n2|\"0F\"|1.0e+20|Inf|real\n");
  EXPECT_EQ(Ask("SELECT vertex_geometry FROM vertex_point"), "#99999999999999999999\n");
}

TEST_F(Sqlite, NamesThatAreTakenHaveALineBehindThem) {
  Write("#7=PRODUCT('P1','part',$,(#8,#9));\n");
  EXPECT_EQ(Ask("SELECT id, id_, name FROM product"), "7|P1|part\n");
  EXPECT_EQ(Ask("SELECT * FROM product_frame_of_reference"), "7|1|8\n7|2|9\n");
}

TEST_F(Sqlite, TypesMayBeNamedLikeWordsOfSql) {
  EXPECT_EQ(Answer("#1=GROUP('g','text');\n", "SELECT * FROM \"group\""), "1|g|text\n");
}

TEST_F(Sqlite, UnknownTypesHaveColumnsForTheirValues) {
  Write("#1=VEKTOR();\n#2=VEKTOR('a',(1,#2),#7,.T.,2.5);\n#3=!VEKTOR(1);\n#4=DIRECTION('',(1.),'more');\n");
  EXPECT_EQ(Ask("SELECT * FROM vektor"), "1|NULL|NULL|NULL|NULL|NULL\n2|a|(1, #2)|7|T|2.5\n");
  EXPECT_EQ(Ask("SELECT * FROM \"!vektor\""), "3|1\n");
  EXPECT_EQ(Ask("SELECT * FROM direction"), "4||more\n");
}

TEST_F(Sqlite, TheHeaderIsATable) {
  Write("");
  EXPECT_EQ(Ask("SELECT * FROM header WHERE record = 'FILE_DESCRIPTION' OR attribute = 'author'"),
            "FILE_DESCRIPTION|description|1|a test\nFILE_DESCRIPTION|implementation_level|NULL|2;1\n"
            "FILE_NAME|author|1|A\nFILE_NAME|author|2|B\n");
}

const char kUnits[] =
    "#5=(LENGTH_UNIT()NAMED_UNIT(#9)SI_UNIT(.MILLI.,.METRE.));\n#6=SI_UNIT(*,$,.RADIAN.);\n#7=NAMED_UNIT(#9);\n";

TEST_F(Sqlite, PartsOfAComplexInstanceStandInTheTablesOfTheirTypes) {
  Write(kUnits);
  EXPECT_EQ(Ask("SELECT * FROM si_unit"), "5|9|MILLI|METRE\n6|NULL|NULL|RADIAN\n");
  EXPECT_EQ(Ask("SELECT * FROM part"), "5|LENGTH_UNIT\n5|NAMED_UNIT\n5|SI_UNIT\n");
  EXPECT_EQ(Ask("SELECT * FROM instance"), "5|(LENGTH_UNIT NAMED_UNIT SI_UNIT)\n6|SI_UNIT\n7|NAMED_UNIT\n");
}

TEST_F(Sqlite, AViewHasTheInstancesOfAllSubtypesOnce) {
  Write(kUnits);
  EXPECT_EQ(Ask("SELECT * FROM any_named_unit ORDER BY id"), "5|(LENGTH_UNIT NAMED_UNIT SI_UNIT)|9\n6|SI_UNIT|NULL\n7|NAMED_UNIT|9\n");
}

TEST_F(Sqlite, AViewIsThereForATypeWithoutSubtypes) {
  Write(kPoint);
  EXPECT_EQ(Ask("SELECT * FROM any_cartesian_point"), "1|CARTESIAN_POINT|p\n");
  EXPECT_EQ(Ask("SELECT value FROM any_cartesian_point_coordinates"), "1.0\n2.0\n3.0\n");
}

TEST_F(Sqlite, AViewIsThereForASupertypeWithoutInstancesOfItsOwn) {
  Write(kPoint + "#2=(BOUNDED_CURVE()B_SPLINE_CURVE(1,(#1,#1),.UNSPECIFIED.,.F.,.U.)CURVE()GEOMETRIC_REPRESENTATION_ITEM()"
                 "RATIONAL_B_SPLINE_CURVE((1.,2.))REPRESENTATION_ITEM('c'));\n");
  EXPECT_EQ(Ask("SELECT * FROM any_point"), "1|CARTESIAN_POINT|p\n");
  const std::string name = "(BOUNDED_CURVE B_SPLINE_CURVE CURVE GEOMETRIC_REPRESENTATION_ITEM RATIONAL_B_SPLINE_CURVE REPRESENTATION_ITEM)";
  EXPECT_EQ(Ask("SELECT * FROM any_representation_item ORDER BY id"), "1|CARTESIAN_POINT|p\n2|" + name + "|c\n");
  EXPECT_EQ(Ask("SELECT degree, closed_curve, type, name FROM any_b_spline_curve"), "1|F|" + name + "|c\n");
  EXPECT_EQ(Ask("SELECT * FROM rational_b_spline_curve_weights_data"), "2|1|1.0\n2|2|2.0\n");
}

TEST_F(Sqlite, AViewHasTheElementsOfAnAttributeOfAllSubtypesOnce) {
  Write("#1=FACE_SURFACE('',(#2,#3),#4,.T.);\n#5=ADVANCED_FACE('',(#6),#4,.T.);\n"
        "#7=(BOUNDED_SURFACE()B_SPLINE_SURFACE(1,1,((#8,#9)),.UNSPECIFIED.,.F.,.F.,.U.)GEOMETRIC_REPRESENTATION_ITEM()"
        "RATIONAL_B_SPLINE_SURFACE(((1.,2.)))REPRESENTATION_ITEM('')SURFACE());\n");
  EXPECT_EQ(Ask("SELECT * FROM any_face_bounds ORDER BY id"), "1|1|2\n1|2|3\n5|1|6\n");
  EXPECT_EQ(Ask("SELECT * FROM any_b_spline_surface_control_points_list"), "7|1|1|8\n7|1|2|9\n");
}

TEST_F(Sqlite, ADatabaseThatIsThereIsReplaced) {
  Write(kPoint);
  fs::permissions(path_, fs::perms::owner_read | fs::perms::owner_write);
  Write(kPoint + "#2=VECTOR('',$,1.);\n");
  EXPECT_EQ(Ask("SELECT count(*) FROM instance"), "2\n");
  EXPECT_EQ(fs::status(path_).permissions(), fs::perms::owner_read | fs::perms::owner_write);
  EXPECT_EQ(std::distance(fs::directory_iterator(directory_.Path("")), {}), 1);
}

TEST_F(Sqlite, WhatIsNoFileIsRefused) {
  RecordTypes types("AUTOMOTIVE_DESIGN");
  EXPECT_THROW(WriteSqlite(FileWith(kPoint), types, "/dev/null"), std::runtime_error);
  EXPECT_THROW(WriteSqlite(FileWith(kPoint), types, directory_.Path("none/file.db")), std::runtime_error);
  EXPECT_TRUE(fs::is_empty(directory_.Path("")));
}

}  // namespace
}  // namespace velmar
