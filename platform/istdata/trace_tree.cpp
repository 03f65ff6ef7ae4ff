// The trace tree's structure: lists with holes, the hash of captured bits, and the chain of references to each bit.
#include "platform/istdata/trace_tree.h"

#include <algorithm>

#include "platform/istdata/trace_node.h"

namespace ost {

using mero::ostrel::TRACE_NODE_BUS;
using mero::ostrel::TRACE_NODE_REF;
using mero::ostrel::TRACE_NODE_SIGNAL;

namespace {

/// Stands in every list where an entry was taken away; listings skip its kind.
TraceNode* hole() {
  static TraceNode node;
  return &node;
}

TraceTree::Node* asNode(TraceNode* node) {
  return static_cast<TraceTree::Node*>(node);
}

}  // namespace

TraceTree::TraceTree() = default;

TraceTree::~TraceTree() {
  for (TraceNode* node : nodes)
    if (node != hole()) deleteSubtree(asNode(node));
}

QList<TraceNode*>& TraceTree::members(Node* bus) {
  return bus ? bus->children : nodes;
}

int& TraceTree::holes(Node* bus) {
  return bus ? bus->holes : holes_;
}

TraceNode* TraceTree::findBus(const QString& name) const {
  return buses_.value(name);
}

bool TraceTree::isTaken(const QString& name) const {
  return buses_.contains(name) || signals_.contains(name);
}

TraceNode* TraceTree::find(const QString& name) {
  if (Node* node = buses_.value(name)) return node;
  if (Node* node = signals_.value(name)) return node;
  if (!name.endsWith('>')) return nullptr;
  const int open = name.lastIndexOf('<');
  Node* bus = open > 0 ? buses_.value(name.left(open)) : nullptr;
  if (open < 0 || (open > 0 && !bus)) return nullptr;
  QString error;
  return nthMember(bus, name.mid(open + 1, name.size() - open - 2), error);
}

QString TraceTree::nearestHint(const QString& name) const {
  NearestNames near(name);
  for (auto it = buses_.begin(); it != buses_.end(); ++it) near.offer(it.key());
  signals_.forEach([&near](const Node* node) { near.offer(node->name); });
  return near.hint();
}

TraceTree::Node* TraceTree::nthMember(Node* bus, const QString& number, QString& error) {
  bool isNumber = false;
  const int index = number.toInt(&isNumber);
  const QList<TraceNode*>& list = members(bus);
  const int count = list.size() - holes(bus);
  if (isNumber && index >= 1 && index <= count) {
    // Walk from the nearer end, over the holes.
    const bool forward = index <= count / 2;
    int left = forward ? index : count - index + 1, slot = forward ? 0 : list.size() - 1;
    while (list[slot] == hole() || --left > 0) slot += forward ? 1 : -1;
    return asNode(list[slot]);
  }
  const QString where = bus ? "Bus " + quoted(bus->name) : QString("The top level");
  error = count == 0 ? QString("%1 has no members; use <.end.> as the position.").arg(where)
                     : QString("%1 has %2 members; the position %3 must be 1 to %2 or .end.")
                           .arg(where, QString::number(count), quoted(number));
  return nullptr;
}

bool TraceTree::findPlace(const QString& busName, const QString& position, Place& place, QString& error) {
  place = Place();
  if (!busName.isEmpty()) {
    place.bus = buses_.value(busName);
    if (!place.bus) {
      error = QString("There is no bus %1 in this core%2.").arg(quoted(busName), nearestHint(busName));
      return false;
    }
  }
  if (position.isEmpty() || position.compare(QLatin1String(".end."), Qt::CaseInsensitive) == 0) return true;
  Node* named = buses_.value(position);
  if (!named) named = signals_.value(position);
  if (named && (busName.isEmpty() || named->parent == place.bus)) {
    place.bus = named->parent;
    place.before = named;
    return true;
  }
  const bool allDigits = std::all_of(position.begin(), position.end(), [](QChar c) { return c >= '0' && c <= '9'; });
  if (allDigits) {
    place.before = nthMember(place.bus, position, error);
    place.numbered = true;
    return place.before != nullptr;
  }
  if (named)
    error = QString("%1 is not a member of bus %2.").arg(quoted(position), quoted(busName));
  else
    error = QString("There is no traced signal or bus %1 to take as the position%2.")
                .arg(quoted(position), nearestHint(position));
  return false;
}

bool TraceTree::checkNesting(const Node* bus, int height, QString& error) const {
  int depth = 0;
  for (const Node* outer = bus; outer; outer = outer->parent) ++depth;
  if (depth + height <= kMaxBusNesting) return true;
  error = QString("Buses can be nested %1 deep at most; ungroup one of them first.").arg(kMaxBusNesting);
  return false;
}

TraceTree::Node* TraceTree::newSignal(const QString& name) {
  Node* node = new Node;
  node->kind = TRACE_NODE_SIGNAL;
  node->name = name;
  signals_.insert(node);
  return node;
}

TraceTree::Node* TraceTree::newBus(const QString& name) {
  Node* node = new Node;
  node->kind = TRACE_NODE_BUS;
  node->name = name;
  buses_.insert(name, node);
  return node;
}

TraceTree::Node* TraceTree::newReference(Node* target) {
  Node* node = new Node;
  node->kind = TRACE_NODE_REF;
  node->name = target->name;
  node->target = target;
  node->nextReference = target->nextReference;
  node->previousReference = target;
  if (node->nextReference) node->nextReference->previousReference = node;
  target->nextReference = node;
  return node;
}

void TraceTree::unlinkReference(Node* reference) {
  if (reference->previousReference) reference->previousReference->nextReference = reference->nextReference;
  if (reference->nextReference) reference->nextReference->previousReference = reference->previousReference;
  reference->nextReference = reference->previousReference = nullptr;
}

/// Takes the names of a subtree's nodes out of the indexes and the chains.
void TraceTree::forget(Node* node) {
  if (node->kind == TRACE_NODE_REF) {
    unlinkReference(node);
  } else if (node->kind == TRACE_NODE_SIGNAL) {
    if (signals_.value(node->name) == node) {
      signals_.remove(node->name);
      busNames_.released(node->name);
    }
  } else {
    buses_.remove(node->name);
    busNames_.released(node->name);
  }
}

void TraceTree::deleteSubtree(Node* node) {
  for (TraceNode* child : node->children)
    if (child != hole()) deleteSubtree(asNode(child));
  delete node;
}

/// Finds or makes `count` holes at the place and returns the first one's slot. Where it must shift the list, it leaves
/// spare holes, so that the next insertions at the same place need no shift.
int TraceTree::openGap(const Place& place, int count) {
  const int kMaxSpare = 4096;
  QList<TraceNode*>& list = members(place.bus);
  const int end = list.size();
  if (!place.before) {
    for (int i = 0; i < count; ++i) list.append(hole());
    holes(place.bus) += count;
    return end;
  }
  int slot = place.before->slot;
  int run = gap_.before == place.before ? gap_.holes : 0;
  if (run < count)
    while (run < std::max(count, kMaxSpare) && run < slot && list[slot - 1 - run] == hole()) ++run;
  if (run < count) {
    const int shift = count - run + std::min(end / 64, kMaxSpare);
    for (int i = 0; i < shift; ++i) list.append(hole());
    for (int i = end - 1; i >= slot; --i) {
      list[i + shift] = list[i];
      if (list[i] != hole()) asNode(list[i])->slot = i + shift;
      list[i] = hole();
    }
    holes(place.bus) += shift;
    run += shift;
    slot += shift;
  }
  gap_.before = place.numbered ? nullptr : place.before;
  gap_.holes = run - count;
  return place.numbered ? slot - count : slot - run;
}

/// Puts new or detached nodes into a list.
void TraceTree::insertNodes(const std::vector<Node*>& added, const Place& place) {
  int slot = openGap(place, int(added.size()));
  QList<TraceNode*>& list = members(place.bus);
  holes(place.bus) -= int(added.size());
  for (Node* node : added) {
    node->parent = place.bus;
    node->slot = slot;
    list[slot++] = node;
  }
}

/// The entry after `node` in its list, or null.
TraceTree::Node* TraceTree::nextSibling(Node* node) {
  const QList<TraceNode*>& list = members(node->parent);
  int next = node->slot + 1;
  while (next < list.size() && list[next] == hole()) ++next;
  return next < list.size() ? asNode(list[next]) : nullptr;
}

/// Leaves a hole where the node is. The lists are compacted when they are more holes than entries.
void TraceTree::vacate(Node* node) {
  Node* bus = node->parent;
  QList<TraceNode*>& list = members(bus);
  if (gap_.before == node) gap_ = Gap();
  list[node->slot] = hole();
  const int count = ++holes(bus);
  if (count == list.size() || (count > 32 && count > list.size() / 2)) compactList(bus);
}

void TraceTree::compactList(Node* bus) {
  gap_ = Gap();
  QList<TraceNode*>& list = members(bus);
  int kept = 0;
  for (int i = 0; i < list.size(); ++i) {
    if (list[i] == hole()) continue;
    list[kept] = list[i];
    asNode(list[kept])->slot = kept;
    ++kept;
  }
  list.erase(list.begin() + kept, list.end());
  holes(bus) = 0;
}

void TraceTree::compactBelow(Node* bus) {
  if (holes(bus) > 0) compactList(bus);
  for (TraceNode* child : members(bus))
    if (child->kind == TRACE_NODE_BUS) compactBelow(asNode(child));
}

void TraceTree::compact() {
  compactBelow(nullptr);
}

TraceTree::Addition::Addition(TraceTree& tree) : tree_(tree), mark_(++tree.mark_) {}

TraceTree::Addition::~Addition() {
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
  for (Node* node : staged_) tree_.deleteSubtree(node);
}

bool TraceTree::Addition::stage(const QString& name, const QStringList& bits, bool isVector, QString& remark,
                                QString& error) {
  const auto twice = [&](Node* named) {
    if (!named || named->mark != mark_) return false;
    error = QString("%1 is in the list twice.").arg(quoted(name));
    return true;
  };
  Node* sameBus = tree_.buses_.value(name);
  if (!isVector) {
    Node* captured = tree_.signals_.value(name);
    if (twice(captured)) return false;
    if (sameBus) {
      error = QString("%1 is the name of a bus in this core; rename the bus first (ost_trace rename_bus).")
                  .arg(quoted(name));
      return false;
    }
    staged_.push_back(captured ? tree_.newReference(captured) : tree_.newSignal(name));
    (captured ? captured : staged_.back())->mark = mark_;
    return true;
  }
  if (twice(sameBus)) return false;
  for (const QString& bit : bits) {
    if (!tree_.buses_.contains(bit)) continue;
    error = QString("Bit %1 has the name of a bus in this core; rename the bus first (ost_trace rename_bus).")
                .arg(quoted(bit));
    return false;
  }
  QString busName = name;
  for (int n = 2; tree_.isTaken(busName) || bits.contains(busName); ++n) busName = name + '_' + QString::number(n);
  if (sameBus) sameBus->mark = mark_;
  if (busName != name)
    remark +=
        QString("The name %1 is taken in this core: the new bus is named %2.\n").arg(quoted(name), quoted(busName));
  Node* bus = tree_.newBus(busName);
  bus->mark = mark_;
  staged_.push_back(bus);
  for (const QString& bit : bits) {
    Node* captured = tree_.signals_.value(bit);
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

TraceNode* TraceTree::append(Node* bus, Node* node) {
  QList<TraceNode*>& list = members(bus);
  node->parent = bus;
  node->slot = list.size();
  list.append(node);
  return node;
}

TraceNode* TraceTree::appendSignal(TraceNode* bus, const QString& name, QString& error) {
  if (!isTaken(name)) return append(asNode(bus), newSignal(name));
  error = QString("%1 is in the trace list already.").arg(quoted(name));
  return nullptr;
}

TraceNode* TraceTree::appendBus(TraceNode* bus, const QString& name, QString& error) {
  if (isTaken(name)) {
    error = QString("the bus name %1 is taken.").arg(quoted(name));
    return nullptr;
  }
  if (!checkNesting(asNode(bus), 1, error)) return nullptr;
  return append(asNode(bus), newBus(name));
}

TraceNode* TraceTree::appendReference(TraceNode* bus, const QString& name, QString&) {
  Node* node = new Node;
  node->kind = TRACE_NODE_REF;
  node->name = name;
  unbound_.append(node);
  return append(asNode(bus), node);
}

bool TraceTree::bindReferences(QString& error) {
  for (TraceNode* reference : unbound_) {
    Node* target = signals_.value(reference->name);
    if (!target) {
      error = QString("the reference to %1 has no signal of that name.").arg(quoted(reference->name));
      return false;
    }
    Node* node = asNode(reference);
    node->target = target;
    node->nextReference = target->nextReference;
    node->previousReference = target;
    if (node->nextReference) node->nextReference->previousReference = node;
    target->nextReference = node;
  }
  unbound_.clear();
  return true;
}

}  // namespace ost
