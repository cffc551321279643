// Reads a file and lists its products, with the assemblies that they are used in.
#include <iostream>
#include <list>

#include "AutomotiveDesign.h"
#include "ExpFile.h"

namespace ap214 = VELMAR::AutomotiveDesign;

// The product whose definition a reference leads to; null where it leads to something else.
static ap214::Product* ProductOf(VELMAR::ExpFile& file, VELMAR::ExpLink& reference) {
  auto* definition = dynamic_cast<ap214::ProductDefinition*>(file.GetEntity(reference));
  if (definition == nullptr) return nullptr;
  auto* formation = dynamic_cast<ap214::ProductDefinitionFormation*>(file.GetEntity(definition->Formation()));
  if (formation == nullptr) return nullptr;
  return dynamic_cast<ap214::Product*>(file.GetEntity(formation->OfProduct()));
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
    ap214::Product* part = ProductOf(file, use->RelatedProductDefinition());
    ap214::Product* assembly = ProductOf(file, use->RelatingProductDefinition());
    if (part == nullptr || assembly == nullptr) continue;
    std::cout << "  " << part->Id().GetExpString() << " in " << assembly->Id().GetExpString() << ": "
              << use->Name().GetExpString() << "\n";
  }
  return products.empty() ? 1 : 0;
}
