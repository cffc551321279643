/// @file Renumbered.h
/// Makes files that say the same in other numbers and another order.
#pragma once

#include <algorithm>
#include <cctype>
#include <map>
#include <random>
#include <string>
#include <vector>

#include "RunProgram.h"
#include "WrittenInstances.h"

namespace velmar {

/// The text of a file with other numbers, which `numberOf` gives for those that it has; strings and comments stay.
template <typename NumberOf>
std::string WithNumbers(const std::string& text, NumberOf numberOf) {
  std::string changed;
  for (std::size_t i = 0; i < text.size();) {
    std::size_t end = i + 1;
    if (text[i] == '\'') {
      end = std::min(text.find('\'', end), text.size() - 1) + 1;
    } else if (text.compare(i, 2, "/*") == 0) {
      end = std::min(text.find("*/", i + 2), text.size() - 2) + 2;
    } else if (text[i] == '#') {
      while (end < text.size() && std::isdigit(static_cast<unsigned char>(text[end]))) ++end;
      if (end > i + 1 && end < i + 18) {
        const std::size_t first = std::min(text.find_first_not_of('0', i + 1), end - 1);  // #007 is #7
        changed += "#" + numberOf(text.substr(first, end - first));
        i = end;
        continue;
      }
    }
    changed.append(text, i, end - i);
    i = end;
  }
  return changed;
}

/// The file with its instances in any order and with any numbers. What is no instance is left out.
inline std::string Renumbered(const std::string& path, unsigned seed) {
  const std::string text = ReadFile(path);
  std::vector<std::string> instances;
  std::vector<std::int64_t> numbers;
  const int begin = ForEachWrittenInstance(path, ValuesRead::None, [&](const WrittenInstance& instance) {
    if (instance.IsInHeader()) return;
    instances.push_back("#" + std::to_string(instance.number) + "=" +
                        text.substr(static_cast<std::size_t>(instance.begin), static_cast<std::size_t>(instance.end - instance.begin)) +
                        ";\n");
  });
  if (begin < 0) return text;
  std::mt19937 random(seed);
  std::shuffle(instances.begin(), instances.end(), random);
  std::map<std::string, std::string> changed;
  std::vector<int> free(4 * instances.size() + 1000);
  for (std::size_t i = 0; i < free.size(); ++i) free[i] = static_cast<int>(i + 1);
  std::shuffle(free.begin(), free.end(), random);
  std::string all = text.substr(0, static_cast<std::size_t>(begin)) + "\n";
  for (const std::string& instance : instances) {
    all += WithNumbers(instance, [&](const std::string& number) {
      const std::string& known = changed[number];
      if (!known.empty()) return known;
      const std::string given = std::to_string(free.empty() ? 90000000 + static_cast<int>(changed.size()) : free.back());
      if (!free.empty()) free.pop_back();
      return changed[number] = given;
    });
  }
  return all + "ENDSEC;\nEND-ISO-10303-21;\n";
}

}  // namespace velmar
