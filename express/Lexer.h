/// @file Lexer.h
/// From the text of an EXPRESS file to its tokens (ISO 10303-11, clause 7).
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "Diagnostics.h"
#include "SourceFile.h"

namespace VELMAR::Express {

// clang-format off
/// The kinds of tokens: literals and names, the symbols, then one kind for each reserved word that the
/// grammar knows.
enum class TokenKind : std::uint8_t {
  EndOfFile,
  Identifier,
  Builtin,  ///< a constant, function or procedure of the language: PI, SIZEOF, INSERT
  IntegerLiteral,
  RealLiteral,
  StringLiteral,
  EncodedStringLiteral,
  BinaryLiteral,
  Dot, Comma, Semicolon, Colon, Times, Plus, Minus, Equal, Backslash, Slash, Less, Greater, LeftBracket,
  RightBracket, LeftBrace, RightBrace, Bar, LeftParenthesis, RightParenthesis, Question, LessEqual,
  NotEqual, GreaterEqual, LessStar, Assign, BarBar, Power, InstanceEqual, InstanceNotEqual,
  Abstract, Aggregate, Alias, And, Andor, Array, As, Bag, BasedOn, Begin, Binary, Boolean, By, Case,
  Constant, Derive, Div, Else, End, EndAlias, EndCase, EndConstant, EndEntity, EndFunction, EndIf, EndLocal,
  EndProcedure, EndRepeat, EndRule, EndSchema, EndSubtypeConstraint, EndType, Entity, Enumeration, Escape,
  Extensible, Fixed, For, From, Function, Generic, GenericEntity, If, In, Integer, Inverse, Like, List,
  Local, Logical, Mod, Not, Number, Of, Oneof, Optional, Or, Otherwise, Procedure, Query, Real, Reference,
  Renamed, Repeat, Return, Rule, Schema, Select, Self, Set, Skip, String, Subtype, SubtypeConstraint,
  Supertype, Then, To, TotalOver, Type, Unique, Until, Use, Var, Where, While, With, Xor,
  kCount
};
// clang-format on

/// One token: a kind and a stretch of the text.
struct Token {
  TokenKind kind;
  std::uint32_t offset;
  std::uint32_t length;
};

/// How a kind of token is called in messages: "a name", "';'", "END_ENTITY".
std::string DescribeKind(TokenKind kind);

/// Splits a text into its tokens. Remarks and white space go; the last token is always EndOfFile.
///
/// What is no token is reported, once for a run of such characters, and left out, so that one bad character
/// gives one message. Linear in the length of the text, without recursion, however deeply remarks nest.
std::vector<Token> Tokenize(const SourceFile& file, Diagnostics& diagnostics);

}  // namespace VELMAR::Express
