#include "ExpAttributeVisitor.h"

namespace VELMAR {

ExpAttributeVisitor::~ExpAttributeVisitor() = default;
void ExpAttributeVisitor::VisitExpReal(ExpReal*) {}
void ExpAttributeVisitor::VisitExpInteger(ExpInteger*) {}
void ExpAttributeVisitor::VisitExpString(ExpString*) {}
void ExpAttributeVisitor::VisitExpLink(ExpLink*) {}
void ExpAttributeVisitor::VisitExpAggregation(ExpAggregation*) {}
void ExpAttributeVisitor::VisitExpEnumeration(ExpEnumeration*) {}
void ExpAttributeVisitor::VisitExpSelect(ExpSelect*) {}

}  // namespace VELMAR
