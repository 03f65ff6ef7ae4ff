// The contract's trace node, and what the tree's own nodes show.
#include "platform/istdata/trace_node.h"

namespace mero {
namespace ostrel {

TraceNode::TraceNode() : kind(0), target(nullptr) {}

TraceNode::~TraceNode() = default;

QString TraceNode::displayName() const {
  return target ? target->displayName() : name;
}

}  // namespace ostrel
}  // namespace mero

namespace ost {

QString TraceTree::Node::displayName() const {
  return kind == mero::ostrel::TRACE_NODE_SIGNAL ? text : TraceNode::displayName();
}

}  // namespace ost
