// A file of a schema with everything kept: nothing is lost once it has been written.
#include "ConfigControlDesign.h"
#include "Fuzzing.h"

namespace {

std::string Rewritten(const std::string& text) {
  std::istringstream in(text);
  VELMAR::ExpFile file;
  file.KeepEverything(true);
  file.Read(in);
  std::ostringstream out;
  try {
    file.Write(out);
  } catch (const std::string&) {
    return "";  // a string ends within a UTF-8 sequence
  }
  return out.str();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  VELMAR::ConfigControlDesign::Load();
  if (size == 0 || data[0] == 0xEF) return 0;
  const std::string text(reinterpret_cast<const char*>(data), size);
  if (velmar_fuzz::HasHighNumbers(text) || velmar_fuzz::RepeatsHeaderRecords(text)) return 0;
  const std::string written = Rewritten(text);
  if (written.empty()) return 0;
  velmar_fuzz::RequireEqual(Rewritten(written), written, "what was written is read and written the same again");
  return 0;
}
