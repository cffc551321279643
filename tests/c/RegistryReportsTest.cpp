// The listings of schemas and entity types that the registry writes.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <ios>
#include <ostream>
#include <sstream>
#include <stdexcept>
#include <string>

#include "ExpRuntimeRegistry.h"
#include "TestEntities.h"

namespace VELMAR {
namespace {

using TestData::NewPlainType;

const std::string kIndent(6, ' ');

/// `text` with blanks up to `width` characters.
std::string Padded(std::string text, std::size_t width) {
  if (text.size() < width) text.resize(width, ' ');
  return text;
}

std::string Entry(const std::string& name, const std::string& schema) {
  return kIndent + Padded(name, 80) + " :: " + schema + "\n";
}

std::string Entry(const std::string& name, const std::vector<std::string>& schemas) {
  std::string line = kIndent + Padded(name, 80) + " :: ";
  for (const std::string& schema : schemas) line += Padded(schema, 30);
  return line + "\n";
}

class RegistryReports : public testing::Test {
 protected:
  ExpEntityRuntimeType* Add(const std::string& name, const std::string& schema,
                            const std::string& registeredName = "") {
    ExpEntityRuntimeType* type = NewPlainType(name, schema);
    registry_.RegisterEntityRuntimeType(type, registeredName);
    return type;
  }

  std::string Schemas() {
    return Report([&](std::ostream& os) { registry_.DumpRegisteredSchemas(os); });
  }
  std::string Types() {
    return Report([&](std::ostream& os) { registry_.DumpRegisteredEntityTypes(os); });
  }
  std::string Single() {
    return Report([&](std::ostream& os) { registry_.DumpSingleDefinitions(os); });
  }
  std::string Multiple() {
    return Report([&](std::ostream& os) { registry_.DumpMultipleDefinitions(os); });
  }
  std::string Multiple(bool containing, const std::string& schema) {
    return Report([&](std::ostream& os) { registry_.DumpMultipleDefinitions(os, containing, schema); });
  }

  ExpRuntimeRegistry registry_;

 private:
  static std::string Report(const std::function<void(std::ostream&)>& dump) {
    std::ostringstream os;
    dump(os);
    return os.str();
  }
};

// ---------------------------------------------------------------------------------------- nothing registered

TEST_F(RegistryReports, OfNothingAreAHeadingAndACountOfZero) {
  EXPECT_EQ(Schemas(), "\n--- registered schemas ---\n--- registered schemas count: 0 ---\n");
  EXPECT_EQ(Types(), "\n--- registered entity types ---\n--- registered entity types count: 0 ---\n");
  EXPECT_EQ(Single(), "\n--- single defined entity types ---\n--- single defined entity types: 0 ---\n");
  EXPECT_EQ(Multiple(),
            "\n--- multiple defined entity types ---\n--- multiple defined entity types count: 0 ---\n");
  EXPECT_EQ(Multiple(true, "S"),
            "\n--- multiple defined entity types containing S ---\n"
            "--- multiple defined entity types containing S count: 0 ---\n");
  EXPECT_EQ(Multiple(false, "S"),
            "\n--- multiple defined entity types NOT containing S ---\n"
            "--- multiple defined entity types NOT containing S count: 0 ---\n");
}

// ------------------------------------------------------------------------------------- DumpRegisteredSchemas

TEST_F(RegistryReports, SchemasStandInTheOrderOfTheirRegistration) {
  Add("X", "SCHEMA_B");
  Add("X", "SCHEMA_A");
  Add("Y", "SCHEMA_B");
  EXPECT_EQ(Schemas(),
            "\n--- registered schemas ---\n"
            "      SCHEMA_B\n"
            "      SCHEMA_A\n"
            "--- registered schemas count: 2 ---\n");
}

// --------------------------------------------------------------------------------- DumpRegisteredEntityTypes

TEST_F(RegistryReports, EntityTypesStandInTheOrderOfTheirNamesAndSchemas) {
  Add("Y", "SCHEMA_A");
  Add("X", "SCHEMA_B");
  Add("X", "SCHEMA_A");
  Add("a", "SCHEMA_A");
  EXPECT_EQ(Types(), "\n--- registered entity types ---\n" + Entry("X", "SCHEMA_A") + Entry("X", "SCHEMA_B") +
                         Entry("Y", "SCHEMA_A") + Entry("a", "SCHEMA_A") +
                         "--- registered entity types count: 4 ---\n");
}

TEST_F(RegistryReports, ATypeOfTwoNamesIsListedUnderEachWithItsOwn) {
  Add("M", "SCHEMA_A");
  registry_.RegisterAdditionalEntityNameForType("M", "SCHEMA_A", "Z");
  registry_.RegisterAdditionalEntityNameForType("M", "SCHEMA_A", "A");
  Add("N", "SCHEMA_A");
  // in the order A, M, N, Z of the names under which they are registered
  EXPECT_EQ(Types(), "\n--- registered entity types ---\n" + Entry("M", "SCHEMA_A") + Entry("M", "SCHEMA_A") +
                         Entry("N", "SCHEMA_A") + Entry("M", "SCHEMA_A") +
                         "--- registered entity types count: 4 ---\n");
}

class NameWidth : public testing::TestWithParam<std::size_t> {};

TEST_P(NameWidth, IsFilledToEightyAndNeverCut) {
  const std::string name(GetParam(), 'N');
  const std::string padding(GetParam() < 80 ? 80 - GetParam() : 0, ' ');
  ExpRuntimeRegistry registry;
  registry.RegisterEntityRuntimeType(NewPlainType(name, "S"), "");
  const std::string expected = "      " + name + padding + " :: S\n";
  std::ostringstream types, single;
  registry.DumpRegisteredEntityTypes(types);
  registry.DumpSingleDefinitions(single);
  EXPECT_EQ(types.str(),
            "\n--- registered entity types ---\n" + expected + "--- registered entity types count: 1 ---\n");
  EXPECT_EQ(single.str(), "\n--- single defined entity types ---\n" + expected +
                              "--- single defined entity types: 1 ---\n");
  registry.RegisterEntityRuntimeType(NewPlainType(name, "T"), "");
  const std::string multiple =
      "      " + name + padding + " :: S" + std::string(29, ' ') + "T" + std::string(29, ' ') + "\n";
  std::ostringstream all, filtered;
  registry.DumpMultipleDefinitions(all);
  registry.DumpMultipleDefinitions(filtered, true, "T");
  EXPECT_THAT(all.str(), testing::HasSubstr("---\n" + multiple + "---"));
  EXPECT_THAT(filtered.str(), testing::HasSubstr("---\n" + multiple + "---"));
}

INSTANTIATE_TEST_SUITE_P(RegistryReports, NameWidth, testing::Values(1, 79, 80, 81, 200));

class SchemaWidth : public testing::TestWithParam<std::size_t> {};

TEST_P(SchemaWidth, IsFilledToThirtyAndNeverCut) {
  const std::string schema(GetParam(), 'S');
  const std::string padding(GetParam() < 30 ? 30 - GetParam() : 0, ' ');
  ExpRuntimeRegistry registry;
  registry.RegisterEntityRuntimeType(NewPlainType("X", schema), "");
  registry.RegisterEntityRuntimeType(NewPlainType("X", "T"), "");
  const std::string line =
      "      X" + std::string(79, ' ') + " :: " + schema + padding + "T" + std::string(29, ' ') + "\n";
  std::ostringstream all, filtered;
  registry.DumpMultipleDefinitions(all);
  registry.DumpMultipleDefinitions(filtered, true, schema);
  EXPECT_EQ(all.str(), "\n--- multiple defined entity types ---\n" + line +
                           "--- multiple defined entity types count: 1 ---\n");
  EXPECT_EQ(filtered.str(), "\n--- multiple defined entity types containing " + schema + " ---\n" + line +
                                "--- multiple defined entity types containing " + schema + " count: 1 ---\n");
}

INSTANTIATE_TEST_SUITE_P(RegistryReports, SchemaWidth, testing::Values(1, 29, 30, 31, 100));

// ------------------------------------------------------------ DumpSingleDefinitions, DumpMultipleDefinitions

TEST_F(RegistryReports, SingleAndMultipleDefinitionsAreToldApart) {
  Add("BOTH", "SCHEMA_B");
  Add("BOTH", "SCHEMA_A");
  Add("ONE", "SCHEMA_B");
  Add("ANOTHER", "SCHEMA_A");
  EXPECT_EQ(Single(), "\n--- single defined entity types ---\n" + Entry("ANOTHER", "SCHEMA_A") +
                          Entry("ONE", "SCHEMA_B") + "--- single defined entity types: 2 ---\n");
  EXPECT_EQ(Multiple(), "\n--- multiple defined entity types ---\n" +
                            Entry("BOTH", std::vector<std::string>{"SCHEMA_A", "SCHEMA_B"}) +
                            "--- multiple defined entity types count: 1 ---\n");
}

TEST_F(RegistryReports, ASecondDefinitionInOneSchemaDoesNotCount) {
  Add("X", "SCHEMA_A");
  Add("X", "SCHEMA_A");
  EXPECT_EQ(Single(), "\n--- single defined entity types ---\n" + Entry("X", "SCHEMA_A") +
                          "--- single defined entity types: 1 ---\n");
  EXPECT_EQ(Multiple(),
            "\n--- multiple defined entity types ---\n--- multiple defined entity types count: 0 ---\n");
}

TEST_F(RegistryReports, SingleDefinitionsShowTheNameOfTheDefinition) {
  Add("OWN_NAME", "SCHEMA_A", "KEY");
  EXPECT_EQ(Single(), "\n--- single defined entity types ---\n" + Entry("OWN_NAME", "SCHEMA_A") +
                          "--- single defined entity types: 1 ---\n");
}

TEST_F(RegistryReports, MultipleDefinitionsShowTheRegisteredName) {
  Add("OWN_NAME", "SCHEMA_A", "KEY");
  Add("OTHER_NAME", "SCHEMA_B", "KEY");
  const std::string line = Entry("KEY", std::vector<std::string>{"SCHEMA_A", "SCHEMA_B"});
  EXPECT_EQ(Multiple(), "\n--- multiple defined entity types ---\n" + line +
                            "--- multiple defined entity types count: 1 ---\n");
  EXPECT_EQ(Multiple(true, "SCHEMA_A"),
            "\n--- multiple defined entity types containing SCHEMA_A ---\n" + line +
                "--- multiple defined entity types containing SCHEMA_A count: 1 ---\n");
}

TEST_F(RegistryReports, MultipleDefinitionsStandInTheOrderOfTheirNames) {
  for (const char* name : {"Z", "A", "M"}) {
    for (const char* schema : {"S3", "S1", "S2"}) Add(name, schema);
  }
  const std::vector<std::string> schemas = {"S1", "S2", "S3"};
  EXPECT_EQ(Multiple(), "\n--- multiple defined entity types ---\n" + Entry("A", schemas) +
                            Entry("M", schemas) + Entry("Z", schemas) +
                            "--- multiple defined entity types count: 3 ---\n");
}

// --------------------------------------------------------------------------------------------- with a filter

class FilteredReport : public RegistryReports {
 protected:
  void SetUp() override {
    Add("AB", "SCHEMA_B");
    Add("AB", "SCHEMA_A");
    Add("BC", "SCHEMA_B");
    Add("BC", "SCHEMA_C");
    Add("ABC", "SCHEMA_A");
    Add("ABC", "SCHEMA_B");
    Add("ABC", "SCHEMA_C");
    Add("ONLY_A", "SCHEMA_A");
  }

  const std::string ab_ = Entry("AB", std::vector<std::string>{"SCHEMA_A", "SCHEMA_B"});
  const std::string abc_ = Entry("ABC", std::vector<std::string>{"SCHEMA_A", "SCHEMA_B", "SCHEMA_C"});
  const std::string bc_ = Entry("BC", std::vector<std::string>{"SCHEMA_B", "SCHEMA_C"});
};

TEST_F(FilteredReport, ListsTheNamesThatTheSchemaDefines) {
  EXPECT_EQ(Multiple(true, "SCHEMA_A"),
            "\n--- multiple defined entity types containing SCHEMA_A ---\n" + ab_ + abc_ +
                "--- multiple defined entity types containing SCHEMA_A count: 2 ---\n");
  EXPECT_EQ(Multiple(true, "SCHEMA_C"),
            "\n--- multiple defined entity types containing SCHEMA_C ---\n" + abc_ + bc_ +
                "--- multiple defined entity types containing SCHEMA_C count: 2 ---\n");
  EXPECT_EQ(Multiple(true, "SCHEMA_B"),
            "\n--- multiple defined entity types containing SCHEMA_B ---\n" + ab_ + abc_ + bc_ +
                "--- multiple defined entity types containing SCHEMA_B count: 3 ---\n");
}

TEST_F(FilteredReport, ListsTheNamesThatTheSchemaDoesNotDefine) {
  EXPECT_EQ(Multiple(false, "SCHEMA_A"),
            "\n--- multiple defined entity types NOT containing SCHEMA_A ---\n" + bc_ +
                "--- multiple defined entity types NOT containing SCHEMA_A count: 1 ---\n");
  EXPECT_EQ(Multiple(false, "SCHEMA_C"),
            "\n--- multiple defined entity types NOT containing SCHEMA_C ---\n" + ab_ +
                "--- multiple defined entity types NOT containing SCHEMA_C count: 1 ---\n");
}

class OtherSchemaName : public FilteredReport, public testing::WithParamInterface<std::string> {};

TEST_P(OtherSchemaName, IsComparedExactly) {
  const std::string& schema = GetParam();
  EXPECT_EQ(Multiple(true, schema), "\n--- multiple defined entity types containing " + schema +
                                        " ---\n--- multiple defined entity types containing " + schema +
                                        " count: 0 ---\n");
  EXPECT_EQ(Multiple(false, schema),
            "\n--- multiple defined entity types NOT containing " + schema + " ---\n" + ab_ + abc_ + bc_ +
                "--- multiple defined entity types NOT containing " + schema + " count: 3 ---\n");
}

INSTANTIATE_TEST_SUITE_P(RegistryReports, OtherSchemaName,
                         testing::Values("SCHEMA_D", "schema_a", "SCHEMA_", "SCHEMA_AB", ""));

// ---------------------------------------------------------------------------------- what stays on the stream

TEST_F(RegistryReports, LeaveTheStreamLeftAdjustedAndWithoutWidth) {
  Add("X", "SCHEMA_A");
  Add("Y", "SCHEMA_A");
  Add("Y", "SCHEMA_B");
  const std::function<void(std::ostream&)> reports[] = {
      [&](std::ostream& os) { registry_.DumpRegisteredEntityTypes(os); },
      [&](std::ostream& os) { registry_.DumpSingleDefinitions(os); },
      [&](std::ostream& os) { registry_.DumpMultipleDefinitions(os); },
  };
  for (const auto& report : reports) {
    std::ostringstream os;
    os.setf(std::ios_base::right, std::ios_base::adjustfield);
    report(os);
    EXPECT_EQ(os.flags() & std::ios_base::adjustfield, std::ios_base::left);
    EXPECT_EQ(os.width(), 0);
  }
}

TEST_F(FilteredReport, KeepsTheFormatOfTheStream) {
  std::ostringstream os;
  os.setf(std::ios_base::right, std::ios_base::adjustfield);
  const std::ios_base::fmtflags flags = os.flags();
  registry_.DumpMultipleDefinitions(os, true, "SCHEMA_A");
  EXPECT_EQ(os.flags(), flags);
  EXPECT_EQ(os.width(), 0);
  EXPECT_THAT(os.str(), testing::HasSubstr(ab_));
}

// ----------------------------------------------------------------------------------------- errors on the way

/// A stream that throws once, at the first output behind a given number of lines, and is sound before and
/// after.
class BreakingStream : public std::ostream {
 public:
  explicit BreakingStream(int lines)
      : std::ostream(nullptr), kept_(this, lines), breaking_(this), bomb_(&breaking_) {
    bomb_.exceptions(std::ios_base::badbit);
    rdbuf(&kept_);
    kept_.Arm();
  }
  std::string Text() const { return kept_.text; }

 private:
  /// Throws when the stream is tied to it and flushes it before an output.
  class Breaking : public std::streambuf {
   public:
    explicit Breaking(BreakingStream* owner) : owner_(owner) {}

   protected:
    int sync() override {
      owner_->tie(nullptr);
      throw std::runtime_error("broken");
    }

   private:
    BreakingStream* owner_;
  };

  /// Keeps the text, and ties the stream once enough lines are there.
  class Kept : public std::streambuf {
   public:
    Kept(BreakingStream* owner, int lines) : owner_(owner), linesLeft_(lines) {}
    void Arm() {
      if (linesLeft_ == 0) owner_->tie(&owner_->bomb_);
    }
    std::string text;

   protected:
    int overflow(int c) override {
      if (c == traits_type::eof()) return 0;
      Put(static_cast<char>(c));
      return c;
    }
    std::streamsize xsputn(const char* s, std::streamsize n) override {
      for (std::streamsize i = 0; i < n; i++) Put(s[i]);
      return n;
    }

   private:
    void Put(char c) {
      text += c;
      if (c == '\n' && --linesLeft_ == 0) Arm();
    }
    BreakingStream* owner_;
    int linesLeft_;
  };

  Kept kept_;
  Breaking breaking_;
  std::ostream bomb_;
};

class BrokenAfterLines : public FilteredReport, public testing::WithParamInterface<int> {};

TEST_P(BrokenAfterLines, TheFilteredReportSaysSoAndEnds) {
  // Two lines are the heading.
  BreakingStream os(2 + GetParam());
  EXPECT_NO_THROW(registry_.DumpMultipleDefinitions(os, true, "SCHEMA_B"));
  std::string expected = "\n--- multiple defined entity types containing SCHEMA_B ---\n";
  const std::string lines[] = {ab_, abc_, bc_};
  for (int i = 0; i < GetParam(); i++) expected += lines[i];
  expected += "--- error while writing types! ---\n";
  expected +=
      "--- multiple defined entity types containing SCHEMA_B count: " + std::to_string(GetParam()) + " ---\n";
  EXPECT_EQ(os.Text(), expected);
}

INSTANTIATE_TEST_SUITE_P(RegistryReports, BrokenAfterLines, testing::Values(0, 1, 2));

TEST_F(FilteredReport, AnErrorInTheHeadingReachesTheCaller) {
  BreakingStream os(0);
  EXPECT_THROW(registry_.DumpMultipleDefinitions(os, true, "SCHEMA_B"), std::runtime_error);
}

TEST_F(FilteredReport, AnErrorInTheOtherReportsReachesTheCaller) {
  const std::function<void(std::ostream&)> reports[] = {
      [&](std::ostream& os) { registry_.DumpRegisteredSchemas(os); },
      [&](std::ostream& os) { registry_.DumpRegisteredEntityTypes(os); },
      [&](std::ostream& os) { registry_.DumpSingleDefinitions(os); },
      [&](std::ostream& os) { registry_.DumpMultipleDefinitions(os); },
  };
  for (const auto& report : reports) {
    BreakingStream os(2);
    EXPECT_THROW(report(os), std::runtime_error);
  }
}

// --------------------------------------------------------------------------------- the process-wide registry

TEST(ProcessWideRegistryReports, ListTheTypesOfTheLibraryItself) {
  std::ostringstream types, schemas;
  ExpRuntimeRegistry::GetInstance()->DumpRegisteredEntityTypes(types);
  ExpRuntimeRegistry::GetInstance()->DumpRegisteredSchemas(schemas);
  EXPECT_THAT(types.str(), testing::HasSubstr(Entry("FILE_NAME", "VELMAR")));
  EXPECT_THAT(types.str(),
              testing::HasSubstr(Entry("POINT", "AUTOMOTIVE_DESIGN") + Entry("POINT", "TEST_SCHEMA")));
  EXPECT_THAT(schemas.str(), testing::HasSubstr("\n      VELMAR\n"));
}

}  // namespace
}  // namespace VELMAR
