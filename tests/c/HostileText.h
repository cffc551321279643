/// @file HostileText.h
/// Long and senseless texts, and what reading makes of them.
#pragma once

#include <gtest/gtest.h>

#include <new>
#include <sstream>
#include <string>

#include "CapturedLog.h"
#include "Part21Importer.h"
#include "ReadingSupport.h"
#include "TestEntities.h"

namespace hostile {

using VELMAR::Part21Importer;
using VELMAR::TestData::CapturedLog;
using VELMAR::TestData::TestProvider;

constexpr int kMillion = 1000000;

inline const char kHead[] = "ISO-10303-21;\nHEADER;\nFILE_SCHEMA(('TEST'));\nENDSEC;\nDATA;\n";
inline const char kTail[] = "\nENDSEC;\nEND-ISO-10303-21;\n";

inline std::string FileOf(const std::string& instances) { return kHead + instances + kTail; }

inline std::string Times(int count, const std::string& text) {
  std::string out;
  out.reserve(text.size() * static_cast<std::size_t>(count));
  for (int i = 0; i < count; ++i) out += text;
  return out;
}

/// What reading gave. The population is the text up to an instance that cannot be printed.
struct Outcome {
  std::string log;
  std::string population;
  bool headerMissing = false;
};

inline bool operator==(const Outcome& a, const Outcome& b) {
  return a.log == b.log && a.population == b.population && a.headerMissing == b.headerMissing;
}

template <class Import>
Outcome OutcomeOf(Import import) {
  Outcome outcome;
  TestProvider provider;
  CapturedLog log;
  Part21Importer importer;
  try {
    import(importer, provider);
  } catch (const std::bad_array_new_length&) {
    outcome.headerMissing = true;
  }
  std::ostringstream out;
  try {
    provider.Write(out);
  } catch (const std::string& text) {
    EXPECT_NE(text.find("expSelectedValue should not be NULL"), std::string::npos) << text;
  }
  outcome.log = log.text;
  outcome.population = out.str();
  return outcome;
}

inline Outcome ReadMemory(const std::string& bytes) {
  return OutcomeOf([&bytes](Part21Importer& importer, TestProvider& provider) {
    std::istringstream in(bytes);
    importer.ImportFromStream(&in, &provider, 0);
  });
}

inline Outcome ReadPipe(const std::string& bytes) {
  return OutcomeOf([&bytes](Part21Importer& importer, TestProvider& provider) {
    reading::PipeStream pipe(bytes);
    importer.ImportFromStream(pipe.Stream(), &provider, 0);
  });
}

/// Reads the instances; expects no word in the log.
struct Quiet {
  explicit Quiet(const std::string& instances) {
    std::istringstream in(FileOf(instances));
    Part21Importer().ImportFromStream(&in, &provider, 0);
    EXPECT_EQ(log.text, "");
  }
  TestProvider provider;
  CapturedLog log;
};

}  // namespace hostile
