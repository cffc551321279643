#include "Diagnostics.h"

#include <algorithm>
#include <cstring>
#include <ostream>
#include <string_view>
#include <utility>

namespace VELMAR::Express {
namespace {

// Numbers below 10 are the lexer's, 10 to 19 the parser's, from 20 on the resolver's. A number is never given
// twice.
constexpr CatalogueRow kCatalogue[] = {
    {"E001", Severity::Error, "The character belongs to no token of the language (7.1)."},
    {"E002", Severity::Error, "A string literal ends on the line where it begins (7.5.4)."},
    {"E003", Severity::Error, "Every (* has its *); remarks nest (7.1.6)."},
    {"E004", Severity::Error, "A *) outside of a remark closes nothing (7.1.6)."},
    {"E005", Severity::Error, "An encoded string literal holds groups of eight hexadecimal digits (7.5.4)."},
    {"E006", Severity::Error, "A binary literal is % followed by the digits 0 and 1 (7.5.1)."},
    {"E007", Severity::Error, "The exponent of a real literal has at least one digit (7.5.3)."},
    {"E010", Severity::Error, "The text does not follow the grammar (annex A)."},
    {"E011", Severity::Error, "A reserved word is no name (7.2)."},
    {"E012", Severity::Error, "Every declaration and statement that opens a block closes it (annex A)."},
    {"E013", Severity::Error, "An END_ word closes the innermost open block of its kind (annex A)."},
    {"E014", Severity::Error,
     "Types, supertype expressions, brackets, statements and algorithms are read to a nesting depth of 200, "
     "expressions to one of 500."},
    {"E015", Severity::Error, "An EXPRESS text holds at least one schema (annex A, syntax)."},
    {"E016", Severity::Error, "A derived attribute gives the expression that derives it (9.2.1.2)."},
    {"E017", Severity::Error, "Numbers have the range of 64-bit integers and double precision reals."},
    {"E018", Severity::Error, "A call gives as many arguments as there are parameters (12.8, 15, 16)."},
    {"E021", Severity::Error, "A type that is used is declared or interfaced (10)."},
    {"E022", Severity::Error, "An entity that is used is declared or interfaced (10)."},
    {"E023", Severity::Error, "A schema that is interfaced is among the files given (11)."},
    {"E024", Severity::Error, "What is interfaced is declared in the other schema (11)."},
    {"E025", Severity::Error, "An attribute that is used is declared in the entity or inherited (9.2)."},
    {"E026", Severity::Error,
     "A name is declared once in its scope; the case of letters does not matter (10)."},
    {"E027", Severity::Error, "An attribute is declared once, and not again in a subtype (9.2.3.3)."},
    {"E028", Severity::Error, "The items of an enumeration or a select differ (8.4.1, 8.4.2)."},
    {"E029", Severity::Error, "Supertypes, subtypes and the entities of an inverse are entities (9.2.3)."},
    {"E030", Severity::Error, "An attribute's type is a type or an entity (9.2)."},
    {"E031", Severity::Error, "BASED_ON names an extensible enumeration or select (8.4.1, 8.4.2)."},
    {"E032", Severity::Error, "An entity is not its own supertype (9.2.3)."},
    {"E033", Severity::Error, "A defined type does not stand for itself (8.3.2)."},
    {"E034", Severity::Error, "A select does not select itself (8.4.2)."},
    {"E035", Severity::Error,
     "A qualifier of an attribute names a supertype; only what is inherited is redeclared (9.2.3.4)."},
    {"E036", Severity::Error,
     "A redeclared attribute has the inherited type or a specialisation of it (9.2.3.4)."},
    {"E037", Severity::Error,
     "The lower bound of an aggregate is not above the upper; an array gives both bounds (8.2)."},
    {"E038", Severity::Error, "Only an abstract entity has attributes of a generalised type (9.2)."},
    {"E039", Severity::Error, "A supertype expression names subtypes of the entity (9.2.3)."},
    {"E040", Severity::Error,
     "The attribute that is inverted refers to the entity with the inverse (9.2.1.3)."},
    {"E041", Severity::Error, "A name in an expression or statement is declared where it is visible (10)."},
    {"E042", Severity::Error, "A type, procedure, rule or constraint has no value (12.7)."},
    {"E043", Severity::Error, "Only a procedure is called as a statement (13.8)."},
    {"E044", Severity::Error,
     "Only variables and parameters are assigned to and have an ALIAS (13.2, 13.3)."},
    {"E045", Severity::Error, "Only an instance of an entity has attributes (12.7.3)."},
    {"E046", Severity::Error, "An operator has operands of the types that it is defined for (12)."},
    {"E047", Severity::Error, "Only values of compatible types are compared (12.2)."},
    {"E048", Severity::Error, "Conditions and domain rules are logical (9.2.2.2, 12.6.7, 13.7, 13.9)."},
    {"E049", Severity::Error,
     "Bounds, widths, indices, repetitions and increments are whole numbers, widths above zero (8, 12.9, "
     "13.9)."},
    {"E050", Severity::Error, "A value has a type that its target can hold (13.3)."},
    {"E051", Severity::Error, "An argument has a type that its parameter can hold (12.8, 15, 16)."},
    {"E052", Severity::Error, "The labels of a CASE have a type that its selector can have (13.4)."},
    {"E053", Severity::Error, "A function returns a value; a procedure returns none (13.10)."},
    {"E054", Severity::Error, "An aggregate has no more elements than its type allows (8.2)."},
    {"E055", Severity::Error, "A group qualifier names an entity that the instance may be of (12.7.4)."},
    {"E056", Severity::Error,
     "A redeclared attribute is not optional, explicit or inverse again where it was not (9.2.3.4)."},
    {"E057", Severity::Error, "ESCAPE and SKIP stand within a REPEAT (13.6, 13.11)."},
    {"E058", Severity::Error,
     "USE takes types and entities from a schema; REFERENCE constants, functions and procedures, too (11)."},
    {"E059", Severity::Error, "A select of GENERIC_ENTITY selects entities only (8.4.2)."},
    {"W001", Severity::Warning,
     "A reserved word names a schema (7.2); nothing can be mistaken, so it is accepted."},
    {"W002", Severity::Warning,
     "An item that several enumerations have is written type.item where nothing else tells which (8.4.1, "
     "12.7.2)."},
    {"W003", Severity::Warning, "A statement behind RETURN, ESCAPE or SKIP is never reached (13)."},
    {"W004", Severity::Warning, "A local variable that nothing refers to has no purpose (9.5)."},
    {"W005", Severity::Warning,
     "The operator = compares instances by their values; :=: asks whether they are the same (12.2.2)."},
    {"W006", Severity::Warning,
     "A local name hides that of another variable, which cannot be reached there (10)."},
    {"W007", Severity::Warning, "A select that selects nothing has no values (8.4.2)."},
    {"W008", Severity::Warning,
     "An instance fits an entity that is neither sub- nor supertype of its own only where it is complex "
     "(13.3)."},
    {"W009", Severity::Warning,
     "The role names that USEDIN asks for have the form 'SCHEMA.ENTITY.ATTRIBUTE' (15.26)."},
    {"W010", Severity::Warning,
     "An expression that gives ? or nothing whatever the values are has no purpose."},
    {"W011", Severity::Warning,
     "A value fits a target of a generalised type, whatever that stands for (13.3)."},
    {"W012", Severity::Warning,
     "A section that is opened declares something (annex A); nothing can be mistaken, so it is accepted."},
    {"W013", Severity::Warning, "A condition or domain rule that is always the same decides nothing."},
    {"W014", Severity::Warning, "A function that ends without RETURN gives ? (13.10)."},
    {"W015", Severity::Warning, "An attribute that is redeclared as it was is the inherited one (9.2.3.4)."},
    {"W016", Severity::Warning,
     "An attribute that several supertypes have is told by a group qualifier: SELF\\entity.attribute "
     "(9.2.3.3)."},
    {"W017", Severity::Warning, "A derived attribute that derives from itself has no value (9.2.1.2)."},
    {"W018", Severity::Warning, "A variable that is assigned to itself keeps its value (13.3)."},
    {"W019", Severity::Warning,
     "Labels differ: those of the rules of a declaration, and those of the actions of a CASE (9.2.2, 13.4)."},
    {"W020", Severity::Warning,
     "The condition of a QUERY looks at the elements, which its variable stands for (12.6.7)."},
    {"W021", Severity::Warning, "The variable of a REPEAT counts by itself (13.9)."},
    {"W022", Severity::Warning,
     "The names that TYPEOF gives have the form 'SCHEMA.TYPE' in capital letters (15.25)."},
    {"W023", Severity::Warning, "A schema need not interface what it declares itself (11)."},
};
static_assert(sizeof kCatalogue / sizeof kCatalogue[0] == static_cast<std::size_t>(Code::kCount),
              "one row for each code");

const char* SeverityText(Severity severity) { return severity == Severity::Error ? "error" : "warning"; }

void PrintPlace(std::ostream& out, const Location& where) {
  const Position position = where.file->PositionOf(where.offset);
  out << where.file->Name() << ':' << position.line << ':' << position.column << ": ";
}

// The line and below it a caret and tildes under the stretch. Tabs are repeated so that the caret stands
// right.
void PrintExcerpt(std::ostream& out, const Location& where) {
  const std::string_view line = where.file->LineOf(where.offset);
  if (line.empty() || line.size() > 500) return;
  const Position position = where.file->PositionOf(where.offset);
  std::string under;
  int column = 1;
  std::size_t at = 0;
  for (; at < line.size() && column < position.column; ++at) {
    if ((static_cast<unsigned char>(line[at]) & 0xC0) == 0x80) continue;
    under += line[at] == '\t' ? '\t' : ' ';
    ++column;
  }
  while (at < line.size() && (static_cast<unsigned char>(line[at]) & 0xC0) == 0x80) ++at;
  under += '^';
  const std::size_t end = std::min<std::size_t>(line.size(), at + where.length);
  for (std::size_t i = at + 1; i < end; ++i) {
    if ((static_cast<unsigned char>(line[i]) & 0xC0) != 0x80) under += '~';
  }
  out << "    " << line << "\n    " << under << '\n';
}

// The number of letters to change, insert, delete or exchange with a neighbour to make one text of the other.
std::size_t EditDistance(const std::string& a, const std::string& b) {
  std::vector<std::size_t> before(b.size() + 1), last(b.size() + 1), row(b.size() + 1);
  for (std::size_t j = 0; j <= b.size(); ++j) last[j] = j;
  for (std::size_t i = 1; i <= a.size(); ++i) {
    row[0] = i;
    for (std::size_t j = 1; j <= b.size(); ++j) {
      row[j] = std::min({last[j] + 1, row[j - 1] + 1, last[j - 1] + (a[i - 1] == b[j - 1] ? 0 : 1)});
      const bool exchanged = i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1];
      if (exchanged) row[j] = std::min(row[j], before[j - 2] + 1);
    }
    before.swap(last);
    last.swap(row);
  }
  return last[b.size()];
}

}  // namespace

const CatalogueRow& CatalogueRowOf(Code code) { return kCatalogue[static_cast<std::size_t>(code)]; }

void Diagnostics::Report(Code code, Location where, std::string text, std::string hint) {
  Add({code, where, std::move(text), std::move(hint), {}, {}});
}

void Diagnostics::Report(Code code, Location where, std::string text, Location related,
                         std::string relatedText) {
  Add({code, where, std::move(text), {}, related, std::move(relatedText)});
}

void Diagnostics::Add(Diagnostic diagnostic) {
  ++(CatalogueRowOf(diagnostic.code).severity == Severity::Error ? errors_ : warnings_);
  if (all_.size() < kKept) all_.push_back(std::move(diagnostic));
}

void Diagnostics::Print(std::ostream& out) const {
  std::vector<const Diagnostic*> sorted;
  std::vector<const SourceFile*> files;
  for (const Diagnostic& diagnostic : all_) {
    sorted.push_back(&diagnostic);
    if (std::find(files.begin(), files.end(), diagnostic.where.file) == files.end()) {
      files.push_back(diagnostic.where.file);
    }
  }
  const auto rank = [&](const Diagnostic* d) {
    return std::make_pair(std::find(files.begin(), files.end(), d->where.file) - files.begin(),
                          d->where.offset);
  };
  std::stable_sort(sorted.begin(), sorted.end(),
                   [&](const Diagnostic* a, const Diagnostic* b) { return rank(a) < rank(b); });
  for (const Diagnostic* diagnostic : sorted) {
    const CatalogueRow& row = CatalogueRowOf(diagnostic->code);
    if (diagnostic->where.file) PrintPlace(out, diagnostic->where);
    out << SeverityText(row.severity) << ": " << diagnostic->text << " [" << row.number << ']';
    if (!diagnostic->hint.empty()) out << "; " << diagnostic->hint;
    out << '\n';
    if (diagnostic->where.file) PrintExcerpt(out, diagnostic->where);
    if (diagnostic->related.file) {
      PrintPlace(out, diagnostic->related);
      out << "note: " << diagnostic->relatedText << '\n';
      PrintExcerpt(out, diagnostic->related);
    }
  }
  const std::size_t dropped = errors_ + warnings_ - all_.size();
  if (dropped > 0) out << "and " << dropped << " more\n";
}

std::string Nearest(const std::string& name, const std::vector<std::string>& candidates) {
  std::size_t best = std::max<std::size_t>(1, name.size() / 3) + 1;
  std::string nearest;
  for (const std::string& candidate : candidates) {
    const std::size_t shorter = std::min(name.size(), candidate.size());
    const std::size_t longer = std::max(name.size(), candidate.size());
    if (longer - shorter >= best || longer > 200) continue;
    const std::size_t distance = EditDistance(name, candidate);
    if (distance < best && distance < shorter) {
      best = distance;
      nearest = candidate;
    }
  }
  return nearest;
}

std::string DidYouMean(const std::string& name, const std::vector<std::string>& candidates) {
  const std::string nearest = Nearest(name, candidates);
  return nearest.empty() ? "" : "did you mean '" + nearest + "'?";
}

}  // namespace VELMAR::Express
