#include "ExpSchemaLibrary.h"

#include <cstring>

#include "ExpRuntimeRegistry.h"
#include "ValueText.h"

namespace VELMAR {

std::string ExpSchemaReal::ToString() {
  std::string text;
  return ValueText::AppendMarker(text, *this) ? text : ExpReal::ToString();
}

std::string ExpSchemaBinary::ToString() { return IsOmitted() ? "*" : "$"; }

namespace {

// The names, each behind the prefix.
std::vector<std::string>* Split(const char* names, const std::string& prefix) {
  auto* list = new std::vector<std::string>;
  while (*names != '\0') {
    const std::size_t length = std::strcspn(names, " ");
    list->emplace_back(prefix).append(names, length);
    names += length;
    if (*names == ' ') ++names;
  }
  return list;
}

}  // namespace

void RegisterEntityTypes(const char* registrySchemaName, const ExpEntityTypeRow* rows, std::size_t count) {
  ExpRuntimeRegistry* registry = ExpRuntimeRegistry::GetInstance();
  constexpr bool kInsertInObjTree = false;
  const std::string qualifier = std::string(registrySchemaName) + "::";
  for (const ExpEntityTypeRow* row = rows; row != rows + count; ++row) {
    std::vector<std::string>* superClasses = Split(row->superClasses, qualifier);
    superClasses->insert(superClasses->begin(), "VELMAR::ExpEntity");
    registry->RegisterEntityRuntimeType(
        new ExpEntityRuntimeType(row->name, registrySchemaName, row->create, row->explicitMembers,
                                 row->inverseMembers, row->startIndex, kInsertInObjTree, superClasses,
                                 Split(row->subClasses, qualifier), Split(row->memberNames, ""),
                                 row->typeNumber),
        "");
  }
}

}  // namespace VELMAR
