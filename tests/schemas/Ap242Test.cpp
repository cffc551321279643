// The library of AP242: entities of all its editions.

#include "Ap242.h"

#include <gtest/gtest.h>

#include <memory>

#include "ExpRuntimeRegistry.h"

namespace VELMAR::Ap242 {
namespace {

template <class T>
std::unique_ptr<T> Create(const char* name) {
  Load();
  ExpEntityRuntimeType* type = ExpRuntimeRegistry::GetInstance()->GetEntityRuntimeType(name, "AP242");
  std::unique_ptr<ExpEntity> entity(type == nullptr ? nullptr : type->CreateInstance(-1));
  T* result = dynamic_cast<T*>(entity.get());
  EXPECT_NE(result, nullptr) << name;
  if (result != nullptr) entity.release();
  return std::unique_ptr<T>(result);
}

TEST(Ap242, ReadsAndPrintsATessellatedSet) {
  const auto coordinates = Create<CoordinatesList>("COORDINATES_LIST");
  ASSERT_NE(coordinates, nullptr);
  coordinates->Name().SetExpString("c");
  coordinates->Npoints().SetExpInteger(0);
  EXPECT_EQ(coordinates->ToString(), "COORDINATES_LIST('c', 0, ());");
}

TEST(Ap242, HasTheEntitiesThatOnlyEarlierEditionsHave) {
  const auto edge = Create<EdgeWithLength>("EDGE_WITH_LENGTH");
  ASSERT_NE(edge, nullptr);
  EXPECT_NE(dynamic_cast<Edge*>(static_cast<ExpEntity*>(edge.get())), nullptr);
  EXPECT_EQ(edge->GetMember("edge_length"), &edge->EdgeLength());
  EXPECT_NE(Create<SeamEdge>("SEAM_EDGE"), nullptr);
  EXPECT_NE(Create<VertexOnEdge>("VERTEX_ON_EDGE"), nullptr);
}

TEST(Ap242, AttributesBehindAListOfUniqueElementsAreThere) {
  const auto hole = Create<CounterboreHoleDefinition>("COUNTERBORE_HOLE_DEFINITION");
  ASSERT_NE(hole, nullptr);
  EXPECT_EQ(hole->GetMember("through_hole"), &hole->ThroughHole());
}

TEST(Ap242, DerivedListOfAnOrientedPathIsOmitted) {
  const auto path = Create<OrientedPath>("ORIENTED_PATH");
  ASSERT_NE(path, nullptr);
  EXPECT_TRUE(path->EdgeList().IsOmitted());
  EXPECT_FALSE(path->PathElement().IsOmitted());
}

}  // namespace
}  // namespace VELMAR::Ap242
