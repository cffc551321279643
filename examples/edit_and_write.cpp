// Reads a file, renames a product, moves all its points by 100 mm in z, and writes it under another name.
#include <iostream>
#include <iterator>
#include <list>

#include "AutomotiveDesign.h"
#include "ExpFile.h"
#include "ExpUtilities.h"

namespace ap214 = VELMAR::AutomotiveDesign;

int main(int argc, char** argv) {
  if (argc != 3) {
    std::cerr << "usage: edit_and_write IN OUT\n";
    return 2;
  }
  ap214::Load();
  VELMAR::ExpFile file;
  file.Read(argv[1]);

  std::list<VELMAR::ExpEntity*> found;
  file.GetEntities(found, "PRODUCT", true);
  if (found.empty()) {
    std::cerr << argv[1] << " holds no product\n";
    return 1;
  }
  // Values are set as a file has them, so UTF-8 text is encoded first; what is read out is UTF-8 again.
  auto* product = dynamic_cast<ap214::Product*>(found.front());
  product->Name().SetExpString(VELMAR::ConvertUtf8ToSTEPString("Träger, geändert"));
  std::cout << "renamed: " << product->Name().GetExpString() << "\n";

  found.clear();
  file.GetEntities(found, "CARTESIAN_POINT", true);
  int moved = 0;
  for (VELMAR::ExpEntity* entity : found) {
    auto* point = dynamic_cast<ap214::CartesianPoint*>(entity);
    std::list<VELMAR::ExpAttribute*>& coordinates = *point->Coordinates().GetExpAggregation();
    if (coordinates.size() != 3) continue;
    VELMAR::ExpAttribute* z = *std::next(coordinates.begin(), 2);
    z->SetExpReal(z->GetExpReal() + 100.0);
    ++moved;
  }
  std::cout << "moved: " << moved << " points\n";

  file.Write(argv[2]);
  return 0;
}
