// Reads a file and lists its products, with the assemblies that they are used in.
#include <iostream>
#include <list>

#include "AutomotiveDesign.h"
#include "ExpFile.h"

namespace ap214 = VELMAR::AutomotiveDesign;

// The product of a definition; null where there is none.
static ap214::Product* ProductOf(VELMAR::ExpFile& file, ap214::ProductDefinition* definition) {
  ap214::ProductDefinitionFormation* formation =
      definition == nullptr ? nullptr : definition->Formation(file);
  return formation == nullptr ? nullptr : formation->OfProduct(file);
}

int main(int argc, char** argv) {
  if (argc != 2) {
    std::cerr << "usage: read_and_list FILE\n";
    return 2;
  }
  ap214::Load();
  VELMAR::ExpFile file;
  file.Read(argv[1]);

  std::list<VELMAR::ExpEntity*> products;
  file.GetEntities(products, "PRODUCT", true);
  std::cout << products.size() << " products\n";
  for (VELMAR::ExpEntity* entity : products) {
    auto* product = dynamic_cast<ap214::Product*>(entity);
    std::cout << "  #" << product->GetEntityNumber() << " " << product->Id().GetExpString() << " "
              << product->Name().GetExpString() << "\n";
  }

  std::list<VELMAR::ExpEntity*> uses;
  file.GetEntities(uses, "NEXT_ASSEMBLY_USAGE_OCCURRENCE", true);
  std::cout << uses.size() << " uses\n";
  for (VELMAR::ExpEntity* entity : uses) {
    auto* use = dynamic_cast<ap214::NextAssemblyUsageOccurrence*>(entity);
    ap214::Product* part = ProductOf(file, use->RelatedProductDefinition(file));
    ap214::Product* assembly = ProductOf(file, use->RelatingProductDefinition(file));
    if (part == nullptr || assembly == nullptr) continue;
    std::cout << "  " << part->Id().GetExpString() << " in " << assembly->Id().GetExpString() << ": "
              << use->Name().GetExpString() << "\n";
  }
  return products.empty() ? 1 : 0;
}
