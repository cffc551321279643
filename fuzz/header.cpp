// The HEADER section: what is written for it is read and written the same again.
#include "Fuzzing.h"

using velmar_fuzz::Rewritten;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string records(reinterpret_cast<const char*>(data), size);
  const std::string written = Rewritten("ISO-10303-21;HEADER;" + records + "ENDSEC;DATA;ENDSEC;END-ISO-10303-21;");
  if (written.empty()) return 0;
  velmar_fuzz::RequireEqual(Rewritten(written), written, "a written header is written the same again");
  return 0;
}
