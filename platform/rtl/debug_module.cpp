// Writes `ostrel_debug` for a plan: the JTAG module, the hub and the cores.
#include "platform/rtl/debug_module.h"

#include "platform/plan/core_layout.h"
#include "platform/rtl/core_verilog.h"
#include "platform/rtl/core_writer.h"
#include "platform/rtl/serdes_writer.h"
#include "platform/rtl/verilog_text.h"
#include "platform/rtl/wishbone_writer.h"

namespace ost {

using namespace verilog;

namespace {

/// The hash as a Verilog constant; anything but hex digits counts as 0.
QByteArray hashConstant(const QByteArray& hash) {
  bool ok = false;
  const quint64 value = hash.toULongLong(&ok, 16);
  return "64'h" + (ok ? QByteArray::number(value, 16) : QByteArray("0"));
}

void writeHub(QByteArray& out, const InsertPlan& plan) {
  const int cores = plan.hubCores(), indexBits = hubIndexBits(plan), addressBits = hubAddressBits(plan);
  out +=
      "  wire h_tck, h_tdi, h_tdo, h_sel, h_capture, h_shift, h_update;\n"
      "  wire h_op_status, h_op_info, h_op_read, h_op_config, h_op_table, h_op_arm, h_op_stop;\n"
      "  wire h_data, h_load, h_fetch, h_execute;\n"
      "  wire [7:0] h_tag;\n";
  out += "  wire [" + number(indexBits - 1) + ":0] h_index;\n";
  out += "  wire [" + number(addressBits - 1) + ":0] h_address;\n";
  out += "  wire [" + number(cores - 1) + ":0] h_select, h_permit, h_word_last, h_block_end, h_payload;\n";
  out += "  wire [" + number(5 * cores - 1) + ":0] h_flags;\n\n";
  QList<Connection> ports = {{"tck", "h_tck"},       {"sel", "h_sel"}, {"capture", "h_capture"}, {"shift", "h_shift"},
                             {"update", "h_update"}, {"tdi", "h_tdi"}, {"tdo", "h_tdo"}};
  QList<Connection> jtagPorts = ports, parameters;
  if (plan.jtag.hasPins())
    for (const char* pin : {"jtag_tck", "jtag_tms", "jtag_tdi", "jtag_tdo"}) jtagPorts.append(Connection(pin, pin));
  if (plan.jtag.isPrimitive()) parameters.append(Connection("CHAIN", number(plan.jtag.chain)));
  instance(out, "ostrel_jtag", parameters, "jtag", jtagPorts);
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
  QList<DebugPort> ports;
  if (plan.jtag.hasPins())
    ports = {{"jtag_tck", DebugPort::Tck},
             {"jtag_tms", DebugPort::Tms},
             {"jtag_tdi", DebugPort::Tdi},
             {"jtag_tdo", DebugPort::Tdo, -1, 1, true}};
  for (int i = 0; i < plan.cores.size(); ++i) {
    const PlanCore& core = plan.cores[i];
    const QByteArray c = corePrefix(i);
    ports.append({c + "clk", DebugPort::SampleClock, i});
    ports.append({c + "probe", DebugPort::Probe, i, core.probeWidth()});
    if (!core.triggerBits.isEmpty()) ports.append({c + "trig", DebugPort::Trigger, i, int(core.triggerBits.size())});
    if (core.hasSampleEnable) ports.append({c + "sample_en", DebugPort::SampleEnable, i});
    if (core.hasTriggerEnable) ports.append({c + "trig_en", DebugPort::TriggerEnable, i});
    if (hasTriggerOut(core)) ports.append({c + "trig_out", DebugPort::TriggerOut, i, 1, true});
  }
  if (plan.wishbone) ports += wishbonePorts(*plan.wishbone);
  if (plan.serdes) ports += serdesPorts(*plan.serdes);
  return ports;
}

QList<QPair<QString, QByteArray>> coreVerilogFiles(const PlanJtag& jtag) {
  const QString wrapper = QStringLiteral("ostrel_jtag.v"), prefix = QStringLiteral("ostrel_jtag_");
  const QString chosen = jtag.isPrimitive() ? prefix + jtagWayWords()[int(jtag.way)] + QLatin1String(".v") : wrapper;
  QList<QPair<QString, QByteArray>> files;
  for (const auto& [name, text] : embeddedVerilog()) {
    if (name == chosen)
      files.append({wrapper, jtag.way == JtagWay::Wrapper ? jtag.wrapper : text});
    else if (name != wrapper && !name.startsWith(prefix))
      files.append({name, text});
  }
  return files;
}

QByteArray debugModuleVerilog(const InsertPlan& plan) {
  QByteArray out =
      "// Generated: the debug hub and cores of one project; used with the capture map beside this file.\n"
      "`default_nettype none\n\n"
      "module ostrel_debug (\n";
  const QList<DebugPort> ports = debugModulePorts(plan);
  for (int i = 0; i < ports.size(); ++i)
    out += QByteArray("    ") + (ports[i].output ? "output wire " : "input  wire ") + range(ports[i].width) +
           ports[i].name + (i + 1 < ports.size() ? ",\n" : "\n");
  out += ");\n";
  writeHub(out, plan);
  for (int i = 0; i < plan.cores.size(); ++i) writeCore(out, plan, i);
  if (plan.wishbone) writeWishbone(out, plan);
  if (plan.serdes) writeSerdes(out, plan);
  out += "endmodule\n\n`default_nettype wire\n";
  return out;
}

}  // namespace ost
