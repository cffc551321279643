// velmar tree where golden outputs would be too long.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "RunProgram.h"
#include "SampleFiles.h"

namespace {

using testing::HasSubstr;

TEST(Tree, OfSharedAssembliesHasEachOnce) {
  // 2^60 ways lead to the last product.
  std::string data = "#999=PRODUCT('P','p',$,());\n#998=PRODUCT_DEFINITION_FORMATION('',$,#999);\n";
  for (int i = 1; i <= 61; ++i) {
    const std::string n = std::to_string(i), next = std::to_string(i + 1);
    data += "#" + n + "=PRODUCT_DEFINITION('',$,#998,$);\n";
    if (i == 61) break;
    for (const char* usage : {"1", "2"}) {
      data += "#" + std::string(usage) + "0" + n + "=NEXT_ASSEMBLY_USAGE_OCCURRENCE('','',$,#" + n + ",#" + next + ",$);\n";
    }
  }
  TemporaryDirectory directory;
  const std::string path = WriteFile(directory.Path("in.stp"), FileWith(data));
  const Outcome all = RunProgram({VELMAR_PROGRAM, "tree", path, "--all"});
  EXPECT_EQ(all.status, 0);
  EXPECT_EQ(std::count(all.out.begin(), all.out.end(), '\n'), 1 + 2 * 60 + 2);
  EXPECT_THAT(all.out, HasSubstr("(components as above)"));
  const Outcome grouped = RunProgram({VELMAR_PROGRAM, "tree", path});
  EXPECT_EQ(std::count(grouped.out.begin(), grouped.out.end(), '\n'), 1 + 60 + 2);
}

}  // namespace
