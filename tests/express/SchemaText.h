/// @file SchemaText.h
/// Reads EXPRESS texts for the tests.
#pragma once

#include <fstream>
#include <iterator>
#include <sstream>
#include <string>
#include <vector>

#include "Diagnostics.h"
#include "ExpressParser.h"
#include "Model.h"
#include "Resolver.h"

namespace VELMAR::Express {

/// A text read and resolved, with what was found in it.
struct SchemaText {
  explicit SchemaText(const std::string& text, const std::string& name = "test.exp") {
    ParseFile(model, SourceFile(name, text), diagnostics);
    Resolve(model, diagnostics);
  }

  /// The findings without excerpts, one "line:column code text" each, in the order of their places.
  std::vector<std::string> Findings() const {
    std::ostringstream out;
    diagnostics.Print(out);
    std::istringstream in(out.str());
    std::vector<std::string> lines;
    for (std::string line; std::getline(in, line);) {
      if (line.compare(0, 9, "test.exp:") == 0) lines.push_back(line.substr(9));
    }
    return lines;
  }

  const Entity& GetEntity(const std::string& name) const {
    return static_cast<const Entity&>(*model.schemas.front()->scope.at(name));
  }

  const DefinedType& GetType(const std::string& name) const {
    return static_cast<const DefinedType&>(*model.schemas.front()->scope.at(name));
  }

  Model model;
  Diagnostics diagnostics;
};

/// The declarations within "SCHEMA s; ... END_SCHEMA;", which stand on line 1.
inline SchemaText InSchema(const std::string& declarations) {
  return SchemaText("SCHEMA s; " + declarations + " END_SCHEMA;");
}

inline std::string ContentOf(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), {});
}

}  // namespace VELMAR::Express
