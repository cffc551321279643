/// @file ExpUtilities.h
/// String encoding of Part 21 files, text utilities and the library's exception class.
///
/// Text inside the model is UTF-8. In a Part 21 file a string is ASCII between apostrophes; everything else
/// is written with the control directives of ISO 10303-21: `\X\hh` for a byte of ISO 8859-1,
/// `\X2\hhhh...\X0\` for UCS-2, `\X4\hhhhhhhh...\X0\` for UCS-4, `\S\c` for the upper half of the ISO 8859
/// part chosen with `\Px\`, and the doubled apostrophe and backslash. The functions here convert both ways.
/// They keep no state between calls, do not depend on the locale, and read no memory beyond the text they are
/// given.
///
/// Positions are 32-bit indices into the text, passed by reference and advanced by the callee.
#pragma once

#include <exception>
#include <ostream>
#include <string>
#include <unordered_set>
#include <vector>

#include "VelmarApi.h"

/// An exception that says what went wrong in one text.
class VELMAR_API descriptive_exception : public std::exception {
 public:
  /// An exception with this message.
  explicit descriptive_exception(const std::string& message);
  ~descriptive_exception() override;

  /// The message; valid as long as the exception lives.
  const char* what() const noexcept override;

 private:
  std::string message_;
};

namespace VELMAR {

class ExpAbstractObjectAdmin;
class ExpAggregation;
class ExpAttribute;
class ExpEntity;
class ExpSelect;

// -----------------------------------------------------------------------------------------------------------
// Text utilities

/// `text` with every occurrence of `from` replaced by `to`: left to right, without overlaps, and without
/// looking into what was put in. An empty `from` leaves the text unchanged. Linear in the lengths of text and
/// result.
VELMAR_API std::string ReplaceString(std::string text, std::string from, std::string to);

/// `text` with the ASCII letters in upper case; all other bytes, those of UTF-8 sequences too, stay as they
/// are.
VELMAR_API std::string ToUpperString(std::string text);

/// `text` with the ASCII letters in lower case; all other bytes, those of UTF-8 sequences too, stay as they
/// are.
VELMAR_API std::string ToLowerString(std::string text);

// -----------------------------------------------------------------------------------------------------------
// Whole texts

/// The file form of a UTF-8 text, without the enclosing apostrophes.
///
/// Every character that needs a directive gets one of its own: consecutive characters are not gathered. A
/// byte that cannot start a UTF-8 sequence comes out as `\X\00`. Throws the std::string of
/// GetNextContinuation for a sequence that is cut short or broken.
VELMAR_API std::string ConvertUtf8ToSTEPString(const std::string& utf8);

/// The UTF-8 form of the text between the apostrophes of a file string. Never fails.
///
/// Bytes that are not well-formed UTF-8 make the whole text count as ISO 8859-1. A backslash that opens no
/// known directive is kept; of a malformed `\X\` the directive is dropped and the character behind it kept; a
/// `\X2\` or `\X4\` run ends at the first group that is not hexadecimal. A `\S\` or `\X\` with nothing behind
/// it ends the text. UCS-2 groups are decoded one by one, so a surrogate pair yields two encoded surrogates.
VELMAR_API std::string ConvertSTEPStringToUtf8(const std::string& stepText);

/// Bytes of ISO 8859-`part` as UTF-8. A byte that the part leaves undefined, and every byte when there is no
/// such part, yields one NUL byte.
VELMAR_API std::string ISO8859ToUtf8(const std::string& bytes, int part);

/// True when `text`, up to its terminating NUL, is not well-formed UTF-8: a sequence lacks a continuation
/// byte, or a byte cannot start one. False for null, for empty and for plain ASCII text. Overlong forms are
/// accepted.
VELMAR_API bool IsPossibleISO8859(const char* text);

// -----------------------------------------------------------------------------------------------------------
// Single characters

/// The UTF-8 bytes of one code point; empty above 0x1FFFFF. Surrogates and the values from 0x110000 to
/// 0x1FFFFF are encoded like any other.
VELMAR_API std::string Utf8Encode(unsigned int codepoint);

/// True for the bytes 0x80 to 0xBF.
VELMAR_API bool NextIsContinuation(unsigned char c);

/// Steps `index` on by one and appends the six bits of the continuation byte there to `codepoint`.
///
/// Throws a std::string when the text ends there or another byte stands there; `index` names the place then.
VELMAR_API void GetNextContinuation(const std::string& s, unsigned int& index, unsigned int& codepoint);

/// Decodes the UTF-8 sequence that starts at `index` and leaves `index` on its last byte.
///
/// Returns 0, with `index` unchanged, for a byte that cannot start a sequence. Throws as GetNextContinuation
/// does. Overlong forms are accepted.
VELMAR_API unsigned int GetNextUtf8Codepoint(const std::string& s, unsigned int& index);

/// The file form of one code point: itself, doubled, or one complete directive in upper-case hexadecimal.
VELMAR_API std::string ConvertUnicodeCodepointToSTEPEncoding(unsigned int codepoint);

// -----------------------------------------------------------------------------------------------------------
// Pieces of directives

/// Appends the hexadecimal digit `c`, of either case, to `value`. `ok` tells whether it was one; if not,
/// `value` is unchanged.
VELMAR_API void AddHexDigit(char c, unsigned int& value, bool& ok);

/// Reads the four hexadecimal digits at `index` into `codepoint` and moves `index` behind them.
///
/// False, with `index` unchanged, when fewer than four characters are left (`codepoint` is unchanged too) or
/// one of them is not a digit (`codepoint` holds the digits before it).
VELMAR_API bool GetHexTwoCodePoint(const std::string& s, unsigned int& index, unsigned int& codepoint);

/// GetHexTwoCodePoint for eight digits.
VELMAR_API bool GetHexFourCodePoint(const std::string& s, unsigned int& index, unsigned int& codepoint);

/// Moves `index` behind backslash, `c`, backslash if they stand there; otherwise false and `index` unchanged.
VELMAR_API bool MatchStepEscapeSequence(const std::string& s, unsigned int& index, char c);

/// Moves `index` behind backslash, `c1`, `c2`, backslash if they stand there; otherwise false and `index`
/// unchanged.
VELMAR_API bool MatchStepEscapeSequence(const std::string& s, unsigned int& index, char c1, char c2);

// -----------------------------------------------------------------------------------------------------------
// Code pages

/// `pageN[byte]` is the Unicode code point of a byte of ISO/IEC 8859-N; 0 marks a byte that is not assigned.
/// Part 1 is the identity and part 12 does not exist. page7 is the edition of 1987, without A4, A5 and AA.
///@{
extern VELMAR_API const unsigned int page2[256];
extern VELMAR_API const unsigned int page3[256];
extern VELMAR_API const unsigned int page4[256];
extern VELMAR_API const unsigned int page5[256];
extern VELMAR_API const unsigned int page6[256];
extern VELMAR_API const unsigned int page7[256];
extern VELMAR_API const unsigned int page8[256];
extern VELMAR_API const unsigned int page9[256];
extern VELMAR_API const unsigned int page10[256];
extern VELMAR_API const unsigned int page11[256];
extern VELMAR_API const unsigned int page13[256];
extern VELMAR_API const unsigned int page14[256];
extern VELMAR_API const unsigned int page15[256];
extern VELMAR_API const unsigned int page16[256];
///@}

// -----------------------------------------------------------------------------------------------------------
// Preparing instances for writing

/// Marks the values of an entity that have no Part 21 form as not provided, so that they are written `$`: references to
/// no entity, enumerations without an item, and selects without a value, also those within aggregates. Of a complex
/// instance, the values that its parts have of their own. Values that are marked already count as they are.
///
/// Returns how many values it has marked. Attributes that a file left out, or that an application has not set, are
/// such values; without a mark `#-1` and `..` would be written, which nothing can read, and a select would throw.
VELMAR_API int MarkUnsetValues(ExpEntity& entity);

/// What ExpFile::KeepEverything has kept of the parameter at a position (from 0) beside the entity's attribute, which could not take
/// it and is not provided; or behind the last attribute. Null where there is nothing. Belongs to the entity.
///
/// It is written in the attribute's place until the attribute is provided. A parameter of a type that the attribute
/// does not have, a binary or an item that an enumeration lacks, is kept so (ISO 10303-21, parameters).
VELMAR_API ExpSelect* GetKeptValue(ExpEntity& entity, int index);

/// Gives the memory of deleted values and entities back, so that it can be used for anything.
///
/// Values and entities are so many and so small that the library has memory of its own for them, which it otherwise keeps
/// for those to come. A chunk goes back once nothing in chunks of its kind is in use; a population that is still
/// there may hold back what others have left.
VELMAR_API void ReleaseUnusedMemory();

// -----------------------------------------------------------------------------------------------------------
// Writing one instance with all that it needs

/// Writes instances together with everything that they refer to, directly or not, in Part 21 form, one a line: the
/// referenced instances first, each simple instance once in the writer's life.
///
/// A complex instance is written each time it is reached, but not again while it is being written. References that
/// the store cannot resolve are passed over. Chains of any length are followed without recursion.
class VELMAR_API ExpFullEntityWriter {
 public:
  /// Resolves references in `admin` and writes to `out`; owns neither.
  ExpFullEntityWriter(ExpAbstractObjectAdmin* admin, std::ostream& out);
  ~ExpFullEntityWriter();
  ExpFullEntityWriter(const ExpFullEntityWriter&) = delete;
  ExpFullEntityWriter& operator=(const ExpFullEntityWriter&) = delete;

  /// Writes the entity, which must not be null, behind all that it refers to.
  void WriteFullEntity(ExpEntity* entity);
  /// Writes what the entity refers to, and the entity itself if `writeSelf`.
  void WriteEntity(ExpEntity* entity, bool writeSelf);
  /// Writes what the elements of an aggregate refer to; null is ignored.
  void WriteAggregation(ExpAggregation* aggregation);

 private:
  struct Step;
  void Run(std::vector<Step>& steps);
  void Walk(std::vector<Step>& steps);
  void CollectReferences(ExpAttribute* value, std::vector<Step>& steps);

  ExpAbstractObjectAdmin* admin_;
  std::ostream& out_;
  std::vector<int>* writtenNumbers_;
  std::unordered_set<int> written_;            // writtenNumbers_, for quick finding
  std::unordered_set<ExpEntity*> inProgress_;  // complex instances whose references are being written
};

}  // namespace VELMAR
