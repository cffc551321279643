// Lists a file's instances by an EXPRESS schema that is read when the program runs.
#include <iostream>

#include "LateBoundFile.h"

static void List(VELMAR::ExpEntity& entity) {
  std::cout << "#" << entity.GetEntityNumber() << " " << entity.GetExpClassName() << "\n";
  for (const std::string& name : *entity.GetMemberNames()) {
    std::cout << "  " << name << " = " << entity.GetMember(name)->ToString() << "\n";
  }
}

int main(int argc, char** argv) {
  if (argc != 3) {
    std::cerr << "usage: late_binding SCHEMA.exp FILE\n";
    return 2;
  }
  try {
    const VELMAR::LateBoundSchema schema = VELMAR::LateBoundSchema::Load(argv[1]);
    VELMAR::LateBoundFile file(schema);
    file.Read(argv[2]);
    for (int number = 1; number <= file.GetMaxEntityNumber(); ++number) {
      VELMAR::ExpEntity* entity = file.GetEntity(number);
      if (auto* complex = dynamic_cast<VELMAR::ExpExternalMappingEntity*>(entity)) {
        for (VELMAR::ExpEntity* part : *complex->GetEntities()) List(*part);
      } else if (entity != nullptr) {
        List(*entity);
      }
    }
    return file.GetMaxEntityNumber() > 0 ? 0 : 1;
  } catch (const VELMAR::LateBoundError& error) {
    std::cerr << error.what() << "\n";
    return 1;
  } catch (const std::string& error) {  // a value that cannot be printed
    std::cerr << error << "\n";
    return 1;
  }
}
