// Plans from text, and a top module that wires the debug module to plain inputs.
#include "bench/core_plans/plan_text.h"

#include <algorithm>
#include <stdexcept>

#include "platform/rtl/debug_module.h"

namespace ost {
namespace {

NetBit inputBit(int bit) {
  NetBit net;
  net.net = QStringLiteral("in");
  net.bit = bit;
  net.name = QStringLiteral("in[%1]").arg(bit);
  return net;
}

int triggerIndex(PlanCore& core, int bit) {
  const NetBit net = inputBit(bit);
  const int index = core.triggerBits.indexOf(net);
  if (index >= 0) return index;
  core.triggerBits.append(net);
  return core.triggerBits.size() - 1;
}

void addUnit(PlanCore& core, const QList<QByteArray>& words) {
  PlanUnit unit;
  unit.name = QStringLiteral("TU%1").arg(core.units.size() + 1);
  const int first = words.value(1).toInt();
  unit.width = words.value(2).toInt();
  if (words[0] == "serial") {
    unit.unitClass = UnitClass::Serial;
    unit.op = Operator::SerialCompare;
    unit.inputs.append(triggerIndex(core, first));
  } else {
    unit.unitClass = words[0] == "order" ? UnitClass::Order : UnitClass::Match;
    for (int i = 0; i < unit.width; ++i) unit.inputs.append(triggerIndex(core, first + i));
  }
  unit.value = QByteArray(unit.width, '0');
  unit.mask = QByteArray(unit.width, '1');
  core.units.append(unit);
}

void addExpression(PlanCore& core, QList<QByteArray> words) {
  PlanExpression expression;
  expression.name = QStringLiteral("TE%1").arg(core.expressions.size() + 1);
  if (words.last() == "ebr") {
    expression.blockRam = true;
    words.removeLast();
  }
  for (const QByteArray& unit : words[0].split('+')) expression.units.append(unit.toInt());
  if (words.size() > 1) expression.maxSequenceDepth = words[1].toInt();
  if (words.size() > 2) expression.maxEventCount = words[2].toInt();
  PlanStep step;
  step.truthTable = QByteArray(1 << expression.units.size(), '0');
  step.truthTable.back() = '1';
  expression.steps.append(step);
  core.expressions.append(expression);
}

void setNumber(PlanCore& core, const QByteArray& key, const QByteArray& value, const QByteArray& word) {
  bool ok = false;
  const int n = value.toInt(&ok);
  if (!ok) throw std::runtime_error("bad word: " + word.toStdString());
  if (key == "probes") {
    for (int i = 0; i < n; ++i) core.probeBits.append(inputBit(i));
  } else if (key == "depth") {
    core.depth = n;
  } else if (key == "windows") {
    core.windows = n;
  } else if (key == "ws") {
    core.windowSamples = n;
  } else if (key == "ts") {
    core.timestampBits = n;
  } else if (key == "event") {
    core.eventCounter = true;
    core.eventCount = n;
  } else if (key == "out") {
    core.triggerOutIo = true;
    core.triggerOutMinPulse = n;
  } else {
    throw std::runtime_error("bad word: " + word.toStdString());
  }
}

void applyWord(PlanCore& core, const QByteArray& word) {
  const int equals = word.indexOf('=');
  const QByteArray key = word.left(equals), value = equals < 0 ? QByteArray() : word.mid(equals + 1);
  if (word == "incl") {
    core.includeTrigger = true;
  } else if (word == "dram") {
    core.distributedRam = true;
  } else if (word == "nodram") {
    core.distRamDisabled = true;
  } else if (word == "outlow") {
    core.triggerOutActiveLow = true;
  } else if (key == "se") {
    core.hasSampleEnable = true;
    core.sampleEnableActiveLow = value == "low";
  } else if (key == "te") {
    core.hasTriggerEnable = true;
    core.triggerEnableActiveLow = value == "low";
  } else if (key == "unit") {
    addUnit(core, value.split(':'));
  } else if (key == "expr") {
    addExpression(core, value.split(':'));
  } else {
    setNumber(core, key, value, word);
  }
}

}  // namespace

InsertPlan planFromText(const QByteArray& text) {
  InsertPlan plan;
  plan.projectName = QStringLiteral("sim");
  plan.topModule = QStringLiteral("core_top");
  plan.projectHash = "0123456789abcdef";
  const auto begin = [&plan] {
    plan.cores.append(PlanCore());
    plan.cores.last().name = QStringLiteral("C%1").arg(plan.cores.size());
    plan.cores.last().windowSamples = 0;
  };
  begin();
  for (const QByteArray& word : text.simplified().split(' ')) {
    if (word == "core")
      begin();
    else
      applyWord(plan.cores.last(), word);
  }
  for (PlanCore& core : plan.cores)
    if (core.windowSamples == 0) core.windowSamples = core.depth / core.windows;
  return plan;
}

int inputBits(const PlanCore& core) {
  int bits = 1;
  for (const NetBit& bit : core.probeBits) bits = std::max(bits, bit.bit + 1);
  for (const NetBit& bit : core.triggerBits) bits = std::max(bits, bit.bit + 1);
  return bits;
}

QByteArray topVerilog(const InsertPlan& plan) {
  const auto bits = [](const QByteArray& input, const QVector<NetBit>& nets) {
    QByteArray text;
    for (const NetBit& net : nets)
      text = input + "[" + QByteArray::number(net.bit) + "]" + (text.isEmpty() ? "" : ", ") + text;
    return "{" + text + "}";
  };
  QByteArray ports = "input jtag_tck, input jtag_tms, input jtag_tdi, output jtag_tdo", connections;
  for (int i = 0; i < plan.cores.size(); ++i) {
    const PlanCore& core = plan.cores[i];
    const QByteArray c = "c" + QByteArray::number(i) + "_";
    ports += ",\n  input " + c + "clk, input [" + QByteArray::number(inputBits(core) - 1) + ":0] " + c + "in";
    if (core.hasSampleEnable) ports += ", input " + c + "sample_en";
    if (core.hasTriggerEnable) ports += ", input " + c + "trig_en";
    if (core.triggerOutIo) ports += ", output " + c + "trig_out";
  }
  for (const DebugPort& port : debugModulePorts(plan)) {
    QByteArray net = port.name;
    if (port.role == DebugPort::Probe || port.role == DebugPort::Trigger) {
      const PlanCore& core = plan.cores[port.core];
      net = bits("c" + QByteArray::number(port.core) + "_in",
                 port.role == DebugPort::Probe ? core.probeBits : core.triggerBits);
    }
    connections += (connections.isEmpty() ? "    ." : ",\n    .") + port.name + "(" + net + ")";
  }
  return "module core_top(" + ports + ");\n  ostrel_debug dut (\n" + connections + ");\nendmodule\n";
}

}  // namespace ost
