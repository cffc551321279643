// What the schema libraries register, compared entity by entity and attribute by attribute with tables of
// what the published schemas declare, where these lie beside the repository. Nothing of the EXPRESS front end
// takes part.

#include <gmock/gmock.h>

#include <algorithm>
#include <fstream>
#include <map>
#include <memory>
#include <set>
#include <sstream>

#include "BundledSchemas.h"
#include "ExpRuntimeRegistry.h"
#include "ExpSchemaLibrary.h"

namespace VELMAR {
namespace {

using Strings = std::vector<std::string>;

Strings Split(const std::string& text, const std::string& separator) {
  Strings parts;
  if (text.empty()) return parts;
  std::size_t begin = 0;
  for (std::size_t end; (end = text.find(separator, begin)) != std::string::npos;
       begin = end + separator.size()) {
    parts.push_back(text.substr(begin, end - begin));
  }
  parts.push_back(text.substr(begin));
  return parts;
}

std::string Upper(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(),
                 [](char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; });
  return text;
}

struct FactAttribute {
  std::string name;
  std::string type;
};

struct FactEntity {
  Strings supertypes;
  std::vector<FactAttribute> attributes;
  std::set<std::string> derived;  // "entity.attribute"
  int inverse;
};

// The tables break off behind "list of" where UNIQUE follows. These attributes stand behind such a place.
const std::map<std::string, std::string> kExplicitBehindUnique = {
    {"chain_based_item_identified_representation_usage", "undirected_link : list"},
    {"characterized_chain_based_item_within_representation", "undirected_link : list"},
    {"class", "defined_types : set"},
    {"counterbore_hole_definition",
     "drilled_hole_depth : positive_length_measure_with_unit; "
     "drilled_hole_depth_tolerance : tolerance_value; "
     "drilled_hole_diameter : positive_length_measure_with_unit; "
     "drilled_hole_diameter_tolerance : tolerance_value_or_limits_and_fits; through_hole : boolean"},
    {"dictionary",
     "a_posteriori_semantic_relationships : set; names : item_names; note : note_type; remark : remark_type"},
    {"explicit_model_class_extension", "population : list; table_like : boolean"},
    {"functional_view_class", "view_properties : list"},
    {"level_type", "value_type : simple_type"},
};
const std::map<std::string, std::string> kDerivedListsOfUnique = {
    {"abstracted_expression_function", "quantifier_expression.variables"},
    {"definite_integral_expression", "quantifier_expression.variables"},
    {"functional_view_class", "class.described_by"},
    {"non_instantiable_functional_view_class", "functional_view_class.view_properties"},
    {"oriented_path", "path.edge_list"},
};

// What the tables of a schema say, that of its newest edition first: entities and types by name.
struct Facts {
  std::map<std::string, FactEntity> entities;
  std::map<std::string, std::string> types;

  explicit Facts(const Strings& tables) {
    for (const std::string& table : tables) Add(Facts(table));
  }

  void Add(Facts earlier) {
    entities.merge(earlier.entities);
    types.merge(earlier.types);
  }

  explicit Facts(const std::string& name) {
    std::ifstream in(std::string(VELMAR_TEST_SHARED) + "/schemas/facts/" + name);
    for (std::string line; std::getline(in, line);) {
      Strings fields = Split(line, "\t");
      if (fields[0] == "type") types[fields[1]] = fields[2];
      if (fields[0] != "entity") continue;
      fields.resize(8);
      FactEntity& entity = entities[fields[1]];
      entity.supertypes = Split(fields[3], ", ");
      const bool breaksOff = fields[4].size() > 3 && fields[4].compare(fields[4].size() - 3, 3, " of") == 0;
      const auto behind = kExplicitBehindUnique.find(fields[1]);
      if (breaksOff && behind != kExplicitBehindUnique.end()) fields[4] += "; " + behind->second;
      const auto derivedList = kDerivedListsOfUnique.find(fields[1]);
      if (derivedList != kDerivedListsOfUnique.end()) entity.derived.insert(derivedList->second);
      for (const std::string& attribute : Split(fields[4], "; ")) {
        const std::size_t colon = attribute.find(" : ");
        entity.attributes.push_back({attribute.substr(0, colon), attribute.substr(colon + 3)});
      }
      for (const std::string& attribute : Split(fields[5], "; ")) {
        const std::size_t star = attribute.find(" : * ");
        if (star != std::string::npos) entity.derived.insert(attribute.substr(0, star));
      }
      entity.inverse = static_cast<int>(Split(fields[6], "; ").size());
    }
  }

  void Ancestors(const std::string& name, Strings& found) const {
    for (const std::string& supertype : entities.at(name).supertypes) {
      if (std::find(found.begin(), found.end(), supertype) != found.end()) continue;
      Ancestors(supertype, found);
      if (std::find(found.begin(), found.end(), supertype) == found.end()) found.push_back(supertype);
    }
  }

  // The "entity.attribute" of a redeclaration may name an entity that redeclares the attribute itself. This names
  // the one that declares it.
  std::string Declaration(const std::string& redeclared) const {
    const Strings names = Split(redeclared, ".");
    Strings owners;
    Ancestors(names[0], owners);
    for (const std::string& owner : owners) {
      for (const FactAttribute& attribute : entities.at(owner).attributes) {
        if (attribute.name == names[1]) return owner + '.' + names[1];
      }
    }
    return redeclared;
  }

  // The word that decides which class holds a value of the type.
  std::string Kind(std::string type) const {
    if (type.compare(0, 9, "optional ") == 0) type.erase(0, 9);
    const std::string word = type.substr(0, type.find(' '));
    const auto named = types.find(word);
    if (named != types.end()) return Kind(named->second);
    return entities.count(word) ? "entity" : word;
  }
};

bool Fits(ExpAttribute* value, const std::string& kind) {
  if (kind == "real" || kind == "number") return dynamic_cast<ExpSchemaReal*>(value);
  if (kind == "integer") return dynamic_cast<ExpInteger*>(value);
  if (kind == "string") return dynamic_cast<ExpString*>(value);
  if (kind == "boolean") return dynamic_cast<ExpBoolean*>(value);
  if (kind == "logical") return dynamic_cast<ExpLogical*>(value);
  if (kind == "binary") return dynamic_cast<ExpSchemaBinary*>(value);
  if (kind == "select") return dynamic_cast<ExpSelect*>(value);
  if (kind == "entity") return dynamic_cast<ExpLink*>(value);
  if (kind == "enumeration") {
    return dynamic_cast<ExpEnumeration*>(value) && !dynamic_cast<ExpBoolean*>(value) &&
           !dynamic_cast<ExpLogical*>(value);
  }
  const bool isAggregate = kind == "set" || kind == "list" || kind == "bag" || kind == "array";
  return isAggregate && dynamic_cast<ExpAggregation*>(value);
}

// A schema library with its tables.
struct Library {
  Strings tables;
  const char* registryName;
  std::size_t entities;
  std::size_t types;
};

std::ostream& operator<<(std::ostream& out, const Library& library) { return out << library.registryName; }

class EveryLibrary : public testing::TestWithParam<Library> {
 protected:
  void SetUp() override {
    LoadBundledSchemas();
    if (!ExpRuntimeRegistry::GetInstance()->IsSchemaRegistered(GetParam().registryName))
      GTEST_SKIP() << "this build leaves the library out";
    if (facts_.entities.empty())
      GTEST_SKIP() << "no table " << GetParam().tables[0] << " beside the repository";
  }

  ExpEntityRuntimeType* Type(const std::string& name) const {
    ExpEntityRuntimeType* type =
        ExpRuntimeRegistry::GetInstance()->GetEntityRuntimeType(Upper(name), GetParam().registryName);
    EXPECT_NE(type, nullptr) << name;
    EXPECT_EQ(type ? type->GetSchema() : "", GetParam().registryName) << name;
    return type;
  }

  std::string Qualified(const std::string& name) const {
    return std::string(GetParam().registryName) + "::" + Upper(name);
  }

  const Facts facts_{GetParam().tables};
};

TEST_P(EveryLibrary, TableHasTheKnownNumberOfRows) {
  EXPECT_EQ(facts_.entities.size(), GetParam().entities);
  EXPECT_EQ(facts_.types.size(), GetParam().types);
}

TEST_P(EveryLibrary, RegistersTheEntitiesOfTheTableAndNoOthers) {
  std::ostringstream report;
  ExpRuntimeRegistry::GetInstance()->DumpRegisteredEntityTypes(report);
  std::istringstream lines(report.str());
  std::set<std::string> registered;
  for (std::string name, colons, schema, line; std::getline(lines, line);) {
    if (std::istringstream(line) >> name >> colons >> schema && schema == GetParam().registryName)
      registered.insert(name);
  }
  std::set<std::string> expected;
  for (const auto& [name, entity] : facts_.entities) expected.insert(Upper(name));
  EXPECT_EQ(registered, expected);
}

TEST_P(EveryLibrary, AttributeNamesStandInPart21Order) {
  for (const auto& [name, entity] : facts_.entities) {
    ExpEntityRuntimeType* type = Type(name);
    ASSERT_NE(type, nullptr) << name;
    Strings owners;
    facts_.Ancestors(name, owners);
    Strings expected;
    for (const std::string& owner : owners) {
      for (const FactAttribute& attribute : facts_.entities.at(owner).attributes)
        expected.push_back(attribute.name);
    }
    EXPECT_EQ(type->GetExternalMappingStartIndex(), static_cast<int>(expected.size())) << name;
    for (const FactAttribute& attribute : entity.attributes) expected.push_back(attribute.name);
    EXPECT_EQ(*type->GetMemberNames(), expected) << name;
    EXPECT_EQ(type->GetNofExplicitMembers(), static_cast<int>(expected.size())) << name;
  }
}

TEST_P(EveryLibrary, MembersAreOfTheClassOfTheirType) {
  for (const auto& [name, entity] : facts_.entities) {
    const std::unique_ptr<ExpEntity> instance(Type(name)->CreateInstance(-1));
    Strings owners;
    facts_.Ancestors(name, owners);
    owners.push_back(name);
    int index = 0;
    for (const std::string& owner : owners) {
      for (const FactAttribute& attribute : facts_.entities.at(owner).attributes) {
        EXPECT_TRUE(Fits(instance->GetMember(index), facts_.Kind(attribute.type)))
            << name << '.' << attribute.name << " : " << attribute.type;
        ++index;
      }
    }
  }
}

TEST_P(EveryLibrary, SupertypesAndSubtypesAgree) {
  std::map<std::string, std::set<std::string>> subtypes;
  for (const auto& [name, entity] : facts_.entities) {
    for (const std::string& supertype : entity.supertypes) subtypes[supertype].insert(Qualified(name));
  }
  for (const auto& [name, entity] : facts_.entities) {
    Strings ancestors;
    facts_.Ancestors(name, ancestors);
    Strings expected{"VELMAR::ExpEntity"};
    for (const std::string& ancestor : ancestors) expected.push_back(Qualified(ancestor));
    EXPECT_EQ(*Type(name)->GetSuperClasses(), expected) << name;
    const Strings& found = *Type(name)->GetSubClasses();
    EXPECT_EQ(std::set<std::string>(found.begin(), found.end()), subtypes[name]) << name;
    EXPECT_EQ(found.size(), subtypes[name].size()) << name;
  }
}

TEST_P(EveryLibrary, InverseAttributesAreCounted) {
  for (const auto& [name, entity] : facts_.entities) {
    Strings ancestors;
    facts_.Ancestors(name, ancestors);
    int expected = entity.inverse;
    for (const std::string& ancestor : ancestors) expected += facts_.entities.at(ancestor).inverse;
    EXPECT_EQ(Type(name)->GetNofInverseMembers(), expected) << name;
  }
}

TEST_P(EveryLibrary, ExactlyTheDerivedAttributesAreOmitted) {
  std::size_t omitted = 0;
  for (const auto& [name, entity] : facts_.entities) {
    std::set<std::string> derived;
    Strings owners;
    facts_.Ancestors(name, owners);
    owners.push_back(name);
    for (const std::string& owner : owners) {
      for (const std::string& redeclared : facts_.entities.at(owner).derived)
        derived.insert(facts_.Declaration(redeclared));
    }
    const std::unique_ptr<ExpEntity> instance(Type(name)->CreateInstance(-1));
    int index = 0;
    for (const std::string& owner : owners) {
      for (const FactAttribute& attribute : facts_.entities.at(owner).attributes) {
        const bool isDerived = derived.count(owner + '.' + attribute.name) > 0;
        EXPECT_EQ(instance->GetMember(index)->IsOmitted(), isDerived) << name << '.' << attribute.name;
        omitted += isDerived;
        ++index;
      }
    }
  }
  EXPECT_GT(omitted, 0u);
}

INSTANTIATE_TEST_SUITE_P(
    Facts, EveryLibrary,
    testing::Values(
        Library{{"ap203.tsv"}, "CONFIG_CONTROL_DESIGN", 254, 69},
        Library{{"ap203e2.tsv"}, "AP203_E2", 1001, 248},
        Library{{"ap214e3.tsv"}, "AUTOMOTIVE_DESIGN", 915, 192},
        Library{{"ap242e4.tsv", "ap242e3.tsv", "ap242e2.tsv", "ap242e1.tsv"}, "AP242", 2417, 533},
        // The types of AP242 once more, under the name where types are looked for that other schemas lack.
        Library{{"ap242e4.tsv", "ap242e3.tsv", "ap242e2.tsv", "ap242e1.tsv"}, "STEP_IR_AIC", 2417, 533},
        Library{{"plib25.tsv"}, "ISO13584_25_IEC61360_5_LIBRARY_IMPLICIT_SCHEMA", 218, 117}),
    [](const auto& info) { return std::string(info.param.registryName); });

}  // namespace
}  // namespace VELMAR
