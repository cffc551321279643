// The complex instances of real files: each record has the values that it inherits wherever copying them by
// position can give them, and docs/limits.md lists the combinations where it cannot.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <map>
#include <memory>
#include <set>
#include <sstream>
#include <string>
#include <typeinfo>
#include <vector>

#include "../c/CapturedLog.h"
#include "BundledSchemas.h"
#include "CorpusFiles.h"
#include "ExpCustomEntities.h"
#include "ExpFile.h"
#include "ExpRuntimeRegistry.h"

namespace {

using namespace VELMAR;
using VELMAR::TestData::CapturedLog;

// "COMBINATION | RECORD.attribute" and why the attribute lacks the value that the record which declares it
// has.
using Lacking = std::map<std::string, std::string>;

std::string Unqualified(const std::string& name) { return name.substr(name.find("::") + 2); }

// The name of the type that declares the attribute, for each inherited position: a type has the attributes of
// its supertypes, in their order, before its own.
std::vector<std::string> DeclaringTypes(const ExpEntity& part) {
  std::vector<std::string> declaring;
  for (const std::string& qualified : *part.GetExpSuperClasses()) {
    const ExpEntityRuntimeType* type = ExpRuntimeRegistry::GetInstance()->GetEntityRuntimeType(
        Unqualified(qualified), qualified.substr(0, qualified.find("::")));
    if (type == nullptr) continue;  // ExpEntity
    const int own = type->GetNofExplicitMembers() - type->GetExternalMappingStartIndex();
    declaring.insert(declaring.end(), static_cast<std::size_t>(own), Unqualified(qualified));
  }
  return declaring;
}

std::string TextOf(ExpAttribute& value) {
  try {
    return value.ToString();
  } catch (const std::string&) {
    return "unset";
  }
}

bool AreEqual(ExpAttribute& a, ExpAttribute& b) {
  return typeid(a) == typeid(b) && a.IsNotProvided() == b.IsNotProvided() && a.IsOmitted() == b.IsOmitted() &&
         TextOf(a) == TextOf(b);
}

bool IsOrHoldsSelect(ExpAttribute& value) {
  if (dynamic_cast<ExpSelect*>(&value) != nullptr) return true;
  auto* list = dynamic_cast<ExpAggregation*>(&value);
  if (list == nullptr) return false;
  return std::any_of(list->GetExpAggregation()->begin(), list->GetExpAggregation()->end(),
                     [](ExpAttribute* element) { return IsOrHoldsSelect(*element); });
}

// The position of an attribute among those that the type of the record declares itself; -1 where there is
// none.
int OwnPosition(ExpEntity& part, const std::string& attribute) {
  for (int i = part.GetExternalMappingStartIndex(); i < part.GetNofExplicitMembers(); ++i) {
    if ((*part.GetMemberNames())[static_cast<std::size_t>(i)] == attribute) return i;
  }
  return -1;
}

// Whether copying the value of a record leaves something in that of another. What is appended to an aggregate
// may be of any kind but a select.
bool Leaves(ExpAttribute& from, ExpAttribute& to) {
  if (IsOrHoldsSelect(from)) return false;
  return typeid(from) == typeid(to) || dynamic_cast<ExpAggregation*>(&to) != nullptr;
}

// Why copying by position cannot give an inherited value; empty where it can.
std::string WhyItCannot(ExpExternalMappingEntity& instance, ExpEntity& part, int position,
                        ExpEntity& declaring, int declaredAt) {
  if (declaredAt != position) return "position";
  if (IsOrHoldsSelect(*declaring.GetMember(declaredAt))) return "select";
  // Values are copied from one supertype after the other: what comes last stays, and aggregates keep
  // everything.
  ExpAttribute& value = *part.GetMember(position);
  std::vector<ExpEntity*> left;
  for (const std::string& qualified : *part.GetExpSuperClasses()) {
    ExpEntity* super = instance.GetEntityByName(Unqualified(qualified));
    if (super != nullptr && super->GetExternalMappingStartIndex() <= position &&
        position < super->GetNofExplicitMembers() && Leaves(*super->GetMember(position), value)) {
      left.push_back(super);
    }
  }
  const bool isKept = left.size() == 1 || dynamic_cast<ExpAggregation*>(&value) == nullptr;
  return isKept && left.back() == &declaring ? "" : "position";
}

// Looks at all records of an instance: what a record must have it has, and what it cannot have is noted.
void Check(ExpExternalMappingEntity& instance, const std::string& schema, Lacking& lacking, int& compared) {
  std::set<std::string> names;
  for (ExpEntity* part : *instance.GetEntities()) names.insert(part->GetExpClassName());
  std::string combination;
  for (const std::string& name : names) combination += name + ' ';

  for (ExpEntity* part : *instance.GetEntities()) {
    const std::vector<std::string> declaringTypes = DeclaringTypes(*part);
    const int inherited = part->GetExternalMappingStartIndex();
    ASSERT_EQ(declaringTypes.size(), static_cast<std::size_t>(inherited)) << part->GetExpClassName();
    if (inherited == 0) continue;
    const std::unique_ptr<ExpEntity> fresh(ExpRuntimeRegistry::GetInstance()
                                               ->GetEntityRuntimeType(part->GetExpClassName(), schema)
                                               ->CreateInstance(-1));
    for (int i = 0; i < inherited; ++i) {
      const std::string& attribute = (*part->GetMemberNames())[static_cast<std::size_t>(i)];
      const std::string where = combination + "| " + part->GetExpClassName() + '.' + attribute;
      // Attributes that the type of the record derives have no value.
      if (fresh->GetMember(i)->IsOmitted() && part->GetMember(i)->IsOmitted()) continue;
      ExpEntity* declaring = instance.GetEntityByName(declaringTypes[static_cast<std::size_t>(i)]);
      if (declaring == nullptr) {
        lacking[where] = "record";
        continue;
      }
      const int declaredAt = OwnPosition(*declaring, attribute);
      ASSERT_GE(declaredAt, 0) << where;
      const std::string why = WhyItCannot(instance, *part, i, *declaring, declaredAt);
      if (why.empty()) {
        EXPECT_TRUE(AreEqual(*part->GetMember(i), *declaring->GetMember(declaredAt)))
            << where << ": " << TextOf(*part->GetMember(i)) << " is not "
            << TextOf(*declaring->GetMember(declaredAt)) << " in\n"
            << instance.ToString();
        ++compared;
      } else {
        lacking[where] = why;
      }
    }
  }
}

// The words of a cell, without what makes them code and a list.
std::vector<std::string> Words(std::string cell) {
  cell.erase(std::remove_if(cell.begin(), cell.end(), [](char c) { return c == '`' || c == ','; }),
             cell.end());
  std::istringstream words(cell);
  return {std::istream_iterator<std::string>(words), {}};
}

// The table in docs/limits.md: the records of an instance, and their attributes that lack a value for each
// reason.
Lacking Documented() {
  Lacking documented;
  std::ifstream in(VELMAR_LIMITS);
  bool isThere = false;
  for (std::string line; std::getline(in, line);) {
    if (line.compare(0, 3, "## ") == 0) isThere = line == "## Complex instances";
    if (!isThere || line.compare(0, 3, "| `") != 0) continue;
    std::istringstream row(line);
    std::string cell;
    std::getline(row, cell, '|');  // what stands before the first bar
    std::getline(row, cell, '|');
    std::string combination;
    for (const std::string& name : Words(cell)) combination += name + ' ';
    for (const char* why : {"position", "select"}) {
      std::getline(row, cell, '|');
      for (const std::string& attribute : Words(cell)) documented[combination + "| " + attribute] = why;
    }
  }
  return documented;
}

TEST(ComplexInstances, OfTheCorpusHaveAllInheritedValuesButThoseThatTheDocumentationLists) {
  const std::vector<std::string> files = FilesOf({""});
  if (files.front().empty()) GTEST_SKIP() << "there is no corpus at " << Corpus();
  LoadBundledSchemas();
  for (const char* schema :
       {"CONFIG_CONTROL_DESIGN", "AP203_E2", "AUTOMOTIVE_DESIGN", "AP242", "STEP_IR_AIC"}) {
    if (!ExpRuntimeRegistry::GetInstance()->IsSchemaRegistered(schema)) {
      GTEST_SKIP() << "this build leaves the library of " << schema << " out";
    }
  }
  Lacking lacking;
  int instances = 0;
  int compared = 0;
  for (const std::string& name : files) {
    SCOPED_TRACE(name);
    CapturedLog log;
    ExpFile file;
    file.Read((Corpus() / name).string());
    if (file.GetMaxEntityNumber() > 5000000)
      continue;  // few instances with great numbers; none of them is complex
    for (int number = 1; number <= file.GetMaxEntityNumber(); ++number) {
      auto* complex = dynamic_cast<ExpExternalMappingEntity*>(file.GetEntity(number));
      if (complex == nullptr) continue;
      Check(*complex, file.GetEnforcedFactoryName(), lacking, compared);
      ++instances;
    }
  }
  EXPECT_GE(instances, 700);
  EXPECT_GE(compared, 5000);
  RecordProperty("instances", instances);
  RecordProperty("compared", compared);
  EXPECT_EQ(lacking, Documented());
}

}  // namespace
