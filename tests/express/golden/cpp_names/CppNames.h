// Generated from cpp_names.exp by velmar-express 3.1. Do not edit.
#pragma once

#include "ExpSchemaLibrary.h"

#if VELMAR_VERSION_MAJOR != 3 || VELMAR_VERSION_MINOR != 1
#error "Generated for Velmar 3.1: generate this schema library again with the velmar-express of your version"
#endif

namespace VELMAR::CppNames {

/// Registers the entity types of CPP_NAMES, which loading the library does, too. A call makes sure
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

/// colour
class VELMAR_API Colour : public ExpSchemaEnumeration<Colour> {
 public:
  enum class Enumeration { Unset = -1, Red };
  static constexpr const char* kNames = "RED";
};

/// namespace
class VELMAR_API Namespace : public ExpSchemaEnumeration<Namespace> {
 public:
  enum class Enumeration { Unset = -1, True, Null, Void, Delete, Unset_ };
  static constexpr const char* kNames = "TRUE_ NULL VOID DELETE UNSET";
};

/// class
class VELMAR_API Class : public EntityBase {
 public:
  ~Class() override;
  using EntityBase::GetMember;
  ExpAttribute* GetMember(int index) override;

  ExpInteger& Int() { return int_; }  ///< integer
  ExpString& This() { return this_; }  ///< string
  ExpLink& Operator() { return operator_; }  ///< optional class
  CppNames::Namespace& Class_() { return class_; }  ///< namespace
  ExpString& ToString_() { return to_string_; }  ///< string
  ExpString& Tostring() { return tostring__; }  ///< string
  ExpInteger& GetMember_() { return get_member_; }  ///< integer
  ExpString& ExpString_() { return exp_string_; }  ///< string
  CppNames::Namespace& Namespace() { return namespace_; }  ///< namespace

 protected:
  ExpInteger int_;
  ExpString this_;
  ExpLink operator_;
  CppNames::Namespace class_;
  ExpString to_string_;
  ExpString tostring__;
  ExpInteger get_member_;
  ExpString exp_string_;
  CppNames::Namespace namespace_;
};

/// cpp_names
class VELMAR_API CppNames_ : public EntityBase {
 public:
  ~CppNames_() override;
};

/// exp_entity
class VELMAR_API ExpEntity_ : public EntityBase {
 public:
  ~ExpEntity_() override;
};

/// load
class VELMAR_API Load_ : public EntityBase {
 public:
  ~Load_() override;
  using EntityBase::GetMember;
  ExpAttribute* GetMember(int index) override;

  ExpInteger& A1() { return a_1_; }  ///< integer
  ExpInteger& A1_() { return a1_; }  ///< integer
  CppNames::Colour& Colour() { return colour_; }  ///< colour

 protected:
  ExpInteger a_1_;
  ExpInteger a1_;
  CppNames::Colour colour_;
};

/// late
class VELMAR_API Late : public Load_ {
 public:
  ~Late() override;
  using EntityBase::GetMember;
  ExpAttribute* GetMember(int index) override;

  CppNames::Colour& Other() { return other_; }  ///< colour

 protected:
  CppNames::Colour other_;
};

/// lo_ad
class VELMAR_API LoAd : public EntityBase {
 public:
  ~LoAd() override;
};

}  // namespace VELMAR::CppNames
