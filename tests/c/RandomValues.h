/// @file RandomValues.h
/// Random attribute values, and values as data that can be compared: what two populations have to agree in.
#pragma once

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <limits>
#include <map>
#include <memory>
#include <random>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "CapturedLog.h"
#include "ExpFile.h"
#include "ExpSchemaLibrary.h"
#include "ReadingSupport.h"
#include "VelmarClasses.h"

namespace VELMAR::TestData {

/// The kinds of values, as the library's classes tell them apart.
enum class Kind { Real, Integer, String, Link, List, Enumeration, Select, Binary };

// ---------------------------------------------------------------------------------------------- values as
// data

/// What a value holds. Equal values have equal descriptions, in which numbers are exact.
struct ValueData {
  Kind kind = Kind::Binary;
  bool isNull = false;
  bool notProvided = false;
  bool omitted = false;
  double real = 0;
  int number = 0;                      ///< of an integer, a link or an item of an enumeration
  std::string text;                    ///< of a string, and the name of an item
  std::vector<std::string> typeNames;  ///< of a select
  std::vector<ValueData> elements;     ///< of a list; of a select its value, if there is one

  bool IsFlagged() const { return notProvided || omitted; }

  std::string Description() const {
    if (isNull) return "null";
    static const char* const kNames[] = {"real", "integer",     "string", "link",
                                         "list", "enumeration", "select", "binary"};
    std::string out = kNames[static_cast<int>(kind)];
    if (notProvided) out += " $";
    if (omitted) out += " *";
    if (kind == Kind::Real) {
      char exact[40];
      std::snprintf(exact, sizeof exact, " %a", real);
      out += exact;
    }
    if (kind == Kind::Integer || kind == Kind::Link || kind == Kind::Enumeration)
      out += ' ' + std::to_string(number);
    if (kind == Kind::String || kind == Kind::Enumeration) out += " <" + text + ">";
    for (const std::string& name : typeNames) out += ' ' + name;
    if (kind == Kind::List || kind == Kind::Select) {
      out += " (";
      for (const ValueData& element : elements) out += element.Description() + "; ";
      out += ")";
    }
    return out;
  }
};

/// The type names of a select, which has no operation that gives them.
inline std::vector<std::string> TypeNamesOf(ExpSelect& select) {
  std::vector<std::string> names;
  if (select.GetExpSelectValue() == nullptr || select.IsNotProvided() || select.IsOmitted()) return names;
  const std::string text = select.ToString();
  std::size_t begin = 0;
  for (std::size_t end; (end = text.find('(', begin)) != std::string::npos; begin = end + 1) {
    const std::string name = text.substr(begin, end - begin);
    const bool isName = !name.empty() && (name[0] == '_' || (name[0] >= 'A' && name[0] <= 'Z')) &&
                        name.find_first_not_of("ABCDEFGHIJKLMNOPQRSTUVWXYZ_0123456789") == std::string::npos;
    if (!isName) break;
    names.push_back(name);
  }
  return names;
}

/// What the value holds.
inline ValueData DataOf(ExpAttribute* value) {
  ValueData data;
  if (value == nullptr) {
    data.isNull = true;
    return data;
  }
  data.notProvided = value->IsNotProvided();
  data.omitted = value->IsOmitted();
  if (auto* real = dynamic_cast<ExpReal*>(value)) {
    data.kind = Kind::Real;
    data.real = real->GetExpReal();
  } else if (auto* integer = dynamic_cast<ExpInteger*>(value)) {
    data.kind = Kind::Integer;
    data.number = integer->GetExpInteger();
  } else if (auto* string = dynamic_cast<ExpString*>(value)) {
    data.kind = Kind::String;
    data.text = string->GetExpString();
  } else if (auto* link = dynamic_cast<ExpLink*>(value)) {
    data.kind = Kind::Link;
    data.number = link->GetExpLink();
  } else if (auto* item = dynamic_cast<ExpEnumeration*>(value)) {
    data.kind = Kind::Enumeration;
    data.number = item->GetExpEnumeration();
    data.text = item->GetExpEnumerationString();
  } else if (auto* list = dynamic_cast<ExpAggregation*>(value)) {
    data.kind = Kind::List;
    for (ExpAttribute* element : *list->GetExpAggregation()) data.elements.push_back(DataOf(element));
  } else if (auto* select = dynamic_cast<ExpSelect*>(value)) {
    data.kind = Kind::Select;
    data.typeNames = TypeNamesOf(*select);
    if (ExpAttribute* selected = select->GetExpSelectValue()) data.elements.push_back(DataOf(selected));
  }
  return data;
}

/// The number that a real one becomes where it is written: fifteen significant digits, and no negative zero.
inline double Rounded(double value) {
  char text[40];
  std::snprintf(text, sizeof text, "%.14e", value);
  return value == 0 ? 0.0 : std::strtod(text, nullptr);
}

inline ValueData AsKept(const ValueData& data);

/// The elements that an aggregate has after it was written and read: those with flags, enumerations and nulls
/// are gone, and a select without type names is its value.
inline std::vector<ValueData> ElementsAsKept(const std::vector<ValueData>& elements) {
  std::vector<ValueData> kept;
  for (const ValueData& element : elements) {
    if (element.isNull || element.IsFlagged() || element.kind == Kind::Enumeration) continue;
    if (element.kind == Kind::Select && element.typeNames.empty()) {
      for (const ValueData& value : ElementsAsKept(element.elements)) kept.push_back(value);
    } else {
      kept.push_back(AsKept(element));
    }
  }
  return kept;
}

/// What a value holds after it was written and read. Beside a flag there is nothing: the value is that of a
/// new object. Binary values are written `$`.
inline ValueData AsKept(const ValueData& data) {
  ValueData kept;
  kept.kind = data.kind;
  kept.isNull = data.isNull;
  kept.omitted = data.omitted;
  kept.notProvided = (data.notProvided || data.kind == Kind::Binary) && !data.omitted;
  if (data.IsFlagged()) {
    if (data.kind == Kind::Link || data.kind == Kind::Enumeration) kept.number = -1;
    return kept;
  }
  kept.real = Rounded(data.real);
  kept.number = data.number;
  kept.text = data.text;
  kept.typeNames = data.typeNames;
  if (data.kind == Kind::List) kept.elements = ElementsAsKept(data.elements);
  if (data.kind == Kind::Select) {
    for (const ValueData& value : data.elements) kept.elements.push_back(AsKept(value));
  }
  return kept;
}

/// The values of an instance, one a line: of each record those that its type declares itself, or all with
/// `inherited`. `asKept` is what becomes of them where they are written and read.
inline std::string DescriptionOf(ExpEntity& entity, bool asKept, bool inherited) {
  std::string out = "#" + std::to_string(entity.GetEntityNumber()) + ' ' + entity.GetExpClassName() + '\n';
  if (auto* complex = dynamic_cast<ExpExternalMappingEntity*>(&entity)) {
    std::map<std::string, ExpEntity*> parts;  // in the order in which they are written
    for (ExpEntity* part : *complex->GetEntities()) parts.emplace(part->GetExpClassName(), part);
    for (const auto& [name, part] : parts) {
      out += "part " + name + '\n';
      for (int i = inherited ? 0 : part->GetExternalMappingStartIndex(); i < part->GetNofExplicitMembers();
           ++i) {
        const ValueData data = DataOf(part->GetMember(i));
        out += (asKept ? AsKept(data) : data).Description() + '\n';
      }
    }
    return out;
  }
  for (int i = 0; i < entity.GetNofExplicitMembers(); ++i) {
    const ValueData data = DataOf(entity.GetMember(i));
    out += (asKept ? AsKept(data) : data).Description() + '\n';
  }
  return out;
}

// ------------------------------------------------------------------------------------------------ random
// values

/// What a value can be.
struct Wanted {
  Kind kind = Kind::Binary;
  std::vector<std::string> items;  ///< of an enumeration
  std::vector<Wanted> choices;  ///< of a list: what its elements can be; of a select: what its value can be
  std::vector<std::string> typeNames;  ///< as one of the choices of a select: the names it is written under
};

/// A source of random values, the same ones for the same seed.
class RandomValues {
 public:
  /// With `keepable`, of the values in lists only those that are read again: no flags, no enumerations, no
  /// lists with a type name. Then a population is written the same after it was read.
  RandomValues(unsigned int seed, bool keepable) : random_(seed), keepable_(keepable) {}

  int Below(int n) { return static_cast<int>(random_() % static_cast<unsigned int>(n)); }
  bool OneIn(int n) { return Below(n) == 0; }

  template <class T>
  const T& OneOf(const std::vector<T>& values) {
    return values[static_cast<std::size_t>(Below(static_cast<int>(values.size())))];
  }

  int Integer() {
    static const int kEdges[] = {0,
                                 1,
                                 -1,
                                 9,
                                 10,
                                 -10,
                                 99999,
                                 std::numeric_limits<int>::max(),
                                 std::numeric_limits<int>::min(),
                                 std::numeric_limits<int>::min() + 1};
    if (OneIn(2)) return kEdges[Below(static_cast<int>(std::size(kEdges)))];
    return static_cast<int>(random_()) >> Below(32);
  }

  /// Any finite number but those that are infinite when they are rounded to fifteen digits.
  double Real() {
    using Limits = std::numeric_limits<double>;
    static const double kEdges[] = {0.0,
                                    -0.0,
                                    1.0,
                                    -1.0,
                                    0.1,
                                    1.0 / 3,
                                    2.0 / 3,
                                    1e-5,
                                    0.0001,
                                    123456789012345.0,
                                    1234567890123456.0,
                                    999999999999999.5,
                                    0.999999999999999944,
                                    1e15,
                                    1e-15,
                                    1e22,
                                    1e23,
                                    1e308,
                                    -1e308,
                                    1.79769313486231e308,
                                    Limits::min(),
                                    -Limits::min(),
                                    Limits::denorm_min(),
                                    3 * Limits::denorm_min(),
                                    -2.2250738585072011e-308};
    switch (Below(3)) {
      case 0:
        return kEdges[Below(static_cast<int>(std::size(kEdges)))];
      case 1:
        return Integer() / std::pow(10, Below(9));
      default:
        for (;;) {
          const std::uint64_t bits = static_cast<std::uint64_t>(random_()) << 32 | random_();
          double value;
          std::memcpy(&value, &bits, sizeof value);
          if (std::isfinite(value) && std::isfinite(Rounded(value))) return value;
        }
    }
  }

  /// A text of any characters, surrogates and those beyond Unicode included, as Part 21 can write it; `utf8`
  /// is the text itself.
  std::string StepText(std::string& utf8) {
    static const int kLengths[] = {0, 1, 2, 5, 12, 40, 300};
    std::string step;
    utf8.clear();
    for (int left = kLengths[Below(static_cast<int>(std::size(kLengths)))]; left > 0; --left) {
      const unsigned int c = Character();
      utf8 += reading::Utf8(c);
      step += StepForm(c);
    }
    return step;
  }

  /// The name of a type or an item.
  std::string Name() {
    std::string name =
        OneOf<std::string>({"A", "T", "LABEL", "LENGTH_MEASURE", "_", "ENDSEC", "DATA", "E", "HEADER_1"});
    if (OneIn(3)) name += '_' + std::to_string(Below(1000));
    return name;
  }

  /// Sets the value to something random that it can be. Links lead to #1 to `lastNumber` mostly.
  void Fill(ExpAttribute& value, const Wanted& wanted, int lastNumber) {
    // A bare real that is marked has no text, so an application does not mark it.
    const bool canBeMarked = wanted.kind != Kind::Real || dynamic_cast<ExpSchemaReal*>(&value) != nullptr;
    if (canBeMarked && OneIn(8)) value.SetNotProvided(true);
    if (canBeMarked && OneIn(16)) value.SetOmitted(true);
    Set(value, wanted, lastNumber, 0);
    if (auto* item = dynamic_cast<ExpEnumeration*>(&value);
        item != nullptr && item->GetExpEnumerationString().empty()) {
      item->SetNotProvided(true);
    }
    if (auto* select = dynamic_cast<ExpSelect*>(&value);
        select != nullptr && select->GetExpSelectValue() == nullptr) {
      select->SetNotProvided(true);
    }
  }

 private:
  unsigned int Character() {
    const auto between = [this](int first, int last) {
      return static_cast<unsigned int>(first + Below(last - first + 1));
    };
    switch (Below(10)) {
      case 0:
        return '\'';
      case 1:
        return '\\';
      case 2:
        return between(0, 0x1F);
      case 3:
        return between(0x7F, 0xFF);
      case 4:
        return between(0x100, 0xFFFF);
      case 5:
        return between(0xD7FF, 0xE000);
      case 6:
        return between(0x10000, 0x10FFFF);
      case 7:
        return between(0x1FFFF0, 0x1FFFFF);
      default:
        return between(' ', '~');
    }
  }

  std::string StepForm(unsigned int c) {
    if (c == '\'') return "''";
    if (c == '\\') return "\\\\";
    char text[24] = "";
    const bool isSurrogate = c >= 0xD800 && c <= 0xDFFF;
    switch (Below(4)) {
      case 0:
        std::snprintf(text, sizeof text, "\\X4\\%08X\\X0\\", c);
        break;
      case 1:
        if (c <= 0xFFFF) std::snprintf(text, sizeof text, "\\X2\\%04x\\X0\\", c);
        break;
      case 2:
        if (c <= 0xFF) std::snprintf(text, sizeof text, "\\X\\%02X", c);
        break;
      default:
        if (c >= 0xA0 && c <= 0xFF && c != 0xA7)
          std::snprintf(text, sizeof text, "\\S\\%c", static_cast<char>(c - 0x80));
        break;
    }
    if (*text == '\0' && isSurrogate) std::snprintf(text, sizeof text, "\\X2\\%04X\\X0\\", c);
    return *text == '\0' ? reading::Utf8(c) : text;
  }

  int Link(int lastNumber) {
    return OneIn(20) ? std::numeric_limits<int>::max() - Below(1000) : 1 + Below(lastNumber);
  }

  // Whether an element of this kind is read again.
  static bool IsKeptInLists(const Wanted& wanted) {
    if (wanted.kind == Kind::Enumeration || wanted.kind == Kind::Binary) return false;
    return wanted.kind != Kind::List || wanted.typeNames.empty();
  }

  void Set(ExpAttribute& value, const Wanted& wanted, int lastNumber, int depth) {
    switch (wanted.kind) {
      case Kind::Real:
        value.SetExpReal(Real());
        break;
      case Kind::Integer:
        value.SetExpInteger(Integer());
        break;
      case Kind::String: {
        std::string utf8;
        const std::string step = StepText(utf8);
        value.SetExpString(step);
        // Both what reading makes of the text and what is compared later.
        EXPECT_EQ(ExpString(step).GetExpString(), utf8) << step;
        break;
      }
      case Kind::Link:
        value.SetExpLink(Link(lastNumber));
        break;
      case Kind::Enumeration:
        value.SetExpEnumeration(wanted.items.empty() ? Name() : OneOf(wanted.items));
        break;
      case Kind::List:
        for (int left = Below(5); left > 0; --left) {
          if (ExpAttribute* element = NewElement(wanted, lastNumber, depth)) value.AddValue(element);
        }
        break;
      case Kind::Select: {
        if (wanted.choices.empty()) break;
        const Wanted& choice = OneOf(wanted.choices);
        if (choice.kind == Kind::Binary) break;
        // An empty list leaves a select that is read without a value, and one without a value cannot be
        // written.
        if (choice.kind == Kind::List) {
          std::unique_ptr<ExpAttribute> first;
          for (int tries = 0; first == nullptr && tries < 20; ++tries)
            first.reset(NewElement(choice, lastNumber, depth));
          if (first == nullptr || !IsKept(*first)) break;
          value.AddValue(first.release());
        }
        for (const std::string& name : choice.typeNames) value.AddExpSelectTypeName(name);
        Set(value, choice, lastNumber, depth);
        break;
      }
      case Kind::Binary:
        break;
    }
  }

  static bool IsKept(ExpAttribute& element) { return !ElementsAsKept({DataOf(&element)}).empty(); }

  // Null where there is none that can be kept, or none at this depth.
  ExpAttribute* NewElement(const Wanted& list, int lastNumber, int depth) {
    if (list.choices.empty() || depth > 4) return nullptr;
    const Wanted* wanted = &OneOf(list.choices);
    if (wanted->kind == Kind::Select) {
      if (wanted->choices.empty()) return nullptr;
      const Wanted& choice = OneOf(wanted->choices);
      if (!IsKeptInLists(choice)) return nullptr;
      if (choice.typeNames.empty() && keepable_) {
        wanted = &choice;  // as it is read
      } else {
        auto select = std::make_unique<ExpSelect>();
        for (const std::string& name : choice.typeNames) select->AddExpSelectTypeName(name);
        Set(*select, choice, lastNumber, depth + 1);
        return select->GetExpSelectValue() == nullptr ? nullptr : select.release();
      }
    }
    if (keepable_ && !IsKeptInLists(*wanted)) return nullptr;
    std::unique_ptr<ExpAttribute> element = New(wanted->kind);
    if (element == nullptr) return nullptr;
    Set(*element, *wanted, lastNumber, depth + 1);
    if (!keepable_ && wanted->kind != Kind::Real) {
      if (OneIn(6)) element->SetNotProvided(true);
      if (OneIn(6)) element->SetOmitted(true);
    }
    return element.release();
  }

  static std::unique_ptr<ExpAttribute> New(Kind kind) {
    switch (kind) {
      case Kind::Real:
        return std::make_unique<ExpReal>();
      case Kind::Integer:
        return std::make_unique<ExpInteger>();
      case Kind::String:
        return std::make_unique<ExpString>();
      case Kind::Link:
        return std::make_unique<ExpLink>();
      case Kind::List:
        return std::make_unique<ExpAggregation>();
      case Kind::Enumeration:
        return std::make_unique<ExpEnumeration>();
      default:
        return nullptr;
    }
  }

  std::mt19937 random_;
  const bool keepable_;
};

/// Adds an instance of one type, or a complex instance of several, with random values; `wanted` tells what
/// the value at a position of a type can be.
template <class WantedAt>
ExpEntity* AddRandom(ExpFile& file, int number, const std::vector<std::string>& types, WantedAt wanted,
                     int lastNumber, RandomValues& random) {
  const auto fill = [&](const std::string& type, bool isPart) {
    ExpEntity* entity = file.CreateEntity(type);
    for (int i = isPart ? entity->GetExternalMappingStartIndex() : 0; i < entity->GetNofExplicitMembers();
         ++i) {
      random.Fill(*entity->GetMember(i), wanted(type, i, entity), lastNumber);
    }
    return entity;
  };
  ExpEntity* entity;
  if (types.size() == 1) {
    entity = fill(types[0], false);
  } else {
    auto* complex = dynamic_cast<ExpExternalMappingEntity*>(file.CreateEntity("ExpExternalMappingEntity"));
    for (const std::string& type : types) complex->AddEntity(fill(type, true));
    entity = complex;
  }
  entity->SetEntityNumber(number);
  file.AddEntity(number, entity);
  return entity;
}

inline std::string TextOf(ExpFile& file) {
  std::ostringstream text;
  file.Write(text);
  return text.str();
}

/// The descriptions of all instances.
inline std::vector<std::string> DescriptionsOf(ExpFile& file, bool asKept, bool inherited) {
  std::vector<std::string> descriptions;
  for (int number = 0; number <= file.GetMaxEntityNumber(); ++number) {
    if (ExpEntity* entity = file.GetEntity(number))
      descriptions.push_back(DescriptionOf(*entity, asKept, inherited));
  }
  return descriptions;
}

/// That two lists of texts are the same, with no more than the first difference in the message.
inline void ExpectSame(const std::vector<std::string>& a, const std::vector<std::string>& b) {
  EXPECT_EQ(a.size(), b.size());
  for (std::size_t i = 0; i < a.size() && i < b.size(); ++i) ASSERT_EQ(a[i], b[i]);
}

/// Writes the population, reads it and compares: nothing is lost but what AsKept tells, and what was read is
/// written and read the same from then on. `keepable` populations are written the same from the first time
/// on.
inline void CheckRoundTrip(ExpFile& made, bool keepable) {
  const auto read = [](ExpFile& file, const std::string& text) {
    CapturedLog log;
    std::istringstream in(text);
    file.Read(in);
    EXPECT_EQ(log.text.find("-- line"), std::string::npos) << log.text;
  };
  const std::string text = TextOf(made);
  ExpFile once;
  read(once, text);
  ExpectSame(DescriptionsOf(once, false, false), DescriptionsOf(made, true, false));
  const std::string settled = TextOf(once);
  EXPECT_TRUE(settled == text || !keepable);
  ExpFile twice;
  read(twice, settled);
  // With `keepable`, inherited values of complex instances, too: the order of the records is that of their
  // names now.
  ExpectSame(DescriptionsOf(twice, false, keepable), DescriptionsOf(once, false, keepable));
  EXPECT_TRUE(TextOf(twice) == settled);
}

}  // namespace VELMAR::TestData
