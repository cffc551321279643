/// @file ExpFile.h
/// One Part 21 exchange file in memory.
#pragma once

#include <istream>
#include <string>

#include "ExpFlyweightAdministration.h"
#include "Part21Importer.h"
#include "VelmarApi.h"
#include "VelmarClasses.h"

namespace VELMAR {

/// The application protocols that files are written for. There is no member 4.
enum Schema : int {
  STEP_AP203 = 0,
  STEP_AP203E2 = 1,
  STEP_AP214 = 2,
  STEP_AP242 = 3,
  PLIB = 5,
  ISO13399 = 6
};

/// The population of one exchange file: reads, appends, holds and writes it.
///
/// Every store operation is forwarded to the store that GetAdaptedAdmin() gives, which the file owns, as it owns its
/// importer. Reading, appending and writing never throw: what goes wrong is logged. Used by one thread at a time.
/// ```
/// VELMAR::ExpFile file;
/// file.Read("part.stp");
/// std::list<VELMAR::ExpEntity*> products;
/// file.GetEntities(products, "PRODUCT", true);
/// ```
class VELMAR_API ExpFile : public ExpAbstractObjectProvider {
 public:
  /// What the FILE_SCHEMA of a file of the protocol states.
  ///@{
  static const char* const SCHEMA_NAME_STEP_AP203;
  static const char* const SCHEMA_NAME_STEP_AP203E2;
  static const char* const SCHEMA_NAME_STEP_AP214;
  static const char* const SCHEMA_NAME_STEP_AP242;
  static const char* const SCHEMA_NAME_PLIB;
  static const char* const SCHEMA_NAME_ISO13399;
  ///@}

  /// An empty file of the schema STEP_AP214.
  ExpFile();
  /// An empty file of a schema. Throws descriptive_exception for a value that is no member of Schema.
  explicit ExpFile(Schema schema);
  /// As above; entity types are looked up in the registry schema `factoryName` until another schema is set.
  ExpFile(Schema schema, const std::string& factoryName);
  ~ExpFile() override;
  ExpFile(const ExpFile&) = delete;
  ExpFile& operator=(const ExpFile&) = delete;

  /// Writes a whole exchange file that holds the entity and all that it refers to.
  void DumpEntity(ExpEntity* entity, std::ostream& os) override;
  void DumpEntity(int number, std::ostream& os) override;

  using ExpAbstractObjectAdmin::GetEntity;
  ExpEntity* GetEntity(int number) override;
  void AddEntity(int number, ExpEntity* entity) override;
  int CreateEntityNumber() override;
  /// -1 without a store.
  unsigned int GetAdminId() override;
  std::size_t GetEntityVectorSize() override;
  /// Writes the exchange file. Lets the errors of its entities' texts through.
  void Write(std::ostream& os) override;
  void DeleteEntities() override;
  void ClearEntityVector() override;
  void ResetEntityVector() override;
  int GetMaxEntityNumber() override;

  /// The canonical name of the schema, as a written file states it.
  std::string GetSchemaName() override;
  /// Chooses the schema whose names resemble `name`, whatever its case, STEP_AP214 where none does, and logs the choice.
  void SetSchemaName(std::string name) override;
  Schema GetSchema() const override;
  /// Throws descriptive_exception for a value that is no member of Schema; nothing is changed then.
  void SetSchema(Schema schema) override;
  ExpEntity* CreateEntity(const std::string& entityName) override;
  /// Writes the exchange file to disk. The text is made before the file is touched, and an existing file is replaced only
  /// by a complete one, unless its directory takes no new file: then it is written over.
  void Write(const std::string& filename) override;
  std::string GetEnforcedFactoryName() override;

  /// Empties the file, sets its schema and gives it a store and an importer if it has none.
  void Init(Schema schema, const std::string& factoryName);

  /// Replaces the population by that of a file. Where it cannot be opened, that is logged and nothing changes.
  void Read(const std::string& filename);
  /// Replaces the population by that of a seekable stream.
  void Read(std::istream& is);
  /// Adds the population of a file; its instance numbers and references are raised by the highest number present.
  void Append(const std::string& filename);
  /// As above. An exception while it is read empties the file.
  void Append(std::istream& is);

  /// Whether reading keeps all that a file has, and writing writes all of it. Initially not: then what docs/limits.md
  /// lists is dropped. Concerns what is read and written from now on; what has been kept stays.
  ///
  /// Kept are: tokens of any length; BINARY values; `$`, `*` and enumeration items in aggregates; whatever stands in typed parameters, the empty list
  /// too; integers beyond 32 bits; parameters that their attribute does not take, or beyond the last attribute
  /// (GetKeptValue gives those); records of types that CreateEntity does not know, also in complex instances and in the
  /// header; the `!` of user-defined types. Attributes without a parameter are not provided. Writing gives real
  /// numbers the digits that they need to be read as the same number, and writes `$` where a value has no Part 21 form.
  /// (ISO 10303-21, exchange structure.) What cannot be kept, a second instance with a number for instance, is logged; also which types
  /// have records with more or fewer parameters than attributes, and how many of the instances that are referred to are not there.
  ///
  /// Elements of the kinds that the default drops are values that ExpAttributeVisitor has no operation for, except for
  /// enumerations; they are written by ToString. An instance of an unknown type is an entity with a select for each
  /// parameter and the positions "1", "2" ... as names; its type is in no registry, so GetEntities does not find it.
  void KeepEverything(bool keep);
  /// What KeepEverything has set.
  bool KeepsEverything() const;

  /// Writes the line that opens an exchange file.
  void WriteEncodingStart(std::ostream& os);
  /// Writes the HEADER section. Empty values of its entities are filled with defaults, which stay.
  void WriteHeaderSection(std::ostream& os);
  /// Writes the DATA section: every instance, in the order of the numbers.
  void WriteDataSection(std::ostream& os);
  /// Writes the line that closes an exchange file.
  void WriteEncodingEnd(std::ostream& os);

  /// Writes the message to the log, without a line end.
  static void Log(const std::string& message);

 private:
  ExpEntity* HeaderEntity(const std::string& typeName);
  void EmptyStore();
  template <class Import>
  void Guarded(const std::string& failure, Import import);

  std::string fileName_;
  std::string schemaName_;
  std::string enforcedFactoryName_;
  std::string reservedText_;
  Part21Importer* importer_;
  Schema schema_;
};

}  // namespace VELMAR
