#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "Instances.h"
#include "Reading.h"
#include "RunProgram.h"
#include "SampleFiles.h"
#include "Values.h"

namespace velmar {
namespace {

// The only instance of a file, and its attributes.
class Values : public testing::Test {
 protected:
  VELMAR::ExpAttribute& Read(const std::string& record, std::size_t index) {
    reading_ =
        std::make_unique<Reading>(WriteFile(directory_.Path("in.stp"), FileWith("#1=" + record + ";\n")));
    view_ = ViewOf(*reading_->GetPopulation().GetEntity(1));
    return *view_.records.at(0).attributes.at(index).value;
  }
  std::string Text(const std::string& record, std::size_t index) { return TextOf(Read(record, index)); }
  std::string Cell(const std::string& record, std::size_t index) { return CellOf(Read(record, index)); }
  std::string JsonText(const std::string& record, std::size_t index) {
    return JsonOf(Read(record, index)).dump();
  }
  std::vector<int> Links(const std::string& record, std::size_t index) {
    std::vector<int> links;
    AddLinksOf(Read(record, index), links);
    std::sort(links.begin(), links.end());
    return links;
  }

  TemporaryDirectory directory_;
  std::unique_ptr<Reading> reading_;
  InstanceView view_;
};

TEST_F(Values, StringsAreUtf8WithTheirApostrophesDoubledAsText) {
  const std::string record = "CARTESIAN_POINT('it''s \\X2\\00E4\\X0\\ \\\\',(1.))";
  EXPECT_EQ(Text(record, 0), "'it''s \xC3\xA4 \\'");
  EXPECT_EQ(Cell(record, 0), "it's \xC3\xA4 \\");
  EXPECT_EQ(JsonText(record, 0), "\"it's \xC3\xA4 \\\\\"");
}

TEST_F(Values, AnEmptyStringIsAText) {
  EXPECT_EQ(Text("CARTESIAN_POINT('',(1.))", 0), "''");
  EXPECT_EQ(Cell("CARTESIAN_POINT('',(1.))", 0), "");
  EXPECT_EQ(JsonText("CARTESIAN_POINT('',(1.))", 0), "\"\"");
}

TEST_F(Values, ListsOfNumbersKeepRealsApartFromIntegers) {
  EXPECT_EQ(Text("CARTESIAN_POINT('',(1.,-2.5E-3,100.))", 1), "(1., -0.0025, 100.)");
  EXPECT_EQ(JsonText("CARTESIAN_POINT('',(1.,-2.5E-3,100.))", 1), "[1.0,-0.0025,100.0]");
  EXPECT_EQ(JsonText("POLYLINE('',())", 1), "[]");
  EXPECT_EQ(JsonText("APPLICATION_PROTOCOL_DEFINITION('','',2010,#2)", 2), "2010");
}

TEST_F(Values, UnsetAndDerivedOnesAreNull) {
  EXPECT_EQ(Text("PRODUCT('','',$,(#2))", 2), "$");
  EXPECT_EQ(Cell("PRODUCT('','',$,(#2))", 2), "");
  EXPECT_EQ(JsonText("PRODUCT('','',$,(#2))", 2), "null");
  EXPECT_EQ(Text("ORIENTED_EDGE('',*,*,#2,.T.)", 1), "*");
  EXPECT_EQ(Cell("ORIENTED_EDGE('',*,*,#2,.T.)", 1), "");
  EXPECT_EQ(JsonText("ORIENTED_EDGE('',*,*,#2,.T.)", 1), "{\"omitted\":true}");
}

TEST_F(Values, EnumerationItemsAndBooleansAreNames) {
  EXPECT_EQ(Text("ORIENTED_EDGE('',*,*,#2,.T.)", 4), ".T.");
  EXPECT_EQ(Cell("ORIENTED_EDGE('',*,*,#2,.T.)", 4), "T");
  EXPECT_EQ(JsonText("ORIENTED_EDGE('',*,*,#2,.T.)", 4), "{\"enum\":\"T\"}");
}

TEST_F(Values, ReferencesAreNumbers) {
  EXPECT_EQ(Text("VERTEX_POINT('',#2)", 1), "#2");
  EXPECT_EQ(JsonText("VERTEX_POINT('',#2)", 1), "{\"ref\":2}");
  EXPECT_EQ(JsonText("POLYLINE('',(#2,#3))", 1), "[{\"ref\":2},{\"ref\":3}]");
}

TEST_F(Values, TypedOnesCarryTheirTypeNames) {
  EXPECT_EQ(Text("MEASURE_WITH_UNIT(LENGTH_MEASURE(2.5),#2)", 0), "LENGTH_MEASURE(2.5)");
  EXPECT_EQ(JsonText("MEASURE_WITH_UNIT(LENGTH_MEASURE(2.5),#2)", 0),
            "{\"type\":\"LENGTH_MEASURE\",\"value\":2.5}");
  EXPECT_EQ(JsonText("MEASURE_WITH_UNIT(DESCRIPTIVE_MEASURE('A(B('),#2)", 0),
            "{\"type\":\"DESCRIPTIVE_MEASURE\",\"value\":\"A(B(\"}");
  EXPECT_EQ(JsonText("MEASURE_WITH_UNIT(A(B(1)),#2)", 0),
            "{\"type\":\"A\",\"value\":{\"type\":\"B\",\"value\":1}}");
  EXPECT_EQ(JsonText("MEASURE_WITH_UNIT(LENGTH_MEASURE(2.5),#2)", 1),
            "{\"ref\":2}");  // a select without a name
}

TEST_F(Values, ASelectWithoutAValueIsUnset) {
  VELMAR::ExpSelect select;
  EXPECT_EQ(TextOf(select), "$");
  EXPECT_EQ(JsonOf(select).dump(), "null");
}

TEST_F(Values, ThatAreNestedTooDeeplyForJsonAreTexts) {
  const std::string deep = std::string(150, '(') + "1" + std::string(150, ')');
  const std::string json = JsonText("POLYLINE(''," + deep + ")", 1);
  EXPECT_EQ(json, std::string(101, '[') + "{\"part21\":\"" + std::string(49, '(') + "1" +
                      std::string(49, ')') + "\"}" + std::string(101, ']'));
}

TEST_F(Values, ThatAreInfiniteAreTexts) {
  EXPECT_EQ(JsonOf(*std::make_unique<VELMAR::ExpReal>(std::numeric_limits<double>::infinity())).dump(),
            "{\"part21\":\"inf\"}");
}

TEST_F(Values, LinksAreFoundInListsAndSelects) {
  EXPECT_EQ(Links("POLYLINE('',(#2,#3,#2))", 1), (std::vector<int>{2, 2, 3}));
  EXPECT_EQ(Links("PRESENTATION_STYLE_ASSIGNMENT((#5,#4))", 0), (std::vector<int>{4, 5}));
  EXPECT_EQ(Links("MEASURE_WITH_UNIT(LENGTH_MEASURE(2.5),#2)", 1), (std::vector<int>{2}));
  EXPECT_EQ(Links("MEASURE_WITH_UNIT(LENGTH_MEASURE(2.5),#2)", 0), (std::vector<int>{}));
  EXPECT_EQ(Links("ORIENTED_EDGE('',*,*,#2,.T.)", 1), (std::vector<int>{}));
}

TEST_F(Values, WhatHasNoPlaceInItsAttributeIsShownAsItStands) {
  const std::string record = "DIRECTION(\"0AF\",(12345678901,-12345678901234567890,$,*,.X.,\"1\"),!T(2))";
  EXPECT_EQ(Text(record, 0), "\"0AF\"");
  EXPECT_EQ(Text(record, 1), "(12345678901, -12345678901234567890, $, *, .X., \"1\")");
  EXPECT_EQ(Text(record, 2), "!T(2)");
  EXPECT_EQ(JsonText(record, 0), R"({"binary":"0AF"})");
  EXPECT_EQ(JsonText(record, 1),
            R"([12345678901,{"part21":"-12345678901234567890"},null,{"omitted":true},{"enum":"X"},{"binary":"1"}])");
  EXPECT_EQ(JsonText(record, 2), R"({"type":"!T","value":2})");
  EXPECT_EQ(*view_.records[0].attributes[2].name, "3");
}

TEST_F(Values, OfAnUnknownTypeAreNamedByTheirPosition) {
  const std::string record = "VEKTOR('a',#2)";
  EXPECT_EQ(Text(record, 1), "#2");
  EXPECT_EQ(Links(record, 1), (std::vector<int>{2}));
  EXPECT_EQ(view_.type, "VEKTOR");
  ASSERT_EQ(view_.records[0].attributes.size(), 2u);
  EXPECT_EQ(*view_.records[0].attributes[1].name, "2");
}

TEST_F(Values, SurplusOfAPartCountsFromTheBeginningOfItsRecord) {
  EXPECT_EQ(Text("(SI_UNIT($,.METRE.,7)NAMED_UNIT(*)LENGTH_UNIT())", 2), "7");
  EXPECT_EQ(*view_.records[0].attributes[2].name, "3");
}

}  // namespace
}  // namespace velmar
