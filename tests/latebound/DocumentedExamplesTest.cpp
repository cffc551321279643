// The examples of docs/late_binding.md do what it says; they are compiled from its text.
#include <gtest/gtest.h>

#include <string>

#include "LateBoundFile.h"
#include "LoadedSchemas.h"

// In the document:
void ListProducts(const std::string& expressFile, const std::string& stepFile);
std::string AddProduct(VELMAR::LateBoundFile& file, const std::string& id);
void DescribeType(const VELMAR::LateBoundSchema& schema, const std::string& name);

namespace {

using namespace VELMAR;

const char kSchemaFile[] = VELMAR_SCHEMAS "/automotive_design.exp";

// What `print` writes to standard output.
template <class Print>
std::string OutputOf(Print print) {
  testing::internal::CaptureStdout();
  print();
  return testing::internal::GetCapturedStdout();
}

TEST(LateBindingDocument, Loading) {
  if (ExpRuntimeRegistry::GetInstance()->IsSchemaRegistered("AUTOMOTIVE_DESIGN")) {
    GTEST_SKIP() << "the schema can be loaded once in a process";
  }
  EXPECT_EQ(OutputOf([] { ListProducts(kSchemaFile, SAMPLE_FILE); }),
            "'Bracket, complete'\n'Winkel f\\X\\FCr Tr\\X\\E4ger'\n'Pin 10 x 25'\n");
}

TEST(LateBindingDocument, Instances) {
  const LateBoundSchema& schema = TestData::LoadedAs("DOCUMENTED", kSchemaFile);
  LateBoundFile file(schema);
  EXPECT_EQ(AddProduct(file, "VB-130"), "VB-130");
  EXPECT_EQ(file.GetEntity(1)->ToString(), "#1 = PRODUCT('VB-130', '', '', ());");
  EXPECT_EQ(OutputOf([&schema] { DescribeType(schema, "product"); }),
            "PRODUCT.id: identifier\n"
            "PRODUCT.name: label\n"
            "PRODUCT.description: optional text\n"
            "PRODUCT.frame_of_reference: set [1 : ?] of product_context\n");
}

}  // namespace
