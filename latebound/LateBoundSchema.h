/// @file LateBoundSchema.h
/// Loading an EXPRESS schema at run time.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "ExpUtilities.h"
#include "LateBoundType.h"
#include "VelmarApi.h"

namespace VELMAR {

/// One thing that is wrong with, or suspicious in, an EXPRESS text.
struct LateBoundMessage {
  bool isError;  ///< otherwise a warning
  std::string file;  ///< as it was given, or found on the search path
  int line;          ///< from 1; 0 where the message has no place
  int column;        ///< from 1, in characters; 0 where the message has no place
  std::string code;  ///< "E021"
  std::string text;  ///< a sentence without a stop, for people
  std::string hint;  ///< what might have been meant; empty where nothing suggests itself
};

/// A schema could not be loaded. The text has a line for each message, with the place in the EXPRESS text,
/// what is wrong, the source line and a caret below it.
class VELMAR_API LateBoundError : public descriptive_exception {
 public:
  /// `text` is what what() gives.
  explicit LateBoundError(const std::string& text, std::vector<LateBoundMessage> messages = {});
  ~LateBoundError() override;

  /// What was found in the EXPRESS texts; empty where the reason is another one.
  const std::vector<LateBoundMessage>& GetMessages() const { return messages_; }

 private:
  std::vector<LateBoundMessage> messages_;
};

/// How a schema is loaded.
struct LateBoundOptions {
  /// Which schema of the file, in any case of letters. Empty: the last one.
  std::string schemaName;
  /// The name under which the types are registered: letters, digits and '_', a letter first. Empty: the name
  /// of the schema in upper case.
  std::string registryName;
  /// Where NAME.exp is looked for, in any case of letters, when a schema NAME is interfaced that the file
  /// does not declare.
  std::vector<std::string> includeDirectories;
};

/// A schema whose entity types were loaded from an EXPRESS text (ISO 10303-11) and stand in the registry, for
/// good.
///
/// A handle, cheap to copy. Used by one thread at a time, like the registry.
/// ```
/// const auto schema = VELMAR::LateBoundSchema::Load("own_schema.exp");
/// VELMAR::LateBoundFile file(schema);
/// file.Read("own.stp");
/// ```
class VELMAR_API LateBoundSchema {
 public:
  /// Reads the file, and registers the entity types of one of its schemas. Throws LateBoundError, and
  /// registers nothing, where the text has an error, a file or folder cannot be read, the file does not
  /// declare the schema, or the registry name is none or has been taken: by a library, or by a schema that
  /// was loaded before.
  static LateBoundSchema Load(const std::string& file, const LateBoundOptions& options = {});

  /// The name of the schema in upper case.
  const std::string& GetName() const;
  /// The name under which the types are registered.
  const std::string& GetRegistryName() const;
  /// The types in the order of their names. They are the registry's.
  const std::vector<const LateBoundType*>& GetTypes() const;
  /// The type of this name, in any case of letters; null where there is none.
  const LateBoundType* FindType(const std::string& name) const;
  /// What is suspicious in the text, in the order in which it was found.
  const std::vector<LateBoundMessage>& GetWarnings() const;

 private:
  struct Contents;
  explicit LateBoundSchema(std::shared_ptr<const Contents> contents);

  std::shared_ptr<const Contents> contents_;
};

}  // namespace VELMAR
