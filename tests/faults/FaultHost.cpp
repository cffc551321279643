// An application of the runtime library, for tests that make its system calls fail: prints the log and, of what it has read,
// the greatest instance number.
//
//   FaultHost read FILE      ExpFile::Read
//   FaultHost import FILE    Part21Importer::ImportFromStream of a FILE*
//   FaultHost write FILE     ExpFile::Write of a population of its own
#include <cstdio>
#include <iostream>
#include <sstream>
#include <string>

#include "ExpFile.h"
#include "ExpLogging.h"
#include "Part21Importer.h"
#include "TestEntities.h"

namespace {

class PrintedLog : public VELMAR::ExpAbstractLogger {
 public:
  PrintedLog() { VELMAR::ExpLogger::AddLogger(this); }
  ~PrintedLog() override { VELMAR::ExpLogger::RemoveLogger(this); }
  void Write(const std::string& message, const VELMAR::ExpLogLevel&) override { std::cout << message; }
};

std::string FileOf(int instances) {
  std::string text =
      "ISO-10303-21;\nHEADER;\nFILE_DESCRIPTION(('d'),'1');\nFILE_NAME('n','t',('a'),('o'),'p','s','z');\n"
      "FILE_SCHEMA(('AUTOMOTIVE_DESIGN'));\nENDSEC;\nDATA;\n";
  for (int i = 1; i <= instances; ++i) text += "#" + std::to_string(i) + "=NODE('a text',#1,(),$);\n";
  return text + "ENDSEC;\nEND-ISO-10303-21;\n";
}

}  // namespace

int main(int, char** argv) {
  const std::string what = argv[1];
  const PrintedLog log;
  VELMAR::ExpFile file;
  if (what == "read") {
    file.Read(std::string(argv[2]));
  } else if (what == "import") {
    FILE* stream = std::fopen(argv[2], "rb");
    if (stream == nullptr) {
      std::cout << "cannot open\n";
      return 0;
    }
    VELMAR::Part21Importer().ImportFromStream(stream, &file, 0);
    std::fclose(stream);
  } else {
    std::istringstream in(FileOf(35000));
    file.Read(in);
    file.Write(std::string(argv[2]));
  }
  std::cout << "greatest: " << file.GetMaxEntityNumber() << '\n';
  return 0;
}
