#include "RecordTypes.h"

#include <algorithm>
#include <set>
#include <utility>

#include "ExpAttributeVisitor.h"
#include "ExpRuntimeRegistry.h"
#include "ExpUtilities.h"
#include "Schemas.h"
#include "StepStringRules.h"
#include "TypeInfo.h"
#include "VelmarClasses.h"

namespace velmar {

namespace {

using VELMAR::ExpEntity;
using VELMAR::ExpEntityRuntimeType;
using Kind = RecordType::Kind;

constexpr const char* kHeaderSchema = "VELMAR";

// The kind of an attribute by its class.
class KindFinder : public VELMAR::ExpAttributeVisitor {
 public:
  Kind Of(VELMAR::ExpAttribute* value) {
    kind_ = Kind::Other;
    if (value != nullptr) value->Accept(this);
    return kind_;
  }

 private:
  void VisitExpReal(VELMAR::ExpReal*) override { kind_ = Kind::Real; }
  void VisitExpInteger(VELMAR::ExpInteger*) override { kind_ = Kind::Integer; }
  void VisitExpString(VELMAR::ExpString*) override { kind_ = Kind::String; }
  void VisitExpLink(VELMAR::ExpLink*) override { kind_ = Kind::Reference; }
  void VisitExpAggregation(VELMAR::ExpAggregation*) override { kind_ = Kind::Aggregate; }
  void VisitExpEnumeration(VELMAR::ExpEnumeration*) override { kind_ = Kind::Enumeration; }
  void VisitExpSelect(VELMAR::ExpSelect*) override { kind_ = Kind::Select; }

  Kind kind_ = Kind::Other;
};

bool AreDistinct(const std::vector<RecordType::Attribute>& attributes, std::size_t first) {
  std::set<std::string> names;
  for (std::size_t i = first; i < attributes.size(); ++i) {
    if (!names.insert(attributes[i].name).second) return false;
  }
  return true;
}

std::string WithoutSchema(const std::string& qualified) {
  const std::size_t at = qualified.find("::");
  return at == std::string::npos ? qualified : qualified.substr(at + 2);
}

}  // namespace

std::unique_ptr<RecordType> RecordTypes::Describe(ExpEntityRuntimeType& type) {
  auto described = std::make_unique<RecordType>();
  described->name = type.GetName();
  const std::unique_ptr<ExpEntity> example(type.CreateInstance(-1));
  const std::vector<std::string>& names = *type.GetMemberNames();
  const std::size_t count = std::min(names.size(), static_cast<std::size_t>(type.GetNofExplicitMembers()));
  for (std::size_t i = 0; i < count; ++i) {
    described->attributes.push_back({names[i], KindFinder().Of(example->GetMember(static_cast<int>(i)))});
  }
  described->firstOwn = std::min(count, static_cast<std::size_t>(type.GetExternalMappingStartIndex()));
  described->hasDistinctNames = AreDistinct(described->attributes, 0);
  described->hasDistinctOwnNames = AreDistinct(described->attributes, described->firstOwn);
  return described;
}

ExpEntityRuntimeType* RecordTypes::Registered(const std::string& name) {
  if (schema_.empty()) return nullptr;
  const ExpEntityRuntimeType* type = FindType(name, schema_);
  if (type == nullptr && !hasFallback_ && !LibraryFile(schema_).empty()) {
    hasFallback_ = true;
    LoadFallback();
    type = FindType(name, schema_);
  }
  return const_cast<ExpEntityRuntimeType*>(type);  // an example is made of it
}

const RecordType* RecordTypes::Find(const std::string& name) {
  if (const auto known = types_.find(name); known != types_.end()) return known->second.get();
  ExpEntityRuntimeType* type = Registered(name);
  std::unique_ptr<RecordType> described = type == nullptr ? nullptr : Describe(*type);
  RecordType* const found = described.get();
  types_.emplace(name, std::move(described));
  if (found == nullptr) return nullptr;
  for (const std::string& supertype : *type->GetSuperClasses()) {
    const RecordType* above = Find(WithoutSchema(supertype));
    if (above != nullptr) found->supertypes.push_back(above);
  }
  return found;
}

const RecordType* RecordTypes::FindInHeader(const std::string& name) {
  if (const auto known = headerTypes_.find(name); known != headerTypes_.end()) return known->second.get();
  ExpEntityRuntimeType* type = VELMAR::ExpRuntimeRegistry::GetInstance()->GetEntityRuntimeType(name, kHeaderSchema);
  const bool isThere = type != nullptr && type->GetSchema() == kHeaderSchema;
  return headerTypes_.emplace(name, isThere ? Describe(*type) : nullptr).first->second.get();
}

std::string TextOf(const std::vector<WrittenValue>& values, std::size_t at) {
  using ValueKind = WrittenValue::Kind;
  std::string text;
  std::vector<std::size_t> ends;  // of the aggregates and typed values that are open
  const std::size_t last = values[at].end;
  bool isFirst = true;
  for (std::size_t i = at; i < last; ++i) {
    for (; !ends.empty() && ends.back() == i; ends.pop_back()) {
      text += ')';
      isFirst = false;
    }
    if (!isFirst) text += ", ";
    isFirst = false;
    const WrittenValue& value = values[i];
    switch (value.kind) {
      case ValueKind::String:
        text += '\'' + VELMAR::ReplaceString(TextOfString(value.text), "'", "''") + '\'';
        break;
      case ValueKind::Binary:
        text += '"' + value.text + '"';
        break;
      case ValueKind::Enumeration:
        text += '.' + value.text + '.';
        break;
      case ValueKind::Reference:
        text += '#' + value.text;
        break;
      case ValueKind::Unset:
        text += '$';
        break;
      case ValueKind::Omitted:
        text += '*';
        break;
      case ValueKind::Aggregate:
      case ValueKind::Typed:
        text += value.text + '(';
        ends.push_back(value.end);
        isFirst = true;
        break;
      default:
        text += value.text;
    }
  }
  return text.append(ends.size(), ')');
}

std::string TextOfString(const std::string& written) {
  std::string text = VELMAR::ConvertSTEPStringToUtf8(written);
  return IsWellFormedUtf8(text) ? text : written;
}

}  // namespace velmar
