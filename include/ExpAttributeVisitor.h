/// @file ExpAttributeVisitor.h
/// A visitor over attribute values.
#pragma once

#include "VelmarApi.h"

namespace VELMAR {

class ExpAggregation;
class ExpEnumeration;
class ExpInteger;
class ExpLink;
class ExpReal;
class ExpSelect;
class ExpString;

/// Receives a value by its kind; every operation of this base does nothing, so a visitor overrides what it needs.
///
/// ExpAttribute::Accept calls exactly one of these. LOGICAL and BOOLEAN values arrive at VisitExpEnumeration; an
/// aggregation is visited without its elements, which the visitor reaches through ExpAggregation::GetExpAggregation.
class VELMAR_API ExpAttributeVisitor {
 public:
  virtual ~ExpAttributeVisitor();
  /// The operation for a value of the kind. Called by ExpAttribute::Accept; the base does nothing.
  ///@{
  virtual void VisitExpReal(ExpReal* value);
  virtual void VisitExpInteger(ExpInteger* value);
  virtual void VisitExpString(ExpString* value);
  virtual void VisitExpLink(ExpLink* value);
  virtual void VisitExpAggregation(ExpAggregation* value);
  virtual void VisitExpEnumeration(ExpEnumeration* value);
  virtual void VisitExpSelect(ExpSelect* value);
  ///@}
};

}  // namespace VELMAR
