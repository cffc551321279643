// What the commands of velmar do with a whole file: whatever is wrong with it, they say so. A file has no difference from itself.
#include <sys/mman.h>
#include <unistd.h>

#include <stdexcept>

#include "Anonymisation.h"
#include "Comparison.h"
#include "ConfigControlDesign.h"
#include "Extraction.h"
#include "FileReport.h"
#include "Fuzzing.h"
#include "Instances.h"
#include "Listing.h"
#include "Reading.h"
#include "References.h"
#include "Renumbering.h"

namespace {

// A file in memory, which has a path.
class MemoryFile {
 public:
  MemoryFile(const std::uint8_t* data, std::size_t size) : descriptor_(memfd_create("input", 0)) {
    velmar_fuzz::Require(descriptor_ >= 0 && write(descriptor_, data, size) == static_cast<ssize_t>(size), "there is memory for a file");
  }
  ~MemoryFile() { close(descriptor_); }
  MemoryFile(const MemoryFile&) = delete;
  MemoryFile& operator=(const MemoryFile&) = delete;

  std::string Path() const { return "/proc/self/fd/" + std::to_string(descriptor_); }

 private:
  const int descriptor_;
};

const velmar::SchemaChoice kSmall = {{}, SMALL_SCHEMA, {}};

// Where something cannot be done, an exception says why.
template <class Command>
void Try(Command command) {
  try {
    command();
  } catch (const std::runtime_error&) {
  } catch (const std::invalid_argument&) {
  }
}

void LookAt(const std::string& path) {
  velmar::ReadingOptions options;
  options.schema = VELMAR::STEP_AP203;
  velmar::Reading reading(path, options);
  velmar::Population& population = reading.GetPopulation();
  for (const int number : population.Numbers()) velmar::ViewOf(*population.GetEntity(number));
  velmar::ReferencesTo(population, 1, 0);
  Try([&] { velmar::ListInstances(population, {"CARTESIAN_POINT", false, {}}); });
  velmar::Renumber(population);
  for (const int number : population.Numbers()) velmar_fuzz::Require(population.GetEntity(number) != nullptr, "numbers are those of instances");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  VELMAR::ConfigControlDesign::Load();
  const std::string text(reinterpret_cast<const char*>(data), size);
  if (velmar_fuzz::HasHighNumbers(text)) return 0;
  const MemoryFile file(data, size);
  const std::string path = file.Path();
  velmar::ReadingOptions options;
  options.schema = VELMAR::STEP_AP203;
  Try([&] { velmar::ToHtml(velmar::MakeReport(path, options, kSmall)); });
  Try([&] { LookAt(path); });
  Try([&] {
    velmar::Findings first(path);
    velmar::Findings second(path);
    velmar_fuzz::Require(velmar::CompareFiles(path, path, {kSmall, true}, first, second).IsSame(), "a file has no difference from itself");
  });
  Try([&] { velmar::Extract(path, {1}); });
  Try([&] { velmar::Merge({path, path}); });
  Try([&] { velmar::Anonymise(path); });
  return 0;
}
