/// @file Part21Importer.h
/// Reads Part 21 files and streams into an object provider.
#pragma once

#include <cstdio>
#include <istream>
#include <string>

#include "VelmarApi.h"

namespace VELMAR {

class ExpAbstractObjectProvider;
class ExpFile;
class Parser;
class Scanner;

/// Reads one exchange structure per call into a provider, which creates and keeps the entities.
///
/// `offset` is added to every instance number and every reference of the input, so that a second file can be put behind
/// the instances of a first. Syntax errors are logged and do not stop the import. An input that cannot be read to its end
/// is an error at the place where it breaks off, with the system's reason; what came before it is kept. An importer may be
/// used again and again, by one thread at a time.
class VELMAR_API Part21Importer {
 public:
  Part21Importer();
  virtual ~Part21Importer();
  Part21Importer(const Part21Importer&) = delete;
  Part21Importer& operator=(const Part21Importer&) = delete;

  /// Reads a file by its name. Ends the process with a message where it cannot be opened; ExpFile::Read does not.
  virtual void ImportFromFile(std::string fileName, ExpAbstractObjectProvider* provider, int offset);
  /// Reads an open stream, which need not be seekable and stays open.
  virtual void ImportFromStream(FILE* stream, ExpAbstractObjectProvider* provider, int offset);
  /// As below, with the header.
  virtual void ImportFromStream(std::istream* stream, ExpAbstractObjectProvider* provider, int offset);
  /// Reads a seekable stream of at most 2^31 - 1 bytes from its start and leaves it at its end; throws std::length_error
  /// for a longer one, and std::runtime_error for one whose length cannot be found. The text is read 64 KB at a time; whole, where it begins with the byte order mark or the stream
  /// throws its errors. Does nothing for null, a failed or an empty stream. With `skipHeader` no header entities are
  /// created and the schema of the provider stays.
  virtual void ImportFromStream(std::istream* stream, ExpAbstractObjectProvider* provider, int offset, bool skipHeader);
  /// A new ExpFile, owned by the caller, that has read the file.
  virtual ExpFile* ImportFromFile(std::string fileName);

  /// Whether what is read is kept whole, see ExpFile::KeepEverything. Initially not. Any provider whose instances go with
  /// ExpRuntimeRegistry::DeleteAllInstances may be given; to write with all digits is up to it.
  void KeepEverything(bool keep);
  /// What KeepEverything has set.
  bool KeepsEverything() const;

 private:
  void Import(Scanner& scanner, ExpAbstractObjectProvider* provider, int offset, bool skipHeader);

  Parser* parser_;
};

}  // namespace VELMAR
