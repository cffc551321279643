// Generated from simple_types.exp by velmar-express 3.1. Do not edit.
#pragma once

#include "ExpSchemaLibrary.h"

#if VELMAR_VERSION_MAJOR != 3 || VELMAR_VERSION_MINOR != 1
#error "Generated for Velmar 3.1: generate this schema library again with the velmar-express of your version"
#endif

namespace VELMAR::SimpleTypes {

/// Registers the entity types of SIMPLE_TYPES, which loading the library does, too. A call makes sure
/// that the library is linked and loaded; any further one does nothing.
VELMAR_API void Load();

/// Registers the same classes under a further schema name, "STEP_IR_AIC" say.
VELMAR_API void RegisterAs(const char* registrySchemaName);

/// What the classes of all entities derive from. It does what ExpEntity does; but as its operations are in
/// this library, references to them are settled while linking and not, class by class, while loading.
class VELMAR_API EntityBase : public ExpEntity {
 public:
  ~EntityBase() override;
  ExpAttribute* GetMember(int index) override;
  ExpAttribute* GetMember(const std::string& name) override;
  std::vector<std::string>* GetMemberNames() override;
  const std::string& GetExpClassName() const override;
  std::vector<std::string>* GetExpSuperClasses() const override;
  std::vector<std::string>* GetExpSubClasses() const override;
  int GetNofInverseMembers() override;
  int GetNofExplicitMembers() override;
  int GetExternalMappingStartIndex() override;
  int GetTypeNumberOfEntity() override;
  bool InsertInObjTree() const override;
  void SetEntityNumber(int number) override;
  int GetEntityNumber() override;
  std::string ToString() override;
  void Accept(ExpEntityVisitor* visitor) override;
};

/// thing
class VELMAR_API Thing : public EntityBase {
 public:
  ~Thing() override;
  using EntityBase::GetMember;
  ExpAttribute* GetMember(int index) override;

  ExpSchemaReal& AReal() { return a_real_; }  ///< real
  ExpSchemaReal& APreciseReal() { return a_precise_real_; }  ///< real (6)
  ExpSchemaReal& ANumber() { return a_number_; }  ///< number
  ExpInteger& AnInteger() { return an_integer_; }  ///< integer
  ExpString& AString() { return a_string_; }  ///< string
  ExpString& ACode() { return a_code_; }  ///< code
  ExpBoolean& ABoolean() { return a_boolean_; }  ///< boolean
  ExpLogical& ALogical() { return a_logical_; }  ///< logical
  ExpSchemaBinary& ABinary() { return a_binary_; }  ///< binary
  ExpSchemaBinary& AByte() { return a_byte_; }  ///< byte
  ExpSchemaReal& ALength() { return a_length_; }  ///< positive_length
  ExpString& Maybe() { return maybe_; }  ///< optional short_text

 protected:
  ExpSchemaReal a_real_;
  ExpSchemaReal a_precise_real_;
  ExpSchemaReal a_number_;
  ExpInteger an_integer_;
  ExpString a_string_;
  ExpString a_code_;
  ExpBoolean a_boolean_;
  ExpLogical a_logical_;
  ExpSchemaBinary a_binary_;
  ExpSchemaBinary a_byte_;
  ExpSchemaReal a_length_;
  ExpString maybe_;
};

}  // namespace VELMAR::SimpleTypes
