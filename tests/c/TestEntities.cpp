#include "TestEntities.h"

#include <stdexcept>
#include <utility>

namespace VELMAR::TestData {

namespace {

template <std::size_t N>
ExpAttribute* At(ExpAttribute* const (&members)[N], int index) {
  return index < 0 || index >= static_cast<int>(N) ? nullptr : members[index];
}

struct Row {
  const char* name;
  ExpEntity* (*create)();
  int startIndex;
  int inverseMembers;
  bool insertInObjTree;
  int typeNumber;
  std::vector<std::string> supertypes;
  std::vector<std::string> subtypes;
  std::vector<std::string> members;
};

template <class T>
Row RowOf(int startIndex, int inverseMembers, std::vector<std::string> supertypes,
          std::vector<std::string> subtypes, std::vector<std::string> members) {
  return {T::kName,
          &T::New,
          startIndex,
          inverseMembers,
          false,
          T::kTypeNumber,
          std::move(supertypes),
          std::move(subtypes),
          std::move(members)};
}

std::vector<Row> Rows() {
  std::vector<Row> rows = {
      RowOf<AllKinds>(0, 0, {}, {},
                      {"real", "integer", "text", "link", "list", "colour", "logical", "boolean", "choice"}),
      RowOf<LibraryKinds>(0, 0, {}, {}, {"measure", "data", "colour"}),
      RowOf<Point>(0, 0, {}, {}, {"name", "coordinates"}),
      RowOf<Node>(0, 0, {}, {}, {"name", "next", "others", "choice"}),
      RowOf<Empty>(0, 0, {}, {}, {}),
      RowOf<A>(0, 2, {}, {"B"}, {"a1", "a2"}),
      RowOf<B>(2, 2, {"A"}, {"C"}, {"a1", "a2", "b1"}),
      RowOf<C>(3, 3, {"A", "B"}, {}, {"a1", "a2", "b1", "c1"}),
      RowOf<Top>(0, 0, {}, {"LEFT", "RIGHT"}, {"top", "rows"}),
      RowOf<Left>(2, 0, {"TOP"}, {"BOTTOM"}, {"top", "rows", "left"}),
      RowOf<Right>(2, 0, {"TOP"}, {"BOTTOM"}, {"top", "rows", "right"}),
      RowOf<Bottom>(4, 0, {"TOP", "LEFT", "RIGHT"}, {}, {"top", "rows", "left", "right", "bottom"}),
  };
  rows[3].insertInObjTree = true;
  return rows;
}

std::vector<std::string>* Qualified(const std::string& schema, const std::vector<std::string>& names,
                                    bool withRoot) {
  auto* qualified = new std::vector<std::string>;
  if (withRoot) qualified->push_back("VELMAR::ExpEntity");
  for (const std::string& name : names) qualified->push_back(schema + "::" + name);
  return qualified;
}

const bool kRegistered = [] {
  RegisterTestEntities(*ExpRuntimeRegistry::GetInstance(), kTestSchema);
  RegisterTestEntities(*ExpRuntimeRegistry::GetInstance(), "AUTOMOTIVE_DESIGN");
  return true;
}();

}  // namespace

const std::map<std::string, int>& Colour::Table() {
  static const std::map<std::string, int> table = {{"RED", 0}, {"GREEN", 1}, {"BLUE", 2}};
  return table;
}

void Colour::SetExpEnumeration(const std::string& name) { SetExpEnumeration(name, &Table()); }

ExpEntity* AllKinds::New() { return new AllKinds; }
ExpAttribute* AllKinds::GetMember(int index) {
  ExpAttribute* const members[] = {&real,   &integer, &text,    &link,  &list,
                                   &colour, &logical, &boolean, &choice};
  return At(members, index);
}

ExpEntity* LibraryKinds::New() { return new LibraryKinds; }
ExpAttribute* LibraryKinds::GetMember(int index) {
  ExpAttribute* const members[] = {&measure, &data, &colour};
  return At(members, index);
}

ExpEntity* Point::New() { return new Point; }
ExpAttribute* Point::GetMember(int index) {
  ExpAttribute* const members[] = {&name, &coordinates};
  return At(members, index);
}

ExpEntity* Node::New() { return new Node; }
ExpAttribute* Node::GetMember(int index) {
  ExpAttribute* const members[] = {&name, &next, &others, &choice};
  return At(members, index);
}

ExpEntity* Empty::New() { return new Empty; }

ExpEntity* A::New() { return new A; }
ExpAttribute* A::GetMember(int index) {
  ExpAttribute* const members[] = {&a1, &a2};
  return At(members, index);
}

ExpEntity* B::New() { return new B; }
ExpAttribute* B::GetMember(int index) {
  ExpAttribute* const members[] = {&a1, &a2, &b1};
  return At(members, index);
}

ExpEntity* C::New() { return new C; }
ExpAttribute* C::GetMember(int index) {
  ExpAttribute* const members[] = {&a1, &a2, &b1, &c1};
  return At(members, index);
}

ExpEntity* Top::New() { return new Top; }
ExpAttribute* Top::GetMember(int index) {
  ExpAttribute* const members[] = {&top, &rows};
  return At(members, index);
}

ExpEntity* Left::New() { return new Left; }
ExpAttribute* Left::GetMember(int index) {
  ExpAttribute* const members[] = {&top, &rows, &left};
  return At(members, index);
}

ExpEntity* Right::New() { return new Right; }
ExpAttribute* Right::GetMember(int index) {
  ExpAttribute* const members[] = {&top, &rows, &right};
  return At(members, index);
}

ExpEntity* Bottom::New() { return new Bottom; }
ExpAttribute* Bottom::GetMember(int index) {
  ExpAttribute* const members[] = {&top, &rows, &left, &right, &bottom};
  return At(members, index);
}

void RegisterTestEntities(ExpRuntimeRegistry& registry, const std::string& schema) {
  for (const Row& row : Rows()) {
    registry.RegisterEntityRuntimeType(
        new ExpEntityRuntimeType(row.name, schema, row.create, static_cast<int>(row.members.size()),
                                 row.inverseMembers, row.startIndex, row.insertInObjTree,
                                 Qualified(schema, row.supertypes, true),
                                 Qualified(schema, row.subtypes, false),
                                 new std::vector<std::string>(row.members), row.typeNumber),
        "");
  }
}

ExpEntityRuntimeType* NewPlainType(const std::string& name, const std::string& schema) {
  return new ExpEntityRuntimeType(name, schema, &Empty::New, 0, 0, 0, false, new std::vector<std::string>,
                                  new std::vector<std::string>, new std::vector<std::string>, 0);
}

ExpEntityRuntimeType* TypeOf(const std::string& name, const std::string& schema) {
  ExpEntityRuntimeType* type = ExpRuntimeRegistry::GetInstance()->GetEntityRuntimeType(name, schema);
  if (type == nullptr) throw std::logic_error("no type " + name + " in " + schema);
  return type;
}

std::unique_ptr<ExpAggregation> MakeList(const std::vector<ExpAttribute*>& values) {
  auto list = std::make_unique<ExpAggregation>();
  for (ExpAttribute* value : values) list->AddValue(value);
  return list;
}

std::string NestedText(std::size_t depth) { return std::string(depth, '(') + std::string(depth, ')'); }

std::unique_ptr<ExpAggregation> MakeNested(std::size_t depth) {
  auto outermost = std::make_unique<ExpAggregation>();
  ExpAggregation* innermost = outermost.get();
  for (std::size_t i = 1; i < depth; i++) {
    auto* next = new ExpAggregation;
    innermost->AddValue(next);
    innermost = next;
  }
  return outermost;
}

TestProvider::TestProvider(std::string registrySchema) : schemaName(std::move(registrySchema)) {
  SetAdaptedAdmin(&store);
}

ExpEntity* TestProvider::CreateEntity(const std::string& typeName) {
  askedTypes.push_back(typeName);
  const std::string& schemaToSearch = enforcedFactoryName.empty() ? schemaName : enforcedFactoryName;
  ExpEntityRuntimeType* type =
      ExpRuntimeRegistry::GetInstance()->GetEntityRuntimeType(typeName, schemaToSearch);
  return type == nullptr ? nullptr : type->CreateInstance(static_cast<int>(GetAdminId()));
}

}  // namespace VELMAR::TestData
