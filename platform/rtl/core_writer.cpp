// Writes one core: units, expressions and the instance of ostrel_core that they belong to.
#include "platform/rtl/core_writer.h"

#include <algorithm>

#include "platform/plan/core_layout.h"
#include "platform/rtl/hub_ports.h"
#include "platform/rtl/unknown_levels.h"
#include "platform/rtl/verilog_text.h"

namespace ost {

using namespace verilog;

namespace {

/// A core's half of the self-description.
QByteArray infoOf(const PlanCore& core, const CoreLayout& layout) {
  return infoConstant(CoreKind::LogicAnalyzer, {{8, layout.addressBits},
                                                {16, layout.wordBits},
                                                {8, layout.blockBits},
                                                {8, core.timestampBits},
                                                {16, core.probeWidth()},
                                                {32, layout.chainBits},
                                                {16, layout.statusBits},
                                                {8, core.units.size()},
                                                {8, core.expressions.size()}});
}

void writeUnit(QByteArray& out, const PlanCore& core, const CoreLayout& layout, const QByteArray& c, int index) {
  const PlanUnit& unit = core.units[index];
  const QByteArray name = c + "unit" + number(index);
  const QByteArray config = slice(c + "config", layout.unitOffsets[index], unitConfigBits(unit));
  const QByteArray hit = c + "hits[" + number(index) + "]";
  const QByteArray current = gather(c + "cur", unit.inputs);
  const Connection stages("STAGES", number(layout.unitStages));
  switch (unit.unitClass) {
    case UnitClass::Match:
      instance(out, "ostrel_match", {{"WIDTH", number(unit.width)}, stages}, name,
               {{"clk", c + "clk"},
                {"sample", c + "sample"},
                {"previous_valid", c + "sampled"},
                {"cur", current},
                {"config_bits", config},
                {"hit", hit}});
      break;
    case UnitClass::Order:
      instance(out, "ostrel_order", {{"WIDTH", number(unit.width)}, stages}, name,
               {{"clk", c + "clk"}, {"cur", current}, {"config_bits", config}, {"hit", hit}});
      break;
    case UnitClass::Serial:
      instance(out, "ostrel_serial", {{"LENGTH", number(unit.width)}, stages}, name,
               {{"clk", c + "clk"},
                {"clear", c + "clear"},
                {"sample", c + "sample"},
                {"cur", current},
                {"config_bits", config},
                {"hit", hit}});
      break;
  }
}

void writeExpression(QByteArray& out, const PlanCore& core, const CoreLayout& layout, const QByteArray& c, int index,
                     int stateOffset) {
  const PlanExpression& expression = core.expressions[index];
  const ExpressionLayout& e = layout.expressions[index];
  const QByteArray name = c + "expr" + number(index);
  const bool inChain = e.store == TableStore::Chain;
  const QByteArray hits = expression.units.isEmpty() ? QByteArray("1'b0") : gather(c + "known_hits", expression.units);

  out += "  wire " + range(e.steps) + name + "_row;\n";
  out += "  wire " + range(std::max(e.stepBits, 1)) + name + "_step;\n";
  QByteArray write = "1'b0", address = "{" + number(e.units) + "{1'b0}}", row = "{" + number(e.steps) + "{1'b0}}";
  if (!inChain) {
    const QByteArray addressed = "h_tag == 8'd" + number(index);
    out += "  wire " + name + "_last = " + addressed + " & h_index == " + number(e.steps - 1) + ";\n";
    write = c + "table_load & " + name + "_last";
    address = slice("h_address", 0, e.units);
    row = slice(c + "table_row", layout.rowBits - e.steps, e.steps);
  }
  instance(out, "ostrel_table",
           {{"UNITS", number(e.units)},
            {"STEPS", number(e.steps)},
            {"STORE", number(int(e.store))},
            {"CHAIN_BITS", number(inChain ? e.tableBits : 1)}},
           name + "_table",
           {{"clk", c + "clk"},
            {"run", "~" + c + "clear"},
            {"hits", hits},
            {"row", name + "_row"},
            {"config_bits", inChain ? slice(c + "config", e.tableOffset, e.tableBits) : QByteArray("1'b0")},
            {"tck", "h_tck"},
            {"write", write},
            {"write_address", address},
            {"write_row", row}});
  instance(out, "ostrel_expression",
           {{"STEPS", number(e.steps)}, {"STEP_BITS", number(e.stepBits)}, {"COUNT_BITS", number(e.countBits)}}, name,
           {{"clk", c + "clk"},
            {"restart", c + "restart"},
            {"rewind", c + "rewind"},
            {"reload", c + "reload"},
            {"evaluate", c + "evaluate"},
            {"row", name + "_row"},
            {"config_bits", slice(c + "config", e.configOffset, e.configBits)},
            {"fire", c + "fires[" + number(index) + "]"},
            {"step", name + "_step"}});
  if (e.stepBits > 0)
    out += "  assign " + slice(c + "steps", stateOffset, e.stepBits) + " = " + name + "_step;\n";
  else
    out += "  wire " + name + "_unused = &{1'b0, " + name + "_step};\n";
}

/// At least one bit, where the Verilog has no vector of none.
int atLeastOne(int count) {
  return std::max(count, 1);
}

void declareWires(QByteArray& out, const PlanCore& core, const CoreLayout& layout, const QByteArray& c) {
  out += "\n";
  for (const char* name : {"clear", "sample", "sampled", "restart", "rewind", "reload", "evaluate", "table_load"})
    out += "  wire " + c + name + ";\n";
  // Vectors of one bit are declared as such, so that every bit can be selected by its index.
  const auto vector = [&](int width, const char* name) {
    out += "  wire [" + number(atLeastOne(width) - 1) + ":0] " + c + name + ";\n";
  };
  vector(core.triggerBits.size(), "cur");
  vector(core.units.size(), "hits");
  vector(core.expressions.size(), "fires");
  vector(layout.stepStateBits, "steps");
  vector(layout.chainBits, "config");
  vector(layout.rowBits, "table_row");
  if (core.units.isEmpty()) out += "  assign " + c + "hits = 1'b0;\n";
  if (core.expressions.isEmpty()) out += "  assign " + c + "fires = 1'b0;\n";
  if (layout.stepStateBits == 0) out += "  assign " + c + "steps = 1'b0;\n";
  if (!hasTriggerOut(core)) out += "  wire " + c + "trig_out;\n";
}

/// Units and expressions. Returns the term that is 1 at the last bit of the addressed table's row.
QByteArray writeTriggers(QByteArray& out, const PlanCore& core, const CoreLayout& layout, const QByteArray& c) {
  for (int i = 0; i < core.units.size(); ++i) writeUnit(out, core, layout, c, i);
  int stateOffset = 0;
  QByteArray tableLast;
  for (int i = 0; i < core.expressions.size(); ++i) {
    writeExpression(out, core, layout, c, i, stateOffset);
    stateOffset += layout.expressions[i].stepBits;
    if (layout.expressions[i].store != TableStore::Chain)
      tableLast += (tableLast.isEmpty() ? "" : " | ") + c + "expr" + number(i) + "_last";
  }
  return tableLast.isEmpty() ? QByteArray("1'b0") : tableLast;
}

QList<Connection> coreParameters(const InsertPlan& plan, const PlanCore& core, const CoreLayout& layout) {
  const int pulse = hasTriggerOut(core) ? atLeastOne(core.triggerOutMinPulse) : 1;
  return {{"PROBES", number(core.probeWidth())},
          {"TRIGGERS", number(atLeastOne(core.triggerBits.size()))},
          {"UNITS", number(atLeastOne(core.units.size()))},
          {"EXPRESSIONS", number(atLeastOne(core.expressions.size()))},
          {"STEP_STATE_BITS", number(layout.stepStateBits)},
          {"ROW_BITS", number(layout.rowBits)},
          {"WINDOWS", number(atLeastOne(core.windows))},
          {"WINDOW_BITS", number(layout.windowBits)},
          {"POSITION_BITS", number(layout.positionBits)},
          {"ADDRESS_BITS", number(layout.addressBits)},
          {"DISTRIBUTED", number(core.distributedRam && !core.distRamDisabled)},
          {"TIMESTAMP_BITS", number(core.timestampBits)},
          {"INCLUDE_TRIGGER", number(core.includeTrigger && !core.units.isEmpty())},
          {"EVENT_BITS", number(layout.eventBits)},
          {"UNIT_STAGES", number(layout.unitStages)},
          {"HAS_SAMPLE_EN", number(core.hasSampleEnable)},
          {"SAMPLE_EN_LOW", number(core.sampleEnableActiveLow)},
          {"SAMPLE_EN_SYNC", number(core.hasSampleEnable && core.sampleEnableForeign)},
          {"HAS_TRIG_EN", number(core.hasTriggerEnable)},
          {"TRIG_EN_LOW", number(core.triggerEnableActiveLow)},
          {"TRIG_EN_SYNC", number(core.hasTriggerEnable && core.triggerEnableForeign)},
          {"TRIG_OUT_LOW", number(core.triggerOutActiveLow)},
          {"PULSE", number(pulse)},
          {"PULSE_BITS", number(bitsFor(pulse))},
          {"CHAIN_BITS", number(layout.chainBits)},
          {"BLOCK_BITS", number(layout.blockBits)},
          {"INDEX_BITS", number(hubIndexBits(plan))},
          {"HUB_ADDRESS_BITS", number(hubAddressBits(plan))},
          {"INFO", infoOf(core, layout)}};
}

QList<Connection> corePorts(const PlanCore& core, int index, const QByteArray& tableLast) {
  const QByteArray c = corePrefix(index);
  return QList<Connection>{{"clk", c + "clk"},
                           {"probe", c + "known_probe"},
                           {"trig", core.triggerBits.isEmpty() ? QByteArray("1'b0") : c + "trig"},
                           {"sample_en", core.hasSampleEnable ? c + "known_sample_en" : QByteArray("1'b1")},
                           {"trig_en", core.hasTriggerEnable ? c + "known_trig_en" : QByteArray("1'b1")},
                           {"trig_out", c + "trig_out"},
                           {"unit_clear", c + "clear"},
                           {"unit_sample", c + "sample"},
                           {"unit_sampled", c + "sampled"},
                           {"unit_cur", c + "cur"},
                           {"hits", c + "known_hits"},
                           {"restart", c + "restart"},
                           {"rewind", c + "rewind"},
                           {"reload", c + "reload"},
                           {"evaluate", c + "evaluate"},
                           {"fires", c + "fires"},
                           {"steps", c + "steps"},
                           {"config_bits", c + "config"},
                           {"table_load", c + "table_load"},
                           {"table_row", c + "table_row"},
                           {"table_last", tableLast}} +
         hubPorts(index);
}

}  // namespace

QByteArray corePrefix(int core) {
  return "c" + number(core) + "_";
}

bool hasTriggerOut(const PlanCore& core) {
  return core.triggerOutIo || core.triggerOutNet;
}

void writeCore(QByteArray& out, const InsertPlan& plan, int index) {
  const PlanCore& core = plan.cores[index];
  const CoreLayout layout(core);
  const QByteArray c = corePrefix(index);
  declareWires(out, core, layout, c);
  writeKnownLevels(out, core, c, atLeastOne(core.units.size()));
  const QByteArray tableLast = writeTriggers(out, core, layout, c);
  // Not every core uses all of these.
  out += "  wire " + c + "unused = &{1'b0, " + c + "clear, " + c + "sample, " + c + "sampled, " + c + "restart, " + c +
         "rewind, " + c + "reload, " + c + "evaluate, " + c + "table_load, " + c + "cur, " + c + "config, " + c +
         "table_row, " + c + "trig_out};\n";

  instance(out, "ostrel_core", coreParameters(plan, core, layout), c + "core", corePorts(core, index, tableLast));
}

}  // namespace ost
