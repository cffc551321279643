#include "FileReport.h"

#include <fmt/format.h>

#include <algorithm>
#include <filesystem>
#include <set>
#include <tuple>
#include <utility>

#include "Checking.h"
#include "Codes.h"
#include "ExpUtilities.h"
#include "ProductTree.h"
#include "Reading.h"
#include "ReportTexts.h"
#include "TextTemplate.h"
#include "Wording.h"

namespace velmar {

namespace {

// How many bytes from `at` on are one well-formed character of UTF-8 (RFC 3629); 0 where they are none.
std::size_t CharacterAt(const std::string& text, std::size_t at) {
  const auto byte = [&](std::size_t i) { return i < text.size() ? static_cast<unsigned char>(text[i]) : 0u; };
  const unsigned lead = byte(at);
  if (lead < 0x80) return 1;
  const std::size_t length = lead >= 0xC2 && lead < 0xE0 ? 2 : lead >= 0xE0 && lead < 0xF0 ? 3 : lead >= 0xF0 && lead < 0xF5 ? 4 : 0;
  for (std::size_t i = 1; i < length; ++i) {
    if ((byte(at + i) & 0xC0) != 0x80) return 0;
  }
  const unsigned second = byte(at + 1);
  const bool isOverlong = (lead == 0xE0 && second < 0xA0) || (lead == 0xF0 && second < 0x90);
  const bool isNoCharacter = (lead == 0xED && second >= 0xA0) || (lead == 0xF4 && second >= 0x90);
  return isOverlong || isNoCharacter ? 0 : length;
}

// Any text as a text of HTML, or as the value of an attribute in quotes.
std::string Escaped(const std::string& any) {
  const std::string text = Printable(any);
  std::string html;
  for (std::size_t i = 0; i < text.size();) {
    const std::size_t length = CharacterAt(text, i);
    switch (text[i]) {
      case '&': html += "&amp;"; break;
      case '<': html += "&lt;"; break;
      case '>': html += "&gt;"; break;
      case '"': html += "&quot;"; break;
      case '\'': html += "&#39;"; break;
      default: html += length == 0 ? "\xEF\xBF\xBD" : text.substr(i, length);
    }
    i += std::max<std::size_t>(length, 1);
  }
  return html;
}

// With places where a line may be broken within long names.
std::string Breakable(const std::string& text) {
  std::string html;
  for (const char c : Escaped(text)) {
    html += c;
    if (c == '_') html += "<wbr>";
  }
  return html;
}

// A text of the file: what is written from right to left in it does not disturb what stands beside it.
std::string Shown(const std::string& text) { return "<bdi>" + Breakable(text) + "</bdi>"; }

std::string Heading(const char* id, const char* title, const std::string& count) {
  return fmt::format("<h2 id=\"{}\">{} <small>{}</small></h2>\n", id, title, count);
}

// The source line with a mark on the character where the finding is.
std::string SourceLine(const Excerpt& excerpt) {
  const auto [text, before] = Printable(excerpt);
  if (text.empty()) return "";
  std::size_t at = 0;
  for (std::size_t i = 0; i < before && at < text.size(); ++i) at += std::max<std::size_t>(CharacterAt(text, at), 1);
  const std::size_t length = at < text.size() ? std::max<std::size_t>(CharacterAt(text, at), 1) : 0;
  const std::string marked = length == 0 ? " " : text.substr(at, length);
  return fmt::format("<pre><bdi>{}<mark>{}</mark>{}</bdi></pre>", Escaped(text.substr(0, at)), Escaped(marked),
                     Escaped(text.substr(at + length)));
}

std::string FindingRow(const Finding& finding, const std::string& source) {
  std::string subject = finding.instance == 0 ? "" : fmt::format("#{} ", finding.instance);
  if (!finding.attribute.empty()) subject += finding.attribute + ' ';
  const std::string place = finding.place.line == 0 ? "" : fmt::format("{}:{}", finding.place.line, finding.place.column);
  const std::string code = NameOf(finding.code);
  return fmt::format("<li class=\"row\"><span class=\"severity {0}\">{0}</span> <span class=\"place\">{1}</span> <b>{2}</b> {3} "
                     "<a class=\"code\" href=\"#{4}\">{4}</a>{5}{6}</li>\n",
                     Name(finding.severity), place, Breakable(subject), Shown(finding.text), code,
                     finding.hint.empty() ? "" : " <span class=\"hint\">" + Shown(finding.hint) + "</span>", source);
}

std::string FindingsSection(const FileReport& report) {
  const Findings& findings = report.findings;
  std::string html = Heading("findings", "Findings", SummaryOf(findings));
  if (findings.IsEmpty()) return html;
  html += "<ul class=\"findings\">\n";
  const std::size_t shown = std::min(findings.WithPlace().size(), report.limits.findings);
  for (const Finding& finding : findings.WithoutPlace()) html += FindingRow(finding, "");
  for (std::size_t i = 0; i < shown; ++i) {
    html += FindingRow(findings.WithPlace()[i], i < report.excerpts.size() ? SourceLine(report.excerpts[i]) : "");
  }
  html += "</ul>\n";
  const std::size_t hidden = findings.WithPlace().size() - shown + findings.NotKept();
  if (hidden > 0) html += fmt::format("<p class=\"soft\">{} not shown.</p>\n", Counted(hidden, "more finding"));
  return html;
}

// The lines as lists within lists. An item with a list can be folded.
class TreeWriter {
 public:
  void Write(const TreeLine& line, bool hasComponents) {
    while (open_ > line.level) Close();
    const std::string text = Shown(line.Text()) + (line.note.empty() ? "" : " <span class=\"soft\">(" + Escaped(line.note) + ")</span>");
    if (hasComponents) {
      html_ += "<li class=\"row\"><details open><summary class=\"own\">" + text + "</summary><ul>\n";
      ++open_;
    } else {
      html_ += "<li class=\"row\"><span class=\"own\">" + text + "</span></li>\n";
    }
  }
  std::string End() {
    while (open_ > 0) Close();
    return std::move(html_);
  }

 private:
  void Close() {
    html_ += "</ul></details></li>\n";
    --open_;
  }

  std::string html_;
  std::size_t open_ = 0;
};

std::string StructureSection(const FileReport& report) {
  const ProductStructure& structure = report.structure;
  if (structure.products.empty()) return "";
  std::vector<TreeLine> lines;
  std::size_t count = 0;
  WalkProductTree(structure, {}, [&](const TreeLine& line) {
    if (++count <= report.limits.products) lines.push_back(line);
  });
  TreeWriter tree;
  for (std::size_t i = 0; i < lines.size(); ++i) {
    tree.Write(lines[i], i + 1 < lines.size() && lines[i + 1].level > lines[i].level);
  }
  std::string html = Heading("structure", "Product structure", Counted(structure.products.size(), "product"));
  html += "<ul class=\"tree\">\n" + tree.End() + "</ul>\n";
  const std::size_t hidden = count - lines.size();
  if (hidden > 0) html += fmt::format("<p class=\"soft\">{} not shown.</p>\n", Counted(hidden, "more line"));
  return html;
}

std::string TypesSection(const FileInfo& info) {
  std::string html = Heading("types", "Types", fmt::format("{} of {}", Counted(info.instances, "instance"), Counted(info.types.size(), "type")));
  if (info.types.empty()) return html;
  html += "<table class=\"types\">\n";
  const auto most = static_cast<double>(info.types.front().second);
  for (const auto& [name, count] : info.types) {
    html += fmt::format("<tr class=\"row\"><th>{}</th><td><span class=\"bar\" style=\"width:{:.1f}%\"></span></td><td>{}</td></tr>\n",
                        Breakable(name), 100 * static_cast<double>(count) / most, Grouped(count));
  }
  return html + "</table>\n";
}

void AddRow(std::string& html, const char* label, const std::string& value) {
  if (!IsBlank(value)) html += fmt::format("<tr><th>{}</th><td>{}</td></tr>\n", label, Shown(value));
}

std::string Joined(const std::vector<std::string>& texts) { return fmt::format("{}", fmt::join(texts, "; ")); }

std::string HeaderSection(const FileInfo& info) {
  std::string html = Heading("header", "Header", "") + "<table class=\"header\">\n";
  if (info.description) {
    AddRow(html, "description", Joined(info.description->description));
    AddRow(html, "implementation level", info.description->implementationLevel);
  }
  if (info.name) {
    AddRow(html, "name", info.name->name);
    AddRow(html, "time stamp", info.name->timeStamp);
    AddRow(html, "author", Joined(info.name->author));
    AddRow(html, "organization", Joined(info.name->organization));
    AddRow(html, "preprocessor version", info.name->preprocessorVersion);
    AddRow(html, "originating system", info.name->originatingSystem);
    AddRow(html, "authorization", info.name->authorization);
  }
  AddRow(html, "schema", Joined(info.schemas));
  AddRow(html, "read as", info.protocol.empty() ? info.readAs + " (EXPRESS)" : fmt::format("{} ({})", info.readAs, info.protocol));
  return html + "</table>\n";
}

// What the codes mean that findings have.
std::string CodesSection(const FileReport& report) {
  std::set<Code> codes;
  const Findings& findings = report.findings;
  for (const Finding& finding : findings.WithoutPlace()) codes.insert(finding.code);
  const std::size_t shown = std::min(findings.WithPlace().size(), report.limits.findings);
  for (std::size_t i = 0; i < shown; ++i) codes.insert(findings.WithPlace()[i].code);
  if (codes.empty()) return "";
  std::string html = Heading("codes", "What the codes mean", "") + "<dl>\n";
  for (const Code code : codes) {
    const CodeInfo& info = InfoOf(code);
    html += fmt::format("<dt id=\"{0}\">{0} <span class=\"{1}\">{1}</span>: {2}</dt><dd>{3}</dd>\n", NameOf(code), Name(info.severity),
                        Escaped(info.title), Escaped(info.explanation));
  }
  return html + "</dl>\n";
}

// Adds those findings that are not there yet: what is wrong with the syntax is found by all who read the text.
void AddNew(Findings& findings, const Findings& others) {
  const auto key = [](const Finding& finding) {
    return std::make_tuple(finding.code, finding.place.line, finding.place.column, finding.instance);
  };
  std::set<decltype(key(Finding()))> known;
  for (const auto* list : {&findings.WithPlace(), &findings.WithoutPlace()}) {
    for (const Finding& finding : *list) known.insert(key(finding));
  }
  for (const auto* list : {&others.WithPlace(), &others.WithoutPlace()}) {
    for (const Finding& finding : *list) {
      if (known.count(key(finding)) == 0) findings.Add(finding);
    }
  }
}

// Gives back the memory of the population: what is found out of the text comes next.
FileInfo DescribeFile(const std::string& path, const ReadingOptions& options) {
  FileInfo info = [&] {
    Reading reading(path, options);
    return Describe(reading);
  }();
  VELMAR::ReleaseUnusedMemory();
  return info;
}

}  // namespace

FileReport MakeReport(const std::string& path, const ReadingOptions& reading, const SchemaChoice& schema, const ReportLimits& limits) {
  constexpr double kShareOfReading = 0.45;  // of the time that it takes
  constexpr double kShareOfStructure = 0.2;
  ReportedProgress made(reading.progress);
  ReadingOptions options = reading;
  options.progress = made.Part(0, kShareOfReading);
  Findings ofStructure(path);
  FileReport report = {
      DescribeFile(path, options),
      ReadProductStructure(path, schema, ofStructure, made.Part(kShareOfReading, kShareOfReading + kShareOfStructure)),
      CheckFile(path, schema, made.Part(kShareOfReading + kShareOfStructure, 1)),
      {},
      limits};
  AddNew(report.findings, ofStructure);
  report.findings.Sort();
  std::vector<Place> places;
  for (const Finding& finding : report.findings.WithPlace()) {
    if (places.size() == limits.findings) break;
    places.push_back(finding.place);
  }
  report.excerpts = ReadExcerpts(path, places);
  return report;
}

std::string ToHtml(const FileReport& report) {
  const FileInfo& info = report.info;
  const Findings& findings = report.findings;
  const std::string schema = info.protocol.empty() ? info.readAs : info.protocol;
  return VELMAR::Express::Fill(
      kReportPage,
      {{"version", VELMAR_VERSION},
       {"file", Escaped(std::filesystem::path(info.file).filename().string())},
       {"facts", fmt::format("{}, {} bytes, {}", Escaped(schema), Grouped(info.size), Counted(info.instances, "instance"))},
       {"verdict", findings.Errors() > 0 ? "bad" : findings.IsEmpty() ? "good" : "doubtful"},
       {"summary", SummaryOf(findings)},
       {"style", kReportStyle},
       {"script", kReportScript},
       {"findings", FindingsSection(report)},
       {"structure", StructureSection(report)},
       {"types", TypesSection(info)},
       {"header", HeaderSection(info)},
       {"codes", CodesSection(report)}});
}

}  // namespace velmar
