/// @file Json.h
/// What velmar knows as JSON, in the shapes that docs/json.md describes.
#pragma once

#include <nlohmann/json_fwd.hpp>
#include <string>

#include "FileInfo.h"
#include "Findings.h"
#include "Values.h"

namespace velmar {

/// The findings as an array, in the order in which they stand.
Json ToJson(const Findings& findings);

/// With the findings of its file.
Json ToJson(const FileInfo& info, const Findings& findings);

/// The text with line ends and indentation; bytes that are no UTF-8 become U+FFFD.
std::string ToText(const Json& json);

}  // namespace velmar
