// Pairs the registers, latches and cut nets of both sides, and compares what they do.
#include <algorithm>
#include <numeric>

#include "platform/proof/comparison.h"

namespace ost {

/// States that share a name are one; so are those of one side that the other has joined. That is an assumption, which
/// holds when each of them is proved to begin alike and to take the same next value.
bool Comparison::pairStates() {
  const int split = int(original_.states().size()), count = split + int(written_.states().size());
  std::vector<int> parent(static_cast<size_t>(count));
  std::iota(parent.begin(), parent.end(), 0);
  const auto root = [&parent](int at) {
    while (parent[size_t(at)] != at) at = parent[size_t(at)] = parent[size_t(parent[size_t(at)])];
    return at;
  };
  std::vector<QByteArray> names(static_cast<size_t>(count));
  for (const ModuleNet& net : written_.nets()) {
    const ModuleNet* other = original_.net(net.name);
    for (int i = 0; i < net.bits.size(); ++i) {
      int state = written_.stateAt(net.bits[i]);
      if (state >= 0 && names[size_t(split + state)].isEmpty())
        names[size_t(split + state)] = bitName(net.name, i, net.bits.size());
      if (!other || i >= other->bits.size()) continue;
      const int partner = original_.stateAt(other->bits[i]);
      // A register on an inout was given a net of its own, which the inout follows.
      if (state < 0) state = written_.stateBehind(net.bits[i]);
      if (state >= 0 && partner >= 0) parent[size_t(root(split + state))] = root(partner);
    }
  }
  for (const ModuleNet& net : original_.nets())
    for (int i = 0; i < net.bits.size(); ++i) {
      const int state = original_.stateAt(net.bits[i]);
      if (state >= 0 && names[size_t(state)].isEmpty()) names[size_t(state)] = bitName(net.name, i, net.bits.size());
    }
  // Several registers that drive one net share its name.
  for (int i = 0; i < count; ++i) {
    ModuleLogic& side = i < split ? original_ : written_;
    const int from = i < split ? 0 : split;
    if (names[size_t(i)].isEmpty())
      names[size_t(i)] = names[size_t(from + side.stateAt(side.states()[size_t(i - from)].bit))];
  }
  QHash<int, int> classOf;
  for (int i = 0; i < count; ++i) {
    const int top = root(i);
    if (!classOf.contains(top)) {
      classOf.insert(top, int(classes_.size()));
      classes_.push_back({names[size_t(i)], {}});
    }
    Class& group = classes_[size_t(classOf.value(top))];
    if (group.name.isEmpty()) group.name = names[size_t(i)];
    group.states[i >= split].push_back(i >= split ? i - split : i);
  }
  for (size_t i = 0; i < classes_.size(); ++i) {
    Class& group = classes_[i];
    const int leaf = leaves_.number("state " + QByteArray::number(qulonglong(i)) + ' ' + group.name);
    for (const int state : group.states[0]) original_.states()[size_t(state)].leaf = graph_.leaf(leaf);
    for (const int state : group.states[1]) written_.states()[size_t(state)].leaf = graph_.leaf(leaf);
    const QByteArray net = group.name.left(group.name.endsWith(']') ? group.name.lastIndexOf('[') : -1);
    if (group.name.isEmpty() || (group.states[0].empty() && !original_.net(net))) nameless_.insert(leaf);
  }
  return true;
}

bool Comparison::compareStates() {
  for (const Class& group : classes_) {
    if (group.states[0].empty() || group.states[1].empty()) continue;
    const QString name = quotedName(group.name);
    const auto compareOne = [&](const StateBit& from, const StateBit& to) {
      const StateFunction one = original_.function(from), other = written_.function(to);
      if ((from.cell < 0) != (to.cell < 0) || (one.clock == kFalse) != (other.clock == kFalse))
        return differs(QStringLiteral("%1 is a register on one side only").arg(name));
      compare(QStringLiteral("the clock of the register %1").arg(name), one.clock, other.clock);
      compare(QStringLiteral("the next value of the register %1").arg(name), one.next, other.next);
      compare(QStringLiteral("the asynchronous set of the register %1").arg(name), one.set, other.set);
      compare(QStringLiteral("the asynchronous reset of the register %1").arg(name), one.clear, other.clear);
      compare(QStringLiteral("the asynchronous load of the register %1").arg(name), one.load, other.load);
      compare(QStringLiteral("what is loaded into the register %1").arg(name), one.loaded, other.loaded);
      if (from.initial != 'x' && from.initial != to.initial)
        return differs(QStringLiteral("the register %1 has another initial value").arg(name));
      return true;
    };
    StateBit first[] = {original_.states()[size_t(group.states[0][0])], written_.states()[size_t(group.states[1][0])]};
    for (const int state : group.states[0])
      if (!compareOne(StateBit(original_.states()[size_t(state)]), first[1])) return false;
    for (size_t i = 1; i < group.states[1].size(); ++i)
      if (!compareOne(first[0], StateBit(written_.states()[size_t(group.states[1][i])]))) return false;
  }
  return true;
}

/// A net that was cut is a leaf where it is read, and compared where it is driven.
bool Comparison::compareCuts() {
  const auto driven = [](ModuleLogic& side, int bit) {
    const int state = side.stateAt(bit);
    if (state < 0 || side.states()[size_t(state)].cell >= 0) return side.value(bit);
    return side.function(StateBit(side.states()[size_t(state)])).next;
  };
  for (const auto& [name, position] : cuts_) {
    const ModuleNet *from = original_.net(name), *to = written_.net(name);
    compare(QStringLiteral("the net %1 in a loop").arg(quotedName(bitName(name, position, from->bits.size()))),
            driven(original_, from->bits[position]), driven(written_, to->bits[position]));
  }
  return true;
}

}  // namespace ost
