// The library of AUTOMOTIVE_DESIGN (AP214): what it registers, and some of its classes looked at one by one.

#include <gmock/gmock.h>

#include <memory>
#include <set>
#include <sstream>
#include <typeinfo>

#include "AutomotiveDesign.h"
#include "ExpFile.h"
#include "ExpRuntimeRegistry.h"
#include "ExpressParser.h"
#include "Resolver.h"

namespace VELMAR::AutomotiveDesign {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::UnorderedElementsAre;

const char kSchema[] = "AUTOMOTIVE_DESIGN";

ExpEntityRuntimeType* Type(const std::string& name) {
  ExpEntityRuntimeType* type = ExpRuntimeRegistry::GetInstance()->GetEntityRuntimeType(name, kSchema);
  EXPECT_NE(type, nullptr) << name;
  return type;
}

template <class T>
std::unique_ptr<T> Create(const char* name) {
  std::unique_ptr<ExpEntity> entity(Type(name)->CreateInstance(-1));
  T* result = dynamic_cast<T*>(entity.get());
  EXPECT_NE(result, nullptr) << name;
  if (result) entity.release();
  return std::unique_ptr<T>(result);
}

TEST(AutomotiveDesign, RegistersAllEntities) {
  Load();
  std::ostringstream report;
  ExpRuntimeRegistry::GetInstance()->DumpRegisteredEntityTypes(report);
  std::istringstream lines(report.str());
  int count = 0;
  for (std::string line; std::getline(lines, line);)
    count += line.find(" :: AUTOMOTIVE_DESIGN") != std::string::npos;
  EXPECT_EQ(count, 915);
  EXPECT_TRUE(ExpRuntimeRegistry::GetInstance()->IsSchemaRegistered(kSchema));
}

struct Row {
  const char* name;
  std::vector<std::string> memberNames;
  int startIndex;
  int inverseMembers;
  std::vector<std::string> superClasses;  // without the schema
};

std::ostream& operator<<(std::ostream& out, const Row& row) { return out << row.name; }

class Entities : public testing::TestWithParam<Row> {};

TEST_P(Entities, AreDescribedAsTheSchemaDeclaresThem) {
  const Row& row = GetParam();
  ExpEntityRuntimeType* type = Type(row.name);
  EXPECT_EQ(*type->GetMemberNames(), row.memberNames);
  EXPECT_EQ(type->GetNofExplicitMembers(), static_cast<int>(row.memberNames.size()));
  EXPECT_EQ(type->GetExternalMappingStartIndex(), row.startIndex);
  EXPECT_EQ(type->GetNofInverseMembers(), row.inverseMembers);
  std::vector<std::string> superClasses{"VELMAR::ExpEntity"};
  for (const std::string& name : row.superClasses) superClasses.push_back("AUTOMOTIVE_DESIGN::" + name);
  EXPECT_EQ(*type->GetSuperClasses(), superClasses);
}

INSTANTIATE_TEST_SUITE_P(
    ByHand, Entities,
    testing::Values(
        Row{"APPLICATION_CONTEXT", {"application"}, 0, 1, {}},
        Row{"CARTESIAN_POINT",
            {"name", "coordinates"},
            1,
            0,
            {"REPRESENTATION_ITEM", "GEOMETRIC_REPRESENTATION_ITEM", "POINT"}},
        Row{"DIRECTION",
            {"name", "direction_ratios"},
            1,
            0,
            {"REPRESENTATION_ITEM", "GEOMETRIC_REPRESENTATION_ITEM"}},
        Row{"PRODUCT", {"id", "name", "description", "frame_of_reference"}, 0, 0, {}},
        Row{"ADVANCED_FACE",
            {"name", "bounds", "face_geometry", "same_sense"},
            4,
            0,
            {"REPRESENTATION_ITEM", "TOPOLOGICAL_REPRESENTATION_ITEM", "FACE",
             "GEOMETRIC_REPRESENTATION_ITEM", "FACE_SURFACE"}},
        Row{"EDGE_CURVE",
            {"name", "edge_start", "edge_end", "edge_geometry", "same_sense"},
            3,
            0,
            {"REPRESENTATION_ITEM", "TOPOLOGICAL_REPRESENTATION_ITEM", "EDGE",
             "GEOMETRIC_REPRESENTATION_ITEM"}},
        Row{"ORIENTED_EDGE",
            {"name", "edge_start", "edge_end", "edge_element", "orientation"},
            3,
            0,
            {"REPRESENTATION_ITEM", "TOPOLOGICAL_REPRESENTATION_ITEM", "EDGE"}},
        Row{"EDGE_LOOP",
            {"name", "edge_list"},
            2,
            0,
            {"REPRESENTATION_ITEM", "TOPOLOGICAL_REPRESENTATION_ITEM", "LOOP", "PATH"}},
        Row{"SI_UNIT", {"dimensions", "prefix", "name"}, 1, 0, {"NAMED_UNIT"}},
        Row{"CONVERSION_BASED_UNIT", {"dimensions", "name", "conversion_factor"}, 1, 0, {"NAMED_UNIT"}},
        Row{"MEASURE_REPRESENTATION_ITEM",
            {"name", "value_component", "unit_component"},
            3,
            0,
            {"REPRESENTATION_ITEM", "MEASURE_WITH_UNIT"}},
        Row{"BOUNDED_PCURVE",
            {"name", "basis_surface", "reference_to_curve"},
            3,
            0,
            {"REPRESENTATION_ITEM", "GEOMETRIC_REPRESENTATION_ITEM", "CURVE", "PCURVE", "BOUNDED_CURVE"}},
        Row{"COMMON_DATUM",
            {"name", "description", "of_shape", "product_definitional", "identification"},
            5,
            2,
            {"SHAPE_ASPECT", "COMPOSITE_SHAPE_ASPECT", "DATUM"}},
        Row{"KNOWN_SOURCE", {"source_id", "name"}, 2, 0, {"EXTERNAL_SOURCE", "PRE_DEFINED_ITEM"}}),
    [](const auto& info) { return std::string(info.param.name); });

TEST(AutomotiveDesign, DirectSubtypesAreQualified) {
  EXPECT_THAT(
      *Type("PLACEMENT")->GetSubClasses(),
      UnorderedElementsAre("AUTOMOTIVE_DESIGN::AXIS1_PLACEMENT", "AUTOMOTIVE_DESIGN::AXIS2_PLACEMENT_2D",
                           "AUTOMOTIVE_DESIGN::AXIS2_PLACEMENT_3D"));
  EXPECT_TRUE(Type("CARTESIAN_POINT")->GetSubClasses()->empty());
}

TEST(AutomotiveDesign, TypeNumbersDiffer) {
  Express::Model model;
  Express::Diagnostics diagnostics;
  Express::ParseFile(model, Express::SourceFile::Read(std::string(VELMAR_SCHEMAS) + "/automotive_design.exp"),
                     diagnostics);
  std::set<int> numbers;
  for (const auto& declaration : model.schemas.at(0)->declarations) {
    if (declaration->kind != Express::DeclarationKind::Entity) continue;
    std::string name = declaration->name.text;
    for (char& c : name) c = c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
    EXPECT_TRUE(numbers.insert(Type(name)->GetTypeNumber()).second) << name;
  }
  EXPECT_EQ(numbers.size(), 915u);
  EXPECT_EQ(*numbers.begin(), 1);
  EXPECT_EQ(*numbers.rbegin(), 915);
}

TEST(AutomotiveDesign, DerivedAttributesAreWrittenOmitted) {
  EXPECT_TRUE(Create<SiUnit>("SI_UNIT")->Dimensions().IsOmitted());
  EXPECT_FALSE(Create<NamedUnit>("NAMED_UNIT")->Dimensions().IsOmitted());
  const auto edge = Create<OrientedEdge>("ORIENTED_EDGE");
  EXPECT_THAT(edge->ToString(), HasSubstr("ORIENTED_EDGE('', *, *, #-1, "));
}

TEST(AutomotiveDesign, AccessorsLeadToTheMembers) {
  const auto point = Create<CartesianPoint>("CARTESIAN_POINT");
  point->Name().SetExpString("origin");
  for (const double value : {0.0, 1.5, 2.0}) point->Coordinates().AddValue(new ExpReal(value));
  point->SetEntityNumber(12);
  EXPECT_EQ(point->ToString(), "#12 = CARTESIAN_POINT('origin', (0., 1.5, 2.));");
  EXPECT_EQ(point->GetMember("coordinates"), &point->Coordinates());
  EXPECT_EQ(point->GetMember(0), &point->Name());
}

TEST(AutomotiveDesign, EnumerationsAreTyped) {
  const auto unit = Create<SiUnit>("SI_UNIT");
  unit->Prefix().Set(SiPrefix::Enumeration::Milli);
  unit->GetMember(2)->SetExpEnumeration("METRE");
  EXPECT_EQ(unit->Name().Get(), SiUnitName::Enumeration::Metre);
  EXPECT_EQ(unit->ToString(), "SI_UNIT(*, .MILLI., .METRE.);");
}

TEST(AutomotiveDesign, ClassesFollowTheirSupertypes) {
  const auto face = Create<AdvancedFace>("ADVANCED_FACE");
  ExpEntity* entity = face.get();
  EXPECT_NE(dynamic_cast<FaceSurface*>(entity), nullptr);
  EXPECT_NE(dynamic_cast<TopologicalRepresentationItem*>(entity), nullptr);
  EXPECT_NE(dynamic_cast<GeometricRepresentationItem*>(entity), nullptr);
  EXPECT_EQ(dynamic_cast<Point*>(entity), nullptr);
}

TEST(AutomotiveDesign, TypesAreTheSameInTheLibraryAndItsUsers) {
  const std::unique_ptr<ExpEntity> face(Type("ADVANCED_FACE")->CreateInstance(-1));
  const ExpEntity& fromLibrary = *face;
  const AdvancedFace fromHere;
  EXPECT_TRUE(typeid(fromLibrary) == typeid(AdvancedFace));
  EXPECT_TRUE(typeid(fromHere) == typeid(fromLibrary));
  EXPECT_FALSE(typeid(fromLibrary) == typeid(FaceSurface));
  const auto unit = Create<SiUnit>("SI_UNIT");
  EXPECT_NE(dynamic_cast<SiUnitName*>(unit->GetMember(2)), nullptr);
  EXPECT_EQ(dynamic_cast<SiPrefix*>(unit->GetMember(2)), nullptr);
}

// An application's own subtype, to be seen as what it derives from by the library's and by its own code.
class OwnFace : public AdvancedFace {
 public:
  using ExpEntity::GetMember;
  ExpAttribute* GetMember(int index) override { return index == 4 ? &own_ : AdvancedFace::GetMember(index); }

 private:
  ExpInteger own_;
};

TEST(AutomotiveDesign, ApplicationsMayDeriveFromItsClasses) {
  OwnFace face;
  ExpEntity& entity = face;
  EXPECT_EQ(entity.GetMember(0), &face.FaceSurface::Name());
  EXPECT_NE(dynamic_cast<ExpInteger*>(entity.GetMember(4)), nullptr);
  EXPECT_EQ(entity.GetMember(5), nullptr);
  EXPECT_NE(dynamic_cast<Face*>(&entity), nullptr);
}

// A face on a plane, one on a rational B-spline surface, and a shell of these, an edge loop, and what is not
// there.
class Faces : public testing::Test {
 protected:
  Faces() {
    Load();
    std::istringstream text(R"(ISO-10303-21;
HEADER;
FILE_SCHEMA(('AUTOMOTIVE_DESIGN'));
ENDSEC;
DATA;
#1=CLOSED_SHELL('',(#3,#2,#4,#99));
#2=ADVANCED_FACE('flat',(#4,#5),#6,.T.);
#3=FACE_SURFACE('curved',(),#7,.T.);
#4=EDGE_LOOP('',());
#5=FACE_OUTER_BOUND('',#4,.T.);
#6=PLANE('',$);
#7=(BOUNDED_SURFACE()B_SPLINE_SURFACE(1,1,((#8,#8),(#9,#99,#8)),.UNSPECIFIED.,.F.,.F.,.F.)
  GEOMETRIC_REPRESENTATION_ITEM()RATIONAL_B_SPLINE_SURFACE(((1.,1.),(1.,0.5)))REPRESENTATION_ITEM('')SURFACE());
#8=CARTESIAN_POINT('',(0.,0.,0.));
#9=CARTESIAN_POINT('',(1.,0.,0.));
ENDSEC;
END-ISO-10303-21;
)");
    file_.Read(text);
  }
  template <class Entity>
  Entity* Get(int number) {
    auto* entity = dynamic_cast<Entity*>(file_.GetEntity(number));
    EXPECT_NE(entity, nullptr) << number;
    return entity;
  }
  ExpEntity* At(int number) { return file_.GetEntity(number); }

  ExpFile file_;
};

TEST_F(Faces, ReferencesLeadToTheirClasses) {
  EXPECT_THAT(Get<ClosedShell>(1)->CfsFaces(file_), ElementsAre(At(3), At(2)));
  EXPECT_THAT(Get<AdvancedFace>(2)->Bounds(file_), ElementsAre(At(5)));
  EXPECT_EQ(Get<FaceSurface>(2)->FaceGeometry(file_), At(6));
  EXPECT_EQ(Get<FaceBound>(5)->Bound(file_), At(4));
  EXPECT_EQ(Get<Plane>(6)->Position(file_), nullptr);
}

TEST_F(Faces, ComplexSurfaceGivesTheRecordOfTheClassThatIsAskedFor) {
  FaceSurface* face = Get<FaceSurface>(3);
  ASSERT_NE(face->FaceGeometry(file_), nullptr);
  EXPECT_EQ(face->FaceGeometry(file_)->GetExpClassName(), "SURFACE");
  auto* spline = Resolve<BSplineSurface>(file_, face->FaceGeometry());
  ASSERT_NE(spline, nullptr);
  EXPECT_EQ(spline->GetExpClassName(), "B_SPLINE_SURFACE");
  EXPECT_THAT(spline->ControlPointsList(file_),
              ElementsAre(ElementsAre(At(8), At(8)), ElementsAre(At(9), At(8))));
  EXPECT_EQ(Resolve<Plane>(file_, face->FaceGeometry()), nullptr);
}

TEST_F(Faces, VisitorGetsThemByTheNearestOperationThatIsThere) {
  struct Lister : Visitor {
    std::vector<std::string> seen;
    void Note(const std::string& operation, ExpEntity* entity) {
      seen.push_back(operation + ' ' + std::to_string(entity->GetEntityNumber()));
    }
    void VisitFaceSurface(FaceSurface* face) override { Note("face", face); }
    void VisitSurface(Surface* surface) override { Note("surface", surface); }
    void VisitPoint(Point* point) override { Note("point", point); }
    void VisitExpExternalMappingEntity(ExpExternalMappingEntity* complex) override {
      Note("complex", complex);
    }
    void VisitExpEntity(ExpEntity* entity) override { Note("entity", entity); }
  } lister;
  for (const int number : {1, 2, 3, 6, 7, 8}) At(number)->Accept(&lister);
  EXPECT_THAT(lister.seen, ElementsAre("entity 1", "face 2", "face 3", "surface 6", "complex 7", "point 8"));
}

TEST(AutomotiveDesign, VisitorHasAnOperationForEveryEntity) {
  struct Counter : Visitor {
    int entities = 0;
    void VisitExpEntity(ExpEntity*) override { ++entities; }
  } counter;
  std::ostringstream report;
  ExpRuntimeRegistry::GetInstance()->DumpRegisteredEntityTypes(report);
  std::istringstream lines(report.str());
  int types = 0;
  for (std::string line; std::getline(lines, line);) {
    if (line.find(" :: AUTOMOTIVE_DESIGN") == std::string::npos) continue;
    ++types;
    std::string name;
    std::istringstream(line) >> name;
    Create<ExpEntity>(name.c_str())->Accept(&counter);
  }
  EXPECT_EQ(types, 915);
  EXPECT_EQ(counter.entities, types);
}

}  // namespace
}  // namespace VELMAR::AutomotiveDesign
