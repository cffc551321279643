/// @file TextTemplate.h
/// Text with named holes.
#pragma once

#include <initializer_list>
#include <string>
#include <string_view>
#include <utility>

namespace VELMAR::Express {

/// One hole and what goes into it.
using Hole = std::pair<std::string_view, std::string>;

/// Fills the holes of a text: every `$name$` becomes the text given for `name`. A line feed at the very
/// beginning of `text` is left out, so that a raw string can begin on a line of its own. A hole that stands
/// alone on its line and is filled with an empty text takes the line with it. Throws std::logic_error for a
/// hole that is not given and for a single `$`.
std::string Fill(std::string_view text, std::initializer_list<Hole> holes);

}  // namespace VELMAR::Express
