// Writes the Wishbone master's instance.
#include "platform/rtl/wishbone_writer.h"

#include "platform/plan/core_layout.h"
#include "platform/rtl/hub_ports.h"

namespace ost {

using namespace verilog;

QList<DebugPort> wishbonePorts(const PlanWishbone& wishbone) {
  const auto bus = [](const char* name, int width, bool output) {
    return DebugPort{name, DebugPort::WishboneBus, -1, width, output};
  };
  return {{"wb_clk", DebugPort::WishboneClock},
          bus("wb_busy", 1, false),
          bus("wb_dat_i", kWishboneWordBits, false),
          bus("wb_ack", 1, false),
          bus("wb_err", 1, false),
          bus("wb_rty", 1, false),
          bus(kWishboneGrant, 1, true),
          bus("wb_cyc", 1, true),
          bus("wb_stb", 1, true),
          bus("wb_we", 1, true),
          bus("wb_adr", wishbone.addressBits, true),
          bus("wb_dat_o", kWishboneWordBits, true),
          bus("wb_sel", 4, true)};
}

QByteArray wishbonePortName(const DebugPort& port, const QByteArray& prefix) {
  if (port.name == "wb_busy" || port.name == kWishboneGrant) return {};
  const QByteArray signal = port.name.mid(3);
  return prefix + (signal.startsWith("dat_") ? signal : signal + (port.output ? "_o" : "_i"));
}

void writeWishbone(QByteArray& out, const InsertPlan& plan) {
  const PlanWishbone& wishbone = *plan.wishbone;
  QList<Connection> ports = {{"clk", "wb_clk"}, {"busy", "wb_busy"}, {"dat_i", "wb_dat_i"}, {"ack", "wb_ack"},
                             {"err", "wb_err"}, {"rty", "wb_rty"},   {"grant", "wb_grant"}, {"cyc", "wb_cyc"},
                             {"stb", "wb_stb"}, {"we", "wb_we"},     {"adr", "wb_adr"},     {"dat_o", "wb_dat_o"},
                             {"sel", "wb_sel"}};
  out += "\n";
  instance(out, "ostrel_wishbone",
           {{"ADDRESS_BITS", number(wishbone.addressBits)},
            {"BIG_ENDIAN", number(wishbone.isBigEndian)},
            {"INDEX_BITS", number(hubIndexBits(plan))},
            {"HUB_ADDRESS_BITS", number(hubAddressBits(plan))},
            {"INFO", infoConstant(CoreKind::WishboneMaster, wishboneInfo(wishbone))}},
           "wb", ports + hubPorts(plan.wishboneNumber()));
}

}  // namespace ost
