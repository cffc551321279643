/// @file Values.h
/// Attribute values as texts and as JSON.
#pragma once

#include <functional>
#include <nlohmann/json_fwd.hpp>
#include <string>
#include <vector>

#include "VelmarClasses.h"

namespace velmar {

using Json = nlohmann::ordered_json;

/// The value as Part 21 writes it, but with strings in UTF-8 and without control characters; `$` where it has
/// none.
std::string TextOf(VELMAR::ExpAttribute& value);

/// The value as a cell of a table: a string or an enumeration item without what encloses it, nothing for `$`
/// and `*`, any other value as TextOf gives it.
std::string CellOf(VELMAR::ExpAttribute& value);

/// The value as docs/json.md describes it.
Json JsonOf(VELMAR::ExpAttribute& value);

/// Calls `action` for each reference in the value, those in selects and aggregates included, in no particular order.
void ForEachLinkIn(VELMAR::ExpAttribute& value, const std::function<void(VELMAR::ExpLink&)>& action);

/// The instances that the value refers to, those in selects and aggregates included, in no particular order.
void AddLinksOf(VELMAR::ExpAttribute& value, std::vector<int>& numbers);

}  // namespace velmar
