#include "Messages.h"

#include <fmt/format.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <system_error>
#include <vector>

#include "Colours.h"
#include "Input.h"
#include "ProgressBar.h"
#include "Wording.h"

namespace velmar {

namespace {

// So many findings with a place are printed; what is beyond is counted.
constexpr std::size_t kPrinted = 50;

// The end of a message.
std::string CodeOf(const Finding& finding) {
  return fmt::format(" [{}]{}{}", NameOf(finding.code), finding.hint.empty() ? "" : "; ", finding.hint);
}

std::string Shown(std::FILE* stream, Severity severity) {
  return Coloured(stream, Name(severity), severity == Severity::kError ? Style::kBoldRed : Style::kBoldYellow);
}

// "#12 DIRECTION.name: "; empty where nothing is known of it.
std::string SubjectOf(const Finding& finding) {
  std::string subject = finding.instance == 0 ? "" : fmt::format("#{}", finding.instance);
  if (!finding.attribute.empty()) subject += (subject.empty() ? "" : " ") + finding.attribute;
  return subject.empty() ? "" : subject + ": ";
}

void PrintTo(std::FILE* stream, Findings& findings, std::size_t most, bool withSubjects) {
  const auto print = [stream](const std::string& text) { stream == stderr ? Say(text) : fmt::print(stream, "{}", text); };

  findings.Sort();
  const std::string& file = findings.File();
  const std::vector<Finding>& placed = findings.WithPlace();
  const std::size_t printed = std::min(placed.size(), most);
  std::vector<Place> places;
  for (std::size_t i = 0; i < printed; ++i) places.push_back(placed[i].place);
  const std::vector<Excerpt> excerpts = ReadExcerpts(file, places);

  for (std::size_t i = 0; i < printed; ++i) {
    const Finding& finding = placed[i];
    print(fmt::format("{}:{}:{}: {}: {}{}{}\n", file, finding.place.line, finding.place.column, Shown(stream, finding.severity),
                      withSubjects ? SubjectOf(finding) : "", finding.text, CodeOf(finding)));
    if (i >= excerpts.size()) continue;  // the file is gone
    const auto [shown, caret] = Printable(excerpts[i]);
    if (!shown.empty()) print(fmt::format("  {}\n  {:{}}{}\n", shown, "", caret, Coloured(stream, "^", Style::kBoldGreen)));
  }
  const std::size_t hidden = placed.size() - printed + findings.NotKept();
  if (hidden > 0) print(fmt::format("{}: {} not shown\n", file, Counted(hidden, "more message")));
  for (const Finding& finding : findings.WithoutPlace()) {
    print(fmt::format("{}: {}: {}{}\n", file, Shown(stream, finding.severity), finding.text, CodeOf(finding)));
  }
}

}  // namespace

void Print(Findings& findings) { PrintTo(stderr, findings, kPrinted, false); }

void PrintAsData(Findings& findings, std::size_t most) { PrintTo(stdout, findings, most, true); }

int Finish(Findings& findings, bool isQuiet) {
  FlushOutput();
  const int status = findings.Errors() == 0 ? kDone : kFileHasErrors;
  if (!isQuiet) Print(findings);
  return status;
}

void FlushOutput() {
  if (std::fflush(stdout) != 0) throw std::system_error(errno, std::generic_category());
}

void Say(const std::string& text) noexcept {
  EraseProgressBar();
  (void)std::fputs(text.c_str(), stderr);
}

int CannotRun(const std::string& text) {
  Say("velmar: " + Shown(stderr, Severity::kError) + ": " + text + '\n');
  return kCannotRun;
}

}  // namespace velmar
