/// @file ReportTexts.h
/// What every report has, as the files of this folder have it.
#pragma once

namespace velmar {

extern const char* const kReportPage;    ///< with holes, as Fill has them
extern const char* const kReportStyle;
extern const char* const kReportScript;

}  // namespace velmar
