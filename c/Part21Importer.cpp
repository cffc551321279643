#include "Part21Importer.h"

#include <limits>
#include <memory>
#include <mutex>
#include <set>
#include <stdexcept>

#include "ExpFile.h"
#include "Parser.h"
#include "Scanner.h"

namespace VELMAR {

namespace {

// The importers that keep everything: beside the objects, whose size is compiled into programs. Never deleted, for there may be
// importers that live as long as the process.
struct KeepingImporters {
  std::mutex mutex;
  std::set<const Part21Importer*> importers;  // guarded

  static KeepingImporters& Instance() {
    static auto* const instance = new KeepingImporters;
    return *instance;
  }
};

}  // namespace

Part21Importer::Part21Importer() : parser_(nullptr) {}
Part21Importer::~Part21Importer() { Part21Importer::KeepEverything(false); }

void Part21Importer::KeepEverything(bool keep) {
  KeepingImporters& keeping = KeepingImporters::Instance();
  const std::lock_guard<std::mutex> lock(keeping.mutex);
  if (keep) {
    keeping.importers.insert(this);
  } else {
    keeping.importers.erase(this);
  }
}

bool Part21Importer::KeepsEverything() const {
  KeepingImporters& keeping = KeepingImporters::Instance();
  const std::lock_guard<std::mutex> lock(keeping.mutex);
  return keeping.importers.count(this) != 0;
}

void Part21Importer::Import(Scanner& scanner, ExpAbstractObjectProvider* provider, int offset, bool skipHeader) {
  Parser parser(&scanner);
  parser.SetProvider(provider);
  parser.SetInstanceNumberOffset(offset);
  parser.SetSkipHeader(skipHeader);
  parser.KeepEverything(KeepsEverything());
  parser_ = &parser;
  try {
    parser.Parse();
  } catch (...) {
    parser_ = nullptr;
    throw;
  }
  parser_ = nullptr;
}

void Part21Importer::ImportFromFile(std::string fileName, ExpAbstractObjectProvider* provider, int offset) {
  // One character per byte, so that any name can be opened.
  wchar_t* wideName = coco_string_create(fileName.c_str());
  Scanner scanner(wideName);
  coco_string_delete(wideName);
  Import(scanner, provider, offset, false);
}

void Part21Importer::ImportFromStream(FILE* stream, ExpAbstractObjectProvider* provider, int offset) {
  Scanner scanner(stream);
  Import(scanner, provider, offset, false);
}

void Part21Importer::ImportFromStream(std::istream* stream, ExpAbstractObjectProvider* provider, int offset) {
  ImportFromStream(stream, provider, offset, false);
}

void Part21Importer::ImportFromStream(std::istream* stream, ExpAbstractObjectProvider* provider, int offset,
                                      bool skipHeader) {
  if (stream == nullptr || stream->fail()) return;
  stream->seekg(0, std::ios::end);
  const std::streamoff length = stream->tellg();
  stream->seekg(0, std::ios::beg);
  if (length == 0) return;
  if (length < 0 || stream->fail()) throw std::runtime_error("the length of the input cannot be found");
  constexpr std::streamoff kMaxLength = std::numeric_limits<int>::max() - 1;
  if (length > kMaxLength) {
    throw std::length_error("the input is longer than " + std::to_string(kMaxLength) + " bytes");
  }
  Scanner scanner(*stream, static_cast<int>(length));
  Import(scanner, provider, offset, skipHeader);
}

ExpFile* Part21Importer::ImportFromFile(std::string fileName) {
  auto file = std::make_unique<ExpFile>();
  file->Read(fileName);
  return file.release();
}

}  // namespace VELMAR
