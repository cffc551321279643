/// @file AddOwned.h
/// For the library itself: hands a new value to its aggregate.
#pragma once

#include <memory>

#include "VelmarClasses.h"

namespace VELMAR {

/// Makes `aggregate` the owner of `value` and returns it. Where the aggregate does not take it, the value is deleted and the
/// exception goes on.
template <class Value>
Value* AddOwned(ExpAttribute& aggregate, std::unique_ptr<Value> value) {
  aggregate.AddValue(value.get());
  return value.release();
}

}  // namespace VELMAR
