// Strings: whatever is decoded can be encoded, and decodes to itself.
#include "ExpUtilities.h"
#include "Fuzzing.h"
#include "VelmarClasses.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string input(reinterpret_cast<const char*>(data), size);
  VELMAR::ExpString value(input);
  const std::string utf8 = value.GetExpString();
  std::string text;
  try {
    text = value.ToString();
  } catch (const std::string&) {
    return 0;  // it ends within a UTF-8 sequence
  }
  velmar_fuzz::Require(text.size() >= 2 && text.front() == '\'' && text.back() == '\'', "texts stand between apostrophes");
  for (const char c : text) velmar_fuzz::Require(c >= ' ', "texts are of ASCII without control characters");
  VELMAR::ExpString again(text.substr(1, text.size() - 2));
  velmar_fuzz::RequireEqual(again.ToString(), text, "a written text is written the same again");
  return 0;
}
