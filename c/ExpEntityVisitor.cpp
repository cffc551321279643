#include "ExpEntityVisitor.h"

#include "VelmarClasses.h"

namespace VELMAR {

ExpEntityVisitor::ExpEntityVisitor() : admin_(nullptr) {}
ExpEntityVisitor::ExpEntityVisitor(ExpAbstractObjectAdmin* admin) : admin_(admin) {}
ExpEntityVisitor::~ExpEntityVisitor() = default;

void ExpEntityVisitor::VisitExpExternalMappingEntity(ExpExternalMappingEntity* entity) {
  Log(entity, "not implemented so far", ExpLogMessage);
}

ExpAbstractObjectAdmin* ExpEntityVisitor::GetAdmin() { return admin_; }
void ExpEntityVisitor::SetAdmin(ExpAbstractObjectAdmin* admin) { admin_ = admin; }

int ExpEntityVisitor::GetTypeOfEntity(int number) {
  if (admin_ == nullptr || number <= 0) return -1;
  return admin_->GetEntity(number)->GetTypeNumberOfEntity();
}

void ExpEntityVisitor::Log(const std::string&, ExpLogLevel) {}
void ExpEntityVisitor::Log(ExpEntity*, const std::string&, ExpLogLevel) {}

}  // namespace VELMAR
