// The Wishbone master within `ostrel_debug`.
#pragma once

#include "platform/rtl/debug_module.h"

namespace ost {

/// wb_clk, then the bus: wb_busy, wb_dat_i, wb_ack, wb_err, wb_rty (inputs), wb_grant, wb_cyc, wb_stb, wb_we, wb_adr,
/// wb_dat_o, wb_sel (outputs). wb_adr is the byte address.
QList<DebugPort> wishbonePorts(const PlanWishbone& wishbone);

/// The master's instance.
void writeWishbone(QByteArray& out, const InsertPlan& plan);

/// What the top calls a port of the bus when this is not connected: "<prefix>adr_o" for wb_adr. Empty for wb_busy and
/// wb_grant, which only a shared bus needs.
QByteArray wishbonePortName(const DebugPort& port, const QByteArray& prefix);

/// Name of the output that is 1 while the master has the bus.
constexpr char kWishboneGrant[] = "wb_grant";

}  // namespace ost
