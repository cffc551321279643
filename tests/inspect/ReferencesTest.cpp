#include <gtest/gtest.h>

#include <string>

#include "Reading.h"
#include "References.h"
#include "RunProgram.h"
#include "SampleFiles.h"

namespace velmar {
namespace {

// "1: #3 VERTEX_POINT.vertex_geometry>1": level, from where through what, to where; "!" where it was met
// before.
std::string References(const std::string& data, int number, int depth) {
  TemporaryDirectory directory;
  Reading reading(WriteFile(directory.Path("in.stp"), FileWith(data)));
  std::string text;
  for (const Reference& reference : ReferencesTo(reading.GetPopulation(), number, depth)) {
    text += std::to_string(reference.level) + ": #" + std::to_string(reference.from) + " " + *reference.type +
            "." + *reference.attribute + ">" + std::to_string(reference.to) +
            (reference.isFirst ? "\n" : "!\n");
  }
  return text;
}

const std::string kData =
    "#1=CARTESIAN_POINT('',(1.,2.));\n"
    "#2=VERTEX_POINT('',#1);\n"
    "#3=POLYLINE('',(#1,#4,#1));\n"
    "#4=CARTESIAN_POINT('',(1.,2.));\n"
    "#5=EDGE_CURVE('',#2,#2,#3,.T.);\n";

TEST(ReferencesTo, NameTheAttributeOnceHoweverOftenItRefers) {
  EXPECT_EQ(References(kData, 1, 1), "1: #2 VERTEX_POINT.vertex_geometry>1\n1: #3 POLYLINE.points>1\n");
}

TEST(ReferencesTo, NothingAreNone) { EXPECT_EQ(References(kData, 5, 0), ""); }

TEST(ReferencesTo, AreFollowedToTheDepth) {
  const std::string direct = References(kData, 1, 1);
  const std::string indirect =
      "2: #5 EDGE_CURVE.edge_start>2\n2: #5 EDGE_CURVE.edge_end>2!\n2: #5 EDGE_CURVE.edge_geometry>3!\n";
  EXPECT_EQ(References(kData, 1, 2), direct + indirect);
  EXPECT_EQ(References(kData, 1, 0), direct + indirect);
}

TEST(ReferencesTo, CirclesEnd) {
  EXPECT_EQ(References("#1=VECTOR('',#2,1.);\n#2=VECTOR('',#1,1.);\n", 1, 0),
            "1: #2 VECTOR.orientation>1\n2: #1 VECTOR.orientation>2!\n");
  EXPECT_EQ(References("#1=VECTOR('',#1,1.);\n", 1, 0), "1: #1 VECTOR.orientation>1!\n");
}

TEST(ReferencesTo, OfComplexInstancesNameThePartAndNoInheritedCopy) {
  EXPECT_EQ(References("#1=DIMENSIONAL_EXPONENTS(1.,0.,0.,0.,0.,0.,0.);\n"
                       "#2=(CONTEXT_DEPENDENT_UNIT('x')LENGTH_UNIT()NAMED_UNIT(#1));\n",
                       1, 1),
            "1: #2 NAMED_UNIT.dimensions>1\n");
}

}  // namespace
}  // namespace velmar
