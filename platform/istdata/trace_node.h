// The node class behind the contract's TraceNode, for the trace tree's own sources.
#pragma once

#include "platform/istdata/trace_tree.h"

namespace ost {

struct TraceTree::Node final : TraceNode {
  Node* parent = nullptr;             ///< The bus that holds it; null at the top level.
  Node* nextReference = nullptr;      ///< From a signal: its first reference; from a reference: the next one.
  Node* previousReference = nullptr;  ///< From a reference: the one before, or the signal itself.
  int slot = 0;                       ///< Its index in the parent's list.
  int holes = 0;                      ///< Of a bus: holes in `children`.
  quint32 mark = 0;                   ///< The operation that touched it last.
};

}  // namespace ost
