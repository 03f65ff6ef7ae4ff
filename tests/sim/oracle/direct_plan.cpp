// Names to bits, terms to truth tables.
#include "tests/sim/oracle/direct_plan.h"

#include "tests/sim/oracle/model.h"

namespace oracle {
namespace {

ost::NetBit bitOf(const QString& name) {
  ost::NetBit bit;
  bit.name = name;
  bit.net = name;
  return bit;
}

int indexIn(QVector<ost::NetBit>& list, const QString& name) {
  for (int i = 0; i < list.size(); ++i)
    if (list[i].name == name) return i;
  list += bitOf(name);
  return list.size() - 1;
}

ost::Operator operatorOf(const QString& text) {
  static const QStringList words = {"==", "!=", ">", ">=", "<", "<=", ".RE.", ".FE.", ".SC."};
  return static_cast<ost::Operator>(words.indexOf(text));
}

ost::PlanUnit unitOf(const Unit& unit, ost::PlanCore& core) {
  ost::PlanUnit plan;
  plan.name = unit.name;
  plan.op = operatorOf(unit.op);
  plan.unitClass = unit.op == ".SC."                                                          ? ost::UnitClass::Serial
                   : plan.op >= ost::Operator::Greater && plan.op <= ost::Operator::LessEqual ? ost::UnitClass::Order
                                                                                              : ost::UnitClass::Match;
  plan.radix = static_cast<ost::Radix>(QStringList({"bin", "oct", "dec", "hex"}).indexOf(unit.radix));
  plan.valueText = unit.digits;
  const QByteArray bits = binaryDigits(unit.radix, unit.digits, unit.op == ".SC." ? 0 : unit.bits.size());
  const bool edge = unit.op == ".RE." || unit.op == ".FE.";
  for (int i = bits.size() - 1; i >= 0; --i) {
    plan.value += bits[i] == '1' && !edge ? '1' : '0';
    plan.mask += bits[i] == 'x' || (edge && bits[i] == '0') ? '0' : '1';
  }
  plan.width = bits.size();
  for (int i = unit.bits.size() - 1; i >= 0; --i) plan.inputs += indexIn(core.triggerBits, unit.bits[i]);
  return plan;
}

void collectUnits(const Term& term, QVector<int>& units) {
  if (term.kind == Term::Unit && !units.contains(term.unit)) units += term.unit;
  for (const Term& part : term.parts) collectUnits(part, units);
}

ost::PlanExpression expressionOf(const Expression& expression, const Core& core) {
  ost::PlanExpression plan;
  plan.name = expression.name;
  plan.blockRam = expression.ebr;
  plan.maxSequenceDepth = expression.maxSteps;
  plan.maxEventCount = expression.maxCount;
  for (const Step& step : expression.steps) collectUnits(step.term, plan.units);
  for (const Step& step : expression.steps) {
    ost::PlanStep made;
    made.count = step.count;
    for (int row = 0; row < (1 << plan.units.size()); ++row) {
      QVector<bool> states(core.units.size(), false);
      for (int i = 0; i < plan.units.size(); ++i) states[plan.units[i]] = row >> i & 1;
      made.truthTable += step.term.holds(states) ? '1' : '0';
    }
    plan.steps += made;
  }
  return plan;
}

}  // namespace

ost::InsertPlan directPlan(const Project& project, quint32 seed) {
  ost::InsertPlan plan;
  plan.topModule = project.dut->name;
  plan.projectHash = QByteArray::number(0x1234567890000000ULL + seed, 16);
  for (const Core& core : project.cores) {
    ost::PlanCore made;
    made.name = core.name;
    made.sampleClock = bitOf(core.clock);
    made.hasSampleEnable = !core.sampleEnable.isEmpty();
    made.sampleEnable = bitOf(core.sampleEnable);
    made.sampleEnableActiveLow = core.sampleEnableLow;
    made.hasTriggerEnable = !core.triggerEnable.isEmpty();
    made.triggerEnable = bitOf(core.triggerEnable);
    made.triggerEnableActiveLow = core.triggerEnableLow;
    for (const QStringList& shown : core.shownProbes()) {
      ost::PlanProbe probe;
      probe.name = shown[0];
      for (const QString& bit : shown) probe.positions += indexIn(made.probeBits, bit);
      made.probes += probe;
    }
    made.depth = core.depth;
    made.distributedRam = core.dram;
    made.distRamDisabled = core.distRamDisable;
    made.timestampBits = core.timestampBits;
    made.includeTrigger = core.includeTrigger;
    made.windows = core.windows;
    made.windowSamples = core.windowSamples;
    for (const Unit& unit : core.units) made.units += unitOf(unit, made);
    for (const Expression& expression : core.expressions) made.expressions += expressionOf(expression, core);
    made.eventCounter = core.eventCount > 0;
    made.eventCount = qMax(core.eventCount, 1);
    made.triggerOutIo = core.triggerOut;
    made.triggerOutName = core.name + "_out";
    made.triggerOutActiveLow = core.triggerOutLow;
    made.triggerOutMinPulse = core.triggerOutMinPulse;
    plan.cores += made;
  }
  return plan;
}

}  // namespace oracle
