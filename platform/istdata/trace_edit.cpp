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
  const bool found = named_.lookUp(names, [&](const QString& name, Node* node) {
    if (!node) node = numberedMember(name);
    if (!node) node = asNode(find(canonical(name)));
    if (!node) {
      error = QString("%1 is not traced in this core%2.").arg(quoted(name), nearestHint(name));
      return false;
    }
    if (node->mark == mark) {
      error = QString("%1 is in the list twice.").arg(quoted(name));
      return false;
    }
    node->mark = mark;
    entries.append(node);
    return true;
  });
  if (found && !entries.isEmpty()) fetchBehind(asNode(entries.last()));
  return found;
}

/// Who names one entry a call mostly goes through the list: has the processor fetch what finding the next ones takes.
void TraceTree::fetchBehind(const Node* node) {
  const QList<TraceNode*>& list = members(node->parent);
  const auto signalAt = [&list](int slot) {
    return slot < list.size() && list[slot]->kind == TRACE_NODE_SIGNAL ? asNode(list[slot]) : nullptr;
  };
  if (node->slot + 4 < list.size()) __builtin_prefetch(list[node->slot + 4]);
  if (const Node* third = signalAt(node->slot + 3)) __builtin_prefetch(third->text);
  if (const Node* second = signalAt(node->slot + 2)) named_.fetch(second->text->hash);
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
    error = QString("Bus %1 cannot be moved into itself.").arg(quoted(outer->name));
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
  named_.replace(signal, heir);
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
    nodes_.destroy(reference);
  }
  named_.fetchAhead(condemned.signalNodes, [&](Node* signal) {
    if (!promoteReference(signal)) forget(signal);
    leaveParent(signal);
    nodes_.destroy(signal);
  });
  for (Bus* bus : condemned.buses) {
    forget(bus);
    leaveParent(bus);
  }
  for (Bus* bus : condemned.buses) delete bus;
  for (Bus* parent : parents.all()) compactIfDue(parent);
  tidyNames();
}

bool TraceTree::group(QString& name, const QVector<TraceNode*>& entries, QString& error) {
  if (entries.isEmpty()) {
    error = "A bus needs at least one member: name the traced signals to group.";
    return false;
  }
  Bus* parent = asNode(entries.first())->parent;
  int height = 0;
  for (TraceNode* entry : entries) {
    if (asNode(entry)->parent != parent) {
      error = QString("%1 and %2 are not members of the same bus; move them together first (ost_trace move_sig).")
                  .arg(quoted(entries.first()->displayName()), quoted(entry->displayName()));
      return false;
    }
    height = std::max(height, busHeight(entry));
  }
  if (!checkNesting(parent, height + 1, error)) return false;
  if (name.isEmpty()) {
    name = busNames_.next([this](const QString& candidate) { return isTaken(candidate); });
  } else {
    if (!checkName(name, "The bus name", error)) return false;
    if (isTaken(name)) {
      error = QString("The name %1 is already used in this core.").arg(quoted(name));
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
  tidyNames();
}

bool TraceTree::renameBus(TraceNode* node, const QString& newName, QString& error) {
  if (newName == node->name) return true;
  if (!checkName(newName, "The bus name", error)) return false;
  if (isTaken(newName)) {
    error = QString("The name %1 is already used in this core.").arg(quoted(newName));
    return false;
  }
  Bus* bus = asBus(node);
  named_.remove(bus);
  busNames_.released(bus->text->text());
  texts_.giveBack(bus->text);
  bus->name = newName;
  bus->text = texts_.add(newName);
  named_.insert(bus);
  tidyNames();
  return true;
}

}  // namespace ost
