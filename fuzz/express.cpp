// The EXPRESS front end: any text is read and reported about; what has no error is printed, reads to the same text again,
// and has its C++ written.
#include "CppWriter.h"
#include "Diagnostics.h"
#include "ExpressParser.h"
#include "Fuzzing.h"
#include "Printer.h"
#include "Resolver.h"

using namespace VELMAR::Express;

namespace {

struct Reading {
  explicit Reading(const std::string& text) {
    ParseFile(model, SourceFile("input.exp", text), diagnostics);
    Resolve(model, diagnostics);
  }
  std::string Findings() const {
    std::ostringstream out;
    diagnostics.Print(out);
    return out.str();
  }
  Model model;
  Diagnostics diagnostics;
};

std::string Printed(const Model& model) {
  std::ostringstream out;
  Print(model, out);
  return out.str();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const Reading reading(std::string(reinterpret_cast<const char*>(data), size));
  const std::string findings = reading.Findings();
  velmar_fuzz::Require(findings.empty() == (reading.diagnostics.All().empty()), "findings are printed");
  if (reading.diagnostics.ErrorCount() > 0) return 0;

  const std::string printed = Printed(reading.model);
  const Reading again(printed);
  velmar_fuzz::Require(again.diagnostics.ErrorCount() == 0, "what is printed has no error");
  velmar_fuzz::RequireEqual(Printed(again.model), printed, "what is printed is printed the same again");
  for (const auto& schema : reading.model.schemas) {
    velmar_fuzz::Require(WriteCpp(reading.model, *schema, {"input.exp", "INPUT", 1}).size() == 3, "the C++ is written");
  }
  return 0;
}
