/// @file ProductStructure.h
/// The products of a file, and which of them are made of which (ISO 10303-41, ISO 10303-44).
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "DictionaryLoader.h"
#include "Findings.h"
#include "Progress.h"

namespace velmar {

/// An instance and its type; of a complex one the names of its records in parentheses.
struct TypedInstance {
  std::int64_t number = -1;
  std::string type;
};

/// A product in one of its definitions, which is what usages speak of. Texts are UTF-8, and empty where the file has none.
struct DefinedProduct {
  std::int64_t number = -1;      ///< of the PRODUCT_DEFINITION, or of the PRODUCT where no definition leads to it
  std::int64_t formation = -1;   ///< -1 where there is none
  std::int64_t product = -1;     ///< likewise
  bool isDefined = true;         ///< whether `number` is that of a definition
  std::string id;
  std::string name;
  std::string description;
  std::string version;                ///< the id of the formation
  std::vector<TypedInstance> shapes;  ///< the representations of its shape, those that are stated to be equivalent included
  std::vector<std::size_t> usages;    ///< of its components, in the order of the file
};

/// How much of a component there is.
struct Quantity {
  std::string value;  ///< as the file writes it
  std::string type;   ///< "COUNT_MEASURE"; empty where the file names none
  std::string unit;   ///< "MILLIMETRE", "INCH"; empty where there is none
};

/// A component in an assembly, an ASSEMBLY_COMPONENT_USAGE.
struct Usage {
  TypedInstance instance;
  std::size_t assembly = 0;   ///< in the list of products
  std::size_t component = 0;  ///< likewise
  std::string id;
  std::string name;
  std::string designator;  ///< reference_designator
  std::optional<Quantity> quantity;
  std::int64_t upperUsage = -1;  ///< of a SPECIFIED_HIGHER_USAGE_OCCURRENCE, with nextUsage
  std::int64_t nextUsage = -1;
  /// Whether it makes the component a part of the assembly. A usage that singles out one place of a component deep within an
  /// assembly, by the usages that lead there, does not: these do.
  bool isStructure = true;
};

struct ProductStructure {
  std::vector<DefinedProduct> products;  ///< in the order of the file, those without a definition last
  std::vector<Usage> usages;             ///< those with both ends, in the order of the file
  /// The products with a definition that are no component of another one; of assemblies that contain each other one stands for
  /// all, where none of them is a component of anything else.
  std::vector<std::size_t> roots;
};

/// Equal components of one assembly: the same product, in the same kind of usage and quantity.
struct Component {
  std::size_t product;
  std::vector<std::size_t> usages;
};

/// The components of a product, in the order of their first usages; each for itself where they are not `grouped`.
std::vector<Component> ComponentsOf(const ProductStructure& structure, std::size_t product, bool grouped);

/// Reads the product structure of a file. Types and attributes are those of the schema of choice; where this program does not
/// have it, those of ISO 10303-41 and ISO 10303-44 alone. What is wrong with the syntax or the
/// structure becomes findings.
///
/// Throws std::runtime_error where the file or the text of the schema cannot be read. Linear in the length of the file.
ProductStructure ReadProductStructure(const std::string& path, const SchemaChoice& choice, Findings& findings,
                                      const Progress& progress = {});

}  // namespace velmar
