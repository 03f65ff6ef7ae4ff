// Splits functions that may be unknown or float into functions that never are: "can be 1", "can be 0", "floats".
#pragma once

#include <unordered_map>
#include <vector>

#include "platform/proof/logic_graph.h"

namespace ost {

/// A value as what it can be: unknown is 1 and 0.
struct Rails {
  Edge one, zero, floating;
};

class RailSplitter {
 public:
  explicit RailSplitter(LogicGraph& graph) : graph_(graph) {}

  Rails split(Edge edge);
  /// The nodes of some edges, in an order in which inputs come first.
  std::vector<uint32_t> cone(const Edges& roots) const;

 private:
  Rails ofNode(uint32_t node);
  std::vector<uint32_t> unsplit(uint32_t node) const;

  LogicGraph& graph_;
  std::unordered_map<uint32_t, Rails> rails_;
};

}  // namespace ost
