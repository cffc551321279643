/// @file TestEntities.h
/// Hand-written entity types for the tests, a provider that creates them, and short ways to make instances.
///
/// The types, in the notation of EXPRESS (the order of the attributes is that of GetMember and of a Part 21
/// record):
/// ```
/// ENTITY ALL_KINDS;                 -- nine members, one of each kind of value
///   real    : REAL;                 -- ExpReal
///   integer : INTEGER;              -- ExpInteger
///   text    : STRING;               -- ExpString
///   link    : ALL_KINDS;            -- ExpLink
///   list    : LIST OF GENERIC;      -- ExpAggregation
///   colour  : any_enumeration;      -- ExpEnumeration, without a table: takes every name
///   logical : LOGICAL;              -- ExpLogical
///   boolean : BOOLEAN;              -- ExpBoolean
///   choice  : any_select;           -- ExpSelect
/// END_ENTITY;
/// ENTITY LIBRARY_KINDS;             -- the kinds that generated schema libraries add
///   measure : REAL;                 -- ExpSchemaReal, prints its flags
///   data    : BINARY;               -- ExpSchemaBinary
///   colour  : colour;               -- Colour, with the table RED, GREEN, BLUE
/// END_ENTITY;
/// ENTITY POINT;   name : STRING; coordinates : LIST OF REAL; END_ENTITY;
/// ENTITY NODE;    name : STRING; next : NODE; others : LIST OF NODE; choice : any_select; END_ENTITY;
/// ENTITY EMPTY;   END_ENTITY;
///
/// ENTITY A;       a1, a2 : INTEGER;                        END_ENTITY;
/// ENTITY B  SUBTYPE OF (A);  b1 : STRING;                  END_ENTITY;
/// ENTITY C  SUBTYPE OF (B);  c1 : REAL;                    END_ENTITY;
///
/// ENTITY TOP;     top : INTEGER; rows : LIST OF LIST OF INTEGER;  END_ENTITY;
/// ENTITY LEFT   SUBTYPE OF (TOP);          left   : LOGICAL;      END_ENTITY;
/// ENTITY RIGHT  SUBTYPE OF (TOP);          right  : any_select;   END_ENTITY;
/// ENTITY BOTTOM SUBTYPE OF (LEFT, RIGHT);  bottom : STRING;       END_ENTITY;
/// ```
/// All of them are registered in the process-wide registry under "TEST_SCHEMA" and, for files that say
/// nothing about their schema, under "AUTOMOTIVE_DESIGN". RegisterTestEntities adds them to further schemas
/// or other registries. The diamond derives virtually, from ExpEntity on; the other classes do not.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "ExpFile.h"
#include "ExpFlyweightAdministration.h"
#include "ExpRuntimeRegistry.h"
#include "ExpSchemaLibrary.h"
#include "VelmarClasses.h"

namespace VELMAR::TestData {

/// The schema name of the test types.
inline constexpr const char* kTestSchema = "TEST_SCHEMA";

// ----------------------------------------------------------------------------------------------------- types

/// An enumeration with a table of its own.
class Colour : public ExpEnumeration {
 public:
  using ExpEnumeration::SetExpEnumeration;
  void SetExpEnumeration(const std::string& name) override;
  static const std::map<std::string, int>& Table();  ///< "RED" 0, "GREEN" 1, "BLUE" 2
};

/// Values of the instance are public; GetMember gives null for positions that do not exist.
class AllKinds : public ExpEntity {
 public:
  static constexpr const char* kName = "ALL_KINDS";
  static constexpr int kTypeNumber = 101;
  static ExpEntity* New();
  using ExpEntity::GetMember;
  ExpAttribute* GetMember(int index) override;

  ExpReal real;
  ExpInteger integer;
  ExpString text;
  ExpLink link;
  ExpAggregation list;
  ExpEnumeration colour;
  ExpLogical logical;
  ExpBoolean boolean;
  ExpSelect choice;
};

class LibraryKinds : public ExpEntity {
 public:
  static constexpr const char* kName = "LIBRARY_KINDS";
  static constexpr int kTypeNumber = 102;
  static ExpEntity* New();
  using ExpEntity::GetMember;
  ExpAttribute* GetMember(int index) override;

  ExpSchemaReal measure;
  ExpSchemaBinary data;
  Colour colour;
};

class Point : public ExpEntity {
 public:
  static constexpr const char* kName = "POINT";
  static constexpr int kTypeNumber = 103;
  static ExpEntity* New();
  using ExpEntity::GetMember;
  ExpAttribute* GetMember(int index) override;

  ExpString name;
  ExpAggregation coordinates;
};

/// InsertInObjTree holds for this type alone.
class Node : public ExpEntity {
 public:
  static constexpr const char* kName = "NODE";
  static constexpr int kTypeNumber = 104;
  static ExpEntity* New();
  using ExpEntity::GetMember;
  ExpAttribute* GetMember(int index) override;

  ExpString name;
  ExpLink next;
  ExpAggregation others;
  ExpSelect choice;
};

class Empty : public ExpEntity {
 public:
  static constexpr const char* kName = "EMPTY";
  static constexpr int kTypeNumber = 105;
  static ExpEntity* New();
};

/// Has two inverse members, as has B; C has three.
class A : public ExpEntity {
 public:
  static constexpr const char* kName = "A";
  static constexpr int kTypeNumber = 106;
  static ExpEntity* New();
  using ExpEntity::GetMember;
  ExpAttribute* GetMember(int index) override;

  ExpInteger a1;
  ExpInteger a2;
};

class B : public A {
 public:
  static constexpr const char* kName = "B";
  static constexpr int kTypeNumber = 107;
  static ExpEntity* New();
  using ExpEntity::GetMember;
  ExpAttribute* GetMember(int index) override;

  ExpString b1;
};

class C : public B {
 public:
  static constexpr const char* kName = "C";
  static constexpr int kTypeNumber = 108;
  static ExpEntity* New();
  using ExpEntity::GetMember;
  ExpAttribute* GetMember(int index) override;

  ExpReal c1;
};

class Top : virtual public ExpEntity {
 public:
  static constexpr const char* kName = "TOP";
  static constexpr int kTypeNumber = 109;
  static ExpEntity* New();
  using ExpEntity::GetMember;
  ExpAttribute* GetMember(int index) override;

  ExpInteger top;
  ExpAggregation rows;
};

class Left : virtual public Top {
 public:
  static constexpr const char* kName = "LEFT";
  static constexpr int kTypeNumber = 110;
  static ExpEntity* New();
  using ExpEntity::GetMember;
  ExpAttribute* GetMember(int index) override;

  ExpLogical left;
};

class Right : virtual public Top {
 public:
  static constexpr const char* kName = "RIGHT";
  static constexpr int kTypeNumber = 111;
  static ExpEntity* New();
  using ExpEntity::GetMember;
  ExpAttribute* GetMember(int index) override;

  ExpSelect right;
};

class Bottom : public Left, public Right {
 public:
  static constexpr const char* kName = "BOTTOM";
  static constexpr int kTypeNumber = 112;
  static ExpEntity* New();
  using ExpEntity::GetMember;
  ExpAttribute* GetMember(int index) override;

  ExpString bottom;
};

// --------------------------------------------------------------------------------------- types in a registry

/// Registers all types above in `registry` under `schema`, which also qualifies their supertypes and
/// subtypes. Where the schema has them already, the ones registered first stay the ones that are found.
void RegisterTestEntities(ExpRuntimeRegistry& registry, const std::string& schema);

/// One type for a registry of a test's own: `name` in `schema`, implemented by Empty, without members and
/// relations.
ExpEntityRuntimeType* NewPlainType(const std::string& name, const std::string& schema);

/// The description of a type in the process-wide registry; the test stops where there is none.
ExpEntityRuntimeType* TypeOf(const std::string& name, const std::string& schema = kTestSchema);

// ------------------------------------------------------------------------------------------ making instances

/// An instance that belongs to the caller, created through its type.
template <class T>
std::unique_ptr<T> Make(const std::string& schema = kTestSchema) {
  return std::unique_ptr<T>(dynamic_cast<T*>(TypeOf(T::kName, schema)->CreateInstance(-1)));
}

/// An instance that belongs to `store`: created under its id, numbered and added.
template <class T>
T* MakeIn(ExpAbstractObjectAdmin& store, int number, const std::string& schema = kTestSchema) {
  ExpEntity* entity = TypeOf(T::kName, schema)->CreateInstance(static_cast<int>(store.GetAdminId()));
  entity->SetEntityNumber(number);
  store.AddEntity(number, entity);
  return dynamic_cast<T*>(entity);
}

/// An aggregation of the values, which it owns.
std::unique_ptr<ExpAggregation> MakeList(const std::vector<ExpAttribute*>& values);

/// The printed form of MakeNested(depth): "()" for a depth of 1, "(())" for 2.
std::string NestedText(std::size_t depth);
/// Aggregations nested `depth` deep, the innermost empty.
std::unique_ptr<ExpAggregation> MakeNested(std::size_t depth);

/// The text of a std::string that `action` throws; "(nothing thrown)" or "(something else thrown)" otherwise.
template <class Action>
std::string ThrownText(Action action) {
  try {
    action();
  } catch (const std::string& text) {
    return text;
  } catch (...) {
    return "(something else thrown)";
  }
  return "(nothing thrown)";
}

// -------------------------------------------------------------------------------------------------- provider

/// A provider without a file: keeps its entities in a store of its own and creates them in a registry schema.
///
/// Everything it is told is public, so that a test can look: the schema names it was given, the type names
/// that were asked for. The names are looked up as they are given, as ExpFile does.
class TestProvider : public ExpAbstractObjectProvider {
 public:
  explicit TestProvider(std::string registrySchema = kTestSchema);

  using ExpAbstractObjectAdmin::GetEntity;
  ExpEntity* GetEntity(int number) override { return store.GetEntity(number); }
  void AddEntity(int number, ExpEntity* entity) override { store.AddEntity(number, entity); }
  int CreateEntityNumber() override { return store.CreateEntityNumber(); }
  unsigned int GetAdminId() override { return store.GetAdminId(); }
  std::size_t GetEntityVectorSize() override { return store.GetEntityVectorSize(); }
  void Write(std::ostream& os) override { store.Write(os); }
  void DeleteEntities() override { store.DeleteEntities(); }
  void ClearEntityVector() override { store.ClearEntityVector(); }
  void ResetEntityVector() override { store.ResetEntityVector(); }
  int GetMaxEntityNumber() override { return store.GetMaxEntityNumber(); }

  std::string GetSchemaName() override { return schemaName; }
  /// Notes the name; the schema in which types are looked up stays.
  void SetSchemaName(std::string name) override { givenSchemaNames.push_back(std::move(name)); }
  Schema GetSchema() const override { return schema; }
  void SetSchema(Schema value) override { schema = value; }
  ExpEntity* CreateEntity(const std::string& typeName) override;
  void Write(const std::string& fileName) override { writtenFiles.push_back(fileName); }
  std::string GetEnforcedFactoryName() override { return enforcedFactoryName; }

  ExpFlyweightAdministration store;
  std::string schemaName;
  std::string enforcedFactoryName;
  Schema schema = STEP_AP214;
  std::vector<std::string> givenSchemaNames;
  std::vector<std::string> askedTypes;
  std::vector<std::string> writtenFiles;
};

}  // namespace VELMAR::TestData
