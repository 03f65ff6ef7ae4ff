// The rails of each kind of node.
#include "platform/proof/rails.h"

#include <algorithm>

namespace ost {
namespace {

// Marks of bits of a function's result.
constexpr int kFunctionValue = 1 << 29, kFunctionIsUnknown = 1 << 30;

}  // namespace

std::vector<uint32_t> RailSplitter::cone(const Edges& roots) const {
  std::vector<uint32_t> waiting, nodes;
  std::unordered_map<uint32_t, bool> seen;
  for (const Edge root : roots) waiting.push_back(root >> 1);
  while (!waiting.empty()) {
    const uint32_t node = waiting.back();
    waiting.pop_back();
    if (!seen.emplace(node, true).second) continue;
    nodes.push_back(node);
    const LogicGraph::Node& data = graph_.node(node * 2);
    for (uint32_t i = 0; i < data.count; ++i) waiting.push_back(graph_.inputs(data)[i] >> 1);
  }
  std::sort(nodes.begin(), nodes.end());  // inputs are older than what is made of them
  return nodes;
}

/// The nodes below that may be unknown and have no rails yet.
std::vector<uint32_t> RailSplitter::unsplit(uint32_t node) const {
  std::vector<uint32_t> waiting{node}, nodes;
  std::unordered_map<uint32_t, bool> seen;
  while (!waiting.empty()) {
    const uint32_t current = waiting.back();
    waiting.pop_back();
    if (!graph_.mayBeUnknown(current * 2) || rails_.count(current) || !seen.emplace(current, true).second) continue;
    nodes.push_back(current);
    const LogicGraph::Node& data = graph_.node(current * 2);
    if (data.kind == LogicGraph::Function) continue;
    for (uint32_t i = 0; i < data.count; ++i) waiting.push_back(graph_.inputs(data)[i] >> 1);
  }
  std::sort(nodes.begin(), nodes.end());
  return nodes;
}

Rails RailSplitter::split(Edge edge) {
  if (!graph_.mayBeUnknown(edge)) return {edge, graph_.invert(edge), kFalse};
  const auto known = rails_.find(edge >> 1);
  Rails result;
  if (known != rails_.end()) {
    result = known->second;
  } else {
    for (const uint32_t node : unsplit(edge >> 1)) rails_[node] = ofNode(node);
    result = rails_[edge >> 1];
  }
  if (edge & 1) std::swap(result.one, result.zero);
  return result;
}

/// Of a node whose inputs are known.
Rails RailSplitter::ofNode(uint32_t index) {
  const LogicGraph::Node node = graph_.node(index * 2);
  std::vector<Rails> in;
  if (node.kind != LogicGraph::Function)
    for (uint32_t i = 0; i < node.count; ++i) in.push_back(split(graph_.inputs(node)[i]));
  const auto all = [&](Edge Rails::*rail) {
    Edges edges;
    for (const Rails& input : in) edges.push_back(input.*rail);
    return edges;
  };
  const auto either = [this](Edge a, Edge b) { return graph_.orOf({a, b}); };
  const auto both = [this](Edge a, Edge b) { return graph_.andOf({a, b}); };
  switch (node.kind) {
    case LogicGraph::Constant:
      return index == kFloating >> 1 ? Rails{kFalse, kFalse, kTrue} : Rails{kTrue, kTrue, kFalse};
    case LogicGraph::And:
      return {graph_.andOf(all(&Rails::one)), graph_.orOf(all(&Rails::zero)), kFalse};
    case LogicGraph::Xor: {
      Rails sum = in[0];
      for (size_t i = 1; i < in.size(); ++i)
        sum = {either(both(sum.one, in[i].zero), both(sum.zero, in[i].one)),
               either(both(sum.one, in[i].one), both(sum.zero, in[i].zero)), kFalse};
      return sum;
    }
    case LogicGraph::Mux: {
      const Rails &select = in[0], &set = in[1], &clear = in[2];
      const auto choose = [&](Edge Rails::*rail) {
        if (!graph_.mayBeUnknown(graph_.inputs(graph_.node(index * 2))[0]))
          return graph_.mux(select.one, set.*rail, clear.*rail);
        return either(both(select.one, set.*rail), both(select.zero, clear.*rail));
      };
      // By an unknown select nothing floats: it is unknown, too.
      const Edge doubtful = both(select.one, select.zero);
      const Edge unknown = both(doubtful, either(set.floating, clear.floating));
      return {either(choose(&Rails::one), unknown), either(choose(&Rails::zero), unknown),
              both(choose(&Rails::floating), graph_.invert(doubtful))};
    }
    case LogicGraph::Majority:
      return {graph_.majority(in[0].one, in[1].one, in[2].one), graph_.majority(in[0].zero, in[1].zero, in[2].zero),
              kFalse};
    case LogicGraph::Resolve:
      return {graph_.orOf(all(&Rails::one)), graph_.orOf(all(&Rails::zero)), graph_.andOf(all(&Rails::floating))};
    case LogicGraph::Digital:
      return {either(in[0].one, in[0].floating), either(in[0].zero, in[0].floating), kFalse};
    default: {
      // What it gives, and whether it is unknown, are two more functions of the same arguments.
      const LogicGraph::Node list = graph_.node(graph_.inputs(node)[0]);
      const Edges arguments(graph_.inputs(list), graph_.inputs(list) + list.count);
      const int symbol = int(node.data >> 32), bit = int(node.data & ~uint32_t(0));
      const Edge value = graph_.function(symbol, arguments, bit | kFunctionValue);
      const Edge unknown = graph_.function(symbol, arguments, bit | kFunctionIsUnknown);
      return {either(value, unknown), either(graph_.invert(value), unknown), kFalse};
    }
  }
}

}  // namespace ost
