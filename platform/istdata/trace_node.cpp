// The contract's trace node.
#include "framework/ist_data.h"

namespace mero {
namespace ostrel {

TraceNode::TraceNode() : kind(0), target(nullptr) {}

TraceNode::~TraceNode() = default;

QString TraceNode::displayName() const {
  return target ? target->displayName() : name;
}

}  // namespace ostrel
}  // namespace mero
