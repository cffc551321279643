// A file of a schema: once it has been written and read, it is written the same again.
#include "ConfigControlDesign.h"
#include "Fuzzing.h"

using velmar_fuzz::Rewritten;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  VELMAR::ConfigControlDesign::Load();
  if (size == 0 || data[0] == 0xEF) return 0;
  const std::string input(reinterpret_cast<const char*>(data), size);
  if (velmar_fuzz::HasHighNumbers(input)) return 0;
  const std::string written = Rewritten(input);
  if (written.empty()) return 0;
  // The first text may hold `$` within lists, which are not read.
  const std::string settled = Rewritten(written);
  velmar_fuzz::RequireEqual(Rewritten(settled), settled, "a written population is written the same again");
  return 0;
}
