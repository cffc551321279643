// Says of each schema named whether its types are registered.
#include <iostream>

#include "ExpRuntimeRegistry.h"

int main(int argc, char** argv) {
  for (int i = 1; i < argc; ++i) {
    const bool registered = VELMAR::ExpRuntimeRegistry::GetInstance()->IsSchemaRegistered(argv[i]);
    std::cout << argv[i] << (registered ? " is registered\n" : " is not registered\n");
  }
}
