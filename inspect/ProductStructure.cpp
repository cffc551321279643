#include "ProductStructure.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <limits>
#include <map>
#include <memory>
#include <set>
#include <tuple>
#include <unordered_map>
#include <utility>

#include "Checking.h"
#include "ExpUtilities.h"
#include "NumberRules.h"
#include "Part21Source.h"
#include "Population.h"
#include "Wording.h"
#include "WrittenInstances.h"

namespace velmar {

namespace {

// What there is to know of product structures where the schema of a file is not known.
constexpr const char* kCommonEntities = R"(
SCHEMA product_structure;
ENTITY product; id : STRING; name : STRING; description : STRING; frame_of_reference : STRING; END_ENTITY;
ENTITY product_definition_formation; id : STRING; description : STRING; of_product : product; END_ENTITY;
ENTITY product_definition_formation_with_specified_source SUBTYPE OF (product_definition_formation);
  make_or_buy : STRING; END_ENTITY;
ENTITY product_definition; id : STRING; description : STRING; formation : product_definition_formation;
  frame_of_reference : STRING; END_ENTITY;
ENTITY product_definition_with_associated_documents SUBTYPE OF (product_definition); documentation_ids : STRING; END_ENTITY;
ENTITY product_definition_relationship; id : STRING; name : STRING; description : STRING;
  relating_product_definition : product_definition; related_product_definition : product_definition; END_ENTITY;
ENTITY product_definition_usage SUBTYPE OF (product_definition_relationship); END_ENTITY;
ENTITY assembly_component_usage SUBTYPE OF (product_definition_usage); reference_designator : STRING; END_ENTITY;
ENTITY next_assembly_usage_occurrence SUBTYPE OF (assembly_component_usage); END_ENTITY;
ENTITY promissory_usage_occurrence SUBTYPE OF (assembly_component_usage); END_ENTITY;
ENTITY quantified_assembly_component_usage SUBTYPE OF (assembly_component_usage); quantity : measure_with_unit; END_ENTITY;
ENTITY specified_higher_usage_occurrence SUBTYPE OF (assembly_component_usage);
  upper_usage : assembly_component_usage; next_usage : next_assembly_usage_occurrence; END_ENTITY;
ENTITY property_definition; name : STRING; description : STRING; definition : STRING; END_ENTITY;
ENTITY product_definition_shape SUBTYPE OF (property_definition); END_ENTITY;
ENTITY property_definition_representation; definition : property_definition; used_representation : STRING; END_ENTITY;
ENTITY shape_definition_representation SUBTYPE OF (property_definition_representation); END_ENTITY;
ENTITY representation_relationship; name : STRING; description : STRING; rep_1 : STRING; rep_2 : STRING; END_ENTITY;
ENTITY representation_relationship_with_transformation SUBTYPE OF (representation_relationship);
  transformation_operator : STRING; END_ENTITY;
ENTITY shape_representation_relationship SUBTYPE OF (representation_relationship); END_ENTITY;
ENTITY measure_with_unit; value_component : NUMBER; unit_component : STRING; END_ENTITY;
ENTITY length_measure_with_unit SUBTYPE OF (measure_with_unit); END_ENTITY;
ENTITY mass_measure_with_unit SUBTYPE OF (measure_with_unit); END_ENTITY;
ENTITY area_measure_with_unit SUBTYPE OF (measure_with_unit); END_ENTITY;
ENTITY volume_measure_with_unit SUBTYPE OF (measure_with_unit); END_ENTITY;
ENTITY ratio_measure_with_unit SUBTYPE OF (measure_with_unit); END_ENTITY;
ENTITY named_unit; dimensions : STRING; END_ENTITY;
ENTITY si_unit SUBTYPE OF (named_unit); prefix : STRING; name : STRING; END_ENTITY;
ENTITY conversion_based_unit SUBTYPE OF (named_unit); name : STRING; conversion_factor : measure_with_unit; END_ENTITY;
ENTITY context_dependent_unit SUBTYPE OF (named_unit); name : STRING; END_ENTITY;
END_SCHEMA;
)";

// The entities that matter.
enum Entity {
  kProduct,
  kFormation,
  kDefinition,
  kOccurrence,
  kOutside,
  kRelationship,
  kUsage,
  kHigherUsage,
  kQuantified,
  kProperty,
  kShape,
  kPropertyRepresentation,
  kShapeDefinition,
  kRelated,
  kShapeRelated,
  kTransformed,
  kMeasure,
  kSiUnit,
  kConversionUnit,
  kContextUnit,
  kEntities
};
constexpr const char* kEntityNames[kEntities] = {
    "PRODUCT",
    "PRODUCT_DEFINITION_FORMATION",
    "PRODUCT_DEFINITION",
    "PRODUCT_DEFINITION_OCCURRENCE",
    "PRODUCT_DEFINITION_REFERENCE",
    "PRODUCT_DEFINITION_RELATIONSHIP",
    "ASSEMBLY_COMPONENT_USAGE",
    "SPECIFIED_HIGHER_USAGE_OCCURRENCE",
    "QUANTIFIED_ASSEMBLY_COMPONENT_USAGE",
    "PROPERTY_DEFINITION",
    "PRODUCT_DEFINITION_SHAPE",
    "PROPERTY_DEFINITION_REPRESENTATION",
    "SHAPE_DEFINITION_REPRESENTATION",
    "REPRESENTATION_RELATIONSHIP",
    "SHAPE_REPRESENTATION_RELATIONSHIP",
    "REPRESENTATION_RELATIONSHIP_WITH_TRANSFORMATION",
    "MEASURE_WITH_UNIT",
    "SI_UNIT",
    "CONVERSION_BASED_UNIT",
    "CONTEXT_DEPENDENT_UNIT",
};

constexpr int kNone = -1;

// What a type is, of the entities that matter.
struct TypeRole {
  unsigned kinds = 0;
  const EntityRule* rule = nullptr;

  bool Is(Entity entity) const { return (kinds & 1u << entity) != 0; }
};

// One instance, seen as what matters.
class Seen {
 public:
  Seen(const WrittenInstance& instance, const std::vector<const TypeRole*>& roles)
      : instance_(instance), roles_(roles) {}

  bool Is(Entity entity) const {
    return std::any_of(roles_.begin(), roles_.end(), [entity](const TypeRole* role) { return role->Is(entity); });
  }

  // The value of an attribute that an entity declares; null where the instance has none.
  const WrittenValue* Find(Entity owner, const char* attribute) const {
    for (std::size_t i = 0; i < roles_.size(); ++i) {
      const EntityRule* rule = roles_[i]->rule;
      if (rule == nullptr || !roles_[i]->Is(owner)) continue;
      const std::size_t first = instance_.isComplex ? rule->firstOwn : 0;
      for (std::size_t n = first; n < rule->attributes.size(); ++n) {
        const AttributeRule& candidate = rule->attributes[n];
        if (candidate.name != attribute || candidate.owner->name != kEntityNames[owner]) continue;
        return Parameter(instance_.records[i], n - first);
      }
    }
    return nullptr;
  }

  std::string Text(Entity owner, const char* attribute) const {
    const WrittenValue* value = Find(owner, attribute);
    if (value == nullptr || value->kind != WrittenValue::Kind::String) return "";
    return VELMAR::ConvertSTEPStringToUtf8(value->text);
  }

  std::int64_t Reference(Entity owner, const char* attribute) const {
    const WrittenValue* value = Find(owner, attribute);
    // The value of a select may have its type around it.
    if (value != nullptr && value->kind == WrittenValue::Kind::Typed && value->elements == 1) ++value;
    if (value == nullptr || value->kind != WrittenValue::Kind::Reference) return kNone;
    return std::strtoll(value->text.c_str(), nullptr, 10);
  }

  bool IsOmitted(Entity owner, const char* attribute) const {
    const WrittenValue* value = Find(owner, attribute);
    return value != nullptr && value->kind == WrittenValue::Kind::Omitted;
  }

 private:
  static const WrittenValue* Parameter(const WrittenRecord& record, std::size_t n) {
    if (n >= record.parameters) return nullptr;
    std::size_t at = 0;
    for (; n > 0; --n) at = record.values[at].end;
    return &record.values[at];
  }

  const WrittenInstance& instance_;
  const std::vector<const TypeRole*>& roles_;
};

// Of an instance, as findings have it.
int FindingNumber(std::int64_t number) {
  return number > 0 && number <= kGreatestInstance ? static_cast<int>(number) : 0;
}

class Reader {
 public:
  Reader(const DataDictionary& dictionary, Findings& findings) : dictionary_(dictionary), findings_(findings) {
    for (int entity = 0; entity < kEntities; ++entity) {
      rules_[static_cast<std::size_t>(entity)] = dictionary.Find(kEntityNames[entity]);
    }
  }

  void Take(const WrittenInstance& instance);
  ProductStructure Structure();

 private:
  struct Row {
    TypedInstance instance;
    Place where = {0, 0};
    std::string id, name, description;
    std::int64_t to = kNone;       // the product, the formation, the definition
    std::int64_t to2 = kNone;      // what else is referred to
  };
  using Rows = std::vector<Row>;
  using Index = std::unordered_map<std::int64_t, std::size_t>;

  struct UsageRow {
    Usage usage;
    Place where = {0, 0};
    std::int64_t assembly = kNone, component = kNone, quantity = kNone;
    bool isDerived = false;
  };
  struct Measure {
    std::string value, type;
    std::int64_t unit = kNone;
  };

  const TypeRole* RoleOf(const std::string& type);
  void TakeUsage(const Seen& seen, const WrittenInstance& instance);
  void TakeMeasure(const Seen& seen, std::int64_t number);
  static const Row* Get(const Rows& rows, const Index& index, std::int64_t number);
  static void Put(Rows& rows, Index& index, Row row);

  void AddProducts();
  void AddUsages();
  void AddShapes();
  void FindRoots();
  void ReportCycle(const std::vector<std::size_t>& members, const std::vector<int>& groups);
  std::size_t Resolve(std::int64_t number) const;
  std::optional<Quantity> QuantityOf(std::int64_t number) const;
  void Add(Code code, Place where, std::int64_t instance, std::string attribute, std::string text) {
    findings_.Add(code, where, std::move(text), FindingNumber(instance), std::move(attribute));
  }

  static constexpr std::size_t kNowhere = std::numeric_limits<std::size_t>::max();

  const DataDictionary& dictionary_;
  Findings& findings_;
  std::array<const EntityRule*, kEntities> rules_;
  std::unordered_map<std::string, TypeRole> roles_;
  std::vector<const TypeRole*> now_;

  Rows products_, formations_, definitions_;
  Index productAt_, formationAt_, definitionAt_;
  std::unordered_map<std::int64_t, std::int64_t> occurrences_;  // the definition of each
  std::vector<UsageRow> usages_;
  std::unordered_map<std::int64_t, std::int64_t> shapes_;                    // what each is the shape of
  std::vector<std::pair<std::int64_t, std::int64_t>> shapeDefinitions_;      // property, representation
  std::vector<std::pair<std::int64_t, std::int64_t>> equivalents_;           // representations
  std::unordered_map<std::int64_t, std::string> representations_;            // their types
  std::unordered_map<std::int64_t, Measure> measures_;
  std::unordered_map<std::int64_t, std::string> units_;

  ProductStructure structure_;
  std::vector<Place> places_;  // of the products
  Index nodeOf_;               // by the number of the definition
};

// ------------------------------------------------------------------------------------------------------- the instances

const TypeRole* Reader::RoleOf(const std::string& type) {
  const auto [entry, isNew] = roles_.try_emplace(type);
  TypeRole& role = entry->second;
  if (!isNew) return &role;
  role.rule = dictionary_.Find(type);
  if (role.rule == nullptr) return &role;
  for (std::size_t entity = 0; entity < kEntities; ++entity) {
    if (rules_[entity] != nullptr && role.rule->IsKindOf(*rules_[entity])) role.kinds |= 1u << entity;
  }
  return &role;
}

const Reader::Row* Reader::Get(const Rows& rows, const Index& index, std::int64_t number) {
  const auto at = index.find(number);
  return at == index.end() ? nullptr : &rows[at->second];
}

void Reader::Put(Rows& rows, Index& index, Row row) {
  index[row.instance.number] = rows.size();
  rows.push_back(std::move(row));
}

void Reader::Take(const WrittenInstance& instance) {
  if (instance.IsInHeader() || instance.records.empty()) return;
  now_.clear();
  unsigned kinds = 0;
  for (const WrittenRecord& record : instance.records) {
    now_.push_back(RoleOf(record.type));
    kinds |= now_.back()->kinds;
    if (record.type.find("REPRESENTATION") != std::string::npos) representations_[instance.number] = TypeText(instance);
  }
  if (kinds == 0) return;
  const Seen seen(instance, now_);
  const std::int64_t number = instance.number;
  const TypedInstance typed = {number, TypeText(instance)};
  if (seen.Is(kProduct)) {
    Put(products_, productAt_, {typed, instance.where, seen.Text(kProduct, "id"), seen.Text(kProduct, "name"),
                                seen.Text(kProduct, "description"), kNone, kNone});
  } else if (seen.Is(kFormation)) {
    Put(formations_, formationAt_, {typed, instance.where, seen.Text(kFormation, "id"), "", "",
                                    seen.Reference(kFormation, "of_product"), kNone});
  } else if (seen.Is(kDefinition)) {
    Put(definitions_, definitionAt_,
        {typed, instance.where, "", "", "", seen.Reference(kDefinition, "formation"), kNone});
  } else if (seen.Is(kOutside)) {
    Put(definitions_, definitionAt_,
        {typed, instance.where, seen.Text(kOutside, "product_id"), "", "", kNone, kNone});
  } else if (seen.Is(kOccurrence)) {
    occurrences_[number] = seen.Reference(kOccurrence, "definition");
  }
  if (seen.Is(kUsage)) TakeUsage(seen, instance);
  if (seen.Is(kShape)) shapes_[number] = seen.Reference(kProperty, "definition");
  if (seen.Is(kShapeDefinition)) {
    shapeDefinitions_.emplace_back(seen.Reference(kPropertyRepresentation, "definition"),
                                   seen.Reference(kPropertyRepresentation, "used_representation"));
  }
  if (seen.Is(kShapeRelated) && !seen.Is(kTransformed)) {
    equivalents_.emplace_back(seen.Reference(kRelated, "rep_1"), seen.Reference(kRelated, "rep_2"));
  }
  if (seen.Is(kMeasure)) TakeMeasure(seen, number);
  if (seen.Is(kSiUnit)) {
    const WrittenValue* prefix = seen.Find(kSiUnit, "prefix");
    const WrittenValue* name = seen.Find(kSiUnit, "name");
    const bool hasPrefix = prefix != nullptr && prefix->kind == WrittenValue::Kind::Enumeration;
    units_[number] = (hasPrefix ? prefix->text : "") + (name == nullptr ? "" : name->text);
  } else if (seen.Is(kConversionUnit)) {
    units_[number] = seen.Text(kConversionUnit, "name");
  } else if (seen.Is(kContextUnit)) {
    units_[number] = seen.Text(kContextUnit, "name");
  }
}

void Reader::TakeUsage(const Seen& seen, const WrittenInstance& instance) {
  UsageRow row;
  row.where = instance.where;
  row.usage.instance = {instance.number, TypeText(instance)};
  row.usage.id = seen.Text(kRelationship, "id");
  row.usage.name = seen.Text(kRelationship, "name");
  row.usage.designator = seen.Text(kUsage, "reference_designator");
  row.assembly = seen.Reference(kRelationship, "relating_product_definition");
  row.component = seen.Reference(kRelationship, "related_product_definition");
  row.isDerived = seen.IsOmitted(kRelationship, "relating_product_definition");
  if (seen.Is(kQuantified)) row.quantity = seen.Reference(kQuantified, "quantity");
  if (seen.Is(kHigherUsage)) {
    row.usage.isStructure = false;
    row.usage.upperUsage = seen.Reference(kHigherUsage, "upper_usage");
    row.usage.nextUsage = seen.Reference(kHigherUsage, "next_usage");
  }
  usages_.push_back(std::move(row));
}

void Reader::TakeMeasure(const Seen& seen, std::int64_t number) {
  Measure measure;
  const WrittenValue* value = seen.Find(kMeasure, "value_component");
  if (value != nullptr && value->kind == WrittenValue::Kind::Typed && value->elements == 1) {
    measure.type = value->text;
    ++value;
  }
  if (value != nullptr) measure.value = value->text;
  measure.unit = seen.Reference(kMeasure, "unit_component");
  measures_[number] = std::move(measure);
}

// ------------------------------------------------------------------------------------------------------- the structure

ProductStructure Reader::Structure() {
  AddProducts();
  AddUsages();
  AddShapes();
  FindRoots();
  return std::move(structure_);
}

void Reader::AddProducts() {
  std::set<std::int64_t> isDefined;
  const auto fill = [](DefinedProduct& product, const Row& row) {
    product.product = row.instance.number;
    product.id = row.id;
    product.name = row.name;
    product.description = row.description;
  };
  for (const Row& row : definitions_) {
    if (&row != Get(definitions_, definitionAt_, row.instance.number)) continue;  // of a number that is used again
    DefinedProduct product;
    product.number = row.instance.number;
    product.id = row.id;
    const Row* formation = Get(formations_, formationAt_, row.to);
    if (formation != nullptr) {
      product.formation = row.to;
      product.version = formation->id;
      if (const Row* found = Get(products_, productAt_, formation->to)) {
        fill(product, *found);
        isDefined.insert(formation->to);
      } else {
        Add(Code::kLooseEnd, formation->where, row.to, formation->instance.type + ".of_product",
            fmt::format("the formation of definition #{} has no product", product.number));
      }
    } else if (row.id.empty()) {
      Add(Code::kLooseEnd, row.where, product.number, row.instance.type + ".formation", "the definition has no formation");
    }
    nodeOf_[product.number] = structure_.products.size();
    structure_.products.push_back(std::move(product));
  }
  for (const Row& row : products_) {
    if (&row != Get(products_, productAt_, row.instance.number)) continue;
    if (IsBlank(row.id) && IsBlank(row.name)) {
      Add(Code::kUnnamedProduct, row.where, row.instance.number, row.instance.type, "the product has neither name nor id");
    }
    if (isDefined.count(row.instance.number) != 0) continue;
    DefinedProduct product;
    product.number = row.instance.number;
    product.isDefined = false;
    fill(product, row);
    structure_.products.push_back(std::move(product));
  }
}

// The product that an instance is a definition of, or an occurrence of.
std::size_t Reader::Resolve(std::int64_t number) const {
  constexpr int kMostSteps = 20;  // from occurrence to occurrence
  for (int i = 0; i < kMostSteps; ++i) {
    const auto node = nodeOf_.find(number);
    if (node != nodeOf_.end()) return node->second;
    const auto occurrence = occurrences_.find(number);
    if (occurrence == occurrences_.end()) break;
    number = occurrence->second;
  }
  return kNowhere;
}

std::optional<Quantity> Reader::QuantityOf(std::int64_t number) const {
  const auto measure = measures_.find(number);
  if (measure == measures_.end()) return std::nullopt;
  const auto unit = units_.find(measure->second.unit);
  return Quantity{measure->second.value, measure->second.type, unit == units_.end() ? "" : unit->second};
}

void Reader::AddUsages() {
  for (UsageRow& row : usages_) {
    if (row.isDerived) continue;  // follows from other usages
    const std::size_t assembly = Resolve(row.assembly);
    const std::size_t component = Resolve(row.component);
    const std::string attributes[] = {"relating_product_definition", "related_product_definition"};
    for (int i = 0; i < 2; ++i) {
      if ((i == 0 ? assembly : component) != kNowhere) continue;
      Add(Code::kLooseEnd, row.where, row.usage.instance.number, row.usage.instance.type + "." + attributes[i],
          std::string("the usage leads to no definition of ") + (i == 0 ? "an assembly" : "a component"));
    }
    if (assembly == kNowhere || component == kNowhere) continue;
    row.usage.assembly = assembly;
    row.usage.component = component;
    if (row.quantity != kNone) row.usage.quantity = QuantityOf(row.quantity);
    if (row.usage.isStructure) structure_.products[assembly].usages.push_back(structure_.usages.size());
    structure_.usages.push_back(std::move(row.usage));
  }
}

void Reader::AddShapes() {
  const auto add = [this](DefinedProduct& product, std::int64_t representation) {
    const auto isSame = [representation](const TypedInstance& shape) { return shape.number == representation; };
    if (std::any_of(product.shapes.begin(), product.shapes.end(), isSame)) return false;
    const auto type = representations_.find(representation);
    if (type == representations_.end()) return false;
    product.shapes.push_back({representation, type->second});
    return true;
  };
  std::unordered_multimap<std::int64_t, std::size_t> shown;  // by representation, products
  for (const auto& [property, representation] : shapeDefinitions_) {
    const auto shape = shapes_.find(property);
    const std::size_t node = shape == shapes_.end() ? kNowhere : Resolve(shape->second);
    if (node != kNowhere && add(structure_.products[node], representation)) shown.emplace(representation, node);
  }
  // One step, and not to what is the shape of another product.
  for (const auto& [first, second] : equivalents_) {
    for (const auto& [from, to] : {std::make_pair(first, second), std::make_pair(second, first)}) {
      if (shown.count(to) != 0) continue;
      const auto [begin, end] = shown.equal_range(from);
      for (auto entry = begin; entry != end; ++entry) add(structure_.products[entry->second], to);
    }
  }
}

// Puts assemblies that contain each other into one group, and finds the groups that nothing contains (R. Tarjan).
void Reader::FindRoots() {
  std::vector<DefinedProduct>& products = structure_.products;
  const std::size_t count = products.size();
  std::vector<int> order(count, 0), lowest(count, 0), group(count, -1);
  std::vector<std::size_t> open;
  std::vector<std::pair<std::size_t, std::size_t>> path;  // a product, and how many of its usages have been followed
  int last = 0;
  std::vector<std::vector<std::size_t>> groups;
  for (std::size_t start = 0; start < count; ++start) {
    if (order[start] != 0) continue;
    path.emplace_back(start, 0);
    while (!path.empty()) {
      const std::size_t node = path.back().first;
      if (path.back().second == 0) {
        order[node] = lowest[node] = ++last;
        open.push_back(node);
      }
      if (path.back().second < products[node].usages.size()) {
        const std::size_t next = structure_.usages[products[node].usages[path.back().second++]].component;
        if (order[next] == 0) {
          path.emplace_back(next, 0);
        } else if (group[next] < 0) {
          lowest[node] = std::min(lowest[node], order[next]);
        }
        continue;
      }
      if (lowest[node] == order[node]) {
        std::vector<std::size_t> members;
        do {
          members.push_back(open.back());
          group[open.back()] = static_cast<int>(groups.size());
          open.pop_back();
        } while (members.back() != node);
        std::sort(members.begin(), members.end());
        groups.push_back(std::move(members));
      }
      path.pop_back();
      if (!path.empty()) lowest[path.back().first] = std::min(lowest[path.back().first], lowest[node]);
    }
  }

  std::vector<bool> isContained(groups.size(), false), isCyclic(groups.size(), false);
  for (const Usage& usage : structure_.usages) {
    if (!usage.isStructure) continue;
    const auto component = static_cast<std::size_t>(group[usage.component]);
    (group[usage.assembly] == group[usage.component] ? isCyclic : isContained)[component] = true;
  }
  for (std::size_t i = 0; i < groups.size(); ++i) {
    if (!isContained[i] && products[groups[i].front()].isDefined) structure_.roots.push_back(groups[i].front());
    if (isCyclic[i]) ReportCycle(groups[i], group);
  }
  std::sort(structure_.roots.begin(), structure_.roots.end());
}

// A way within the group from its first member back to it.
void Reader::ReportCycle(const std::vector<std::size_t>& members, const std::vector<int>& groups) {
  const std::size_t first = members.front();
  std::unordered_map<std::size_t, std::size_t> cameFrom;
  std::vector<std::size_t> queue = {first};
  std::size_t last = kNowhere;
  for (std::size_t i = 0; i < queue.size() && last == kNowhere; ++i) {
    for (const std::size_t usage : structure_.products[queue[i]].usages) {
      const std::size_t next = structure_.usages[usage].component;
      if (next == first) {
        last = queue[i];
        break;
      }
      if (groups[next] == groups[first] && cameFrom.emplace(next, queue[i]).second) queue.push_back(next);
    }
  }
  std::vector<std::size_t> way = {first};
  for (std::size_t node = last; node != first; node = cameFrom.at(node)) way.push_back(node);
  way.push_back(first);
  std::string text = "the assembly contains itself: ";
  constexpr std::size_t kShown = 12;
  for (std::size_t i = 0; i < std::min(way.size(), kShown); ++i) {
    text += fmt::format("{}#{}", i == 0 ? "" : " in ", structure_.products[way[i]].number);
  }
  if (way.size() > kShown) text += fmt::format(" ..., {} in all", way.size() - 1);
  const std::int64_t number = structure_.products[first].number;
  const Row& row = *Get(definitions_, definitionAt_, number);
  Add(Code::kCyclicAssembly, row.where, number, row.instance.type, text);
}

}  // namespace

std::vector<Component> ComponentsOf(const ProductStructure& structure, std::size_t product, bool grouped) {
  std::vector<Component> components;
  using Key = std::tuple<std::size_t, std::string, bool, std::string, std::string, std::string>;
  std::map<Key, std::size_t> known;
  for (const std::size_t at : structure.products[product].usages) {
    const Usage& usage = structure.usages[at];
    const Quantity quantity = usage.quantity.value_or(Quantity());
    const Key key = {usage.component, usage.instance.type, usage.quantity.has_value(), quantity.value, quantity.type,
                     quantity.unit};
    const auto entry = grouped ? known.emplace(key, components.size()).first : known.end();
    if (grouped && entry->second < components.size()) {
      components[entry->second].usages.push_back(at);
    } else {
      components.push_back({usage.component, {at}});
    }
  }
  return components;
}

ProductStructure ReadProductStructure(const std::string& path, const SchemaChoice& choice, Findings& findings,
                                      const Progress& progress) {
  constexpr double kShareOfSyntax = 0.5;  // of the time that it takes
  ReportedProgress all(progress);
  const Part21Source source(path, all.Part(0, Part21Source::kShareOfJson));
  ReportedProgress read(all.Part(source.Share(), 1));
  if (!CheckSyntax(source.Path(), findings, read.Part(0, kShareOfSyntax))) return {};
  Findings ignored(path);
  std::unique_ptr<DataDictionary> dictionary = LoadDictionaryOf(source.Path(), choice, ignored);
  if (dictionary == nullptr || dictionary->Find(kEntityNames[kDefinition]) == nullptr) {
    dictionary = DictionaryOfText(kCommonEntities);
  }
  Reader reader(*dictionary, findings);
  ForEachWrittenInstance(
      source.Path(), ValuesRead::All, [&reader](const WrittenInstance& instance) { reader.Take(instance); }, read.Part(kShareOfSyntax, 1));
  ProductStructure structure = reader.Structure();
  findings.Sort();
  return structure;
}

}  // namespace velmar
