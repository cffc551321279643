#include "Sarif.h"

#include <cstring>
#include <nlohmann/json.hpp>
#include <string>


namespace velmar {

namespace {

std::string Sentence(const Finding& finding) {
  std::string text = finding.instance > 0 ? "#" + std::to_string(finding.instance) + " " : "";
  if (!finding.attribute.empty()) text += finding.attribute + ": ";
  return text + finding.text;
}

// A path as the URI reference that it is relative to the folder where one stands (RFC 3986).
std::string AsUri(const std::string& path) {
  static const char kPlain[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-._~/";
  static const char kDigits[] = "0123456789ABCDEF";
  std::string uri;
  for (const char c : path) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte != 0 && std::strchr(kPlain, c) != nullptr) {
      uri += c;
    } else {
      uri += {'%', kDigits[byte >> 4], kDigits[byte & 15]};
    }
  }
  return uri;
}

Json AsResult(const Finding& finding, const std::string& file) {
  Json location = {{"artifactLocation", {{"uri", AsUri(file)}}}};
  if (finding.place.line > 0) {
    location["region"] = {{"startLine", finding.place.line}, {"startColumn", finding.place.column}};
  }
  return {{"ruleId", NameOf(finding.code)},
          {"level", Name(finding.severity)},
          {"message", {{"text", Sentence(finding)}}},
          {"locations", Json::array({Json{{"physicalLocation", location}}})}};
}

}  // namespace

Json ToSarif(const std::vector<Findings>& files) {
  Json rules = Json::array();
  for (const CodeInfo& row : Catalogue()) {
    rules.push_back({{"id", NameOf(row.code)},
                     {"shortDescription", {{"text", row.title}}},
                     {"fullDescription", {{"text", row.explanation}}},
                     {"defaultConfiguration", {{"level", Name(row.severity)}}}});
  }
  Json results = Json::array();
  for (const Findings& findings : files) {
    for (const Finding& finding : findings.WithPlace()) results.push_back(AsResult(finding, findings.File()));
    for (const Finding& finding : findings.WithoutPlace()) results.push_back(AsResult(finding, findings.File()));
  }
  return {{"version", "2.1.0"},
          {"runs", Json::array({Json{{"tool", {{"driver", {{"name", "velmar"}, {"version", VELMAR_VERSION}, {"rules", rules}}}}},
                                     {"columnKind", "unicodeCodePoints"},
                                     {"results", results}}})}};
}

}  // namespace velmar
