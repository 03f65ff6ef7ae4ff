// The rules by which nodes are simplified and found again.
#include "platform/proof/logic_graph.h"

#include <algorithm>

namespace ost {
namespace {

// A node takes in the inputs of an input of its kind up to this many: prefix chains would grow with their square.
constexpr size_t kMostMerged = 64;

uint64_t mix(uint64_t hash, uint64_t value) {
  hash = (hash ^ value) * 0x9e3779b97f4a7c15;
  return hash ^ (hash >> 29);
}

}  // namespace

LogicGraph::LogicGraph(std::function<void()> served) : table_(1 << 10), served_(std::move(served)) {
  nodes_.push_back({0, 0, 0, Constant, false, false});
  nodes_.push_back({1, 0, 0, Constant, true, false});
  nodes_.push_back({2, 0, 0, Constant, true, true});
}

void LogicGraph::serve() {
  steps_ = 0;
  if (served_) served_();
}

bool LogicGraph::mayBeUnknown(const Edges& edges) const {
  return std::any_of(edges.begin(), edges.end(), [this](Edge edge) { return mayBeUnknown(edge); });
}

Edge LogicGraph::add(Kind kind, const Edge* inputs, size_t count, uint64_t data, bool unknown, bool floats) {
  work(count + 8);
  if (nodes_.size() * 2 > table_.size()) grow();
  uint64_t hash = mix(kind, data);
  for (size_t i = 0; i < count; ++i) hash = mix(hash, inputs[i]);
  size_t slot = hash & (table_.size() - 1);
  for (; table_[slot]; slot = (slot + 1) & (table_.size() - 1)) {
    const Node& known = nodes_[table_[slot]];
    if (known.kind == kind && known.data == data && known.count == count &&
        std::equal(inputs, inputs + count, children_.data() + known.first))
      return table_[slot] * 2;
  }
  for (size_t i = 0; i < count; ++i) unknown |= mayBeUnknown(inputs[i]);
  table_[slot] = uint32_t(nodes_.size());
  nodes_.push_back({data, uint32_t(children_.size()), uint32_t(count), kind, unknown || floats, floats});
  children_.insert(children_.end(), inputs, inputs + count);
  return Edge(nodes_.size() - 1) * 2;
}

void LogicGraph::grow() {
  table_.assign(table_.size() * 2, 0);
  for (size_t i = 3; i < nodes_.size(); ++i) {
    const Node& node = nodes_[i];
    uint64_t hash = mix(node.kind, node.data);
    for (size_t k = 0; k < node.count; ++k) hash = mix(hash, children_[node.first + k]);
    size_t slot = hash & (table_.size() - 1);
    while (table_[slot]) slot = (slot + 1) & (table_.size() - 1);
    table_[slot] = uint32_t(i);
  }
}

Edge LogicGraph::leaf(int number) {
  return add(Leaf, nullptr, 0, uint64_t(number));
}

Edge LogicGraph::digital(Edge a) {
  if (!mayFloat(a)) return a;
  if (a == kFloating) return kUnknown;
  const Node node = this->node(a);
  if (node.kind != Mux) return add(Digital, &a, 1);
  const Edge* inputs = this->inputs(node);
  const Edge select = inputs[0], set = inputs[1], clear = inputs[2];
  const Edge digitalSet = digital(set);
  return mux(select, digitalSet, digital(clear));
}

Edge LogicGraph::andOf(Edges inputs) {
  Edges all;
  for (Edge& input : inputs) input = digital(input);
  for (const Edge input : inputs) {
    const Node& node = this->node(input);
    if (!(input & 1) && node.kind == And && node.count + inputs.size() <= kMostMerged)
      all.insert(all.end(), this->inputs(node), this->inputs(node) + node.count);
    else
      all.push_back(input);
  }
  std::sort(all.begin(), all.end());
  all.erase(std::unique(all.begin(), all.end()), all.end());
  if (!all.empty() && all.front() == kFalse) return kFalse;
  if (!all.empty() && all.front() == kTrue) all.erase(all.begin());
  if (all.empty()) return kTrue;
  for (size_t i = 1; i < all.size(); ++i)
    if (all[i] == (all[i - 1] ^ 1) && (all[i] & 1) && !mayBeUnknown(all[i])) return kFalse;
  return all.size() == 1 ? all[0] : add(And, all.data(), all.size());
}

Edge LogicGraph::orOf(Edges inputs) {
  for (Edge& input : inputs) input = invert(input);
  return invert(andOf(std::move(inputs)));
}

Edge LogicGraph::xorOf(Edges inputs) {
  Edges all;
  Edge parity = 0;
  for (Edge& input : inputs) {
    input = digital(input);
    if (input == kUnknown) return kUnknown;
    parity ^= input & 1;
    input &= ~Edge(1);
  }
  for (const Edge input : inputs) {
    const Node& node = this->node(input);
    if (node.kind == Xor && node.count + inputs.size() <= kMostMerged)
      all.insert(all.end(), this->inputs(node), this->inputs(node) + node.count);
    else if (input != kFalse)
      all.push_back(input);
  }
  std::sort(all.begin(), all.end());
  Edges left;
  for (const Edge input : all) {
    if (!left.empty() && left.back() == input && !mayBeUnknown(input))
      left.pop_back();
    else
      left.push_back(input);
  }
  if (left.empty()) return parity;
  return (left.size() == 1 ? left[0] : add(Xor, left.data(), left.size())) ^ parity;
}

/// The branches of `branch` when it is a choice by the same select.
bool LogicGraph::sameSelect(Edge branch, Edge select, Edge& ifSet, Edge& ifClear) const {
  const Node& node = this->node(branch);
  if (node.kind != Mux || inputs(node)[0] != select || (branch & 1 && node.mayFloat)) return false;
  ifSet = inputs(node)[1];
  ifClear = inputs(node)[2];
  if (branch & 1) {
    ifSet = invertDigital(ifSet);
    ifClear = invertDigital(ifClear);
  }
  return true;
}

Edge LogicGraph::mux(Edge select, Edge whenSet, Edge whenClear) {
  select = digital(select);
  if (select == kTrue || whenSet == whenClear) return whenSet;
  if (select == kFalse) return whenClear;
  if (select != kUnknown && select & 1) {
    select ^= 1;
    std::swap(whenSet, whenClear);
  }
  if (!mayBeUnknown(select)) {
    Edge set, clear;
    if (sameSelect(whenSet, select, set, clear)) return mux(select, set, whenClear);
    if (sameSelect(whenClear, select, set, clear)) return mux(select, whenSet, clear);
    if (whenSet >> 1 == select >> 1) return mux(select, kTrue ^ (whenSet & 1), whenClear);
    if (whenClear >> 1 == select >> 1) return mux(select, whenSet, kFalse ^ (whenClear & 1));
  }
  const bool floats = mayFloat(whenSet) || mayFloat(whenClear);
  if (!floats) {
    if (whenSet == kTrue) return orOf({select, whenClear});
    if (whenSet == kFalse) return andOf({invert(select), whenClear});
    if (whenClear == kFalse) return andOf({select, whenSet});
    if (whenClear == kTrue) return orOf({invert(select), whenSet});
    if (whenSet != kUnknown && whenSet == (whenClear ^ 1)) return xorOf({select, whenClear});
    if (whenSet & 1 || (whenSet == kUnknown && whenClear & 1)) {
      const Edge inputs[] = {select, invertDigital(whenSet), invertDigital(whenClear)};
      return add(Mux, inputs, 3) ^ 1;
    }
  }
  const Edge inputs[] = {select, whenSet, whenClear};
  return add(Mux, inputs, 3, 0, false, floats);
}

Edge LogicGraph::majority(Edge a, Edge b, Edge c) {
  Edge in[] = {digital(a), digital(b), digital(c)};
  std::sort(in, in + 3);
  if (in[0] == kFalse) return andOf({in[1], in[2]});
  if (in[0] == kTrue) return orOf({in[1], in[2]});
  for (int i = 0; i < 2; ++i) {
    if (in[i] == in[i + 1]) return in[i];
    if ((in[i] ^ 1) == in[i + 1] && in[i] >> 1 == in[i + 1] >> 1 && !mayBeUnknown(in[i])) return in[i ? 0 : 2];
  }
  const bool turn = (in[0] & 1) + (in[1] & 1) + (in[2] & 1) >= 2;
  for (Edge& input : in) input = turn ? invertDigital(input) : input;
  return add(Majority, in, 3) ^ Edge(turn);
}

Edge LogicGraph::resolve(Edges drivers) {
  std::sort(drivers.begin(), drivers.end());
  drivers.erase(std::unique(drivers.begin(), drivers.end()), drivers.end());
  drivers.erase(std::remove(drivers.begin(), drivers.end(), kFloating), drivers.end());
  if (drivers.empty()) return kFloating;
  return drivers.size() == 1 ? drivers[0] : add(Resolve, drivers.data(), drivers.size(), 0, true, true);
}

Edge LogicGraph::function(int symbol, const Edges& arguments, int bit, bool unknown) {
  const Edge list = add(List, arguments.data(), arguments.size());
  return add(Function, &list, 1, uint64_t(symbol) << 32 | uint32_t(bit), unknown);
}

}  // namespace ost
