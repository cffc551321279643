// The questions of docs/sqlite.md have the answers that stand there.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "RunProgram.h"

namespace {

struct Question {
  std::string sql;
  std::string answer;
};

// What stands between a line ```kind and a line ```, from `at` on, which is moved behind it. Empty where there is no such block.
std::string NextBlock(const std::string& text, const std::string& kind, std::size_t& at) {
  const std::string mark = "\n```" + kind + "\n";
  const std::size_t begin = text.find(mark, at);
  if (begin == std::string::npos) return "";
  const std::size_t end = text.find("\n```\n", begin + mark.size() - 1);
  if (end == std::string::npos) return "";
  at = end;
  return text.substr(begin + mark.size(), end + 1 - begin - mark.size());
}

std::vector<Question> Questions() {
  const std::string text = ReadFile(SOURCE_FOLDER "/docs/sqlite.md");
  std::vector<Question> questions;
  for (std::size_t at = 0;;) {
    const std::string sql = NextBlock(text, "sql", at);
    if (sql.empty()) return questions;
    questions.push_back({sql, NextBlock(text, "text", at)});
  }
}

TEST(SqliteGuide, QuestionsHaveTheAnswersThatAreThere) {
  const std::string program = SQLITE_PROGRAM;
  if (program.empty()) GTEST_SKIP() << "there is no program sqlite3";
  const TemporaryDirectory directory;
  const std::string database = directory.Path("bracket.db");
  ASSERT_EQ(RunProgram({VELMAR_PROGRAM, "convert", SAMPLE_FILE, "-o", database}).status, 0);
  const std::vector<Question> questions = Questions();
  EXPECT_GE(questions.size(), 5u);
  for (const Question& question : questions) {
    const Outcome outcome = RunProgram({program, "-readonly", "-header", database, question.sql});
    EXPECT_EQ(outcome.out, question.answer) << question.sql;
    EXPECT_EQ(outcome.err, "") << question.sql;
  }
}

}  // namespace
