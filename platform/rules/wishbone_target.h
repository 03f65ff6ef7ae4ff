// The slave of the design that the Wishbone master is connected to: found by its marks, its bus by the names of ports.
#pragma once

#include <QStringList>

#include "platform/netlist/netlist_bits.h"
#include "platform/plan/wishbone_plan.h"

namespace ost {

/// Why there is no such slave, or why its bus cannot be driven.
struct WishboneFault {
  enum Kind { None, NoSlave, SeveralSlaves, Ports, Clock } kind = None;
  QString text;
};

/// Looks in the top for the one instance, in this order: with the attribute `ostrel_wishbone = "slave"`, at itself or
/// at ports of its module; or of a module with the word "jtag2wb" in its `ostrel_role`. `wishbone` gets what follows
/// from the slave; on a fault it is unchanged.
WishboneFault findWishboneSlave(const NetlistBits& netlist, PlanWishbone& wishbone);

}  // namespace ost
