// The importer: the same population from a stream of the C library as from one of C++, twice in one file, and behind
// what is there already.
#include "ConfigControlDesign.h"
#include "Fuzzing.h"
#include "Part21Importer.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  VELMAR::ConfigControlDesign::Load();
  if (size == 0 || data[0] == 0xEF) return 0;
  const std::string input(reinterpret_cast<const char*>(data), size);
  if (velmar_fuzz::HasHighNumbers(input) || velmar_fuzz::RepeatsHeaderRecords(input)) return 0;
  std::istringstream in(input);
  VELMAR::ExpFile file(VELMAR::STEP_AP203);
  file.Read(in);
  // Without the header, which may be given the time of writing.
  const auto population = [](VELMAR::ExpFile& f) { return velmar_fuzz::TextOf(f, &VELMAR::ExpFile::WriteDataSection); };
  const std::string text = population(file);

  VELMAR::ExpFile other(VELMAR::STEP_AP203);
  FILE* stream = fmemopen(const_cast<std::uint8_t*>(data), size, "rb");
  VELMAR::Part21Importer importer;
  bool isWhole = true;
  try {
    importer.ImportFromStream(stream, &other, 0);
  } catch (const std::exception&) {
    isWhole = false;  // what ends the reading of a file, such as a header without records, is the caller's matter here
  }
  std::fclose(stream);
  if (isWhole) velmar_fuzz::RequireEqual(population(other), text, "both streams give one population");

  in.clear();
  in.seekg(0);
  file.Append(in);
  in.clear();
  in.seekg(0);
  file.Read(in);
  velmar_fuzz::RequireEqual(population(file), text, "a second reading gives the same population");
  return 0;
}
