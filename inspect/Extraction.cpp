#include "Extraction.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cwchar>
#include <stdexcept>
#include <unordered_map>
#include <unordered_set>

#include "ExpUtilities.h"
#include "Input.h"
#include "NumberRules.h"
#include "Part21Source.h"
#include "Population.h"
#include "ReplaceFile.h"
#include "Scanner.h"
#include "WrittenInstances.h"

namespace velmar {

namespace {

using VELMAR::Token;

constexpr const char* kEnd = "ENDSEC;\nEND-ISO-10303-21;\n";

[[noreturn]] void ThrowNoData(const std::string& path) { throw std::runtime_error(path + " has no DATA section"); }

std::string Piece(const std::string& contents, int begin, int end) {
  return contents.substr(static_cast<std::size_t>(begin), static_cast<std::size_t>(end - begin));
}

// An instance of a file that is being taken apart.
struct Part {
  std::int64_t number;
  int begin, end;
  std::size_t firstReference, lastReference;  // in a list of all
};

}  // namespace

Text Extract(const std::string& path, const std::vector<std::int64_t>& numbers, const Progress& progress) {
  constexpr double kShareOfReading = 0.9;  // of the time that it takes
  ReportedProgress all(progress);
  const Part21Source source(path, all.Part(0, Part21Source::kShareOfJson));
  const std::string contents = ContentsOf(source.Path());
  std::vector<Part> parts;
  std::vector<std::int64_t> references;
  std::unordered_map<std::int64_t, std::size_t> partOf;
  const auto note = [&](const WrittenInstance& instance) {
    if (instance.IsInHeader()) return;
    const std::size_t first = references.size();
    for (const WrittenRecord& record : instance.records) {
      for (const WrittenValue& value : record.values) {
        if (value.kind != WrittenValue::Kind::Reference) continue;
        references.push_back(std::strtoll(value.text.c_str(), nullptr, 10));
      }
    }
    partOf[instance.number] = parts.size();
    parts.push_back({instance.number, instance.begin, instance.end, first, references.size()});
  };
  const int dataBegin = ForEachWrittenInstance(source.Path(), ValuesRead::All, note, all.Part(source.Share(), kShareOfReading));
  if (dataBegin < 0) ThrowNoData(path);

  std::unordered_set<std::size_t> taken;
  std::vector<std::size_t> next;
  const auto take = [&](std::int64_t number) {
    const auto part = partOf.find(number);
    if (part == partOf.end()) return false;
    if (taken.insert(part->second).second) next.push_back(part->second);
    return true;
  };
  for (const std::int64_t number : numbers) {
    if (!take(number)) throw std::runtime_error(fmt::format("{} has no instance #{}", path, number));
  }
  while (!next.empty()) {
    const Part part = parts[next.back()];
    next.pop_back();
    for (std::size_t i = part.firstReference; i < part.lastReference; ++i) take(references[i]);
  }

  std::vector<std::size_t> order(taken.begin(), taken.end());
  std::sort(order.begin(), order.end(), [&parts](std::size_t a, std::size_t b) { return parts[a].begin < parts[b].begin; });
  Text text = {Piece(contents, 0, dataBegin) + "\n"};
  for (const std::size_t i : order) {
    text.push_back(fmt::format("#{}={};\n", parts[i].number, Piece(contents, parts[i].begin, parts[i].end)));
  }
  text.emplace_back(kEnd);
  return text;
}

Text Merge(const std::vector<std::string>& paths, const Progress& progress) {
  const double share = 1 / static_cast<double>(paths.size());  // of a file of the time that it takes
  ReportedProgress all(progress);
  Text text;
  std::string schema;
  std::int64_t offset = 0;
  for (const std::string& path : paths) {
    const double begin = share * static_cast<double>(text.size());
    ReportedProgress ofFile(all.Part(begin, begin + share));
    const Part21Source source(path, ofFile.Part(0, Part21Source::kShareOfJson));
    const std::string contents = ContentsOf(source.Path());
    const std::string name = VELMAR::ToUpperString(SchemaNamedIn(source.Path()).name);
    if (text.empty()) schema = name;
    if (name != schema) {
      throw std::runtime_error(fmt::format("{} has the schema '{}', {} '{}': they make no file of one schema", paths.front(),
                                           schema, path, name));
    }
    const File file = OpenPart21(source.Path());
    ReportedProgress passed(ofFile.Part(source.Share(), 1), static_cast<double>(contents.size()));
    VELMAR::Scanner scanner(file.get());
    scanner.AllowLongTokens();
    std::int64_t highest = offset;
    std::size_t done = 0;  // so much of the contents has been copied, or passed over
    bool inData = false;
    bool hadData = false;
    std::string piece;
    const auto copyTo = [&](int position) {
      piece.append(contents, done, static_cast<std::size_t>(position) - done);
      done = static_cast<std::size_t>(position);
    };
    for (const Token* token = scanner.Scan(); token->kind != Token::EoF; token = scanner.Scan()) {
      passed(token->pos);
      if (token->kind == Token::Data) {
        const int begin = token->pos + static_cast<int>(std::wcslen(token->val));
        if (text.empty() && !hadData) copyTo(begin);
        done = static_cast<std::size_t>(begin);
        if (!text.empty()) {  // the piece before ends with its line
          if (contents.compare(done, 1, "\r") == 0) ++done;
          if (contents.compare(done, 1, "\n") == 0) ++done;
        }
        inData = hadData = true;
      } else if (token->kind == Token::EndSec && inData) {
        copyTo(token->pos);
        inData = false;
      } else if (token->kind == Token::EntityInstanceName && inData) {
        const std::int64_t number = std::wcstoll(token->val + 1, nullptr, 10);
        if (number > kGreatestInstance - offset) {
          throw std::runtime_error(fmt::format("{}:{}:{}: the instance numbers become too high", path, token->line, token->col));
        }
        highest = std::max(highest, number + offset);
        copyTo(token->pos);
        piece += fmt::format("#{}", number + offset);
        done += std::wcslen(token->val);
      }
    }
    if (!hadData) ThrowNoData(path);
    if (inData) piece.append(contents, done, std::string::npos);  // a section without an end
    if (piece.empty() || piece.back() != '\n') piece += '\n';
    text.push_back(std::move(piece));
    offset = highest;
  }
  text.emplace_back(kEnd);
  return text;
}

void WriteText(const Text& text, const std::string& path) {
  try {
    VelmarFiles::ReplaceFile(path, text);
  } catch (const std::runtime_error& error) {
    throw std::runtime_error(path + " cannot be written: " + error.what());
  }
}

}  // namespace velmar
