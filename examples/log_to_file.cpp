// Reads a file and writes all that the library has to say about it to a log, and the errors to the screen as
// well.
#include <cstdio>
#include <iostream>

#include "AutomotiveDesign.h"
#include "ExpFile.h"
#include "ExpLogging.h"

// Passes on what begins like a syntax error, and what was caught as an exception.
class ErrorsOnScreen : public VELMAR::ExpAbstractLogger {
 public:
  void Write(const std::string& message, const VELMAR::ExpLogLevel& level) override {
    if (message.compare(0, 8, "-- line ") != 0 && level != VELMAR::ExpLogException) return;
    ++count_;
    std::cout << message;
  }
  int Count() const { return count_; }

 private:
  int count_ = 0;
};

int main(int argc, char** argv) {
  if (argc != 3) {
    std::cerr << "usage: log_to_file FILE LOG\n";
    return 2;
  }
  FILE* log = std::fopen(argv[2], "w");
  if (log == nullptr) {
    std::perror(argv[2]);
    return 2;
  }
  VELMAR::AutomotiveDesign::Load();
  VELMAR::ExpSimpleLogger everything(log);  // owns and closes the log
  ErrorsOnScreen errors;
  VELMAR::ExpLogger::AddLogger(&everything);
  VELMAR::ExpLogger::AddLogger(&errors);

  {
    VELMAR::ExpFile file;
    file.Read(argv[1]);
  }

  // A logger is removed before it is destroyed.
  VELMAR::ExpLogger::RemoveLogger(&errors);
  VELMAR::ExpLogger::RemoveLogger(&everything);
  std::cout << errors.Count() << " errors\n";
  return errors.Count() == 0 ? 0 : 1;
}
