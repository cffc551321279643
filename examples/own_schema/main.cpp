// Reads a file of a schema of our own and lists its tools: ToolStore.h is made from tool_store.exp while
// building.
#include <iostream>
#include <list>

#include "ExpFixedSchemaFile.h"
#include "ToolStore.h"

int main(int argc, char** argv) {
  using namespace VELMAR;
  if (argc != 2) {
    std::cerr << "usage: list_tools FILE\n";
    return 2;
  }
  ExpFixedSchemaFile file("TOOL_STORE");  // the types that the schema library has registered
  file.Read(argv[1]);

  std::list<ExpEntity*> tools;
  file.GetEntities(tools, "TOOL", true);  // with subtypes, by instance number
  for (ExpEntity* entity : tools) {
    auto* tool = dynamic_cast<ToolStore::Tool*>(entity);
    std::cout << tool->Id().GetExpString() << ": " << tool->Diameter().GetExpReal() << " mm";
    if (auto* drill = dynamic_cast<ToolStore::Drill*>(tool)) {
      std::cout << ", coating " << drill->Coated().GetExpEnumerationString();
    }
    ToolStore::Drawer* drawer = tool->KeptIn(file);  // follows the reference
    std::cout << ", " << (drawer == nullptr ? "not put away" : "in " + drawer->Label().GetExpString())
              << "\n";
  }
  return tools.empty() ? 1 : 0;
}
