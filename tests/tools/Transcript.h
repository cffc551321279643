/// @file Transcript.h
/// All that velmar prints for a command, as text, and what is expected of it in a file.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "RunProgram.h"

/// The command line, standard output, standard error and the exit status of `velmar` with these arguments in this folder.
inline std::string TranscriptOf(const std::vector<std::string>& arguments, const std::string& folder) {
  std::vector<std::string> command = {VELMAR_PROGRAM};
  command.insert(command.end(), arguments.begin(), arguments.end());
  Setting setting;
  setting.directory = folder;
  const Outcome outcome = RunProgram(command, setting);
  std::string text = "$ velmar";
  for (const std::string& argument : arguments) text += " " + argument;
  return text + "\n" + outcome.out + "-- messages\n" + outcome.err + "-- exit status " + std::to_string(outcome.status) + "\n";
}

/// Expects the text in the file. Where it is another, says how to have the file say so.
inline void ExpectGolden(const std::string& text, const std::string& file) {
  const std::string expected = ReadFile(file);
  if (text == expected) return;
  const std::string made = testing::TempDir() + "velmar-golden-" + std::filesystem::path(file).filename().string();
  std::ofstream(made, std::ios::binary) << text;
  EXPECT_EQ(text, expected) << "If this is as it should be: cp " << made << " " << file;
}
