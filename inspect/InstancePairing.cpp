#include "InstancePairing.h"

#include <algorithm>
#include <cstdint>

namespace velmar {

namespace {

// By what instances are told apart, the strongest first.
enum class Trait {
  Values,          // and what they refer to
  Surroundings,    // the same, and who refers to them
  Identity,        // the type, and the text that they begin with
  Neighbours,      // the type, what they refer to, and who refers to them
  ValuesAlone,
  Type
};

class Pairer {
 public:
  explicit Pairer(const InstanceGraph& graph)
      : graph_(graph), isOpen_(static_cast<std::size_t>(graph.Size()), false) {
    result_.partner.assign(static_cast<std::size_t>(graph.Size()), -1);
  }

  Pairing Run(const Progress& progress) {
    FindOpen();
    budget_ = 50000000 + 30 * open_.size();
    ReportedProgress used(progress, kMostUsed * static_cast<double>(budget_));
    reported_ = &used;
    while (!open_.empty() && PairSome()) {
      const auto isPaired = [this](int node) { return PartnerOf(node) >= 0; };
      open_.erase(std::remove_if(open_.begin(), open_.end(), isPaired), open_.end());
    }
    for (const int node : open_) (graph_.IsInSecond(node) ? result_.added : result_.removed).push_back(node);
    std::sort(result_.pairs.begin(), result_.pairs.end());
    return std::move(result_);
  }

 private:
  using Signature = std::pair<std::uint64_t, int>;

  // What is done without looking at the budget takes up to three times as much of files that have little in common.
  static constexpr double kMostUsed = 4;

  int PartnerOf(int node) const { return result_.partner[static_cast<std::size_t>(node)]; }
  bool IsOpen(int node) const { return isOpen_[static_cast<std::size_t>(node)] && PartnerOf(node) < 0; }

  // Those of which the files do not have the same number of equal ones.
  void FindOpen() {
    std::vector<Signature> all;
    all.reserve(static_cast<std::size_t>(graph_.Size()));
    for (int node = 0; node < graph_.Size(); ++node) all.emplace_back(graph_.HashOf(node), node);
    ForEachGroup(all, [this](const Signature* begin, const Signature* border, const Signature* end) {
      if (border - begin == end - border) return;
      for (const Signature* member = begin; member != end; ++member) {
        isOpen_[static_cast<std::size_t>(member->second)] = true;
        open_.push_back(member->second);
      }
    });
    std::sort(open_.begin(), open_.end());
  }

  // Calls `action` with those of the first file up to the border and those of the second behind it, in the order of the files.
  template <typename Action>
  void ForEachGroup(std::vector<Signature>& all, Action action) {
    std::sort(all.begin(), all.end());
    for (std::size_t begin = 0; begin < all.size();) {
      std::size_t border = begin;
      while (border < all.size() && all[border].first == all[begin].first && !graph_.IsInSecond(all[border].second)) ++border;
      std::size_t end = border;
      while (end < all.size() && all[end].first == all[begin].first) ++end;
      action(all.data() + begin, all.data() + border, all.data() + end);
      begin = end;
    }
  }

  bool PairSome() {
    if (PairAlone(Trait::Values) || PairAlone(Trait::Surroundings)) return true;
    if (PairTops()) return true;
    if (PairEqual()) return true;
    for (const Trait trait : {Trait::Identity, Trait::Neighbours, Trait::ValuesAlone, Trait::Type}) {
      if (PairAlone(trait)) return true;
    }
    return PairInOrder(Trait::Values) || PairInOrder(Trait::ValuesAlone) || PairInOrder(Trait::Neighbours);
  }

  // What is known of an instance that another one refers to, or that refers to another one: which it is, or its type.
  std::uint64_t TokenOf(int node) const {
    if (node < 0) return Mixed(1);
    const int partner = PartnerOf(node);
    if (partner >= 0) return Mixed(2, static_cast<std::uint64_t>(graph_.IsInSecond(node) ? node : partner));
    if (!isOpen_[static_cast<std::size_t>(node)]) return Mixed(3, graph_.HashOf(node));
    return Mixed(4, static_cast<std::uint64_t>(graph_.At(node).type));
  }
  bool IsKnown(int node) const { return node >= 0 && !IsOpen(node); }

  // 0 where the trait says nothing of the instance.
  std::uint64_t SignatureOf(int node, Trait trait) {
    const InstanceGraph::Node& at = graph_.At(node);
    const auto type = static_cast<std::uint64_t>(at.type);
    if (trait == Trait::Type) return Mixed(type);
    if (trait == Trait::ValuesAlone) return Mixed(at.own);
    if (trait == Trait::Identity) return at.identity == 0 ? 0 : Mixed(type, at.identity);
    std::uint64_t sum = trait == Trait::Neighbours ? Mixed(type) : at.own;
    bool isKnown = trait != Trait::Neighbours;
    for (const InstanceGraph::Reference& reference : graph_.ReferencesOf(node)) {
      sum += Mixed(reference.slot, TokenOf(reference.target));
      isKnown = isKnown || IsKnown(reference.target);
    }
    if (trait != Trait::Values) {
      for (const int referrer : graph_.ReferrersOf(node)) {
        sum += Mixed(TokenOf(referrer));
        isKnown = isKnown || IsKnown(referrer);
      }
      used_ += graph_.ReferrersOf(node).size();
    }
    used_ += graph_.ReferencesOf(node).size();
    (*reported_)(static_cast<double>(used_));
    return isKnown ? sum : 0;
  }

  std::vector<Signature> Signatures(Trait trait) {
    std::vector<Signature> all;
    for (const int node : open_) {
      if (!IsOpen(node)) continue;
      const std::uint64_t signature = SignatureOf(node, trait);
      if (signature != 0) all.emplace_back(signature, node);
    }
    used_ += 4 * all.size();
    return all;
  }

  // Those that have the trait alone in their file. Whether there were any.
  bool PairAlone(Trait trait) {
    if (used_ > budget_) return false;
    std::vector<Signature> all = Signatures(trait);
    const std::size_t before = result_.pairs.size() + equal_;
    ForEachGroup(all, [this](const Signature* begin, const Signature* border, const Signature* end) {
      if (border - begin == 1 && end - border == 1) Pair(begin->second, border->second);
    });
    return result_.pairs.size() + equal_ > before;
  }

  // Those of which it is known who refers to them, and that nothing more tells apart: which of them are paired does not matter,
  // but what is below them has to follow. Equal ones first.
  bool PairTops() {
    if (used_ > budget_) return false;
    std::vector<Signature> equal, alike;
    for (const int node : open_) {
      if (!IsOpen(node)) continue;
      const auto referrers = graph_.ReferrersOf(node);
      used_ += referrers.size();
      if (!std::all_of(referrers.begin(), referrers.end(), [this](int referrer) { return IsKnown(referrer); })) continue;
      const std::uint64_t signature = SignatureOf(node, Trait::Surroundings);
      equal.emplace_back(Mixed(signature, graph_.HashOf(node)), node);
      alike.emplace_back(signature, node);
    }
    const bool hasEqual = PairOneByOne(equal, false);
    return PairOneByOne(alike, false) || hasEqual;
  }

  // As many as there are of those that are equal with all that they refer to.
  bool PairEqual() {
    std::vector<Signature> all;
    for (const int node : open_) {
      if (IsOpen(node)) all.emplace_back(graph_.HashOf(node), node);
    }
    return PairOneByOne(all, false);
  }

  // Those of which the files have the same number, one behind the other.
  bool PairInOrder(Trait trait) {
    std::vector<Signature> all = Signatures(trait);
    return PairOneByOne(all, true);
  }

  bool PairOneByOne(std::vector<Signature>& all, bool onlySameNumber) {
    const std::size_t before = result_.pairs.size() + equal_;
    ForEachGroup(all, [this, onlySameNumber](const Signature* begin, const Signature* border, const Signature* end) {
      if (onlySameNumber && border - begin != end - border) return;
      const Signature* second = border;
      for (const Signature* first = begin; first != border && second != end; ++first, ++second) {
        Pair(first->second, second->second);
      }
    });
    return result_.pairs.size() + equal_ > before;
  }

  // Does nothing where one of them has been paired meanwhile. What stands in the same places of both is paired, too.
  void Pair(int first, int second) {
    std::vector<std::pair<int, int>> pending = {{first, second}};
    while (!pending.empty()) {
      const auto [a, b] = pending.back();
      pending.pop_back();
      if (!IsOpen(a) || !IsOpen(b)) continue;
      result_.partner[static_cast<std::size_t>(a)] = b;
      result_.partner[static_cast<std::size_t>(b)] = a;
      if (graph_.HashOf(a) == graph_.HashOf(b)) {
        ++equal_;
      } else {
        result_.pairs.emplace_back(a, b);
      }
      AddBelow(a, b, pending);
    }
  }

  // What stands in the same places, where the instances have references in the same places; else in any place.
  void AddBelow(int a, int b, std::vector<std::pair<int, int>>& pending) {
    const auto ofA = graph_.ReferencesOf(a);
    const auto ofB = graph_.ReferencesOf(b);
    const bool haveSamePlaces =
        std::equal(ofA.begin(), ofA.end(), ofB.begin(), ofB.end(),
                   [](const InstanceGraph::Reference& x, const InstanceGraph::Reference& y) { return x.slot == y.slot; });
    used_ += ofA.size() + ofB.size();
    if (!haveSamePlaces) {
      PairAmong(ofA.begin(), ofA.end(), ofB.begin(), ofB.end(), pending);
      return;
    }
    for (std::size_t begin = 0; begin < ofA.size();) {
      std::size_t end = begin + 1;
      while (end < ofA.size() && ofA.first[end].slot == ofA.first[begin].slot) ++end;
      PairAmong(ofA.first + begin, ofA.first + end, ofB.first + begin, ofB.first + end, pending);
      begin = end;
    }
  }

  // Of the open ones the equal ones, then those that alone among them have a trait.
  void PairAmong(const InstanceGraph::Reference* a, const InstanceGraph::Reference* endOfA, const InstanceGraph::Reference* b,
                 const InstanceGraph::Reference* endOfB, std::vector<std::pair<int, int>>& pending) {
    std::vector<int> nodes;
    for (; a != endOfA; ++a) AddOpen(a->target, nodes);
    const std::size_t count = nodes.size();
    for (; b != endOfB; ++b) AddOpen(b->target, nodes);
    if (count == 0 || nodes.size() == count) return;
    std::sort(nodes.begin(), nodes.end());
    nodes.erase(std::unique(nodes.begin(), nodes.end()), nodes.end());
    const auto pairBy = [&](bool onlyAlone, auto signatureOf) {
      std::vector<Signature> all;
      all.reserve(nodes.size());
      for (const int node : nodes) all.emplace_back(signatureOf(node), node);
      ForEachGroup(all, [&](const Signature* begin, const Signature* border, const Signature* end) {
        if (onlyAlone && (border - begin != 1 || end - border != 1)) return;
        const Signature* second = border;
        for (const Signature* first = begin; first != border && second != end; ++first, ++second) {
          pending.emplace_back(first->second, second->second);
          for (const int node : {first->second, second->second}) nodes.erase(std::lower_bound(nodes.begin(), nodes.end(), node));
        }
      });
    };
    if (nodes.size() > 2) pairBy(false, [this](int node) { return graph_.HashOf(node); });
    for (const Trait trait : {Trait::Values, Trait::ValuesAlone, Trait::Neighbours, Trait::Type}) {
      if (!nodes.empty()) pairBy(true, [this, trait](int node) { return SignatureOf(node, trait); });
    }
  }

  void AddOpen(int node, std::vector<int>& nodes) const {
    if (node >= 0 && IsOpen(node)) nodes.push_back(node);
  }

  const InstanceGraph& graph_;
  std::vector<bool> isOpen_;
  std::vector<int> open_;
  Pairing result_;
  std::size_t equal_ = 0;   // pairs that are equal
  std::size_t used_ = 0;    // references that were looked at
  std::size_t budget_ = 0;
  ReportedProgress* reported_ = nullptr;  // while this runs
};

}  // namespace

Pairing PairInstances(const InstanceGraph& graph, const Progress& progress) { return Pairer(graph).Run(progress); }

}  // namespace velmar
