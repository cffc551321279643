/// @file Commands.h
/// One function per command of the program. Each adds its command to the program's options; where the command
/// is given, `run` becomes what carries it out: it prints data to standard output and messages to standard
/// error, and returns the exit status.
#pragma once

#include <CLI/CLI.hpp>
#include <functional>

namespace velmar {

using Run = std::function<int()>;

/// What files say about themselves, and how many instances of which types they hold.
void AddInfo(CLI::App& program, Run& run);

/// The instances of a type, with their attributes as columns.
void AddList(CLI::App& program, Run& run);

/// Instances with the names of their attributes.
void AddShow(CLI::App& program, Run& run);

/// Who refers to an instance.
void AddRefs(CLI::App& program, Run& run);

/// Which products are made of which.
void AddTree(CLI::App& program, Run& run);

/// The schemas that there are, and their types.
void AddSchemas(CLI::App& program, Run& run);

/// A page about a file for people.
void AddReport(CLI::App& program, Run& run);

/// Reads one file and writes what was read to another.
void AddConvert(CLI::App& program, Run& run);

/// What is wrong with files.
void AddCheck(CLI::App& program, Run& run);

/// What differs between two files.
void AddDiff(CLI::App& program, Run& run);

/// The smallest file that holds some instances.
void AddExtract(CLI::App& program, Run& run);

/// One file of several.
void AddMerge(CLI::App& program, Run& run);

/// A file without the names and texts in it.
void AddAnonymise(CLI::App& program, Run& run);

}  // namespace velmar
