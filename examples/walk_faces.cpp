// Walks the faces of every solid in a file, from reference to reference, and tells what surface each lies on.
#include <iostream>
#include <list>

#include "AutomotiveDesign.h"
#include "ExpFile.h"

namespace ap214 = VELMAR::AutomotiveDesign;

// Prints a line for a face.
class FaceLister : public ap214::Visitor {
 public:
  using ap214::Visitor::Visitor;
  int faces = 0;

  // Faces of any type that lie on a surface arrive here: no other operation below is for them.
  void VisitFaceSurface(ap214::FaceSurface* face) override {
    ++faces;
    std::cout << "  #" << face->GetEntityNumber() << " " << face->Name().GetExpString() << ": ";
    ap214::Surface* surface = face->FaceGeometry(*GetAdmin());
    if (surface != nullptr) {
      surface->Accept(this);
    } else {
      std::cout << "surface missing";
    }
    std::cout << ", bounds: " << face->Bounds(*GetAdmin()).size() << "\n";
  }

  void VisitPlane(ap214::Plane*) override { std::cout << "plane"; }
  void VisitCylindricalSurface(ap214::CylindricalSurface* cylinder) override {
    std::cout << "cylinder of radius " << cylinder->Radius().GetExpReal();
  }
  void VisitSurface(ap214::Surface* surface) override { std::cout << surface->GetExpClassName(); }
};

int main(int argc, char** argv) {
  if (argc != 2) {
    std::cerr << "usage: walk_faces FILE\n";
    return 2;
  }
  ap214::Load();
  VELMAR::ExpFile file;
  file.Read(argv[1]);

  FaceLister lister(&file);
  std::list<VELMAR::ExpEntity*> solids;
  file.GetEntities(solids, "MANIFOLD_SOLID_BREP", true);
  for (VELMAR::ExpEntity* entity : solids) {
    auto* solid = dynamic_cast<ap214::ManifoldSolidBrep*>(entity);
    std::cout << "#" << solid->GetEntityNumber() << " " << solid->Name().GetExpString() << "\n";
    ap214::ClosedShell* shell = solid->Outer(file);
    if (shell == nullptr) continue;
    for (ap214::Face* face : shell->CfsFaces(file)) face->Accept(&lister);
  }
  std::cout << lister.faces << " faces\n";
  return lister.faces == 0 ? 1 : 0;
}
