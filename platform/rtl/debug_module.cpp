// Writes `ostrel_debug` for a plan: the JTAG module, the hub, and for each core its ostrel_core with the units and
// expressions that the plan configures, and nothing else.
#include "platform/rtl/debug_module.h"

#include <QHash>
#include <QSet>
#include <algorithm>
#include <cstring>
#include <initializer_list>
#include <utility>

#include "platform/plan/core_layout.h"

namespace ost {
namespace {

using Connection = std::pair<const char*, QByteArray>;

QByteArray number(qint64 value) {
  return QByteArray::number(value);
}

QByteArray prefix(int core) {
  return "c" + number(core) + "_";
}

bool hasTriggerOut(const PlanCore& core) {
  return core.triggerOutIo || core.triggerOutNet;
}

QByteArray range(int width) {
  return width == 1 ? QByteArray() : "[" + number(width - 1) + ":0] ";
}

/// `name[offset +: width]` in the constant form.
QByteArray slice(const QByteArray& name, int offset, int width) {
  return name + "[" + number(offset + width - 1) + ":" + number(offset) + "]";
}

/// The bits `indices` of `name`, the first as least significant. Runs of neighbours are written as a range.
QByteArray gather(const QByteArray& name, const QVector<int>& indices) {
  QByteArray text;
  for (int end = indices.size(); end > 0;) {
    int begin = end - 1;
    while (begin > 0 && indices[begin - 1] == indices[begin] - 1) --begin;
    if (!text.isEmpty()) text += ", ";
    text += slice(name, indices[begin], end - begin);
    end = begin;
  }
  return "{" + text + "}";
}

void instance(QByteArray& out, const QByteArray& module, const QList<Connection>& parameters, const QByteArray& name,
              const QList<Connection>& ports) {
  const auto list = [](const QList<Connection>& entries) {
    QByteArray text;
    for (const Connection& entry : entries) {
      if (!text.isEmpty()) text += ",\n";
      text += QByteArray("      .") + entry.first + "(" + entry.second + ")";
    }
    return text;
  };
  out += "  " + module;
  if (!parameters.isEmpty()) out += " #(\n" + list(parameters) + "\n  )";
  out += " " + name + " (\n" + list(ports) + "\n  );\n";
}

/// The hash as a Verilog constant; anything but hex digits counts as 0.
QByteArray hashConstant(const QByteArray& hash) {
  bool ok = false;
  const quint64 value = hash.toULongLong(&ok, 16);
  return "64'h" + (ok ? QByteArray::number(value, 16) : QByteArray("0"));
}

/// A core's half of the self-description, most significant field first.
QByteArray infoConstant(const PlanCore& core, const CoreLayout& layout) {
  const auto field = [](int width, qint64 value) {
    return number(width) + "'d" + number(value & ((qint64(1) << width) - 1));
  };
  return "{" + field(8, core.expressions.size()) + ", " + field(8, core.units.size()) + ", " +
         field(16, layout.statusBits) + ", " + field(32, layout.chainBits) + ", " + field(16, core.probeWidth()) +
         ", " + field(8, core.timestampBits) + ", " + field(8, layout.blockBits) + ", " + field(16, layout.wordBits) +
         ", " + field(8, layout.addressBits) + ", 8'd1}";
}

void writeUnit(QByteArray& out, const PlanCore& core, const CoreLayout& layout, const QByteArray& c, int index) {
  const PlanUnit& unit = core.units[index];
  const QByteArray name = c + "unit" + number(index);
  const QByteArray config = slice(c + "config", layout.unitOffsets[index], unitConfigBits(unit));
  const QByteArray hit = c + "hits[" + number(index) + "]";
  const QByteArray current = gather(c + "cur", unit.inputs);
  switch (unit.unitClass) {
    case UnitClass::Match:
      instance(out, "ostrel_match", {{"WIDTH", number(unit.width)}}, name,
               {{"clk", c + "clk"},
                {"sample", c + "sample"},
                {"previous_valid", c + "sampled"},
                {"cur", current},
                {"config_bits", config},
                {"hit", hit}});
      break;
    case UnitClass::Order:
      instance(out, "ostrel_order", {{"WIDTH", number(unit.width)}}, name,
               {{"clk", c + "clk"}, {"sample", c + "sample"}, {"cur", current}, {"config_bits", config}, {"hit", hit}});
      break;
    case UnitClass::Serial:
      instance(out, "ostrel_serial", {{"LENGTH", number(unit.width)}}, name,
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

/// Text as a Verilog string. Whatever could end it, or mean something to a preprocessor, is written by its number.
QByteArray quoted(const QString& text) {
  QByteArray literal = "\"";
  for (const char c : text.toLatin1()) {
    const bool digitOrLetter = (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
    const bool startsComment = c == '/' && literal.endsWith('/');
    if (digitOrLetter || (strchr("_./[]:$ ", c) && c != '\0' && !startsComment))
      literal += c;
    else
      literal += '\\' + QByteArray::number(uchar(c), 8).rightJustified(3, '0');
  }
  return literal + '"';
}

/// A net as the core is connected to it: which bits of its two input vectors.
struct WatchedNet {
  QString name;
  QVector<int> probes, triggers;
};

/// The nets of a core, each once; a bit that is probed counts as such only.
QVector<WatchedNet> watchedNets(const PlanCore& core) {
  QVector<WatchedNet> nets;
  QHash<QPair<QString, QString>, int> places;
  const auto add = [&](const NetBit& bit, QVector<int> WatchedNet::*list, int index) {
    const QPair<QString, QString> net(bit.instancePath, bit.net);
    const bool isNew = !places.contains(net);
    if (isNew) {
      places.insert(net, nets.size());
      nets.append({bit.name, {}, {}});
    }
    WatchedNet& watched = nets[places.value(net)];
    // Several bits go by the vector's name.
    if (!isNew && watched.name.endsWith(QLatin1Char(']')))
      watched.name.truncate(watched.name.lastIndexOf(QLatin1Char('[')));
    (watched.*list).append(index);
  };
  QSet<QPair<QPair<QString, QString>, int>> probed;
  for (int i = 0; i < core.probeBits.size(); ++i) {
    const NetBit& bit = core.probeBits[i];
    probed.insert({{bit.instancePath, bit.net}, bit.bit});
    add(bit, &WatchedNet::probes, i);
  }
  for (int i = 0; i < core.triggerBits.size(); ++i) {
    const NetBit& bit = core.triggerBits[i];
    if (!probed.contains({{bit.instancePath, bit.net}, bit.bit})) add(bit, &WatchedNet::triggers, i);
  }
  return nets;
}

/// Each net that a run meets as x or z is named once.
void writeWatches(QByteArray& out, const PlanCore& core, const QByteArray& c) {
  int count = 0;
  const auto watch = [&](const QString& net, bool isEnable, const QByteArray& sampled, int width,
                         const QByteArray& levels) {
    instance(
        out, "ostrel_watch",
        {{"WIDTH", number(width)}, {"ENABLE", number(isEnable)}, {"CORE", quoted(core.name)}, {"NET", quoted(net)}},
        c + "watch" + number(count++), {{"clk", c + "clk"}, {"sampled", sampled}, {"levels", levels}});
  };
  const auto bits = [](const QByteArray& port, int width, const QVector<int>& indices) {
    return indices.isEmpty() ? QByteArray() : width == 1 ? port : gather(port, indices);
  };
  if (core.hasSampleEnable) watch(core.sampleEnable.name, true, "~" + c + "clear", 1, c + "sample_en");
  if (core.hasTriggerEnable) watch(core.triggerEnable.name, true, c + "sample", 1, c + "trig_en");
  for (const WatchedNet& net : watchedNets(core)) {
    const QByteArray probes = bits(c + "probe", core.probeWidth(), net.probes);
    const QByteArray triggers = bits(c + "trig", core.triggerBits.size(), net.triggers);
    watch(net.name, false, c + "sample", net.probes.size() + net.triggers.size(),
          probes.isEmpty()     ? triggers
          : triggers.isEmpty() ? probes
                               : "{" + triggers + ", " + probes + "}");
  }
}

/// What only a simulation has: the levels x and z of the design end here. An enable that is unknown is inactive, and so
/// is a unit whose state hangs on an unknown bit.
void writeKnown(QByteArray& out, const PlanCore& core, const QByteArray& c, int units) {
  struct Signal {
    QByteArray name;
    int width;
    bool unknown;  ///< Its level when it is unknown.
  };
  QVector<Signal> signals = {{"probe", core.probeWidth(), false}, {"hits", units, false}};
  if (core.hasSampleEnable) signals.append({"sample_en", 1, core.sampleEnableActiveLow});
  if (core.hasTriggerEnable) signals.append({"trig_en", 1, core.triggerEnableActiveLow});
  for (const Signal& one : signals)
    out += "  wire [" + number(one.width - 1) + ":0] " + c + "known_" + one.name + ";\n";
  out += "`ifdef SYNTHESIS\n";
  for (const Signal& one : signals) out += "  assign " + c + "known_" + one.name + " = " + c + one.name + ";\n";
  out += "`else\n";
  for (const Signal& one : signals)
    instance(out, "ostrel_known", {{"WIDTH", number(one.width)}, {"UNKNOWN", number(one.unknown)}},
             c + "filter_" + one.name, {{"in", c + one.name}, {"out", c + "known_" + one.name}});
  out += "`ifndef VERILATOR\n// synthesis translate_off\n";
  writeWatches(out, core, c);
  out += "// synthesis translate_on\n`endif\n`endif\n";
}

void writeCore(QByteArray& out, const InsertPlan& plan, int index) {
  const PlanCore& core = plan.cores[index];
  const CoreLayout layout(core);
  const QByteArray c = prefix(index);
  const int triggers = std::max(int(core.triggerBits.size()), 1);
  const int units = std::max(int(core.units.size()), 1);
  const int expressions = std::max(int(core.expressions.size()), 1);
  const int pulse = hasTriggerOut(core) ? std::max(core.triggerOutMinPulse, 1) : 1;
  const bool tables = layout.rowBits > 0;

  out += "\n";
  for (const char* name : {"clear", "sample", "sampled", "restart", "evaluate", "table_load"})
    out += "  wire " + c + name + ";\n";
  // Vectors of one bit are declared as such, so that every bit can be picked by its index.
  const auto vector = [&](int width, const char* name) {
    out += "  wire [" + number(std::max(width, 1) - 1) + ":0] " + c + name + ";\n";
  };
  vector(triggers, "cur");
  vector(units, "hits");
  vector(expressions, "fires");
  vector(layout.stepStateBits, "steps");
  vector(layout.chainBits, "config");
  vector(layout.rowBits, "table_row");
  if (core.units.isEmpty()) out += "  assign " + c + "hits = 1'b0;\n";
  if (core.expressions.isEmpty()) out += "  assign " + c + "fires = 1'b0;\n";
  if (layout.stepStateBits == 0) out += "  assign " + c + "steps = 1'b0;\n";
  if (!hasTriggerOut(core)) out += "  wire " + c + "trig_out;\n";
  writeKnown(out, core, c, units);

  for (int i = 0; i < core.units.size(); ++i) writeUnit(out, core, layout, c, i);
  int stateOffset = 0;
  QByteArray tableLast;
  for (int i = 0; i < core.expressions.size(); ++i) {
    writeExpression(out, core, layout, c, i, stateOffset);
    stateOffset += layout.expressions[i].stepBits;
    if (layout.expressions[i].store != TableStore::Chain)
      tableLast += (tableLast.isEmpty() ? "" : " | ") + c + "expr" + number(i) + "_last";
  }
  // What this core happens not to use.
  out += "  wire " + c + "unused = &{1'b0, " + c + "clear, " + c + "sample, " + c + "sampled, " + c + "restart, " + c +
         "evaluate, " + c + "table_load, " + c + "cur, " + c + "config, " + c + "table_row, " + c + "trig_out};\n";

  const QByteArray i = number(index);
  instance(out, "ostrel_core",
           {{"PROBES", number(core.probeWidth())},
            {"TRIGGERS", number(triggers)},
            {"UNITS", number(units)},
            {"EXPRESSIONS", number(expressions)},
            {"STEP_STATE_BITS", number(layout.stepStateBits)},
            {"ROW_BITS", number(layout.rowBits)},
            {"WINDOWS", number(std::max(core.windows, 1))},
            {"WINDOW_BITS", number(layout.windowBits)},
            {"POSITION_BITS", number(layout.positionBits)},
            {"ADDRESS_BITS", number(layout.addressBits)},
            {"DISTRIBUTED", number(core.distributedRam && !core.distRamDisabled)},
            {"TIMESTAMP_BITS", number(core.timestampBits)},
            {"INCLUDE_TRIGGER", number(core.includeTrigger && !core.units.isEmpty())},
            {"EVENT_BITS", number(layout.eventBits)},
            {"HAS_SAMPLE_EN", number(core.hasSampleEnable)},
            {"SAMPLE_EN_LOW", number(core.sampleEnableActiveLow)},
            {"HAS_TRIG_EN", number(core.hasTriggerEnable)},
            {"TRIG_EN_LOW", number(core.triggerEnableActiveLow)},
            {"TRIG_OUT_LOW", number(core.triggerOutActiveLow)},
            {"PULSE", number(pulse)},
            {"PULSE_BITS", number(bitsFor(pulse))},
            {"CHAIN_BITS", number(layout.chainBits)},
            {"BLOCK_BITS", number(layout.blockBits)},
            {"INDEX_BITS", number(hubIndexBits(plan))},
            {"HUB_ADDRESS_BITS", number(hubAddressBits(plan))},
            {"INFO", infoConstant(core, layout)}},
           c + "core",
           {{"clk", c + "clk"},
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
            {"evaluate", c + "evaluate"},
            {"fires", c + "fires"},
            {"steps", c + "steps"},
            {"config_bits", c + "config"},
            {"table_load", c + "table_load"},
            {"table_row", c + "table_row"},
            {"table_last", tables ? tableLast : QByteArray("1'b0")},
            {"tck", "h_tck"},
            {"tdi", "h_tdi"},
            {"select", "h_select[" + i + "]"},
            {"op_status", "h_op_status"},
            {"op_info", "h_op_info"},
            {"op_read", "h_op_read"},
            {"op_config", "h_op_config"},
            {"op_table", "h_op_table"},
            {"op_arm", "h_op_arm"},
            {"op_stop", "h_op_stop"},
            {"data", "h_data"},
            {"tag", "h_tag"},
            {"address", "h_address"},
            {"index", "h_index"},
            {"load", "h_load"},
            {"fetch", "h_fetch"},
            {"execute", "h_execute"},
            {"permit", "h_permit[" + i + "]"},
            {"word_last", "h_word_last[" + i + "]"},
            {"block_end", "h_block_end[" + i + "]"},
            {"payload", "h_payload[" + i + "]"},
            {"flags", slice("h_flags", 5 * index, 5)}});
}

void writeHub(QByteArray& out, const InsertPlan& plan) {
  const int cores = plan.cores.size(), indexBits = hubIndexBits(plan), addressBits = hubAddressBits(plan);
  out +=
      "  wire h_tck, h_tdi, h_tdo, h_sel, h_capture, h_shift, h_update;\n"
      "  wire h_op_status, h_op_info, h_op_read, h_op_config, h_op_table, h_op_arm, h_op_stop;\n"
      "  wire h_data, h_load, h_fetch, h_execute;\n"
      "  wire [7:0] h_tag;\n";
  out += "  wire [" + number(indexBits - 1) + ":0] h_index;\n";
  out += "  wire [" + number(addressBits - 1) + ":0] h_address;\n";
  out += "  wire [" + number(cores - 1) + ":0] h_select, h_permit, h_word_last, h_block_end, h_payload;\n";
  out += "  wire [" + number(5 * cores - 1) + ":0] h_flags;\n\n";
  instance(out, "ostrel_jtag", {}, "jtag",
           {{"jtag_tck", "jtag_tck"},
            {"jtag_tms", "jtag_tms"},
            {"jtag_tdi", "jtag_tdi"},
            {"jtag_tdo", "jtag_tdo"},
            {"tck", "h_tck"},
            {"sel", "h_sel"},
            {"capture", "h_capture"},
            {"shift", "h_shift"},
            {"update", "h_update"},
            {"tdi", "h_tdi"},
            {"tdo", "h_tdo"}});
  QList<Connection> ports = {{"tck", "h_tck"},       {"sel", "h_sel"}, {"capture", "h_capture"}, {"shift", "h_shift"},
                             {"update", "h_update"}, {"tdi", "h_tdi"}, {"tdo", "h_tdo"}};
  for (const char* name : {"select",  "op_status", "op_info",   "op_read",   "op_config", "op_table", "op_arm",
                           "op_stop", "data",      "tag",       "address",   "index",     "load",     "fetch",
                           "execute", "permit",    "word_last", "block_end", "payload",   "flags"})
    ports.append({name, QByteArray("h_") + name});
  instance(out, "ostrel_hub",
           {{"CORES", number(cores)},
            {"INDEX_BITS", number(indexBits)},
            {"ADDRESS_BITS", number(addressBits)},
            {"PROJECT_HASH", hashConstant(plan.projectHash)}},
           "hub", ports);
}

}  // namespace

QList<DebugPort> debugModulePorts(const InsertPlan& plan) {
  QList<DebugPort> ports = {{"jtag_tck", DebugPort::Tck},
                            {"jtag_tms", DebugPort::Tms},
                            {"jtag_tdi", DebugPort::Tdi},
                            {"jtag_tdo", DebugPort::Tdo, -1, 1, true}};
  for (int i = 0; i < plan.cores.size(); ++i) {
    const PlanCore& core = plan.cores[i];
    const QByteArray c = prefix(i);
    ports.append({c + "clk", DebugPort::SampleClock, i});
    ports.append({c + "probe", DebugPort::Probe, i, core.probeWidth()});
    if (!core.triggerBits.isEmpty()) ports.append({c + "trig", DebugPort::Trigger, i, int(core.triggerBits.size())});
    if (core.hasSampleEnable) ports.append({c + "sample_en", DebugPort::SampleEnable, i});
    if (core.hasTriggerEnable) ports.append({c + "trig_en", DebugPort::TriggerEnable, i});
    if (hasTriggerOut(core)) ports.append({c + "trig_out", DebugPort::TriggerOut, i, 1, true});
  }
  return ports;
}

QByteArray debugModuleVerilog(const InsertPlan& plan) {
  QByteArray out =
      "// Generated: the debug hub and cores of one project. The capture map beside this file belongs to it.\n"
      "`default_nettype none\n\n"
      "module ostrel_debug (\n";
  const QList<DebugPort> ports = debugModulePorts(plan);
  for (int i = 0; i < ports.size(); ++i)
    out += QByteArray("    ") + (ports[i].output ? "output wire " : "input  wire ") + range(ports[i].width) +
           ports[i].name + (i + 1 < ports.size() ? ",\n" : "\n");
  out += ");\n";
  writeHub(out, plan);
  for (int i = 0; i < plan.cores.size(); ++i) writeCore(out, plan, i);
  out += "endmodule\n\n`default_nettype wire\n";
  return out;
}

}  // namespace ost
