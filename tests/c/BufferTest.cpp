// The input buffers: bytes by position from memory, from files and from pipes, and UTF-8.
#include <fcntl.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <memory>
#include <new>
#include <string>
#include <vector>

#include "ReadingSupport.h"
#include "Scanner.h"

namespace {

using reading::Ended;
using reading::PipeStream;
using reading::RunInChild;
using reading::TemporaryFile;
using VELMAR::Buffer;
using VELMAR::UTF8Buffer;

constexpr int kEnd = 65536;
constexpr int kBlock = 65536;

std::unique_ptr<Buffer> MemoryBuffer(const std::string& bytes) {
  return std::make_unique<Buffer>(reinterpret_cast<const unsigned char*>(bytes.data()),
                                  static_cast<int>(bytes.size()));
}

// Bytes whose value tells their position.
std::string Pattern(std::size_t size) {
  std::string bytes(size, '\0');
  for (std::size_t i = 0; i < size; ++i) bytes[i] = static_cast<char>((i * 31 + i / 251) & 0xFF);
  return bytes;
}

int ByteAt(const std::string& bytes, std::size_t i) { return static_cast<unsigned char>(bytes[i]); }

bool IsOpen(int fd) { return fcntl(fd, F_GETFD) != -1; }

void ExpectReads(Buffer& buffer, const std::string& bytes) {
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    ASSERT_EQ(buffer.GetPos(), static_cast<int>(i));
    ASSERT_EQ(buffer.Read(), ByteAt(bytes, i)) << i;
  }
  EXPECT_EQ(buffer.Read(), kEnd);
  EXPECT_EQ(buffer.GetPos(), static_cast<int>(bytes.size()));
  EXPECT_EQ(buffer.Read(), kEnd);
  EXPECT_EQ(buffer.GetPos(), static_cast<int>(bytes.size()));
}

std::wstring GetString(Buffer& buffer, int beg, int end) {
  wchar_t* text = buffer.GetString(beg, end);
  std::wstring copy(text);
  coco_string_delete(text);
  return copy;
}

std::string OutOfBounds(int position) {
  return "--- buffer out of bounds access, position: " + std::to_string(position) + "\n";
}

TEST(Buffer, TheEndOfInputIs65536) { EXPECT_EQ(static_cast<int>(Buffer::EoF), kEnd); }

TEST(Buffer, MemoryIsReadByteByByte) {
  const std::string bytes = Pattern(1000);
  auto buffer = MemoryBuffer(bytes);
  ExpectReads(*buffer, bytes);
}

TEST(Buffer, MemoryIsCopied) {
  std::string bytes = "abc";
  auto buffer = MemoryBuffer(bytes);
  bytes[0] = 'x';
  EXPECT_EQ(buffer->Read(), 'a');
}

TEST(Buffer, AllByteValuesAreDeliveredUnsigned) {
  std::string bytes;
  for (int i = 0; i < 256; ++i) bytes += static_cast<char>(i);
  auto buffer = MemoryBuffer(bytes);
  for (int i = 0; i < 256; ++i) ASSERT_EQ(buffer->Read(), i);
}

TEST(Buffer, AnEmptyBlockIsAtItsEndAtPosition0) {
  auto buffer = MemoryBuffer("");
  EXPECT_EQ(buffer->GetPos(), 0);
  EXPECT_EQ(buffer->Peek(), kEnd);
  EXPECT_EQ(buffer->Read(), kEnd);
  EXPECT_EQ(buffer->GetPos(), 0);
}

TEST(Buffer, AnEmptyFileIsAtItsEndAtPosition0) {
  TemporaryFile file;
  Buffer buffer(fopen(file.Path().c_str(), "rb"), false);
  EXPECT_EQ(buffer.GetPos(), 0);
  EXPECT_EQ(buffer.Peek(), kEnd);
  EXPECT_EQ(buffer.Read(), kEnd);
  EXPECT_EQ(buffer.GetPos(), 0);
}

TEST(Buffer, AnEmptyPipeIsAtItsEndAtPosition0) {
  PipeStream pipe("");
  Buffer buffer(pipe.Stream(), true);
  EXPECT_EQ(buffer.GetPos(), 0);
  EXPECT_EQ(buffer.Peek(), kEnd);
  EXPECT_EQ(buffer.Read(), kEnd);
  EXPECT_EQ(buffer.GetPos(), 0);
}

class BufferSizes : public testing::TestWithParam<int> {};

TEST_P(BufferSizes, AFileIsReadByteByByte) {
  const std::string bytes = Pattern(static_cast<std::size_t>(GetParam()));
  TemporaryFile file(bytes);
  Buffer buffer(fopen(file.Path().c_str(), "rb"), false);
  ExpectReads(buffer, bytes);
}

TEST_P(BufferSizes, APipeIsReadByteByByte) {
  const std::string bytes = Pattern(static_cast<std::size_t>(GetParam()));
  PipeStream pipe(bytes);
  Buffer buffer(pipe.Stream(), true);
  ExpectReads(buffer, bytes);
}

INSTANTIATE_TEST_SUITE_P(AroundEveryBlock, BufferSizes,
                         testing::Values(1, 2, 1023, 1024, 1025, 2047, 2048, 2049, 4096, 65535, 65536, 65537,
                                         131071, 131072, 131073, 200000),
                         [](const auto& info) { return std::to_string(info.param) + "Bytes"; });

TEST(Buffer, AFileOf65536BytesIsReadWholeAndItsStreamClosedAfterConstruction) {
  const std::string bytes = Pattern(kBlock);
  TemporaryFile file(bytes);
  FILE* stream = fopen(file.Path().c_str(), "rb");
  const int fd = fileno(stream);
  Buffer buffer(stream, false);
  EXPECT_FALSE(IsOpen(fd));
  ExpectReads(buffer, bytes);
}

TEST(Buffer, AFileOf65537BytesIsReadInTwoBlocksAndStaysOpen) {
  const std::string bytes = Pattern(kBlock + 1);
  TemporaryFile file(bytes);
  FILE* stream = fopen(file.Path().c_str(), "rb");
  const int fd = fileno(stream);
  {
    Buffer buffer(stream, false);
    EXPECT_TRUE(IsOpen(fd));
    ExpectReads(buffer, bytes);
    EXPECT_TRUE(IsOpen(fd));
  }
  EXPECT_FALSE(IsOpen(fd));
}

TEST(Buffer, AUsersStreamIsNeverClosed) {
  for (const int size : {10, kBlock, kBlock + 1}) {
    TemporaryFile file(Pattern(static_cast<std::size_t>(size)));
    FILE* stream = fopen(file.Path().c_str(), "rb");
    const int fd = fileno(stream);
    {
      Buffer buffer(stream, true);
      EXPECT_TRUE(IsOpen(fd));
      buffer.Close();
      EXPECT_TRUE(IsOpen(fd));
    }
    EXPECT_TRUE(IsOpen(fd)) << size;
    EXPECT_EQ(fclose(stream), 0);
  }
}

TEST(Buffer, AStreamInTheMiddleIsReadFromItsStart) {
  TemporaryFile file("abcdef");
  FILE* stream = fopen(file.Path().c_str(), "rb");
  ASSERT_EQ(fgetc(stream), 'a');
  ASSERT_EQ(fgetc(stream), 'b');
  {
    Buffer buffer(stream, true);
    ExpectReads(buffer, "abcdef");
  }
  fclose(stream);
}

TEST(Buffer, CloseClosesAStreamThatIsNotTheCallers) {
  TemporaryFile file(Pattern(kBlock + 1));
  FILE* stream = fopen(file.Path().c_str(), "rb");
  const int fd = fileno(stream);
  Buffer buffer(stream, false);
  ASSERT_TRUE(IsOpen(fd));
  buffer.Close();
  EXPECT_FALSE(IsOpen(fd));
  buffer.Close();
}

TEST(Buffer, AfterCloseAPositionOutsideTheBlockIsTheEndOfTheData) {
  TemporaryFile file(Pattern(kBlock + 1));
  Buffer buffer(fopen(file.Path().c_str(), "rb"), false);
  buffer.Close();
  buffer.SetPos(kBlock);
  EXPECT_EQ(buffer.GetPos(), kBlock + 1);
  EXPECT_EQ(buffer.Read(), kEnd);
  buffer.SetPos(0);
  EXPECT_EQ(buffer.Read(), ByteAt(Pattern(1), 0));
}

TEST(Buffer, PeekLeavesThePosition) {
  auto buffer = MemoryBuffer("ab");
  EXPECT_EQ(buffer->Peek(), 'a');
  EXPECT_EQ(buffer->Peek(), 'a');
  EXPECT_EQ(buffer->GetPos(), 0);
  EXPECT_EQ(buffer->Read(), 'a');
  EXPECT_EQ(buffer->Peek(), 'b');
  EXPECT_EQ(buffer->GetPos(), 1);
}

TEST(Buffer, PeekAtTheEndReturns65536AndLeavesThePosition) {
  auto buffer = MemoryBuffer("ab");
  buffer->SetPos(2);
  EXPECT_EQ(buffer->Peek(), kEnd);
  EXPECT_EQ(buffer->GetPos(), 2);
  EXPECT_EQ(buffer->Peek(), kEnd);
}

TEST(Buffer, PeekAcrossTheBlockBorder) {
  const std::string bytes = Pattern(kBlock + 10);
  TemporaryFile file(bytes);
  Buffer buffer(fopen(file.Path().c_str(), "rb"), false);
  buffer.SetPos(kBlock - 1);
  EXPECT_EQ(buffer.Read(), ByteAt(bytes, kBlock - 1));
  EXPECT_EQ(buffer.GetPos(), kBlock);
  EXPECT_EQ(buffer.Peek(), ByteAt(bytes, kBlock));
  EXPECT_EQ(buffer.GetPos(), kBlock);
  EXPECT_EQ(buffer.Read(), ByteAt(bytes, kBlock));
}

TEST(Buffer, SetPosMovesAnywhereInMemory) {
  const std::string bytes = Pattern(500);
  auto buffer = MemoryBuffer(bytes);
  for (const int position : {499, 0, 250, 1, 498}) {
    buffer->SetPos(position);
    EXPECT_EQ(buffer->GetPos(), position);
    EXPECT_EQ(buffer->Read(), ByteAt(bytes, static_cast<std::size_t>(position)));
  }
}

TEST(Buffer, SetPosMovesAnywhereInALongFile) {
  const std::string bytes = Pattern(3 * kBlock + 5);
  TemporaryFile file(bytes);
  Buffer buffer(fopen(file.Path().c_str(), "rb"), false);
  unsigned int random = 1;
  for (int i = 0; i < 300; ++i) {
    random = random * 1103515245u + 12345u;
    const int position = static_cast<int>((random >> 8) % bytes.size());
    buffer.SetPos(position);
    ASSERT_EQ(buffer.GetPos(), position);
    ASSERT_EQ(buffer.Read(), ByteAt(bytes, static_cast<std::size_t>(position)));
  }
  buffer.SetPos(static_cast<int>(bytes.size()));
  EXPECT_EQ(buffer.Read(), kEnd);
}

TEST(Buffer, SetPosBeforeAndBehindEveryBlockBorderOfAFile) {
  const std::string bytes = Pattern(2 * kBlock + 3);
  TemporaryFile file(bytes);
  Buffer buffer(fopen(file.Path().c_str(), "rb"), false);
  for (const int position : {kBlock, kBlock - 1, 2 * kBlock, 2 * kBlock - 1, kBlock + 1, 0, 2 * kBlock + 2}) {
    buffer.SetPos(position);
    ASSERT_EQ(buffer.Read(), ByteAt(bytes, static_cast<std::size_t>(position))) << position;
  }
}

TEST(Buffer, SetPosReadsAPipeAheadAndKeepsItWhole) {
  const std::string bytes = Pattern(5000);
  PipeStream pipe(bytes);
  Buffer buffer(pipe.Stream(), true);
  buffer.SetPos(4321);
  EXPECT_EQ(buffer.GetPos(), 4321);
  EXPECT_EQ(buffer.Read(), ByteAt(bytes, 4321));
  buffer.SetPos(0);
  EXPECT_EQ(buffer.Read(), ByteAt(bytes, 0));
  buffer.SetPos(4999);
  EXPECT_EQ(buffer.Read(), ByteAt(bytes, 4999));
  EXPECT_EQ(buffer.Read(), kEnd);
}

TEST(Buffer, SetPosToTheLengthIsTheEnd) {
  auto buffer = MemoryBuffer("abc");
  buffer->SetPos(3);
  EXPECT_EQ(buffer->GetPos(), 3);
  EXPECT_EQ(buffer->Read(), kEnd);
}

TEST(BufferHardStop, SetPosToANegativePositionEndsTheProcess) {
  const Ended ended = RunInChild([] { MemoryBuffer("abc")->SetPos(-1); });
  EXPECT_EQ(ended.exitStatus, 1);
  EXPECT_EQ(ended.output, OutOfBounds(-1));
}

TEST(BufferHardStop, SetPosBehindTheLengthEndsTheProcess) {
  const Ended ended = RunInChild([] { MemoryBuffer("abc")->SetPos(4); });
  EXPECT_EQ(ended.exitStatus, 1);
  EXPECT_EQ(ended.output, OutOfBounds(4));
}

TEST(BufferHardStop, SetPosBehindTheLengthOfAFileEndsTheProcess) {
  TemporaryFile file(Pattern(kBlock + 1));
  const Ended ended = RunInChild([&file] {
    Buffer buffer(fopen(file.Path().c_str(), "rb"), false);
    buffer.SetPos(kBlock + 2);
  });
  EXPECT_EQ(ended.exitStatus, 1);
  EXPECT_EQ(ended.output, OutOfBounds(kBlock + 2));
}

TEST(BufferHardStop, SetPosBehindTheLengthOfAPipeEndsTheProcess) {
  const Ended ended = RunInChild([] {
    PipeStream pipe("abc");
    Buffer buffer(pipe.Stream(), true);
    buffer.SetPos(3);
    if (buffer.Read() == kEnd) buffer.SetPos(100);
  });
  EXPECT_EQ(ended.exitStatus, 1);
  EXPECT_EQ(ended.output, OutOfBounds(100));
}

TEST(Buffer, GetStringReturnsTheCharactersBetweenAndKeepsThePosition) {
  auto buffer = MemoryBuffer(
      "abc\xE9"
      "def");
  buffer->SetPos(5);
  EXPECT_EQ(GetString(*buffer, 1, 5), (std::wstring{L'b', L'c', 0xE9, L'd'}));
  EXPECT_EQ(buffer->GetPos(), 5);
  EXPECT_EQ(GetString(*buffer, 0, 7).size(), 7u);
  EXPECT_EQ(GetString(*buffer, 7, 7), L"");
  EXPECT_EQ(buffer->GetPos(), 5);
}

TEST(Buffer, GetStringAcrossTheBlockBorder) {
  std::string bytes(kBlock + 100, 'x');
  bytes.replace(kBlock - 3, 6, "abcdef");
  TemporaryFile file(bytes);
  Buffer buffer(fopen(file.Path().c_str(), "rb"), false);
  buffer.SetPos(10);
  EXPECT_EQ(GetString(buffer, kBlock - 3, kBlock + 3), L"abcdef");
  EXPECT_EQ(buffer.GetPos(), 10);
}

TEST(Buffer, GetStringBehindTheEndGivesWhatThereIs) {
  auto buffer = MemoryBuffer("abc");
  EXPECT_EQ(GetString(*buffer, 1, 10), L"bc");
  EXPECT_EQ(buffer->GetPos(), 0);
}

TEST(Buffer, GetStringOfNegativeLengthThrows) {
  auto buffer = MemoryBuffer("abcdef");
  buffer->SetPos(2);
  EXPECT_THROW(buffer->GetString(4, 3), std::bad_array_new_length);
  EXPECT_THROW(buffer->GetString(6, 0), std::bad_array_new_length);
  EXPECT_EQ(buffer->GetPos(), 2);
}

TEST(Buffer, TakingOverKeepsPositionAndDataAndEmptiesTheOther) {
  const std::string bytes = Pattern(3000);
  auto first = std::make_unique<Buffer>(reinterpret_cast<const unsigned char*>(bytes.data()), 3000);
  first->SetPos(1234);
  Buffer second(first.get());
  first.reset();
  EXPECT_EQ(second.GetPos(), 1234);
  EXPECT_EQ(second.Read(), ByteAt(bytes, 1234));
  second.SetPos(0);
  EXPECT_EQ(second.Read(), ByteAt(bytes, 0));
}

TEST(Buffer, TakingOverAFileTakesTheStreamToo) {
  const std::string bytes = Pattern(kBlock + 10);
  TemporaryFile file(bytes);
  FILE* stream = fopen(file.Path().c_str(), "rb");
  const int fd = fileno(stream);
  {
    auto first = std::make_unique<Buffer>(stream, false);
    Buffer second(first.get());
    first.reset();
    EXPECT_TRUE(IsOpen(fd));
    ExpectReads(second, bytes);
  }
  EXPECT_FALSE(IsOpen(fd));
}

TEST(Buffer, TakingOverAPipeReadsOn) {
  const std::string bytes = Pattern(70000);
  PipeStream pipe(bytes);
  auto first = std::make_unique<Buffer>(pipe.Stream(), true);
  first->Read();
  Buffer second(first.get());
  first.reset();
  for (std::size_t i = 1; i < bytes.size(); ++i) ASSERT_EQ(second.Read(), ByteAt(bytes, i));
  EXPECT_EQ(second.Read(), kEnd);
}

// ------------------------------------------------------------------------------------------- UTF-8

std::vector<int> ReadUtf8(const std::string& bytes) {
  auto inner = MemoryBuffer(bytes);
  UTF8Buffer buffer(inner.get());
  std::vector<int> characters;
  while (true) {
    const int character = buffer.Read();
    if (character == kEnd && buffer.GetPos() == static_cast<int>(bytes.size())) break;
    characters.push_back(character);
    if (characters.size() > bytes.size()) break;
  }
  return characters;
}

TEST(UTF8Buffer, BytesBelow128AreThemselves) {
  std::string bytes;
  std::vector<int> expected;
  for (int i = 0; i < 128; ++i) {
    bytes += static_cast<char>(i);
    expected.push_back(i);
  }
  EXPECT_EQ(ReadUtf8(bytes), expected);
}

TEST(UTF8Buffer, TwoBytesGiveElevenBits) {
  EXPECT_EQ(ReadUtf8("\xC3\xA9"), (std::vector<int>{233}));
  EXPECT_EQ(ReadUtf8("\xC2\x80\xDF\xBF"), (std::vector<int>{0x80, 0x7FF}));
}

TEST(UTF8Buffer, ThreeBytesGiveSixteenBits) {
  EXPECT_EQ(ReadUtf8("\xE0\xA0\x80\xE4\xB8\x80\xEF\xBF\xBF"), (std::vector<int>{0x800, 0x4E00, 0xFFFF}));
}

TEST(UTF8Buffer, FourBytesGiveTwentyOneBits) {
  EXPECT_EQ(ReadUtf8("\xF0\x9F\x98\x80x\xF4\x8F\xBF\xBFx"), (std::vector<int>{0x1F600, 'x', 0x10FFFF, 'x'}));
}

TEST(UTF8Buffer, F0908080IsExactlyTheEndOfInputValue) {
  auto inner = MemoryBuffer("\xF0\x90\x80\x80x");
  UTF8Buffer buffer(inner.get());
  EXPECT_EQ(buffer.Read(), kEnd);
  EXPECT_EQ(buffer.GetPos(), 4);
  EXPECT_EQ(buffer.Read(), 'x');
}

TEST(UTF8Buffer, StrayContinuationBytesAreSkipped) {
  EXPECT_EQ(ReadUtf8("\x80"
                     "a"),
            (std::vector<int>{'a'}));
  EXPECT_EQ(ReadUtf8("\xBF\x80\x91"
                     "a\x80"
                     "b"),
            (std::vector<int>{'a', 'b'}));
  EXPECT_EQ(ReadUtf8("\x80\xC3\xA9"), (std::vector<int>{233}));
}

TEST(UTF8Buffer, AStrayContinuationByteAtTheEndIsTheEnd) {
  auto inner = MemoryBuffer("a\x80");
  UTF8Buffer buffer(inner.get());
  EXPECT_EQ(buffer.Read(), 'a');
  EXPECT_EQ(buffer.Read(), kEnd);
  EXPECT_EQ(buffer.Read(), kEnd);
}

TEST(UTF8Buffer, WhateverFollowsALeadByteContributesItsLowSixBits) {
  EXPECT_EQ(ReadUtf8("\xC3"
                     "A"
                     "b"),
            (std::vector<int>{3 * 64 + ('A' & 63), 'b'}));
  EXPECT_EQ(ReadUtf8("\xC3\xC3"
                     "b"),
            (std::vector<int>{3 * 64 + 3, 'b'}));
  EXPECT_EQ(ReadUtf8("\xE1"
                     "AB"
                     "c"),
            (std::vector<int>{(1 * 64 + ('A' & 63)) * 64 + ('B' & 63), 'c'}));
}

TEST(UTF8Buffer, TheEndOfInputContributesZeroBits) {
  EXPECT_EQ(UTF8Buffer(MemoryBuffer("\xC3").get()).Read(), 3 * 64);
  EXPECT_EQ(UTF8Buffer(MemoryBuffer("\xE1\x81").get()).Read(), (1 * 64 + 1) * 64);
  EXPECT_EQ(UTF8Buffer(MemoryBuffer("\xF0\x81").get()).Read(), 1 * 64 * 64);
}

TEST(UTF8Buffer, F8ToFFCountAsFourByteLeads) {
  EXPECT_EQ(ReadUtf8("\xFF\x81\x82\x83x"), (std::vector<int>{((7 * 64 + 1) * 64 + 2) * 64 + 3, 'x'}));
  EXPECT_EQ(ReadUtf8("\xF8\x81\x82\x83x"), (std::vector<int>{((0 * 64 + 1) * 64 + 2) * 64 + 3, 'x'}));
}

TEST(UTF8Buffer, PeekDecodesAndLeavesThePosition) {
  auto inner = MemoryBuffer("\xE4\xB8\x80x");
  UTF8Buffer buffer(inner.get());
  EXPECT_EQ(buffer.Peek(), 0x4E00);
  EXPECT_EQ(buffer.GetPos(), 0);
  EXPECT_EQ(buffer.Read(), 0x4E00);
  EXPECT_EQ(buffer.GetPos(), 3);
}

TEST(UTF8Buffer, GetStringDecodesBetweenBytePositions) {
  auto inner = MemoryBuffer("a\xC3\xA9\xE4\xB8\x80z");
  UTF8Buffer buffer(inner.get());
  EXPECT_EQ(GetString(buffer, 0, 7), L"a\u00E9\u4E00z");
  EXPECT_EQ(GetString(buffer, 1, 6), L"\u00E9\u4E00");
  EXPECT_EQ(buffer.GetPos(), 0);
}

TEST(UTF8Buffer, TakesOverPositionOfTheBufferItReplaces) {
  auto inner = MemoryBuffer("\xEF\xBB\xBF\xC3\xA9");
  inner->SetPos(3);
  UTF8Buffer buffer(inner.get());
  inner.reset();
  EXPECT_EQ(buffer.GetPos(), 3);
  EXPECT_EQ(buffer.Read(), 233);
}

TEST(UTF8Buffer, SequencesSplitAtEveryByteOfTheBlockBorder) {
  const std::string sequence = "\xF0\x9F\x98\x80\xE4\xB8\x80\xC3\xA9";
  for (std::size_t split = 0; split <= sequence.size(); ++split) {
    std::string bytes(kBlock - split, 'x');
    bytes += sequence + "tail";
    TemporaryFile file(bytes);
    auto inner = std::make_unique<Buffer>(fopen(file.Path().c_str(), "rb"), false);
    UTF8Buffer buffer(inner.get());
    for (std::size_t i = 0; i < kBlock - split; ++i) ASSERT_EQ(buffer.Read(), 'x');
    EXPECT_EQ(buffer.Read(), 0x1F600) << split;
    EXPECT_EQ(buffer.Read(), 0x4E00) << split;
    EXPECT_EQ(buffer.Read(), 0xE9) << split;
    EXPECT_EQ(buffer.Read(), 't') << split;
  }
}

}  // namespace
