// Plans the enabled cores of a project from their resolved names.
#include "platform/plan/planner.h"

#include <QFileInfo>
#include <QHash>

#include "platform/istdata/trace_tree.h"
#include "platform/plan/capture_map.h"
#include "platform/plan/generate_blocks.h"
#include "platform/plan/resolved_serdes.h"
#include "platform/text/byte_text.h"

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

/// Plans one core. Trusts the design rules: where what they let pass cannot be planned, `fault` gets the part of the
/// core that is to blame.
class CorePlanner {
 public:
  CorePlanner(const ResolvedCore& resolved, PlanCore& plan, QString& fault)
      : resolved_(resolved), core_(*resolved.core), plan_(plan), fault_(fault) {}

  bool run() {
    plan_.name = core_.name;
    planCapture();
    planTriggerOutput();
    return planNets() && planTrace() && planUnits() && planExpressions();
  }

 private:
  bool fail(const QString& part) {
    fault_ = part;
    return false;
  }
  bool takeBit(const char* part, const ResolvedName& name, NetBit& bit) {
    if (name.bits.size() != 1) return fail(QLatin1String(part));
    bit = name.bits.first();
    return true;
  }

  void planCapture();
  void planTriggerOutput();
  bool planNets();
  bool planTrace();
  bool addLeaves(const TraceNode* node, PlanProbe& probe);
  void nameValues(PlanProbe& probe) const;
  void declareNet(PlanProbe& probe) const;
  bool planUnits();
  bool planUnit(const ResolvedUnit& source, BitList& inputs);
  bool planExpressions();
  bool planExpression(const ResolvedExpression& source);

  const ResolvedCore& resolved_;
  const Core& core_;
  PlanCore& plan_;
  QString& fault_;
  QHash<const TraceNode*, const ResolvedSignal*> traced_;
  QHash<const TraceNode*, int> captured_;   ///< Signal nodes and their position in probeBits.
  QVector<const ResolvedSignal*> sources_;  ///< Of probeBits.
  QHash<QString, int> unitByName_;
};

void CorePlanner::planCapture() {
  const CoreOptions& options = core_.options;
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
}

void CorePlanner::planTriggerOutput() {
  const CoreOptions& options = core_.options;
  if (!options.triggerOut) return;
  plan_.triggerOutIo = options.triggerOutType != TriggerOutType::Net;
  plan_.triggerOutNet = options.triggerOutType != TriggerOutType::Io;
  plan_.triggerOutName = options.triggerOutName;
  plan_.triggerOutActiveLow = options.triggerOutPolarity == Polarity::ActiveLow;
  plan_.triggerOutMinPulse = options.triggerOutMinPulse;
}

bool CorePlanner::planNets() {
  const CoreOptions& options = core_.options;
  plan_.hasSampleEnable = options.sampleEnable;
  plan_.sampleEnableActiveLow = options.sampleEnable && options.sampleEnablePolarity == Polarity::ActiveLow;
  plan_.sampleEnableForeign = resolved_.sampleEnableForeign;
  plan_.hasTriggerEnable = options.triggerEnable;
  plan_.triggerEnableActiveLow = options.triggerEnable && options.triggerEnablePolarity == Polarity::ActiveLow;
  plan_.triggerEnableForeign = resolved_.triggerEnableForeign;
  return takeBit("the sample clock", resolved_.sampleClock, plan_.sampleClock) &&
         (!options.sampleEnable || takeBit("the sample enable", resolved_.sampleEnable, plan_.sampleEnable)) &&
         (!options.triggerEnable || takeBit("the trigger enable", resolved_.triggerEnable, plan_.triggerEnable));
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
    const ResolvedSignal* found = traced_.value(signal);
    if (!found) return fail(QStringLiteral("the signal \"%1\"").arg(signal->displayName()));
    known = captured_.insert(signal, plan_.probeBits.size());
    plan_.probeBits.append(found->bit);
    sources_.append(found);
  }
  probe.positions.append(*known);
  return true;
}

/// A probe that is a whole net, its bits in their order, has the names of the net's values.
void CorePlanner::nameValues(PlanProbe& probe) const {
  const ResolvedSignal* first = sources_[probe.positions.first()];
  if (first->netNames.isEmpty() || first->netWidth != probe.positions.size()) return;
  for (int i = 0; i < probe.positions.size(); ++i) {
    const NetBit& bit = plan_.probeBits[probe.positions[i]];
    if (bit.net != first->bit.net || bit.instancePath != first->bit.instancePath || bit.bit != first->netWidth - 1 - i)
      return;
  }
  probe.names = first->netNames;
}

/// A probe that bears the name of a net, or of bits of one, shows this; a bus of the user's has a name of its own.
void CorePlanner::declareNet(PlanProbe& probe) const {
  const ResolvedSignal& first = *sources_[probe.positions.first()];
  QVector<int> indices;
  for (const int position : probe.positions) {
    const NetBit& bit = plan_.probeBits[position];
    if (bit.net != first.bit.net || bit.instancePath != first.bit.instancePath) return;
    // The name of a vector's bit ends with its declared index.
    indices.append(first.netWidth > 1 ? bit.name.mid(bit.name.lastIndexOf(QLatin1Char('[')) + 1).chopped(1).toInt()
                                      : 0);
  }
  for (int i = 2; i < indices.size(); ++i)
    if (indices[i] - indices[i - 1] != indices[1] - indices[0]) return;
  if (indices.size() > 1 && qAbs(indices[1] - indices[0]) != 1) return;
  const QString last = plan_.probeBits[probe.positions.last()].name;
  const QString whole = first.netWidth > 1 ? last.left(last.lastIndexOf(QLatin1Char('['))) : last;
  const QString range = QStringLiteral("[%1:%2]").arg(indices.first()).arg(indices.last());
  if (probe.name != whole && probe.name != last && probe.name != whole + range) return;
  for (const QString& instance : instancePathKeys(first.bit.instancePath))
    probe.net.scopes += splitAtBlocks(withoutProtection(instance));
  QStringList names(withoutProtection(first.bit.net));
  if (!first.wholeName) names = splitAtBlocks(names.first());
  probe.net.name = names.takeLast();
  probe.net.scopes += names;
  probe.net.isVector = first.netWidth > 1;
  probe.net.left = indices.first();
  probe.net.right = indices.last();
}

bool CorePlanner::planTrace() {
  for (const ResolvedSignal& signal : resolved_.traced)
    if (signal.width == 1) traced_.insert(signal.node, &signal);
  for (const TraceNode* node : core_.trace->nodes) {
    PlanProbe probe;
    probe.name = node->displayName();
    if (!addLeaves(node, probe)) return false;
    if (probe.positions.isEmpty()) continue;
    nameValues(probe);
    declareNet(probe);
    plan_.probes.append(probe);
  }
  return !plan_.probeBits.isEmpty() || fail(QStringLiteral("its empty trace"));
}

UnitClass unitClassOf(Operator op) {
  switch (op) {
    case Operator::SerialCompare:
      return UnitClass::Serial;
    case Operator::Greater:
    case Operator::GreaterEqual:
    case Operator::Less:
    case Operator::LessEqual:
      return UnitClass::Order;
    default:
      return UnitClass::Match;
  }
}

bool CorePlanner::planUnit(const ResolvedUnit& source, BitList& inputs) {
  if (source.value.isEmpty() || !source.vanished.isEmpty())
    return fail(QStringLiteral("the trigger unit \"%1\"").arg(source.unit->name));
  PlanUnit unit;
  unit.name = source.unit->name;
  unit.op = source.unit->op;
  unit.radix = source.unit->radix;
  unit.valueText = source.unit->value;
  unit.unitClass = unitClassOf(unit.op);
  for (int i = source.bits.size() - 1; i >= 0; --i) unit.inputs.append(inputs.add(source.bits[i]));
  unit.value = source.value;
  unit.mask = source.mask;
  unit.names = source.names;
  unit.width = unit.value.size();
  unitByName_.insert(unit.name, plan_.units.size());
  plan_.units.append(unit);
  return true;
}

bool CorePlanner::planUnits() {
  BitList inputs(plan_.triggerBits);
  for (const ResolvedUnit& unit : resolved_.units)
    if (!planUnit(unit, inputs)) return false;
  return true;
}

bool CorePlanner::planExpression(const ResolvedExpression& source) {
  const TriggerExpression& text = *source.expression;
  const QString part = QStringLiteral("the trigger expression \"%1\"").arg(text.name);
  if (!source.fault.isEmpty() || source.parsed.steps.size() > text.maxSequenceDepth) return fail(part);
  PlanExpression expression;
  expression.name = text.name;
  expression.text = text.text;
  expression.blockRam = text.ram == ExpressionRam::BlockRam;
  expression.maxSequenceDepth = text.maxSequenceDepth;
  expression.maxEventCount = text.maxEventCount;
  for (const QString& name : source.parsed.units) {
    const int unit = unitByName_.value(name, -1);
    if (unit < 0) return fail(part);
    expression.units.append(unit);
  }
  for (const ParsedStep& step : source.parsed.steps) {
    if (step.count > text.maxEventCount) return fail(part);
    expression.steps.append({step.truthTable, step.count});
  }
  plan_.expressions.append(expression);
  return true;
}

bool CorePlanner::planExpressions() {
  for (const ResolvedExpression& expression : resolved_.expressions)
    if (!planExpression(expression)) return false;
  return !plan_.expressions.isEmpty() || fail(QStringLiteral("its missing trigger expression"));
}

}  // namespace

bool planInsertion(const mero::ostrel::istProject& project, const Design& design,
                   const std::vector<ResolvedCore>& cores, const std::optional<PlanWishbone>& wishbone,
                   InsertPlan& plan, QString& error) {
  InsertPlan result;
  result.projectName = project.fileName.isEmpty()
                           ? QStringLiteral("untitled")
                           : textFromFile(QFileInfo(fileFromText(project.fileName)).completeBaseName());
  result.topModule = design.topModule();
  result.wishbone = wishbone;
  for (const ResolvedCore& core : cores) {
    QString fault;
    result.cores.append(PlanCore());
    if (CorePlanner(core, result.cores.last(), fault).run()) continue;
    error =
        QStringLiteral(
            "Internal error: core \"%1\" passed the design rules but cannot be planned because of %2; please report "
            "this with the project.")
            .arg(core.core->name, fault);
    return false;
  }
  if (project.serdes) result.serdes = planSerdes(resolveSerdes(*project.serdes, design));
  result.projectHash = planHash(result);
  plan = result;
  return true;
}

}  // namespace ost
