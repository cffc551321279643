#include "Reading.h"

#include <stdexcept>

#include "Input.h"
#include "Part21Source.h"

namespace velmar {

Reading::Reading(const std::string& path, const ReadingOptions& options)
    : findings_(path), population_(options) {
  const std::string why = WhyUnreadable(path);
  if (!why.empty()) throw std::runtime_error(path + " " + why);
  population_.ReadAndReport(Part21Source(path).Path(), findings_);
  size_ = FileSize(path);
}

}  // namespace velmar
