#include "Findings.h"

#include <fmt/format.h>

#include <algorithm>

#include "Wording.h"

namespace velmar {

namespace {

// Names and values in a file, which messages repeat, may be of any length. In bytes.
constexpr std::size_t kLongestText = 1000;

}  // namespace

void Findings::Add(Finding finding) {
  if (finding.text.size() > kLongestText) {
    std::size_t end = kLongestText;
    while (end > 0 && (finding.text[end] & 0xC0) == 0x80) --end;  // within a character
    finding.text = finding.text.substr(0, end) + "...";
  }
  if (finding.severity == Severity::kError) ++errors_;
  if (finding.place.line == 0) {
    general_.push_back(std::move(finding));
  } else if (placed_.size() < kKept) {
    placed_.push_back(std::move(finding));
  } else {
    ++notKept_;
  }
}

void Findings::Add(Code code, Place place, std::string text, int instance, std::string attribute) {
  Add({code, InfoOf(code).severity, place, instance, std::move(attribute), std::move(text), ""});
}

void Findings::Keep(const std::set<Code>& codes) {
  errors_ = 0;
  for (std::vector<Finding>* findings : {&placed_, &general_}) {
    const auto isOther = [&codes](const Finding& finding) { return codes.count(finding.code) == 0; };
    findings->erase(std::remove_if(findings->begin(), findings->end(), isOther), findings->end());
    errors_ += static_cast<std::size_t>(std::count_if(findings->begin(), findings->end(), [](const Finding& finding) {
      return finding.severity == Severity::kError;
    }));
  }
}

void Findings::Sort() {
  std::stable_sort(placed_.begin(), placed_.end(), [](const Finding& a, const Finding& b) {
    return a.place.line != b.place.line ? a.place.line < b.place.line : a.place.column < b.place.column;
  });
}

std::string SummaryOf(const Findings& findings) {
  const std::size_t count = findings.WithPlace().size() + findings.WithoutPlace().size() + findings.NotKept();
  if (count == 0) return "nothing is wrong";
  return fmt::format("{}, {}", Counted(findings.Errors(), "error"), Counted(count - findings.Errors(), "warning"));
}

}  // namespace velmar
