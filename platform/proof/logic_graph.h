// Logic of single bits as a graph in which what is the same is the same node. A bit is 0, 1, unknown (x) or floating
// (z); leaves (inputs, registers, memories' data) are 0 or 1, as in hardware. Every rule of simplification holds for
// all of these values, so that two equal edges are two equal functions, unknown values included.
#pragma once

#include <stddef.h>

#include <cstdint>
#include <functional>
#include <vector>

namespace ost {

/// A node, twice its index, plus 1 when the value is inverted.
using Edge = uint32_t;
using Edges = std::vector<Edge>;

constexpr Edge kFalse = 0, kTrue = 1, kUnknown = 2, kFloating = 4;
constexpr Edge kNoEdge = ~Edge(0);

class LogicGraph {
 public:
  enum Kind : uint8_t {
    Constant,  ///< Nodes 0 (false), 1 (unknown), 2 (floating).
    Leaf,      ///< `data` is the caller's number.
    And,       ///< Of two or more.
    Xor,       ///< Of two or more.
    Mux,       ///< select, when set, when clear.
    Majority,  ///< Of three.
    Resolve,   ///< Several drivers of one net.
    Digital,   ///< Of a net that may float: 0, 1 or unknown.
    List,      ///< No value: the arguments of a function.
    Function,  ///< Of one list: `data` is the caller's symbol << 32, plus the bit of the result.
  };
  struct Node {
    uint64_t data;
    uint32_t first, count;
    Kind kind;
    bool mayBeUnknown, mayFloat;
  };

  /// `served` is called from time to time while there is work; it may throw to end it.
  explicit LogicGraph(std::function<void()> served = {});

  /// Counts steps of work: a node is one.
  void work(size_t steps) {
    if ((steps_ += steps) >= kStepsBetweenServices) serve();
  }
  Edge leaf(int number);
  Edge invert(Edge a) { return mayFloat(a) || a == kUnknown ? invertDigital(digital(a)) : a ^ 1; }
  Edge andOf(Edges inputs);
  Edge orOf(Edges inputs);
  Edge xorOf(Edges inputs);
  Edge mux(Edge select, Edge whenSet, Edge whenClear);
  Edge majority(Edge a, Edge b, Edge c);
  Edge resolve(Edges drivers);
  /// What logic sees of a net: a floating one is unknown.
  Edge digital(Edge a);
  /// A function of which nothing is known but that equal arguments give equal results. `unknown`: it may give x even
  /// when its arguments are known.
  Edge function(int symbol, const Edges& arguments, int bit, bool unknown = false);

  bool mayBeUnknown(Edge a) const { return nodes_[a >> 1].mayBeUnknown; }
  bool mayFloat(Edge a) const { return nodes_[a >> 1].mayFloat; }
  bool mayBeUnknown(const Edges& edges) const;
  const Node& node(Edge a) const { return nodes_[a >> 1]; }
  const Edge* inputs(const Node& node) const { return children_.data() + node.first; }
  size_t size() const { return nodes_.size(); }

 private:
  static constexpr size_t kStepsBetweenServices = 1 << 18;  ///< Some milliseconds.
  static Edge invertDigital(Edge a) { return a == kUnknown ? a : a ^ 1; }
  Edge add(Kind kind, const Edge* inputs, size_t count, uint64_t data = 0, bool unknown = false, bool floats = false);
  void grow();
  void serve();
  bool sameSelect(Edge branch, Edge select, Edge& ifSet, Edge& ifClear) const;

  std::vector<Node> nodes_;
  Edges children_;
  std::vector<uint32_t> table_;  ///< Node indexes by hash; 0 is free.
  std::function<void()> served_;
  size_t steps_ = 0;
};

}  // namespace ost
