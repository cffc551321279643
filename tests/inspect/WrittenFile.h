/// @file WrittenFile.h
/// What a population writes of a text when everything is kept.
#pragma once

#include <sstream>
#include <string>

#include "ExpFile.h"
#include "Schemas.h"

namespace velmar {

/// The schema is the one that the text names.
inline std::string Rewritten(const std::string& text) {
  LoadAllLibraries();
  VELMAR::ExpFile file;
  file.KeepEverything(true);
  std::istringstream in(text);
  file.Read(in);
  std::ostringstream out;
  file.Write(out);
  return out.str();
}

}  // namespace velmar
