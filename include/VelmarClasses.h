/// @file VelmarClasses.h
/// The data model: attribute values, entities, complex instances, object providers and managed objects.
#pragma once

#include <cstddef>
#include <list>
#include <map>
#include <new>
#include <ostream>
#include <string>
#include <vector>

#include "ExpAttributeVisitor.h"
#include "VelmarApi.h"

namespace VELMAR {

class ExpAbstractObjectAdmin;
class ExpEntity;
class ExpEntityRuntimeType;
class ExpEntityVisitor;
class KeptRecord;  // what reading keeps of a record beside the attributes
class KeptToken;   // a value that is kept as its token
class ValueText;  // the library's printer of values
enum Schema : int;

// ---------------------------------------------------------------------------------------------- attribute values

/// One attribute value of an entity instance, or one element of an aggregate.
///
/// Values are set through the setter that fits their kind; every other setter or getter throws a std::string that
/// names the operation, for example "error ExpAttribute::SetExpReal", and changes nothing. Beside its value each
/// object carries two flags: not provided (written `$`) and omitted (written `*`, ISO 10303-21). The flags and the
/// value are independent: setting one never changes the other.
class VELMAR_API ExpAttribute {
 public:
  /// Like those of all values, without exceptions: the constructors of entities have nothing to clean up then, which
  /// makes schema libraries smaller.
  ExpAttribute() noexcept;
  virtual ~ExpAttribute();

  /// Memory for single objects is that of a pool, see ReleaseUnusedMemory.
  ///@{
  static void* operator new(std::size_t size);
  static void* operator new(std::size_t, void* place) noexcept { return place; }
  static void* operator new(std::size_t size, std::align_val_t alignment) { return ::operator new(size, alignment); }
  static void operator delete(void* memory, std::size_t size) noexcept;
  static void operator delete(void*, void*) noexcept {}
  static void operator delete(void* memory, std::align_val_t alignment) noexcept { ::operator delete(memory, alignment); }
  ///@}

  /// The flags: not provided, written `$`, and omitted, written `*`. Initially neither is set.
  ///@{
  virtual void SetNotProvided(bool notProvided);
  virtual void SetOmitted(bool omitted);
  virtual bool IsNotProvided();
  virtual bool IsOmitted();
  ///@}

  /// Throws a std::string unless overridden, as all setters and getters do.
  ///@{
  virtual void SetExpReal(double value);
  virtual void SetExpInteger(int value);
  ///@}
  /// Takes the body of a Part 21 string, escapes included and without the apostrophes, as the file has it.
  virtual void SetExpString(std::string stepText);
  /// Takes the instance number of the referenced entity.
  virtual void SetExpLink(int number);
  /// Appends `value`, which the aggregate owns from then on.
  virtual void AddValue(ExpAttribute* value);
  /// Takes the name of an enumeration item without its dots.
  virtual void SetExpEnumeration(const std::string& name);
  /// Appends the type name of a typed parameter, the outermost first.
  virtual void AddExpSelectTypeName(std::string name);

  /// The value as it is written in a Part 21 file.
  virtual std::string ToString() = 0;

  /// The value; see the classes of the kinds.
  ///@{
  virtual double GetExpReal();
  virtual int GetExpInteger();
  virtual int GetExpLink();
  ///@}

  /// Calls the one operation of `visitor` that fits this value's kind.
  virtual void Accept(ExpAttributeVisitor* visitor);

 protected:
  /// Copies the flags.
  ///@{
  ExpAttribute(const ExpAttribute&) = default;
  ExpAttribute& operator=(const ExpAttribute&) = default;
  ///@}

 private:
  friend class ValueText;
  bool notProvided_;
  bool omitted_;
};

/// A REAL or NUMBER value. Integers may be stored, too: they are converted.
class VELMAR_API ExpReal : public ExpAttribute {
 public:
  /// 0.0
  ExpReal() noexcept;
  /// This value, with neither flag.
  explicit ExpReal(double value);

  /// The value is kept as a double.
  ///@{
  void SetExpReal(double value) override;
  void SetExpInteger(int value) override;
  double GetExpReal() override;
  ///@}

  /// At most fifteen significant digits, always with a decimal point, without trailing zeros: "2.5", "100.", "1.E-5".
  /// Infinities and NaN give "inf" and "nan". The empty text where a flag is set: whoever writes a bare ExpReal looks
  /// at the flags first.
  std::string ToString() override;
  void Accept(ExpAttributeVisitor* visitor) override;

 private:
  friend class ValueText;
  double value_;
};

/// An INTEGER value of 32 bits.
class VELMAR_API ExpInteger : public ExpAttribute {
 public:
  /// 0
  ExpInteger() noexcept;
  /// This value, with neither flag.
  explicit ExpInteger(int value);

  /// The value as it is.
  ///@{
  void SetExpInteger(int value) override;
  int GetExpInteger() override;
  ///@}
  /// The value converted.
  double GetExpReal() override;

  std::string ToString() override;
  void Accept(ExpAttributeVisitor* visitor) override;

 private:
  friend class ValueText;
  int value_;
};

/// A STRING value, kept as UTF-8.
class VELMAR_API ExpString : public ExpAttribute {
 public:
  /// The empty text.
  ExpString() noexcept;
  /// As SetExpString: the argument is Part 21 text and is decoded.
  explicit ExpString(std::string stepText);

  /// Stores the text decoded from the escapes of ISO 10303-21 to UTF-8.
  void SetExpString(std::string stepText) override;

  /// The text between apostrophes, with every character outside printable ASCII as an escape of ISO 10303-21.
  /// Throws a std::string where the stored text breaks off within a UTF-8 sequence.
  std::string ToString() override;
  void Accept(ExpAttributeVisitor* visitor) override;

  /// A copy of the UTF-8 text.
  virtual std::string GetExpString();

 private:
  friend class ValueText;
  std::string text_;
};

/// A reference to another entity by its instance number; -1 refers to none.
///
/// The entity itself is found through a store: ExpAbstractObjectAdmin::GetEntity(ExpLink).
class VELMAR_API ExpLink : public ExpAttribute {
 public:
  /// -1
  ExpLink() noexcept;
  /// A reference to #number.
  explicit ExpLink(int number);
  /// Copies the number and the flags.
  ///@{
  ExpLink(const ExpLink&) = default;
  ExpLink& operator=(const ExpLink&) = default;
  ///@}

  void SetExpLink(int number) override;
  /// The number; -1 where it refers to none.
  int GetExpLink() override;

  std::string ToString() override;
  void Accept(ExpAttributeVisitor* visitor) override;

 private:
  friend class ValueText;
  int number_;
};

/// An aggregate: ARRAY, BAG, LIST or SET. Owns its elements, which may be of mixed kinds and aggregates themselves.
///
/// An element belongs to one aggregate and is deleted by nobody else.
class VELMAR_API ExpAggregation : public ExpAttribute {
 public:
  ExpAggregation() noexcept;
  ~ExpAggregation() override;
  ExpAggregation(const ExpAggregation&) = delete;
  ExpAggregation& operator=(const ExpAggregation&) = delete;

  /// Appends `value` without looking at it.
  void AddValue(ExpAttribute* value) override;

  /// "(" elements separated by ", " ")".
  std::string ToString() override;
  void Accept(ExpAttributeVisitor* visitor) override;

  /// The elements themselves; the caller may iterate and change the list.
  virtual std::list<ExpAttribute*>* GetExpAggregation();
  /// The number of elements, not of those within them.
  virtual unsigned long NofElements();
  /// Deletes all elements, however deeply they are nested.
  virtual void RemoveAllValues();

 private:
  friend class ValueText;
  std::list<ExpAttribute*> elements_;
};

/// A value of an enumeration type: the item's name and its number in the type's table.
///
/// This class has no table: a name that is set is kept as it is, and the number stays -1. Classes for an enumeration
/// type override SetExpEnumeration(const std::string&) and look the name up in their table.
class VELMAR_API ExpEnumeration : public ExpAttribute {
 public:
  /// No name, -1.
  ExpEnumeration() noexcept;

  /// Keeps the name; the number is left alone.
  void SetExpEnumeration(const std::string& name) override;
  /// Sets name and number to the first entry of `table`, in key order, that holds `value`. If there is none, the
  /// object is without name and number afterwards and a std::string is thrown.
  void SetExpEnumeration(int value, const std::map<std::string, int>* table);
  /// Sets name and number to the entry `name` of `table`, or that of the name in upper, then in lower case. If there is
  /// none, the object is without name and number afterwards and a std::string that ends with the name is thrown.
  void SetExpEnumeration(const std::string& name, const std::map<std::string, int>* table);

  /// The name between dots.
  std::string ToString() override;
  void Accept(ExpAttributeVisitor* visitor) override;

  /// The number in the table; -1 while unknown.
  virtual int GetExpEnumeration();
  /// The name without dots; empty while there is none.
  virtual std::string GetExpEnumerationString();

 private:
  friend class ValueText;
  friend class ExpExternalMappingEntity;
  std::string name_;
  int value_;
};

/// A LOGICAL value: "F", "T" or "U".
class VELMAR_API ExpLogical : public ExpEnumeration {
 public:
  /// The items; the numbers are those of `explogical_map`.
  enum Enumeration { F = 0, T = 1, U = 2 };

  /// The numbers of the items by their names.
  static std::map<std::string, int> explogical_map;
  /// Fills the table; called once when the library is loaded. Returns true.
  static bool Init();

  using ExpEnumeration::SetExpEnumeration;
  void SetExpEnumeration(const std::string& name) override;
  /// Sets the item of this number.
  virtual void SetExpEnumeration(Enumeration value);
};

/// A BOOLEAN value: "F" or "T".
class VELMAR_API ExpBoolean : public ExpEnumeration {
 public:
  /// The items; the numbers are those of `expboolean_map`.
  enum Enumeration { F = 0, T = 1 };

  /// The numbers of the items by their names.
  static std::map<std::string, int> expboolean_map;
  /// Fills the table; called once when the library is loaded. Returns true.
  static bool Init();

  using ExpEnumeration::SetExpEnumeration;
  void SetExpEnumeration(const std::string& name) override;
  /// Sets the item of this number.
  virtual void SetExpEnumeration(Enumeration value);
  /// False while unset.
  virtual bool GetAsBool();
  /// Sets the item T or F.
  virtual void SetAsBool(bool value);
};

/// A value of a SELECT type: one value of any kind, owned, and the type names under which it is written
/// (`LENGTH_MEASURE(2.5)`, ISO 10303-21, typed parameters).
///
/// A setter replaces the selected value by one of its kind and leaves the type names alone. A getter throws a
/// std::string where the selected value is of another kind.
class VELMAR_API ExpSelect : public ExpAttribute {
 public:
  /// No value, no type name.
  ExpSelect() noexcept;
  ~ExpSelect() override;
  ExpSelect(const ExpSelect&) = delete;
  ExpSelect& operator=(const ExpSelect&) = delete;

  /// Selects a value of the kind.
  ///@{
  void SetExpReal(double value) override;
  void SetExpInteger(int value) override;
  ///@}
  void SetExpString(std::string stepText) override;
  void SetExpLink(int number) override;
  /// Appends to the selected aggregate, selecting a new one first where another kind or nothing is selected.
  void AddValue(ExpAttribute* value) override;
  void SetExpEnumeration(const std::string& name) override;
  void AddExpSelectTypeName(std::string name) override;

  /// Throws a std::string where nothing is selected and neither flag is set.
  std::string ToString() override;

  /// The selected value; throws where it is of another kind.
  ///@{
  double GetExpReal() override;
  int GetExpInteger() override;
  int GetExpLink() override;
  ///@}
  void Accept(ExpAttributeVisitor* visitor) override;

  /// The selected value; throws where it is of another kind.
  ///@{
  virtual std::string GetExpString();
  virtual std::list<ExpAttribute*>* GetExpAggregation();
  virtual int GetExpEnumeration();
  ///@}
  /// Whether the selected value is of the kind. LOGICAL and BOOLEAN values are enumerations.
  ///@{
  virtual bool IsExpReal();
  virtual bool IsExpInteger();
  virtual bool IsExpString();
  virtual bool IsExpLink();
  virtual bool IsExpAggregation();
  virtual bool IsExpEnumeration();
  ///@}
  /// The selected value; null while there is none.
  virtual ExpAttribute* GetExpSelectValue();

  /// Whether the outermost type name is `typeName` in upper case.
  bool CheckType(const std::string& typeName);
  /// For a reference: whether the entity it leads to in `admin` is of the type `typeName`; otherwise as above.
  bool CheckType(const std::string& typeName, ExpAbstractObjectAdmin* admin);

 private:
  friend class KeptToken;
  friend class ValueText;
  void Select(ExpAttribute* value, bool ExpSelect::*kind);
  void Require(bool kind, const char* message) const;

  ExpAttribute* value_;
  std::list<std::string> typeNames_;
  bool isReal_;
  bool isInteger_;
  bool isString_;
  bool isLink_;
  bool isAggregation_;
  bool isEnumeration_;
};

// ------------------------------------------------------------------------------------------------------- entities

/// The base class of every entity instance.
///
/// Holds the instance number (the n of #n) and a pointer to the description of its type, which
/// ExpEntityRuntimeType::CreateInstance sets; the attribute values live in the derived classes, which hand them out by
/// GetMember. An entity that was not created through its type must not be asked about its type. An entity created for
/// a store belongs to the instance list of its type and is deleted with the store's instances.
class VELMAR_API ExpEntity {
 public:
  /// The number of entities alive.
  static std::size_t instanceCount;

  ExpEntity() noexcept;
  virtual ~ExpEntity();

  /// Memory for single objects is that of a pool, see ReleaseUnusedMemory.
  ///@{
  static void* operator new(std::size_t size);
  static void* operator new(std::size_t, void* place) noexcept { return place; }
  static void* operator new(std::size_t size, std::align_val_t alignment) { return ::operator new(size, alignment); }
  static void operator delete(void* memory, std::size_t size) noexcept;
  static void operator delete(void*, void*) noexcept {}
  static void operator delete(void* memory, std::align_val_t alignment) noexcept { ::operator delete(memory, alignment); }
  ///@}

  /// The value at a position of the type's member names, from 0; null where there is none. The base has no members.
  virtual ExpAttribute* GetMember(int index);
  /// The value of the attribute of exactly this name; null where the type has none.
  virtual ExpAttribute* GetMember(const std::string& name);
  /// The attribute names in the order of their positions.
  virtual std::vector<std::string>* GetMemberNames();
  /// The EXPRESS name of the type, in upper case.
  virtual const std::string& GetExpClassName() const;
  /// All supertypes, qualified as "SCHEMA::NAME", the root first.
  virtual std::vector<std::string>* GetExpSuperClasses() const;
  /// The direct subtypes, qualified as "SCHEMA::NAME".
  virtual std::vector<std::string>* GetExpSubClasses() const;
  /// The number of inverse, or explicit, attributes that the type has.
  ///@{
  virtual int GetNofInverseMembers();
  virtual int GetNofExplicitMembers();
  ///@}
  /// The position of the first attribute that the type declares itself.
  virtual int GetExternalMappingStartIndex();
  /// What the type says: see ExpEntityRuntimeType.
  ///@{
  virtual int GetTypeNumberOfEntity();
  virtual bool InsertInObjTree() const;
  ///@}
  /// Sets the n of #n. Who holds the entity by its number is not told.
  virtual void SetEntityNumber(int number);
  /// -1 until a number is set.
  virtual int GetEntityNumber();

  /// The instance as a line of a DATA section: `#12 = CARTESIAN_POINT('', (0., 1.5, 2.));`. Without the number where it
  /// is 0 or less.
  virtual std::string ToString();
  /// Calls the visitor's operation for this type; the base calls none.
  virtual void Accept(ExpEntityVisitor* visitor);

 protected:
  /// What ExpFile::KeepEverything keeps beside the attributes is not copied.
  ExpEntity(const ExpEntity& other);
  /// As the copy constructor.
  ExpEntity& operator=(const ExpEntity& other);

  /// The description of the type; null before ExpEntityRuntimeType::CreateInstance has set it.
  ExpEntityRuntimeType* GetRuntimeType() const { return runtimeType_; }

 private:
  friend class ExpEntityRuntimeType;
  friend class KeptRecord;
  ExpEntityRuntimeType* runtimeType_;
  int number_;
  std::string text_;
  void* reserved_;  // the KeptRecord, owned; null mostly
};

/// Ascending instance numbers, nulls last: the order in which entity lists are sorted.
VELMAR_API bool Is_ID_smaller(ExpEntity* a, ExpEntity* b);
/// Pointer identity.
VELMAR_API bool Is_Reference_equal(ExpEntity* a, ExpEntity* b);

/// What holds entities by instance number.
class VELMAR_API ExpAbstractObjectAdmin {
 public:
  virtual ~ExpAbstractObjectAdmin();

  /// Writes the entity and all that it refers to, directly or not, one instance a line, the referenced ones first.
  virtual void DumpEntity(ExpEntity* entity, std::ostream& os);
  /// The same for the entity #number.
  virtual void DumpEntity(int number, std::ostream& os);

  /// The entity that a link leads to; null for a link that is not provided or omitted.
  virtual ExpEntity* GetEntity(ExpLink link);
  /// The entity that a link, or a select that holds one, leads to; null for every other value.
  virtual ExpEntity* GetEntity(ExpAttribute* value);
  /// The entity #number; null where there is none.
  virtual ExpEntity* GetEntity(int number) = 0;
  /// Stores the entity under a number, in place of whatever is there.
  virtual void AddEntity(int number, ExpEntity* entity) = 0;
  /// Hands out the next free instance number.
  virtual int CreateEntityNumber() = 0;
  /// The identity of the store, under which types record the instances created for it.
  virtual unsigned int GetAdminId() = 0;
  /// The size of the table of numbers, occupied or not.
  virtual std::size_t GetEntityVectorSize() = 0;
  /// Writes all entities, one a line.
  virtual void Write(std::ostream& os) = 0;
  /// Deletes the entities that were created for this store.
  virtual void DeleteEntities() = 0;
  /// DeleteEntities, and the table of numbers is empty.
  virtual void ClearEntityVector() = 0;
  /// ClearEntityVector, and the table has its first size again.
  virtual void ResetEntityVector() = 0;
  /// The highest instance number in use.
  virtual int GetMaxEntityNumber() = 0;

  /// Writes the message to the log, without a line end.
  void Log(const std::string& message);
};

/// A complex instance, `#n=(A(...)B(...));`: one entity per partial record (ISO 10303-21, external mapping).
///
/// Does not own its parts: like all entities they belong to the instance lists of their types.
class VELMAR_API ExpExternalMappingEntity : public ExpEntity {
 public:
  /// A new container without parts and number; the creation function of its type.
  static ExpEntity* New();

  ExpExternalMappingEntity();
  ~ExpExternalMappingEntity() override;

  /// Numbers the instance and all its parts, then lets every part take over the values of its supertypes' parts.
  void SetEntityNumber(int number) override;
  /// One line per part, in the order of their names, each with the attributes that the part's type declares itself.
  std::string ToString() override;
  void Accept(ExpEntityVisitor* visitor) override;

  /// Appends a part; null is ignored.
  virtual void AddEntity(ExpEntity* part);
  /// The parts in the order added.
  virtual std::vector<ExpEntity*>* GetEntities();
  /// The first part that was added under exactly this type name; null where there is none.
  virtual ExpEntity* GetEntityByName(std::string name);
  /// Copies the attribute values of every part into the inherited positions of the parts that are its subtypes.
  virtual void SolveEntities();

  /// Copies `source` into `target` where their kinds agree; an aggregate takes a copy of what is no aggregate as a
  /// further element. Does nothing otherwise, and never throws.
  void HandleParams(ExpAttribute* target, ExpAttribute* source);

 private:
  std::map<std::string, ExpEntity*> partsByName_;
  std::vector<ExpEntity*> parts_;
};

/// A store that can also create entities by type name; ExpFile is one.
class VELMAR_API ExpAbstractObjectProvider : public ExpAbstractObjectAdmin {
 public:
  ExpAbstractObjectProvider();
  ~ExpAbstractObjectProvider() override;

  /// The schema of the population, by its name or as a member of Schema.
  ///@{
  virtual std::string GetSchemaName() = 0;
  virtual void SetSchemaName(std::string name) = 0;
  virtual Schema GetSchema() const = 0;
  virtual void SetSchema(Schema schema) = 0;
  ///@}
  /// A new instance of the type without a number; null where the type is not known.
  virtual ExpEntity* CreateEntity(const std::string& typeName) = 0;
  using ExpAbstractObjectAdmin::Write;
  /// Writes the population to a file.
  virtual void Write(const std::string& fileName) = 0;

  /// A new instance of the type, numbered and stored; null, and no number used, where the type is not known.
  virtual ExpEntity* CreateAndAddEntity(const std::string& typeName);
  /// As above; `link` refers to the new instance afterwards.
  virtual ExpEntity* CreateAndAddEntity(const std::string& typeName, ExpLink& link);
  /// Appends the instances of a type, and with `withSubtypes` those of all its subtypes, each once, to `out`, and
  /// sorts `out` by instance number. The case of the name does not matter; an unknown name gives nothing.
  virtual void GetEntities(std::list<ExpEntity*>& out, const std::string& typeName, bool withSubtypes);
  /// Appends the complex instances to which the entities of `in` belong, sorted by instance number.
  /// Of repeats that follow each other, only the first is taken.
  virtual void GetExternalEntities(const std::vector<ExpEntity*>& in, std::list<ExpExternalMappingEntity*>& out);
  /// Appends what this store holds under the numbers of `in` to the list of its kind, sorted by number. Of repeats that
  /// follow each other, only the first is taken.
  virtual void SplitIntoSimpleAndExternalEntities(const std::vector<ExpEntity*>& in, std::list<ExpEntity*>& simple,
                                                  std::list<ExpExternalMappingEntity*>& external);

  /// The store to which an implementation may delegate; not owned here.
  virtual ExpAbstractObjectAdmin* GetAdaptedAdmin();
  /// Sets what GetAdaptedAdmin gives.
  virtual void SetAdaptedAdmin(ExpAbstractObjectAdmin* admin);

 protected:
  /// Collects instances for GetEntities: merges them into `out` in the order of the pointers.
  virtual void GetEntitiesProtected(std::list<ExpEntity*>& out, const std::string& typeName, bool withSubtypes);

 public:
  /// The schema in whose types entities are looked up; empty where it is that of GetSchemaName.
  virtual std::string GetEnforcedFactoryName() = 0;

 private:
  ExpAbstractObjectAdmin* adaptedAdmin_;
};

// ------------------------------------------------------------------------- managed objects and the utility registry

/// An object that is known to ExpObjectHandleAdmin for exactly as long as it lives.
class VELMAR_API ExpManagedObject {
 public:
  ExpManagedObject();
  virtual ~ExpManagedObject();
  /// "ExpManagedObject: " and the address.
  virtual std::string ToString();

  ExpManagedObject(const ExpManagedObject&) = delete;
  ExpManagedObject& operator=(const ExpManagedObject&) = delete;
};

/// The base of data that an application attaches to objects of the library.
class VELMAR_API ExpUserData : public ExpManagedObject {
 public:
  ExpUserData();
  ~ExpUserData() override;
  /// "ExpUserData: " and the address.
  std::string ToString() override;
};

/// Knows which managed objects are alive, so that a raw pointer can serve as a handle. Used by one thread at a time.
class VELMAR_API ExpObjectHandleAdmin {
 public:
  /// The one instance; never deleted.
  static ExpObjectHandleAdmin* m_admin;
  /// The one instance, made on the first call.
  static ExpObjectHandleAdmin* GetInstance();

  ExpObjectHandleAdmin();
  /// Deletes no object.
  virtual ~ExpObjectHandleAdmin();

  /// Called by the constructor and the destructor of managed objects.
  ///@{
  void RegisterObject(ExpManagedObject* object);
  void DeregisterObject(ExpManagedObject* object);
  ///@}
  /// Whether the pointer designates a managed object that is alive; the pointer is not followed.
  bool IsObjectValid(ExpManagedObject* object);
  /// Deletes all managed objects.
  void EraseAll();
  /// The text of every object, one a line, in the order of the addresses.
  std::string ToString();

 private:
  std::map<unsigned long, ExpManagedObject*> objects_;
  std::map<unsigned long, ExpManagedObject*>::iterator cursor_;
};

/// A slot for an object with services that the application defines; the library only keeps the pointer.
class VELMAR_API ExpUtility {
 public:
  /// What RegisterImplementation has registered.
  static ExpUtility* m_implementation;

  virtual ~ExpUtility();

  /// Registers `implementation`, or none with null, and returns what was registered before. Not owned.
  static ExpUtility* RegisterImplementation(ExpUtility* implementation);
  /// The registered object. With none, null if `allowNull`; otherwise throws std::runtime_error.
  static ExpUtility* GetInstance(bool allowNull);
};

/// The base of factories that register entity types.
class VELMAR_API ExpObjectFactory {
 public:
  virtual ~ExpObjectFactory();
  /// Registers the factory's types.
  virtual void Init();

  /// Appends `name` to `*names`, unless it is empty. With `startNew`, `names` is first set to a new list, which the
  /// caller owns; the list before is left alone.
  static void Add(std::vector<std::string>*& names, std::string name, bool startNew);
};

}  // namespace VELMAR
