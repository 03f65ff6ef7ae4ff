// The node classes behind the contract's TraceNode, for the trace tree's own sources.
#pragma once

#include "platform/istdata/trace_tree.h"

namespace ost {

/// A signal or a reference; a bus is the class below.
struct TraceTree::Node : TraceNode {
  QString displayName() const override;

  Bus* parent = nullptr;  ///< The bus that holds it; null at the top level.
  int slot = 0;           ///< Its index in the parent's list.
  quint32 mark = 0;       ///< The operation that touched it last.
  QString text;           ///< The name of a signal or a bus. The contract's `name` is a bus's only.
  std::size_t place = 0;  ///< Of a reference: its index among the references to its target.
};

struct TraceTree::Bus final : Node {
  int holes = 0;  ///< Holes in `children`.
};

inline TraceTree::Node* asNode(TraceNode* node) {
  return static_cast<TraceTree::Node*>(node);
}
inline TraceTree::Bus* asBus(TraceNode* node) {
  return static_cast<TraceTree::Bus*>(node);
}

}  // namespace ost
