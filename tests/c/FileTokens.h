/// @file FileTokens.h
/// The tokens of a file's text, instance by instance, in a form that is the same for all spellings of a value: what two
/// files have to agree in, if nothing is lost.
#pragma once

#include <algorithm>
#include <cstdlib>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "ExpUtilities.h"
#include "Scanner.h"

namespace VELMAR::TestData {

/// One token. Numbers and strings are equal where their values are.
struct FileToken {
  int kind = 0;
  std::string text;  ///< of a string, its UTF-8 form without apostrophes
  double number = 0;

  friend bool operator==(const FileToken& a, const FileToken& b) {
    const auto isNumber = [](const FileToken& token) {
      return token.kind == Token::Integer || token.kind == Token::Real;
    };
    if (isNumber(a) && isNumber(b)) {
      // An INTEGER in the place of a REAL is written as one; nothing makes an INTEGER of a REAL.
      return a.number == b.number && (a.kind == Token::Real || b.kind == Token::Integer || b.kind == Token::Real);
    }
    return a.kind == b.kind && a.text == b.text;
  }
  friend bool operator<(const FileToken& a, const FileToken& b) {
    return a.kind != b.kind ? a.kind < b.kind : a.text < b.text;
  }
};

using Tokens = std::vector<FileToken>;

inline std::string TextOfTokens(const Tokens& tokens) {
  std::string text;
  for (const FileToken& token : tokens) text += token.text + ' ';
  return text;
}

/// The records of a text: those of the HEADER section in their order, and those of the DATA section by number, those in
/// scopes among the others. The records of a complex instance are sorted.
struct FileTokens {
  std::vector<Tokens> header;
  std::map<std::string, Tokens> instances;
};

inline FileTokens TokensOf(const std::string& text) {
  Scanner scanner(reinterpret_cast<const unsigned char*>(text.data()), static_cast<int>(text.size()));
  FileTokens file;
  Tokens tokens;
  std::vector<FileToken> scopes;  // the names of the instances whose scopes are open
  bool isData = false;
  for (Token* token = scanner.Scan(); token->kind != Token::EoF; token = scanner.Scan()) {
    FileToken next;
    next.kind = token->kind;
    for (const wchar_t* c = token->val; *c != L'\0'; ++c) {
      // A byte each, and in files with a byte order mark a character.
      if (*c < 0x100 || token->kind != Token::String) {
        next.text += static_cast<char>(*c);
      } else {
        next.text += ConvertUnicodeCodepointToSTEPEncoding(static_cast<unsigned int>(*c));
      }
    }
    if (token->kind == Token::Integer || token->kind == Token::Real) next.number = std::strtod(next.text.c_str(), nullptr);
    if (token->kind == Token::String) next.text = ConvertSTEPStringToUtf8(next.text.substr(1, next.text.size() - 2));
    if (token->kind == Token::EntityInstanceName) {
      next.text.erase(1, std::min(next.text.find_first_not_of('0', 1), next.text.size() - 1) - 1);
    }
    if (token->kind == Token::Scope && !tokens.empty()) {
      scopes.push_back(tokens.front());
      tokens.clear();
      continue;
    }
    if (token->kind == Token::Header || token->kind == Token::Data) {
      isData = token->kind == Token::Data;
      tokens.clear();
      continue;
    }
    if (token->kind != Token::Semicolon) {
      tokens.push_back(next);
      continue;
    }
    if (!scopes.empty() && !tokens.empty() && tokens.front().kind == Token::EndScope) {
      auto end = tokens.begin() + 1;
      if (end != tokens.end() && end->kind == Token::Slash) {
        while (++end != tokens.end() && end->kind != Token::Slash) continue;
        if (end != tokens.end()) ++end;
      }
      FileToken equals;
      equals.kind = Token::Equals;
      tokens.erase(tokens.begin(), end);
      tokens.insert(tokens.begin(), {scopes.back(), equals});
      scopes.pop_back();
    }
    if (!isData) {
      file.header.push_back(tokens);
    } else if (tokens.size() > 2 && tokens[1].kind == Token::Equals) {
      Tokens values(tokens.begin() + 2, tokens.end());
      if (values.front().kind == Token::LeftParenthesis) {
        std::vector<Tokens> records(1);
        int depth = 0;
        for (std::size_t i = 1; i + 1 < values.size(); ++i) {
          records.back().push_back(values[i]);
          if (values[i].kind == Token::LeftParenthesis) ++depth;
          if (values[i].kind == Token::RightParenthesis && --depth == 0) records.emplace_back();
        }
        std::sort(records.begin(), records.end());
        values.clear();
        for (const Tokens& record : records) values.insert(values.end(), record.begin(), record.end());
      }
      file.instances[tokens[0].text] = values;
    }
    tokens.clear();
  }
  return file;
}

}  // namespace VELMAR::TestData
