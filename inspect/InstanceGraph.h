/// @file InstanceGraph.h
/// The instances of two files with their references, as those need them who compare the files.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "DataDictionary.h"
#include "InstanceDigest.h"
#include "Progress.h"
#include "WrittenInstances.h"

namespace velmar {

/// All instances of two files, numbered from 0, those of the first file first. Memory is some 80 bytes for each.
class InstanceGraph {
 public:
  struct Node {
    std::int64_t number;
    std::uint64_t own;       ///< of the type and the values; equal in both files for equal ones
    std::uint64_t identity;  ///< of the first value where that is a text; else 0
    std::size_t firstReference;
    Place where;
    int begin, end;  ///< the records in the file
    int type;
  };
  struct Reference {
    int target;  ///< -1 where it leads nowhere
    std::uint32_t slot;
  };
  template <typename T>
  struct Range {
    const T* first;
    const T* last;
    const T* begin() const { return first; }
    const T* end() const { return last; }
    std::size_t size() const { return static_cast<std::size_t>(last - first); }
  };

  /// Reads both. `dictionary` may be null. Throws std::runtime_error where a file cannot be read.
  InstanceGraph(const std::string& first, const std::string& second, const DataDictionary* dictionary, const Progress& progress = {});

  int Size() const { return static_cast<int>(nodes_.size()) - 1; }
  /// The first instance of the second file.
  int Border() const { return border_; }
  bool IsInSecond(int node) const { return node >= border_; }
  const Node& At(int node) const { return nodes_[static_cast<std::size_t>(node)]; }
  Range<Reference> ReferencesOf(int node) const;
  Range<int> ReferrersOf(int node) const;

  /// Of an instance with all that it refers to: equal in both files where these are equal.
  std::uint64_t HashOf(int node) const { return hashes_[static_cast<std::size_t>(node)]; }
  const std::string& TypeName(int type) const { return types_[static_cast<std::size_t>(type)]; }
  std::size_t TypeCount() const { return types_.size(); }
  /// The instance of a number, of several the last; -1 where there is none.
  int Find(bool inSecond, std::int64_t number) const;

  const std::vector<WrittenInstance>& HeaderOf(bool second) const { return headers_[second ? 1 : 0]; }

 private:
  void Read(const std::string& path, bool isSecond, const DataDictionary* dictionary, const Progress& progress);
  int TypeOf(const std::vector<const WrittenRecord*>& records, bool isComplex);
  void AddReferrers();
  void ComputeHashes();
  void RefineHashes(const std::vector<int>& cyclic);

  int border_ = 0;
  std::vector<Node> nodes_;  // and one behind the last, for its reference
  std::vector<Reference> references_;
  std::vector<int> referrers_;
  std::vector<std::size_t> firstReferrer_;
  std::vector<std::uint64_t> hashes_;
  std::vector<std::string> types_;
  std::unordered_map<std::string, int> typeNumbers_;
  std::vector<WrittenInstance> headers_[2];
  std::vector<std::pair<std::int64_t, int>> numbers_[2];  // sorted
};

}  // namespace velmar
