// Pairs the two sides' registers, memories and instances by name and compares what they are given.
#include "platform/proof/module_compare.h"

#include <algorithm>
#include <numeric>

#include "platform/text/byte_text.h"

namespace ost {
namespace {

constexpr int kMostRounds = 50;  ///< In which both sides' loops are cut alike.
constexpr int kMostShownInputs = 12;

QString quoted(const QByteArray& name) {
  return QLatin1Char('"') + textFromBytes(name) + QLatin1Char('"');
}

class Comparison {
 public:
  Comparison(const NetlistBits& original, int originalModule, const NetlistBits& written, int writtenModule,
             const ExpectedChanges& changes, const SolverLimits& limits, const QList<QPair<QByteArray, int>>& cuts)
      : words_(graph_, rails_),
        original_(graph_, words_, leaves_, original, originalModule),
        written_(graph_, words_, leaves_, written, writtenModule),
        originals_(original),
        changes_(changes),
        limits_(limits),
        cuts_(cuts) {}

  ModuleVerdict run();
  QList<QPair<QByteArray, int>> newCuts() const { return original_.newCuts() + written_.newCuts(); }

 private:
  bool differs(const QString& text) {
    verdict_ = {ProofOutcome::Different, text};
    return false;
  }
  bool undecided(const QString& text) {
    verdict_ = {ProofOutcome::Undecided, text};
    return false;
  }
  bool pairStates();
  bool comparePorts();
  bool compareInstances();
  bool comparePins(const NetlistInstance& instance, const QByteArray& writtenType, const CellConnections& original,
                   const CellConnections& written);
  bool compareNets();
  bool compareStates();
  bool compareCuts();
  void findTables();
  bool compareMemories();
  bool compareMemory(const ModuleMemory& original, const ModuleMemory& written);
  bool compareWrites(const ModuleMemory& original, const ModuleMemory& written, int bit);
  bool decide();
  void compare(const QString& place, Edge original, Edge written, Edge care = kTrue) {
    if (original != written && care != kFalse) points_.push_back({place, original, written, care});
  }
  bool isServed() { return !limits_.idle || limits_.idle() || undecided(QStringLiteral("cancelled")); }
  QString shown(const Counterexample& example) const;

  LogicGraph graph_;
  RailSplitter rails_{graph_};
  WordLogic words_;
  LeafTable leaves_;
  ModuleLogic original_, written_;
  const NetlistBits& originals_;
  const ExpectedChanges& changes_;
  const SolverLimits& limits_;
  const QList<QPair<QByteArray, int>>& cuts_;
  std::vector<ComparePoint> points_;
  /// States that are taken for the same, of both sides: [class][side].
  struct Class {
    QByteArray name;
    std::vector<int> states[2];
  };
  std::vector<Class> classes_;
  QSet<int> nameless_;  ///< Leaves of states that have no partner because they have no name of the source's.
  ModuleVerdict verdict_;
};

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

bool Comparison::comparePorts() {
  const auto find = [](const NetlistModule& module, const QByteArray& name) -> const NetlistPort* {
    for (const NetlistPort& port : module.portList)
      if (port.name == name) return &port;
    return nullptr;
  };
  for (const NetlistPort& port : written_.module().portList)
    if (!find(original_.module(), port.name) && !changes_.ports.contains(port.name))
      return differs(QStringLiteral("it has a port %1, which its original has not").arg(quoted(port.name)));
  for (const NetlistPort& port : original_.module().portList) {
    const NetlistPort* other = find(written_.module(), port.name);
    if (!other || other->direction != port.direction || other->bits.size() != port.bits.size())
      return differs(
          QStringLiteral("its port %1 is missing, or has another direction or width").arg(quoted(port.name)));
    if (port.direction == NetlistPort::Input) continue;
    for (int i = 0; i < port.bits.size(); ++i)
      compare(QStringLiteral("the output %1").arg(quoted(bitName(port.name, i, port.bits.size()))),
              original_.value(port.bits[i]), written_.value(other->bits[i]));
  }
  return true;
}

bool Comparison::comparePins(const NetlistInstance& instance, const QByteArray& writtenType,
                             const CellConnections& original, const CellConnections& written) {
  QHash<QByteArray, NetlistPort::Direction> directions;
  if (instance.module >= 0)
    for (const NetlistPort& port : originals_.text.module(instance.module).portList)
      directions.insert(port.name, port.direction);
  QSet<QByteArray> pins;
  for (auto pin = original.ports.begin(); pin != original.ports.end(); ++pin) pins.insert(pin.key());
  for (auto pin = written.ports.begin(); pin != written.ports.end(); ++pin) pins.insert(pin.key());
  for (const QByteArray& pin : pins) {
    const auto direction = directions.constFind(pin);
    if (direction != directions.constEnd() && *direction == NetlistPort::Output) continue;
    const QVector<int> from = original.ports.value(pin), to = written.ports.value(pin);
    if (from.isEmpty() && changes_.pinIsAdded(writtenType, pin)) continue;
    for (int i = 0; i < std::max(from.size(), to.size()); ++i) {
      const Edge one = original_.value(from.value(i, kBitZ)), other = written_.value(to.value(i, kBitZ));
      // A pin that nothing else is connected to, on either side.
      const QByteArray own = "pin " + instance.name + '.' + bitName(pin, i, std::max(from.size(), to.size()));
      const Edge alone = leaves_.numbers.contains(own) ? graph_.leaf(leaves_.number(own)) : kFloating;
      if ((one == alone || one == kFloating) && (other == alone || other == kFloating)) continue;
      compare(QStringLiteral("the pin %1 of the instance %2")
                  .arg(quoted(bitName(pin, i, std::max(from.size(), to.size()))), quoted(instance.name)),
              one, other);
    }
  }
  return true;
}

bool Comparison::compareInstances() {
  const NetlistModule &from = original_.module(), &to = written_.module();
  for (const NetlistInstance& instance : to.instances)
    if (!from.instanceByName.contains(instance.name) &&
        (changes_.debugType.isEmpty() || instance.type != changes_.debugType))
      return differs(QStringLiteral("it has an instance %1, which its original has not").arg(quoted(instance.name)));
  for (size_t i = 0; i < from.instances.size(); ++i) {
    const NetlistInstance& instance = from.instances[i];
    const auto found = to.instanceByName.constFind(instance.name);
    if (found == to.instanceByName.constEnd()) {
      if (instance.name.startsWith('$')) return undecided(QStringLiteral("it has an instance without a name"));
      return differs(QStringLiteral("it has lost its instance %1").arg(quoted(instance.name)));
    }
    const CellConnections &one = original_.instance(int(i)), &other = written_.instance(*found);
    const QByteArray& type = to.instances[size_t(*found)].type;
    if (changes_.originalType(type) != instance.type || one.parameters != other.parameters)
      return differs(QStringLiteral("its instance %1 has another type or other parameters").arg(quoted(instance.name)));
    if (!comparePins(instance, type, one, other)) return false;
  }
  return true;
}

/// Nets that the user wants kept, those that are probed, and what else is still driven under its name.
bool Comparison::compareNets() {
  const QSet<int> probed(changes_.probed.begin(), changes_.probed.end());
  for (const ModuleNet& net : original_.nets()) {
    const ModuleNet* other = written_.net(net.name);
    if (!other || other->bits.size() != net.bits.size()) continue;
    for (int i = 0; i < net.bits.size(); ++i) {
      const Edge one = original_.value(net.bits[i]), two = written_.value(other->bits[i]);
      if (one != two && (two != kFloating || net.kept || probed.contains(net.bits[i])))
        compare(QStringLiteral("the net %1").arg(quoted(bitName(net.name, i, net.bits.size()))), one, two);
    }
    if (!isServed()) return false;
  }
  return true;
}

bool Comparison::compareStates() {
  int count = 0;
  for (const Class& group : classes_) {
    if (group.states[0].empty() || group.states[1].empty()) continue;
    if (++count % 1000 == 0 && !isServed()) return false;
    const QString name = quoted(group.name);
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
    compare(QStringLiteral("the net %1 in a loop").arg(quoted(bitName(name, position, from->bits.size()))),
            driven(original_, from->bits[position]), driven(written_, to->bits[position]));
  }
  return true;
}

/// The writes to one bit of all words. Their order matters where one wins over the other.
bool Comparison::compareWrites(const ModuleMemory& original, const ModuleMemory& written, int bit) {
  const QString name = QStringLiteral("the memory %1 (bit %2)").arg(quoted(original.name)).arg(bit);
  std::vector<MemoryWrite> from = original_.writes(original, bit), to = written_.writes(written, bit);
  // A place that one side does not have writes nothing there.
  const auto fill = [](std::vector<MemoryWrite>& writes, const std::vector<MemoryWrite>& other) {
    while (writes.size() < other.size()) {
      writes.push_back(other[writes.size()]);
      writes.back().enable = kFalse;
    }
  };
  fill(from, to);
  fill(to, from);
  std::vector<size_t> partner(from.size());
  std::iota(partner.begin(), partner.end(), size_t(0));
  const auto same = [](const MemoryWrite& a, const MemoryWrite& b) {
    return a.clock == b.clock && a.enable == b.enable && a.data == b.data && a.address == b.address;
  };
  // Places that are the same in another order; what is left over is compared in the order it has.
  std::vector<bool> taken(to.size());
  std::vector<size_t> open;
  for (size_t i = 0; i < from.size(); ++i) {
    size_t k = same(from[i], to[i]) && !taken[i] ? i : 0;
    while (k < to.size() && (taken[k] || !same(from[i], to[k]))) ++k;
    if (k == to.size()) {
      open.push_back(i);
      continue;
    }
    taken[k] = true;
    partner[i] = k;
  }
  size_t next = 0;
  for (const size_t i : open) {
    while (taken[next]) ++next;
    taken[next] = true;
    partner[i] = next;
  }
  for (size_t i = 0; i < from.size(); ++i) {
    const MemoryWrite &one = from[i], &other = to[partner[i]];
    for (size_t k = i + 1; k < from.size(); ++k) {
      if (one.enable == kFalse || other.enable == kFalse || from[k].enable == kFalse || to[partner[k]].enable == kFalse)
        continue;
      if (!original_.hasPriority(original, from[k].port, one.port)) continue;
      const int late = to[partner[k]].port, early = other.port;
      if (late < early || !written_.hasPriority(written, late, early))
        return undecided(QStringLiteral("%1 is written in another order").arg(name));
    }
    compare(QStringLiteral("the clock of a write to %1").arg(name), one.clock, other.clock);
    compare(QStringLiteral("the enable of a write to %1").arg(name), one.enable, other.enable);
    compare(QStringLiteral("the data of a write to %1").arg(name), one.data, other.data, one.enable);
    for (size_t k = 0; k < std::max(one.address.size(), other.address.size()); ++k)
      compare(QStringLiteral("the address of a write to %1").arg(name),
              k < one.address.size() ? one.address[k] : kFalse, k < other.address.size() ? other.address[k] : kFalse,
              one.enable);
  }
  return true;
}

bool Comparison::compareMemory(const ModuleMemory& original, const ModuleMemory& written) {
  const QString name = quoted(original.name);
  if (original.words != written.words || original.width != written.width || original.offset != written.offset)
    return differs(QStringLiteral("the memory %1 has another size").arg(name));
  for (size_t word = 0; word < original.contents.size(); ++word)
    for (int i = 0; i < original.contents[word].size(); ++i) {
      const char wanted = original.contents[word][i];
      const char found =
          word < written.contents.size() ? written.contents[word].isEmpty() ? 'x' : written.contents[word][i] : 'x';
      if (wanted != 'x' && wanted != found)
        return differs(QStringLiteral("the memory %1 begins with other contents").arg(name));
    }
  for (int bit = 0; bit < original.width; ++bit)
    if (!isServed() || !compareWrites(original, written, bit)) return false;
  return true;
}

/// What is never written is a function of its address; a write that is never enabled may have been dropped.
void Comparison::findTables() {
  for (auto& [name, memory] : original_.memories()) {
    const auto found = written_.memories().find(name);
    memory.isTable = memory.writes.empty() && (found == written_.memories().end() || found->second.writes.empty());
  }
  for (auto& [name, memory] : written_.memories()) {
    const auto found = original_.memories().find(name);
    memory.isTable = found == original_.memories().end() ? memory.writes.empty() : found->second.isTable;
  }
}

/// Tables were compared with what they are read for.
bool Comparison::compareMemories() {
  for (const auto& [name, memory] : original_.memories()) {
    const auto found = written_.memories().find(name);
    const bool read = found != written_.memories().end() && !found->second.writes.empty();
    if (read && memory.writes.empty())
      return differs(QStringLiteral("the memory %1 is written, which in the original it is not").arg(quoted(name)));
    if (!memory.writes.empty() && found != written_.memories().end() && !compareMemory(memory, found->second))
      return false;
  }
  return true;
}

QString Comparison::shown(const Counterexample& example) const {
  QStringList inputs;
  for (const auto& [leaf, value] : example.leaves) {
    const QByteArray name = leaves_.names.value(leaf);
    const int from = name.startsWith("state ") ? name.indexOf(' ', 6) : name.indexOf(' ');
    if (inputs.size() == kMostShownInputs) {
      inputs.append(QStringLiteral("..."));
      break;
    }
    inputs.append(textFromBytes(name.mid(from + 1)) + (value ? QLatin1String(" = 1") : QLatin1String(" = 0")));
  }
  return QStringLiteral("%1the original gives %2 and the written design %3")
      .arg(inputs.isEmpty() ? QString() : QStringLiteral("with %1 ").arg(inputs.join(QStringLiteral(", "))),
           QString(QLatin1Char(example.original)), QString(QLatin1Char(example.written)));
}

bool Comparison::decide() {
  Refinement refinement(graph_, rails_, [this](int symbol) { return !words_.nameOf(symbol).startsWith("memory "); });
  int point = 0;
  Counterexample example;
  QString reason;
  const ProofOutcome outcome = refinement.check(points_, limits_, point, example, reason);
  if (outcome == ProofOutcome::Proved) return true;
  const QString place = points_[size_t(point)].place;
  if (outcome == ProofOutcome::Undecided) return undecided(QStringLiteral("%1: %2").arg(place, reason));
  for (const auto& [leaf, value] : example.leaves)
    if (nameless_.contains(leaf))
      return undecided(QStringLiteral("%1 depends on a register without a name of the source's").arg(place));
  return differs(QStringLiteral("%1 differs: %2").arg(place, shown(example)));
}

ModuleVerdict Comparison::run() {
  const auto mayCut = [](const ModuleLogic& other) {
    return [&other](const QByteArray& name, int position) {
      const ModuleNet* net = other.net(name);
      return net && position < net->bits.size();
    };
  };
  original_.mayCut = mayCut(written_);
  written_.mayCut = mayCut(original_);
  pairStates();
  findTables();
  original_.connect();
  written_.connect();
  for (const auto& [net, position] : cuts_) {
    original_.cut(net, position);
    written_.cut(net, position);
  }
  verdict_.outcome = ProofOutcome::Proved;
  const bool compared =
      comparePorts() && compareInstances() && compareNets() && compareStates() && compareCuts() && compareMemories();
  if (compared && newCuts().isEmpty()) decide();
  for (const ModuleLogic* side : {&original_, &written_})
    if (!side->problem().isEmpty()) undecided(side->problem());
  return verdict_;
}

}  // namespace

ModuleVerdict compareModule(const NetlistBits& original, int originalModule, const NetlistBits& written,
                            int writtenModule, const ExpectedChanges& changes, const SolverLimits& limits) {
  QList<QPair<QByteArray, int>> cuts;
  for (int round = 0; round < kMostRounds; ++round) {
    Comparison comparison(original, originalModule, written, writtenModule, changes, limits, cuts);
    const ModuleVerdict verdict = comparison.run();
    if (comparison.newCuts().isEmpty()) return verdict;
    cuts += comparison.newCuts();
  }
  return {ProofOutcome::Undecided, QStringLiteral("it has more loops of logic than the proof opens")};
}

}  // namespace ost
