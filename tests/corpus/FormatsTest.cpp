// Real exchange files as JSON and back, and as databases and tables.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <string>
#include <vector>

#include "../tools/RunProgram.h"
#include "CorpusFiles.h"

namespace {

namespace fs = std::filesystem;

class Formats : public CorpusFile {
 protected:
  // What velmar convert does with a file of our folder, or of the corpus.
  int Convert(const std::string& in, const std::string& out) {
    const Outcome outcome = RunProgram({VELMAR_PROGRAM, "convert", "-q", in, "-o", Path(out)});
    EXPECT_GE(outcome.status, 0) << out << ": " << outcome.err;
    EXPECT_LE(outcome.status, 1) << out << ": " << outcome.err;
    return outcome.status;
  }
  std::string Path(const std::string& name) const { return directory_.Path(name); }

  TemporaryDirectory directory_;
};

// Without the time stamp, which is that of writing where a file has none.
std::string Timeless(const std::string& part21) {
  constexpr const char* kBehindName = "', '";
  const std::size_t record = part21.find("\nFILE_NAME('");
  const std::size_t stamp = record == std::string::npos ? record : part21.find(kBehindName, record);
  if (stamp == std::string::npos) return part21;
  const std::size_t begin = stamp + std::strlen(kBehindName);
  return part21.substr(0, begin) + part21.substr(part21.find('\'', begin));
}

TEST_P(Formats, HaveAllInstances) {
  const std::string file = (Corpus() / GetParam()).string();
  const int status = Convert(file, "plain.stp");
  if (!fs::exists(Path("plain.stp"))) {
    EXPECT_EQ(Convert(file, "a.json"), status);
    EXPECT_FALSE(fs::exists(Path("a.json")));
    return;
  }
  const std::string plain = Timeless(ReadFile(Path("plain.stp")));
  EXPECT_EQ(Convert(file, "a.json"), status);
  Convert(Path("a.json"), "back.stp");
  EXPECT_TRUE(Timeless(ReadFile(Path("back.stp"))) == plain);
  Convert(Path("a.json"), "b.json");
  EXPECT_TRUE(ReadFile(Path("b.json")) == ReadFile(Path("a.json")));

  EXPECT_EQ(Convert(file, "a.csv"), status);
  EXPECT_TRUE(fs::exists(Path("a.csv/header.csv")));
  EXPECT_EQ(Convert(file, "a.db"), status);
  if (std::string(SQLITE_PROGRAM).empty()) return;
  std::size_t instances = 0;
  for (std::size_t at = plain.find("\n#"); at != std::string::npos; at = plain.find("\n#", at + 1)) ++instances;
  const Outcome answer = RunProgram({SQLITE_PROGRAM, "-readonly", Path("a.db"), "SELECT count(*) FROM instance; PRAGMA integrity_check;"});
  EXPECT_EQ(answer.out, std::to_string(instances) + "\nok\n") << answer.err;
}

INSTANTIATE_TEST_SUITE_P(Corpus, Formats, testing::ValuesIn(FilesOf({""})), NameOf);

}  // namespace
