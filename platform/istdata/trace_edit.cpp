// Operations on entries that are in the trace tree already: moving, removing, grouping and renaming.
#include <algorithm>

#include "platform/istdata/trace_node.h"
#include "platform/istdata/trace_tree.h"

namespace ost {

using mero::ostrel::TRACE_NODE_BUS;
using mero::ostrel::TRACE_NODE_REF;
using mero::ostrel::TRACE_NODE_SIGNAL;

namespace {

/// Buses inside one another in a subtree, its root among them.
int busHeight(const TraceNode* node) {
  if (node->kind != TRACE_NODE_BUS) return 0;
  int height = 0;
  for (const TraceNode* child : node->children) height = std::max(height, busHeight(child));
  return height + 1;
}

/// True when `a` stands before `b` in the tree.
bool isBefore(const TraceTree::Node* a, const TraceTree::Node* b) {
  const auto path = [](const TraceTree::Node* node) {
    std::vector<int> slots;
    for (; node; node = node->parent) slots.push_back(node->slot);
    std::reverse(slots.begin(), slots.end());
    return slots;
  };
  return path(a) < path(b);
}

/// The buses that entries were taken from, in runs: entries of one bus mostly come together.
class Parents {
 public:
  void note(TraceTree::Bus* bus) {
    if (buses_.empty() || buses_.back() != bus) buses_.push_back(bus);
  }
  const std::vector<TraceTree::Bus*>& all() const { return buses_; }

 private:
  std::vector<TraceTree::Bus*> buses_;
};

}  // namespace

bool TraceTree::findAll(const QStringList& names, const std::function<QString(const QString&)>& canonical,
                        QVector<TraceNode*>& entries, QString& error) {
  entries.clear();
  entries.reserve(names.size());
  const quint32 mark = ++mark_;
  for (const QString& name : names) {
    TraceNode* found = find(name);
    if (!found) found = find(canonical(name));
    if (!found) {
      error = QStringLiteral("%1 is not traced in this core%2.").arg(quoted(name), nearestHint(name));
      return false;
    }
    if (asNode(found)->mark == mark) {
      error = QStringLiteral("%1 is in the list twice.").arg(quoted(name));
      return false;
    }
    asNode(found)->mark = mark;
    entries.append(found);
  }
  return true;
}

bool TraceTree::move(const QVector<TraceNode*>& entries, Place place, QString& error) {
  requireRoom(entries.size());
  const quint32 mark = ++mark_;
  int height = 0;
  for (TraceNode* entry : entries) {
    asNode(entry)->mark = mark;
    height = std::max(height, busHeight(entry));
  }
  for (Bus* outer = place.bus; outer; outer = outer->parent) {
    if (outer->mark != mark) continue;
    error = QStringLiteral("Bus %1 cannot be moved into itself.").arg(quoted(outer->name));
    return false;
  }
  if (height > 0 && !checkNesting(place.bus, height, error)) return false;
  // Moved entries are no anchor: what follows them is.
  while (place.before && place.before->mark == mark) place.before = nextSibling(place.before);
  int slot = openGap(place, entries.size());
  Parents parents;
  for (TraceNode* entry : entries) {
    parents.note(asNode(entry)->parent);
    vacate(asNode(entry));
    put(asNode(entry), place.bus, slot++);
  }
  for (Bus* parent : parents.all()) compactIfDue(parent);
  return true;
}

/// What is to be removed, buses with all that is in them.
struct TraceTree::Condemned {
  quint32 mark;  ///< All of them bear it.
  std::vector<Node*> signalNodes, references;
  std::vector<Bus*> buses;

  void add(TraceNode* entry) {
    if (entry->kind == 0 || asNode(entry)->mark == mark) return;
    Node* node = asNode(entry);
    node->mark = mark;
    if (node->kind == TRACE_NODE_SIGNAL) signalNodes.push_back(node);
    if (node->kind == TRACE_NODE_REF) references.push_back(node);
    if (node->kind != TRACE_NODE_BUS) return;
    buses.push_back(asBus(node));
    for (TraceNode* child : node->children) add(child);
  }
};

/// The first reference of a signal that goes becomes the signal; the others follow it. False when it has none.
bool TraceTree::promoteReference(Node* signal) {
  const auto found = references_.find(signal);
  if (found == references_.end()) return false;
  Node* heir = *std::min_element(found->begin(), found->end(), isBefore);
  unbind(heir);
  heir->kind = TRACE_NODE_SIGNAL;
  heir->text = signal->text;
  named_[heir->text] = heir;
  const std::vector<Node*> others = references_.take(signal);
  for (Node* other : others) bind(other, heir);
  return true;
}

void TraceTree::remove(const QVector<TraceNode*>& entries) {
  Condemned condemned{++mark_, {}, {}, {}};
  condemned.signalNodes.reserve(std::size_t(entries.size()));
  for (TraceNode* entry : entries) condemned.add(entry);
  requireRoom(int(condemned.signalNodes.size() + condemned.references.size()));
  Parents parents;
  const auto leaveParent = [&](Node* node) {
    if (node->parent && node->parent->mark == condemned.mark) return;
    parents.note(node->parent);
    vacate(node);
  };
  // Before the signals: a reference that goes too must not inherit.
  for (Node* reference : condemned.references) {
    unbind(reference);
    leaveParent(reference);
    delete reference;
  }
  for (Node* signal : condemned.signalNodes) {
    if (!promoteReference(signal)) forget(signal);
    leaveParent(signal);
    delete signal;
  }
  for (Bus* bus : condemned.buses) {
    forget(bus);
    leaveParent(bus);
  }
  for (Bus* bus : condemned.buses) delete bus;
  for (Bus* parent : parents.all()) compactIfDue(parent);
}

bool TraceTree::group(QString& name, const QVector<TraceNode*>& entries, QString& error) {
  if (entries.isEmpty()) {
    error = QStringLiteral("A bus needs at least one member; name the traced signals to group.");
    return false;
  }
  Bus* parent = asNode(entries.first())->parent;
  int height = 0;
  for (TraceNode* entry : entries) {
    if (asNode(entry)->parent != parent) {
      error =
          QStringLiteral("%1 and %2 are not members of the same bus; move them together first (ost_trace move_sig).")
              .arg(quoted(entries.first()->displayName()), quoted(entry->displayName()));
      return false;
    }
    height = std::max(height, busHeight(entry));
  }
  if (!checkNesting(parent, height + 1, error)) return false;
  if (name.isEmpty()) {
    name = busNames_.next([this](const QString& candidate) { return isTaken(candidate); });
  } else {
    if (!checkName(name, QStringLiteral("The bus name"), error)) return false;
    if (isTaken(name)) {
      error = QStringLiteral("The name %1 is already used in this core.").arg(quoted(name));
      return false;
    }
  }
  requireRoom(entries.size());
  Bus* bus = newBus(name);
  bus->children.reserve(entries.size());
  const int slot = asNode(entries.first())->slot;
  for (TraceNode* entry : entries) {
    vacate(asNode(entry));
    append(bus, asNode(entry));
  }
  put(bus, parent, slot);
  compactIfDue(parent);
  return true;
}

void TraceTree::ungroup(TraceNode* node) {
  Bus* bus = asBus(node);
  Bus* parent = bus->parent;
  requireRoom(bus->children.size());
  if (bus->holes > 0) compactList(bus);
  std::vector<Node*> freed;
  freed.reserve(std::size_t(bus->children.size()));
  for (TraceNode* child : bus->children) freed.push_back(asNode(child));
  const Place place{parent, nextSibling(bus)};
  vacate(bus);
  insertNodes(freed, place);
  compactIfDue(parent);
  forget(bus);
  delete bus;
}

bool TraceTree::renameBus(TraceNode* node, const QString& newName, QString& error) {
  if (newName == node->name) return true;
  if (!checkName(newName, QStringLiteral("The bus name"), error)) return false;
  if (isTaken(newName)) {
    error = QStringLiteral("The name %1 is already used in this core.").arg(quoted(newName));
    return false;
  }
  Bus* bus = asBus(node);
  named_.remove(bus->text);
  busNames_.released(bus->text);
  bus->name = bus->text = newName;
  named_.insert(newName, bus);
  return true;
}

}  // namespace ost
