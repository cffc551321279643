// Which products are made of which.
#include "ProductStructure.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "RunProgram.h"
#include "SampleFiles.h"

namespace velmar {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

// A product whose definition is #n, its formation #n+1 and the product itself #n+2.
std::string Product(int n, const std::string& name) {
  const auto number = [n](int i) { return "#" + std::to_string(n + i); };
  return number(0) + "=PRODUCT_DEFINITION('',$," + number(1) + ",#900);\n" + number(1) +
         "=PRODUCT_DEFINITION_FORMATION('1',$," + number(2) + ");\n" + number(2) + "=PRODUCT('" + name + "','" + name +
         "',$,(#901));\n";
}

std::string Usage(int n, int assembly, int component) {
  return "#" + std::to_string(n) + "=NEXT_ASSEMBLY_USAGE_OCCURRENCE('','',$,#" + std::to_string(assembly) + ",#" +
         std::to_string(component) + ",$);\n";
}

class Structure : public testing::Test {
 protected:
  // Of a schema that nobody has: the entities that all have in common are known all the same.
  ProductStructure Read(const std::string& data) {
    const std::string path = WriteFile(directory_.Path("in.stp"), FileWith(data, "NOBODYS"));
    findings_ = Findings(path);
    ProductStructure structure = ReadProductStructure(path, {}, findings_);
    for (const Finding& finding : findings_.WithPlace()) found_.push_back(NameOf(finding.code) + " #" + std::to_string(finding.instance));
    return structure;
  }

  TemporaryDirectory directory_;
  Findings findings_ = Findings("");
  std::vector<std::string> found_;
};

TEST_F(Structure, HasProductsUsagesAndRoots) {
  const ProductStructure structure =
      Read(Product(1, "car") + Product(11, "wheel") + Product(21, "loose") + Usage(30, 1, 11) + Usage(31, 1, 11));
  ASSERT_EQ(structure.products.size(), 3u);
  EXPECT_EQ(structure.products[0].name, "car");
  EXPECT_EQ(structure.products[0].number, 1);
  EXPECT_EQ(structure.products[0].formation, 2);
  EXPECT_EQ(structure.products[0].product, 3);
  EXPECT_EQ(structure.products[0].version, "1");
  EXPECT_THAT(structure.roots, ElementsAre(0, 2));
  ASSERT_EQ(structure.usages.size(), 2u);
  EXPECT_EQ(structure.usages[1].component, 1u);
  const std::vector<Component> grouped = ComponentsOf(structure, 0, true);
  ASSERT_EQ(grouped.size(), 1u);
  EXPECT_THAT(grouped[0].usages, ElementsAre(0, 1));
  EXPECT_EQ(ComponentsOf(structure, 0, false).size(), 2u);
  EXPECT_THAT(found_, IsEmpty());
}

TEST_F(Structure, KnowsUsagesThatAreComplexInstances) {
  const ProductStructure structure =
      Read(Product(1, "car") + Product(11, "wheel") +
           "#30=(ASSEMBLY_COMPONENT_USAGE('R1')NEXT_ASSEMBLY_USAGE_OCCURRENCE()PRODUCT_DEFINITION_RELATIONSHIP('u','n',$,#1,#11)"
           "PRODUCT_DEFINITION_USAGE()QUANTIFIED_ASSEMBLY_COMPONENT_USAGE(#31));\n"
           "#31=LENGTH_MEASURE_WITH_UNIT(LENGTH_MEASURE(2.5),#32);\n"
           "#32=(LENGTH_UNIT()NAMED_UNIT(*)SI_UNIT(.MILLI.,.METRE.));\n");
  ASSERT_EQ(structure.usages.size(), 1u);
  const struct Usage& usage = structure.usages[0];
  EXPECT_EQ(usage.designator, "R1");
  EXPECT_EQ(usage.name, "n");
  ASSERT_TRUE(usage.quantity);
  EXPECT_EQ(usage.quantity->value, "2.5");
  EXPECT_EQ(usage.quantity->type, "LENGTH_MEASURE");
  EXPECT_EQ(usage.quantity->unit, "MILLIMETRE");
}

TEST_F(Structure, OfAssembliesThatContainEachOtherHasOneRoot) {
  const ProductStructure structure = Read(Product(1, "hen") + Product(11, "egg") + Usage(30, 1, 11) + Usage(31, 11, 1));
  EXPECT_THAT(structure.roots, ElementsAre(0));
  EXPECT_THAT(found_, ElementsAre("V046 #1"));
  EXPECT_THAT(findings_.WithPlace()[0].text, HasSubstr("#1 in #11 in #1"));
}

TEST_F(Structure, OfAnAssemblyBelowWhichOthersContainEachOtherHasItsOwnRoot) {
  const ProductStructure structure = Read(Product(1, "hen") + Product(11, "egg") + Product(21, "farm") + Usage(30, 1, 11) +
                                          Usage(31, 11, 1) + Usage(32, 21, 11) + Usage(33, 1, 1));
  EXPECT_THAT(structure.roots, ElementsAre(2));
  EXPECT_THAT(found_, ElementsAre("V046 #1"));
}

TEST_F(Structure, SaysWhereEndsAreMissing) {
  const ProductStructure structure = Read(Product(1, "car") + Usage(30, 1, 99) + Usage(31, 98, 97) +
                                          "#40=PRODUCT_DEFINITION('',$,$,#900);\n"
                                          "#41=PRODUCT_DEFINITION('',$,#42,#900);\n#42=PRODUCT_DEFINITION_FORMATION('',$,#30);\n"
                                          "#43=PRODUCT('','',$,());\n");
  EXPECT_THAT(found_, ElementsAre("V047 #30", "V047 #31", "V047 #31", "V047 #40", "V047 #42", "V048 #43"));
  EXPECT_EQ(structure.products.size(), 4u);
  EXPECT_FALSE(structure.products.back().isDefined);
  EXPECT_THAT(structure.usages, IsEmpty());
}

TEST_F(Structure, LeadsFromProductsToTheirShapes) {
  const ProductStructure structure = Read(
      Product(1, "car") + Product(11, "wheel") +
      "#30=PRODUCT_DEFINITION_SHAPE('',$,#1);\n#31=SHAPE_DEFINITION_REPRESENTATION(#30,#40);\n"
      "#32=PRODUCT_DEFINITION_SHAPE('',$,#11);\n#33=SHAPE_DEFINITION_REPRESENTATION(#32,#41);\n"
      "#40=SHAPE_REPRESENTATION('',(),#50);\n#41=SHAPE_REPRESENTATION('',(),#50);\n"
      "#42=ADVANCED_BREP_SHAPE_REPRESENTATION('',(),#50);\n#43=SHAPE_REPRESENTATION_RELATIONSHIP('','',#40,#42);\n"
      // The places of two shapes to each other, and a relationship between shapes of products, make none equivalent.
      "#44=(REPRESENTATION_RELATIONSHIP('','',#40,#41)REPRESENTATION_RELATIONSHIP_WITH_TRANSFORMATION(#60)"
      "SHAPE_REPRESENTATION_RELATIONSHIP());\n#45=SHAPE_REPRESENTATION_RELATIONSHIP('','',#41,#40);\n");
  ASSERT_EQ(structure.products[0].shapes.size(), 2u);
  EXPECT_EQ(structure.products[0].shapes[0].number, 40);
  EXPECT_EQ(structure.products[0].shapes[1].number, 42);
  EXPECT_EQ(structure.products[0].shapes[1].type, "ADVANCED_BREP_SHAPE_REPRESENTATION");
  ASSERT_EQ(structure.products[1].shapes.size(), 1u);
}

TEST_F(Structure, OfADeepChainIsReadWithoutRecursion) {
  std::string data;
  constexpr int kLength = 100000;
  for (int i = 0; i < kLength; ++i) {
    data += "#" + std::to_string(2 * i) + "=PRODUCT_DEFINITION('',$,#999999,#900);\n" + Usage(2 * i + 1, 2 * i, 2 * i + 2);
  }
  const ProductStructure structure = Read(data + "#999999=PRODUCT_DEFINITION_FORMATION('',$,#999998);\n#999998=PRODUCT('P','',$,());\n");
  EXPECT_EQ(structure.products.size(), static_cast<std::size_t>(kLength));
  EXPECT_THAT(structure.roots, ElementsAre(0));
}

}  // namespace
}  // namespace velmar
