// Writes the serdes core's instance.
#include "platform/rtl/serdes_writer.h"

#include "platform/rtl/hub_ports.h"

namespace ost {

using namespace verilog;

QList<DebugPort> serdesPorts(const PlanSerdes&) {
  return {{"sd_clk", DebugPort::SerdesClock}};
}

void writeSerdes(QByteArray& out, const InsertPlan& plan) {
  instance(out, "ostrel_serdes", {{"INFO", infoConstant(CoreKind::SerdesCore, {{120, 0}})}}, "sd",
           QList<Connection>{{"clk", "sd_clk"}} + hubPorts(plan.serdesNumber()));
}

}  // namespace ost
