#include "Comparison.h"

#include <fmt/format.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <iterator>
#include <memory>
#include <utility>

#include "Checking.h"
#include "ExpUtilities.h"
#include "InstanceGraph.h"
#include "InstancePairing.h"
#include "Part21Source.h"
#include "Scanner.h"
#include "WrittenInstances.h"

namespace velmar {

namespace {

using Kind = WrittenValue::Kind;

constexpr const char* kByteOrderMark = "\xEF\xBB\xBF";

// The shares of the time that it takes to compare files.
constexpr double kShareOfSyntax = 0.25;
constexpr double kShareOfGraph = 0.5;

// Gives instances of a file anew, by where they stand.
class InstanceText {
 public:
  explicit InstanceText(const std::string& path) : path_(path), file_(Open(path)) {
    if (file_ == nullptr) ThrowUnreadable(path, errno);
    char start[3] = {};
    isUtf8_ = ReadBytes(file_.get(), start, 3) == 3 && std::memcmp(start, kByteOrderMark, 3) == 0;
  }

  // The records in the order of their types.
  WrittenInstance Get(const InstanceGraph::Node& node) {
    std::string text = std::string(isUtf8_ ? kByteOrderMark : "") + "#1=";
    const std::size_t begin = text.size();
    text.resize(begin + static_cast<std::size_t>(node.end - node.begin));
    if (std::fseek(file_.get(), node.begin, SEEK_SET) != 0) ThrowUnreadable(path_, errno);
    text.resize(begin + ReadBytes(file_.get(), text.data() + begin, text.size() - begin));
    if (std::ferror(file_.get()) != 0) ThrowUnreadable(path_, errno);
    text += ';';
    VELMAR::Scanner scanner(reinterpret_cast<const unsigned char*>(text.data()), static_cast<int>(text.size()));
    InstanceReader reader(scanner);
    WrittenInstance instance;
    reader.Read(instance);
    std::stable_sort(instance.records.begin(), instance.records.end(),
                     [](const WrittenRecord& a, const WrittenRecord& b) { return a.type < b.type; });
    return instance;
  }

 private:
  std::string path_;
  File file_;
  bool isUtf8_ = false;
};

// The value at this index as Part 21 writes it, with its string in UTF-8.
std::string TextOf(const WrittenRecord& record, std::size_t at) {
  std::string text;
  std::vector<std::size_t> open;  // where aggregates and typed values end
  for (std::size_t i = at; i < record.values[at].end; ++i) {
    for (; !open.empty() && open.back() <= i; open.pop_back()) text += ')';
    if (!text.empty() && text.back() != '(') text += ',';
    const WrittenValue& value = record.values[i];
    switch (value.kind) {
      case Kind::String:
        text += '\'' + VELMAR::ConvertSTEPStringToUtf8(value.text) + '\'';
        break;
      case Kind::Binary:
        text += '"' + value.text + '"';
        break;
      case Kind::Enumeration:
        text += '.' + value.text + '.';
        break;
      case Kind::Reference:
        text += '#' + value.text;
        break;
      case Kind::Unset:
        text += '$';
        break;
      case Kind::Omitted:
        text += '*';
        break;
      case Kind::Aggregate:
      case Kind::Typed:
        text += value.text + '(';
        open.push_back(value.end);
        break;
      case Kind::Integer:
      case Kind::Real:
        text += value.text;
        break;
    }
  }
  text.append(open.size(), ')');
  return text;
}

struct HeaderNames {
  const char* type;
  std::vector<const char*> attributes;
};

// ISO 10303-21, header section entities.
const std::vector<HeaderNames>& HeaderRecords() {
  static const std::vector<HeaderNames> kRecords = {
      {"FILE_DESCRIPTION", {"description", "implementation_level"}},
      {"FILE_NAME",
       {"name", "time_stamp", "author", "organization", "preprocessor_version", "originating_system", "authorization"}},
      {"FILE_SCHEMA", {"schema_identifiers"}},
  };
  return kRecords;
}

// The name of a parameter.
std::string NameOf(const WrittenRecord& record, std::size_t parameter, bool isComplex, const DataDictionary* dictionary) {
  const AttributeRule* attribute = AttributeOf(record, parameter, isComplex, dictionary);
  std::string name = attribute != nullptr ? attribute->name : fmt::format("parameter {}", parameter + 1);
  for (const HeaderNames& header : HeaderRecords()) {
    if (record.type == header.type && parameter < header.attributes.size()) name = header.attributes[parameter];
  }
  return isComplex ? record.type + "." + name : name;
}

class Comparer {
 public:
  Comparer(const std::string& first, const std::string& second, const DataDictionary* dictionary, const Progress& progress)
      : dictionary_(dictionary), graph_(first, second, dictionary, progress), texts_{InstanceText(first), InstanceText(second)} {}

  Comparison Run(bool withHeader, const Progress& progress) {
    pairing_ = PairInstances(graph_, progress);
    if (withHeader) CompareHeaders();  // which may have references, though it should not
    std::vector<std::pair<int, int>> all = std::move(pairing_.pairs);  // -1 for the second where there is none
    for (const int node : pairing_.removed) all.emplace_back(node, -1);
    std::sort(all.begin(), all.end());
    for (const auto& [a, b] : all) {
      if (b < 0) {
        Add(Difference::Kind::Removed, a, -1);
      } else if (!HaveSameValues(a, b)) {
        Add(Difference::Kind::Changed, a, b);
      }
    }
    for (const int node : pairing_.added) Add(Difference::Kind::Added, -1, node);
    return std::move(comparison_);
  }

 private:
  // The same for two references that lead to the same.
  std::uint64_t TokenOf(int node) const {
    if (node < 0) return 1;
    const int partner = pairing_.partner[static_cast<std::size_t>(node)];
    return graph_.HashOf(partner >= 0 && !graph_.IsInSecond(node) ? partner : node);
  }

  bool HaveSameValues(int a, int b) const {
    if (graph_.At(a).own != graph_.At(b).own) return false;
    std::uint64_t sums[2] = {0, 0};
    for (const int node : {a, b}) {
      for (const InstanceGraph::Reference& reference : graph_.ReferencesOf(node)) {
        sums[node == b ? 1 : 0] += Mixed(reference.slot, TokenOf(reference.target));
      }
    }
    return sums[0] == sums[1];
  }

  void Add(Difference::Kind kind, int a, int b) {
    const std::string& type = graph_.TypeName(graph_.At(a >= 0 ? a : b).type);
    Comparison::Counts& counts = comparison_.byType[type];
    ++(kind == Difference::Kind::Changed   ? counts.changed
       : kind == Difference::Kind::Removed ? counts.removed
                                           : counts.added);
    if (comparison_.instances.size() == Comparison::kKept) {
      ++comparison_.notKept;
      return;
    }
    Difference difference = {kind, type, {}, {}, {}};
    if (a >= 0) difference.before = {graph_.At(a).number, graph_.At(a).where};
    if (b >= 0) difference.after = {graph_.At(b).number, graph_.At(b).where};
    if (kind == Difference::Kind::Changed) {
      const WrittenInstance before = texts_[0].Get(graph_.At(a));
      const WrittenInstance after = texts_[1].Get(graph_.At(b));
      for (std::size_t i = 0; i < std::min(before.records.size(), after.records.size()); ++i) {
        CompareRecords(before.records[i], after.records[i], before.isComplex, difference.values);
      }
    }
    comparison_.instances.push_back(std::move(difference));
  }

  void CompareRecords(const WrittenRecord& before, const WrittenRecord& after, bool isComplex, std::vector<ChangedValue>& values) {
    std::size_t inBefore = 0, inAfter = 0;
    for (std::size_t n = 0; n < std::max(before.parameters, after.parameters); ++n) {
      const bool isBefore = n < before.parameters;
      const bool isAfter = n < after.parameters;
      const AttributeRule* attribute = AttributeOf(before, n, isComplex, dictionary_);
      const Domain* domain = attribute == nullptr ? nullptr : attribute->domain;
      if (!isBefore || !isAfter || DigestOf(before, inBefore, domain, false) != DigestOf(after, inAfter, domain, true)) {
        values.push_back({NameOf(before, n, isComplex, dictionary_), isBefore ? TextOf(before, inBefore) : "",
                          isAfter ? TextOf(after, inAfter) : ""});
      }
      if (isBefore) inBefore = before.values[inBefore].end;
      if (isAfter) inAfter = after.values[inAfter].end;
    }
  }

  // Of a value, with what its references lead to.
  std::uint64_t DigestOf(const WrittenRecord& record, std::size_t at, const Domain* domain, bool isSecond) const {
    Digest digest;
    std::uint32_t slot = 0;
    AddParameter(record, at, domain, slot, digest);
    for (const DigestedReference& reference : digest.references) {
      digest.hash += Mixed(reference.slot, TokenOf(graph_.Find(isSecond, reference.number)) + 1);
    }
    return digest.hash;
  }

  // The records of a type in their order: the first with the first, and so on.
  void CompareHeaders() {
    const auto& before = graph_.HeaderOf(false);
    const auto& after = graph_.HeaderOf(true);
    std::vector<bool> isTaken(after.size(), false);
    for (const WrittenInstance& record : before) {
      const std::string& type = record.records.front().type;
      std::size_t i = 0;
      while (i < after.size() && (isTaken[i] || after[i].records.front().type != type)) ++i;
      if (i == after.size()) {
        comparison_.header.push_back({Difference::Kind::Removed, type, {-1, record.where}, {}, {}});
        continue;
      }
      isTaken[i] = true;
      Difference difference = {Difference::Kind::Changed, type, {-1, record.where}, {-1, after[i].where}, {}};
      CompareRecords(record.records.front(), after[i].records.front(), false, difference.values);
      if (!difference.values.empty()) comparison_.header.push_back(std::move(difference));
    }
    for (std::size_t i = 0; i < after.size(); ++i) {
      if (isTaken[i]) continue;
      const std::string& type = after[i].records.front().type;
      comparison_.header.push_back({Difference::Kind::Added, type, {}, {-1, after[i].where}, {}});
    }
  }

  const DataDictionary* dictionary_;
  const InstanceGraph graph_;
  InstanceText texts_[2];
  Pairing pairing_;
  Comparison comparison_;
};

}  // namespace

Comparison CompareFiles(const std::string& first, const std::string& second, const ComparisonOptions& options,
                        Findings& findingsOfFirst, Findings& findingsOfSecond, const Progress& progress) {
  ReportedProgress all(progress);
  const Part21Source sources[] = {Part21Source(first, all.Part(0, Part21Source::kShareOfJson / 2)),
                                  Part21Source(second, all.Part(Part21Source::kShareOfJson / 2, Part21Source::kShareOfJson))};
  ReportedProgress compared(all.Part(std::max(sources[0].Share(), sources[1].Share()), 1));
  const bool areReadable[] = {
      CheckSyntax(sources[0].Path(), findingsOfFirst, compared.Part(0, kShareOfSyntax / 2)),
      CheckSyntax(sources[1].Path(), findingsOfSecond, compared.Part(kShareOfSyntax / 2, kShareOfSyntax))};
  if (!areReadable[0] || !areReadable[1]) return {};
  Findings ignored(first);
  const std::unique_ptr<DataDictionary> dictionary = LoadDictionaryOf(sources[0].Path(), options.schema, ignored);
  return Comparer(sources[0].Path(), sources[1].Path(), dictionary.get(),
                  compared.Part(kShareOfSyntax, kShareOfSyntax + kShareOfGraph))
      .Run(options.withHeader, compared.Part(kShareOfSyntax + kShareOfGraph, 1));
}

}  // namespace velmar
