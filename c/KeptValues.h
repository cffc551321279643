/// @file KeptValues.h
/// For the library itself: where reading puts what the classes of a schema have no place for, when it keeps everything.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "VelmarClasses.h"

namespace VELMAR {

/// A value that is kept as its token: a BINARY, an INTEGER beyond 32 bits, and `$` and `*` where they are elements.
///
/// The last two have the flags that an attribute has. Visitors pass over all of them.
class KeptToken final : public ExpAttribute {
 public:
  explicit KeptToken(std::string text);
  std::string ToString() override { return text_; }

  /// A new one with the same text.
  std::unique_ptr<KeptToken> Copy() const { return std::make_unique<KeptToken>(text_); }

  /// Selects `value`, whose kind is none that a select has an operation for.
  static void SelectIn(ExpSelect& select, std::unique_ptr<KeptToken> value);

 private:
  std::string text_;
};

/// What the record of an entity had and the entity's own attributes could not take. Belongs to the entity.
class KeptRecord {
 public:
  /// Null where there is nothing, which is nearly always so.
  static KeptRecord* Find(const ExpEntity& entity) { return static_cast<KeptRecord*>(entity.reserved_); }
  /// That of the entity, made where there is none.
  static KeptRecord& Of(ExpEntity& entity);

  /// The value kept for a position; null where there is none.
  ExpSelect* Find(int index) const;
  /// That value, made where there is none.
  ExpSelect& At(int index) { return values_[index]; }
  /// What is written at a position: the entity's own value, unless that is not provided and another one is kept.
  ExpAttribute* InPlaceOf(ExpAttribute* own, int index) const;
  /// The values from `index` on, by position.
  std::pair<std::map<int, ExpSelect>::iterator, std::map<int, ExpSelect>::iterator> From(int index) {
    return {values_.lower_bound(index), values_.end()};
  }

  bool isUserDefined = false;  ///< whether `!` stands before the type name

 private:
  std::map<int, ExpSelect> values_;
};

/// An instance of a type that the provider does not know: its name, and its parameters as selects, which hold anything.
///
/// The member names are the positions, from "1" on. All instances have one runtime type, which nobody finds by a name.
class UnknownEntity final : public ExpEntity {
 public:
  static ExpEntity* New();
  /// A new instance that belongs to the store `adminId`. Of user-defined types the name begins with `!`.
  static UnknownEntity* Create(const std::string& name, int adminId);
  /// The type of all instances; null where there has not been any.
  static ExpEntityRuntimeType* Type() { return type_; }
  /// The records of the HEADER section that belong to the store, in their order.
  static std::vector<ExpEntity*> HeaderRecords(unsigned int adminId);

  ExpAttribute* GetMember(int index) override;
  ExpAttribute* GetMember(const std::string& name) override;
  std::vector<std::string>* GetMemberNames() override { return &names_; }
  const std::string& GetExpClassName() const override { return name_; }
  int GetNofExplicitMembers() override { return static_cast<int>(parameters_.size()); }

  /// Appends a parameter, to be set.
  ExpSelect* AddParameter();

  bool isInHeader = false;  ///< whether it is a record of the HEADER section

 private:
  static ExpEntityRuntimeType* type_;

  std::string name_;
  std::vector<std::unique_ptr<ExpSelect>> parameters_;
  std::vector<std::string> names_;
};

}  // namespace VELMAR
