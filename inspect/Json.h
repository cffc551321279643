/// @file Json.h
/// What velmar knows as JSON, in the shapes that docs/json.md describes.
#pragma once

#include <nlohmann/json_fwd.hpp>
#include <string>
#include <vector>

#include "Comparison.h"
#include "FileInfo.h"
#include "Findings.h"
#include "Instances.h"
#include "Listing.h"
#include "ProductStructure.h"
#include "References.h"
#include "TypeInfo.h"
#include "Values.h"

namespace velmar {

/// The findings as an array, in the order in which they stand.
Json ToJson(const Findings& findings);

/// With the findings of its file.
Json ToJson(const FileInfo& info, const Findings& findings);

/// An instance with its attributes; `place` is that in the file, {0, 0} where it is not known.
Json ToJson(const InstanceView& instance, Place place);

/// An array with an object for each row.
Json ToJson(const Listing& listing);

/// Those to `instance`.
Json ToJson(const std::vector<Reference>& references, const InstanceView& instance);

Json ToJson(const ProductStructure& structure);

Json ToJson(const Comparison& comparison);

/// An array of objects.
Json ToJson(const std::vector<SchemaInfo>& schemas);
Json ToJson(const TypeInfo& type);

/// The text with line ends and indentation; bytes that are no UTF-8 become U+FFFD.
std::string ToText(const Json& json);

}  // namespace velmar
