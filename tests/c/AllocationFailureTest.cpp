// Reading, editing and writing where memory runs out at each of its allocations in turn: nothing leaks, nothing ends the
// process, and the next reading works.
#include <gtest/gtest.h>

#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <list>
#include <memory>
#include <new>
#include <set>
#include <sstream>
#include <string>

#include "ExpFile.h"
#include "ExpUtilities.h"
#include "TestEntities.h"

namespace {

// The allocations of this process, which is single-threaded.
long live = 0;        // those that have not been freed
long until = -1;      // how many succeed before one fails; none fails while this is negative
bool fails = false;   // whether one has failed
bool forGood = false; // whether all those behind the first failing one fail, too

void* Allocate(std::size_t size) {
  if (until == 0) {
    fails = true;
    if (!forGood) until = -1;
    return nullptr;
  }
  if (until > 0) --until;
  void* memory = std::malloc(size == 0 ? 1 : size);
  if (memory != nullptr) ++live;
  return memory;
}

void Free(void* memory) {
  if (memory != nullptr) --live;
  std::free(memory);
}

}  // namespace

void* operator new(std::size_t size) {
  if (void* memory = Allocate(size)) return memory;
  throw std::bad_alloc();
}
void* operator new[](std::size_t size) { return operator new(size); }
void* operator new(std::size_t size, const std::nothrow_t&) noexcept { return Allocate(size); }
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept { return Allocate(size); }
void operator delete(void* memory) noexcept { Free(memory); }
void operator delete[](void* memory) noexcept { Free(memory); }
void operator delete(void* memory, std::size_t) noexcept { Free(memory); }
void operator delete[](void* memory, std::size_t) noexcept { Free(memory); }
void operator delete(void* memory, const std::nothrow_t&) noexcept { Free(memory); }
void operator delete[](void* memory, const std::nothrow_t&) noexcept { Free(memory); }

namespace {

using namespace VELMAR;

// Every kind of value, nested lists, complex instances, escapes, forward references, texts of more than a few bytes.
const char* const kText =
    "ISO-10303-21;\nHEADER;\nFILE_DESCRIPTION(('a description that is long enough'),'2;1');\n"
    "FILE_NAME('a name that is long enough','2026-01-01T00:00:00',('an author'),('an organization of some length'),"
    "'p','s','z');\nFILE_SCHEMA(('AUTOMOTIVE_DESIGN'));\nENDSEC;\nDATA;\n"
    "#1=ALL_KINDS(1.5,7,'a text of more than fifteen \\X2\\00E9\\X0\\ characters',#3,(1,(2.5,'three'),#4,L(#5)),.RED.,"
    ".T.,.F.,LENGTH_MEASURE(2.5));\n"
    "#2=ALL_KINDS($,*,$,$,$,$,$,*,$);\n"
    "#3=NODE('one',#1,(#1,#2),A_RATHER_LONG_TYPE_NAME(ANOTHER_ONE((1,2,'a text of more than fifteen'))));\n"
    "#4=(BOTTOM('bottom')LEFT(.U.)RIGHT(R('a text of more than fifteen'))TOP(1,((1,2),(3))));\n"
    "#5=POINT('',(0.,1.,2.));\n"
    "ENDSEC;\nEND-ISO-10303-21;\n";

// What an application does, and what it has written; empty where the memory did not suffice.
std::string ReadEditAndWrite() {
  try {
    ExpFile file;
    std::istringstream in(kText);
    file.Read(in);
    std::istringstream again(kText);
    file.Append(again);
    if (ExpEntity* made = file.CreateAndAddEntity("POINT")) {
      made->GetMember(0)->SetExpString("made");
      auto value = std::make_unique<ExpReal>(1.5);
      made->GetMember(1)->AddValue(value.get());
      value.release();
    }
    if (ExpEntity* entity = file.GetEntity(3)) {
      entity->GetMember(3)->SetExpString("another text of more than fifteen");
      std::ostringstream dump;
      file.DumpEntity(entity, dump);
      MarkUnsetValues(*entity);
    }
    std::list<ExpEntity*> points;
    file.GetEntities(points, "POINT", true);
    std::ostringstream out;
    file.Write(out);
    return out.str();
  } catch (const std::bad_alloc&) {
    return "";
  } catch (const std::string&) {  // a value that was given up is not there to be written
    return "";
  }
}

class AllocationFailure : public testing::TestWithParam<bool> {};

TEST_P(AllocationFailure, AtEveryStepLeaksNothingAndTheNextReadingWorks) {
  const std::string expected = ReadEditAndWrite();
  ASSERT_NE(expected.find("#5 = POINT('', (0., 1., 2.));"), std::string::npos);
  ASSERT_EQ(ReadEditAndWrite(), expected);  // with all that is made once

  int failures = 0;
  for (long steps = 0;; ++steps) {
    const long before = live;
    const std::size_t entities = ExpEntity::instanceCount;
    fails = false;
    forGood = GetParam();
    until = steps;
    std::string written = ReadEditAndWrite();
    until = -1;
    if (!fails) {
      EXPECT_EQ(written, expected);
      break;
    }
    ++failures;
    std::string().swap(written);
    ASSERT_EQ(live, before) << "after " << steps << " allocations";
    ASSERT_EQ(ExpEntity::instanceCount, entities) << "after " << steps << " allocations";
    ASSERT_EQ(ReadEditAndWrite(), expected) << "after " << steps << " allocations";
  }
  EXPECT_GT(failures, 500);
}

// The contents of a file, and with it that of every file beside it.
std::string ContentsOf(const std::filesystem::path& folder) {
  std::ostringstream contents;
  for (const auto& entry : std::filesystem::directory_iterator(folder)) {
    contents << entry.path().filename().string() << ": " << std::ifstream(entry.path()).rdbuf();
  }
  return contents.str();
}

TEST_P(AllocationFailure, WhileAFileIsWrittenLeavesTheOldOneOrTheNewOne) {
  const std::filesystem::path folder =
      std::filesystem::path(testing::TempDir()) / ("allocation" + std::to_string(getpid()));
  std::filesystem::create_directory(folder);
  const std::string path = folder / "part.stp";
  ExpFile file;
  std::istringstream in(kText);
  file.Read(in);
  file.Write(path);
  const std::string complete = ContentsOf(folder);
  ASSERT_NE(complete.find("END-ISO-10303-21;"), std::string::npos);
  std::ofstream(path) << "old";
  const std::string old = ContentsOf(folder);

  bool written = false;
  for (long steps = 0; !written; ++steps) {
    const long before = live;
    fails = false;
    forGood = GetParam();
    until = steps;
    try {
      file.Write(path);
    } catch (const std::bad_alloc&) {  // even the message is too much
    }
    until = -1;
    ASSERT_EQ(live, before) << "after " << steps << " allocations";
    const std::string contents = ContentsOf(folder);
    written = contents == complete;
    ASSERT_TRUE(written || contents == old) << "after " << steps << " allocations: " << contents;
    ASSERT_TRUE(written || fails);
  }
  std::filesystem::remove_all(folder);
}

INSTANTIATE_TEST_SUITE_P(, AllocationFailure, testing::Bool(),
                         [](const auto& info) { return info.param ? "OfAllThatFollow" : "OfOne"; });

}  // namespace
