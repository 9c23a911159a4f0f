// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "tools/lint/Language.h"

#include <algorithm>
#include <deque>
#include <set>
#include <string_view>
#include <utility>

#include "tools/lint/Components.h"

namespace Kestrel::Lint {

namespace {

constexpr std::size_t kMaxStates = 3000;
constexpr std::size_t kMaxSubsets = 1000;
constexpr std::size_t kMaxPairs = 200000;

/// A part of an expression: the states in which it may begin and end.
struct Fragment {
  std::vector<std::size_t> first;
  std::vector<std::size_t> last;
  bool isNullable = true;
};

void Append(std::vector<std::size_t>& to, const std::vector<std::size_t>& from) {
  to.insert(to.end(), from.begin(), from.end());
}

struct TooLarge {};

std::vector<bool> MarkReachable(const Graph& graph, std::vector<std::size_t> todo) {
  std::vector<bool> isReached(graph.size());
  for (const std::size_t start : todo) {
    isReached[start] = true;
  }
  while (!todo.empty()) {
    const std::size_t node = todo.back();
    todo.pop_back();
    for (const std::size_t next : graph[node]) {
      if (!isReached[next]) {
        isReached[next] = true;
        todo.push_back(next);
      }
    }
  }
  return isReached;
}

// Returns the byte of a set that is easiest to read.
char Readable(const ByteSet& bytes) {
  constexpr std::string_view kPreferred =
      "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_./:,@%+-= ";
  for (const char c : kPreferred) {
    if (bytes.test(static_cast<unsigned char>(c))) {
      return c;
    }
  }
  for (std::size_t byte = 1; byte < bytes.size(); ++byte) {
    if (bytes.test(byte)) {
      return static_cast<char>(byte);
    }
  }
  return '\0';
}

}  // namespace

class Language::Builder {
 public:
  explicit Builder(std::vector<State>& states) : states_(states) { states_.resize(1); }

  void Run(const ExpressionNode& expression) {
    const Fragment whole = Build(expression);
    Link({0}, whole.first);
    for (const std::size_t state : whole.last) {
      states_[state].isFinal = true;
    }
    states_[0].isFinal = whole.isNullable;
  }

 private:
  Fragment Build(const ExpressionNode& node) {
    switch (node.kind) {
      case ExpressionNode::Kind::Bytes:
        return BuildBytes(node.bytes);
      case ExpressionNode::Kind::Sequence:
        return BuildSequence(node);
      case ExpressionNode::Kind::Alternatives:
        return BuildAlternatives(node);
      case ExpressionNode::Kind::Repeat:
        return BuildRepeat(node);
    }
    return {};
  }

  Fragment BuildBytes(const ByteSet& bytes) {
    if (states_.size() >= kMaxStates) {
      throw TooLarge();
    }
    states_.emplace_back();
    states_.back().bytes = bytes;
    return {{states_.size() - 1}, {states_.size() - 1}, false};
  }

  Fragment BuildSequence(const ExpressionNode& node) {
    Fragment whole;
    for (const ExpressionNode& child : node.children) {
      whole = Join(whole, Build(child));
    }
    return whole;
  }

  Fragment BuildAlternatives(const ExpressionNode& node) {
    Fragment whole;
    whole.isNullable = false;
    for (const ExpressionNode& child : node.children) {
      const Fragment part = Build(child);
      Append(whole.first, part.first);
      Append(whole.last, part.last);
      whole.isNullable = whole.isNullable || part.isNullable;
    }
    return whole;
  }

  Fragment BuildRepeat(const ExpressionNode& node) {
    const ExpressionNode& child = node.children.front();
    Fragment whole;
    for (std::size_t i = 0; i < node.least; ++i) {
      Fragment part = Build(child);
      // If there is no upper limit, the last copy is a loop.
      if (!node.most && i + 1 == node.least) {
        Link(part.last, part.first);
      }
      whole = Join(whole, part);
    }
    if (!node.most && node.least == 0) {
      whole = Build(child);
      Link(whole.last, whole.first);
      whole.isNullable = true;
    }
    return node.most ? Join(whole, BuildOptional(child, *node.most - node.least)) : whole;
  }

  // Builds up to `count` repetitions from the inside out, as (x(x(x)?)?)?, because x?x?x? would
  // match a single x in three ways.
  Fragment BuildOptional(const ExpressionNode& node, std::size_t count) {
    Fragment whole;
    for (std::size_t i = 0; i < count; ++i) {
      whole = Join(Build(node), whole);
      whole.isNullable = true;
    }
    return whole;
  }

  Fragment Join(const Fragment& left, const Fragment& right) {
    Link(left.last, right.first);
    Fragment joined{left.first, right.last, left.isNullable && right.isNullable};
    if (left.isNullable) {
      Append(joined.first, right.first);
    }
    if (right.isNullable) {
      Append(joined.last, left.last);
    }
    return joined;
  }

  void Link(const std::vector<std::size_t>& from, const std::vector<std::size_t>& to) {
    for (const std::size_t begin : from) {
      for (const std::size_t end : to) {
        int& ways = states_[begin].next[end];
        ways = std::min(ways + 1, 2);
      }
    }
  }

  std::vector<State>& states_;
};

std::optional<Language> Language::Parse(const std::string& expression) {
  const std::optional<ExpressionNode> node = ParseExpression(expression);
  return node ? Build(*node) : std::nullopt;
}

std::optional<Language> Language::Build(const ExpressionNode& expression) {
  try {
    Language language;
    Builder(language.states_).Run(expression);
    return language;
  } catch (const TooLarge&) {
    return std::nullopt;
  }
}

std::optional<Language> Language::Of(const std::vector<std::string>& strings) {
  ExpressionNode node;
  node.kind = ExpressionNode::Kind::Alternatives;
  for (const std::string& string : strings) {
    node.children.push_back(LiteralExpression(string));
  }
  return Build(node);
}

// Returns the states that are on a path from the initial state to a final one.
std::vector<bool> Language::FindUseful() const {
  Graph forward(states_.size());
  Graph backward(states_.size());
  for (std::size_t state = 0; state < states_.size(); ++state) {
    for (const auto& [next, ways] : states_[state].next) {
      if (states_[next].bytes.any()) {
        forward[state].push_back(next);
        backward[next].push_back(state);
      }
    }
  }
  const std::vector<bool> isReached = MarkReachable(forward, {0});
  std::vector<std::size_t> ends;
  for (std::size_t state = 0; state < states_.size(); ++state) {
    if (isReached[state] && states_[state].isFinal) {
      ends.push_back(state);
    }
  }
  std::vector<bool> isUseful = MarkReachable(backward, ends);
  for (std::size_t state = 0; state < states_.size(); ++state) {
    isUseful[state] = isUseful[state] && isReached[state];
  }
  return isUseful;
}

bool Language::IsEmpty() const { return !FindUseful()[0]; }

bool Language::IsEverything() const {
  std::set<Subset> known = {{0}};
  std::deque<Subset> todo = {{0}};
  while (!todo.empty()) {
    const Subset subset = std::move(todo.front());
    todo.pop_front();
    if (!HasFinal(subset)) {
      return false;
    }
    for (std::size_t byte = 1; byte < 256; ++byte) {
      Subset next = Step(subset, byte);
      if (known.insert(next).second) {
        todo.push_back(std::move(next));
      }
    }
    if (known.size() > kMaxSubsets) {
      return false;
    }
  }
  return true;
}

bool Language::HasFinal(const Subset& subset) const {
  return std::any_of(subset.begin(), subset.end(),
                     [this](std::size_t state) { return states_[state].isFinal; });
}

Language::Subset Language::Step(const Subset& subset, std::size_t byte) const {
  Subset next;
  for (const std::size_t state : subset) {
    for (const auto& [end, ways] : states_[state].next) {
      if (states_[end].bytes.test(byte)) {
        next.insert(end);
      }
    }
  }
  return next;
}

std::vector<std::size_t> Language::FindComponents() const {
  Graph graph(states_.size());
  for (std::size_t state = 0; state < states_.size(); ++state) {
    for (const auto& [end, ways] : states_[state].next) {
      graph[state].push_back(end);
    }
  }
  return NumberComponents(graph);
}

/// The pairs of states that the same string can lead to, limited to pairs within a loop.
class Language::PairGraph {
 public:
  explicit PairGraph(const Language& language)
      : states_(language.states_),
        isUseful_(language.FindUseful()),
        component_(language.FindComponents()) {}

  bool HasAmbiguousLoop() {
    for (std::size_t state = 0; state < states_.size(); ++state) {
      if (isUseful_[state]) {
        NumberOf({state, state});
      }
    }
    for (std::size_t i = 0; i < pairs_.size(); ++i) {
      if (i >= kMaxPairs) {
        return false;
      }
      graph_.emplace_back();
      if (Expand(i)) {
        return true;
      }
    }
    return LeavesTheDiagonal();
  }

 private:
  using Pair = std::pair<std::size_t, std::size_t>;

  std::size_t NumberOf(const Pair& pair) {
    const auto [found, isNew] = numbers_.emplace(pair, pairs_.size());
    if (isNew) {
      pairs_.push_back(pair);
    }
    return found->second;
  }

  bool Stays(std::size_t from, std::size_t to) const {
    return component_[from] == component_[to] && isUseful_[to];
  }

  // Adds the successors of a pair to the graph. Returns true if a state in a loop has two
  // transitions to the same next state.
  bool Expand(std::size_t number) {
    const Pair pair = pairs_[number];
    for (const auto& [left, ways] : states_[pair.first].next) {
      if (!Stays(pair.first, left)) {
        continue;
      }
      if (pair.first == pair.second && ways > 1) {
        return true;
      }
      ExpandRight(number, pair.second, left);
    }
    return false;
  }

  void ExpandRight(std::size_t number, std::size_t from, std::size_t left) {
    for (const auto& [right, ways] : states_[from].next) {
      if (Stays(from, right) && (states_[left].bytes & states_[right].bytes).any()) {
        const std::size_t next = NumberOf({left, right});
        graph_[number].push_back(next);
      }
    }
  }

  bool LeavesTheDiagonal() const {
    const std::vector<std::size_t> loops = NumberComponents(graph_);
    std::set<std::size_t> diagonal;
    for (std::size_t i = 0; i < pairs_.size(); ++i) {
      if (pairs_[i].first == pairs_[i].second) {
        diagonal.insert(loops[i]);
      }
    }
    for (std::size_t i = 0; i < pairs_.size(); ++i) {
      if (pairs_[i].first != pairs_[i].second && diagonal.count(loops[i]) != 0) {
        return true;
      }
    }
    return false;
  }

  const std::vector<State>& states_;
  const std::vector<bool> isUseful_;
  const std::vector<std::size_t> component_;
  std::map<Pair, std::size_t> numbers_;
  std::vector<Pair> pairs_;
  Graph graph_;
};

bool Language::IsExponential() const { return PairGraph(*this).HasAmbiguousLoop(); }

std::optional<std::string> Language::FindCommon(const Language& other) const {
  struct Step {
    std::size_t own;
    std::size_t theirs;
    std::size_t before;
    char byte;
  };
  std::vector<Step> steps = {{0, 0, 0, '\0'}};
  std::set<std::pair<std::size_t, std::size_t>> known = {{0, 0}};
  for (std::size_t i = 0; i < steps.size() && i < kMaxPairs; ++i) {
    const Step step = steps[i];
    if (states_[step.own].isFinal && other.states_[step.theirs].isFinal) {
      std::string found;
      for (std::size_t at = i; at != 0; at = steps[at].before) {
        found.insert(found.begin(), steps[at].byte);
      }
      return found;
    }
    for (const auto& [own, ownWays] : states_[step.own].next) {
      for (const auto& [theirs, theirWays] : other.states_[step.theirs].next) {
        ByteSet both = states_[own].bytes & other.states_[theirs].bytes;
        both.reset(0);
        if (both.any() && known.emplace(own, theirs).second) {
          steps.push_back({own, theirs, i, Readable(both)});
        }
      }
    }
  }
  return std::nullopt;
}

}  // namespace Kestrel::Lint
