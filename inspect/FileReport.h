/// @file FileReport.h
/// All that there is to say of a file, for a person: a page of HTML.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "DictionaryLoader.h"
#include "FileInfo.h"
#include "Findings.h"
#include "Population.h"
#include "ProductStructure.h"

namespace velmar {

/// What a page shows of a file. Where there is more, it says how much.
struct ReportLimits {
  std::size_t findings = 200;  ///< with a place; those about the file as a whole are all shown
  std::size_t products = 2000;  ///< lines of the product structure
};

/// A file, with all that a page shows of it.
struct FileReport {
  FileInfo info;
  ProductStructure structure;
  Findings findings;              ///< in the order of their places
  std::vector<Excerpt> excerpts;  ///< of the first findings with a place
  ReportLimits limits;
};

/// Reads and checks a file. Throws std::runtime_error where it, or the text of the schema, cannot be read; what is wrong with
/// the file is a finding. The memory is that of the population while it is described. `reading.progress` is told of all of it.
FileReport MakeReport(const std::string& path, const ReadingOptions& reading, const SchemaChoice& schema,
                      const ReportLimits& limits = {});

/// The page: UTF-8, with all that it needs inside. Whatever the file holds is shown as text. The same for the same file.
std::string ToHtml(const FileReport& report);

}  // namespace velmar
