#include "LateBoundType.h"

#include <cstddef>
#include <new>
#include <type_traits>
#include <utility>

#include "ExpSchemaLibrary.h"
#include "LateBoundTypeMaker.h"
#include "VelmarClasses.h"

namespace VELMAR {

using Express::ValueKind;

namespace {

// A value of an enumeration type whose items are known at run time only.
class LateBoundEnumeration : public ExpEnumeration {
 public:
  explicit LateBoundEnumeration(const LateBoundItems* items) : items_(items) {}
  using ExpEnumeration::SetExpEnumeration;
  void SetExpEnumeration(const std::string& name) override { SetExpEnumeration(name, items_); }

 private:
  const LateBoundItems* items_;
};

// Calls `action` with a null pointer to the class of values of this kind.
template <class Action>
auto WithClassOf(ValueKind kind, Action action) {
  switch (kind) {
    case ValueKind::Real:
      return action(static_cast<ExpSchemaReal*>(nullptr));
    case ValueKind::Integer:
      return action(static_cast<ExpInteger*>(nullptr));
    case ValueKind::String:
      return action(static_cast<ExpString*>(nullptr));
    case ValueKind::Boolean:
      return action(static_cast<ExpBoolean*>(nullptr));
    case ValueKind::Logical:
      return action(static_cast<ExpLogical*>(nullptr));
    case ValueKind::Binary:
      return action(static_cast<ExpSchemaBinary*>(nullptr));
    case ValueKind::Enumeration:
      return action(static_cast<LateBoundEnumeration*>(nullptr));
    case ValueKind::Select:
      return action(static_cast<ExpSelect*>(nullptr));
    case ValueKind::Link:
      return action(static_cast<ExpLink*>(nullptr));
    case ValueKind::Aggregation:
      break;
  }
  return action(static_cast<ExpAggregation*>(nullptr));
}

}  // namespace

// ----------------------------------------------------------------------------------------------- the members

// The values of an instance stand behind each other in one block of memory, in the order of the members.
class LateBoundType::Members {
 public:
  explicit Members(bool isAbstract) : isAbstract_(isAbstract) {}

  void Add(LateBoundAttribute attribute, ValueKind kind, std::shared_ptr<const LateBoundItems> items) {
    places_.push_back({kind, attribute.derived, size_, std::move(items)});
    attributes_.push_back(std::move(attribute));
    size_ += WithClassOf(kind, [](auto* value) {
      using Value = std::remove_pointer_t<decltype(value)>;
      static_assert(alignof(Value) == alignof(void*), "a value may stand behind any other");
      return sizeof(Value);
    });
  }

  bool IsAbstract() const { return isAbstract_; }
  const std::vector<LateBoundAttribute>& Attributes() const { return attributes_; }
  bool Has(int index) const { return static_cast<unsigned int>(index) < places_.size(); }

  // A new block with empty values.
  std::byte* Create() const {
    auto* block = static_cast<std::byte*>(::operator new(size_));
    for (const Place& place : places_) {
      ExpAttribute* value = Construct(place, block + place.offset);
      if (place.omitted) value->SetOmitted(true);
    }
    return block;
  }

  // Every value begins with what it has of ExpAttribute.
  ExpAttribute* At(std::byte* block, int index) const {
    return std::launder(
        reinterpret_cast<ExpAttribute*>(block + places_[static_cast<std::size_t>(index)].offset));
  }

  void Delete(std::byte* block) const {
    for (std::size_t i = 0; i < places_.size(); ++i) At(block, static_cast<int>(i))->~ExpAttribute();
    ::operator delete(block);
  }

 private:
  struct Place {
    ValueKind kind;
    bool omitted;
    std::size_t offset;
    std::shared_ptr<const LateBoundItems> items;  // those of an enumeration
  };

  static ExpAttribute* Construct(const Place& place, std::byte* where) {
    return WithClassOf(place.kind, [&place, where](auto* value) -> ExpAttribute* {
      using Value = std::remove_pointer_t<decltype(value)>;
      if constexpr (std::is_same_v<Value, LateBoundEnumeration>) {
        return new (where) Value(place.items.get());
      } else {
        return new (where) Value;
      }
    });
  }

  bool isAbstract_;
  std::size_t size_ = 0;
  std::vector<Place> places_;
  std::vector<LateBoundAttribute> attributes_;
};

// ---------------------------------------------------------------------------------------------- the entities

// An instance of any late-bound type. It learns its type after it has been made, and so makes its members at
// their first use.
class LateBoundEntity final : public ExpEntity {
 public:
  static ExpEntity* New() { return new LateBoundEntity; }

  LateBoundEntity() = default;
  LateBoundEntity(const LateBoundEntity&) = delete;
  LateBoundEntity& operator=(const LateBoundEntity&) = delete;
  ~LateBoundEntity() override {
    if (values_ != nullptr) TypeMembers().Delete(values_);
  }

  using ExpEntity::GetMember;
  ExpAttribute* GetMember(int index) override {
    const LateBoundType::Members& members = TypeMembers();
    if (!members.Has(index)) return nullptr;
    if (values_ == nullptr) values_ = members.Create();
    return members.At(values_, index);
  }

 private:
  const LateBoundType::Members& TypeMembers() const {
    return *static_cast<const LateBoundType*>(GetRuntimeType())->members_;
  }

  std::byte* values_ = nullptr;
};

// ------------------------------------------------------------------------------------------------- the types

LateBoundType::LateBoundType(std::string name, std::string schema, int nofInverseMembers,
                             int externalMappingStartIndex, std::vector<std::string>* superClasses,
                             std::vector<std::string>* subClasses, std::vector<std::string>* memberNames,
                             int typeNumber, std::unique_ptr<const Members> members)
    : ExpEntityRuntimeType(std::move(name), std::move(schema), &LateBoundEntity::New,
                           static_cast<int>(memberNames->size()), nofInverseMembers,
                           externalMappingStartIndex,
                           /*insertInObjTree=*/false, superClasses, subClasses, memberNames, typeNumber),
      members_(std::move(members)) {}
LateBoundType::~LateBoundType() = default;

bool LateBoundType::IsAbstract() const { return members_->IsAbstract(); }
const std::vector<LateBoundAttribute>& LateBoundType::GetAttributes() const { return members_->Attributes(); }

// ------------------------------------------------------------------------------------------------- the maker

LateBoundTypeMaker::LateBoundTypeMaker(const Express::SchemaContents& contents, std::string registryName)
    : contents_(contents), registryName_(std::move(registryName)) {}

std::unique_ptr<LateBoundType> LateBoundTypeMaker::Make(const Express::Entity& entity) {
  Express::EntityDescription description = contents_.Describe(entity);
  std::vector<const Express::Entity*> family = Express::AncestorsOf(entity);
  family.push_back(&entity);
  auto members = std::make_unique<LateBoundType::Members>(entity.isAbstract);
  for (const Express::Slot& slot : Express::InternalMapping(entity)) {
    const Express::TypeExpression& type = *slot.attribute->type;
    members->Add(Describe(slot, family), Express::ValueKindOf(type), ItemsOf(type));
  }
  auto superClasses = std::make_unique<std::vector<std::string>>(Qualified(description.superTypes));
  superClasses->insert(superClasses->begin(), "VELMAR::ExpEntity");
  auto subClasses = std::make_unique<std::vector<std::string>>(Qualified(description.subTypes));
  auto memberNames = std::make_unique<std::vector<std::string>>(std::move(description.memberNames));
  return std::unique_ptr<LateBoundType>(
      new LateBoundType(std::move(description.name), registryName_, description.inverseMembers,
                        description.startIndex, superClasses.release(), subClasses.release(),
                        memberNames.release(), description.typeNumber, std::move(members)));
}

std::vector<std::string> LateBoundTypeMaker::Qualified(const std::vector<std::string>& names) const {
  std::vector<std::string> qualified;
  qualified.reserve(names.size() + 1);
  for (const std::string& name : names) qualified.push_back(registryName_ + "::" + name);
  return qualified;
}

// An attribute as the entity sees it that ends `family`, its supertypes before it.
LateBoundAttribute LateBoundTypeMaker::Describe(const Express::Slot& slot,
                                                const std::vector<const Express::Entity*>& family) const {
  const Express::Attribute* narrowest = slot.attribute;
  bool derived = false;
  for (const Express::Entity* owner : family) {
    for (const Express::Attribute& attribute : owner->attributes) {
      if (!attribute.redeclared || attribute.original != slot.attribute) continue;
      narrowest = &attribute;
      derived = derived || attribute.kind == Express::AttributeKind::Derived;
    }
  }
  return {slot.attribute->name.text, Express::UpperCase(contents_.NameOf(*slot.owner)),
          Express::TypeText(*narrowest->type), narrowest->optional, derived};
}

std::shared_ptr<const LateBoundItems> LateBoundTypeMaker::ItemsOf(const Express::TypeExpression& type) {
  const Express::DefinedType* enumeration = Express::EnumerationOf(type);
  if (enumeration == nullptr) return nullptr;
  std::shared_ptr<const LateBoundItems>& items = items_[enumeration];
  if (items == nullptr) {
    auto made = std::make_shared<LateBoundItems>();
    int number = 0;
    for (const Express::TypeItem& item : Express::AllItems(enumeration->underlying)) {
      made->emplace(Express::UpperCase(item.name.text), number++);
    }
    items = std::move(made);
  }
  return items;
}

}  // namespace VELMAR
