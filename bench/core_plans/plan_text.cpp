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

/// A word of the line: a key alone, or a key with a value behind "=".
struct Word {
  const char* key;
  void (*apply)(PlanCore& core, const QByteArray& value);
  bool isNumber;
};

const Word kWords[] = {
    {"incl", [](PlanCore& core, const QByteArray&) { core.includeTrigger = true; }, false},
    {"dram", [](PlanCore& core, const QByteArray&) { core.distributedRam = true; }, false},
    {"nodram", [](PlanCore& core, const QByteArray&) { core.distRamDisabled = true; }, false},
    {"outlow", [](PlanCore& core, const QByteArray&) { core.triggerOutActiveLow = true; }, false},
    {"se",
     [](PlanCore& core, const QByteArray& value) {
       core.hasSampleEnable = true;
       core.sampleEnableActiveLow = value == "low";
     },
     false},
    {"te",
     [](PlanCore& core, const QByteArray& value) {
       core.hasTriggerEnable = true;
       core.triggerEnableActiveLow = value == "low";
     },
     false},
    {"unit", [](PlanCore& core, const QByteArray& value) { addUnit(core, value.split(':')); }, false},
    {"expr", [](PlanCore& core, const QByteArray& value) { addExpression(core, value.split(':')); }, false},
    {"probes",
     [](PlanCore& core, const QByteArray& value) {
       for (int i = 0; i < value.toInt(); ++i) core.probeBits.append(inputBit(i));
     },
     true},
    {"depth", [](PlanCore& core, const QByteArray& value) { core.depth = value.toInt(); }, true},
    {"windows", [](PlanCore& core, const QByteArray& value) { core.windows = value.toInt(); }, true},
    {"ws", [](PlanCore& core, const QByteArray& value) { core.windowSamples = value.toInt(); }, true},
    {"ts", [](PlanCore& core, const QByteArray& value) { core.timestampBits = value.toInt(); }, true},
    {"event",
     [](PlanCore& core, const QByteArray& value) {
       core.eventCounter = true;
       core.eventCount = value.toInt();
     },
     true},
    {"out",
     [](PlanCore& core, const QByteArray& value) {
       core.triggerOutIo = true;
       core.triggerOutMinPulse = value.toInt();
     },
     true},
};

void applyWord(PlanCore& core, const QByteArray& text) {
  const int equals = text.indexOf('=');
  const QByteArray key = equals < 0 ? text : text.left(equals);
  const QByteArray value = equals < 0 ? QByteArray() : text.mid(equals + 1);
  bool ok = false;
  value.toInt(&ok);
  for (const Word& word : kWords)
    if (key == word.key && (ok || !word.isNumber)) return word.apply(core, value);
  throw std::runtime_error("bad word: " + text.toStdString());
}

PlanSerdes serdesFrom(const QList<QByteArray>& words) {
  PlanSerdes serdes;
  serdes.clocks.resize(words.value(0).toInt());
  serdes.levels.resize(words.value(1).toInt());
  serdes.hasReset = words.contains("rst");
  return serdes;
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
  for (const QByteArray& word : text.simplified().split(' ')) {
    if (word.startsWith("wb=")) {
      plan.wishbone.emplace();
      plan.wishbone->addressBits = word.mid(3).toInt();
      continue;
    }
    if (plan.cores.isEmpty()) begin();
    if (word == "core")
      begin();
    else if (word.startsWith("serdes="))
      plan.serdes = serdesFrom(word.mid(7).split(':'));
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
    if (port.role == DebugPort::WishboneClock || port.role == DebugPort::WishboneBus)
      ports += QByteArray(port.output ? ",\n  output [" : ",\n  input [") + QByteArray::number(port.width - 1) +
               ":0] " + net;
    if (net.startsWith("sd_")) ports += ", input [" + QByteArray::number(port.width - 1) + ":0] " + net;
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
