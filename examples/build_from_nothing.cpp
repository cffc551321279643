// Builds a triangle from nothing: three points, a polyline through them, and a curve set that holds it.
#include <initializer_list>
#include <iostream>

#include "AutomotiveDesign.h"
#include "ExpFile.h"

namespace ap214 = VELMAR::AutomotiveDesign;

// A new instance with the next free number; `link` refers to it afterwards. The file owns it.
template <class Entity>
static Entity* Add(VELMAR::ExpFile& file, const char* type, VELMAR::ExpLink& link) {
  return dynamic_cast<Entity*>(file.CreateAndAddEntity(type, link));
}

static VELMAR::ExpLink AddPoint(VELMAR::ExpFile& file, std::initializer_list<double> coordinates) {
  VELMAR::ExpLink link;
  auto* point = Add<ap214::CartesianPoint>(file, "CARTESIAN_POINT", link);
  for (double coordinate : coordinates) point->Coordinates().AddValue(new VELMAR::ExpReal(coordinate));
  return link;
}

int main(int argc, char** argv) {
  if (argc != 2) {
    std::cerr << "usage: build_from_nothing OUT\n";
    return 2;
  }
  ap214::Load();
  VELMAR::ExpFile file(VELMAR::STEP_AP214);

  const VELMAR::ExpLink corners[] = {
      AddPoint(file, {0.0, 0.0, 0.0}),
      AddPoint(file, {40.0, 0.0, 0.0}),
      AddPoint(file, {20.0, 34.5, 0.0}),
  };
  VELMAR::ExpLink polylineLink;
  auto* polyline = Add<ap214::Polyline>(file, "POLYLINE", polylineLink);
  polyline->Name().SetExpString("triangle");
  for (int i : {0, 1, 2, 0}) polyline->Points().AddValue(new VELMAR::ExpLink(corners[i]));

  VELMAR::ExpLink setLink;
  auto* set = Add<ap214::GeometricCurveSet>(file, "GEOMETRIC_CURVE_SET", setLink);
  auto* element = new VELMAR::ExpSelect;  // an element may be a point, a curve or a surface
  element->SetExpLink(polylineLink.GetExpLink());
  set->Elements().AddValue(element);

  file.Write(argv[1]);
  std::cout << file.GetEntity(polylineLink)->ToString() << "\n"
            << file.GetEntity(setLink)->ToString() << "\n";
  return 0;
}
