#include "CppWriter.h"

#include <algorithm>
#include <map>
#include <optional>
#include <set>
#include <unordered_map>
#include <unordered_set>
#include <utility>

#include "SchemaContents.h"
#include "TextTemplate.h"

namespace VELMAR::Express {
namespace {

// Names that the base classes and the library use themselves: an accessor or a class of such a name would
// hide them.
constexpr const char* kTaken[] = {
    "Accept",
    "EntityBase",
    "Enumeration",
    "ExpAggregation",
    "ExpAttribute",
    "ExpBoolean",
    "ExpEntity",
    "ExpEntityTypeRow",
    "ExpEntityTypeTable",
    "ExpEntityVisitor",
    "ExpExternalMappingEntity",
    "ExpInteger",
    "ExpLink",
    "ExpLogical",
    "ExpMakeVisitIndex",
    "ExpSchemaBinary",
    "ExpSchemaCreate",
    "ExpSchemaEnumeration",
    "ExpSchemaReal",
    "ExpSchemaVisit",
    "ExpSelect",
    "ExpStore",
    "ExpString",
    "ExpVisit",
    "ExpVisitIndex",
    "GetAdmin",
    "GetEntityNumber",
    "GetExpClassName",
    "GetExpSubClasses",
    "GetExpSuperClasses",
    "GetExternalMappingStartIndex",
    "GetMember",
    "GetMemberNames",
    "GetNofExplicitMembers",
    "GetNofInverseMembers",
    "GetTypeNumberOfEntity",
    "GetTypeOfEntity",
    "InsertInObjTree",
    "Load",
    "Log",
    "New",
    "RegisterAs",
    "RegisterEntityTypes",
    "Resolve",
    "ResolveAll",
    "SetAdmin",
    "SetEntityNumber",
    "ToString",
    "VisitExpEntity",
    "VisitExpExternalMappingEntity",
    "Visitor",
};

// cartesian_point -> CartesianPoint, AUTOMOTIVE_DESIGN -> AutomotiveDesign.
std::string CamelCase(const std::string& name) {
  std::string result;
  bool first = true;
  for (const char c : name) {
    if (c == '_') {
      first = true;
      continue;
    }
    const bool isUpper = c >= 'A' && c <= 'Z';
    const bool isLower = c >= 'a' && c <= 'z';
    if (first) {
      result += isLower ? static_cast<char>(c - 'a' + 'A') : c;
    } else {
      result += isUpper ? static_cast<char>(c - 'A' + 'a') : c;
    }
    first = false;
  }
  return result;
}

std::string Join(const std::vector<std::string>& parts, const char* separator) {
  std::string result;
  for (const std::string& part : parts) {
    if (!result.empty()) result += separator;
    result += part;
  }
  return result;
}

// Gives out names; one that is taken already gets "_" appended until it is new.
class NameGiver {
 public:
  NameGiver() : taken_(std::begin(kTaken), std::end(kTaken)) {}
  explicit NameGiver(std::unordered_set<std::string> taken) : taken_(std::move(taken)) {}

  std::string Give(std::string name) {
    while (!taken_.insert(name).second) name += '_';
    return name;
  }

 private:
  std::unordered_set<std::string> taken_;
};

// What the values of a type refer to.
struct Reference {
  int depth;             // how many aggregates lie around the references
  const Entity* entity;  // null where they may lead to entities of any type
};

// Whether a value of the type may be a reference to an entity.
bool MayRefer(const TypeExpression& type, std::set<const TypeExpression*>& seen) {
  const TypeExpression& underlying = *Underlying(type);
  switch (underlying.kind) {
    case TypeKind::Named:
    case TypeKind::Generic:
    case TypeKind::GenericEntity:
      return true;
    case TypeKind::Select: {
      if (!seen.insert(&underlying).second) return false;
      if (underlying.extensible || underlying.genericEntity) return true;
      const std::vector<TypeItem> items = AllItems(underlying);
      return std::any_of(items.begin(), items.end(), [&](const TypeItem& item) {
        return item.declaration->kind == DeclarationKind::Entity ||
               MayRefer(static_cast<const DefinedType*>(item.declaration)->underlying, seen);
      });
    }
    default:
      return false;
  }
}

// Nothing where the values are no references and hold none.
std::optional<Reference> ReferenceOf(const TypeExpression& type) {
  Reference reference{0, nullptr};
  const TypeExpression* at = Underlying(type);
  for (; IsAggregate(at->kind); at = Underlying(*at->element)) ++reference.depth;
  std::set<const TypeExpression*> seen;
  if (!MayRefer(*at, seen)) return std::nullopt;
  if (at->kind == TypeKind::Named) reference.entity = static_cast<const Entity*>(at->declaration);
  return reference;
}

class Writer {
 public:
  Writer(const Model& model, const SchemaDeclaration& schema, const CppOptions& options)
      : model_(model), options_(options), contents_(schema), space_(CppSchemaName(options.registryName)) {
    NameClasses();
    FindVirtualBases();
  }

  std::vector<GeneratedFile> Files() {
    std::vector<GeneratedFile> files{{space_ + ".h", Header()}, {space_ + ".cpp", Registration()}};
    for (int part = 1; part <= options_.parts; ++part) {
      files.push_back({space_ + '_' + std::to_string(part) + ".cpp", Part(part)});
    }
    return files;
  }

 private:
  void NameClasses() {
    NameGiver names;
    names.Give(space_);
    for (const auto& [name, entity] : contents_.Entities()) classNames_[entity] = names.Give(CamelCase(name));
    for (const auto& [name, type] : contents_.Enumerations()) classNames_[type] = names.Give(CamelCase(name));
    // Within the visitor, its operations hide classes of the same name.
    for (const auto& [name, entity] : contents_.Entities()) {
      visitNames_[entity] = names.Give("Visit" + ClassName(*entity));
    }
  }

  // A base is virtual to one of its direct subtypes where some entity is of that and of another direct subtype of
  // the base; to those that never come together with another one it is not. The base null is EntityBase.
  void FindVirtualBases() {
    for (const auto& [name, entity] : contents_.Entities()) {
      if (entity->supertypes.size() < 2) continue;
      std::map<const Entity*, std::vector<const Entity*>> waysTo;
      std::vector<const Entity*> all = AncestorsOf(*entity);
      all.push_back(entity);
      for (const Entity* subtype : all) {
        if (subtype->supertypes.empty()) waysTo[nullptr].push_back(subtype);
        for (const Entity* supertype : subtype->supertypes) waysTo[supertype].push_back(subtype);
      }
      for (const auto& [base, ways] : waysTo) {
        if (ways.size() < 2) continue;
        for (const Entity* subtype : ways) virtualBases_.insert({subtype, base});
      }
    }
  }

  // The entities with every supertype before its subtypes.
  std::vector<const Entity*> SupertypesFirst() const {
    std::vector<const Entity*> order;
    std::set<const Entity*> seen;
    for (const auto& [name, entity] : contents_.Entities()) {
      if (seen.count(entity)) continue;
      for (const Entity* ancestor : AncestorsOf(*entity)) {
        if (seen.insert(ancestor).second) order.push_back(ancestor);
      }
      seen.insert(entity);
      order.push_back(entity);
    }
    return order;
  }

  const std::string& ClassName(const Declaration& declaration) const { return classNames_.at(&declaration); }

  // The class of an entity; ExpEntity for none, and for one that is not visible in the schema.
  std::string ClassNameOrBase(const Entity* entity) const {
    const auto found = classNames_.find(entity);
    return found == classNames_.end() ? "ExpEntity" : found->second;
  }

  static std::string MemberName(const Attribute& attribute) { return attribute.name.text + '_'; }

  // The class that holds a value of the type.
  std::string ValueClass(const TypeExpression& type) const {
    switch (ValueKindOf(type)) {
      case ValueKind::Real: return "ExpSchemaReal";
      case ValueKind::Integer: return "ExpInteger";
      case ValueKind::String: return "ExpString";
      case ValueKind::Boolean: return "ExpBoolean";
      case ValueKind::Logical: return "ExpLogical";
      case ValueKind::Binary: return "ExpSchemaBinary";
      case ValueKind::Enumeration: return ClassName(*EnumerationOf(type));
      case ValueKind::Select: return "ExpSelect";
      case ValueKind::Link: return "ExpLink";
      case ValueKind::Aggregation: break;
    }
    return "ExpAggregation";
  }

  // ---- the header -------------------------------------------------------------------------------

  std::string Header() const {
    std::string declarations;
    std::string visits;
    for (const auto& [name, entity] : contents_.Entities()) {
      declarations += "class " + ClassName(*entity) + ";\n";
      visits += "  virtual void " + visitNames_.at(entity) + '(' + ClassName(*entity) + "*);\n";
    }
    std::string enumerations;
    for (const auto& [name, type] : contents_.Enumerations()) enumerations += EnumerationClass(*type);
    std::string entities;
    for (const Entity* entity : SupertypesFirst()) entities += EntityClass(*entity);
    return Fill(R"(
// Generated from $source$ by velmar-express $version$. Do not edit.
#pragma once

#include <vector>

#include "ExpEntityVisitor.h"
#include "ExpSchemaLibrary.h"

#if VELMAR_VERSION_MAJOR != $major$ || VELMAR_VERSION_MINOR != $minor$
#error "Generated for Velmar $version$: generate this schema library again with the velmar-express of your version"
#endif

namespace VELMAR::$space$ {

/// Registers the entity types of $registry$, which loading the library does, too. A call makes sure
/// that the library is linked and loaded; any further one does nothing.
VELMAR_API void Load();

/// Registers the same classes under a further schema name, "STEP_IR_AIC" say.
VELMAR_API void RegisterAs(const char* registrySchemaName);

/// What the classes of all entities derive from. It does what ExpEntity does; but as its operations are in
/// this library, references to them are settled while linking and not, class by class, while loading.
class VELMAR_API EntityBase : public ExpEntity {
 public:
  ~EntityBase() override;
  ExpAttribute* GetMember(int index) override;
  ExpAttribute* GetMember(const std::string& name) override;
  std::vector<std::string>* GetMemberNames() override;
  const std::string& GetExpClassName() const override;
  std::vector<std::string>* GetExpSuperClasses() const override;
  std::vector<std::string>* GetExpSubClasses() const override;
  int GetNofInverseMembers() override;
  int GetNofExplicitMembers() override;
  int GetExternalMappingStartIndex() override;
  int GetTypeNumberOfEntity() override;
  bool InsertInObjTree() const override;
  void SetEntityNumber(int number) override;
  int GetEntityNumber() override;
  std::string ToString() override;
  /// Calls the operation of a Visitor for the entity's class; with other visitors does what ExpEntity does.
  void Accept(ExpEntityVisitor* visitor) override;
};

// The classes of the entities. An attribute that refers to entities has two accessors: one gives its value,
// the other the entities that it leads to in a store, as Resolve or, for aggregates, ResolveAll does.
$declarations$

/// Receives the entities of this schema, each by the operation for its class. Unless such an operation is
/// overridden it calls that for the first supertype, or VisitExpEntity where the entity has none.
class VELMAR_API Visitor : public ExpEntityVisitor {
 public:
  using ExpEntityVisitor::ExpEntityVisitor;
  ~Visitor() override;

  /// Does nothing.
  virtual void VisitExpEntity(ExpEntity*);
$visits$
};
$enumerations$
$entities$

}  // namespace VELMAR::$space$
)",
                {{"source", options_.sourceName},
                 {"version", kVersion},
                 {"major", std::to_string(kMajor)},
                 {"minor", std::to_string(kMinor)},
                 {"space", space_},
                 {"registry", options_.registryName},
                 {"declarations", declarations},
                 {"visits", visits},
                 {"enumerations", enumerations},
                 {"entities", entities}});
  }

  std::string EnumerationClass(const DefinedType& type) const {
    std::vector<std::string> items{"Unset = -1"};
    std::vector<std::string> names;
    NameGiver giver(std::unordered_set<std::string>{"Unset"});
    for (const TypeItem& item : AllItems(type.underlying)) {
      items.push_back(giver.Give(CamelCase(item.name.text)));
      names.push_back(UpperCase(item.name.text));
    }
    return Fill(R"(

/// $express$
class VELMAR_API $class$ : public ExpSchemaEnumeration<$class$> {
 public:
  enum class Enumeration { $items$ };
  static constexpr const char* kNames =$names$;
};
)",
                {{"express", contents_.NameOf(type)},
                 {"class", ClassName(type)},
                 {"items", List(items, kLineWidth - 31, "                           ")},
                 {"names", NamesLiteral(names)}});
  }

  static std::string NamesLiteral(const std::vector<std::string>& names) {
    const std::string literal = Literal(names, "      ");
    return (literal.size() < kLineWidth - 42 ? " " : "\n      ") + literal;
  }

  // Words as one string literal; where it is long, as several on lines of their own, which the compiler
  // joins.
  static std::string Literal(const std::vector<std::string>& words, const std::string& indent) {
    std::vector<std::string> lines(1);
    for (const std::string& word : words) {
      if (!lines.back().empty() && lines.back().size() + word.size() > kLineWidth - 10) lines.emplace_back();
      lines.back() += word + ' ';
    }
    if (!lines.back().empty()) lines.back().pop_back();
    return '"' + Join(lines, ("\"\n" + indent + '"').c_str()) + '"';
  }

  // A list in one line, or with a line for each part where that gets too long.
  static std::string List(const std::vector<std::string>& parts, std::size_t room,
                          const std::string& indent) {
    const std::string line = Join(parts, ", ");
    return line.size() <= room ? line : Join(parts, (",\n" + indent).c_str());
  }

  std::string EntityClass(const Entity& entity) const {
    return Fill(R"(

/// $express$
class VELMAR_API $class$ : $bases$ {
 public:
$operations$
$accessors$
$members$
};
)",
                {{"express", ExpressHead(entity)},
                 {"class", ClassName(entity)},
                 {"bases", Bases(entity)},
                 {"operations", Operations(entity)},
                 {"accessors", Accessors(entity)},
                 {"members", Members(entity)}});
  }

  std::string ExpressHead(const Entity& entity) const {
    std::string head = contents_.NameOf(entity);
    if (entity.isAbstract) head += ", abstract";
    return head;
  }

  std::string Bases(const Entity& entity) const {
    const auto base = [&](const Entity* supertype) {
      const std::string name = supertype ? ClassName(*supertype) : "EntityBase";
      return (virtualBases_.count({&entity, supertype}) ? "virtual public " : "public ") + name;
    };
    std::vector<std::string> bases;
    for (const Entity* supertype : entity.supertypes) bases.push_back(base(supertype));
    if (bases.empty()) bases.push_back(base(nullptr));
    const std::size_t before = ("class VELMAR_API  : " + ClassName(entity)).size();
    return List(bases, kLineWidth - before - 2, std::string(before, ' '));
  }

  std::string Operations(const Entity& entity) const {
    std::string operations;
    if (!OmittedAttributes(entity).empty()) operations += "  " + ClassName(entity) + "();\n";
    operations += "  ~" + ClassName(entity) + "() override;\n";
    if (HasGetMember(entity)) {
      operations += "  using EntityBase::GetMember;\n  ExpAttribute* GetMember(int index) override;\n";
    }
    return operations;
  }

  // One accessor for each attribute that the entity declares, and for each that it renames.
  std::string Accessors(const Entity& entity) const {
    std::string accessors;
    NameGiver names;
    names.Give(ClassName(entity));
    const std::set<std::string> hidden = AccessorNames(entity);
    for (const Attribute& attribute : entity.attributes) {
      const bool isRenamed = attribute.renamed && attribute.original && IsSlot(*attribute.original);
      if (!IsSlot(attribute) && !isRenamed) continue;
      const Attribute& stored = isRenamed ? *attribute.original : attribute;
      const auto visible = [&](const std::string& name) {
        return (hidden.count(name) ? space_ + "::" : "") + name;
      };
      const std::string name = names.Give(CamelCase(attribute.name.text));
      const std::string member =
          isRenamed ? ClassName(*stored.owner) + "::" + MemberName(stored) : MemberName(stored);
      accessors += Fill("  $value$& $name$() { return $member$; }  ///< $type$\n",
                        {{"value", visible(ValueClass(*stored.type))},
                         {"name", name},
                         {"member", member},
                         {"type", (attribute.optional ? "optional " : "") + TypeText(model_, *attribute.type)}});
      if (const std::optional<Reference> reference = ReferenceOf(*attribute.type)) {
        accessors += Resolution(*reference, visible(ClassNameOrBase(reference->entity)), name, member);
      }
    }
    return accessors.empty() ? accessors : "\n" + accessors;
  }

  // The entities behind an attribute. A template, so that it costs nothing where it is not used, and may name
  // classes that are defined further down.
  static std::string Resolution(const Reference& reference, const std::string& entity,
                                const std::string& accessor, const std::string& member) {
    std::string result = entity + '*';
    std::string call = "Resolve<" + entity;
    for (int i = 0; i < reference.depth; ++i) result = "std::vector<" + result + '>';
    if (reference.depth > 0) call = "ResolveAll<" + entity;
    if (reference.depth > 1) call += ", " + std::to_string(reference.depth);
    return Fill(R"(
  template <class ExpStore>
  $result$ $accessor$(ExpStore& store) {
    return $call$>(store, $member$);
  }
)",
                {{"result", result}, {"accessor", accessor}, {"call", call}, {"member", member}});
  }

  // The names that accessors of the entity and its ancestors may have: within the class they hide types.
  std::set<std::string> AccessorNames(const Entity& entity) const {
    std::set<std::string> names;
    std::vector<const Entity*> all = AncestorsOf(entity);
    all.push_back(&entity);
    for (const Entity* owner : all) {
      for (const Attribute& attribute : owner->attributes) names.insert(CamelCase(attribute.name.text));
    }
    for (const char* taken : kTaken) names.erase(taken);  // no accessor gets such a name
    return names;
  }

  std::string Members(const Entity& entity) const {
    std::string members;
    const std::set<std::string> hidden = AccessorNames(entity);
    for (const Attribute& attribute : entity.attributes) {
      if (!IsSlot(attribute)) continue;
      std::string value = ValueClass(*attribute.type);
      if (hidden.count(value)) value = space_ + "::" + value;
      members += "  " + value + ' ' + MemberName(attribute) + ";\n";
    }
    return members.empty() ? members : "\n protected:\n" + members;
  }

  // ---- the definitions --------------------------------------------------------------------------

  // A class with one base and no attribute of its own inherits it.
  static bool HasGetMember(const Entity& entity) {
    return entity.supertypes.size() > 1 ||
           std::any_of(entity.attributes.begin(), entity.attributes.end(), IsSlot);
  }

  std::string Part(int part) const {
    std::vector<const Entity*> all;
    for (const auto& [name, entity] : contents_.Entities()) all.push_back(entity);
    const std::size_t parts = static_cast<std::size_t>(options_.parts);
    const std::size_t first = all.size() * (static_cast<std::size_t>(part) - 1) / parts;
    const std::size_t last = all.size() * static_cast<std::size_t>(part) / parts;
    std::string definitions;
    std::string rows;
    for (std::size_t i = first; i < last; ++i) {
      definitions += Definitions(*all[i]);
      rows += Row(*all[i]);
    }
    const bool isEmpty = first == last;
    return Fill(R"(
// Generated from $source$ by velmar-express $version$. Do not edit.
#include "$space$.h"

namespace VELMAR::$space$ {
$definitions$
$table$

extern const ExpEntityTypeTable kEntityTypes$part$;
const ExpEntityTypeTable kEntityTypes$part$ = {$rows$};

}  // namespace VELMAR::$space$
)",
                {{"source", options_.sourceName},
                 {"version", kVersion},
                 {"space", space_},
                 {"part", std::to_string(part)},
                 {"definitions", definitions},
                 {"table", isEmpty ? "" : Table(rows)},
                 {"rows", isEmpty ? "nullptr, 0" : "kRows, " + std::to_string(last - first)}});
  }

  static std::string Table(const std::string& rows) {
    return Fill(R"(

namespace {

constexpr ExpEntityTypeRow kRows[] = {
$rows$
};

}  // namespace
)",
                {{"rows", rows}});
  }

  std::string Definitions(const Entity& entity) const {
    std::string constructor;
    for (const Attribute* attribute : OmittedAttributes(entity)) {
      constructor +=
          "  " + ClassName(*attribute->owner) + "::" + MemberName(*attribute) + ".SetOmitted(true);\n";
    }
    if (!constructor.empty()) {
      constructor = "\n" + ClassName(entity) + "::" + ClassName(entity) + "() {\n" + constructor + "}\n";
    }
    return Fill(R"($constructor$

$class$::~$class$() = default;
$getMember$

void Visitor::$visit$($class$* entity) {
  $visitSuper$(entity);
}
)",
                {{"constructor", constructor},
                 {"class", ClassName(entity)},
                 {"visit", visitNames_.at(&entity)},
                 {"visitSuper",
                  entity.supertypes.empty() ? "VisitExpEntity" : visitNames_.at(entity.supertypes.front())},
                 {"getMember", HasGetMember(entity) ? GetMember(entity) : ""}});
  }

  // Own attributes by a switch; the single base answers for its own, several bases are laid out one after the
  // other.
  std::string GetMember(const Entity& entity) const {
    const std::vector<Slot> slots = InternalMapping(entity);
    const bool isFlat = entity.supertypes.size() > 1;
    std::string cases;
    for (std::size_t i = 0; i < slots.size(); ++i) {
      const bool isOwn = slots[i].owner == &entity;
      if (!isOwn && !isFlat) continue;
      cases += "    case " + std::to_string(i) + ": return &" +
               (isOwn ? "" : "this->" + ClassName(*slots[i].owner) + "::") + MemberName(*slots[i].attribute) +
               ";\n";
    }
    const bool delegates = entity.supertypes.size() == 1;
    return Fill(
        R"(

ExpAttribute* $class$::GetMember(int index) {
  switch (index) {
$cases$
    default: return $otherwise$;
  }
}
)",
        {{"class", ClassName(entity)},
         {"cases", cases},
         {"otherwise", delegates ? ClassName(*entity.supertypes[0]) + "::GetMember(index)" : "nullptr"}});
  }

  std::string Row(const Entity& entity) const {
    const EntityDescription description = contents_.Describe(entity);
    return Fill(R"(
    {"$name$", &ExpSchemaCreate<$class$>, $explicit$, $inverse$, $start$, $number$,
     $super$,
     $sub$,
     $members$,
     &typeid($class$),
     &ExpSchemaVisit<&Visitor::$visit$>},
)",
                {{"name", description.name},
                 {"class", ClassName(entity)},
                 {"visit", visitNames_.at(&entity)},
                 {"explicit", std::to_string(description.memberNames.size())},
                 {"inverse", std::to_string(description.inverseMembers)},
                 {"start", std::to_string(description.startIndex)},
                 {"number", std::to_string(description.typeNumber)},
                 {"super", Literal(description.superTypes, "     ")},
                 {"sub", Literal(description.subTypes, "     ")},
                 {"members", Literal(description.memberNames, "     ")}});
  }

  // ---- registration -----------------------------------------------------------------------------

  std::string Registration() const {
    std::string declarations;
    std::vector<std::string> parts;
    for (int part = 1; part <= options_.parts; ++part) {
      const std::string table = "kEntityTypes" + std::to_string(part);
      parts.push_back('&' + table);
      declarations += "extern const ExpEntityTypeTable " + table + ";\n";
    }
    return Fill(R"(
// Generated from $source$ by velmar-express $version$. Do not edit.
#include "$space$.h"

#include <iterator>

namespace VELMAR::$space$ {

$declarations$

namespace {

constexpr const ExpEntityTypeTable* kParts[] = {$parts$};

}  // namespace

EntityBase::~EntityBase() = default;
ExpAttribute* EntityBase::GetMember(int index) { return ExpEntity::GetMember(index); }
ExpAttribute* EntityBase::GetMember(const std::string& name) { return ExpEntity::GetMember(name); }
std::vector<std::string>* EntityBase::GetMemberNames() { return ExpEntity::GetMemberNames(); }
const std::string& EntityBase::GetExpClassName() const { return ExpEntity::GetExpClassName(); }
std::vector<std::string>* EntityBase::GetExpSuperClasses() const { return ExpEntity::GetExpSuperClasses(); }
std::vector<std::string>* EntityBase::GetExpSubClasses() const { return ExpEntity::GetExpSubClasses(); }
int EntityBase::GetNofInverseMembers() { return ExpEntity::GetNofInverseMembers(); }
int EntityBase::GetNofExplicitMembers() { return ExpEntity::GetNofExplicitMembers(); }
int EntityBase::GetExternalMappingStartIndex() { return ExpEntity::GetExternalMappingStartIndex(); }
int EntityBase::GetTypeNumberOfEntity() { return ExpEntity::GetTypeNumberOfEntity(); }
bool EntityBase::InsertInObjTree() const { return ExpEntity::InsertInObjTree(); }
void EntityBase::SetEntityNumber(int number) { ExpEntity::SetEntityNumber(number); }
int EntityBase::GetEntityNumber() { return ExpEntity::GetEntityNumber(); }
std::string EntityBase::ToString() { return ExpEntity::ToString(); }
void EntityBase::Accept(ExpEntityVisitor* visitor) {
  static ExpVisitIndex* const index = ExpMakeVisitIndex(kParts, std::size(kParts));
  auto* own = dynamic_cast<Visitor*>(visitor);
  if (own == nullptr || !ExpVisit(*index, own, this)) ExpEntity::Accept(visitor);
}

Visitor::~Visitor() = default;
void Visitor::VisitExpEntity(ExpEntity*) {}

void RegisterAs(const char* registrySchemaName) {
  for (const auto* part : kParts) RegisterEntityTypes(registrySchemaName, part->rows, part->count);
}

void Load() {
  static const bool loaded = (RegisterAs("$registry$"), true);
  static_cast<void>(loaded);
}

namespace {

[[maybe_unused]] const bool loadedWithTheLibrary = (Load(), true);

}  // namespace
}  // namespace VELMAR::$space$
)",
                {{"source", options_.sourceName},
                 {"version", kVersion},
                 {"space", space_},
                 {"registry", options_.registryName},
                 {"declarations", declarations},
                 {"parts", List(parts, kLineWidth - 51, "                                                 ")}});
  }

  static constexpr std::size_t kLineWidth = 110;
  static constexpr int kMajor = 3;
  static constexpr int kMinor = 1;
  static constexpr const char* kVersion = "3.1";

  const Model& model_;
  const CppOptions& options_;
  const SchemaContents contents_;
  const std::string space_;
  std::unordered_map<const Declaration*, std::string> classNames_;
  std::unordered_map<const Entity*, std::string> visitNames_;
  std::set<std::pair<const Entity*, const Entity*>> virtualBases_;  // an entity and one of its bases
};

}  // namespace

std::string CppSchemaName(const std::string& registryName) { return CamelCase(registryName); }

std::vector<GeneratedFile> WriteCpp(const Model& model, const SchemaDeclaration& schema,
                                    const CppOptions& options) {
  return Writer(model, schema, options).Files();
}

}  // namespace VELMAR::Express
