// Generated from multiple_inheritance.exp by velmar-express 3.1. Do not edit.
#include "MultipleInheritance.h"

namespace VELMAR::MultipleInheritance {

void Load1();

void Load() {
  static const bool loaded = [] {
    Load1();
    return true;
  }();
  static_cast<void>(loaded);
}

namespace {

[[maybe_unused]] const bool loadedWithTheLibrary = (Load(), true);

}  // namespace
}  // namespace VELMAR::MultipleInheritance
