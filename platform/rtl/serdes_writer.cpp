// Writes the serdes core's instance, with the filters that keep x and z of a simulation out of it.
#include "platform/rtl/serdes_writer.h"

#include "platform/plan/core_layout.h"
#include "platform/rtl/hub_ports.h"

namespace ost {

using namespace verilog;

namespace {

/// Declares `sd_known_<name>`; in a simulation an unknown level is 0.
QByteArray knownLevels(QByteArray& out, const char* name, int width) {
  const QByteArray port = QByteArray("sd_") + name, known = QByteArray("sd_known_") + name;
  out += "  wire " + range(width) + known + ";\n`ifdef SYNTHESIS\n  assign " + known + " = " + port + ";\n`else\n";
  instance(out, "ostrel_known", {{"WIDTH", number(width)}}, QByteArray("sd_filter_") + name,
           {{"in", port}, {"out", known}});
  out += "`endif\n";
  return known;
}

}  // namespace

QList<DebugPort> serdesPorts(const PlanSerdes& serdes) {
  QList<DebugPort> ports = {{"sd_clk", DebugPort::SerdesClock}};
  if (serdes.hasReset) ports.append({"sd_rst", DebugPort::SerdesReset});
  if (!serdes.clocks.isEmpty())
    ports.append({"sd_clocks", DebugPort::SerdesWatchedClocks, -1, int(serdes.clocks.size())});
  if (!serdes.levels.isEmpty())
    ports.append({"sd_levels", DebugPort::SerdesWatchedLevels, -1, int(serdes.levels.size())});
  return ports;
}

void writeSerdes(QByteArray& out, const InsertPlan& plan) {
  const PlanSerdes& serdes = *plan.serdes;
  out += '\n';
  const QByteArray none = "1'b0", reset = serdes.hasReset ? knownLevels(out, "rst", 1) : none;
  const QByteArray levels = serdes.levels.isEmpty() ? none : knownLevels(out, "levels", serdes.levels.size());
  instance(out, "ostrel_serdes",
           {{"CLOCKS", number(serdes.clocks.size())},
            {"LEVELS", number(serdes.levels.size())},
            {"ROW_BITS", number(serdes.rowBits())},
            {"EDGE_BITS", number(serdes.edgeBits())},
            {"INDEX_BITS", number(hubIndexBits(plan))},
            {"HUB_ADDRESS_BITS", number(hubAddressBits(plan))},
            {"INFO", infoConstant(CoreKind::SerdesCore, serdesInfo(serdes))}},
           "sd",
           QList<Connection>{{"clk", "sd_clk"},
                             {"rst", reset},
                             {"clocks", serdes.clocks.isEmpty() ? none : QByteArray("sd_clocks")},
                             {"levels", levels}} +
               hubPorts(plan.serdesNumber()));
}

}  // namespace ost
