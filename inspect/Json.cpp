#include "Json.h"

#include <nlohmann/json.hpp>

namespace velmar {

namespace {

Json CountsOf(const std::vector<std::pair<std::string, std::size_t>>& counts) {
  Json json = Json::array();
  for (const auto& [type, count] : counts) json.push_back({{"type", type}, {"count", count}});
  return json;
}

Json TextOrNull(const std::string& text) { return text.empty() ? Json(nullptr) : Json(text); }

Json HeaderOf(const FileInfo& info) {
  Json json = {{"file_description", nullptr}, {"file_name", nullptr}, {"file_schema", info.schemas}};
  if (info.description) {
    json["file_description"] = {{"description", info.description->description},
                                {"implementation_level", info.description->implementationLevel}};
  }
  if (info.name) {
    json["file_name"] = {{"name", info.name->name},
                         {"time_stamp", info.name->timeStamp},
                         {"author", info.name->author},
                         {"organization", info.name->organization},
                         {"preprocessor_version", info.name->preprocessorVersion},
                         {"originating_system", info.name->originatingSystem},
                         {"authorization", info.name->authorization}};
  }
  return json;
}

Json UnresolvedOf(const FileInfo& info) {
  std::size_t count = 0;
  Json missing = Json::array();
  for (const UnresolvedReference& reference : info.unresolved) {
    count += reference.count;
    missing.push_back({{"to", reference.to},
                       {"count", reference.count},
                       {"from", reference.from},
                       {"line", reference.place.line},
                       {"column", reference.place.column}});
  }
  return {{"count", count}, {"missing", missing}};
}

Json ToJson(const Finding& finding) {
  const bool isPlaced = finding.place.line > 0;
  return {{"code", NameOf(finding.code)},
          {"severity", Name(finding.severity)},
          {"line", isPlaced ? Json(finding.place.line) : Json(nullptr)},
          {"column", isPlaced ? Json(finding.place.column) : Json(nullptr)},
          {"instance", finding.instance > 0 ? Json(finding.instance) : Json(nullptr)},
          {"attribute", TextOrNull(finding.attribute)},
          {"text", finding.text},
          {"hint", TextOrNull(finding.hint)}};
}

Json NumberOrNull(std::int64_t number) { return number < 0 ? Json(nullptr) : Json(number); }

Json ToJson(const DefinedProduct& product) {
  Json shapes = Json::array();
  for (const TypedInstance& shape : product.shapes) shapes.push_back({{"id", shape.number}, {"type", shape.type}});
  return {{"id", product.number},
          {"formation", NumberOrNull(product.formation)},
          {"product", NumberOrNull(product.product)},
          {"product_id", product.id},
          {"name", product.name},
          {"description", product.description},
          {"version", product.version},
          {"is_defined", product.isDefined},
          {"is_assembly", !product.usages.empty()},
          {"shapes", shapes}};
}

Json ToJson(const Usage& usage, const ProductStructure& structure) {
  Json quantity = nullptr;
  if (usage.quantity) {
    quantity = {{"value", usage.quantity->value},
                {"type", TextOrNull(usage.quantity->type)},
                {"unit", TextOrNull(usage.quantity->unit)}};
  }
  return {{"id", usage.instance.number},
          {"type", usage.instance.type},
          {"assembly", structure.products[usage.assembly].number},
          {"component", structure.products[usage.component].number},
          {"usage_id", usage.id},
          {"name", usage.name},
          {"reference_designator", usage.designator},
          {"quantity", quantity},
          {"is_structure", usage.isStructure},
          {"upper_usage", NumberOrNull(usage.upperUsage)},
          {"next_usage", NumberOrNull(usage.nextUsage)}};
}

Json ToJson(const Difference::Side& side) {
  if (side.where.line == 0) return nullptr;
  return {{"id", NumberOrNull(side.number)}, {"line", side.where.line}, {"column", side.where.column}};
}

Json ToJson(const std::vector<Difference>& differences) {
  constexpr const char* kKinds[] = {"changed", "removed", "added"};
  Json json = Json::array();
  for (const Difference& difference : differences) {
    Json values = Json::array();
    for (const ChangedValue& value : difference.values) {
      values.push_back(
          {{"attribute", value.attribute}, {"before", TextOrNull(value.before)}, {"after", TextOrNull(value.after)}});
    }
    json.push_back({{"kind", kKinds[static_cast<int>(difference.kind)]},
                    {"type", difference.type},
                    {"before", ToJson(difference.before)},
                    {"after", ToJson(difference.after)},
                    {"values", values}});
  }
  return json;
}

Json AttributesOf(const RecordView& record) {
  Json json = Json::object();
  for (const AttributeView& attribute : record.attributes) {
    json[*attribute.name] = attribute.value == nullptr ? Json(nullptr) : JsonOf(*attribute.value);
  }
  return json;
}

}  // namespace

Json ToJson(const Findings& findings) {
  Json json = Json::array();
  for (const Finding& finding : findings.WithPlace()) json.push_back(ToJson(finding));
  for (const Finding& finding : findings.WithoutPlace()) json.push_back(ToJson(finding));
  return json;
}

Json ToJson(const FileInfo& info, const Findings& findings) {
  return {{"file", info.file},
          {"size", info.size},
          {"header", HeaderOf(info)},
          {"schema",
           {{"name", info.readAs},
            {"protocol", TextOrNull(info.protocol)},
            {"library", TextOrNull(info.library)},
            {"supported", info.isSchemaSupported}}},
          {"instances", info.instances},
          {"complex_instances", info.complexInstances},
          {"largest_number", info.largestNumber},
          {"types", CountsOf(info.types)},
          {"unknown_types", CountsOf(info.unknownTypes)},
          {"unresolved_references", UnresolvedOf(info)},
          {"findings", ToJson(findings)},
          {"findings_not_listed", findings.NotKept()},
          {"reading",
           {{"seconds", info.seconds},
            {"megabytes_per_second", info.MegabytesPerSecond()},
            {"peak_memory", info.peakMemory}}}};
}

Json ToJson(const InstanceView& instance, Place place) {
  const bool isPlaced = place.line > 0;
  Json json = {{"id", instance.number},
               {"type", instance.type},
               {"line", isPlaced ? Json(place.line) : Json(nullptr)},
               {"column", isPlaced ? Json(place.column) : Json(nullptr)}};
  if (instance.isComplex) {
    json["parts"] = Json::array();
    for (const RecordView& record : instance.records) {
      json["parts"].push_back({{"type", *record.type}, {"attributes", AttributesOf(record)}});
    }
  } else {
    json["attributes"] = AttributesOf(instance.records.front());
  }
  return json;
}

Json ToJson(const Listing& listing) {
  Json json = Json::array();
  for (const Listing::Row& row : listing.rows) {
    Json attributes = Json::object();
    for (std::size_t i = 0; i < row.values.size(); ++i) {
      if (row.values[i] != nullptr) attributes[listing.attributes[i]] = JsonOf(*row.values[i]);
    }
    json.push_back({{"id", row.number}, {"type", row.type}, {"attributes", attributes}});
  }
  return json;
}

Json ToJson(const std::vector<Reference>& references, const InstanceView& instance) {
  Json list = Json::array();
  for (const Reference& reference : references) {
    list.push_back({{"from", reference.from},
                    {"type", *reference.type},
                    {"attribute", *reference.attribute},
                    {"to", reference.to},
                    {"level", reference.level}});
  }
  return {{"id", instance.number}, {"type", instance.type}, {"references", list}};
}

Json ToJson(const ProductStructure& structure) {
  Json products = Json::array();
  for (const DefinedProduct& product : structure.products) products.push_back(ToJson(product));
  Json usages = Json::array();
  for (const Usage& usage : structure.usages) usages.push_back(ToJson(usage, structure));
  Json roots = Json::array();
  for (const std::size_t root : structure.roots) roots.push_back(structure.products[root].number);
  return {{"products", products}, {"usages", usages}, {"roots", roots}};
}

Json ToJson(const Comparison& comparison) {
  Json types = Json::array();
  for (const auto& [type, counts] : comparison.byType) {
    types.push_back({{"type", type}, {"changed", counts.changed}, {"removed", counts.removed}, {"added", counts.added}});
  }
  return {{"types", types},
          {"header", ToJson(comparison.header)},
          {"differences", ToJson(comparison.instances)},
          {"differences_not_listed", comparison.notKept}};
}

Json ToJson(const std::vector<SchemaInfo>& schemas) {
  Json json = Json::array();
  for (const SchemaInfo& schema : schemas) {
    json.push_back({{"name", schema.name},
                    {"protocol", TextOrNull(schema.protocol)},
                    {"library", TextOrNull(schema.library)},
                    {"types", schema.types}});
  }
  return json;
}

Json ToJson(const TypeInfo& type) {
  Json attributes = Json::array();
  for (const AttributeInfo& attribute : type.attributes) {
    const bool isKnown = !attribute.expressType.empty();
    attributes.push_back({{"name", attribute.name},
                          {"owner", attribute.owner},
                          {"type", TextOrNull(attribute.expressType)},
                          {"optional", isKnown ? Json(attribute.isOptional) : Json(nullptr)},
                          {"derived", isKnown ? Json(attribute.isDerived) : Json(nullptr)}});
  }
  return {{"schema", type.schema},
          {"type", type.name},
          {"attributes", attributes},
          {"supertypes", type.supertypes},
          {"subtypes", type.subtypes}};
}

std::string ToText(const Json& json) {
  return json.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
}

}  // namespace velmar
