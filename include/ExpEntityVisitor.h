/// @file ExpEntityVisitor.h
/// The base of visitors over entity instances.
#pragma once

#include <string>

#include "ExpLogging.h"
#include "VelmarApi.h"

namespace VELMAR {

class ExpAbstractObjectAdmin;
class ExpEntity;
class ExpExternalMappingEntity;

/// Receives entities by their type; schema libraries add an operation per entity type in derived classes.
///
/// Keeps a store in which references can be resolved; the store is not owned and may be null.
class VELMAR_API ExpEntityVisitor {
 public:
  /// A visitor without a store.
  ExpEntityVisitor();
  /// A visitor that resolves references in `admin`, which must outlive it.
  explicit ExpEntityVisitor(ExpAbstractObjectAdmin* admin);
  virtual ~ExpEntityVisitor();

  /// A complex instance; the base does nothing with it.
  virtual void VisitExpExternalMappingEntity(ExpExternalMappingEntity* entity);

  /// The store in which references are resolved; null where there is none. Not owned.
  ///@{
  ExpAbstractObjectAdmin* GetAdmin();
  void SetAdmin(ExpAbstractObjectAdmin* admin);
  ///@}

  /// The type number of the entity #number; -1 without a store or for numbers below 1. The entity must exist.
  int GetTypeOfEntity(int number);

  /// Does nothing; derived classes hide it to report.
  void Log(const std::string& message, ExpLogLevel level);
  /// Does nothing; derived classes hide it to report.
  void Log(ExpEntity* entity, const std::string& message, ExpLogLevel level);

 private:
  ExpAbstractObjectAdmin* admin_;

 protected:
  /// Free for derived classes.
  std::string text_;
};

}  // namespace VELMAR
