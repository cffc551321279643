// The guide's examples do what the guide says; they are compiled from its text.
#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <typeinfo>
#include <vector>

#include "AutomotiveDesign.h"
#include "ExpFile.h"

using namespace VELMAR;
namespace ap214 = VELMAR::AutomotiveDesign;

// In the guide:
std::string ProductNameOf(ExpFile& file, ap214::ProductDefinitionFormation& formation);
bool IsMillimetre(ExpFile& file, int number);
std::vector<ap214::Surface*> SurfacesOf(ExpFile& file, ap214::ManifoldSolidBrep& solid);
ap214::RationalBSplineSurface* RationalSurfaceOf(ExpFile& file, ap214::FaceSurface& face);
std::string SurfacesInWords(ExpFile& file, ap214::ManifoldSolidBrep& solid);
void Describe(ap214::Product& product, const std::string& utf8);
void MoveTo(ap214::CartesianPoint& point, double x, double y, double z);
void SetLength(ap214::MeasureWithUnit& measure, double length);
int AddDirection(ExpFile& file, double x, double y, double z);
void MakeWritable(ExpFile& file);
void RegisterNote();

namespace {

class Guide : public testing::Test {
 protected:
  Guide() {
    ap214::Load();
    file_.Read(SAMPLE_FILE);
  }
  template <class Entity>
  Entity& Get(int number) {
    return dynamic_cast<Entity&>(*file_.GetEntity(number));
  }
  ExpFile file_;
};

TEST_F(Guide, Finding) {
  EXPECT_EQ(ProductNameOf(file_, Get<ap214::ProductDefinitionFormation>(21)), "Pin 10 x 25");
  EXPECT_TRUE(IsMillimetre(file_, 5));
  EXPECT_FALSE(IsMillimetre(file_, 6));
}

TEST_F(Guide, FollowingReferences) {
  const std::vector<ap214::Surface*> surfaces = SurfacesOf(file_, Get<ap214::ManifoldSolidBrep>(345));
  ASSERT_EQ(surfaces.size(), 5u);
  EXPECT_EQ(surfaces.back()->GetEntityNumber(), 342);
  EXPECT_EQ(RationalSurfaceOf(file_, Get<ap214::FaceSurface>(343)), nullptr);

  std::istringstream text(
      "ISO-10303-21;\nHEADER;\nFILE_SCHEMA(('AUTOMOTIVE_DESIGN'));\nENDSEC;\nDATA;\n"
      "#1=FACE_SURFACE('',(),#2,.T.);\n"
      "#2=(BOUNDED_SURFACE()B_SPLINE_SURFACE(1,1,((#3,#3),(#3,#3)),.UNSPECIFIED.,.F.,.F.,.F.)\n"
      "GEOMETRIC_REPRESENTATION_ITEM()RATIONAL_B_SPLINE_SURFACE(((1.,1.),(1.,0.5)))\n"
      "REPRESENTATION_ITEM('')SURFACE());\n"
      "ENDSEC;\nEND-ISO-10303-21;\n");
  file_.Read(text);
  ap214::RationalBSplineSurface* rational = RationalSurfaceOf(file_, Get<ap214::FaceSurface>(1));
  ASSERT_NE(rational, nullptr);
  EXPECT_EQ(rational->WeightsData().ToString(), "((1., 1.), (1., 0.5))");
}

TEST_F(Guide, TellingTypesApart) {
  EXPECT_EQ(SurfacesInWords(file_, Get<ap214::ManifoldSolidBrep>(274)), "8 planes, 3 cylinders, 0 others");
}

TEST_F(Guide, Editing) {
  Describe(Get<ap214::Product>(20), "it's \xC3\xA4");
  EXPECT_EQ(file_.GetEntity(20)->ToString(),
            "#20 = PRODUCT('VB-120', 'Pin 10 x 25', 'it''s \\X\\E4', (#3));");
  MoveTo(Get<ap214::CartesianPoint>(31), 1, 2, 3);
  EXPECT_EQ(file_.GetEntity(31)->ToString(), "#31 = CARTESIAN_POINT('', (1., 2., 3.));");
  ap214::MeasureWithUnit measure;
  SetLength(measure, 2.5);
  EXPECT_EQ(measure.ValueComponent().ToString(), "LENGTH_MEASURE(2.5)");
}

TEST_F(Guide, NewInstances) {
  EXPECT_EQ(AddDirection(file_, 0, 0, 1), 384);
  EXPECT_EQ(file_.GetEntity(384)->ToString(), "#384 = DIRECTION('', (0., 0., 1.));");
  file_.CreateAndAddEntity("VECTOR");
  MakeWritable(file_);
  EXPECT_EQ(file_.GetEntity(385)->ToString(), "#385 = VECTOR('', $, 0.);");
  EXPECT_EQ(file_.GetEntity(384)->ToString(), "#384 = DIRECTION('', (0., 0., 1.));");
}

TEST_F(Guide, TypesOfYourOwn) {
  RegisterNote();
  std::istringstream text(
      "ISO-10303-21;\nHEADER;\nFILE_SCHEMA(('AUTOMOTIVE_DESIGN'));\nENDSEC;\nDATA;\n"
      "#1=NOTE('check this',#12);\nENDSEC;\nEND-ISO-10303-21;\n");
  file_.Read(text);
  ASSERT_NE(file_.GetEntity(1), nullptr);
  EXPECT_EQ(file_.GetEntity(1)->ToString(), "#1 = NOTE('check this', #12);");
}

}  // namespace
