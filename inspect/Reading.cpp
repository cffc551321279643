#include "Reading.h"

#include "Input.h"
#include "Part21Source.h"

namespace velmar {

Reading::Reading(const std::string& path, const ReadingOptions& options)
    : findings_(path), population_(options) {
  ReportedProgress progress(options.progress);
  const Part21Source source(path, progress.Part(0, Part21Source::kShareOfJson));
  population_.ReadAndReport(source.Path(), findings_, progress.Part(source.Share(), 1));
  size_ = FileSize(path);
}

}  // namespace velmar
