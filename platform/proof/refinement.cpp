// Every function is split into "can be 1", "can be 0" and "can float", which never are unknown themselves; a difference
// is a value that only the written side can take.
#include "platform/proof/refinement.h"

#include <algorithm>
#include <random>

namespace ost {
namespace {

constexpr int kRounds = 256;          ///< Of 64 random assignments each.
constexpr int kMostTriedInputs = 16;  ///< Up to so many all values are tried.

uint64_t mix(uint64_t hash, uint64_t value) {
  hash = (hash ^ value) * 0x9e3779b97f4a7c15;
  return hash ^ (hash >> 31);
}

}  // namespace

bool Refinement::isVariable(uint32_t node) const {
  const LogicGraph::Kind kind = graph_.node(node * 2).kind;
  return kind == LogicGraph::Leaf || kind == LogicGraph::Function;
}

Edge Refinement::difference(const ComparePoint& point) {
  const Rails original = rails_.split(point.original), written = rails_.split(point.written),
              care = rails_.split(point.care);
  const auto only = [&](Edge Rails::*rail) { return graph_.andOf({written.*rail, graph_.invert(original.*rail)}); };
  return graph_.andOf({care.one, graph_.orOf({only(&Rails::one), only(&Rails::zero), only(&Rails::floating)})});
}

/// A function gives what a number made of its arguments is, so that equal arguments give equal results.
uint64_t Refinement::functionValue(const LogicGraph::Node& node,
                                   const std::unordered_map<uint32_t, uint64_t>& values) const {
  const LogicGraph::Node& list = graph_.node(graph_.inputs(node)[0]);
  uint64_t result = 0;
  for (int lane = 0; lane < 64; ++lane) {
    uint64_t hash = mix(0x5ca1ab1e, node.data), word = 0;
    for (uint32_t i = 0; i < list.count; ++i) {
      const Edge argument = graph_.inputs(list)[i];
      const auto found = values.find(argument >> 1);
      const uint64_t bits = (found == values.end() ? 0 : found->second) ^ (argument & 1 ? ~uint64_t(0) : 0);
      word |= (bits >> lane & 1) << (i % 64);
      if (i % 64 < 63 && i + 1 < list.count) continue;
      // Leading zeros of an address make no difference.
      if (word) hash = mix(mix(hash, i / 64), word);
      word = 0;
    }
    result |= (hash >> 17 & 1) << lane;
  }
  return result;
}

void Refinement::simulate(const std::vector<uint32_t>& nodes, const std::function<uint64_t(uint32_t)>& source,
                          std::unordered_map<uint32_t, uint64_t>& values) const {
  graph_.work(nodes.size() * 4);
  for (const uint32_t index : nodes) {
    const LogicGraph::Node& node = graph_.node(index * 2);
    const Edge* inputs = graph_.inputs(node);
    const auto in = [&](uint32_t i) { return values[inputs[i] >> 1] ^ (inputs[i] & 1 ? ~uint64_t(0) : 0); };
    uint64_t value = 0;
    switch (node.kind) {
      case LogicGraph::Leaf:
        value = source(index);
        break;
      case LogicGraph::Function:
        if (freeValues_ && isFree_(int(node.data >> 32)))
          value = freeValues_();
        else
          value = givenValues_ && givenValues_->count(index) ? givenValues_->at(index) : functionValue(node, values);
        break;
      case LogicGraph::And:
        value = ~uint64_t(0);
        for (uint32_t i = 0; i < node.count; ++i) value &= in(i);
        break;
      case LogicGraph::Xor:
        for (uint32_t i = 0; i < node.count; ++i) value ^= in(i);
        break;
      case LogicGraph::Mux:
        value = (in(0) & in(1)) | (~in(0) & in(2));
        break;
      case LogicGraph::Majority:
        value = (in(0) & in(1)) | (in(2) & (in(0) | in(1)));
        break;
      default:
        break;
    }
    values[index] = value;
  }
}

/// Fills in the example when the assignment makes a difference in one of its 64 lanes.
bool Refinement::explain(const ComparePoint& point, Edge different, const std::function<uint64_t(uint32_t)>& source,
                         Counterexample& example, bool& sure) {
  const Rails sides[] = {rails_.split(point.original), rails_.split(point.written)};
  Edges roots{different};
  for (const Rails& side : sides) roots.insert(roots.end(), {side.one, side.zero, side.floating});
  const std::vector<uint32_t> nodes = rails_.cone(roots);
  std::unordered_map<uint32_t, uint64_t> values;
  simulate(nodes, source, values);
  const auto at = [&values](Edge edge) { return values[edge >> 1] ^ (edge & 1 ? ~uint64_t(0) : 0); };
  const uint64_t found = at(different);
  if (!found) return false;
  int lane = 0;
  while (!(found >> lane & 1)) ++lane;
  char* const results[] = {&example.original, &example.written};
  for (int i = 0; i < 2; ++i) {
    const bool one = at(sides[i].one) >> lane & 1, zero = at(sides[i].zero) >> lane & 1;
    *results[i] = one && zero ? 'x' : one ? '1' : zero ? '0' : 'z';
  }
  example.leaves.clear();
  sure = true;
  for (const uint32_t index : nodes) {
    const LogicGraph::Node& node = graph_.node(index * 2);
    if (node.kind == LogicGraph::Function && isFree_(int(node.data >> 32))) sure = false;
    if (node.kind == LogicGraph::Leaf) example.leaves.append({int(node.data), bool(values[index] >> lane & 1)});
  }
  if (sure) return true;
  // Whatever is not known gives: the difference may not depend on it.
  std::mt19937_64 random(2);
  freeValues_ = [&random] { return random(); };
  std::unordered_map<uint32_t, uint64_t> tried;
  const auto fixed = [&](uint32_t node) { return values[node] >> lane & 1 ? ~uint64_t(0) : 0; };
  simulate(nodes, fixed, tried);
  freeValues_ = nullptr;
  sure = (tried[different >> 1] ^ (different & 1 ? ~uint64_t(0) : 0)) == ~uint64_t(0);
  return true;
}

bool Refinement::simulateForDifference(const ComparePoint& point, Edge different, Counterexample& example, bool& sure) {
  std::mt19937_64 random(1);
  const std::vector<uint32_t> nodes = rails_.cone({different});
  const int rounds = nodes.size() > 20000 ? 16 : kRounds;
  for (int round = 0; round < rounds; ++round) {
    std::unordered_map<uint32_t, uint64_t> chosen;
    for (const uint32_t node : nodes) {
      if (graph_.node(node * 2).kind != LogicGraph::Leaf) continue;
      uint64_t word = random();
      if (round % 4 == 1) word &= random() & random();
      if (round % 4 == 2) word |= random() | random();
      chosen[node] = word;
    }
    const auto source = [&chosen](uint32_t node) { return chosen[node]; };
    std::unordered_map<uint32_t, uint64_t> values;
    simulate(nodes, source, values);
    if ((values[different >> 1] ^ (different & 1 ? ~uint64_t(0) : 0)) == 0) continue;
    return explain(point, different, source, example, sure);
  }
  return false;
}

/// Tries all values of few inputs; what a function gives counts as one.
bool Refinement::holdsForAll(Edge different) {
  std::vector<uint32_t> nodes, waiting{different >> 1};
  std::unordered_map<uint32_t, int> variable;
  std::unordered_map<uint32_t, bool> seen;
  while (!waiting.empty()) {
    const uint32_t node = waiting.back();
    waiting.pop_back();
    if (!seen.emplace(node, true).second) continue;
    nodes.push_back(node);
    const LogicGraph::Node& data = graph_.node(node * 2);
    if (isVariable(node)) {
      variable.emplace(node, int(variable.size()));
      if (variable.size() > size_t(kMostTriedInputs)) return false;
      continue;
    }
    for (uint32_t i = 0; i < data.count; ++i) waiting.push_back(graph_.inputs(data)[i] >> 1);
  }
  std::sort(nodes.begin(), nodes.end());
  static const uint64_t kPatterns[] = {0xaaaaaaaaaaaaaaaa, 0xcccccccccccccccc, 0xf0f0f0f0f0f0f0f0,
                                       0xff00ff00ff00ff00, 0xffff0000ffff0000, 0xffffffff00000000};
  const int blocks = variable.size() > 6 ? 1 << (variable.size() - 6) : 1;
  for (int block = 0; block < blocks; ++block) {
    std::unordered_map<uint32_t, uint64_t> values;
    std::vector<uint32_t> inner;
    for (const uint32_t node : nodes) {
      const auto found = variable.find(node);
      if (found == variable.end())
        inner.push_back(node);
      else
        values[node] = found->second < 6                  ? kPatterns[found->second]
                       : block >> (found->second - 6) & 1 ? ~uint64_t(0)
                                                          : 0;
    }
    simulate(inner, {}, values);
    if (values[different >> 1] ^ (different & 1 ? ~uint64_t(0) : 0)) return false;
  }
  return true;
}

ProofOutcome Refinement::check(const std::vector<ComparePoint>& points, const SolverLimits& limits, int& point,
                               Counterexample& example, QString& reason) {
  std::vector<std::pair<int, Edge>> left;
  bool doubtful = false;
  for (size_t i = 0; i < points.size(); ++i) {
    const Edge different = difference(points[i]);
    if (different == kFalse || holdsForAll(different)) continue;
    bool sure = false;
    if (!simulateForDifference(points[i], different, example, sure)) {
      left.push_back({int(i), different});
      continue;
    }
    point = int(i);
    if (sure) return ProofOutcome::Different;
    doubtful = true;
    reason = QStringLiteral("it depends on arithmetic that the proof does not look into");
  }
  if (doubtful) return ProofOutcome::Undecided;
  if (left.empty()) return ProofOutcome::Proved;
  return solve(points, left, limits, point, example, reason);
}

}  // namespace ost
