#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "Instances.h"
#include "Listing.h"
#include "Reading.h"
#include "RunProgram.h"
#include "SampleFiles.h"
#include "Values.h"

namespace velmar {
namespace {

class ListingOf : public testing::Test {
 protected:
  ListingOf()
      : reading_(WriteFile(directory_.Path("in.stp"),
                           FileWith("#1=CARTESIAN_POINT('p',(1.,2.));\n"
                                    "#2=(LENGTH_UNIT()NAMED_UNIT(*)SI_UNIT(.MILLI.,.METRE.));\n"
                                    "#3=VERTEX_POINT('v',#1);\n"
                                    "#4=VERTEX('w');\n"
                                    "#5=VERTEX('replaced');\n"
                                    "#5=COLOUR();\n"))) {}

  // A line for each row: the number, the type and the values.
  std::string List(const ListingRequest& request) {
    std::string text;
    for (const Listing::Row& row : ListInstances(reading_.GetPopulation(), request).rows) {
      text += std::to_string(row.number) + " " + row.type;
      for (VELMAR::ExpAttribute* value : row.values) text += "|" + (value == nullptr ? "-" : TextOf(*value));
      text += "\n";
    }
    return text;
  }

  TemporaryDirectory directory_;
  Reading reading_;
};

TEST_F(ListingOf, ATypeHasItsSubtypesAndTheAttributesOfTheType) {
  EXPECT_EQ(List({"vertex", false, {}}), "3 VERTEX_POINT|'v'\n4 VERTEX|'w'\n");
}

TEST_F(ListingOf, AnExactTypeHasNone) { EXPECT_EQ(List({"VERTEX", true, {}}), "4 VERTEX|'w'\n"); }

TEST_F(ListingOf, AttributesMayBeThoseOfSubtypes) {
  EXPECT_EQ(List({"Vertex", false, {"Vertex_Geometry", "name"}}), "3 VERTEX_POINT|#1|'v'\n4 VERTEX|-|'w'\n");
}

TEST_F(ListingOf, AComplexInstanceIsThereOnceWhicheverPartIsMeant) {
  const std::string name = "2 (LENGTH_UNIT NAMED_UNIT SI_UNIT)";
  EXPECT_EQ(List({"NAMED_UNIT", false, {"name", "dimensions"}}), name + "|.METRE.|*\n");
  EXPECT_EQ(List({"SI_UNIT", true, {"prefix"}}), name + "|.MILLI.\n");
  EXPECT_EQ(List({"LENGTH_UNIT", true, {"dimensions"}}), name + "|*\n");
}

TEST_F(ListingOf, InstancesThatWereReplacedAreNotListed) {
  EXPECT_EQ(List({"COLOUR", false, {}}), "5 COLOUR\n");
  EXPECT_EQ(List({"VERTEX", true, {}}), "4 VERTEX|'w'\n");
}

TEST_F(ListingOf, AnUnknownTypeOrAttributeIsRefused) {
  EXPECT_THROW(List({"NO_SUCH_TYPE", false, {}}), std::invalid_argument);
  EXPECT_THROW(List({"", false, {}}), std::invalid_argument);
  EXPECT_THROW(List({"VERTEX", false, {"no_such_attribute"}}), std::invalid_argument);
  EXPECT_THROW(List({"VERTEX_POINT", false, {"coordinates"}}), std::invalid_argument);
}

TEST(ParseInstanceNumber, TakesNumbersWithAndWithoutTheSign) {
  EXPECT_EQ(ParseInstanceNumber("#12"), 12);
  EXPECT_EQ(ParseInstanceNumber("12"), 12);
  EXPECT_EQ(ParseInstanceNumber("1073741823"), 1073741823);
  for (const char* text :
       {"", "#", "0", "#0", "-1", "1x", "##1", "1073741824", "99999999999999999999999", " 1"}) {
    EXPECT_THROW(ParseInstanceNumber(text), std::invalid_argument) << text;
  }
}

TEST_F(ListingOf, PlacesAreThoseOfTheInstancesThatAreKept) {
  const auto places = FindPlaces(directory_.Path("in.stp"), {2, 5, 99});
  ASSERT_EQ(places.size(), 2u);
  EXPECT_EQ(places.at(2).line, 9);
  EXPECT_EQ(places.at(5).line, 13);
}

TEST(Listing, ATypeThatTheSchemaLacksHasThePositionsOfItsParameters) {
  TemporaryDirectory directory;
  Reading reading(WriteFile(directory.Path("in.stp"),
                            FileWith("#1=VEKTOR('a');\n#2=!VEKTOR('b',#1);\n#3=(VEKTOR('c')LENGTH_UNIT());\n#4=COLOUR();\n")));
  const Listing all = ListInstances(reading.GetPopulation(), {"vektor", false, {}});
  EXPECT_EQ(all.attributes, (std::vector<std::string>{"1", "2"}));
  ASSERT_EQ(all.rows.size(), 3u);
  EXPECT_EQ(all.rows[0].values[1], nullptr);
  EXPECT_EQ(all.rows[1].type, "!VEKTOR");
  EXPECT_EQ(TextOf(*all.rows[1].values[1]), "#1");
  EXPECT_EQ(all.rows[2].type, "(LENGTH_UNIT VEKTOR)");
  EXPECT_EQ(TextOf(*all.rows[2].values[0]), "'c'");
  EXPECT_EQ(ListInstances(reading.GetPopulation(), {"VEKTOR", false, {"2"}}).rows.size(), 3u);
  EXPECT_THROW(ListInstances(reading.GetPopulation(), {"VEKTOR", false, {"3"}}), std::invalid_argument);
}

TEST(Listing, HasWhatAnAttributeDoesNotTake) {
  TemporaryDirectory directory;
  Reading reading(WriteFile(directory.Path("in.stp"), FileWith("#1=DIRECTION(5,(1.,0.));\n")));
  const Listing listing = ListInstances(reading.GetPopulation(), {"direction", false, {"name"}});
  ASSERT_EQ(listing.rows.size(), 1u);
  EXPECT_EQ(TextOf(*listing.rows[0].values[0]), "5");
}

}  // namespace
}  // namespace velmar
