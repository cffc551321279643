/// @file ExpRuntimeRegistry.h
/// The descriptions of all entity types that the loaded schema libraries provide.
#pragma once

#include <list>
#include <map>
#include <memory>
#include <ostream>
#include <string>
#include <unordered_map>
#include <vector>

#include "VelmarApi.h"

namespace VELMAR {

class ExpEntity;
enum Schema : int;

/// A type of a schema: its EXPRESS name and the schema that defines it.
class VELMAR_API ExpRuntimeType {
 public:
  /// A type without an implementing class.
  ExpRuntimeType(std::string name, std::string schema);
  virtual ~ExpRuntimeType();
  ExpRuntimeType(const ExpRuntimeType&) = delete;
  ExpRuntimeType& operator=(const ExpRuntimeType&) = delete;

  /// The platform's type-information name of the class that implements the type; empty where there is none.
  const std::string& GetImplementationTypeName() const { return implementationTypeName_; }
  /// The EXPRESS name, in upper case.
  const std::string& GetName() const { return name_; }
  /// The name of the registry schema.
  const std::string& GetSchema() const { return schema_; }

 protected:
  /// Set by derived classes.
  std::string implementationTypeName_;

 private:
  std::string name_;
  std::string schema_;
};

/// Describes one entity type, creates its instances and keeps, for each entity store, the list of those created for it.
///
/// Instances in a list belong to the type until DeleteInstanceList; the destructor leaves them alone.
class VELMAR_API ExpEntityRuntimeType : public ExpRuntimeType {
 public:
  /// @param name          the EXPRESS name in the case in which readers look it up (upper case)
  /// @param schema        the registry schema name, e.g. "AUTOMOTIVE_DESIGN"
  /// @param factory       creates an empty instance; called once here to learn the implementing class
  /// @param superClasses  all supertypes, the root first, as "SCHEMA::NAME"
  /// @param subClasses    the direct subtypes, as "SCHEMA::NAME"
  /// @param memberNames   the attribute names in the order of GetMember; of equal names the first is found by name
  /// Takes over the three lists, none of which may be null. Throws std::bad_typeid where the factory gives null; the
  /// lists are freed then, too.
  ExpEntityRuntimeType(std::string name, std::string schema, ExpEntity* (*factory)(), int nofExplicitMembers,
                       int nofInverseMembers, int externalMappingStartIndex, bool insertInObjTree,
                       std::vector<std::string>* superClasses, std::vector<std::string>* subClasses,
                       std::vector<std::string>* memberNames, int typeNumber);
  ~ExpEntityRuntimeType() override;

  /// A new instance; null where the factory gives null. With an `adminId` of 0 or more it is appended to the list of that
  /// store and belongs to it; with a negative one it belongs to the caller.
  ExpEntity* CreateInstance(int adminId);
  /// The instances created for a store, oldest first; null where there is no list. Stays this type's.
  std::list<ExpEntity*>* GetInstanceList(unsigned int adminId);
  /// Deletes the instances created for a store, and their list.
  void DeleteInstanceList(unsigned int adminId);

  /// What the constructor was given. The lists stay the type's.
  ///@{
  int GetNofExplicitMembers() const { return nofExplicitMembers_; }
  int GetNofInverseMembers() const { return nofInverseMembers_; }
  int GetExternalMappingStartIndex() const { return externalMappingStartIndex_; }
  int GetTypeNumber() const { return typeNumber_; }
  bool InsertInObjTree() const { return insertInObjTree_; }
  std::vector<std::string>* GetSuperClasses() const { return superClasses_; }
  std::vector<std::string>* GetSubClasses() const { return subClasses_; }
  std::vector<std::string>* GetMemberNames() const { return memberNames_; }
  ///@}
  /// The position of a member, from 0; -1 where there is none of this name.
  int GetMemberIndex(const std::string& name) const;

 private:
  friend class ExpRuntimeRegistry;
  using InstanceList = std::unique_ptr<std::list<ExpEntity*>>;
  static void DeleteFirst(std::list<ExpEntity*>& instances);
  static void DeleteInstances(std::vector<InstanceList>& lists);
  void MoveInstanceList(unsigned int adminId, std::vector<InstanceList>& lists);

  ExpEntity* (*factory_)();
  int nofExplicitMembers_;
  int nofInverseMembers_;
  int externalMappingStartIndex_;
  int typeNumber_;
  bool insertInObjTree_;
  std::vector<std::string>* superClasses_;
  std::vector<std::string>* subClasses_;
  std::vector<std::string>* memberNames_;
  std::map<std::string, unsigned int>* memberIndex_;
  std::map<unsigned int, std::list<ExpEntity*>*>* instanceLists_;
};

/// The definitions of one entity name, at most one per schema, in the byte order of the schema names. Owns none of them.
class VELMAR_API ExpRuntimeTypeVector {
 public:
  ExpRuntimeTypeVector();
  ~ExpRuntimeTypeVector();
  ExpRuntimeTypeVector(const ExpRuntimeTypeVector&) = delete;
  ExpRuntimeTypeVector& operator=(const ExpRuntimeTypeVector&) = delete;

  /// False, and nothing changed, where there already is a definition of the type's schema.
  bool Add(ExpRuntimeType* type);
  /// The definition of exactly this schema, or null.
  ExpRuntimeType* Get(const std::string& schema);
  /// The definition of the smallest schema name, or null.
  ExpRuntimeType* GetFirst();
  /// Appends all definitions.
  void GetTypes(std::vector<ExpRuntimeType*>& out);

 private:
  friend class ExpRuntimeRegistry;
  std::map<std::string, ExpRuntimeType*>* types_;
};

/// The process-wide catalogue of entity types, by name and schema.
///
/// Created on first use and never destroyed, so that schema libraries may register from their static initialisers in
/// any order. Registration is complete before the first file is read; nothing is ever unregistered. Used by one thread
/// at a time.
class VELMAR_API ExpRuntimeRegistry {
 public:
  /// The one instance; null before the first call of GetInstance.
  static ExpRuntimeRegistry* m_instance;
  /// The one instance, made on the first call.
  static ExpRuntimeRegistry* GetInstance();

  ExpRuntimeRegistry();
  /// Deletes every registered type once.
  ~ExpRuntimeRegistry();
  ExpRuntimeRegistry(const ExpRuntimeRegistry&) = delete;
  ExpRuntimeRegistry& operator=(const ExpRuntimeRegistry&) = delete;

  /// Appends a name to the list of schemas unless it is there.
  void RegisterSchema(std::string schema);
  /// Takes over `type` and registers it under `name`, or under its own name where `name` is empty. A second definition
  /// of a name in the same schema is kept until the registry's end but never found.
  void RegisterEntityRuntimeType(ExpEntityRuntimeType* type, const std::string& name);
  /// Registers the type that `name` has in `schema` under a further name; nothing where there is none.
  void RegisterAdditionalEntityNameForType(const std::string& name, const std::string& schema,
                                           const std::string& additionalName);

  /// The definition of `name` in the smallest schema name; null where there is none.
  ExpEntityRuntimeType* GetEntityRuntimeType(const std::string& name);
  /// The definition of `name` in `schema`, else in "STEP_IR_AIC", else in "VELMAR". Null where there is none, and with
  /// a line in the log where the name is known in other schemas.
  ExpEntityRuntimeType* GetEntityRuntimeType(const std::string& name, const std::string& schema);

  /// Deletes all instances that were created for one entity store: those of types that applications registered type by
  /// type in the order of the names, those of schema libraries in no particular order.
  void DeleteAllInstances(unsigned int adminId);

  /// Whether a type of exactly this schema name has been registered.
  bool IsSchemaRegistered(const std::string& schema);
  /// The schema name under which the library of an application protocol registers its types. Throws
  /// descriptive_exception for a value that is no application protocol.
  std::string EvalRegisteredSchema(Schema schema);
  /// The registry schema name that fits a schema name as files and people write it, "AUTOMOTIVE_DESIGN" where none does.
  /// The choice is logged.
  std::string EvalRegisteredSchema(const std::string& requested);

  /// Lists the schemas in the order of their registration.
  void DumpRegisteredSchemas(std::ostream& os);
  /// Lists all entity types by name and schema.
  void DumpRegisteredEntityTypes(std::ostream& os);
  /// Lists the entity names that exactly one schema defines.
  void DumpSingleDefinitions(std::ostream& os);
  /// Lists the entity names that several schemas define, with the schemas.
  void DumpMultipleDefinitions(std::ostream& os);
  /// Lists, of the names that several schemas define, those that `schema` defines, too, or those that it does not.
  void DumpMultipleDefinitions(std::ostream& os, bool containing, std::string schema);

 private:
  std::map<std::string, ExpRuntimeTypeVector*>* typesByName_;
  std::vector<std::string>* schemas_;
  std::map<ExpRuntimeType*, ExpRuntimeType*>* allTypes_;
  // The same as typesByName_, for quick finding: one lookup per instance of a file.
  std::unordered_map<std::string, ExpRuntimeTypeVector*>* index_;
};

}  // namespace VELMAR
