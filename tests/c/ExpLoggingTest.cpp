#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <stdlib.h>
#include <unistd.h>

#include <cstdio>
#include <fstream>
#include <iterator>
#include <memory>
#include <sstream>
#include <string>
#include <type_traits>
#include <vector>

#include "ExpLogging.h"

namespace VELMAR {
namespace {

using testing::ElementsAre;

/// Counts the flushes of a stream.
class CountingBuffer : public std::stringbuf {
 public:
  int syncs = 0;

 protected:
  int sync() override {
    ++syncs;
    return std::stringbuf::sync();
  }
};

/// Records what a logger or an output is handed.
class RecordingOutput : public ExpAbstractOutput {
 public:
  using ExpAbstractOutput::Put;
  int Put(char c) override {
    characters.push_back(c);
    return 'x';
  }
  std::vector<char> characters;
};

class RecordingLogger : public ExpAbstractLogger {
 public:
  RecordingLogger(std::string name, std::vector<std::string>* calls)
      : name_(std::move(name)), calls_(calls) {}
  void Write(const std::string& message, const ExpLogLevel& level) override {
    calls_->push_back(name_ + ":" + message + "@" + std::to_string(level));
  }

 private:
  std::string name_;
  std::vector<std::string>* calls_;
};

class TemporaryFile {
 public:
  TemporaryFile() : path_(testing::TempDir() + "velmar_log_XXXXXX") {
    const int descriptor = mkstemp(path_.data());
    EXPECT_GE(descriptor, 0);
    close(descriptor);
  }
  ~TemporaryFile() { std::remove(path_.c_str()); }
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;

  FILE* Open() const { return std::fopen(path_.c_str(), "wb"); }
  std::string Text() const {
    std::ifstream file(path_, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
  }

 private:
  std::string path_;
};

/// Leaves the process without loggers, as it was found.
class Logger : public testing::Test {
 protected:
  void SetUp() override { ASSERT_TRUE(ExpLogger::GetLoggers().empty()); }
  void TearDown() override { ExpLogger::GetLoggers().clear(); }
};

// -------------------------------------------------------------------------------------------------------
// Outputs

TEST(ExpAbstractOutput, PutsATextCharacterByCharacter) {
  RecordingOutput output;
  EXPECT_EQ(output.Put(std::string("a\0b", 3)), 0);
  EXPECT_THAT(output.characters, ElementsAre('a', '\0', 'b'));
}

TEST(ExpAbstractOutput, PutsNothingForAnEmptyText) {
  RecordingOutput output;
  output.Put(std::string());
  EXPECT_TRUE(output.characters.empty());
}

TEST(ExpStreamOutput, WritesAndFlushesEveryCharacter) {
  CountingBuffer buffer;
  std::ostream stream(&buffer);
  ExpStreamOutput output(stream);
  EXPECT_EQ(output.Put('a'), 0);
  EXPECT_EQ(buffer.syncs, 1);
  EXPECT_EQ(output.Put('\n'), 0);
  EXPECT_EQ(buffer.syncs, 2);
  EXPECT_EQ(buffer.str(), "a\n");
}

TEST(ExpStreamOutput, WritesATextAndFlushesOnce) {
  CountingBuffer buffer;
  std::ostream stream(&buffer);
  ExpStreamOutput output(stream);
  EXPECT_EQ(output.Put(std::string("three\0lines\n", 12)), 0);
  EXPECT_EQ(buffer.str(), std::string("three\0lines\n", 12));
  EXPECT_EQ(buffer.syncs, 1);
}

TEST(ExpStreamOutput, IgnoresTheFormatOfTheStream) {
  std::ostringstream stream;
  stream.width(20);
  stream.fill('*');
  ExpStreamOutput output(stream);
  output.Put(std::string("text"));
  output.Put('c');
  EXPECT_EQ(stream.str(), "textc");
}

TEST(ExpStreamOutput, IgnoresAStreamThatFails) {
  std::ostringstream stream;
  stream.setstate(std::ios::badbit);
  ExpStreamOutput output(stream);
  EXPECT_EQ(output.Put('a'), 0);
  EXPECT_EQ(output.Put(std::string("b")), 0);
  EXPECT_EQ(stream.str(), "");
}

TEST(ExpFileOutput, WritesCharactersAndTextsAndClosesTheFile) {
  TemporaryFile file;
  {
    ExpFileOutput output(file.Open());
    EXPECT_EQ(output.Put('a'), 'a');
    EXPECT_EQ(output.Put('\xE9'), 0xE9) << "what fputc returns: the character as an unsigned char";
    output.Put(std::string("bc\n"));
    EXPECT_EQ(file.Text(), "") << "no flush of its own";
  }
  EXPECT_EQ(file.Text(),
            "a\xE9"
            "bc\n");
}

TEST(ExpFileOutput, ReturnsEofWhenTheFileCannotBeWritten) {
  TemporaryFile file;
  FILE* readOnly = std::fopen("/dev/null", "rb");
  ASSERT_NE(readOnly, nullptr);
  ExpFileOutput output(readOnly);
  EXPECT_EQ(output.Put('a'), EOF);
}

TEST(ExpFileOutput, WithoutAFileEverythingIsDropped) {
  ExpFileOutput output(nullptr);
  EXPECT_EQ(output.Put('a'), EOF);
  EXPECT_EQ(output.Put(std::string("text")), 0);
}

// -------------------------------------------------------------------------------------------------------
// Loggers

TEST(ExpAbstractLogger, WriteLineHandsTheMessageWithALineFeedToWrite) {
  std::vector<std::string> calls;
  RecordingLogger logger("a", &calls);
  logger.WriteLine("text", ExpLogException);
  logger.WriteLine("", ExpLogMessage);
  EXPECT_THAT(calls, ElementsAre("a:text\n@4", "a:\n@1"));
}

TEST(ExpSimpleLogger, WritesTheMessageAsItIs) {
  std::ostringstream stream;
  ExpSimpleLogger logger(&stream);
  logger.Write("no line end", ExpLogMessage);
  logger.Write("\n", ExpLogException);
  EXPECT_EQ(stream.str(), "no line end\n");
}

TEST(ExpSimpleLogger, IgnoresTheLevel) {
  std::ostringstream stream;
  ExpSimpleLogger logger(&stream);
  for (int level = 0; level < 8; ++level) logger.WriteLine("x", static_cast<ExpLogLevel>(level));
  EXPECT_EQ(stream.str(), "x\nx\nx\nx\nx\nx\nx\nx\n");
}

TEST(ExpSimpleLogger, WriteLineOfAnEmptyMessageWritesALoneLineFeed) {
  std::ostringstream stream;
  ExpSimpleLogger logger(&stream);
  logger.WriteLine("", ExpLogMessage);
  EXPECT_EQ(stream.str(), "\n");
}

TEST(ExpSimpleLogger, AMessageReachesTheStreamWithOneFlush) {
  CountingBuffer buffer;
  std::ostream stream(&buffer);
  ExpSimpleLogger logger(&stream);
  logger.WriteLine("message", ExpLogMessage);
  EXPECT_EQ(buffer.str(), "message\n");
  EXPECT_EQ(buffer.syncs, 1);
}

TEST(ExpSimpleLogger, ClosesItsFileWhenItIsDestroyed) {
  TemporaryFile file;
  FILE* handle = file.Open();
  ASSERT_NE(handle, nullptr);
  const int descriptor = fileno(handle);
  auto logger = std::make_unique<ExpSimpleLogger>(handle);
  logger->WriteLine("kept in the buffer until now", ExpLogMessage);
  EXPECT_NE(lseek(descriptor, 0, SEEK_CUR), -1) << "open";
  logger.reset();
  EXPECT_EQ(lseek(descriptor, 0, SEEK_CUR), -1) << "closed";
  EXPECT_EQ(file.Text(), "kept in the buffer until now\n");
}

TEST(ExpSimpleLogger, LeavesItsStreamOpenWhenItIsDestroyed) {
  TemporaryFile file;
  std::ostringstream stream;
  {
    ExpSimpleLogger logger(&stream);
    logger.WriteLine("first", ExpLogMessage);
  }
  stream << "second";
  EXPECT_EQ(stream.str(), "first\nsecond");
}

// ----------------------------------------------------------------------------------------------------
// Dispatcher

TEST(ExpLogLevel, HasThirtyTwoBitsAndTheValuesOfTheLibrary) {
  static_assert(std::is_enum_v<ExpLogLevel>);
  static_assert(sizeof(ExpLogLevel) == 4);
  EXPECT_EQ(static_cast<int>(ExpLogMessage), 1);
  EXPECT_EQ(static_cast<int>(ExpLogException), 4);
}

TEST_F(Logger, WithoutLoggersMessagesAreDropped) {
  testing::internal::CaptureStdout();
  testing::internal::CaptureStderr();
  ExpLogger::Write("dropped", ExpLogMessage);
  ExpLogger::WriteLine("dropped", ExpLogException);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
  EXPECT_TRUE(ExpLogger::GetLoggers().empty());
}

TEST_F(Logger, ALoggerAddedTwiceReceivesAMessageOnce) {
  std::ostringstream stream;
  ExpSimpleLogger a(&stream);
  ExpLogger::AddLogger(&a);
  ExpLogger::AddLogger(&a);
  EXPECT_EQ(ExpLogger::GetLoggers().size(), 1u);
  ExpLogger::WriteLine("x", ExpLogMessage);
  EXPECT_EQ(stream.str(), "x\n");
}

TEST_F(Logger, EveryLoggerReceivesEveryMessageInTheOrderOfRegistration) {
  std::vector<std::string> calls;
  RecordingLogger a("a", &calls);
  RecordingLogger b("b", &calls);
  ExpLogger::AddLogger(&b);
  ExpLogger::AddLogger(&a);
  ExpLogger::AddLogger(&b);  // stays the first
  EXPECT_THAT(ExpLogger::GetLoggers(), ElementsAre(&b, &a));
  ExpLogger::Write("one", ExpLogMessage);
  ExpLogger::WriteLine("two", ExpLogException);
  EXPECT_THAT(calls, ElementsAre("b:one@1", "a:one@1", "b:two\n@4", "a:two\n@4"));
}

TEST_F(Logger, WriteAddsNothingToTheMessage) {
  std::ostringstream stream;
  ExpSimpleLogger a(&stream);
  ExpLogger::AddLogger(&a);
  ExpLogger::Write("\n-- line 1 col 2: ", ExpLogMessage);
  ExpLogger::Write("", ExpLogMessage);
  EXPECT_EQ(stream.str(), "\n-- line 1 col 2: ");
}

TEST_F(Logger, WriteLineGoesThroughTheOperationOfTheLogger) {
  class OwnLines : public RecordingLogger {
   public:
    using RecordingLogger::RecordingLogger;
    void WriteLine(const std::string& message, const ExpLogLevel& level) override {
      Write("<" + message + ">", level);
    }
  };
  std::vector<std::string> calls;
  OwnLines a("a", &calls);
  ExpLogger::AddLogger(&a);
  ExpLogger::WriteLine("x", ExpLogMessage);
  EXPECT_THAT(calls, ElementsAre("a:<x>@1"));
}

TEST_F(Logger, RemovingALoggerThatWasNeverAddedDoesNothing) {
  std::vector<std::string> calls;
  RecordingLogger a("a", &calls);
  RecordingLogger b("b", &calls);
  ExpLogger::AddLogger(&b);
  ExpLogger::RemoveLogger(&a);
  EXPECT_THAT(ExpLogger::GetLoggers(), ElementsAre(&b));
}

TEST_F(Logger, ARemovedLoggerStillExists) {
  std::vector<std::string> calls;
  RecordingLogger a("a", &calls);
  ExpLogger::AddLogger(&a);
  EXPECT_TRUE(ExpLogger::Contains(&a));
  ExpLogger::RemoveLogger(&a);
  EXPECT_FALSE(ExpLogger::Contains(&a));
  ExpLogger::WriteLine("unheard", ExpLogMessage);
  a.Write("direct", ExpLogMessage);
  EXPECT_THAT(calls, ElementsAre("a:direct@1"));
}

TEST_F(Logger, RemovingTakesEveryEntryOfTheLoggerOutOfTheList) {
  std::vector<std::string> calls;
  RecordingLogger a("a", &calls);
  RecordingLogger b("b", &calls);
  ExpLogger::GetLoggers() = {&a, &b, &a};
  ExpLogger::RemoveLogger(&a);
  EXPECT_THAT(ExpLogger::GetLoggers(), ElementsAre(&b));
}

TEST_F(Logger, ContainsIsFalseForAnEmptyList) {
  std::vector<std::string> calls;
  RecordingLogger a("a", &calls);
  EXPECT_FALSE(ExpLogger::Contains(&a));
  EXPECT_FALSE(ExpLogger::Contains(nullptr));
}

TEST_F(Logger, ALoggerMayRemoveItselfWhileItIsCalled) {
  class Once : public RecordingLogger {
   public:
    using RecordingLogger::RecordingLogger;
    void Write(const std::string& message, const ExpLogLevel& level) override {
      ExpLogger::RemoveLogger(this);
      RecordingLogger::Write(message, level);
    }
  };
  std::vector<std::string> calls;
  Once a("a", &calls);
  RecordingLogger b("b", &calls);
  ExpLogger::AddLogger(&a);
  ExpLogger::AddLogger(&b);
  ExpLogger::Write("1", ExpLogMessage);
  ExpLogger::Write("2", ExpLogMessage);
  EXPECT_THAT(calls, ElementsAre("a:1@1", "b:1@1", "b:2@1"));
}

}  // namespace
}  // namespace VELMAR
