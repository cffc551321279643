/// @file NumberSet.h
/// For the library itself: a set of many instance numbers.
#pragma once

#include <bitset>
#include <cstddef>
#include <memory>
#include <vector>

namespace VELMAR {

/// Takes a bit for each number up to the greatest, except for long stretches without any, which cost next to nothing.
class NumberSet {
 public:
  /// Linear in the number, and constant for those that are no greater.
  void Insert(int number) {
    const auto place = static_cast<std::size_t>(static_cast<unsigned int>(number));
    if (place / kPage >= pages_.size()) pages_.resize(place / kPage + 1);
    std::unique_ptr<Page>& page = pages_[place / kPage];
    if (page == nullptr) page = std::make_unique<Page>();
    page->set(place % kPage);
  }

  /// Calls `action` for each number: those from 0 on, ascending, then the negative ones.
  template <class Action>
  void ForEach(Action action) const {
    for (std::size_t i = 0; i < pages_.size(); ++i) {
      for (std::size_t bit = 0; pages_[i] != nullptr && bit < kPage; ++bit) {
        if (pages_[i]->test(bit)) action(static_cast<int>(static_cast<unsigned int>(i * kPage + bit)));
      }
    }
  }

 private:
  static constexpr std::size_t kPage = 32768;
  using Page = std::bitset<kPage>;

  std::vector<std::unique_ptr<Page>> pages_;
};

}  // namespace VELMAR
