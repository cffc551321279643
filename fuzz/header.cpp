// The HEADER section: once it has been written and read, it is written the same again.
#include "Fuzzing.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string records(reinterpret_cast<const char*>(data), size);
  velmar_fuzz::RequireSettled("ISO-10303-21;HEADER;" + records + "ENDSEC;DATA;ENDSEC;END-ISO-10303-21;");
  return 0;
}
