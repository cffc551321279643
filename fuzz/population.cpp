// A file of a schema: once it has been written and read, it is written the same again.
#include "ConfigControlDesign.h"
#include "Fuzzing.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  VELMAR::ConfigControlDesign::Load();
  if (size == 0 || data[0] == 0xEF) return 0;
  velmar_fuzz::RequireSettled(std::string(reinterpret_cast<const char*>(data), size));
  return 0;
}
