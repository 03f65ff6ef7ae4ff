// Resolves the enabled cores of a project, name by name, to bits of the design.
#include "platform/plan/planner.h"

#include <QFileInfo>
#include <QHash>

#include "platform/istdata/trace_tree.h"
#include "platform/plan/capture_map.h"
#include "platform/text/byte_text.h"
#include "platform/trigger/trigger_expression.h"
#include "platform/trigger/unit_value.h"

namespace ost {

uint qHash(const NetBit& bit, uint seed) {
  return ::qHash(bit.net, seed) ^ ::qHash(bit.instancePath, seed) ^ ::qHash(bit.bit, seed);
}

namespace {

/// A list in which every bit stands once.
class BitList {
 public:
  explicit BitList(QVector<NetBit>& bits) : bits_(bits) {}

  int add(const NetBit& bit) {
    const auto known = positions_.constFind(bit);
    if (known != positions_.constEnd()) return *known;
    positions_.insert(bit, bits_.size());
    bits_.append(bit);
    return bits_.size() - 1;
  }

 private:
  QVector<NetBit>& bits_;
  QHash<NetBit, int> positions_;
};

/// Plans one core; `error` gets the first fault, in the words of the object that it belongs to.
class CorePlanner {
 public:
  CorePlanner(const Core& core, const Design& design, PlanCore& plan, QString& error)
      : core_(core), design_(design), plan_(plan), error_(error) {}

  bool run() {
    plan_.name = core_.name;
    return planOptions() && planTrace() && planUnits() && planExpressions();
  }

 private:
  bool fail(const QString& object, const QString& reason) {
    error_ = QStringLiteral("Core %1%2: %3").arg(core_.name, object, reason);
    return false;
  }

  bool resolve(const QString& object, const QString& name, NetSelection& selection) {
    QString reason;
    return design_.resolve(name, selection, reason) || fail(object, reason);
  }

  static NetBit bitOf(const NetSelection& selection, int index) {
    return {selection.instancePath, selection.net, selection.bits[index], selection.bitNames[index]};
  }

  bool resolveBit(const QString& object, const QString& name, NetBit& bit) {
    if (name.isEmpty()) return fail(object, QStringLiteral("no net is set."));
    NetSelection selection;
    if (!resolve(object, name, selection)) return false;
    if (selection.bits.size() != 1)
      return fail(object, QStringLiteral("\"%1\" has %2 bits; name one of them.").arg(name).arg(selection.bits.size()));
    bit = bitOf(selection, 0);
    return true;
  }

  bool planOptions();
  bool planTrace();
  bool addLeaves(const TraceNode* node, PlanProbe& probe);
  void nameValues(PlanProbe& probe) const;
  bool planUnits();
  bool planUnit(const TriggerUnit& unit, BitList& inputs);
  bool planExpressions();
  bool planExpression(const TriggerExpression& expression);

  const Core& core_;
  const Design& design_;
  PlanCore& plan_;
  QString& error_;
  QHash<const TraceNode*, int> captured_;  ///< Signal nodes and their position in probeBits.
  QHash<QString, int> unitByName_;
};

bool CorePlanner::planOptions() {
  const CoreOptions& options = core_.options;
  if (!resolveBit(QStringLiteral(", sample clock"), options.sampleClock, plan_.sampleClock)) return false;
  plan_.hasSampleEnable = options.sampleEnable;
  plan_.sampleEnableActiveLow = options.sampleEnable && options.sampleEnablePolarity == Polarity::ActiveLow;
  if (options.sampleEnable &&
      !resolveBit(QStringLiteral(", sample enable"), options.sampleEnableSignal, plan_.sampleEnable))
    return false;
  plan_.hasTriggerEnable = options.triggerEnable;
  plan_.triggerEnableActiveLow = options.triggerEnable && options.triggerEnablePolarity == Polarity::ActiveLow;
  if (options.triggerEnable &&
      !resolveBit(QStringLiteral(", trigger enable"), options.triggerEnableSignal, plan_.triggerEnable))
    return false;
  plan_.displayRadix = options.defaultRadix;
  plan_.depth = options.bufferDepth;
  plan_.distributedRam = options.implementation == Implementation::DistributedRam;
  plan_.distRamDisabled = options.distRamDisabled;
  plan_.timestampBits = options.timestamp ? options.timestampBits : 0;
  plan_.includeTrigger = options.includeTrigger;
  const bool multiple = options.captureMode == CaptureMode::Multiple;
  plan_.windows = multiple ? options.triggerCount : 1;
  plan_.windowSamples = multiple ? core_.samplesPerTrigger : options.bufferDepth;
  plan_.eventCounter = options.eventCounter;
  plan_.eventCount = options.eventCounter ? options.eventCounterValue : 1;
  if (options.triggerOut) {
    plan_.triggerOutIo = options.triggerOutType != TriggerOutType::Net;
    plan_.triggerOutNet = options.triggerOutType != TriggerOutType::Io;
    plan_.triggerOutName = options.triggerOutName;
    plan_.triggerOutActiveLow = options.triggerOutPolarity == Polarity::ActiveLow;
    plan_.triggerOutMinPulse = options.triggerOutMinPulse;
    if (plan_.triggerOutName.isEmpty())
      return fail(QStringLiteral(", trigger out"), QStringLiteral("it has no net name."));
  }
  return true;
}

/// Collects the bits below a top-level entry, in order. Signals come to their position where they stand; a reference
/// shares its target's, which may stand later in the tree.
bool CorePlanner::addLeaves(const TraceNode* node, PlanProbe& probe) {
  if (node->kind == mero::ostrel::TRACE_NODE_BUS) {
    for (const TraceNode* child : node->children)
      if (!addLeaves(child, probe)) return false;
    return true;
  }
  const TraceNode* signal = node->kind == mero::ostrel::TRACE_NODE_REF ? node->target : node;
  if (!signal || signal->kind != mero::ostrel::TRACE_NODE_SIGNAL) return true;
  auto known = captured_.constFind(signal);
  if (known == captured_.constEnd()) {
    NetBit bit;
    if (!resolveBit(QStringLiteral(", trace"), signal->displayName(), bit)) return false;
    known = captured_.insert(signal, plan_.probeBits.size());
    plan_.probeBits.append(bit);
  }
  probe.positions.append(*known);
  return true;
}

/// A probe that is a whole net, its bits in their order, has the names of the net's values.
void CorePlanner::nameValues(PlanProbe& probe) const {
  const NetBit& first = plan_.probeBits[probe.positions.first()];
  NetSelection selection;
  QString ignored;
  if (!design_.resolve(first.name, selection, ignored) || selection.netWidth != probe.positions.size()) return;
  for (int i = 0; i < probe.positions.size(); ++i) {
    const NetBit& bit = plan_.probeBits[probe.positions[i]];
    if (bit.net != first.net || bit.instancePath != first.instancePath || bit.bit != selection.netWidth - 1 - i) return;
  }
  probe.names = selection.enumNames;
}

bool CorePlanner::planTrace() {
  for (const TraceNode* node : core_.trace->nodes) {
    PlanProbe probe;
    probe.name = node->displayName();
    if (!addLeaves(node, probe)) return false;
    if (probe.positions.isEmpty()) continue;
    nameValues(probe);
    plan_.probes.append(probe);
  }
  return !plan_.probeBits.isEmpty() || fail(QString(), QStringLiteral("nothing is traced."));
}

bool CorePlanner::planUnit(const TriggerUnit& source, BitList& inputs) {
  PlanUnit unit;
  unit.name = source.name;
  unit.op = source.op;
  unit.radix = source.radix;
  unit.valueText = source.value;
  switch (source.op) {
    case Operator::SerialCompare:
      unit.unitClass = UnitClass::Serial;
      break;
    case Operator::Greater:
    case Operator::GreaterEqual:
    case Operator::Less:
    case Operator::LessEqual:
      unit.unitClass = UnitClass::Order;
      break;
    default:
      unit.unitClass = UnitClass::Match;
  }
  const QString object = QStringLiteral(", unit ") + source.name;
  for (int i = source.signalNames.size() - 1; i >= 0; --i) {
    NetSelection selection;
    if (!resolve(object, source.signalNames[i], selection)) return false;
    if (source.signalNames.size() == 1) unit.names = valueNames(selection);
    for (int bit = selection.bits.size() - 1; bit >= 0; --bit) unit.inputs.append(inputs.add(bitOf(selection, bit)));
  }
  if (unit.inputs.isEmpty()) return fail(object, QStringLiteral("it has no signals."));
  if (unit.unitClass == UnitClass::Serial && unit.inputs.size() != 1)
    return fail(object, QStringLiteral(".SC. takes one signal of one bit."));
  QString reason;
  if (!parseUnitValue(source.op, source.radix, source.value, unit.inputs.size(), unit.value, unit.mask, reason,
                      unit.names))
    return fail(object, reason);
  unit.width = unit.value.size();
  unitByName_.insert(source.name, plan_.units.size());
  plan_.units.append(unit);
  return true;
}

bool CorePlanner::planUnits() {
  BitList inputs(plan_.triggerBits);
  for (const auto& unit : core_.dataset.units())
    if (!planUnit(unit->unit, inputs)) return false;
  return true;
}

bool CorePlanner::planExpression(const TriggerExpression& source) {
  const QString object = QStringLiteral(", expression ") + source.name;
  ParsedExpression parsed;
  QString reason;
  if (!parseTriggerExpression(source.text, parsed, reason)) return fail(object, reason);
  PlanExpression expression;
  expression.name = source.name;
  expression.text = source.text;
  expression.blockRam = source.ram == ExpressionRam::BlockRam;
  expression.maxSequenceDepth = source.maxSequenceDepth;
  expression.maxEventCount = source.maxEventCount;
  for (const QString& name : parsed.units) {
    const int unit = unitByName_.value(name, -1);
    if (unit < 0) return fail(object, QStringLiteral("the trigger unit \"%1\" does not exist.").arg(name));
    expression.units.append(unit);
  }
  if (parsed.steps.size() > source.maxSequenceDepth)
    return fail(object, QStringLiteral("it has %1 steps, its sequence depth is %2.")
                            .arg(parsed.steps.size())
                            .arg(source.maxSequenceDepth));
  for (const ParsedStep& step : parsed.steps) {
    if (step.count > source.maxEventCount)
      return fail(object,
                  QStringLiteral("it counts to %1, its event count is %2.").arg(step.count).arg(source.maxEventCount));
    expression.steps.append({step.truthTable, step.count});
  }
  plan_.expressions.append(expression);
  return true;
}

bool CorePlanner::planExpressions() {
  for (const auto& expression : core_.dataset.expressions())
    if (!planExpression(*expression)) return false;
  return !plan_.expressions.isEmpty() || fail(QString(), QStringLiteral("it has no trigger expression."));
}

}  // namespace

bool planInsertion(const mero::ostrel::istProject& project, const Design& design, InsertPlan& plan, QString& error) {
  InsertPlan result;
  result.projectName = project.fileName.isEmpty()
                           ? QStringLiteral("untitled")
                           : textFromFile(QFileInfo(fileFromText(project.fileName)).completeBaseName());
  result.topModule = design.topModule();
  for (const auto& core : project.cores) {
    if (!core->enabled) continue;
    result.cores.append(PlanCore());
    if (!CorePlanner(*core, design, result.cores.last(), error).run()) return false;
  }
  if (result.cores.isEmpty()) {
    error = QStringLiteral("No core is enabled; add or enable one first.");
    return false;
  }
  // What no reader would take must not be inserted.
  if (!canBeRead(result, error)) return false;
  result.projectHash = planHash(result);
  plan = result;
  return true;
}

}  // namespace ost
