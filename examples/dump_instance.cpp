// Prints one instance and all that it refers to as an exchange file of its own.
#include <cstdlib>
#include <iostream>

#include "AutomotiveDesign.h"
#include "ExpFile.h"

int main(int argc, char** argv) {
  if (argc != 3) {
    std::cerr << "usage: dump_instance FILE NUMBER\n";
    return 2;
  }
  VELMAR::AutomotiveDesign::Load();
  VELMAR::ExpFile file;
  file.Read(argv[1]);

  const int number = std::atoi(argv[2]);
  VELMAR::ExpEntity* entity = file.GetEntity(number);
  if (entity == nullptr) {
    std::cerr << argv[1] << " has no instance #" << number << "\n";
    return 1;
  }
  std::vector<std::string>* names = entity->GetMemberNames();
  std::cerr << entity->GetExpClassName() << " has " << names->size() << " attributes:\n";
  for (const std::string& name : *names) {
    std::cerr << "  " << name << " = " << entity->GetMember(name)->ToString() << "\n";
  }
  // Nothing but the file goes to standard output.
  file.DumpEntity(number, std::cout);
  return 0;
}
