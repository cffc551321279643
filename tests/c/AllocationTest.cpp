// Memory. Where it runs out, at any of the allocations of reading, editing and writing, nothing leaks, nothing ends the
// process, and the next reading works. What values and entities leave is used again, and given back when that is asked for.
#include <gtest/gtest.h>

#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <list>
#include <memory>
#include <new>
#include <set>
#include <sstream>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "ExpFile.h"
#include "ExpUtilities.h"
#include "TestEntities.h"

namespace {

// The allocations of this process, by one thread at a time.
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

// What the default drops, read and written with everything kept.
std::string KeepEverything() {
  static const std::string kText =
      "ISO-10303-21;\nHEADER;\nFILE_NAME('','t',(''),(''),'','','');\nFILE_SCHEMA(('AUTOMOTIVE_DESIGN'));\n"
      "A_HEADER_RECORD_OF_ANOTHER_KIND('a text of more than fifteen');\nENDSEC;\nDATA;\n"
      "#1=A_TYPE_THAT_NOBODY_KNOWS(1,'a text of more than fifteen',(1,$),\"0123456789ABCDEF01234\",L(()));\n"
      "#2=POINT('',($,*,.AN_ITEM_WITH_A_LONG_NAME.,123456789012345678901,L((M($)))),'superfluous');\n"
      "#3=LIBRARY_KINDS('no real number at all',\"0123456789ABCDEF01234\",.AN_ITEM_THAT_IT_LACKS.);\n"
      "#4=(A(1)!UNKNOWN_RECORD_OF_AN_INSTANCE(.A.));\n"
      "ENDSEC;\nEND-ISO-10303-21;\n";
  try {
    ExpFile file;
    file.KeepEverything(true);
    std::istringstream in(kText);
    file.Read(in);
    std::ostringstream out;
    file.Write(out);
    return out.str();
  } catch (const std::bad_alloc&) {
    return "";
  }
}

class AllocationFailure : public testing::TestWithParam<bool> {};

// Lets each of the allocations fail that `action` makes, and with `forGoodToo` all behind it. There are more than `atLeast`,
// and the action gives a text with `part`.
void FailAtEveryStep(const std::function<std::string()>& action, const std::string& part, int atLeast,
                     bool forGoodToo) {
  const std::string expected = action();
  ASSERT_NE(expected.find(part), std::string::npos) << expected;
  ASSERT_EQ(action(), expected);  // with all that is made once

  int failures = 0;
  for (long steps = 0;; ++steps) {
    ReleaseUnusedMemory();
    const long before = live;
    const std::size_t entities = ExpEntity::instanceCount;
    fails = false;
    forGood = forGoodToo;
    until = steps;
    std::string written = action();
    until = -1;
    if (!fails) {
      EXPECT_EQ(written, expected);
      break;
    }
    ++failures;
    std::string().swap(written);
    ReleaseUnusedMemory();
    ASSERT_EQ(live, before) << "after " << steps << " allocations";
    ASSERT_EQ(ExpEntity::instanceCount, entities) << "after " << steps << " allocations";
    ASSERT_EQ(action(), expected) << "after " << steps << " allocations";
  }
  EXPECT_GT(failures, atLeast);
}

TEST_P(AllocationFailure, AtEveryStepLeaksNothingAndTheNextReadingWorks) {
  FailAtEveryStep(ReadEditAndWrite, "#5 = POINT('', (0., 1., 2.));", 500, GetParam());
}

TEST_P(AllocationFailure, WhereEverythingIsKeptLeaksNothing) {
  FailAtEveryStep(KeepEverything,
                  "#3 = LIBRARY_KINDS('no real number at all', \"0123456789ABCDEF01234\", "
                  ".AN_ITEM_THAT_IT_LACKS.);\n",
                  200, GetParam());
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
    ReleaseUnusedMemory();
    const long before = live;
    fails = false;
    forGood = GetParam();
    until = steps;
    try {
      file.Write(path);
    } catch (const std::bad_alloc&) {  // even the message is too much
    }
    until = -1;
    ReleaseUnusedMemory();
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

// ------------------------------------------------------------------------------------------- memory of small objects

#if defined(__SANITIZE_ADDRESS__)
constexpr bool kHasPools = false;
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
constexpr bool kHasPools = false;
#else
constexpr bool kHasPools = true;
#endif
#else
constexpr bool kHasPools = true;
#endif

template <class Value>
void ExpectRoomOfItsOwn(const std::vector<std::unique_ptr<Value>>& values) {
  std::set<std::uintptr_t> places;
  for (const auto& value : values) {
    const auto place = reinterpret_cast<std::uintptr_t>(value.get());
    EXPECT_EQ(place % alignof(Value), 0u);
    places.insert(place);
  }
  ASSERT_EQ(places.size(), values.size());
  std::uintptr_t end = 0;
  for (const std::uintptr_t place : places) {
    EXPECT_GE(place, end);
    end = place + sizeof(Value);
  }
}

template <class Value>
std::vector<std::unique_ptr<Value>> Make(int count) {
  std::vector<std::unique_ptr<Value>> values;
  for (int i = 0; i < count; ++i) values.emplace_back(new Value);
  return values;
}

// Needs more alignment than new gives.
struct alignas(64) OverAligned : ExpReal {
  double more[3] = {};
};
struct alignas(16) Aligned : ExpReal {
  double more[4] = {};
};
struct Large : ExpEntity {
  char more[100000] = {};
};

TEST(SmallObjects, EachHasRoomOfItsOwnAndItsAlignment) {
  ExpectRoomOfItsOwn(Make<ExpReal>(10000));
  ExpectRoomOfItsOwn(Make<ExpString>(10000));
  ExpectRoomOfItsOwn(Make<ExpEntity>(10000));
  ExpectRoomOfItsOwn(Make<TestData::AllKinds>(1000));
  ExpectRoomOfItsOwn(Make<Aligned>(1000));
  ExpectRoomOfItsOwn(Make<OverAligned>(1000));
  ExpectRoomOfItsOwn(Make<Large>(10));
}

TEST(SmallObjects, MayBeMadeInPlaceAndInArrays) {
  alignas(ExpReal) unsigned char place[sizeof(ExpReal)];
  auto* value = new (place) ExpReal(2.5);
  EXPECT_EQ(value->ToString(), "2.5");
  value->~ExpReal();
  const std::unique_ptr<ExpReal[]> values(new ExpReal[100]);
  EXPECT_EQ(values[99].ToString(), "0.");
  EXPECT_EQ(std::make_shared<ExpReal>(2.5)->ToString(), "2.5");
  const std::vector<ExpReal> copies(100, ExpReal(2.5));
  EXPECT_EQ(copies.size(), 100u);
}

TEST(SmallObjects, TakeFewerAllocationsThanThereAre) {
  if (!kHasPools) GTEST_SKIP() << "the address sanitizer watches each object by itself";
  ReleaseUnusedMemory();
  const long before = live;
  const auto values = Make<ExpReal>(100000);
  EXPECT_LT(live - before, 100);
}

TEST(SmallObjects, AreMadeInTheMemoryOfThoseThatAreGone) {
  Make<ExpReal>(100000);
  const long before = live;
  for (int i = 0; i < 10; ++i) Make<ExpReal>(100000);
  EXPECT_EQ(live, before);
}

TEST(SmallObjects, LieOneBehindTheOtherAgainOnceAPopulationIsGone) {
  if (!kHasPools) GTEST_SKIP() << "the address sanitizer watches each object by itself";
  {
    ExpFile file;
    std::istringstream in(kText);
    file.Read(in);
    auto values = Make<ExpReal>(10000);
    for (std::size_t step = 7; step > 0; --step) {  // in an order of no use
      for (std::size_t i = 0; i < values.size(); i += step) values[i].reset();
    }
  }
  const auto values = Make<ExpReal>(10000);
  int backward = 0;
  for (std::size_t i = 1; i < values.size(); ++i) {
    backward += std::less<ExpReal*>()(values[i].get(), values[i - 1].get()) ? 1 : 0;
  }
  EXPECT_LT(backward, 50);  // from chunk to chunk at most
}

TEST(SmallObjects, LeaveNothingBehindWhenTheirMemoryIsReleased) {
  ReleaseUnusedMemory();
  const long before = live;
  Make<ExpReal>(100000);
  Make<TestData::AllKinds>(1000);
  ReleaseUnusedMemory();
  EXPECT_EQ(live, before);
  EXPECT_EQ(Make<ExpReal>(100).back()->ToString(), "0.");
}

TEST(SmallObjects, StayWhereMemoryIsReleasedAroundThem) {
  auto values = Make<ExpReal>(10000);
  for (std::size_t i = 0; i < values.size(); i += 2) values[i].reset();
  ReleaseUnusedMemory();
  for (std::size_t i = 1; i < values.size(); i += 2) values[i]->SetExpReal(static_cast<double>(i));
  auto others = Make<ExpReal>(10000);
  for (const auto& other : others) other->SetExpReal(-1.0);
  for (std::size_t i = 1; i < values.size(); i += 2) ASSERT_EQ(values[i]->GetExpReal(), static_cast<double>(i));
}

TEST(SmallObjects, MayBeFreedByAnotherThreadWhichLeavesNothingBehind) {
  ReleaseUnusedMemory();
  const long before = live;
  for (int round = 0; round < 20; ++round) {
    auto values = Make<ExpReal>(1000);
    std::thread other([&values] {
      values.resize(500);                       // frees what this thread has made
      for (auto& value : Make<ExpReal>(700)) values.push_back(std::move(value));
    });
    other.join();
    ExpectRoomOfItsOwn(values);
  }
  ReleaseUnusedMemory();
  EXPECT_EQ(live, before);
}

}  // namespace
