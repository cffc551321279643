// Texts that no one wrote in good faith: nothing may crash, hang or overflow the stack.

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <random>

#include "CppWriter.h"
#include "ModelDump.h"
#include "Printer.h"
#include "SchemaText.h"

namespace VELMAR::Express {
namespace {

constexpr int kMillion = 1000000;

std::string Repeated(const std::string& text, int count) {
  std::string result;
  result.reserve(text.size() * static_cast<std::size_t>(count));
  for (int i = 0; i < count; ++i) result += text;
  return result;
}

// Reads a text, and where it is without error writes its C++. Returns the number of errors.
std::size_t Errors(const std::string& text) {
  const SchemaText schema(text);
  std::ostringstream out;
  schema.diagnostics.Print(out);
  const std::size_t errors = schema.diagnostics.ErrorCount();
  if (errors == 0) WriteCpp(schema.model, *schema.model.schemas.front(), {"test.exp", "TEST", 1});
  return errors;
}

std::vector<std::string> SmallTexts() {
  std::vector<std::string> texts;
  for (const auto& entry : std::filesystem::directory_iterator(VELMAR_TEST_DATA)) {
    if (entry.path().extension() == ".exp") texts.push_back(ContentOf(entry.path().string()));
  }
  std::sort(texts.begin(), texts.end());
  return texts;
}

TEST(HostileInput, EveryBeginningOfASchemaIsRejected) {
  for (const char* name :
       {"algorithms", "multiple_inheritance", "extensible_types", "inverse_attribute", "remarks"}) {
    const std::string text = ContentOf(std::string(VELMAR_TEST_DATA) + '/' + name + ".exp");
    ASSERT_EQ(Errors(text), 0u) << name;
    const std::size_t end = text.rfind("END_SCHEMA;") + std::string("END_SCHEMA;").size();
    for (std::size_t length = 0; length < end; ++length) {
      EXPECT_GT(Errors(text.substr(0, length)), 0u) << name << " cut at " << length;
    }
  }
}

TEST(HostileInput, EveryByteOfASchemaMayBeMissingOrWrong) {
  std::mt19937 random(1);
  const char bytes[] = {'(', ')', '\'', '"', ';', ':', '*', '\0', '\xFF', 'E', '\\', '[', '\n', '?'};
  std::size_t rejected = 0;
  for (const std::string& text : SmallTexts()) {
    if (text.size() > 2000) continue;
    for (std::size_t at = 0; at < text.size(); ++at) {
      std::string changed = text;
      changed[at] = bytes[random() % sizeof bytes];
      rejected += Errors(changed) > 0;
      rejected += Errors(text.substr(0, at) + text.substr(at + 1)) > 0;
    }
  }
  EXPECT_GT(rejected, 1000u);
}

TEST(HostileInput, MillionNestedRemarksAreARemark) {
  EXPECT_EQ(Errors(Repeated("(*", kMillion) + Repeated("*)", kMillion) + " SCHEMA s; END_SCHEMA;"), 0u);
  EXPECT_EQ(Errors("SCHEMA s; END_SCHEMA; " + Repeated("(*", kMillion)), 1u);
}

TEST(HostileInput, MillionParenthesesInAnExpressionAreReported) {
  const std::string open = Repeated("(", kMillion);
  const std::string close = Repeated(")", kMillion);
  EXPECT_EQ(
      Errors("SCHEMA s; ENTITY a; DERIVE x : REAL := " + open + "1.0" + close + "; END_ENTITY; END_SCHEMA;"),
      1u);
  EXPECT_GT(Errors("SCHEMA s; ENTITY a; DERIVE x : REAL := " + open + "; END_ENTITY; END_SCHEMA;"), 0u);
}

TEST(HostileInput, MillionParenthesesInASupertypeExpressionAreReported) {
  const std::string open = Repeated("(", kMillion);
  EXPECT_EQ(Errors("SCHEMA s; ENTITY a SUPERTYPE OF " + open + "b" + Repeated(")", kMillion) +
                   "; END_ENTITY; END_SCHEMA;"),
            1u);
  EXPECT_GT(Errors("SCHEMA s; ENTITY a SUPERTYPE OF " + Repeated("(ONEOF", kMillion)), 0u);
}

TEST(HostileInput, MillionNestedAggregatesAreReported) {
  EXPECT_EQ(
      Errors("SCHEMA s; ENTITY a; x : " + Repeated("LIST OF ", kMillion) + "REAL; END_ENTITY; END_SCHEMA;"),
      1u);
}

TEST(HostileInput, MillionOperatorsOrQualifiersInAnExpressionAreReported) {
  for (const char* repeated : {" + 1.0", ".x", "\\a", "[1]", " ** 1.0", " = 1.0"}) {
    EXPECT_EQ(Errors("SCHEMA s; ENTITY a; x : a; DERIVE y : REAL := SELF" + Repeated(repeated, kMillion) +
                     "; END_ENTITY; END_SCHEMA;"),
              1u)
        << repeated;
  }
}

TEST(HostileInput, MillionNestedBlocksInAFunctionAreReported) {
  const std::string begin = Repeated("IF TRUE THEN ", kMillion);
  EXPECT_EQ(Errors("SCHEMA s; FUNCTION f : REAL; " + begin + Repeated("END_IF; ", kMillion) +
                   "END_FUNCTION; END_SCHEMA;"),
            1u);
  EXPECT_GT(Errors("SCHEMA s; FUNCTION f : REAL; " + begin), 0u);
}

// All limits at once: algorithms, statements, brackets and operators, each as deep as it may be.
TEST(HostileInput, DeepestOfEverythingIsReadPrintedAndReadAgain) {
  struct Form {
    const char* open;
    const char* close;
    int brackets;
  };
  for (const Form& form : {Form{"(1 + ", ")", 1}, Form{"ABS (", ")", 1}, Form{"SIZEOF ([", "])", 2},
                           Form{"l[", "]", 1}, Form{"SIZEOF (QUERY (q <* [", "] | q = q))", 3}}) {
    const auto text = [&](int algorithms, int statements, int brackets, int operators) {
      const int forms = brackets / form.brackets;
      return "SCHEMA s; " + Repeated("FUNCTION f : INTEGER; ", algorithms - 1) +
             "FUNCTION g (l : LIST OF INTEGER) : INTEGER; " + Repeated("IF l[1] = 1 THEN ", statements - 1) +
             "RETURN (1 + " + Repeated(form.open, forms) + "1" + Repeated(" + 1", operators) +
             Repeated(form.close, forms) + "); " + Repeated("END_IF; ", statements - 1) + "RETURN (0); " +
             "END_FUNCTION; " + Repeated("RETURN (0); END_FUNCTION; ", algorithms - 1) + "END_SCHEMA;";
    };
    const SchemaText deepest(text(200, 200, 199, 80));
    ASSERT_EQ(deepest.diagnostics.ErrorCount(), 0u) << form.open;
    std::ostringstream printed;
    Print(deepest.model, printed);
    const SchemaText again(printed.str());
    EXPECT_EQ(again.diagnostics.ErrorCount(), 0u) << form.open;
    EXPECT_EQ(ModelDump(again.model).Text(), ModelDump(deepest.model).Text()) << form.open;
    EXPECT_GT(Errors(text(201, 1, 1, 1)), 0u) << form.open;
    EXPECT_GT(Errors(text(1, 201, 1, 1)), 0u) << form.open;
    EXPECT_GT(Errors(text(1, 1, 201 * form.brackets, 1)), 0u) << form.open;
    EXPECT_GT(Errors(text(1, 1, 1, 500)), 0u) << form.open;
  }
}

TEST(HostileInput, LongChainOfSupertypesIsReported) {
  std::string text = "SCHEMA s; ENTITY e0; END_ENTITY; ";
  for (int i = 1; i < 20000; ++i) {
    text += "ENTITY e" + std::to_string(i) + " SUBTYPE OF (e" + std::to_string(i - 1) + "); END_ENTITY; ";
  }
  EXPECT_GT(Errors(text + "END_SCHEMA;"), 0u);
}

TEST(HostileInput, LongChainOfTypesIsAccepted) {
  std::string text = "SCHEMA s; TYPE t0 = REAL; END_TYPE; ";
  for (int i = 1; i < 100000; ++i) {
    text += "TYPE t" + std::to_string(i) + " = t" + std::to_string(i - 1) + "; END_TYPE; ";
  }
  EXPECT_EQ(Errors(text + "ENTITY a; x : t99999; END_ENTITY; END_SCHEMA;"), 0u);
  EXPECT_EQ(Errors(text + "TYPE u = u; END_TYPE; END_SCHEMA;"), 1u);
}

TEST(HostileInput, ManyErrorsAreCounted) {
  EXPECT_EQ(Errors("SCHEMA s; ENTITY a; " + Repeated("x : ; ", 100000) + "END_ENTITY; END_SCHEMA;"), 199999u);
}

TEST(HostileInput, ManyUnknownNamesAreReportedQuickly) {
  std::string text = "SCHEMA s; ";
  for (int i = 0; i < 20000; ++i) {
    text += "ENTITY some_entity_" + std::to_string(i) + "; x : some_entity" + std::to_string(i) +
            "; END_ENTITY; ";
  }
  EXPECT_EQ(Errors(text + "END_SCHEMA;"), 20000u);
}

TEST(HostileInput, NameOfAMegabyteIsAName) {
  const std::string name = Repeated("a", kMillion);
  EXPECT_EQ(Errors("SCHEMA s; ENTITY " + name + "; END_ENTITY; ENTITY b SUBTYPE OF (" + name +
                   "); END_ENTITY; END_SCHEMA;"),
            0u);
  EXPECT_EQ(Errors("SCHEMA s; ENTITY " + name + "; END_ENTITY; ENTITY b SUBTYPE OF (" + name +
                   "b); END_ENTITY; END_SCHEMA;"),
            1u);
}

TEST(HostileInput, SchemaThatInterfacesItselfIsRead) {
  EXPECT_EQ(Errors("SCHEMA s; USE FROM s (other AS thing); ENTITY other; END_ENTITY; END_SCHEMA;"), 0u);
}

}  // namespace
}  // namespace VELMAR::Express
