/// @file Colours.h
/// What terminals show in colours.
#pragma once

#include <cstdio>
#include <string>

namespace velmar {

/// How a text is shown, as the sequences of ECMA-48 name it (SGR).
namespace Style {
constexpr const char* kDim = "2";
constexpr const char* kRed = "31";
constexpr const char* kGreen = "32";
constexpr const char* kYellow = "33";
constexpr const char* kBoldRed = "1;31";
constexpr const char* kBoldGreen = "1;32";
constexpr const char* kBoldYellow = "1;33";
}  // namespace Style

/// Whether the stream goes to a terminal that takes more than plain text.
bool IsTerminal(std::FILE* stream);

/// The text in this style where the stream goes to such a terminal, unless its user wants no colours (NO_COLOR); else the text.
std::string Coloured(std::FILE* stream, const std::string& text, const char* style);

}  // namespace velmar
