// The importer: files, streams and memory into a provider, with an offset and with or without the header.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <functional>
#include <memory>
#include <new>
#include <sstream>
#include <stdexcept>
#include <streambuf>
#include <string>
#include <vector>

#include "CapturedLog.h"
#include "ExpFile.h"
#include "Part21Importer.h"
#include "ReadingSupport.h"
#include "TestEntities.h"

namespace {

using namespace VELMAR;
using reading::Ended;
using reading::PipeStream;
using reading::RunInChild;
using reading::TemporaryFile;
using testing::ElementsAre;
using testing::IsEmpty;
using VELMAR::TestData::CapturedLog;
using VELMAR::TestData::Node;
using VELMAR::TestData::TestProvider;

const char kText[] =
    "ISO-10303-21;\nHEADER;\nFILE_DESCRIPTION(('d'),'1');\nFILE_NAME('n','t',('a'),('o'),'p','s','z');\n"
    "FILE_SCHEMA(('TEST'));\nENDSEC;\nDATA;\n#1=NODE('one',#2,(),$);\n#2=NODE('two',#1,(#1),$);\nENDSEC;\n"
    "END-ISO-10303-21;\n";
const char kPopulation[] = "#1 = NODE('one', #2, (), $);\n#2 = NODE('two', #1, (#1), $);\n";

std::string Population(TestProvider& provider) {
  std::ostringstream out;
  provider.Write(out);
  return out.str();
}

const std::vector<std::string> kHeaderAndData = {"FILE_DESCRIPTION", "FILE_NAME", "FILE_SCHEMA", "NODE",
                                                 "NODE"};

TEST(Part21Importer, ImportsAFileByItsName) {
  TemporaryFile file(kText);
  TestProvider provider;
  Part21Importer().ImportFromFile(file.Path(), &provider, 0);
  EXPECT_EQ(Population(provider), kPopulation);
  EXPECT_EQ(provider.askedTypes, kHeaderAndData);
  EXPECT_THAT(provider.givenSchemaNames, ElementsAre("TEST"));
}

TEST(Part21Importer, ImportsAFileWhoseNameIsNotAscii) {
  TemporaryFile file(kText);
  const std::string renamed = file.Path() + "_\xC3\xA9\xE4\xB8\x80";
  ASSERT_EQ(std::rename(file.Path().c_str(), renamed.c_str()), 0);
  TestProvider provider;
  Part21Importer().ImportFromFile(renamed, &provider, 0);
  EXPECT_EQ(Population(provider), kPopulation);
  std::remove(renamed.c_str());
}

TEST(Part21Importer, AFileThatCannotBeOpenedEndsTheProcess) {
  const Ended ended = RunInChild([] {
    TestProvider provider;
    Part21Importer().ImportFromFile("/no/such/part.stp", &provider, 0);
  });
  EXPECT_EQ(ended.exitStatus, 1);
  EXPECT_EQ(ended.output, "--- Cannot open file /no/such/part.stp\n");
}

TEST(Part21Importer, ABrokenByteOrderMarkEndsTheProcess) {
  const Ended ended = RunInChild([] {
    TestProvider provider;
    std::istringstream in("\xEF\xBBISO-10303-21;");
    Part21Importer().ImportFromStream(&in, &provider, 0);
  });
  EXPECT_EQ(ended.exitStatus, 1);
  EXPECT_EQ(ended.output, "Illegal byte order mark at start of file");
}

TEST(Part21Importer, ImportsAFileStreamAndLeavesItOpen) {
  TemporaryFile file(kText);
  FILE* stream = fopen(file.Path().c_str(), "rb");
  TestProvider provider;
  Part21Importer().ImportFromStream(stream, &provider, 0);
  EXPECT_EQ(Population(provider), kPopulation);
  EXPECT_NE(fcntl(fileno(stream), F_GETFD), -1);
  EXPECT_EQ(fclose(stream), 0);
}

TEST(Part21Importer, ImportsAPipe) {
  PipeStream pipe(kText);
  TestProvider provider;
  Part21Importer().ImportFromStream(pipe.Stream(), &provider, 0);
  EXPECT_EQ(Population(provider), kPopulation);
}

TEST(Part21Importer, ImportsAStream) {
  std::istringstream in(kText);
  TestProvider provider;
  Part21Importer().ImportFromStream(&in, &provider, 0);
  EXPECT_EQ(Population(provider), kPopulation);
  EXPECT_EQ(provider.askedTypes, kHeaderAndData);
  EXPECT_THAT(provider.givenSchemaNames, ElementsAre("TEST"));
}

TEST(Part21Importer, ImportsAStreamThatBeginsWithTheByteOrderMark) {
  std::istringstream in(std::string(reading::kByteOrderMark) + kText);
  TestProvider provider;
  Part21Importer().ImportFromStream(&in, &provider, 0);
  EXPECT_EQ(Population(provider), kPopulation);
}

TEST(Part21Importer, AStreamInTheMiddleOrAtItsEndIsImportedFromItsStart) {
  std::istringstream in(kText);
  in.ignore(50);
  TestProvider provider;
  Part21Importer().ImportFromStream(&in, &provider, 0);
  EXPECT_EQ(Population(provider), kPopulation);

  std::istringstream atEnd(kText);
  atEnd.seekg(0, std::ios::end);
  TestProvider second;
  Part21Importer().ImportFromStream(&atEnd, &second, 0);
  EXPECT_EQ(Population(second), kPopulation);
}

TEST(Part21Importer, TheSameStreamTwiceWithAnOffsetGivesTheInstancesTwice) {
  std::istringstream in(kText);
  TestProvider provider;
  Part21Importer importer;
  importer.ImportFromStream(&in, &provider, 0);
  importer.ImportFromStream(&in, &provider, 1000);
  EXPECT_EQ(Population(provider), std::string(kPopulation) +
                                      "#1001 = NODE('one', #1002, (), $);\n"
                                      "#1002 = NODE('two', #1001, (#1001), $);\n");
}

TEST(Part21Importer, EveryWayTakesTheOffset) {
  TemporaryFile file(kText);
  const std::string shifted = "#8 = NODE('one', #9, (), $);\n#9 = NODE('two', #8, (#8), $);\n";
  {
    TestProvider provider;
    Part21Importer().ImportFromFile(file.Path(), &provider, 7);
    EXPECT_EQ(Population(provider), shifted);
  }
  {
    TestProvider provider;
    PipeStream pipe(kText);
    Part21Importer().ImportFromStream(pipe.Stream(), &provider, 7);
    EXPECT_EQ(Population(provider), shifted);
  }
  for (const bool skipHeader : {false, true}) {
    TestProvider provider;
    std::istringstream in(kText);
    Part21Importer().ImportFromStream(&in, &provider, 7, skipHeader);
    EXPECT_EQ(Population(provider), shifted);
  }
}

TEST(Part21Importer, SkippingTheHeaderCreatesDataOnly) {
  std::istringstream in(kText);
  TestProvider provider;
  Part21Importer().ImportFromStream(&in, &provider, 0, true);
  EXPECT_THAT(provider.askedTypes, ElementsAre("NODE", "NODE"));
  EXPECT_THAT(provider.givenSchemaNames, IsEmpty());
  EXPECT_EQ(Population(provider), kPopulation);
  for (const char* type : {"FILE_DESCRIPTION", "FILE_NAME", "FILE_SCHEMA"}) {
    std::list<ExpEntity*> entities;
    provider.GetEntities(entities, type, false);
    EXPECT_THAT(entities, IsEmpty()) << type;
  }
}

TEST(Part21Importer, NotSkippingTheHeaderIsTheSameAsTheShortForm) {
  std::istringstream in(kText);
  TestProvider provider;
  Part21Importer().ImportFromStream(&in, &provider, 0, false);
  EXPECT_EQ(provider.askedTypes, kHeaderAndData);
  EXPECT_THAT(provider.givenSchemaNames, ElementsAre("TEST"));
}

TEST(Part21Importer, TheShortFormCallsTheLongOneWithTheHeader) {
  class Watching : public Part21Importer {
   public:
    using Part21Importer::ImportFromStream;
    void ImportFromStream(std::istream* stream, ExpAbstractObjectProvider* provider, int offset,
                          bool skipHeader) override {
      calls.push_back({stream, provider, offset, skipHeader});
    }
    struct Call {
      std::istream* stream;
      ExpAbstractObjectProvider* provider;
      int offset;
      bool skipHeader;
    };
    std::vector<Call> calls;
  } importer;
  std::istringstream in(kText);
  TestProvider provider;
  importer.ImportFromStream(&in, &provider, 42);
  ASSERT_EQ(importer.calls.size(), 1u);
  EXPECT_EQ(importer.calls[0].stream, &in);
  EXPECT_EQ(importer.calls[0].provider, &provider);
  EXPECT_EQ(importer.calls[0].offset, 42);
  EXPECT_FALSE(importer.calls[0].skipHeader);
}

void ExpectNothingImported(std::istream* stream) {
  for (const bool skipHeader : {false, true}) {
    TestProvider provider;
    CapturedLog log;
    Part21Importer importer;
    importer.ImportFromStream(stream, &provider, 0, skipHeader);
    importer.ImportFromStream(stream, &provider, 0);
    EXPECT_THAT(provider.askedTypes, IsEmpty());
    EXPECT_THAT(provider.givenSchemaNames, IsEmpty());
    EXPECT_THAT(log.lines, IsEmpty());
    EXPECT_EQ(provider.GetMaxEntityNumber(), 0);
  }
}

TEST(Part21Importer, NullImportsNothing) { ExpectNothingImported(nullptr); }

TEST(Part21Importer, AFailedStreamImportsNothing) {
  std::istringstream in(kText);
  in.setstate(std::ios::failbit);
  ExpectNothingImported(&in);
}

TEST(Part21Importer, ABadStreamImportsNothing) {
  std::istringstream in(kText);
  in.setstate(std::ios::badbit);
  ExpectNothingImported(&in);
}

TEST(Part21Importer, AnEmptyStreamImportsNothing) {
  std::istringstream in("");
  ExpectNothingImported(&in);
}

TEST(Part21Importer, AStreamThatCannotSeekImportsNothingOrLess) {
  class Unseekable : public std::streambuf {
   public:
    explicit Unseekable(std::string text) : text_(std::move(text)) {
      setg(&text_[0], &text_[0], &text_[0] + text_.size());
    }

   private:
    std::string text_;
  } buffer(kText);
  std::istream in(&buffer);
  TestProvider provider;
  CapturedLog log;
  try {
    Part21Importer().ImportFromStream(&in, &provider, 0);
  } catch (const std::exception&) {
    // Less than a file may be no file.
  }
  EXPECT_LE(provider.GetMaxEntityNumber(), 2);
}

TEST(Part21Importer, SyntaxErrorsAreLoggedAndDoNotStopIt) {
  std::istringstream in(
      "ISO-10303-21;\nHEADER;\nFILE_SCHEMA(('TEST'));\nENDSEC;\nDATA;\n#1=node();\n#2=EMPTY();\nENDSEC;\n");
  TestProvider provider;
  CapturedLog log;
  Part21Importer().ImportFromStream(&in, &provider, 0);
  EXPECT_THAT(log.lines, ElementsAre("-- line 6 col 4: invalid entityInstance",
                                     "-- line 9 col 1: \"END-ISO-10303-21;\" expected"));
  EXPECT_EQ(Population(provider), "#2 = EMPTY();\n");
}

TEST(Part21Importer, AnExceptionLeavesTheImportAndTheImporterServesOn) {
  const std::string broken = "ISO-10303-21;HEADER;ENDSEC;DATA;#1=EMPTY();ENDSEC;END-ISO-10303-21;";
  TemporaryFile file(broken);
  Part21Importer importer;
  TestProvider provider;
  std::istringstream in(broken);
  EXPECT_THROW(importer.ImportFromStream(&in, &provider, 0), std::bad_array_new_length);
  EXPECT_THROW(importer.ImportFromStream(&in, &provider, 0, true), std::bad_array_new_length);
  EXPECT_THROW(importer.ImportFromFile(file.Path(), &provider, 0), std::bad_array_new_length);
  {
    PipeStream pipe(broken);
    EXPECT_THROW(importer.ImportFromStream(pipe.Stream(), &provider, 0), std::bad_array_new_length);
  }
  std::istringstream whole(kText);
  importer.ImportFromStream(&whole, &provider, 0);
  EXPECT_EQ(Population(provider), kPopulation);
}

// A text that is longer than what is read at a time, with `blanks` in front of its records.
std::string LongText(int blanks) {
  std::string text = "ISO-10303-21;\nHEADER;\nFILE_SCHEMA(('TEST'));\nENDSEC;\nDATA;\n" + std::string(blanks, ' ');
  for (int i = 1; i < 3000; ++i) {
    text += "#" + std::to_string(i) + "=NODE('a text with ''apostrophes''',#1,(#22,L('x'),-12.5E-3),$);/* c */\r\n";
  }
  return text + "ENDSEC;\nEND-ISO-10303-21;\n";
}

TEST(Part21Importer, ATokenOfAStreamMayCrossWhatIsReadAtATime) {
  for (int blanks = 0; blanks < 90; ++blanks) {  // more than a record has characters
    std::istringstream in(LongText(blanks));
    TestProvider provider;
    CapturedLog log;
    Part21Importer().ImportFromStream(&in, &provider, 0);
    ASSERT_THAT(log.lines, IsEmpty()) << blanks;
    ASSERT_EQ(provider.GetMaxEntityNumber(), 2999) << blanks;
    for (int number = 1; number < 3000; ++number) {
      ASSERT_EQ(provider.GetEntity(number)->ToString(),
                "#" + std::to_string(number) + " = NODE('a text with ''apostrophes''', #1, (#22, L('x'), -0.0125), $);")
          << blanks;
    }
  }
}

TEST(Part21Importer, PlacesInALongStreamAreThoseOfTheFile) {
  std::string text = LongText(0);
  text.replace(text.rfind("$);"), 3, "?);");
  std::istringstream in(text);
  TestProvider provider;
  CapturedLog log;
  Part21Importer().ImportFromStream(&in, &provider, 0);
  EXPECT_THAT(log.lines, ElementsAre("-- line 3004 col 67: invalid parameterArg"));
}

TEST(Part21Importer, TheHeaderOfALongStreamMayBeLongerThanWhatIsReadAtATime) {
  std::string authors = "'a'";
  for (int i = 0; i < 30000; ++i) authors += ",'author'";
  std::string text = LongText(0);
  text.insert(text.find("FILE_SCHEMA"), "FILE_NAME('n','t',(" + authors + "),('o'),'p','s','a');\n");
  std::istringstream in(text);
  TestProvider provider;
  CapturedLog log;
  Part21Importer().ImportFromStream(&in, &provider, 0);
  EXPECT_THAT(log.lines, IsEmpty());
  EXPECT_EQ(provider.GetMaxEntityNumber(), 2999);
}

TEST(Part21Importer, AStreamIsLeftAtItsEnd) {
  for (const std::string& behind : {std::string(), std::string("what follows"), std::string(200000, ';')}) {
    for (const std::string& text : {std::string(kText), LongText(0)}) {
      std::istringstream in(text + behind);
      TestProvider provider;
      CapturedLog log;
      Part21Importer().ImportFromStream(&in, &provider, 0);
      EXPECT_TRUE(in.good());
      EXPECT_EQ(in.tellg(), static_cast<std::streamoff>((text + behind).size()));
    }
  }
}

// Says that it is longer than it is.
class ShortBuffer : public std::stringbuf {
 public:
  explicit ShortBuffer(const std::string& text) : std::stringbuf(text, std::ios::in) {}

 private:
  pos_type seekoff(off_type offset, std::ios::seekdir direction, std::ios::openmode mode) override {
    const pos_type position = std::stringbuf::seekoff(offset, direction, mode);
    return direction == std::ios::beg ? position : position + off_type(100000);
  }
};

TEST(Part21Importer, AStreamThatIsShorterThanItSaysIsReadToItsEnd) {
  for (const std::string& text : {std::string(kText), LongText(0)}) {
    ShortBuffer buffer(text);
    std::istream in(&buffer);
    TestProvider provider;
    CapturedLog log;
    Part21Importer().ImportFromStream(&in, &provider, 0);
    EXPECT_THAT(log.lines, IsEmpty());
    EXPECT_EQ(provider.GetMaxEntityNumber(), text == kText ? 2 : 2999);
  }
}

TEST(Part21Importer, AStreamThatThrowsDoesSoBeforeAnythingIsCreated) {
  ShortBuffer buffer(LongText(0));
  std::istream in(&buffer);
  in.exceptions(std::ios::failbit | std::ios::badbit);
  TestProvider provider;
  EXPECT_THROW(Part21Importer().ImportFromStream(&in, &provider, 0), std::ios::failure);
  EXPECT_THAT(provider.askedTypes, IsEmpty());
}

// ---------------------------------------------------------------------- inputs that cannot be read to their end

// Gives the first `good` bytes of a text; then it fails, by saying so or by throwing.
class FailingBuffer : public std::streambuf {
 public:
  FailingBuffer(std::string text, std::size_t good, bool throws)
      : text_(std::move(text)), good_(good), throws_(throws) {}

 private:
  int_type underflow() override {
    if (gptr() == egptr()) Load(static_cast<std::size_t>(Position()));
    return traits_type::to_int_type(*gptr());
  }
  void Load(std::size_t position) {
    if (position >= good_) {
      if (throws_) throw std::runtime_error("no more of it");
      errno = EIO;
      throw std::ios::failure("no more of it");
    }
    base_ = position;
    char* begin = &text_[0] + position;
    setg(begin, begin, begin + std::min<std::size_t>(1000, good_ - position));
  }
  pos_type seekoff(off_type offset, std::ios::seekdir direction, std::ios::openmode) override {
    const off_type from = direction == std::ios::beg ? 0 : direction == std::ios::cur ? Position() : End();
    return seekpos(from + offset, std::ios::in);
  }
  pos_type seekpos(pos_type position, std::ios::openmode) override {
    base_ = static_cast<std::size_t>(off_type(position));
    setg(nullptr, nullptr, nullptr);
    return position;
  }
  off_type Position() const { return static_cast<off_type>(base_) + (gptr() - eback()); }
  off_type End() const { return static_cast<off_type>(text_.size()); }

  std::string text_;
  std::size_t good_;
  bool throws_;
  std::size_t base_ = 0;
};

const char kBreaksOff[] = ": the input cannot be read any further: Input/output error";

TEST(Part21Importer, AStreamThatBreaksOffIsAnErrorWhereverItDoes) {
  const std::string text = LongText(0);
  for (const std::string& mark : {std::string(), std::string(reading::kByteOrderMark)}) {
    for (const std::size_t good : {std::size_t{0}, std::size_t{1}, std::size_t{40}, std::size_t{65535}, std::size_t{65536},
                                   std::size_t{65537}, std::size_t{150000}, text.size() - 1}) {
      for (const bool throws : {false, true}) {
        FailingBuffer buffer(mark + text, good, throws);
        std::istream in(&buffer);
        TestProvider provider;
        CapturedLog log;
        try {
          Part21Importer().ImportFromStream(&in, &provider, 0);
        } catch (const std::bad_array_new_length&) {  // as always where the header has no record
          EXPECT_LT(good, 66000u);
        }
        const auto isOfReading = [](const std::string& line) { return line.find(kBreaksOff) != std::string::npos; };
        EXPECT_EQ(std::count_if(log.lines.begin(), log.lines.end(), isOfReading), 1)
            << good << mark << testing::PrintToString(log.lines);
        EXPECT_TRUE(in.bad());
      }
    }
  }
}

TEST(Part21Importer, AStreamBreaksOffAtTheTokenThatCouldNotBeRead) {
  const std::string text = LongText(0);
  const std::string first = text.substr(0, 65536);  // what is read at a time
  const auto line = std::count(first.begin(), first.end(), '\n') + 1;
  FailingBuffer buffer(text, 70000, false);
  std::istream in(&buffer);
  TestProvider provider;
  CapturedLog log;
  Part21Importer().ImportFromStream(&in, &provider, 0);
  const std::string token = first.substr(0, first.find_last_of("(),;=\n") + 1);
  EXPECT_THAT(log.lines, ElementsAre("-- line " + std::to_string(line) + " col " +
                                     std::to_string(token.size() - token.rfind('\n')) + kBreaksOff));
  EXPECT_GT(provider.GetMaxEntityNumber(), 800);
}

TEST(Part21Importer, AStreamThatBreaksOffIsNotSaidToLackItsEnd) {
  FailingBuffer buffer(kText, 0, false);
  std::istream in(&buffer);
  TestProvider provider;
  CapturedLog log;
  Part21Importer().ImportFromStream(&in, &provider, 0);
  EXPECT_THAT(log.lines, ElementsAre(std::string("-- line 1 col 1") + kBreaksOff));
}

TEST(Part21Importer, AStreamWhoseLengthCannotBeFoundIsAnError) {
  class Unseekable : public std::stringbuf {
   public:
    Unseekable() : std::stringbuf(kText, std::ios::in) {}

   private:
    pos_type seekoff(off_type, std::ios::seekdir, std::ios::openmode) override { return pos_type(off_type(-1)); }
  } buffer;
  std::istream in(&buffer);
  TestProvider provider;
  EXPECT_THROW(Part21Importer().ImportFromStream(&in, &provider, 0), std::runtime_error);

  ExpFile file;
  CapturedLog log;
  in.clear();
  file.Read(in);
  EXPECT_THAT(log.lines, ElementsAre("Reading from stream",
                                     "Error while reading from filestream the length of the input cannot be found"));
}

// A FILE* over a text, of which each reading is asked for beforehand: the bytes it is given at most, or 0 to fail.
class FailingFile {
 public:
  FailingFile(std::string text, std::function<int(std::size_t position, std::size_t wanted)> plan, bool seekable)
      : text_(std::move(text)), plan_(std::move(plan)) {
    cookie_io_functions_t functions = {Read, nullptr, seekable ? Seek : nullptr, nullptr};
    stream_ = fopencookie(this, "rb", functions);
    setvbuf(stream_, nullptr, _IONBF, 0);
  }
  ~FailingFile() { fclose(stream_); }
  FailingFile(const FailingFile&) = delete;
  FailingFile& operator=(const FailingFile&) = delete;
  FILE* Stream() const { return stream_; }

 private:
  static ssize_t Read(void* cookie, char* into, std::size_t wanted) {
    auto& self = *static_cast<FailingFile*>(cookie);
    const int given = self.plan_(self.at_, wanted);
    if (given < 0) {
      errno = -given;
      return -1;
    }
    const std::size_t there = self.text_.size() - std::min(self.at_, self.text_.size());
    const std::size_t count = std::min({static_cast<std::size_t>(given), wanted, there});
    self.text_.copy(into, count, self.at_);
    self.at_ += count;
    return static_cast<ssize_t>(count);
  }
  static int Seek(void* cookie, off64_t* offset, int whence) {
    auto& self = *static_cast<FailingFile*>(cookie);
    const std::size_t from = whence == SEEK_SET ? 0 : whence == SEEK_CUR ? self.at_ : self.text_.size();
    self.at_ = from + static_cast<std::size_t>(*offset);
    *offset = static_cast<off64_t>(self.at_);
    return 0;
  }

  std::string text_;
  std::function<int(std::size_t, std::size_t)> plan_;
  std::size_t at_ = 0;
  FILE* stream_;
};

class FileThatFails : public testing::TestWithParam<bool> {};

TEST_P(FileThatFails, IsAnErrorWhereverItBreaksOff) {
  const std::string text = LongText(0);
  for (const std::string& mark : {std::string(), std::string(reading::kByteOrderMark)}) {
    for (const std::size_t good : {0, 10, 1000, 65536, 100000}) {
      const auto plan = [good](std::size_t position, std::size_t) {
        return position >= good ? -EIO : static_cast<int>(good - position);
      };
      FailingFile file(mark + text, plan, GetParam());
      TestProvider provider;
      CapturedLog log;
      try {
        Part21Importer().ImportFromStream(file.Stream(), &provider, 0);
      } catch (const std::bad_array_new_length&) {
        EXPECT_LT(good, 1000u);
      }
      const auto isOfReading = [](const std::string& line) { return line.find(kBreaksOff) != std::string::npos; };
      EXPECT_EQ(std::count_if(log.lines.begin(), log.lines.end(), isOfReading), 1)
          << good << mark << testing::PrintToString(log.lines);
    }
  }
}

TEST_P(FileThatFails, IsReadWholeThroughSignalsAndInSmallPieces) {
  const std::string text = LongText(0);
  int call = 0;
  const auto plan = [&call](std::size_t, std::size_t wanted) {
    ++call;
    return call % 2 == 0 ? -EINTR : static_cast<int>(std::min<std::size_t>(wanted, 777));
  };
  FailingFile file(text, plan, GetParam());
  TestProvider provider;
  CapturedLog log;
  Part21Importer().ImportFromStream(file.Stream(), &provider, 0);
  EXPECT_THAT(log.lines, IsEmpty());
  EXPECT_EQ(provider.GetMaxEntityNumber(), 2999);
  EXPECT_GT(call, 100);
}

INSTANTIATE_TEST_SUITE_P(WithAndWithoutSeeking, FileThatFails, testing::Bool());

TEST(Part21Importer, AFileThatCanSeekIsReadWholeWhereItFailsOnce) {
  const std::string text = LongText(0);
  bool hasFailed = false;
  const auto plan = [&hasFailed](std::size_t position, std::size_t) {
    if (position < 100000 || hasFailed) return 50000;
    hasFailed = true;
    return -EIO;
  };
  FailingFile file(text, plan, true);
  TestProvider provider;
  CapturedLog log;
  Part21Importer().ImportFromStream(file.Stream(), &provider, 0);
  EXPECT_TRUE(hasFailed);
  EXPECT_EQ(provider.GetMaxEntityNumber() == 2999, log.lines.empty()) << testing::PrintToString(log.lines);
}

TEST(Part21Importer, AFolderIsAnError) {
  TestProvider provider;
  CapturedLog log;
  Part21Importer().ImportFromFile(testing::TempDir(), &provider, 0);
  EXPECT_THAT(log.lines, ElementsAre("-- line 1 col 1: the input cannot be read any further: Is a directory"));
}

TEST(Part21Importer, ALongStreamThatBeginsWithTheByteOrderMarkIsReadAsUtf8) {
  std::string text = std::string(reading::kByteOrderMark) + LongText(0);
  text.replace(text.rfind("apostrophes"), 11, "\xC3\xA9");
  std::istringstream in(text);
  TestProvider provider;
  CapturedLog log;
  Part21Importer().ImportFromStream(&in, &provider, 0);
  EXPECT_EQ(provider.GetEntity(2999)->ToString(),
            "#2999 = NODE('a text with ''\\X\\E9''', #1, (#22, L('x'), -0.0125), $);");
}

TEST(Part21Importer, ImportFromFileAloneMakesAFile) {
  TemporaryFile file(
      "ISO-10303-21;HEADER;FILE_SCHEMA(('AUTOMOTIVE_DESIGN'));ENDSEC;DATA;#1=EMPTY();ENDSEC;END-ISO-10303-"
      "21;");
  CapturedLog log;
  const std::unique_ptr<ExpFile> made(Part21Importer().ImportFromFile(file.Path()));
  ASSERT_NE(made, nullptr);
  EXPECT_NE(made->GetEntity(1), nullptr);
  EXPECT_EQ(made->GetSchema(), STEP_AP214);
}

TEST(Part21Importer, ImportFromFileAloneMakesAnEmptyFileWhereThereIsNone) {
  CapturedLog log;
  const std::unique_ptr<ExpFile> made(Part21Importer().ImportFromFile("/no/such/part.stp"));
  ASSERT_NE(made, nullptr);
  EXPECT_EQ(made->GetMaxEntityNumber(), 0);
  EXPECT_THAT(log.lines, ElementsAre("Error while opening file /no/such/part.stp"));
}

TEST(Part21Importer, EveryWayReadsTheSame) {
  std::string text =
      "ISO-10303-21;\nHEADER;\nFILE_SCHEMA(('TEST'));\nENDSEC;\nDATA;\n#1=NODE('\xC3\xA9',#2,(1,2.5),L('x'));"
      "\n";
  for (int i = 2; i < 6000; ++i) text += "#" + std::to_string(i) + "=NODE('n',#1,(#1),$);/* c */\r\n";
  text += "ENDSEC;\nEND-ISO-10303-21;\n";
  std::vector<std::string> populations;
  TemporaryFile file(text);
  {
    TestProvider provider;
    Part21Importer().ImportFromFile(file.Path(), &provider, 0);
    populations.push_back(Population(provider));
  }
  {
    TestProvider provider;
    std::istringstream in(text);
    Part21Importer().ImportFromStream(&in, &provider, 0);
    populations.push_back(Population(provider));
  }
  {
    TestProvider provider;
    PipeStream pipe(text);
    Part21Importer().ImportFromStream(pipe.Stream(), &provider, 0);
    populations.push_back(Population(provider));
  }
  EXPECT_GT(populations[0].size(), 100000u);
  EXPECT_EQ(populations[0], populations[1]);
  EXPECT_EQ(populations[0], populations[2]);
}

}  // namespace
