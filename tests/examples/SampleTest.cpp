// The bundled sample is a file that one may learn from: its references lead somewhere, and its solids are
// solids.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <iterator>
#include <list>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "AutomotiveDesign.h"
#include "ExpFile.h"
#include "ExpLogging.h"

namespace {

using namespace VELMAR;
namespace ap214 = VELMAR::AutomotiveDesign;

constexpr double kPi = 3.14159265358979323846;
constexpr double kTolerance = 1e-9;
constexpr int kSteps = 2000;  // of a sampled arc

using Vec = std::array<double, 3>;
Vec operator+(const Vec& a, const Vec& b) { return {a[0] + b[0], a[1] + b[1], a[2] + b[2]}; }
Vec operator-(const Vec& a, const Vec& b) { return {a[0] - b[0], a[1] - b[1], a[2] - b[2]}; }
Vec operator*(double s, const Vec& a) { return {s * a[0], s * a[1], s * a[2]}; }
double Dot(const Vec& a, const Vec& b) { return a[0] * b[0] + a[1] * b[1] + a[2] * b[2]; }
Vec Cross(const Vec& a, const Vec& b) {
  return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}
double Length(const Vec& a) { return std::sqrt(Dot(a, a)); }

// Keeps what the library reports as wrong.
class Problems : public ExpAbstractLogger {
 public:
  Problems() { ExpLogger::AddLogger(this); }
  ~Problems() override { ExpLogger::RemoveLogger(this); }
  void Write(const std::string& message, const ExpLogLevel& level) override {
    if (message.compare(0, 3, "-- ") == 0 || level == ExpLogException) problems.push_back(message);
  }
  std::vector<std::string> problems;
};

class SampleFile : public ExpFile {
 public:
  ExpEntity* CreateEntity(const std::string& name) override {
    ExpEntity* entity = ExpFile::CreateEntity(name);
    if (entity == nullptr) unknown.push_back(name);
    return entity;
  }
  std::vector<std::string> unknown;
};

struct Frame {
  Vec origin, x, y, z;
};

class Sample : public testing::Test {
 protected:
  Sample() {
    ap214::Load();
    file_.Read(SAMPLE_FILE);
  }

  template <class Entity>
  std::vector<Entity*> All(const char* type) {
    std::list<ExpEntity*> found;
    file_.GetEntities(found, type, false);
    std::vector<Entity*> all;
    for (ExpEntity* entity : found) all.push_back(dynamic_cast<Entity*>(entity));
    return all;
  }
  template <class Entity>
  Entity* Get(ExpAttribute* reference) {
    auto* entity = dynamic_cast<Entity*>(file_.GetEntity(reference));
    if (entity == nullptr) throw std::runtime_error("a reference leads to nothing, or to another type");
    return entity;
  }
  static std::list<ExpAttribute*>& Elements(ExpAggregation& aggregate) {
    return *aggregate.GetExpAggregation();
  }

  static Vec Numbers(ExpAggregation& aggregate) {
    Vec numbers{};
    std::transform(Elements(aggregate).begin(), Elements(aggregate).end(), numbers.begin(),
                   [](ExpAttribute* value) { return value->GetExpReal(); });
    return numbers;
  }
  Vec Point(ExpAttribute* point) { return Numbers(Get<ap214::CartesianPoint>(point)->Coordinates()); }
  Vec Unit(ExpAttribute* direction) {
    const Vec ratios = Numbers(Get<ap214::Direction>(direction)->DirectionRatios());
    EXPECT_NEAR(Length(ratios), 1.0, kTolerance);
    return ratios;
  }
  Vec PointOf(ExpAttribute* vertex) { return Point(&Get<ap214::VertexPoint>(vertex)->VertexGeometry()); }
  Frame Placement(ExpAttribute* reference) {
    auto* placement = Get<ap214::Axis2Placement3d>(reference);
    const Vec z = Unit(&placement->Axis());
    const Vec x = Unit(&placement->RefDirection());
    EXPECT_NEAR(Dot(x, z), 0.0, kTolerance);
    return {Point(&placement->Location()), x, Cross(z, x), z};
  }

  // The points of an edge from its start to its end, which lie on its curve.
  std::vector<Vec> Trace(ap214::EdgeCurve* edge) {
    EXPECT_TRUE(edge->SameSense().GetAsBool());
    const Vec start = PointOf(&edge->EdgeStart());
    const Vec end = PointOf(&edge->EdgeEnd());
    if (auto* line = dynamic_cast<ap214::Line*>(file_.GetEntity(&edge->EdgeGeometry()))) {
      const Vec direction = Unit(&Get<ap214::Vector>(&line->Dir())->Orientation());
      EXPECT_NEAR(Length(Cross(start - Point(&line->Pnt()), direction)), 0.0, kTolerance);
      EXPECT_NEAR(Length(Cross(end - start, direction)), 0.0, kTolerance);
      EXPECT_GT(Dot(end - start, direction), 0.0);
      return {start, end};
    }
    auto* circle = Get<ap214::Circle>(&edge->EdgeGeometry());
    const double radius = circle->Radius().GetExpReal();
    const Frame frame = Placement(&circle->Position());
    const auto angle = [&frame](const Vec& p) {
      return std::atan2(Dot(p - frame.origin, frame.y), Dot(p - frame.origin, frame.x));
    };
    for (const Vec& p : {start, end}) {
      EXPECT_NEAR(Length(p - frame.origin), radius, kTolerance);
      EXPECT_NEAR(Dot(p - frame.origin, frame.z), 0.0, kTolerance);
    }
    const double from = angle(start);
    double to = angle(end);
    if (to <= from + kTolerance) to += 2 * kPi;
    std::vector<Vec> points;
    for (int i = 0; i <= kSteps; ++i) {
      const double t = from + (to - from) * i / kSteps;
      points.push_back(frame.origin + radius * (std::cos(t) * frame.x + std::sin(t) * frame.y));
    }
    return points;
  }

  struct Solid {
    std::set<int> vertices;
    std::map<int, std::vector<bool>> uses;  // by edge: the orientations in which its faces use it
    int faces = 0;
    int loops = 0;
    double volume = 0;
  };

  // The closed path of a loop; notes its vertices and edges.
  std::vector<Vec> Path(ap214::FaceBound* bound, Solid& solid) {
    EXPECT_TRUE(bound->Orientation().GetAsBool());
    std::vector<Vec> path;
    int first = 0;
    int last = 0;
    for (ExpAttribute* element : Elements(Get<ap214::EdgeLoop>(&bound->Bound())->EdgeList())) {
      auto* oriented = Get<ap214::OrientedEdge>(element);
      EXPECT_TRUE(oriented->EdgeStart().IsOmitted());
      const bool forward = oriented->Orientation().GetAsBool();
      auto* edge = Get<ap214::EdgeCurve>(&oriented->EdgeElement());
      solid.uses[edge->GetEntityNumber()].push_back(forward);
      int start = edge->EdgeStart().GetExpLink();
      int end = edge->EdgeEnd().GetExpLink();
      solid.vertices.insert({start, end});
      std::vector<Vec> points = Trace(edge);
      if (!forward) {
        std::swap(start, end);
        std::reverse(points.begin(), points.end());
      }
      if (path.empty()) {
        first = start;
      } else {
        EXPECT_EQ(start, last) << "the loop of #" << bound->GetEntityNumber() << " is interrupted";
      }
      last = end;
      path.insert(path.end(), points.begin(), points.end());
    }
    EXPECT_EQ(first, last) << "the loop of #" << bound->GetEntityNumber() << " is open";
    return path;
  }

  // The share of a plane face in the volume: the distance of the origin from the plane, times the area.
  double PlaneShare(const std::vector<Vec>& path, const Frame& frame, bool isOuter) {
    Vec area{};
    for (std::size_t i = 0; i < path.size(); ++i) {
      EXPECT_NEAR(Dot(path[i] - frame.origin, frame.z), 0.0, kTolerance);
      area = area + 0.5 * Cross(path[i], path[(i + 1) % path.size()]);
    }
    EXPECT_EQ(Dot(area, frame.z) > 0, isOuter) << "outer loops run about the normal, inner ones against it";
    return Dot(frame.origin, area) / 3;
  }

  // The share of a cylinder face, as an integral over its boundary in angle and height.
  double CylinderShare(const std::vector<Vec>& path, const Frame& frame, double radius, bool pointsOutwards) {
    double share = 0;
    double area = 0;  // seen from outside
    for (std::size_t i = 0; i < path.size(); ++i) {
      const Vec a = path[i] - frame.origin;
      const Vec b = path[(i + 1) % path.size()] - frame.origin;
      EXPECT_NEAR(std::hypot(Dot(a, frame.x), Dot(a, frame.y)), radius, kTolerance);
      const double from = std::atan2(Dot(a, frame.y), Dot(a, frame.x));
      const double step = std::remainder(std::atan2(Dot(b, frame.y), Dot(b, frame.x)) - from, 2 * kPi);
      const double middle = from + step / 2;
      const double height = (Dot(a, frame.z) + Dot(b, frame.z)) / 2;
      const Vec radial = std::cos(middle) * frame.x + std::sin(middle) * frame.y;
      area -= radius * height * step;
      share -= (Dot(frame.origin, radial) + radius) * radius * height * step / 3;
    }
    EXPECT_EQ(area > 0, pointsOutwards) << "outer loops run about the normal";
    return share;
  }

  Solid Measure(ap214::ManifoldSolidBrep* brep) {
    Solid solid;
    for (ExpAttribute* element : Elements(Get<ap214::ClosedShell>(&brep->Outer())->CfsFaces())) {
      auto* face = Get<ap214::AdvancedFace>(element);
      ++solid.faces;
      for (ExpAttribute* bound : Elements(face->Bounds())) {
        ++solid.loops;
        auto* faceBound = Get<ap214::FaceBound>(bound);
        const std::vector<Vec> path = Path(faceBound, solid);
        const bool isOuter = dynamic_cast<ap214::FaceOuterBound*>(faceBound) != nullptr;
        if (auto* plane = dynamic_cast<ap214::Plane*>(file_.GetEntity(&face->FaceGeometry()))) {
          EXPECT_TRUE(face->SameSense().GetAsBool());
          solid.volume += PlaneShare(path, Placement(&plane->Position()), isOuter);
        } else {
          auto* cylinder = Get<ap214::CylindricalSurface>(&face->FaceGeometry());
          solid.volume += CylinderShare(path, Placement(&cylinder->Position()),
                                        cylinder->Radius().GetExpReal(), face->SameSense().GetAsBool());
        }
      }
    }
    return solid;
  }

  Problems problems_;
  SampleFile file_;
};

TEST_F(Sample, IsReadWithoutErrorsAndUnknownTypes) {
  EXPECT_THAT(problems_.problems, testing::IsEmpty());
  EXPECT_THAT(file_.unknown, testing::IsEmpty());
  EXPECT_EQ(file_.GetMaxEntityNumber(), 383);
  for (int number = 1; number <= 383; ++number) EXPECT_NE(file_.GetEntity(number), nullptr) << "#" << number;
}

// Adds the numbers that a value refers to.
void AddReferences(ExpAttribute* value, std::vector<int>& numbers) {
  if (auto* aggregate = dynamic_cast<ExpAggregation*>(value)) {
    for (ExpAttribute* element : *aggregate->GetExpAggregation()) AddReferences(element, numbers);
  } else if (auto* select = dynamic_cast<ExpSelect*>(value)) {
    if (select->GetExpSelectValue() != nullptr) AddReferences(select->GetExpSelectValue(), numbers);
  } else if (auto* link = dynamic_cast<ExpLink*>(value)) {
    if (!link->IsNotProvided() && !link->IsOmitted()) numbers.push_back(link->GetExpLink());
  }
}

TEST_F(Sample, EveryReferenceLeadsToAnInstance) {
  std::size_t references = 0;
  for (int number = 1; number <= file_.GetMaxEntityNumber(); ++number) {
    std::vector<ExpEntity*> records = {file_.GetEntity(number)};
    if (auto* complex = dynamic_cast<ExpExternalMappingEntity*>(records[0]))
      records = *complex->GetEntities();
    for (ExpEntity* record : records) {
      std::vector<int> numbers;
      for (int i = 0; i < record->GetNofExplicitMembers(); ++i) AddReferences(record->GetMember(i), numbers);
      for (int target : numbers) {
        EXPECT_NE(file_.GetEntity(target), nullptr) << "#" << number << " refers to #" << target;
      }
      references += numbers.size();
    }
  }
  EXPECT_GT(references, 383u);
}

TEST_F(Sample, HasComplexInstancesUnitsAndContexts) {
  EXPECT_EQ(All<ExpExternalMappingEntity>("EXTERNAL_MAPPING_ENTITY").size(), 8u);
  std::list<ExpEntity*> contexts;
  file_.GetEntities(contexts, "GEOMETRIC_REPRESENTATION_CONTEXT", false);
  ASSERT_EQ(contexts.size(), 1u);
  auto* context = dynamic_cast<ap214::GeometricRepresentationContext*>(contexts.front());
  EXPECT_EQ(context->CoordinateSpaceDimension().GetExpInteger(), 3);
  // The part has the values of its supertype's part.
  EXPECT_EQ(context->ContextIdentifier().GetExpString(), "3D");
}

TEST_F(Sample, IsAnAssemblyOfThreeProductsOneOfThemWithANonAsciiName) {
  const auto products = All<ap214::Product>("PRODUCT");
  ASSERT_EQ(products.size(), 3u);
  EXPECT_EQ(products[1]->Name().GetExpString(), "Winkel f\xC3\xBCr Tr\xC3\xA4ger");
  EXPECT_THAT(products[1]->Description().GetExpString(), testing::StartsWith("\xE6\x94\xAF\xE6\x9E\xB6: "));
  const auto uses = All<ap214::NextAssemblyUsageOccurrence>("NEXT_ASSEMBLY_USAGE_OCCURRENCE");
  ASSERT_EQ(uses.size(), 3u);
  for (auto* use : uses) {
    EXPECT_EQ(use->RelatingProductDefinition().GetExpLink(),
              uses[0]->RelatingProductDefinition().GetExpLink());
  }
  EXPECT_EQ(uses[1]->RelatedProductDefinition().GetExpLink(),
            uses[2]->RelatedProductDefinition().GetExpLink());
}

TEST_F(Sample, ItsSolidsAreClosed) {
  for (auto* brep : All<ap214::ManifoldSolidBrep>("MANIFOLD_SOLID_BREP")) {
    for (const auto& [edge, uses] : Measure(brep).uses) {
      EXPECT_THAT(uses, testing::UnorderedElementsAre(true, false)) << "edge #" << edge;
    }
  }
}

// Euler and Poincare: V - E + F - (L - F) = 2 (1 - G) for one shell with G holes through it.
TEST_F(Sample, ItsSolidsHaveTheHolesThatOneSees) {
  const auto breps = All<ap214::ManifoldSolidBrep>("MANIFOLD_SOLID_BREP");
  ASSERT_EQ(breps.size(), 2u);
  const int holes[] = {2, 0};
  for (std::size_t i = 0; i < breps.size(); ++i) {
    const Solid solid = Measure(breps[i]);
    const int vertices = static_cast<int>(solid.vertices.size());
    const int edges = static_cast<int>(solid.uses.size());
    EXPECT_EQ(vertices - edges + solid.faces - (solid.loops - solid.faces), 2 * (1 - holes[i]));
  }
}

// The volume comes out right only if every surface, loop and orientation is: a face turned inside out would
// count against it.
TEST_F(Sample, ItsSolidsEncloseTheirVolume) {
  const auto breps = All<ap214::ManifoldSolidBrep>("MANIFOLD_SOLID_BREP");
  ASSERT_EQ(breps.size(), 2u);
  const double profile = 80 * 8 + 52 * 8 + (6 * 6 - kPi * 6 * 6 / 4);
  EXPECT_NEAR(Measure(breps[0]).volume, 50 * profile - 2 * kPi * 5 * 5 * 8, 0.01);
  EXPECT_NEAR(Measure(breps[1]).volume, kPi * 8 * 8 * 5 + kPi * 5 * 5 * 25, 0.01);
}

}  // namespace
