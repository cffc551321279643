#include "References.h"

#include <algorithm>
#include <set>
#include <tuple>

#include "Instances.h"
#include "Values.h"

namespace velmar {

namespace {

// All references, or with a number those to it, by `to` and `from`. Levels are 0.
std::vector<Reference> Collect(Population& population, int number) {
  std::vector<Reference> references;
  std::vector<int> links;
  for (const int from : population.Numbers()) {
    VELMAR::ExpEntity* entity = population.GetEntity(from);
    if (entity == nullptr) continue;
    for (const RecordView& record : ViewOf(*entity).records) {
      for (const AttributeView& attribute : record.attributes) {
        if (attribute.value == nullptr) continue;
        links.clear();
        AddLinksOf(*attribute.value, links);
        std::sort(links.begin(), links.end());
        links.erase(std::unique(links.begin(), links.end()), links.end());
        for (const int to : links) {
          if (number == 0 || to == number)
            references.push_back({from, record.type, attribute.name, to, 0, false});
        }
      }
    }
  }
  std::stable_sort(references.begin(), references.end(),
                   [](const Reference& a, const Reference& b) { return a.to < b.to; });
  return references;
}

}  // namespace

std::vector<Reference> ReferencesTo(Population& population, int number, int depth) {
  const std::vector<Reference> all = Collect(population, depth == 1 ? number : 0);
  std::vector<Reference> found;
  std::set<int> seen = {number};
  std::vector<int> level = {number};
  for (int n = 1; !level.empty() && (depth == 0 || n <= depth); ++n) {
    std::vector<int> next;
    for (const int to : level) {
      auto reference = std::lower_bound(all.begin(), all.end(), to,
                                        [](const Reference& a, int target) { return a.to < target; });
      for (; reference != all.end() && reference->to == to; ++reference) {
        found.push_back(*reference);
        found.back().level = n;
        found.back().isFirst = seen.insert(reference->from).second;
        if (found.back().isFirst) next.push_back(reference->from);
      }
    }
    std::sort(next.begin(), next.end());
    level = std::move(next);
  }
  return found;
}

}  // namespace velmar
