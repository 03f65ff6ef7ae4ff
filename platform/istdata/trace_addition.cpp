// What comes into the trace tree: entries that are added together, and a tree that is built from a file.
#include <algorithm>

#include "platform/istdata/trace_node.h"
#include "platform/istdata/trace_tree.h"

namespace ost {

using mero::ostrel::TRACE_NODE_BUS;
using mero::ostrel::TRACE_NODE_REF;

TraceTree::Addition::Addition(TraceTree& tree, int expected) : tree_(tree), mark_(++tree.mark_) {
  tree_.requireRoom(expected);
  tree_.named_.reserve(tree_.named_.size() + expected);
}

TraceTree::Addition::~Addition() {
  if (staged_.empty()) return;
  // References first: a signal that goes must not leave one behind.
  const auto forgetAll = [this](bool references) {
    for (Node* node : staged_) {
      if ((node->kind == TRACE_NODE_REF) == references) tree_.forget(node);
      for (TraceNode* child : node->children)
        if ((child->kind == TRACE_NODE_REF) == references) tree_.forget(asNode(child));
    }
  };
  forgetAll(true);
  forgetAll(false);
  for (Node* node : staged_) destroySubtree(node);
}

bool TraceTree::Addition::stage(const QString& name, const QStringList& bits, bool isVector, QString& remark,
                                QString& error) {
  Node* named = tree_.named_.value(name);
  const bool isBus = named && named->kind == TRACE_NODE_BUS;
  if (named && named->mark == mark_ && isBus == isVector) {
    error = QStringLiteral("%1 is in the list twice.").arg(quoted(name));
    return false;
  }
  if (!isVector) {
    if (isBus) {
      error = QStringLiteral("%1 is the name of a bus in this core; rename the bus first (ost_trace rename_bus).")
                  .arg(quoted(name));
      return false;
    }
    staged_.push_back(named ? tree_.newReference(named) : tree_.newSignal(name));
    (named ? named : staged_.back())->mark = mark_;
    return true;
  }
  for (const QString& bit : bits) {
    if (!tree_.findBus(bit)) continue;
    error = QStringLiteral("Bit %1 has the name of a bus in this core; rename the bus first (ost_trace rename_bus).")
                .arg(quoted(bit));
    return false;
  }
  tree_.requireRoom(bits.size());
  QString busName = name;
  for (int n = 2; tree_.isTaken(busName) || bits.contains(busName); ++n)
    busName = name + QLatin1Char('_') + QString::number(n);
  if (isBus) named->mark = mark_;
  if (busName != name)
    remark += QStringLiteral("The name %1 is taken in this core: the new bus is named %2.\n")
                  .arg(quoted(name), quoted(busName));
  Bus* bus = tree_.newBus(busName);
  bus->mark = mark_;
  staged_.push_back(bus);
  for (const QString& bit : bits) {
    Node* captured = tree_.named_.value(bit);
    tree_.append(bus, captured ? tree_.newReference(captured) : tree_.newSignal(bit));
  }
  return true;
}

bool TraceTree::Addition::insert(const Place& place, QString& error) {
  const bool hasBus = std::any_of(staged_.begin(), staged_.end(), [](Node* n) { return n->kind == TRACE_NODE_BUS; });
  if (!tree_.checkNesting(place.bus, hasBus ? 1 : 0, error)) return false;
  tree_.insertNodes(staged_, place);
  staged_.clear();
  return true;
}

TraceNode* TraceTree::appendSignal(TraceNode* bus, const QString& name, QString& error) {
  if (isTaken(name)) {
    error = QStringLiteral("%1 is in the trace list already.").arg(quoted(name));
    return nullptr;
  }
  Node* signal = newSignal(name);
  append(asBus(bus), signal);
  return signal;
}

TraceNode* TraceTree::appendBus(TraceNode* bus, const QString& name, QString& error) {
  if (isTaken(name)) {
    error = QStringLiteral("the bus name %1 is taken.").arg(quoted(name));
    return nullptr;
  }
  if (!checkNesting(asBus(bus), 1, error)) return nullptr;
  Bus* added = newBus(name);
  append(asBus(bus), added);
  return added;
}

TraceNode* TraceTree::appendReference(TraceNode* bus, const QString& name, QString&) {
  Node* reference = new Node;
  reference->kind = TRACE_NODE_REF;
  reference->name = name;  // until it is bound
  unbound_.push_back(reference);
  append(asBus(bus), reference);
  return reference;
}

bool TraceTree::bindReferences(QString& error) {
  for (Node* reference : unbound_) {
    Node* target = named_.value(reference->name);
    if (!target || target->kind == TRACE_NODE_BUS) {
      error = QStringLiteral("the reference to %1 has no signal of that name.").arg(quoted(reference->name));
      return false;
    }
    reference->name = QString();
    bind(reference, target);
  }
  unbound_.clear();
  return true;
}

}  // namespace ost
