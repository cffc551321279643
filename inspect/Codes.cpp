#include "Codes.h"

#include <fmt/format.h>

#include <algorithm>

namespace velmar {

namespace {

constexpr Severity kError = Severity::kError;
constexpr Severity kWarning = Severity::kWarning;

constexpr const char* kGoodFile =
    "ISO-10303-21;\nHEADER;\nFILE_DESCRIPTION((''),'2;1');\nFILE_NAME('','',(''),(''),'','','');\n"
    "FILE_SCHEMA(('AUTOMOTIVE_DESIGN'));\nENDSEC;\nDATA;\n#1=COLOUR();\nENDSEC;\nEND-ISO-10303-21;\n";

const std::vector<CodeInfo>& Rows() {
  static const std::vector<CodeInfo> kRows = {
      {Code::kSyntax, kError, "syntax error",
       "The text does not follow the grammar of ISO 10303-21. Reading goes on behind the next semicolon; "
       "what the "
       "semicolon ends may be lost.",
       "#1=DIRECTION('',(1.,0.);\n", "#1=DIRECTION('',(1.,0.));\n"},
      {Code::kByteOrderMark, kError, "damaged byte order mark",
       "The file begins with the byte EF, which begins the byte order mark of UTF-8, but BB BF do not "
       "follow. Nothing is "
       "read.",
       "\xEF\xBBISO-10303-21;\n",
       "\xEF\xBB\xBFISO-10303-21;\nHEADER;\nFILE_DESCRIPTION((''),'2;1');\n"
       "FILE_NAME('','',(''),(''),'','','');\nFILE_SCHEMA(('AUTOMOTIVE_DESIGN'));\nENDSEC;\nDATA;\n#1=COLOUR("
       ");\n"
       "ENDSEC;\nEND-ISO-10303-21;\n"},
      {Code::kEmptyHeader, kError, "empty header",
       "The HEADER section holds no record. The file is given up.",
       "ISO-10303-21;\nHEADER;\nENDSEC;\nDATA;\n#1=COLOUR();\nENDSEC;\nEND-ISO-10303-21;\n", kGoodFile},
      {Code::kGivenUp, kError, "reading was given up",
       "The file cannot be held in memory: there is not enough of it, or an instance number is out of range. "
       "Nothing of "
       "the file is kept.",
       "#1073741824=COLOUR();\n", "#1073741823=COLOUR();\n"},
      {Code::kLongToken, kWarning, "long token",
       "A token, mostly a string, takes more than 32,767 bytes. velmar reads it; other programs may not, applications on this library that "
       "do not keep everything among them.",
       nullptr, nullptr},
      {Code::kUnsupportedSchema, kError, "schema not supported",
       "There is no schema library for the schema that FILE_SCHEMA names. --schema reads the file with "
       "another one, "
       "--express with the schema of an EXPRESS text.",
       "ISO-10303-21;\nHEADER;\nFILE_DESCRIPTION((''),'2;1');\nFILE_NAME('','',(''),(''),'','','');\n"
       "FILE_SCHEMA(('IFC4'));\nENDSEC;\nDATA;\n#1=COLOUR();\nENDSEC;\nEND-ISO-10303-21;\n",
       kGoodFile},
      {Code::kNoSchema, kError, "no schema named",
       "The header has no FILE_SCHEMA, or an empty one. --schema and --express say how to read the file.",
       "ISO-10303-21;\nHEADER;\nFILE_DESCRIPTION((''),'2;1');\nFILE_NAME('','',(''),(''),'','','');\n"
       "FILE_SCHEMA(());\nENDSEC;\nDATA;\n#1=COLOUR();\nENDSEC;\nEND-ISO-10303-21;\n",
       kGoodFile},
      {Code::kUnknownType, kError, "unknown entity type",
       "The schema has no entity of this name. The instance, or this part of a complex instance, is kept as it stands; its "
       "parameters have positions instead of names.",
       "#1=VEKTOR('',#2,1.);\n", "#1=VECTOR('',#2,1.);\n"},
      {Code::kUnknownHeaderRecord, kWarning, "unknown header record",
       "The header has a record other than FILE_DESCRIPTION, FILE_NAME and FILE_SCHEMA. It is kept as it stands.",
       "ISO-10303-21;\nHEADER;\nFILE_DESCRIPTION((''),'2;1');\nFILE_NAME('','',(''),(''),'','','');\n"
       "FILE_SCHEMA(('AUTOMOTIVE_DESIGN'));\n!MINE();\nENDSEC;\nDATA;\n#1=COLOUR();\nENDSEC;\nEND-ISO-10303-"
       "21;\n",
       kGoodFile},
      {Code::kTooManyParameters, kError, "too many parameters",
       "A record has more parameters than its entity type has attributes. The surplus is kept, by position.",
       "#1=DIRECTION('',(1.,0.),3);\n", "#1=DIRECTION('',(1.,0.));\n"},
      {Code::kTooFewParameters, kWarning, "too few parameters",
       "A record has fewer parameters than its entity type has attributes. The others have no value, and are written as $. "
       "velmar check takes it for an error.",
       "#1=DIRECTION('');\n", "#1=DIRECTION('',$);\n"},
      {Code::kNumberUsedTwice, kError, "instance number used twice",
       "Two instances have the same number. References to it lead to the later one; the earlier is not kept.",
       "#1=COLOUR();\n#1=COLOUR();\n", "#1=COLOUR();\n#2=COLOUR();\n"},
      {Code::kNumberZero, kError, "instance number zero", "Instance numbers begin at #1.",
       "#1=VECTOR('',#0,1.);\n", "#1=VECTOR('',#1,1.);\n"},
      {Code::kNumberTooHigh, kError, "instance number too high",
       "Instance numbers end at #1073741823. Of numbers beyond 32 bits the lower 32 are kept.",
       "#1=VECTOR('',#1073741824,1.);\n", "#1=VECTOR('',#1073741823,1.);\n"},
      {Code::kRealRange, kError, "real number out of range",
       "A real number does not fit 64 bits: it becomes infinite, and is written as 1.E+400, or it becomes 0.", "#1=CARTESIAN_POINT('',(1.E309));\n",
       "#1=CARTESIAN_POINT('',(1.E308));\n"},
      {Code::kInstancesNotRead, kError, "instances lost to errors",
       "So many instances that the file defines were not read because of the errors that are reported, too.",
       "#1=DIRECTION(;\n#2=COLOUR(;\nENDSEC;\nDATA;\n#3=COLOUR();\n", "#1=DIRECTION('',$);\n#2=COLOUR();\n"},
      {Code::kFileChanged, kError, "file changed while it was read",
       "The file became shorter while it was read. Try again when nobody writes it.", nullptr, nullptr},
      {Code::kFallbackLibrary, kWarning, "fallback schema library not loaded",
       "The library with types that the file's own schema lacks cannot be loaded. Such types are unknown "
       "then.",
       nullptr, nullptr},
      {Code::kLongString, kWarning, "long string when it is written",
       "With its escapes the string takes more than 32,767 characters. velmar reads it; other programs may not, applications on this "
       "library that do not keep everything among them.",
       nullptr, nullptr},
      {Code::kNotWritten, kError, "output not written",
       "Nothing was written, because of the reason given; what was there is left as it was.", nullptr,
       nullptr},
      {Code::kWrongKind, kError, "value of the wrong kind",
       "The attribute, or the element of a list, has another type in the schema: a string where a number is expected, for "
       "instance.",
       "#1=DIRECTION(3,(1.,0.));\n", "#1=DIRECTION('3',(1.,0.));\n"},
      {Code::kMissingValue, kError, "required value missing",
       "The attribute has $, but it is not OPTIONAL in the schema.", "#1=DIRECTION($,(1.,0.));\n",
       "#1=DIRECTION('',(1.,0.));\n"},
      {Code::kNothingDerived, kError, "* where nothing is derived",
       "* stands for a value that is derived in a subtype (ISO 10303-21). This attribute is not.", "#1=DIRECTION(*,(1.,0.));\n",
       "#1=(LENGTH_UNIT()NAMED_UNIT(*)SI_UNIT($,.METRE.));\n"},
      {Code::kDerivedValue, kWarning, "value of a derived attribute",
       "The schema says how the value is derived, so * is expected. What the file has in its place does not count.",
       "#1=(LENGTH_UNIT()NAMED_UNIT(#2)SI_UNIT($,.METRE.));\n#2=DIMENSIONAL_EXPONENTS(1.,0.,0.,0.,0.,0.,0.);\n",
       "#1=(LENGTH_UNIT()NAMED_UNIT(*)SI_UNIT($,.METRE.));\n"},
      {Code::kUnknownItem, kError, "no such enumeration item", "The enumeration type has no item of this name.",
       "#1=(LENGTH_UNIT()NAMED_UNIT(*)SI_UNIT($,.MEETER.));\n", "#1=(LENGTH_UNIT()NAMED_UNIT(*)SI_UNIT($,.METRE.));\n"},
      {Code::kForeignSelectType, kError, "type that is not of the select",
       "The value has the name of a type that the select type does not have.",
       "#1=MEASURE_WITH_UNIT(LABEL('a'),#2);\n#2=(LENGTH_UNIT()NAMED_UNIT(*)SI_UNIT($,.METRE.));\n",
       "#1=MEASURE_WITH_UNIT(LENGTH_MEASURE(1.),#2);\n#2=(LENGTH_UNIT()NAMED_UNIT(*)SI_UNIT($,.METRE.));\n"},
      {Code::kUntypedSelectValue, kError, "value of a select without a type name",
       "In a select type, values other than references have the name of their type: LENGTH_MEASURE(1.).",
       "#1=MEASURE_WITH_UNIT(1.,#2);\n#2=(LENGTH_UNIT()NAMED_UNIT(*)SI_UNIT($,.METRE.));\n",
       "#1=MEASURE_WITH_UNIT(LENGTH_MEASURE(1.),#2);\n#2=(LENGTH_UNIT()NAMED_UNIT(*)SI_UNIT($,.METRE.));\n"},
      {Code::kNoSuchInstance, kError, "reference to a missing instance", "The file has no instance of this number.",
       "#1=VECTOR('',#2,1.);\n", "#1=VECTOR('',#2,1.);\n#2=DIRECTION('',(1.,0.));\n"},
      {Code::kWrongInstance, kError, "reference to an instance of another type",
       "The instance is there, but of a type that the attribute does not admit.",
       "#1=VECTOR('',#2,1.);\n#2=CARTESIAN_POINT('',(1.,0.));\n", "#1=VECTOR('',#2,1.);\n#2=DIRECTION('',(1.,0.));\n"},
      {Code::kElementCount, kError, "too many or too few elements",
       "The schema says how many elements a list, set, bag or array may have.", "#1=DIRECTION('',(1.));\n",
       "#1=DIRECTION('',(1.,0.));\n"},
      {Code::kTooLong, kError, "string or binary value too long",
       "The schema limits how many characters or bits the value may have, or fixes it.", nullptr, nullptr},
      {Code::kIntegerForReal, kWarning, "integer in place of a real number",
       "A real number has a decimal point: 1. for 1. Most readers take the integer.", "#1=DIRECTION('',(1,0.));\n",
       "#1=DIRECTION('',(1.,0.));\n"},
      {Code::kBadEscape, kError, "bad escape in a string",
       "A backslash begins an escape (ISO 10303-21, string encodings) and is written twice where it stands for itself.",
       "#1=DIRECTION('C:\\TEMP',(1.,0.));\n", "#1=DIRECTION('C:\\\\TEMP',(1.,0.));\n"},
      {Code::kNotUtf8, kWarning, "bytes that are not UTF-8",
       "Bytes outside ASCII are UTF-8. A string that holds others is taken for ISO 8859-1.", "#1=DIRECTION('\xE4',(1.,0.));\n",
       "#1=DIRECTION('\xC3\xA4',(1.,0.));\n"},
      {Code::kAbstractType, kError, "instance of an abstract entity", "Instances are of its subtypes.",
       "#1=APPROVAL_ASSIGNMENT($);\n", "#1=COLOUR();\n"},
      {Code::kMissingSupertype, kError, "complex instance without a supertype",
       "A complex instance has a record for each of its types and of their supertypes (ISO 10303-21, external mapping).",
       "#1=(LENGTH_UNIT()SI_UNIT($,.METRE.));\n", "#1=(LENGTH_UNIT()NAMED_UNIT(*)SI_UNIT($,.METRE.));\n"},
      {Code::kMissingHeaderRecord, kError, "header record missing",
       "FILE_DESCRIPTION, FILE_NAME and FILE_SCHEMA are required.",
       "ISO-10303-21;\nHEADER;\nFILE_DESCRIPTION((''),'2;1');\nFILE_SCHEMA(('AUTOMOTIVE_DESIGN'));\nENDSEC;\nDATA;\n"
       "#1=COLOUR();\nENDSEC;\nEND-ISO-10303-21;\n",
       kGoodFile},
      {Code::kTooDeep, kWarning, "values within values not checked",
       "What stands within 500 levels of lists and typed values is not compared with the schema.", nullptr, nullptr},
      {Code::kCyclicAssembly, kError, "assembly that contains itself",
       "Following the components from assembly to assembly leads back. velmar tree follows each assembly once.",
       "#1=PRODUCT('P','',$,(#9));\n"
       "#2=PRODUCT_DEFINITION_FORMATION('',$,#1);\n"
       "#3=PRODUCT_DEFINITION('',$,#2,#8);\n"
       "#4=PRODUCT('Q','',$,(#9));\n"
       "#5=PRODUCT_DEFINITION_FORMATION('',$,#4);\n"
       "#6=PRODUCT_DEFINITION('',$,#5,#8);\n"
       "#7=NEXT_ASSEMBLY_USAGE_OCCURRENCE('','',$,#3,#6,$);\n"
       "#8=NEXT_ASSEMBLY_USAGE_OCCURRENCE('','',$,#6,#3,$);\n",
       "#1=PRODUCT('P','',$,(#9));\n"
       "#2=PRODUCT_DEFINITION_FORMATION('',$,#1);\n"
       "#3=PRODUCT_DEFINITION('',$,#2,#8);\n"
       "#4=PRODUCT('Q','',$,(#9));\n"
       "#5=PRODUCT_DEFINITION_FORMATION('',$,#4);\n"
       "#6=PRODUCT_DEFINITION('',$,#5,#8);\n"
       "#7=NEXT_ASSEMBLY_USAGE_OCCURRENCE('','',$,#3,#6,$);\n"
       "#8=NEXT_ASSEMBLY_USAGE_OCCURRENCE('','',$,#3,#6,$);\n"},
      {Code::kLooseEnd, kError, "product structure with a loose end",
       "A usage needs the definitions of an assembly and of a component, a definition needs a formation, and that a product.",
       "#1=PRODUCT('P','',$,(#9));\n"
       "#2=PRODUCT_DEFINITION_FORMATION('',$,#1);\n"
       "#3=PRODUCT_DEFINITION('',$,#2,#8);\n"
       "#4=PRODUCT('Q','',$,(#9));\n"
       "#5=PRODUCT_DEFINITION_FORMATION('',$,#4);\n"
       "#6=PRODUCT_DEFINITION('',$,#5,#8);\n"
       "#7=NEXT_ASSEMBLY_USAGE_OCCURRENCE('','',$,#3,$,$);\n",
       "#1=PRODUCT('P','',$,(#9));\n"
       "#2=PRODUCT_DEFINITION_FORMATION('',$,#1);\n"
       "#3=PRODUCT_DEFINITION('',$,#2,#8);\n"
       "#4=PRODUCT('Q','',$,(#9));\n"
       "#5=PRODUCT_DEFINITION_FORMATION('',$,#4);\n"
       "#6=PRODUCT_DEFINITION('',$,#5,#8);\n"
       "#7=NEXT_ASSEMBLY_USAGE_OCCURRENCE('','',$,#3,#6,$);\n"},
      {Code::kUnnamedProduct, kWarning, "product without name and id", "Nothing tells the product from others.",
       "#1=PRODUCT('','',$,());\n", "#1=PRODUCT('','plate',$,());\n"},
      {Code::kScope, kWarning, "scope not kept",
       "The instances within the scope of another one (&SCOPE) are kept as any others. That they stood there is not, nor is the "
       "list of those that are exported.",
       "#1=&SCOPE\n#2=COLOUR();\nENDSCOPE/#2/COLOUR();\n", "#2=COLOUR();\n#1=COLOUR();\n"},
      {Code::kRepeatedRecord, kError, "record used twice",
       "The header has two records of one kind, or a complex instance has two of one type. Only one of them is kept.",
       "#1=(LENGTH_UNIT()LENGTH_UNIT()NAMED_UNIT(*)SI_UNIT($,.METRE.));\n", "#1=(LENGTH_UNIT()NAMED_UNIT(*)SI_UNIT($,.METRE.));\n"},
  };
  return kRows;
}

// The text as it stands in an indented block of Markdown.
std::string Indented(const std::string& text) {
  std::string block = "    ";
  for (std::size_t i = 0; i < text.size(); ++i) {
    const unsigned char byte = static_cast<unsigned char>(text[i]);
    block += byte < 0x80 ? std::string(1, text[i]) : fmt::format("<{:02X}>", byte);
    if (text[i] == '\n' && i + 1 < text.size()) block += "    ";
  }
  return block;
}

}  // namespace

const char* Name(Severity severity) { return severity == kError ? "error" : "warning"; }

std::string NameOf(Code code) { return fmt::format("V{:03}", static_cast<int>(code)); }

const CodeInfo& InfoOf(Code code) {
  return *std::lower_bound(Rows().begin(), Rows().end(), code, [](const CodeInfo& row, Code wanted) { return row.code < wanted; });
}

const std::vector<CodeInfo>& Catalogue() { return Rows(); }

std::string ExampleFile(const std::string& example) {
  if (example.empty() || example[0] == 'I' || example[0] == '\xEF') return example;
  return "ISO-10303-21;\nHEADER;\nFILE_DESCRIPTION((''),'2;1');\nFILE_NAME('','',(''),(''),'','','');\n"
         "FILE_SCHEMA(('AUTOMOTIVE_DESIGN'));\nENDSEC;\nDATA;\n" +
         example + "ENDSEC;\nEND-ISO-10303-21;\n";
}

std::string CatalogueAsMarkdown() {
  std::string text =
      "# Findings\n\n"
      "What `velmar` says about files, by the code that ends each message. An error is a fault of the file, "
      "or data that is\n"
      "lost, and makes the exit status 1; a warning does so with `velmar check` only. Examples are whole files, or the DATA section "
      "of a file of AP214;\n"
      "tests/data/check has a file for each finding of `velmar check`, with its output, and one that is nearly the same without it.\n";
  for (const CodeInfo& row : Catalogue()) {
    text += fmt::format("\n## {}: {}\n\n{}. {}\n", NameOf(row.code), row.title,
                        row.severity == kError ? "Error" : "Warning", row.explanation);
    if (row.example == nullptr) continue;
    text +=
        fmt::format("\nReported:\n\n{}\nNot reported:\n\n{}", Indented(row.example), Indented(row.nearMiss));
  }
  return text;
}

}  // namespace velmar
