#include "InstanceGraph.h"

#include <algorithm>
#include <limits>
#include <stdexcept>

#include "Population.h"

namespace velmar {

namespace {

constexpr std::uint64_t kMissing = 0x6D697373696E67u;  // what leads nowhere

std::uint64_t Combined(std::uint64_t own, std::uint64_t references) { return Mixed(own + 1, references); }

}  // namespace

InstanceGraph::InstanceGraph(const std::string& first, const std::string& second, const DataDictionary* dictionary,
                             const Progress& progress) {
  constexpr double kShareOfAFile = 0.4;  // of the time for all
  ReportedProgress made(progress);
  Read(first, false, dictionary, made.Part(0, kShareOfAFile));
  border_ = static_cast<int>(nodes_.size());
  Read(second, true, dictionary, made.Part(kShareOfAFile, 2 * kShareOfAFile));
  nodes_.push_back({0, 0, 0, references_.size(), {0, 0}, 0, 0, 0});
  AddReferrers();
  ComputeHashes();
}

int InstanceGraph::TypeOf(const std::vector<const WrittenRecord*>& records, bool isComplex) {
  const auto number = [this](const std::string& type) {
    const auto [entry, isNew] = typeNumbers_.emplace(type, static_cast<int>(types_.size()));
    if (isNew) types_.push_back(type);
    return entry->second;
  };
  if (!isComplex) return number(records.front()->type);
  std::string type;
  for (const WrittenRecord* record : records) type += (type.empty() ? "(" : " ") + record->type;
  return number(type + ")");
}

void InstanceGraph::Read(const std::string& path, bool isSecond, const DataDictionary* dictionary, const Progress& progress) {
  const std::size_t firstNode = nodes_.size();
  const std::size_t firstReference = references_.size();
  std::vector<std::int64_t> targets;
  Digest digest;
  std::vector<const WrittenRecord*> records;
  const auto take = [&](const WrittenInstance& instance) {
    if (instance.IsInHeader()) {
      headers_[isSecond ? 1 : 0].push_back(instance);
      return;
    }
    if (instance.records.empty()) return;
    if (nodes_.size() >= static_cast<std::size_t>(std::numeric_limits<int>::max()) - 1) {
      throw std::runtime_error(path + " has too many instances");
    }
    SortRecords(instance, records);
    DigestInstance(records, instance.isComplex, dictionary, digest);
    std::uint64_t identity = 0;
    if (!instance.isComplex && !instance.records.front().values.empty()) {
      const WrittenValue& value = instance.records.front().values.front();
      if (value.kind == WrittenValue::Kind::String && !value.text.empty()) identity = velmar::HashOf(value.text);
    }
    nodes_.push_back({instance.number, digest.hash, identity, references_.size(), instance.where, instance.begin, instance.end,
                      TypeOf(records, instance.isComplex)});
    for (const DigestedReference& reference : digest.references) {
      references_.push_back({-1, reference.slot});
      targets.push_back(reference.number);
    }
  };
  ForEachWrittenInstance(path, ValuesRead::All, take, progress);

  std::vector<std::pair<std::int64_t, int>>& numbers = numbers_[isSecond ? 1 : 0];
  numbers.reserve(nodes_.size() - firstNode);
  for (std::size_t i = firstNode; i < nodes_.size(); ++i) numbers.emplace_back(nodes_[i].number, static_cast<int>(i));
  if (!std::is_sorted(numbers.begin(), numbers.end())) std::sort(numbers.begin(), numbers.end());
  for (std::size_t i = 0; i < targets.size(); ++i) references_[firstReference + i].target = Find(isSecond, targets[i]);
}

int InstanceGraph::Find(bool inSecond, std::int64_t number) const {
  const std::vector<std::pair<std::int64_t, int>>& numbers = numbers_[inSecond ? 1 : 0];
  if (numbers.empty() || number < numbers.front().first || number > numbers.back().first) return -1;
  // Where the numbers leave no gaps, the place is known.
  const auto guess = static_cast<std::size_t>(number - numbers.front().first);
  if (guess < numbers.size() && numbers[guess].first == number &&
      (guess + 1 == numbers.size() || numbers[guess + 1].first != number)) {
    return numbers[guess].second;
  }
  const auto behind = std::upper_bound(numbers.begin(), numbers.end(), std::make_pair(number, std::numeric_limits<int>::max()));
  return behind == numbers.begin() || (behind - 1)->first != number ? -1 : (behind - 1)->second;
}

InstanceGraph::Range<InstanceGraph::Reference> InstanceGraph::ReferencesOf(int node) const {
  const auto at = static_cast<std::size_t>(node);
  return {references_.data() + nodes_[at].firstReference, references_.data() + nodes_[at + 1].firstReference};
}

InstanceGraph::Range<int> InstanceGraph::ReferrersOf(int node) const {
  const auto at = static_cast<std::size_t>(node);
  return {referrers_.data() + firstReferrer_[at], referrers_.data() + firstReferrer_[at + 1]};
}

void InstanceGraph::AddReferrers() {
  firstReferrer_.assign(nodes_.size() + 1, 0);
  for (const Reference& reference : references_) {
    if (reference.target >= 0) ++firstReferrer_[static_cast<std::size_t>(reference.target) + 2];
  }
  for (std::size_t i = 1; i < firstReferrer_.size(); ++i) firstReferrer_[i] += firstReferrer_[i - 1];
  referrers_.resize(firstReferrer_.back());
  for (int node = 0; node < Size(); ++node) {
    for (const Reference& reference : ReferencesOf(node)) {
      if (reference.target < 0) continue;
      referrers_[firstReferrer_[static_cast<std::size_t>(reference.target) + 1]++] = node;
    }
  }
  firstReferrer_.pop_back();
}

// Those that refer to nothing first, then those that refer to these, and so on. What is left refers to itself in the end.
void InstanceGraph::ComputeHashes() {
  const auto count = static_cast<std::size_t>(Size());
  hashes_.assign(count, 0);
  std::vector<std::uint32_t> waiting(count, 0);
  std::vector<int> ready;
  for (int node = 0; node < Size(); ++node) {
    for (const Reference& reference : ReferencesOf(node)) {
      if (reference.target >= 0) ++waiting[static_cast<std::size_t>(node)];
    }
    if (waiting[static_cast<std::size_t>(node)] == 0) ready.push_back(node);
  }
  std::size_t done = 0;
  for (; !ready.empty(); ++done) {
    const int node = ready.back();
    ready.pop_back();
    std::uint64_t sum = 0;
    for (const Reference& reference : ReferencesOf(node)) {
      sum += Mixed(reference.slot, reference.target < 0 ? kMissing : HashOf(reference.target));
    }
    hashes_[static_cast<std::size_t>(node)] = Combined(At(node).own, sum);
    for (const int referrer : ReferrersOf(node)) {
      if (--waiting[static_cast<std::size_t>(referrer)] == 0) ready.push_back(referrer);
    }
  }
  if (done == count) return;
  std::vector<int> cyclic;
  for (int node = 0; node < Size(); ++node) {
    if (waiting[static_cast<std::size_t>(node)] > 0) cyclic.push_back(node);
  }
  RefineHashes(cyclic);
}

// Each hash takes in those of the references, round for round, until no two instances that were alike become different.
void InstanceGraph::RefineHashes(const std::vector<int>& cyclic) {
  constexpr std::size_t kMostSteps = 400000000;  // what is not told apart by then has the same values all around it
  for (const int node : cyclic) hashes_[static_cast<std::size_t>(node)] = At(node).own;
  std::vector<std::uint64_t> next(cyclic.size());
  std::size_t classes = 0;
  for (std::size_t steps = 0; steps < kMostSteps;) {
    for (std::size_t i = 0; i < cyclic.size(); ++i) {
      std::uint64_t sum = HashOf(cyclic[i]);
      for (const Reference& reference : ReferencesOf(cyclic[i])) {
        sum += Mixed(reference.slot, reference.target < 0 ? kMissing : HashOf(reference.target));
      }
      steps += 1 + ReferencesOf(cyclic[i]).size();
      next[i] = Combined(At(cyclic[i]).own, sum);
    }
    for (std::size_t i = 0; i < cyclic.size(); ++i) hashes_[static_cast<std::size_t>(cyclic[i])] = next[i];
    std::sort(next.begin(), next.end());
    const auto found = static_cast<std::size_t>(std::unique(next.begin(), next.end()) - next.begin());
    next.resize(cyclic.size());
    if (found == classes) return;
    classes = found;
  }
}

}  // namespace velmar
