// The trace tree's structure: lists with holes, names and places, and the references to each captured bit.
#include "platform/istdata/trace_tree.h"

#include <algorithm>

#include "platform/istdata/trace_node.h"
#include "platform/system/memory.h"
#include "platform/text/near_names.h"

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

}  // namespace

TraceTree::TraceTree() = default;

TraceTree::~TraceTree() {
  for (TraceNode* node : nodes)
    if (node != hole()) destroySubtree(node);
}

QList<TraceNode*>& TraceTree::members(Bus* bus) {
  return bus ? bus->children : nodes;
}

int& TraceTree::holes(Bus* bus) {
  return bus ? bus->holes : holes_;
}

TraceNode* TraceTree::findBus(const QString& name) const {
  Node* node = named_.value(name);
  return node && node->kind == TRACE_NODE_BUS ? node : nullptr;
}

bool TraceTree::isTaken(const QString& name) const {
  return named_.contains(name);
}

TraceNode* TraceTree::find(const QString& name) {
  Node* node = named_.value(name);
  return node ? node : numberedMember(name);
}

TraceTree::Node* TraceTree::numberedMember(const QString& name) {
  if (!name.endsWith(QLatin1Char('>'))) return nullptr;
  const int open = name.lastIndexOf(QLatin1Char('<'));
  TraceNode* bus = open > 0 ? findBus(name.left(open)) : nullptr;
  if (open < 0 || (open > 0 && !bus)) return nullptr;
  QString error;
  return nthMember(asBus(bus), name.mid(open + 1, name.size() - open - 2), error);
}

QString TraceTree::nearestHint(const QString& name) const {
  NearestNames near(name);
  for (auto entry = named_.begin(); entry != named_.end(); ++entry) near.offer(entry.key());
  return near.hint();
}

TraceTree::Node* TraceTree::nthMember(Bus* bus, const QString& number, QString& error) {
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
  const QString where = bus ? QLatin1String("Bus ") + quoted(bus->name) : QStringLiteral("The top level");
  error = count == 0 ? QStringLiteral("%1 has no members; use <.end.> as the position.").arg(where)
                     : QStringLiteral("%1 has %2 members; the position %3 must be 1 to %2 or .end.")
                           .arg(where, QString::number(count), quoted(number));
  return nullptr;
}

bool TraceTree::findPlace(const QString& busName, const QString& position, Place& place, QString& error) {
  place = Place();
  if (!busName.isEmpty()) {
    place.bus = asBus(findBus(busName));
    if (!place.bus) {
      error = QStringLiteral("There is no bus %1 in this core%2.").arg(quoted(busName), nearestHint(busName));
      return false;
    }
  }
  if (position.isEmpty() || position.compare(QLatin1String(".end."), Qt::CaseInsensitive) == 0) return true;
  Node* named = named_.value(position);
  if (named && (busName.isEmpty() || named->parent == place.bus)) {
    place.bus = named->parent;
    place.before = named;
    return true;
  }
  const bool allDigits = std::all_of(position.begin(), position.end(),
                                     [](QChar c) { return c >= QLatin1Char('0') && c <= QLatin1Char('9'); });
  if (allDigits) {
    place.before = nthMember(place.bus, position, error);
    place.numbered = true;
    return place.before != nullptr;
  }
  if (named)
    error = QStringLiteral("%1 is not a member of bus %2.").arg(quoted(position), quoted(busName));
  else
    error = QStringLiteral("There is no traced signal or bus %1 to take as the position%2.")
                .arg(quoted(position), nearestHint(position));
  return false;
}

bool TraceTree::checkNesting(const Bus* bus, int height, QString& error) const {
  int depth = 0;
  for (const Bus* outer = bus; outer; outer = outer->parent) ++depth;
  if (depth + height <= kMaxBusNesting) return true;
  error = QStringLiteral("Buses can be nested %1 deep at most; ungroup one of them first.").arg(kMaxBusNesting);
  return false;
}

TraceTree::Node* TraceTree::newSignal(const QString& name) {
  Node* node = new Node;
  node->kind = TRACE_NODE_SIGNAL;
  node->text = name;
  named_.insert(name, node);
  return node;
}

TraceTree::Bus* TraceTree::newBus(const QString& name) {
  Bus* bus = new Bus;
  bus->kind = TRACE_NODE_BUS;
  bus->name = name;
  bus->text = name;
  named_.insert(name, bus);
  ++busCount_;
  return bus;
}

TraceTree::Node* TraceTree::newReference(Node* target) {
  Node* node = new Node;
  node->kind = TRACE_NODE_REF;
  bind(node, target);
  return node;
}

void TraceTree::bind(Node* reference, Node* target) {
  std::vector<Node*>& list = references_[target];
  reference->target = target;
  reference->place = list.size();
  list.push_back(reference);
}

void TraceTree::unbind(Node* reference) {
  const auto list = references_.find(asNode(reference->target));
  Node* last = list->back();
  (*list)[reference->place] = last;
  last->place = reference->place;
  list->pop_back();
  if (list->empty()) references_.erase(list);
  reference->target = nullptr;
}

/// Takes a node's name out of the table, or a reference from its target.
void TraceTree::forget(Node* node) {
  if (node->kind == TRACE_NODE_REF) {
    if (node->target) unbind(node);
    return;
  }
  named_.remove(node->text);
  busNames_.released(node->text);
  busCount_ -= node->kind == TRACE_NODE_BUS;
}

void TraceTree::destroySubtree(TraceNode* node) {
  for (TraceNode* child : node->children)
    if (child != hole()) destroySubtree(child);
  delete node;
}

/// To be called before a change that makes or moves so many entries: with memory for lists, names and look-ups at hand
/// it does not end half-way. For a few entries asking would cost more than they do.
void TraceTree::requireRoom(int entries) const {
  const std::size_t bytesOfEntry = 384, bytesOfPlace = 4 * sizeof(TraceNode*);
  const std::size_t places = std::size_t(nodes.size() + named_.size());
  if (entries >= 64) requireMemory(std::size_t(entries) * bytesOfEntry + places * bytesOfPlace);
}

/// Finds or makes `count` holes at the place and returns the first one's slot. Where it must shift the list, it leaves
/// spare holes, so that the next insertions at the same place need no shift.
int TraceTree::openGap(const Place& place, int count) {
  const int kMaxSpare = 4096;
  QList<TraceNode*>& list = members(place.bus);
  const int end = list.size();
  if (!place.before) {
    list.reserve(end + count);
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
    list.reserve(end + shift);
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

/// Fills a hole.
void TraceTree::put(Node* node, Bus* bus, int slot) {
  node->parent = bus;
  node->slot = slot;
  members(bus)[slot] = node;
  --holes(bus);
}

/// Puts nodes into a list that stand in none.
void TraceTree::insertNodes(const std::vector<Node*>& added, const Place& place) {
  int slot = openGap(place, int(added.size()));
  for (Node* node : added) put(node, place.bus, slot++);
}

void TraceTree::append(Bus* bus, Node* node) {
  QList<TraceNode*>& list = members(bus);
  node->parent = bus;
  node->slot = list.size();
  list.append(node);
}

/// The entry after `node` in its list, or null.
TraceTree::Node* TraceTree::nextSibling(Node* node) {
  const QList<TraceNode*>& list = members(node->parent);
  int next = node->slot + 1;
  while (next < list.size() && list[next] == hole()) ++next;
  return next < list.size() ? asNode(list[next]) : nullptr;
}

/// Leaves a hole where the node is; compactIfDue() ends a series of these.
void TraceTree::vacate(Node* node) {
  if (gap_.before == node) gap_ = Gap();
  members(node->parent)[node->slot] = hole();
  ++holes(node->parent);
}

/// Compacts a list that is more holes than entries.
void TraceTree::compactIfDue(Bus* bus) {
  const int count = holes(bus), size = members(bus).size();
  if (count > 0 && (count == size || (count > 32 && count > size / 2))) compactList(bus);
}

void TraceTree::compactList(Bus* bus) {
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

void TraceTree::compactBelow(Bus* bus) {
  if (holes(bus) > 0) compactList(bus);
  for (TraceNode* child : members(bus))
    if (child->kind == TRACE_NODE_BUS) compactBelow(asBus(child));
}

void TraceTree::compact() {
  compactBelow(nullptr);
}

}  // namespace ost
