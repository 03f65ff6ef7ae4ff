// Operations on entries that are in the trace tree already: moving, removing, grouping and renaming.
#include <algorithm>

#include "platform/istdata/trace_node.h"
#include "platform/istdata/trace_tree.h"

namespace ost {

using mero::ostrel::TRACE_NODE_BUS;
using mero::ostrel::TRACE_NODE_REF;
using mero::ostrel::TRACE_NODE_SIGNAL;

namespace {

TraceTree::Node* asNode(TraceNode* node) {
  return static_cast<TraceTree::Node*>(node);
}

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

}  // namespace

bool TraceTree::findAll(const QStringList& names, const std::function<QString(const QString&)>& canonical,
                        QVector<TraceNode*>& entries, QString& error) {
  entries.clear();
  entries.reserve(names.size());
  const quint32 mark = ++mark_;
  for (const QString& name : names) {
    Node* node = asNode(find(name));
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
  }
  return true;
}

bool TraceTree::move(const QVector<TraceNode*>& entries, Place place, QString& error) {
  const quint32 mark = ++mark_;
  int height = 0;
  for (TraceNode* entry : entries) {
    asNode(entry)->mark = mark;
    height = std::max(height, busHeight(entry));
  }
  for (Node* outer = place.bus; outer; outer = outer->parent) {
    if (outer->mark != mark) continue;
    error = QString("Bus %1 cannot be moved into itself.").arg(quoted(outer->name));
    return false;
  }
  if (height > 0 && !checkNesting(place.bus, height, error)) return false;
  // Moved entries are no anchor: what follows them is.
  while (place.before && place.before->mark == mark) place.before = nextSibling(place.before);
  std::vector<Node*> moved;
  moved.reserve(entries.size());
  for (TraceNode* entry : entries) {
    vacate(asNode(entry));
    moved.push_back(asNode(entry));
  }
  insertNodes(moved, place);
  return true;
}

void TraceTree::checkedOut(Node* node, std::vector<Node*>& signalNodes, std::vector<Node*>& references, quint32 mark) {
  node->mark = mark;
  if (node->kind != TRACE_NODE_BUS) {
    (node->kind == TRACE_NODE_REF ? references : signalNodes).push_back(node);
    return;
  }
  forget(node);
  for (TraceNode* child : node->children)
    if (child->kind != 0 && asNode(child)->mark != mark) checkedOut(asNode(child), signalNodes, references, mark);
}

/// The first reference of a signal that goes becomes the signal; the others follow it.
void TraceTree::promote(Node* signal) {
  Node* heir = signal->nextReference;
  for (Node* other = heir->nextReference; other; other = other->nextReference)
    if (isBefore(other, heir)) heir = other;
  unlinkReference(heir);
  heir->kind = TRACE_NODE_SIGNAL;
  heir->target = nullptr;
  heir->nextReference = signal->nextReference;
  if (heir->nextReference) heir->nextReference->previousReference = heir;
  for (Node* other = heir->nextReference; other; other = other->nextReference) other->target = heir;
  signal->nextReference = nullptr;
  signals_.insert(heir);
}

void TraceTree::remove(const QVector<TraceNode*>& entries) {
  // As few passes as possible: in a long list each of them fetches every node from memory again.
  const quint32 mark = ++mark_;
  std::vector<Node*> signalNodes, references, roots;
  signalNodes.reserve(std::size_t(entries.size()));
  for (TraceNode* entry : entries)
    if (asNode(entry)->mark != mark) checkedOut(asNode(entry), signalNodes, references, mark);
  // References that go too must not inherit.
  for (Node* reference : references) unlinkReference(reference);
  for (Node* signal : signalNodes) {
    if (signal->nextReference)
      promote(signal);
    else
      forget(signal);
  }
  roots.reserve(std::size_t(entries.size()));
  for (TraceNode* entry : entries) {
    Node* parent = asNode(entry)->parent;
    if (!parent || parent->mark != mark) roots.push_back(asNode(entry));
  }
  for (Node* root : roots) {
    vacate(root);
    deleteSubtree(root);
  }
}

bool TraceTree::group(QString& name, const QVector<TraceNode*>& entries, QString& error) {
  if (entries.isEmpty()) {
    error = "A bus needs at least one member: name the traced signals to group.";
    return false;
  }
  Node* parent = asNode(entries.first())->parent;
  int height = 0;
  for (TraceNode* entry : entries) {
    if (asNode(entry)->parent != parent) {
      error = QString("%1 and %2 are not members of the same bus; move them together first (ost_trace move_sig).")
                  .arg(quoted(entries.first()->name), quoted(entry->name));
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
  Node* bus = newBus(name);
  Node* first = asNode(entries.first());
  bus->parent = parent;
  bus->slot = first->slot;
  members(parent)[first->slot] = bus;
  for (TraceNode* entry : entries) {
    if (entry != first) vacate(asNode(entry));
    append(bus, asNode(entry));
  }
  return true;
}

void TraceTree::ungroup(TraceNode* node) {
  Node* bus = asNode(node);
  if (bus->holes > 0) compactList(bus);
  std::vector<Node*> freed;
  for (TraceNode* child : bus->children) freed.push_back(asNode(child));
  bus->children.clear();
  const Place place{bus->parent, nextSibling(bus)};
  vacate(bus);
  insertNodes(freed, place);
  forget(bus);
  delete bus;
}

bool TraceTree::renameBus(TraceNode* node, const QString& newName, QString& error) {
  if (newName == node->name) return true;
  if (!checkName(newName, "The bus name", error)) return false;
  if (isTaken(newName)) {
    error = QString("The name %1 is already used in this core.").arg(quoted(newName));
    return false;
  }
  forget(asNode(node));
  node->name = newName;
  buses_.insert(newName, asNode(node));
  return true;
}

}  // namespace ost
