/// @file SampleFiles.h
/// The texts of small AP214 files.
#pragma once

#include <string>

/// A file with these records in its DATA section, the first on line 8.
inline std::string FileWith(const std::string& data, const std::string& schema = "AUTOMOTIVE_DESIGN") {
  return "ISO-10303-21;\n"
         "HEADER;\n"
         "FILE_DESCRIPTION(('a test'),'2;1');\n"
         "FILE_NAME('t.stp','2026-01-01T00:00:00',('A','B'),('O'),'P','S','Z');\n"
         "FILE_SCHEMA(('" +
         schema +
         "'));\n"
         "ENDSEC;\n"
         "DATA;\n" +
         data +
         "ENDSEC;\n"
         "END-ISO-10303-21;\n";
}

/// One good instance on one line.
inline const std::string kPoint = "#1=CARTESIAN_POINT('p',(1.,2.,3.));\n";
