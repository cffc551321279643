#include "Loader.h"

#include <algorithm>
#include <filesystem>
#include <map>
#include <set>
#include <system_error>
#include <utility>

#include "ExpressParser.h"
#include "Resolver.h"

namespace VELMAR::Express {
namespace {

// By lower-case name, the files NAME.exp of the folders, in the order of the folders.
std::map<std::string, std::vector<std::string>> FilesIn(const std::vector<std::string>& folders) {
  std::map<std::string, std::vector<std::string>> files;
  for (const std::string& folder : folders) {
    std::map<std::string, std::vector<std::string>> found;
    std::error_code error;
    std::filesystem::directory_iterator entry(folder, error);
    for (; !error && entry != std::filesystem::directory_iterator(); entry.increment(error)) {
      const std::filesystem::path& path = entry->path();
      if (LowerCase(path.extension().string()) != ".exp") continue;
      found[LowerCase(path.stem().string())].push_back(path.string());
    }
    if (error) throw std::system_error(error, folder);
    for (auto& [name, paths] : found) {
      std::sort(paths.begin(), paths.end());
      files[name].insert(files[name].end(), paths.begin(), paths.end());
    }
  }
  return files;
}

}  // namespace

std::size_t LoadFiles(Model& model, const std::vector<std::string>& files,
                      const std::vector<std::string>& searchPath, Diagnostics& diagnostics) {
  for (const std::string& file : files) ParseFile(model, SourceFile::Read(file), diagnostics);
  const std::size_t given = model.schemas.size();
  const auto candidates = FilesIn(searchPath);
  std::set<std::string> tried;
  // The files read here may interface further schemas.
  for (std::size_t i = 0; i < model.schemas.size(); ++i) {
    for (std::size_t j = 0; j < model.schemas[i]->interfaces.size(); ++j) {
      const std::string name = model.schemas[i]->interfaces[j].schemaName.text;
      if (model.FindSchema(name) || !tried.insert(name).second) continue;
      const auto found = candidates.find(name);
      if (found == candidates.end()) continue;
      for (const std::string& path : found->second) {
        Model attempt;
        Diagnostics ignored;
        ParseFile(attempt, SourceFile::Read(path), ignored);
        if (!attempt.FindSchema(name)) continue;
        ParseFile(model, SourceFile::Read(path), diagnostics);
        break;
      }
    }
  }
  Resolve(model, diagnostics);
  return given;
}

std::vector<std::string> FilesOf(const Model& model) {
  std::vector<std::string> files;
  for (const auto& schema : model.schemas) {
    const std::string& name = schema->name.where.file->Name();
    if (std::find(files.begin(), files.end(), name) == files.end()) files.push_back(name);
  }
  return files;
}

}  // namespace VELMAR::Express
