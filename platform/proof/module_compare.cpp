// Compares ports, instances and nets of the two sides, and decides on all that must be equal.
#include "platform/proof/module_compare.h"

#include <algorithm>

#include "platform/proof/comparison.h"
#include "platform/text/byte_text.h"

namespace ost {
namespace {

constexpr int kMostShownInputs = 12;

}  // namespace

QString quotedName(const QByteArray& name) {
  return QLatin1Char('"') + textFromBytes(name) + QLatin1Char('"');
}

bool Comparison::comparePorts() {
  const auto find = [](const NetlistModule& module, const QByteArray& name) -> const NetlistPort* {
    for (const NetlistPort& port : module.portList)
      if (port.name == name) return &port;
    return nullptr;
  };
  for (const NetlistPort& port : written_.module().portList)
    if (!find(original_.module(), port.name) && !changes_.ports.contains(port.name))
      return differs(QStringLiteral("it has a port %1, which its original has not").arg(quotedName(port.name)));
  for (const NetlistPort& port : original_.module().portList) {
    const NetlistPort* other = find(written_.module(), port.name);
    if (!other || other->direction != port.direction || other->bits.size() != port.bits.size())
      return differs(
          QStringLiteral("its port %1 is missing, or has another direction or width").arg(quotedName(port.name)));
    if (port.direction == NetlistPort::Input) continue;
    for (int i = 0; i < port.bits.size(); ++i)
      compare(QStringLiteral("the output %1").arg(quotedName(bitName(port.name, i, port.bits.size()))),
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
                  .arg(quotedName(bitName(pin, i, std::max(from.size(), to.size()))), quotedName(instance.name)),
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
      return differs(
          QStringLiteral("it has an instance %1, which its original has not").arg(quotedName(instance.name)));
  for (size_t i = 0; i < from.instances.size(); ++i) {
    const NetlistInstance& instance = from.instances[i];
    const auto found = to.instanceByName.constFind(instance.name);
    if (found == to.instanceByName.constEnd()) {
      if (instance.name.startsWith('$')) return undecided(QStringLiteral("it has an instance without a name"));
      return differs(QStringLiteral("it has lost its instance %1").arg(quotedName(instance.name)));
    }
    const CellConnections &one = original_.instance(int(i)), &other = written_.instance(*found);
    const QByteArray& type = to.instances[size_t(*found)].type;
    if (changes_.originalType(type) != instance.type || one.parameters != other.parameters)
      return differs(
          QStringLiteral("its instance %1 has another type or other parameters").arg(quotedName(instance.name)));
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
        compare(QStringLiteral("the net %1").arg(quotedName(bitName(net.name, i, net.bits.size()))), one, two);
    }
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
  pairStates();
  findTables();
  original_.connect();
  written_.connect();
  cuts_ = original_.openLoops(written_);
  for (const NamedBit& net : cuts_) written_.cut(net);
  for (const NamedBit& net : written_.openLoops(original_)) {
    original_.cut(net);
    cuts_.push_back(net);
  }
  verdict_.outcome = ProofOutcome::Proved;
  const bool compared =
      comparePorts() && compareInstances() && compareNets() && compareStates() && compareCuts() && compareMemories();
  if (compared) decide();
  for (const ModuleLogic* side : {&original_, &written_})
    if (!side->problem().isEmpty()) undecided(side->problem());
  return verdict_;
}

ModuleVerdict compareModule(const NetlistBits& original, int originalModule, const NetlistBits& written,
                            int writtenModule, const ExpectedChanges& changes, const SolverLimits& limits) {
  try {
    return Comparison(original, originalModule, written, writtenModule, changes, limits).run();
  } catch (const Comparison::Interrupted& interrupted) {
    return {ProofOutcome::Undecided, interrupted.reason};
  }
}

}  // namespace ost
