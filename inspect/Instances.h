/// @file Instances.h
/// Instances with the names of their attributes.
#pragma once

#include <map>
#include <set>
#include <string>
#include <vector>

#include "Input.h"
#include "Population.h"
#include "Progress.h"

namespace velmar {

/// An attribute as a record has it.
struct AttributeView {
  const std::string* name;      ///< the position, from "1" on, of a parameter that stands for no attribute
  VELMAR::ExpAttribute* value;  ///< null where there is none
};

/// A record: an instance, or one part of a complex one, with the attributes that stand in this part.
struct RecordView {
  const std::string* type;
  std::vector<AttributeView> attributes;
};

/// An instance. Points into its population and lives no longer.
struct InstanceView {
  int number;
  std::string type;  ///< "CARTESIAN_POINT", "(LENGTH_UNIT NAMED_UNIT SI_UNIT)"
  bool isComplex;
  std::vector<RecordView> records;  ///< one, or the parts in the order of the file
};

/// The type of an entity, for a complex instance the names of its parts in their order, in parentheses.
std::string TypeName(VELMAR::ExpEntity& entity);

/// What the record has at a position from 0 on: the value of the attribute, or that which was kept because the attribute does not take
/// it; behind the last attribute what is superfluous. Null where there is nothing.
VELMAR::ExpAttribute* ValueAt(VELMAR::ExpEntity& record, int index);

/// The name of the attribute at a position; behind the last one the position in a record that begins at `begin`, from "1" on.
const std::string& AttributeName(VELMAR::ExpEntity& record, int index, int begin);

/// The instance that is #n; the entity is not null.
InstanceView ViewOf(VELMAR::ExpEntity& entity);

/// Where the instances of these numbers begin in the file. Goes through the whole file. Throws
/// std::runtime_error where it cannot be read.
std::map<int, Place> FindPlaces(const std::string& path, const std::set<int>& numbers, const Progress& progress = {});

/// The number of "#12" or "12". Throws std::invalid_argument for what is no number of an instance.
int ParseInstanceNumber(const std::string& text);

}  // namespace velmar
